// libFuzzer harness for one reader: the input is the recording, fed from memory, imported
// through the Import command. The format is chosen at build time by the file extension
// (KV_FUZZ_EXT) and, for .sgy/.sg2, the import dialog entry (KV_FUZZ_FILTER).
// Formats with a companion header file (.rad, .HD, .hdr) get the input split at its first
// "\n--\n": what comes after is the companion's bytes.
//
// Nothing an execution does touches the disk: the working files are kept in memory, and the
// settings are read once, at start-up, into a state every execution starts from a copy of.
#include "commands/export.h"
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "commands/recording_view_host.h"
#include "import/file_filters.h"
#include "import/reader.h"
#include "platform/scripted_host.h"
#include "platform/trace_store.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
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

// A header may claim far more traces than the input holds; the missing ones are written as
// zeros. A working file may grow to 8 MiB: past that the write fails as on a full disk.
constexpr size_t kWorkingFileLimit = size_t(8) << 20;

/// The state after the start sequence, made once.
struct Started {
    kv::ProgramState st;
    kv::CommandState cmd;
};

Started& started() {
    static Started s = [] {
        Started s;
        // The start sequence moves the current folder to the home; corpus paths given on the
        // command line are relative to where the fuzzer was started, so the folder goes back.
        const auto here = std::filesystem::current_path();
        const auto home =
            std::filesystem::temp_directory_path() /
            ("kv-fuzz-" + std::string(KV_FUZZ_EXT) + "-" + std::to_string(::getpid()));
        std::filesystem::create_directories(home);
        std::ofstream(home / "SP.ini") << kv::factorySettingsText();
        s.st.AppPath = home.string();
        kv::ScriptedHost host;
        kv::RecordingViewHost views;
        kv::Workbench wb{s.st, s.cmd, host, views};
        kv::MDIForm_Load(wb);
        std::filesystem::current_path(here);
        std::filesystem::remove_all(home);
        gSource = s.st.AppPath + "/input." KV_FUZZ_EXT;
        kv::useMemoryTraceStore(kWorkingFileLimit);
        return s;
    }();
    return s;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    started();
    return 0;
}

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
    kv::ProgramState st = started().st;
    kv::CommandState cmd = started().cmd;
    kv::ScriptedHost host;
    kv::RecordingViewHost views;
    kv::Workbench wb{st, cmd, host, views, feedFromMemory};
    host.queueFile(gSource, kv::chosenFilterIndex(st.Fil, gSource, KV_FUZZ_FILTER).value_or(1));
    // A header may promise tens of thousands of long traces of zeros past the end of a small
    // input: the first 64 show whether the reader holds up, the rest would only take time.
    host.cancelProgressAt(64);
#ifdef KV_FUZZ_PROJECT
    // Traces longer than any reader makes (2^16) are legal but only slow the spectrum of the
    // first trace down: skip them. A short header reads as zeros past its end, as the open
    // reads it.
    uint8_t header[23] = {};
    std::memcpy(header, data, std::min(size, sizeof header));
    int32_t traceLength = 0;
    std::memcpy(&traceLength, header + 19, 4);
    if (traceLength > 65536) return 0;
    kv::mnuOimp_Click(wb);
#else
    kv::mnuOpen_Click(wb);
#endif
    return 0;
}
