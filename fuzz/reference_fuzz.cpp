// libFuzzer harness for the three reference file formats: the input is read as a saved
// spectrum, O-scope trace and phase curve; a spectrum that passes is then loaded into a line as
// the reference dialog loads it (against a live band taken from the input's last bytes),
// activated in dB and linear, and folded for the plot and for a span.
#include "commands/recording_view_host.h"
#include "engine/display_map.h"
#include "platform/byte_source.h"
#include "platform/scripted_host.h"
#include "references/reference_files.h"
#include "references/spectrum_refs.h"
#include "references/time_phase_refs.h"
#include "state/workbench.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

const std::string& home() {
    // The reference dialog reads the line's file from the home, so each input is written there.
    // In memory where the system offers a folder for it: rewriting a file on a disk cost most
    // of an execution (the file system flushes a file that was cut short and written again).
    static const std::string h = [] {
        std::error_code ec;
        const std::filesystem::path base = std::filesystem::is_directory("/dev/shm", ec)
                                               ? std::filesystem::path("/dev/shm")
                                               : std::filesystem::temp_directory_path();
        auto p = base / ("kv-fuzz-ref-" + std::to_string(::getpid()));
        std::filesystem::create_directories(p / "ref");
        return p.string();
    }();
    return h;
}

/// The home goes when the target ends (in memory, it would otherwise hold on to it).
void removeHome() {
    std::error_code ec;
    std::filesystem::remove_all(home(), ec);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    home();
    std::atexit(removeHome);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const kv::MemoryByteSource src(std::vector<uint8_t>(data, data + size));
    kv::PnsFile pns;
    kv::PnoFile pno;
    kv::PnpFile pnp;
    kv::readPns(src, pns, false);
    kv::readPns(src, pns);
    kv::readPno(src, pno);
    kv::readPnp(src, pnp);

    kv::ProgramState st;
    // The menu model only takes ticks here; one for all runs keeps each run cheap.
    static kv::CommandState cmd;
    kv::ScriptedHost host;
    kv::RecordingViewHost views;
    kv::Workbench wb{st, cmd, host, views};
    st.AppPath = home();
    // The live band: a common one, or one the input chooses.
    st.BinWidth = 31.25f;
    st.MaxFreq = 16000.0f;
    st.Fft_Samples = 1024;
    st.FullScalePos = 32767;
    st.PlotColumns = 300;
    if (size >= 8) {
        std::memcpy(&st.BinWidth, data + size - 8, 4);
        std::memcpy(&st.MaxFreq, data + size - 4, 4);
    }
    std::ofstream(kv::fixedRefPath(st, 1, "pns"), std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), std::streamsize(size));
    if (!kv::readSpectrumRef(wb, 1)) return 0;
    st.SpanLowFreq = st.MaxFreq / 4;
    st.SpanHighFreq = st.MaxFreq / 2;
    for (bool linear : {false, true}) {
        st.YLinear = linear;
        kv::activateShownReferences(st);
        for (int16_t dr : {1, 2}) {
            st.DrSet = dr;
            kv::GenDraw_Ref(st);
        }
        kv::GenDrawSpan_Ref(st);
    }
    return 0;
}
