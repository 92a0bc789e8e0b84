// The conditioning operations on generated data sets: the FFT filter's band and shape, the GPR
// read-out, the whitening scan and substitution, auto-span, and what the radargram takes.
#include "conditioning/conditioning_hooks.h"
#include "conditioning/fft_filter.h"
#include "conditioning/span.h"
#include "conditioning/whitening.h"
#include "engine/batch_math.h"
#include "engine/fft.h"
#include "engine/spectrum_bench.h"
#include "state/program_state.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;
using kv::test::SpectrumBench;

namespace {

constexpr int32_t N = 256; // 1024 Hz sampling: 4 Hz a bin, MaxFreq 512 Hz

double tone(int64_t t, double cycles, double a) {
    return a * std::sin(2 * M_PI * cycles * double(t % N) / N);
}

} // namespace

TEST(FftFilter, RemovesTheToneOutsideTheBandFromSpectrumAndTrace) {
    SpectrumBench b(N, 1, [](int64_t t) { return tone(t, 10, 300) + tone(t, 80, 300); });
    installConditioning(b.st);
    ASSERT_TRUE(setBoxFilterBand(b.st, 20.0, 120.0)); // bins 5 to 30
    b.st.FftFilterOn = true;
    b.show(0);
    EXPECT_NEAR(b.st.SpAmp[10], 300.0, 0.5);
    EXPECT_NEAR(b.st.SpAmp[80], 0.0, 1e-3);
    // All N elements are formed and the mirror half was zeroed with the rest: no second copy.
    EXPECT_NEAR(b.st.SpAmp[N - 10], 0.0, 1e-3);
    // The time trace is the band alone: half the first tone's amplitude (the analytic half).
    float peak = 0;
    for (int i = 0; i < N; ++i)
        peak = std::max(peak, std::fabs(b.st.TraceBuf[size_t(i)]));
    EXPECT_NEAR(peak, 150.0, 2.0);

    b.st.FftFilterOn = false;
    b.show(0);
    EXPECT_NEAR(b.st.SpAmp[80], 300.0, 0.5) << "off again: the plain spectrum";
}

TEST(FftFilter, StopEdgesTapersAndTheirFirstFactor) {
    SpectrumBench b(N, 1, [](int64_t) { return 0.0; });
    // 42 Hz puts the high-pass stop edge exactly on element 10 (40 Hz), so that the skirt's
    // first element survives the zeroing and shows its factor.
    ASSERT_TRUE(setBoxFilterBand(b.st, 42.0, 100.0));
    ASSERT_EQ(b.st.BoxHPStop, 40.0f);
    EXPECT_FLOAT_EQ(b.st.BoxBinWidth, 4.0f);
    EXPECT_FLOAT_EQ(b.st.BoxLPStop, 105.0f);
    EXPECT_EQ(b.st.BoxHPStopBin, 10);
    EXPECT_EQ(b.st.BoxLPStopBin, 26); // 105 Hz
    EXPECT_EQ(b.st.BoxHPStep, 180);   // 90 / (10.5 - 10)
    EXPECT_EQ(b.st.BoxLPStep, 90);    // 90 / (26 - 25)
    std::vector<float> re(N + 1, 1.0f), im(N + 1, 1.0f);
    BoxFilterTransform(b.st, re.data(), im.data(), N);
    // Element k is taken as k bins high: element 9 (36 Hz) is under the stop edge.
    EXPECT_EQ(re[9], 0.0f);
    // The skirt's first element is multiplied by sin of the written-out 180 degrees: tiny but
    // not 0.
    EXPECT_NE(re[10], 0.0f);
    EXPECT_NEAR(re[10], std::sin(3.14159265359), 1e-15);
    EXPECT_EQ(im[10], re[10]);
    EXPECT_EQ(re[11], 1.0f);
    EXPECT_FLOAT_EQ(re[25], 1.0f) << "sin 90 degrees at the low-pass corner";
    EXPECT_NEAR(re[26], 0.0f, 1e-12) << "sin 0 at its stop edge";
    EXPECT_EQ(re[27], 0.0f) << "above the low-pass stop edge";
    EXPECT_EQ(re[N - 3], 0.0f) << "the mirror half goes with it";
}

TEST(FftFilter, CornerRules) {
    SpectrumBench b(N, 1, [](int64_t) { return 0.0; });
    // A high-pass corner of 0 is one bin, its stop edge a bin less 5 %.
    ASSERT_TRUE(setBoxFilterBand(b.st, 0.0, 100.0));
    EXPECT_FLOAT_EQ(b.st.BoxHP, 4.0f);
    EXPECT_FLOAT_EQ(b.st.BoxHPStop, float(4.0f / 1.05));
    EXPECT_EQ(b.st.BoxHPStopBin, 0);
    EXPECT_EQ(b.st.BoxHPStep, 90);

    // A low-pass corner above MaxFreq is held there, and so is its stop edge; corner and stop
    // edge then fall in one bin and the taper has no width: no band, state untouched.
    const float before = b.st.BoxLP;
    EXPECT_FALSE(setBoxFilterBand(b.st, 40.0, 5000.0));
    EXPECT_EQ(b.st.BoxLP, before);
    // Figures out of every range end the same way.
    EXPECT_FALSE(setBoxFilterBand(b.st, 1e300, 100.0));
    EXPECT_FALSE(setBoxFilterBand(b.st, 40.0, -1e300));
}

