// The spectrum of the trace on show: amplitudes under each window, the read of one float more
// than a trace, the phase one index above the amplitude, Peak-hold and Average across traces,
// and the peak search of the dB and linear scales.
#include "engine/batch_math.h"
#include "spectrum_bench.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using namespace kv;
using kv::test::sine;
using kv::test::SpectrumBench;

namespace {
constexpr int32_t N = 1024;
} // namespace

TEST(SpectrumAmplitude, ASineOnABinReadsItsAmplitudeUnderEveryWindow) {
    // How far each window's rounded gain lets the reading stray from the true amplitude.
    const double tolerance[11] = {0, 0.01, 0.01, 0.02, 0.06, 0.01, 0.04, 0.01, 0.01, 0.01, 1e-5};
    SpectrumBench b(N, 2, sine(300.0, 100, N));
    for (int w = 1; w <= 10; ++w) {
        b.st.FFT_Window = int16_t(w);
        SetWindowName(b.st);
        b.show(0);
        EXPECT_NEAR(b.st.SpAmp[100] / 300.0, 1.0, tolerance[w]) << windowOptionName(w);
        EXPECT_EQ(b.st.PeakBin, 100) << windowOptionName(w);
        EXPECT_EQ(b.st.PeakFreq, b.st.BinWidth * 100);
        EXPECT_FLOAT_EQ(b.st.PeakDb, float(20 * std::log10(b.st.SpAmp[100] / 1000.0)));
        EXPECT_EQ(b.st.SpDisp[100], b.st.PeakDb) << "the peak column is exactly PeakDb";
    }
}

TEST(SpectrumAmplitude, AConstantReadsTwiceItsValueAtDc) {
    SpectrumBench b(N, 2, [](int64_t) { return 5.0; });
    b.st.YLinear = true;
    b.show(0);
    EXPECT_FLOAT_EQ(b.st.SpAmp[0], 10.0f);
    EXPECT_EQ(b.st.PeakBin, 0) << "in the linear scale DC takes part in the peak search";
    EXPECT_EQ(b.st.SpDisp[0], b.st.SpAmp[0]);
}

TEST(SpectrumRead, TakesOneFloatOfTheNextTraceAndZeroAtTheEnd) {
    SpectrumBench b(8, 2, [](int64_t t) { return double(t); });
    b.show(0);
    EXPECT_EQ(b.st.TraceBuf[0], 1.0f) << "the visible trace begins one sample late";
    EXPECT_EQ(b.st.TraceBuf[7], 8.0f) << "and ends with the first sample of its neighbour";
    b.show(1);
    EXPECT_EQ(b.st.TraceBuf[0], 9.0f);
    EXPECT_EQ(b.st.TraceBuf[7], 0.0f) << "past the end of the file";
    // A negative position means the first trace.
    b.st.CurrentTracePos = -5;
    FyllSpData(b.st);
    EXPECT_EQ(b.st.CurrentTracePos, b.st.FirstTracePos);
    EXPECT_EQ(b.st.TraceBuf[0], 1.0f);
}

TEST(SpectrumRead, SeesAWorkingFileReplacedUnderTheSamePath) {
    SpectrumBench b(8, 1, [](int64_t) { return 1.0; });
    b.show(0);
    EXPECT_EQ(b.st.TraceBuf[0], 1.0f);
    // A new data set deletes the working file and writes a new one at the same path.
    std::filesystem::remove(b.st.ActiveTracePath);
    b.write(std::vector<float>(8, 2.0f));
    b.show(0);
    EXPECT_EQ(b.st.TraceBuf[0], 2.0f);
    std::filesystem::remove(b.st.ActiveTracePath);
    b.show(0);
    EXPECT_EQ(b.st.TraceBuf[0], 0.0f) << "a missing working file reads as zeros";
}

TEST(SpectrumRead, FailsWithoutAWorkingFile) {
    SpectrumBench b(8, 1, [](int64_t) { return 0.0; });
    b.st.ActiveTracePath.clear();
    EXPECT_ANY_THROW(FyllSpData(b.st));
}

