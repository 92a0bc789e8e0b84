// The transform, the ten windows and the trace-length rules: the numeric floor every spectrum
// stands on.
#include "engine/fft.h"
#include "engine/trace_length.h"
#include "engine/windows.h"
#include "state/program_state.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <complex>
#include <random>

using namespace kv;

namespace {

/// The forward transform by its definition, in double.
std::vector<std::complex<double>> naiveForward(const std::vector<float>& re,
                                               const std::vector<float>& im) {
    const size_t n = re.size();
    std::vector<std::complex<double>> out(n);
    for (size_t k = 0; k < n; ++k) {
        std::complex<double> s = 0;
        for (size_t t = 0; t < n; ++t)
            s += std::complex<double>(re[t], im[t]) *
                 std::polar(1.0, -2 * M_PI * double((t * k) % n) / double(n));
        out[k] = s / double(n);
    }
    return out;
}

double rmsError(const std::vector<float>& re, const std::vector<float>& im,
                const std::vector<std::complex<double>>& want) {
    double e = 0;
    for (size_t k = 0; k < want.size(); ++k)
        e += std::norm(std::complex<double>(re[k], im[k]) - want[k]);
    return std::sqrt(e / double(want.size()));
}

} // namespace

TEST(FourierTransform, AgreesWithTheDefinitionForAnyLengthAndInput) {
    std::mt19937 gen(7);
    std::normal_distribution<float> noise(0.0f, 1.0f);
    for (int32_t n : {1, 2, 6, 100, 1000, 1024}) {
        for (bool complexInput : {false, true}) {
            std::vector<float> re(static_cast<size_t>(n)), im(static_cast<size_t>(n), 0.0f);
            for (auto& x : re)
                x = noise(gen);
            if (complexInput)
                for (auto& x : im)
                    x = noise(gen);
            const auto want = naiveForward(re, im);
            fft::forward(re.data(), im.data(), n);
            EXPECT_LT(rmsError(re, im, want), 1e-6) << "n = " << n << " complex " << complexInput;
        }
    }
}

TEST(FourierTransform, InverseGivesTheTraceBackAtItsOwnScale) {
    std::vector<float> re(4096), im(4096, 0.0f);
    for (size_t t = 0; t < re.size(); ++t)
        re[t] = float(std::sin(0.01 * double(t * t % 977)) * 300.0);
    const auto orig = re;
    fft::forward(re.data(), im.data(), 4096);
    fft::inverse(re.data(), im.data(), 4096);
    for (size_t t = 0; t < re.size(); ++t) {
        ASSERT_NEAR(re[t], orig[t], 1e-3) << t;
        ASSERT_NEAR(im[t], 0.0f, 1e-3) << t;
    }
}

TEST(FourierTransform, ManyOddLengthsDoNotPileUpPlans) {
    // A file may declare any sample count; a long session (or a fuzzer) meets thousands of them.
    std::vector<float> re(301), im(301);
    for (int32_t n = 3; n <= 301; n += 2) {
        std::fill(re.begin(), re.end(), 1.0f);
        std::fill(im.begin(), im.end(), 0.0f);
        fft::forward(re.data(), im.data(), n);
        ASSERT_FLOAT_EQ(re[0], 1.0f) << n;
    }
    EXPECT_LE(fft::cachedLengths(), 64u);
    // A length whose plans were dropped is planned again and still transforms right.
    std::mt19937 gen(3);
    std::normal_distribution<float> noise(0.0f, 1.0f);
    std::vector<float> x(5), y(5);
    for (auto& v : x)
        v = noise(gen);
    for (auto& v : y)
        v = noise(gen);
    const auto want = naiveForward(x, y);
    fft::forward(x.data(), y.data(), 5);
    EXPECT_LT(rmsError(x, y, want), 1e-6);
}

TEST(FourierTransform, RefusesLengthsItCannotPlan) {
    float x = 0;
    EXPECT_THROW(fft::forward(&x, &x, 0), std::invalid_argument);
    EXPECT_THROW(fft::forward(&x, &x, -4), std::invalid_argument);
}