TEST(GprReadout, FindsTheTenDecibelPointsRoundThePeak) {
    SpectrumBench b(N, 1, [](int64_t t) { return tone(t, 20, 500); });
    b.show(0);
    ASSERT_EQ(b.st.PeakBin, 20);
    GPRFilter(b.st);
    EXPECT_FLOAT_EQ(b.st.GprHighHz, 21 * 4.0f);
    EXPECT_FLOAT_EQ(b.st.GprLowHz, 19 * 4.0f);

    const BandFigure k = bandFigure(12345.0), m = bandFigure(2.5e6), h = bandFigure(0.0);
    EXPECT_EQ(k.number + " " + k.unit, "12.3 kHz");
    EXPECT_EQ(m.number + " " + m.unit, "2.5 MHz");
    EXPECT_EQ(h.number + " " + h.unit, "0 Hz");
}

TEST(Whitening, ScansEveryTraceForTheLargestPositiveRealPart) {
    // Three traces whose tone at bin 12 grows; the band's constant comes from the strongest.
    SpectrumBench b(N, 3, [](int64_t t) {
        const double a = 100.0 * double(t / N + 1);
        return a * std::cos(2 * M_PI * 12 * double(t % N) / N + 0.3);
    });
    setWhiteBand(b.st, 40.0, 60.0); // elements 10 to 15
    EXPECT_EQ(b.st.WhiteHighHz, 60.0f);
    int calls = 0;
    ASSERT_TRUE(ScanWhiteBand(b.st, [&](int32_t t) { return ++calls == t; }));
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(b.st.WhiteLowBin, 10);
    EXPECT_EQ(b.st.WhiteHighBin, 15);

    // The same by hand: element k of trace t's transform is sample k-1 .. read one float late.
    float best = 0, bestIm = 0;
    for (int t = 0; t < 3; ++t) {
        std::vector<float> re(N), im(N, 0.0f);
        for (int i = 0; i < N; ++i) {
            // The last trace's last element lies past the end of the file and reads 0.
            const int64_t s = int64_t(t) * N + i + 1;
            re[size_t(i)] = s >= 3 * N ? 0.0f
                                       : float(100.0 * double(s / N + 1) *
                                               std::cos(2 * M_PI * 12 * double(s % N) / N + 0.3));
        }
        fft::forward(re.data(), im.data(), N);
        for (int k = 10; k <= 15; ++k)
            if (re[size_t(k - 1)] > best) {
                best = re[size_t(k - 1)];
                bestIm = im[size_t(k - 1)];
            }
    }
    EXPECT_FLOAT_EQ(b.st.WhiteRe, best);
    EXPECT_FLOAT_EQ(b.st.WhiteIm, bestIm);

    // Whitening on: every element of the band carries the constant's amplitude.
    installConditioning(b.st);
    b.st.WhiteningOn = true;
    b.show(0);
    const float a = float(2 * std::hypot(double(best), double(bestIm)));
    for (int k = 10; k <= 15; ++k)
        EXPECT_NEAR(b.st.SpAmp[size_t(k - 1)], a, a * 1e-5) << k;
}

TEST(Whitening, PhasesTakenWhenAskedForAreThoseTakenAtOnce) {
    // The whitening reads the trace afresh into the transform arrays, after the phases in
    // Average mode and before them in Single Trace: phases owed at that moment must be those of
    // the transform as it stood.
    const auto signal = [](int64_t t) {
        return tone(t, 12, 100.0 * double(t / N + 1)) + tone(t + t / N, 30, 40.0) + double(t % 5);
    };
    for (int mode : {1, 4}) {
        SCOPED_TRACE(mode);
        SpectrumBench atOnce(N, 5, signal), late(N, 5, signal);
        for (SpectrumBench* b : {&atOnce, &late}) {
            setWhiteBand(b->st, 40.0, 60.0);
            ASSERT_TRUE(ScanWhiteBand(b->st, [](int32_t) { return true; }));
            installConditioning(b->st);
            b->st.WhiteningOn = true;
            b->st.ModeFFT = int16_t(mode);
            b->st.AverVal = 1;
            b->st.PlotColumns = 60;
        }
        for (int k = 0; k < 4; ++k) {
            atOnce.show(k);
            ensurePhases(atOnce.st);
            late.show(k);
        }
        ensurePhases(late.st);
        EXPECT_EQ(late.st.SpPhase, atOnce.st.SpPhase);
        EXPECT_EQ(late.st.ColPhase, atOnce.st.ColPhase);
        EXPECT_EQ(late.st.SpAmp, atOnce.st.SpAmp);
    }
}