TEST(SpectrumPhase, StandsOneIndexAboveTheAmplitude) {
    SpectrumBench b(N, 2, [](int64_t t) { return 200 * std::cos(2 * M_PI * 100 * t / N); });
    b.show(0);
    ensurePhases(b.st);
    // The trace is read from its second sample, so the cosine starts one step of its bin late.
    EXPECT_NEAR(b.st.SpPhase[101], 360.0 * 100 / N, 1e-3);
    EXPECT_NEAR(b.st.SpAmp[100], 200.0, 1e-3);
    EXPECT_EQ(b.st.SpPhase[0], 0.0f);
}

TEST(SpectrumPhase, TheSingleTraceColumnsCarryThePhaseOfTheTraceBefore) {
    SpectrumBench b(N, 2, [](int64_t t) {
        const double ph = t < N ? 0.0 : M_PI / 2;
        return 200 * std::cos(2 * M_PI * 100 * t / N + ph);
    });
    b.show(0);
    ensurePhases(b.st);
    const float first = b.st.SpPhase[101];
    b.show(1);
    ensurePhases(b.st);
    EXPECT_NEAR(b.st.SpPhase[101] - first, 90.0, 1e-3);
    EXPECT_EQ(b.st.ColPhase[101], first) << "columns are folded before the phase is computed";

    // Average mode computes the phase first.
    b.st.ModeFFT = 4;
    b.st.AverVal = 1;
    b.show(0);
    ensurePhases(b.st);
    EXPECT_EQ(b.st.ColPhase[101], b.st.SpPhase[101]);
}

namespace {

/// Everything a trace leaves that does not depend on when its phases are taken.
void expectSameSpectrum(const ProgramState& a, const ProgramState& b) {
    EXPECT_EQ(a.SpAmp, b.SpAmp);
    EXPECT_EQ(a.SpDisp, b.SpDisp);
    EXPECT_EQ(a.ColVal, b.ColVal);
    EXPECT_EQ(a.ColLogX, b.ColLogX);
    EXPECT_EQ(a.TraceBuf, b.TraceBuf);
    EXPECT_EQ(a.PeakBin, b.PeakBin);
    EXPECT_EQ(a.PeakDb, b.PeakDb);
    EXPECT_EQ(a.Sp_Bins, b.Sp_Bins);
}

/// A tone whose phase moves from trace to trace over a ramp that differs in every trace.
double movingTone(int64_t t) {
    const int64_t k = t / N;
    return 200 * std::cos(2 * M_PI * 100 * t / N + 0.7 * double(k)) +
           3.0 * double((t * (k + 3)) % 7);
}

} // namespace

TEST(SpectrumPhase, PhasesTakenWhenAskedForAreThoseTakenAtOnce) {
    // One run asks for the phases after every trace, as a Phase view on show does; the other
    // only now and then, so that some folds meet phases still owed from the trace before.
    // Columns of two bins (the one-pass fold) and of eight (the general fold); Single Trace,
    // Peak-hold and Average; with a DC large enough that the first column holds bin 0, whose
    // phase is never owed; Uniform, and Hann with the raw trace on the O-scope.
    for (int mode : {1, 3, 4})
        for (int columns : {300, 70})
            for (double dc : {0.0, 5000.0}) {
                const int16_t window = dc == 0.0 ? 10 : 7;
                SCOPED_TRACE(testing::Message()
                             << "mode " << mode << " columns " << columns << " dc " << dc);
                const auto signal = [dc](int64_t t) { return movingTone(t) + dc; };
                SpectrumBench atOnce(N, 8, signal), late(N, 8, signal);
                for (SpectrumBench* b : {&atOnce, &late}) {
                    b->st.ModeFFT = int16_t(mode);
                    b->st.AverVal = 1;
                    b->st.PlotColumns = columns;
                    b->st.FFT_Window = window;
                    b->st.TimeWindowed = 0;
                    SetWindowName(b->st);
                }
                for (int k = 0; k < 7; ++k) {
                    atOnce.show(k);
                    ensurePhases(atOnce.st);
                    late.show(k);
                    expectSameSpectrum(atOnce.st, late.st);
                    if (k != 2 && k != 5 && k != 6) continue;
                    ensurePhases(late.st);
                    ensurePhases(late.st); // a second call finds nothing owed and changes nothing
                    SCOPED_TRACE(k);
                    ASSERT_EQ(late.st.SpPhase, atOnce.st.SpPhase);
                    ASSERT_EQ(late.st.ColPhase, atOnce.st.ColPhase);
                }
                // Not a run of zeros that would agree whatever was done.
                EXPECT_NE(atOnce.st.SpPhase[101], 0.0f);
                EXPECT_NE(atOnce.st.ColPhase[50], 0.0f);
                // The DC case did put bin 0 (log position -FullScalePos / 2) in the first column.
                if (dc != 0.0) {
                    EXPECT_EQ(atOnce.st.ColLogX[0], -500.0f);
                }
            }
}

