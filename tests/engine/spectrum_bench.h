// A working file written sample by sample and a program state set up as an open would leave it,
// so that the spectrum engine can be driven trace by trace on signals whose spectrum is known.
#pragma once

#include "engine/engine.h"
#include "state/program_state.h"
#include "support/test_home.h"

#include <cmath>
#include <fstream>
#include <functional>
#include <vector>

namespace kv::test {

struct SpectrumBench {
    TempHome home{false};
    ProgramState st;

    /// A data set of `traces` traces of n samples at `rate`, sample t of the file (counted over
    /// the whole file from 0) being f(t). Uniform window, dB scale, full scale 1000.
    SpectrumBench(int32_t n, int traces, const std::function<double(int64_t)>& f,
                  double rate = 1024.0) {
        std::vector<float> all(size_t(n) * size_t(traces));
        for (size_t t = 0; t < all.size(); ++t)
            all[t] = float(f(int64_t(t)));
        write(all);
        st.Sp_Samples = st.Fft_Samples = n;
        st.SampleRate = rate;
        st.FullScalePos = 1000.0f;
        st.FFT_Window = 10;
        st.WindowGain = 1.0f;
        st.ModeFFT = 1;
        st.TraceCount = traces;
        st.TraceBuf.assign(size_t(n) + 1, 0.0f);
        st.TraceBufR.assign(size_t(n) + 1, 0.0f);
        st.PlotColumns = n; // one bin a column unless a test says otherwise
        InitFftState(st);
    }

    void write(const std::vector<float>& all) {
        const std::string p = home.file("temp.sp");
        std::ofstream out(p, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(all.data()), std::streamsize(all.size() * 4));
        st.TempPath = st.ActiveTracePath = p;
    }

    /// Builds the spectrum of trace k (0-based) the way a scroll to it does.
    void show(int k) {
        st.TracePos = int16_t(k);
        st.CurrentTracePos = st.FirstTracePos + st.TraceStep * st.Sp_Samples * 4 * k;
        FyllSpData(st);
    }
};

/// A sine of amplitude a that makes exactly `cycles` periods in n samples.
inline std::function<double(int64_t)> sine(double a, int cycles, int32_t n, double phase = 0) {
    return [=](int64_t t) { return a * std::sin(2 * M_PI * cycles * double(t) / n + phase); };
}

} // namespace kv::test
