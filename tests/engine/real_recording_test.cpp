// A real recording imported as the workbench imports it, then every trace through the spectrum
// and the read-outs: the spectrum keeps the trace's energy, and nothing on show is ever NaN.
#include "engine/engine.h"
#include "state/program_state.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;

TEST(RealRecording, EveryTraceKeepsItsEnergyAndReadsOutFiniteValues) {
    KV_REQUIRE_REAL(path, "wav/test4.wav");
    test::Bench b;
    b.start();
    b.import(path);
    ProgramState& st = b.st;
    ASSERT_FALSE(st.TempPath.empty());
    ASSERT_EQ(st.Fft_Samples, 1024);
    st.FFT_Window = 10;
    SetWindowName(st);
    st.PlotColumns = 300;
    st.ShowSNR = st.ShowTHD = st.ShowSINAD = st.ShowSFDR = st.ShowENOB = st.ShowTHDN = true;
    const int32_t n = st.Fft_Samples;
    AnalysisCaptions an;
    for (int k = 0; k <= st.LastTrace; ++k) {
        st.TracePos = int16_t(k);
        st.CurrentTracePos = st.FirstTracePos + st.ScrollStride * k;
        FyllSpData(st);
        // Parseval with the forward transform scaled by 1/N: the mean square of the trace is
        // (DC/2)^2 + the sum of amp^2/2 over the shown bins + the unshown Nyquist bin.
        double meanSquare = 0;
        for (int32_t i = 0; i < n; ++i)
            meanSquare += double(st.TraceBuf[size_t(i)]) * st.TraceBuf[size_t(i)];
        meanSquare /= n;
        double nyquist = 0;
        for (int32_t i = 0; i < n; ++i)
            nyquist += (i % 2 ? -1.0 : 1.0) * st.TraceBuf[size_t(i)];
        nyquist = (nyquist / n) * (nyquist / n);
        double spectrum = std::pow(st.SpAmp[0] / 2.0, 2) + nyquist;
        for (int32_t j = 1; j < n / 2; ++j)
            spectrum += double(st.SpAmp[size_t(j)]) * st.SpAmp[size_t(j)] / 2;
        ASSERT_NEAR(spectrum, meanSquare, 1e-4 * meanSquare + 1e-6) << "trace " << k;
        ASSERT_GE(st.PeakBin, 3) << "dB scale";
        ASSERT_LT(st.PeakBin, n / 2);
        NewValue(st, an);
        for (const auto& c : an)
            ASSERT_TRUE(c.find("NaN") == std::string::npos && c.find("Inf") == std::string::npos)
                << c << " at trace " << k;
    }
    EXPECT_GT(st.LastTrace, 300);
}