TEST(SpectrumPhase, OwedPhasesOutliveWhateverOverwritesTheTransform) {
    SpectrumBench atOnce(N, 3, movingTone), late(N, 3, movingTone);
    atOnce.show(1);
    ensurePhases(atOnce.st);
    late.show(1);
    // Windowing FftRe again (as the whitening's fresh read does) leaves the phases on show.
    ApplyWindow(late.st);
    ApplyWindow(atOnce.st);
    ensurePhases(late.st);
    EXPECT_EQ(late.st.SpPhase, atOnce.st.SpPhase);

    // A new length clears the phases: nothing owed from before comes back over them.
    late.show(2);
    InitFftState(late.st);
    ensurePhases(late.st);
    EXPECT_EQ(late.st.SpPhase, std::vector<float>(N + 1, 0.0f));

    // A shorter transform without a new InitFftState keeps the longer one's phases above its own.
    for (SpectrumBench* b : {&atOnce, &late}) {
        b->st.Fft_Samples = N;
        b->show(0);
        if (b == &atOnce) ensurePhases(b->st);
        b->st.Fft_Samples = N / 4;
        b->show(1);
        ensurePhases(b->st);
    }
    EXPECT_EQ(late.st.SpPhase, atOnce.st.SpPhase);
    EXPECT_NE(late.st.SpPhase[N / 2 - 1], 0.0f);
}

TEST(SpectrumFilter, TheFilterSeesTheWholeTransformAndTheAmplitudesMirror) {
    // A filter that shapes nothing but keeps what it was given.
    struct Recording : SpectrumHooks {
        mutable std::vector<float> re, im;
        bool transformFilterOn(const ProgramState&) const override { return true; }
        void filterTransform(const ProgramState&, float* r, float* i, int32_t n) const override {
            re.assign(r + 1, r + 1 + n);
            im.assign(i + 1, i + 1 + n);
        }
    } hooks;
    SpectrumBench b(N, 2, [](int64_t t) { return 300 * std::sin(0.37 * double(t)) + (t % 5); });
    b.st.spectrumHooks = &hooks;
    b.show(1);
    ASSERT_EQ(hooks.re.size(), size_t(N));
    for (int32_t k = 1; k < N; ++k) {
        ASSERT_EQ(hooks.re[size_t(k)], hooks.re[size_t(N - k)]) << "element " << k;
        ASSERT_EQ(hooks.im[size_t(k)], -hooks.im[size_t(N - k)]) << "element " << k;
    }
    EXPECT_GT(std::fabs(hooks.im[N / 4]), 0.0f);
    for (int32_t j = 1; j < N / 2; ++j)
        EXPECT_NEAR(b.st.SpAmp[size_t(N - j)], b.st.SpAmp[size_t(j)],
                    1e-4 * b.st.SpAmp[size_t(j)] + 1e-4)
            << "bin " << j;
    b.st.spectrumHooks = nullptr;
}