TEST(WindowTable, NamesAndGainsFollowTheOptionNumber) {
    ProgramState st;
    st.FFT_Window = 5;
    EXPECT_EQ(SetWindowName(st), "Flat top");
    EXPECT_EQ(st.WindowGain, 0.28f);
    EXPECT_STREQ(windowOptionName(5), "Flat Top");
    EXPECT_STREQ(windowOptionName(6), "Gaussian(3)");
    EXPECT_STREQ(windowStatusName(6), "Gaussian");
    st.FFT_Window = 4;
    SetWindowName(st);
    EXPECT_EQ(st.WindowGain, 0.4f);
    // A number outside the table applies nothing and leaves the gain as it was.
    st.FFT_Window = 11;
    EXPECT_EQ(SetWindowName(st), "");
    EXPECT_EQ(st.WindowGain, 0.4f);
    float x[4] = {1, 2, 3, 4};
    applyWindowTo(11, x, 4);
    applyWindowTo(0, x, 4);
    EXPECT_EQ(x[3], 4.0f);
}

TEST(WindowShape, CountsFromOneSoTheCurveIsOneSampleLate) {
    const int32_t n = 1024;
    // Hann from i = 1: the first sample is already above 0 and the last one, past the period's
    // end, is not quite 0 again.
    std::vector<float> x(size_t(n), 1.0f);
    applyWindowTo(7, x.data(), n);
    const double c1 = std::cos(6.2831852 * 1 / 1023.0);
    EXPECT_EQ(x[0], float(float((1 - c1) * 0.5)));
    EXPECT_GT(x[n - 1], 0.0f);
    EXPECT_LT(x[n - 1], 1e-4f);
    // The peak of a Hann counted from 0 would be at index 511.5; here it sits one sample lower.
    EXPECT_GT(x[510], x[512]);
}

TEST(WindowShape, EveryProductIsTheDoubleProductRoundedOnce) {
    // Windows whose values are all floats multiply in single precision; the bits must be those of
    // the product formed in double, for ordinary, huge and subnormal samples alike, in place or
    // into another array.
    std::mt19937 gen(11);
    std::uniform_real_distribution<float> mant(-2.0f, 2.0f);
    std::uniform_int_distribution<int> expo(-140, 120);
    for (int32_t n : {1024, 1000, 7})
        for (int window = 1; window <= 10; ++window) {
            std::vector<float> x(static_cast<size_t>(n));
            for (auto& v : x)
                v = std::ldexp(mant(gen), expo(gen));
            std::vector<float> inPlace = x, into(size_t(n), -1.0f);
            applyWindowTo(window, inPlace.data(), n);
            windowInto(window, x.data(), into.data(), n);
            for (int32_t i = 0; i < n; ++i) {
                const float want =
                    window == 10 ? x[size_t(i)]
                                 : float(windowValue(window, i + 1, n) * double(x[size_t(i)]));
                ASSERT_EQ(std::bit_cast<uint32_t>(inPlace[size_t(i)]),
                          std::bit_cast<uint32_t>(want))
                    << "window " << window << " n " << n << " i " << i;
                ASSERT_EQ(std::bit_cast<uint32_t>(into[size_t(i)]), std::bit_cast<uint32_t>(want));
            }
        }
}

TEST(WindowShape, BartlettHalvesDoNotMeetAndEndBelowZero) {
    const int32_t n = 1024;
    std::vector<float> x(size_t(n), 1.0f);
    applyWindowTo(2, x.data(), n);
    EXPECT_EQ(x[n / 2 - 1], float(2.0 * 512 / 1023)) << "the rising half ends above 1";
    EXPECT_EQ(x[n / 2], float((1024 - 513 - 1) * 2.0 / 1023));
    EXPECT_EQ(x[n - 1], float(-2.0 / 1023)) << "i = N multiplies by a small negative number";
    std::vector<float> t(size_t(n), 1.0f);
    applyWindowTo(9, t.data(), n);
    EXPECT_EQ(t[0], float(1.0 / 1023));
    EXPECT_EQ(t[n - 1], float(1.0 / 1023));
}

