// libFuzzer harness for one reader: the input is the recording, fed from memory, imported
// through the Import command in a scratch home. The format is chosen at build time by the file
// extension (KV_FUZZ_EXT) and, for .sgy/.sg2, the import dialog entry (KV_FUZZ_FILTER).
// Formats with a companion header file (.rad, .HD, .hdr) get the input split at its first
// "\n--\n": what comes after is the companion's bytes.
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "commands/recording_view_host.h"
#include "import/file_filters.h"
#include "import/reader.h"
#include "platform/scripted_host.h"
#include "state/settings.h"
#include "state/workbench.h"

#include "commands/export.h"

#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <vector>

#ifndef KV_FUZZ_FILTER
#define KV_FUZZ_FILTER ""
#endif

namespace {

std::vector<uint8_t> gMain, gCompanion;
std::string gSource;

std::unique_ptr<kv::ByteSource> feedFromMemory(const std::string& path) {
    return std::make_unique<kv::MemoryByteSource>(path == gSource ? gMain : gCompanion);
}

const std::string& home() {
    static const std::string h = [] {
        auto p = std::filesystem::temp_directory_path() /
                 ("kv-fuzz-" + std::string(KV_FUZZ_EXT) + "-" + std::to_string(::getpid()));
        std::filesystem::create_directories(p);
        std::ofstream(p / "SP.ini") << kv::factorySettingsText();
        // A header may claim far more traces than the input holds; the missing ones are written
        // as zeros. Bound the working file so that such an input fails its write instead of
        // filling the disk (the reader's write failure is handled like any other).
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit fsize{8u << 20, 8u << 20};
        setrlimit(RLIMIT_FSIZE, &fsize);
        return p.string();
    }();
    return h;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char sep[] = "\n--\n";
    const uint8_t* cut =
        size >= 4 ? static_cast<const uint8_t*>(memmem(data, size, sep, 4)) : nullptr;
    if (cut) {
        gMain.assign(data, cut);
        gCompanion.assign(cut + 4, data + size);
    } else {
        gMain.assign(data, data + size);
        gCompanion.clear();
    }
    // Keep fuzzing inputs to sizes a reader turns into a few thousand traces at most.
    kv::ProgramState st;
    kv::CommandState cmd;
    kv::ScriptedHost host;
    kv::RecordingViewHost views;
    kv::Workbench wb{st, cmd, host, views, feedFromMemory};
    st.AppPath = home();
    kv::MDIForm_Load(wb);
    gSource = home() + "/input." KV_FUZZ_EXT;
    host.queueFile(gSource, kv::chosenFilterIndex(st.Fil, gSource, KV_FUZZ_FILTER).value_or(1));
    // A header may promise tens of thousands of long traces of zeros past the end of a small
    // input: the first 64 show whether the reader holds up, the rest would only fill the disk.
    host.cancelProgressAt(64);
#ifdef KV_FUZZ_PROJECT
    // Project files are opened by their own command, from disk. Traces longer than any reader
    // makes (2^16) are legal but only slow the spectrum of the first trace down: skip them.
    int32_t traceLength = 0;
    if (size >= 23) std::memcpy(&traceLength, data + 19, 4);
    if (traceLength > 65536) return 0;
    std::ofstream(gSource, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), std::streamsize(size));
    kv::mnuOimp_Click(wb);
#else
    kv::mnuOpen_Click(wb);
#endif
    return 0;
}