TEST(SpectrumModes, PeakHoldKeepsTheMaximaUntilItIsReset) {
    SpectrumBench b(N, 3, [](int64_t t) {
        return t < N ? 300 * std::sin(2 * M_PI * 100 * t / N)
                     : 200 * std::sin(2 * M_PI * 200 * t / N);
    });
    b.st.ModeFFT = 3;
    b.show(0);
    b.show(1);
    EXPECT_NEAR(b.st.SpAmp[100], 300.0, 0.01);
    EXPECT_NEAR(b.st.SpAmp[200], 200.0, 0.01);
    EXPECT_EQ(b.st.PeakBin, 100);
    EXPECT_EQ(b.st.PeakHoldBins, N / 2);

    // A move back: the accumulator is cleared and plain traces show.
    resetPeakHold(b.st);
    b.st.ModeFFT = 1;
    b.show(0);
    EXPECT_NEAR(b.st.SpAmp[200], 0.0, 0.01);
    // Forward again: only what is collected from here on.
    b.st.ModeFFT = 3;
    b.show(1);
    EXPECT_NEAR(b.st.SpAmp[100], 0.0, 0.01);
    EXPECT_NEAR(b.st.SpAmp[200], 200.0, 0.01);

    // Every InitFftState forgets the held peaks as well.
    InitFftState(b.st);
    b.show(0);
    EXPECT_NEAR(b.st.SpAmp[200], 0.0, 0.01);
}

TEST(SpectrumModes, AverageSumsAverValPlusOneTracesAndDividesByAverVal) {
    SpectrumBench b(N, 6, sine(100.0, 100, N));
    b.st.ModeFFT = 4;
    b.st.AverVal = 2;
    b.st.TraceStep = 2;
    b.show(0);
    EXPECT_NEAR(b.st.SpAmp[100], 150.0, 0.01) << "three identical traces give 1.5 times one";
    EXPECT_EQ(b.st.CurrentTracePos, 1 + 2 * N * 4) << "left on the last trace of the group";
}

TEST(SpectrumModes, AverageLeavesTheLastElementAsTheLastTraceGaveIt) {
    // Trace k holds the constant k + 1.
    SpectrumBench b(N, 5, [](int64_t t) { return double(t / N + 1); });
    b.st.ModeFFT = 4;
    b.st.AverVal = 2;
    b.st.TraceStep = 2;
    b.st.YLinear = true;
    b.show(0); // traces 0, 1, 2: (1 + 2 + 3) / 2 = 3, then one float of trace 3
    EXPECT_FLOAT_EQ(b.st.SpAmp[0], float(2.0 * (3.0 * (N - 1) + 4.0) / N));
    b.show(1); // traces 2, 3, 4: one trace of overlap, and the last float lies past the end
    EXPECT_FLOAT_EQ(b.st.SpAmp[0], float(2.0 * (6.0 * (N - 1) + 0.0) / N));
}

namespace {

/// A state holding a spectrum of eight bins, full scale 100, 10 Hz a bin.
ProgramState eightBins(std::vector<float> amp) {
    ProgramState st;
    st.FullScalePos = 100.0f;
    st.Fft_Samples = 16;
    st.Sp_Bins = 8;
    st.BinWidth = 10.0f;
    st.SpAmp = std::move(amp);
    return st;
}

} // namespace

TEST(SpectrumPeak, DbSkipsTheLowestBinsAndLinearTakesTheLastOfEqualMaxima) {
    ProgramState st = eightBins({0, 50, 3, 7, 1, 7, 2, 1, 0});
    st.YLinear = true;
    CreatedBArray(st);
    EXPECT_EQ(st.PeakBin, 1);
    EXPECT_EQ(st.PeakAmp, 50.0f);
    st.YLinear = false;
    CreatedBArray(st);
    EXPECT_EQ(st.PeakBin, 3) << "bins 0 to 2 are never the peak in dB, and the first of equals";
    EXPECT_EQ(st.PeakFreq, 30.0f);
    EXPECT_FLOAT_EQ(st.PeakDb, float(20 * std::log10(0.07)));
    st.SpAmp[1] = 0;
    st.YLinear = true;
    CreatedBArray(st);
    EXPECT_EQ(st.PeakBin, 5) << "linear: the last of equal maxima";
    // The floor: the smallest amplitude, relative to the top of the plot.
    st.SpAmp = {4, 5, 6, 7, 8, 2, 9, 9, 0};
    st.TopDb = -10.0f;
    CreatedBArray(st);
    EXPECT_FLOAT_EQ(st.FloorDbRel, float(20 * std::log10(0.02) + 10));
}

