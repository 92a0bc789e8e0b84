// One reader fuzz input, run as the fuzz targets run it: the input is the recording, fed from
// memory, imported through the Import command (or, for the project file, Open Kelvorandine
// File). Shared by the fuzz targets (reader_fuzz.cpp) and by the test that replays the crash
// inputs kept under fuzz/corpus (tests/import/fuzz_regression_test.cpp), so that a kept input
// goes down exactly the path it crashed on.
//
// Formats with a companion header file (.rad, .HD, .hdr) get the input split at its first
// "\n--\n": what comes after is the companion's bytes.
//
// Nothing an execution does touches the disk: the working files are kept in memory, and the
// settings are read once, at start-up, into a state every execution starts from.
#pragma once

#include "commands/export.h"
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "commands/recording_view_host.h"
#include "import/file_filters.h"
#include "platform/numeric.h"
#include "platform/scripted_host.h"
#include "platform/trace_store.h"
#include "state/command_state.h"
#include "state/program_state.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace kv::fuzz {

/// What a reader target opens: the file extension, the import dialog's entry for the extensions
/// several entries read (empty: the first that takes it), and whether it is the project file.
struct ReaderTarget {
    std::string ext;
    std::string filter;
    bool project = false;
};

/// The reader targets by name (fuzz_NAME, and fuzz/corpus/NAME for their kept inputs).
inline const ReaderTarget* readerTarget(const std::string& name) {
    static const std::map<std::string, ReaderTarget> targets{
        {"wav", {"wav", ""}},
        {"dzt", {"dzt", ""}},
        {"rd3", {"rd3", ""}},
        {"dt1", {"DT1", ""}},
        {"zon", {"dt", ""}},
        {"kvd", {"kvd", "", true}},
        // Seismic, scope and table readers; the .sgy and .sg2 targets pick the dialog's entry.
        {"seismic", {"sgy", "SEISMIC"}},
        {"radsys", {"sgy", "RADSYS"}},
        {"seg2", {"sg2", "SEG2"}},
        {"sprscan", {"sg2", "SPRSCAN"}},
        {"sht", {"SHT", ""}},
        {"csv", {"csv", ""}},
        {"dat", {"dat", ""}},
        // The standards-conformant SEG-Y and SEG-2 entries.
        {"segy_std", {"sgy", "SEGY-STD"}},
        {"seg2_std", {"seg2", "SEG2-STD"}},
        // The entries that read every variant of a format.
        {"dzt_std", {"dzt", "DZT-STD"}},
        {"wav_std", {"wav", "WAV-STD"}},
        {"csv_std", {"csv", "CSV-STD"}},
    };
    const auto it = targets.find(name);
    return it == targets.end() ? nullptr : &it->second;
}

// A header may claim far more traces than the input holds; the missing ones are written as
// zeros. A working file may grow to 16 KiB (4096 samples): past that the write fails as on a
// full disk, which the open reports and recovers from like any other. The bound keeps each
// execution short (every sample written is decoded, copied and, for a data set that opens,
// transformed under the sanitizers): a header promising long or many traces still runs its
// reader's header and trace loop, and the full-disk path, up to the bound.
inline constexpr size_t kWorkingFileLimit = size_t(16) << 10;

// A header may promise tens of thousands of long traces of zeros past the end of a small input:
// the first 16 show whether the reader holds up, the rest would only take time.
inline constexpr int kCancelAtTrace = 16;

// A scope record longer than the reader takes (65000 samples) is refused with a message, but
// the length stays and the open goes on: the spectrum of the one trace is then made at that
// length, up to 16 M samples. That is legal, and costs the same for any input; past twice the
// refusal limit it only slows the target down (and a few arrays of 64 MB each sit in the
// sanitizer's quarantine), so such inputs are skipped. The length is found as the reader finds
// it: the number after the first "Sample" that follows the tag and "TEKTRONIX" within the first
// 2000 bytes, after the word and any ':' or '='.
inline constexpr double kLongestScopeRecord = 130000;

inline bool scopeRecordTooLong(std::span<const uint8_t> input) {
    const std::string head(input.begin(), input.begin() + std::min<size_t>(input.size(), 2000));
    const size_t tag = head.find("Waveform Tabular Document");
    if (tag == std::string::npos) return false;
    const size_t maker = head.find("TEKTRONIX", tag);
    if (maker == std::string::npos) return false;
    size_t p = head.find("Sample", maker);
    if (p == std::string::npos) return false;
    while (p < head.size() && std::isalpha(static_cast<unsigned char>(head[p])))
        ++p;
    const size_t eol = std::min(head.find('\n', p), head.size());
    while (p < eol && (head[p] == ':' || head[p] == '='))
        ++p;
    const double length = Val(std::string_view(head).substr(p, eol - p));
    return !(length <= kLongestScopeRecord);
}

