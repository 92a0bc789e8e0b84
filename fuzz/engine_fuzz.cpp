// libFuzzer harness for the spectrum engine: the input sets the trace length, the display and
// analysis settings, the span, a reference curve and the waterfall's second trace, and the rest
// of it is the working file. Whatever the settings, building the spectrum, folding it, mapping
// it to pixels and computing the read-outs must end without a crash, and no read-out may show a
// NaN or an infinity.
#include "engine/engine.h"
#include "platform/trace_store.h"
#include "state/program_state.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

struct Input {
    const uint8_t* p;
    size_t n;
    uint8_t byte() {
        if (!n) return 0;
        --n;
        return *p++;
    }
    int16_t i16() { return int16_t(byte() | (byte() << 8)); }
    float f32() {
        uint32_t u = uint32_t(byte()) | uint32_t(byte()) << 8 | uint32_t(byte()) << 16 |
                     uint32_t(byte()) << 24;
        float f;
        std::memcpy(&f, &u, 4);
        return f;
    }
};

const std::string& workingFile() {
    // The working file is kept in memory: no execution touches the disk.
    static const std::string p = [] {
        kv::useMemoryTraceStore(size_t(64) << 20);
        return std::string("/kv-fuzz-engine/temp.sp");
    }();
    return p;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in{data, size};
    kv::ProgramState st;
    const int32_t n = 2 << (in.byte() % 11); // 2 .. 2048
    st.Sp_Samples = st.Fft_Samples = n;
    st.SampleRate = 1.0 + in.byte() * 100.0;
    st.FullScalePos = float(1 + in.byte() * 300);
    st.NewDS = int16_t(1 + in.byte() % 4);
    st.FFT_Window = int16_t(in.byte() % 12);
    kv::SetWindowName(st);
    st.TimeWindowed = int16_t(in.byte() % 2);
    st.ModeFFT = int16_t(in.byte() % 5);
    st.AverVal = int16_t(1 + in.byte() % 4);
    st.TraceStep = 1 + in.byte() % 3;
    st.TracePos = int16_t(in.byte() % 8);
    st.YLinear = in.byte() & 1;
    st.DrSet = int16_t(1 + in.byte() % 2);
    st.dBFS_On = in.byte() & 1;
    st.PlotColumns = in.i16() % 700;
    st.SpanActive = in.byte() & 1;
    st.SpanStart = in.i16() % (n + 8);
    st.SpanEnd = in.i16() % (n + 8);
    st.SpanLowFreq = in.f32();
    st.SpanHighFreq = in.f32();
    st.PlayRew = in.byte() & 1;
    st.BackTraceTop = in.byte() % 3;
    st.BackTraceIndex = in.byte() % 8;
    st.RgBackOn = in.byte() & 1;
    st.RgBackTrace = in.byte() % 4;
    st.SampleBits = int16_t(in.byte() % 24);
    st.IsSht = in.byte() & 1;
    st.THDdB = int16_t(in.byte() % 2);
    st.RefOn1 = in.byte() & 1;
    st.RefSelect = int16_t(in.byte() % 3);
    st.RefCount1 = in.i16();
    st.RefMaxFreq1 = in.f32();
    st.RefBinWidth1 = in.f32();
    st.RefData1.assign(size_t(in.byte()), -20.0f);
    st.ShowSNR = st.ShowTHD = st.ShowSINAD = st.ShowSFDR = st.ShowENOB = st.ShowTHDN = true;

    {
        kv::TraceFileWriter f;
        f.open(workingFile());
        if (in.n) f.writeBytes(1, in.p, in.n);
    }
    st.TempPath = st.ActiveTracePath = workingFile();
    st.TraceBuf.assign(size_t(n) + 1, 0.0f);
    st.TraceBufR.assign(size_t(n) + 1, 0.0f);
    kv::InitFftState(st);
    st.CurrentTracePos = st.FirstTracePos + st.TraceStep * n * 4 * st.TracePos;
    kv::AnalysisCaptions an;
    for (int pass = 0; pass < 2; ++pass) {
        kv::FyllSpData(st);
        kv::UpdateTopDb(st);
        kv::SamToWidth_Ref(st);
        kv::NewValue(st, an);
        for (const auto& c : an)
            if (c.find("NaN") != std::string::npos || c.find("Inf") != std::string::npos)
                std::abort();
        for (int32_t j = -1; j <= st.ColumnCount + 1; ++j)
            (void)kv::columnToX(st, j, 640.0);
        (void)kv::valueToY(st, st.PeakDb, 400.0);
        if (pass == 0) kv::resetPeakHold(st);
        st.TracePos = int16_t(st.TracePos + 1);
        st.CurrentTracePos += n * 4;
    }
    return 0;
}