TEST(SpectrumPeak, SilenceIsFarUnderThePlotAndKeepsTheLastPeakBin) {
    ProgramState st = eightBins(std::vector<float>(17, 0.0f));
    st.PeakBin = 5;
    CreatedBArray(st);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(st.SpDisp[size_t(i)], -1000.0f);
    EXPECT_EQ(st.PeakDb, -1000.0f);
    EXPECT_EQ(st.PeakBin, 5) << "nothing after bin 2 stands above -FullScalePos dB";
    EXPECT_EQ(st.PeakAmp, -100.0f);
    // The linear scale has no such floor: the last of the equal zeros is the peak.
    st.YLinear = true;
    CreatedBArray(st);
    EXPECT_EQ(st.PeakBin, 7);
}

TEST(SpectrumHelpers, Atan2AndLog10KeepTheirOwnBranches) {
    EXPECT_EQ(Atan2(0, 0), 0.0);
    EXPECT_EQ(Atan2(1, 0), 1.5707963267949);
    EXPECT_EQ(Atan2(0, 0.5e-7), 0.0);
    EXPECT_EQ(Atan2(-1, 0), -1.5707963267949);
    EXPECT_EQ(Atan2(0, -1), 3.14159265358979);
    EXPECT_EQ(Atan2(-1e-9, -1), std::atan(1e-9) - 3.14159265358979);
    EXPECT_EQ(Log10(0.0, 2000.0f), -1000.0);
    EXPECT_DOUBLE_EQ(Log10(1000.0, 2000.0f), 3.0);
}

TEST(SpectrumSetUp, BinWidthCarriesTheThinningFactor) {
    ProgramState st;
    st.SampleRate = 8000.0;
    st.Fft_Samples = 1024;
    st.NewDS = 4;
    InitFftState(st);
    EXPECT_FLOAT_EQ(st.BinWidth, 8000.0f / (4 * 1024));
    EXPECT_EQ(st.Sp_Bins, 512);
    EXPECT_EQ(st.MaxFreq, st.BinWidth * 512);
    EXPECT_EQ(st.AmpCapacity, 2048);
    EXPECT_EQ(st.SpAmp.size(), 2049u);
    EXPECT_EQ(st.SpPhase.size(), 1025u);
    EXPECT_EQ(st.PeakHoldAcc.size(), 513u);
}

TEST(SpectrumBackTrace, TheWaterfallsSecondTraceIsBuiltBesideTheFirst) {
    SpectrumBench b(N, 4, [](int64_t t) {
        return t >= 2 * N && t < 3 * N ? 300 * std::sin(2 * M_PI * 50 * t / N) : 0.0;
    });
    b.st.PlayRew = true;
    b.st.BackTraceTop = 1;
    b.st.BackTraceIndex = 2;
    b.show(0);
    EXPECT_EQ(b.st.BackTracePos, 1 + 2 * N * 4);
    EXPECT_NEAR(b.st.BackAmp[50], 300.0, 0.01);
    EXPECT_NEAR(b.st.SpAmp[50], 0.0, 0.01);
    EXPECT_FLOAT_EQ(b.st.BackDisp[50], float(20 * std::log10(b.st.BackAmp[50] / 1000.0)));
    EXPECT_EQ(b.st.BackCol[50], b.st.BackDisp[50]);
}

namespace {

/// A filter that keeps bins 0..49 and their mirror, and a gain of 2 on the time trace.
struct LowPassAndGain : SpectrumHooks {
    bool transformFilterOn(const ProgramState&) const override { return true; }
    void filterTransform(const ProgramState&, float* re, float* im, int32_t n) const override {
        for (int32_t k = 1; k <= n; ++k) {
            const int32_t bin = k - 1;
            if (bin >= 50 && bin <= n - 50) re[k] = im[k] = 0.0f;
        }
    }
    float traceGain(const ProgramState&) const override { return 2.0f; }
};

} // namespace