class ReaderRun {
  public:
    /// Runs the start sequence once, in a home of its own that is gone again afterwards, and
    /// puts the working files in memory.
    explicit ReaderRun(ReaderTarget target) : target_(std::move(target)) {
        // The start sequence moves the current folder to the home; corpus paths given on the
        // command line are relative to where the fuzzer was started, so the folder goes back.
        // (A folder that is gone already, as a test may leave it, is left as it is.)
        std::error_code gone;
        const auto here = std::filesystem::current_path(gone);
        const auto home = std::filesystem::temp_directory_path() /
                          ("kv-fuzz-" + target_.ext + "-" + std::to_string(::getpid()));
        std::filesystem::create_directories(home);
        std::ofstream(home / "SP.ini") << factorySettingsText();
        started_.AppPath = home.string();
        {
            ScriptedHost host;
            RecordingViewHost views;
            Workbench wb{started_, startedCmd_, host, views};
            MDIForm_Load(wb);
        }
        if (!gone) std::filesystem::current_path(here);
        std::filesystem::remove_all(home);
        source_ = started_.AppPath + "/input." + target_.ext;
        // The dialog's entry for the target, found once: the filter list is the same for every
        // execution, since every execution starts from the same settings.
        filterIndex_ = chosenFilterIndex(started_.Fil, source_, target_.filter).value_or(1);
        useMemoryTraceStore(kWorkingFileLimit);
        reset();
    }

    /// Imports `data` as the recording, from the state after the start sequence. The state it
    /// leaves is in st, cmd and host.
    void run(const uint8_t* data, size_t size) {
        reset();
        import(data, size);
    }

    /// Puts back the state after the start sequence, and a host that has seen nothing. Assigned
    /// over the last execution's rather than made anew: the menus, panels, settings and the
    /// host's lists keep their storage, which spares a few hundred allocations an execution.
    void reset() {
        st = started_;
        cmd = startedCmd_;
        host = freshHost_;
    }

    /// Imports `data` into the state as it stands: as the constructor or reset() left it, for an
    /// execution like any other.
    void import(const uint8_t* data, size_t size) {
        static const char sep[] = "\n--\n";
        const uint8_t* cut =
            size >= 4 ? static_cast<const uint8_t*>(memmem(data, size, sep, 4)) : nullptr;
        if (cut) {
            main_ = {data, cut};
            companion_ = {cut + 4, data + size};
        } else {
            main_ = {data, size};
            companion_ = {};
        }
        RecordingViewHost views;
        // The input is read where it lies, in the caller's buffer, uncopied: the sources are gone
        // before the execution ends.
        Workbench wb{st, cmd, host, views, [this](const std::string& path) {
                         return MemoryByteSource::borrowing(path == source_ ? main_ : companion_);
                     }};
        host.queueFile(source_, filterIndex_);
        host.cancelProgressAt(kCancelAtTrace);
        if (!target_.project) {
            if (target_.ext == "SHT" && scopeRecordTooLong(main_)) return;
            mnuOpen_Click(wb);
            return;
        }
        // Traces longer than the working file may grow to (2^12 samples) are legal but only slow
        // the spectrum of the first trace down, and more than 1024 traces only the copy loop,
        // which offers no Cancel: skip them. The header's checks and the copy are the same for
        // any size. A short header reads as zeros past its end, as the open reads it.
        uint8_t header[33] = {};
        std::memcpy(header, data, std::min(size, sizeof header));
        int32_t traceLength = 0, traceCount = 0;
        std::memcpy(&traceLength, header + 19, 4);
        std::memcpy(&traceCount, header + 29, 4);
        if (traceLength > 4096 || traceCount > 1024) return;
        mnuOimp_Click(wb);
    }

    ProgramState st;
    CommandState cmd;
    ScriptedHost host;

  private:
    ReaderTarget target_;
    ProgramState started_;
    CommandState startedCmd_;
    const ScriptedHost freshHost_;
    std::string source_;
    int filterIndex_ = 1;
    std::span<const uint8_t> main_, companion_;
};

} // namespace kv::fuzz