TEST(Whitening, SingleTracePhasesAreThoseOfTheWhiteningsOwnTransform) {
    // In Single Trace the whitening reads the trace afresh into the transform arrays before the
    // phases are owed, so the phases on show are those of its transform, not the builder's.
    SpectrumBench b(N, 5, [](int64_t t) { return tone(t, 12, 100.0) + tone(t, 50, 30.0); });
    setWhiteBand(b.st, 40.0, 60.0);
    ASSERT_TRUE(ScanWhiteBand(b.st, [](int32_t) { return true; }));
    installConditioning(b.st);
    b.st.WhiteningOn = true;
    b.st.ModeFFT = 1;
    b.st.PlotColumns = 60;
    for (int k = 0; k < 3; ++k) {
        b.show(k);
        std::vector<float> want(size_t(N) / 2 + 1);
        batch::phaseDegrees(b.st.FftRe.data() + 1, b.st.FftIm.data() + 1, want.data() + 1, N / 2,
                            b.st.Pi);
        ensurePhases(b.st);
        for (size_t j = 1; j < want.size(); ++j)
            ASSERT_EQ(b.st.SpPhase[j], want[j]) << "trace " << k << " bin " << j;
    }
}

TEST(Whitening, SingleTraceBandClampAndCancel) {
    SpectrumBench b(N, 1, [](int64_t t) { return tone(t, 30, 200); });
    setWhiteBand(b.st, 0.0, 1e9);
    EXPECT_FLOAT_EQ(b.st.WhiteLowHz, 4.0f) << "0 is one bin";
    EXPECT_EQ(b.st.WhiteHighHz, b.st.MaxFreq) << "held at MaxFreq";
    std::vector<int32_t> seen;
    ASSERT_TRUE(ScanWhiteBand(b.st, [&](int32_t t) {
        seen.push_back(t);
        return true;
    }));
    EXPECT_EQ(seen, std::vector<int32_t>{1}) << "a single trace is scanned alone";
    EXPECT_GT(b.st.WhiteRe, 0.0f);

    // A scan stopped half-way changes nothing.
    const ProgramState before = b.st;
    setWhiteBand(b.st, 8.0, 20.0);
    b.st.WhiteLowHz = before.WhiteLowHz;
    EXPECT_FALSE(ScanWhiteBand(b.st, [](int32_t) { return false; }));
    EXPECT_EQ(b.st.WhiteRe, before.WhiteRe);
    EXPECT_EQ(b.st.WhiteLowBin, before.WhiteLowBin);
}

TEST(AutoSpan, BandRoundThePeakAtTheAutotuneLevel) {
    SpectrumBench b(N, 1, [](int64_t t) { return tone(t, 40, 500) + tone(t, 41, 400); });
    installConditioning(b.st);
    b.st.AutotuneOn = true;
    b.st.AutotuneLevel = 10;
    b.show(0);
    EXPECT_TRUE(b.st.SpanActive);
    EXPECT_EQ(b.st.SpanStart, 39);
    EXPECT_EQ(b.st.SpanEnd, 42);
    EXPECT_FLOAT_EQ(b.st.SpanLowFreq, 39 * 4.0f);
    EXPECT_FLOAT_EQ(b.st.SpanHighFreq, 42 * 4.0f);
    EXPECT_EQ(b.st.SpanBinCount, 3);

    // The bin width halves: the same frequencies are found again.
    b.st.BinWidth = 2.0f;
    respanForBinWidth(b.st);
    EXPECT_EQ(b.st.SpanStart, 78);
    EXPECT_EQ(b.st.SpanEnd, 84);
}

TEST(RadargramConditioning, GainIsWholeAndTheTraceIsFilteredBack) {
    SpectrumBench b(N, 1, [](int64_t) { return 0.0; });
    b.st.GainFactor = 2.6;
    EXPECT_EQ(radargramGain(b.st), 1) << "off";
    b.st.GainOn = true;
    EXPECT_EQ(radargramGain(b.st), 3);

    std::vector<float> re(N + 1), im, trace(N, -1.0f);
    for (int k = 1; k <= N; ++k)
        re[size_t(k)] = float(tone(k - 1, 10, 100) + tone(k - 1, 80, 100));
    conditionRadargramTrace(b.st, re, im, trace);
    EXPECT_EQ(trace[0], -1.0f) << "neither on: the trace as the caller left it";
    ASSERT_TRUE(setBoxFilterBand(b.st, 20.0, 120.0));
    b.st.FftFilterOn = true;
    conditionRadargramTrace(b.st, re, im, trace);
    float peak = 0;
    for (float x : trace)
        peak = std::max(peak, std::fabs(x));
    EXPECT_NEAR(peak, 50.0, 1.5) << "the band's tone alone, analytic half";
}