TEST(SpectrumConditioning, TheFilterShapesBothSpectrumAndTraceAndTheGainTheTrace) {
    SpectrumBench b(N, 2, [](int64_t t) {
        return 100 * std::sin(2 * M_PI * 10 * t / N) + 100 * std::sin(2 * M_PI * 300 * t / N);
    });
    LowPassAndGain hooks;
    b.st.spectrumHooks = &hooks;
    b.show(0);
    EXPECT_NEAR(b.st.SpAmp[10], 100.0, 0.01);
    EXPECT_NEAR(b.st.SpAmp[300], 0.0, 0.01);
    EXPECT_NEAR(b.st.SpAmp[N - 10], 100.0, 0.01) << "all N amplitudes, the upper half mirrored";
    // The time trace is the filtered one, then doubled.
    EXPECT_NEAR(b.st.TraceBuf[0], 2 * 100 * std::sin(2 * M_PI * 10 * 1 / N), 0.01);
}

TEST(SpectrumArithmetic, WholeTraceDecibelsAndPhasesAgreeWithTheirDefinitions) {
    std::vector<float> amp, re, im;
    for (int e = -45; e <= 38; ++e)
        for (float m : {1.0f, 1.2345f, 1.4142f, 1.4143f, 1.9999f}) {
            amp.push_back(m * std::pow(10.0f, float(e) / 1.0f) / 10.0f);
            re.push_back((e % 2 ? -1.0f : 1.0f) * amp.back());
            im.push_back((e % 3 ? 1.0f : -1.0f) * m * 0.37f);
        }
    amp.push_back(0.0f);
    re.push_back(0.0f);
    im.push_back(0.0f);
    re.push_back(5e-8f);
    im.push_back(-3.0f);
    amp.push_back(1e-40f); // subnormal
    const int32_t n = int32_t(amp.size());
    std::vector<float> db(amp.size()), deg(amp.size());
    const float fs = 32767.0f;
    batch::decibels(amp.data(), db.data(), n, fs);
    batch::phaseDegrees(re.data(), im.data(), deg.data(), n, 3.14159265358979);
    for (int32_t j = 0; j < n; ++j) {
        const float want = float(20.0 * Log10(double(amp[size_t(j)] / fs), fs));
        EXPECT_NEAR(db[size_t(j)], want, std::max(1e-4, std::fabs(want) * 3e-7)) << amp[size_t(j)];
        const float wantDeg = float(Atan2(im[size_t(j)], re[size_t(j)]) / 3.14159265358979 * 180.0);
        EXPECT_NEAR(deg[size_t(j)], wantDeg, 2e-4) << re[size_t(j)] << " " << im[size_t(j)];
    }
    EXPECT_EQ(db[size_t(n) - 2 - 0], -327670.0f) << "silence";
}

namespace {

/// Each .cpp file under src/ and bench/, with its text: for the checks that every reader of an
/// owed array asks for it first.
void forEachSource(const std::function<void(const std::string& path, const std::string& text)>& f) {
    namespace fs = std::filesystem;
    for (const char* folder : {"src", "bench"})
        for (const auto& e : fs::recursive_directory_iterator(fs::path(KV_SOURCE_DIR) / folder)) {
            if (e.path().extension() != ".cpp") continue;
            std::ifstream in(e.path());
            f(e.path().string(), std::string{std::istreambuf_iterator<char>(in), {}});
        }
}

} // namespace