TEST(WindowShape, AChangeOfWindowOrLengthIsSeenAtTheNextTrace) {
    std::vector<float> a(256, 1.0f), b(256, 1.0f), c(512, 1.0f);
    applyWindowTo(7, a.data(), 256);
    applyWindowTo(8, b.data(), 256);
    applyWindowTo(8, c.data(), 512);
    EXPECT_NE(a[10], b[10]);
    EXPECT_NE(b[10], c[10]);
    std::vector<float> a2(256, 1.0f);
    applyWindowTo(7, a2.data(), 256);
    EXPECT_EQ(a, a2);
}

TEST(TimeDisplay, ShowsTheRawOrTaperedTraceAsTimeWindowedSays) {
    ProgramState st;
    st.Fft_Samples = st.Sp_Samples = 64;
    auto run = [&](int window, int timeWindowed) {
        st.FFT_Window = int16_t(window);
        st.TimeWindowed = int16_t(timeWindowed);
        st.FftRe.assign(65, 2.0f);
        st.FftRe[0] = 99.0f; // element 0 takes no part
        st.TraceBuf.assign(65, 0.0f);
        ApplyWindow(st);
        return st.TraceBuf;
    };
    for (int tw : {0, 1}) {
        auto u = run(10, tw);
        EXPECT_EQ(u[0], 2.0f);
        EXPECT_EQ(u[63], 2.0f);
    }
    auto raw = run(7, 0);
    EXPECT_EQ(raw[0], 2.0f);
    EXPECT_EQ(raw[32], 2.0f);
    EXPECT_LT(st.FftRe[1], 0.1f) << "the spectrum's copy is windowed";
    auto tapered = run(7, 1);
    EXPECT_LT(tapered[0], 0.1f);
    EXPECT_EQ(tapered[5], st.FftRe[6]);

    // The radargram's window reaches its trace only while TimeWindowed is 1.
    std::vector<float> rg(64, 2.0f);
    st.TimeWindowed = 0;
    ApplyWindowRg(st, rg.data());
    EXPECT_EQ(rg[0], 2.0f);
    st.TimeWindowed = 1;
    ApplyWindowRg(st, rg.data());
    EXPECT_LT(rg[0], 0.1f);
}

TEST(TraceLength, PadsUpOrTruncatesDownToAPowerOfTwo) {
    ProgramState st;
    st.PadWithZero = true;
    fitTraceLength(st, 1000);
    EXPECT_EQ(st.Sp_Samples, 1024);
    fitTraceLength(st, 1024);
    EXPECT_EQ(st.Sp_Samples, 1024);
    fitTraceLength(st, 1);
    EXPECT_EQ(st.Sp_Samples, 2);
    fitTraceLength(st, 70000);
    EXPECT_EQ(st.Sp_Samples, 2) << "no power fits: the length stays";
    st.PadWithZero = false;
    fitTraceLength(st, 1000);
    EXPECT_EQ(st.Sp_Samples, 512);
    fitTraceLength(st, 1024);
    EXPECT_EQ(st.Sp_Samples, 1024);
    fitTraceLength(st, 70000);
    EXPECT_EQ(st.Sp_Samples, 65536);
}

TEST(Thinning, KeepsWholeGroupsOnlyAndAveragesInDouble) {
    const float in[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    std::vector<float> out;
    thinTrace(in, 10, 4, ThinMode::Average, out);
    EXPECT_EQ(out, (std::vector<float>{2.5f, 6.5f})) << "i = 8 is above 10 - 4";
    thinTrace(in, 10, 4, ThinMode::Decimate, out);
    EXPECT_EQ(out, (std::vector<float>{1.0f, 5.0f}));
    // Large values whose float sum would lose the small ones.
    const float big[2] = {16777216.0f, 1.0f};
    thinTrace(big, 2, 2, ThinMode::Average, out);
    EXPECT_EQ(out[0], float(16777217.0 / 2));
}