TEST(SpectrumPhase, EveryReaderOfThePhasesAsksForThemFirst) {
    // The phases are taken on demand, so a new reader that forgets to ask reads the trace
    // before, or zeros: in every source that names the phase arrays, the builder and the fold
    // aside, the arrays must come with ensurePhases (or, for the fold, oweColumnPhases).
    int readers = 0;
    forEachSource([&](const std::string& path, const std::string& text) {
        if (text.find("SpPhase") == std::string::npos && text.find("ColPhase") == std::string::npos)
            return;
        ++readers;
        EXPECT_TRUE(text.find("ensurePhases(") != std::string::npos ||
                    text.find("oweColumnPhases(") != std::string::npos)
            << path << " reads the phases without asking for them";
    });
    EXPECT_GE(readers, 5) << "the phase view, the reference files, the command line, the fold";
}

TEST(SpectrumDecibels, OwedDecibelsGiveWhatDecibelsFormedAtOnceGive) {
    // A line between bins (slow leakage, where many bins of a column are close), a moving tone
    // over a ramp, and silence (every bin at the floor, which needs the decibels after all);
    // wide columns (folded from the amplitudes) and narrow ones (from the decibels).
    const int32_t n = 4096;
    const std::function<double(int64_t)> signals[] = {
        [](int64_t t) { return 8000 * std::sin(0.0917 * double(t)) + double(t % 13); }, movingTone,
        [](int64_t) { return 0.0; }};
    for (const auto& signal : signals)
        for (int columns : {30, 100, 300}) {
            SCOPED_TRACE(testing::Message() << "columns " << columns);
            SpectrumBench b(n, 3, signal);
            b.st.PlotColumns = columns;
            for (int k = 0; k < 3; ++k) {
                b.st.PeakBin = 7;
                b.show(k);
                const std::vector<float> val = b.st.ColVal, logX = b.st.ColLogX;
                const int32_t peak = b.st.PeakBin;
                // The decibels formed now, and the columns folded from them again.
                settleDecibels(b.st);
                std::vector<float> want(size_t(n / 2));
                batch::decibels(b.st.SpAmp.data(), want.data(), n / 2, b.st.FullScalePos);
                ASSERT_TRUE(std::equal(want.begin(), want.end(), b.st.SpDisp.begin()));
                SamToWidth(b.st);
                EXPECT_EQ(val, b.st.ColVal);
                EXPECT_EQ(logX, b.st.ColLogX);
                // The peak: the first of the largest amplitudes from bin 3 among those over the
                // floor, or the one before when none is.
                int32_t want_peak = 7;
                float hi = -b.st.FullScalePos;
                for (int32_t i = 3; i < n / 2; ++i)
                    if (hi < b.st.SpAmp[size_t(i)] && b.st.SpDisp[size_t(i)] > -b.st.FullScalePos) {
                        hi = b.st.SpAmp[size_t(i)];
                        want_peak = i;
                    }
                EXPECT_EQ(peak, want_peak);
            }
        }

    // What rewrites the amplitudes forms the decibels owed from them first.
    SpectrumBench b(n, 2, movingTone);
    b.st.PlotColumns = 30;
    b.show(1);
    std::vector<float> want(size_t(n / 2));
    batch::decibels(b.st.SpAmp.data(), want.data(), n / 2, b.st.FullScalePos);
    InitFftState(b.st);
    EXPECT_TRUE(std::equal(want.begin(), want.end(), b.st.SpDisp.begin()));
}

TEST(SpectrumDecibels, EveryReaderOfTheDecibelsAsksForThemFirst) {
    // As with the phases: a source that reads SpDisp's values (not only its size) must form the
    // owed decibels first, or fold them from the amplitudes.
    int readers = 0;
    forEachSource([&](const std::string& path, const std::string& text) {
        bool reads = false;
        for (size_t at = text.find("SpDisp"); at != std::string::npos;
             at = text.find("SpDisp", at + 1)) {
            const std::string next = text.substr(at + 6, 8);
            reads = reads || !(next.starts_with(".empty()") || next.starts_with(".size()") ||
                               next.starts_with(".resize"));
        }
        if (!reads) return;
        ++readers;
        EXPECT_NE(text.find("settleDecibels("), std::string::npos)
            << path << " reads the decibels without asking for them";
    });
    EXPECT_GE(readers, 3) << "the builder, the fold, auto-span";
}
