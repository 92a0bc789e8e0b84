// The quality read-outs: which bins count as fundamental, noise, harmonics and spur, the six
// results on signals of known make-up, and the captions the labels show.
#include "spectrum_bench.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace kv;
using kv::test::SpectrumBench;

namespace {

constexpr int32_t N = 1024;

std::vector<int16_t> range(int from, int to) {
    std::vector<int16_t> v;
    for (int i = from; i <= to; ++i)
        v.push_back(int16_t(i));
    return v;
}

std::vector<int16_t> join(std::initializer_list<std::vector<int16_t>> parts) {
    std::vector<int16_t> v;
    for (const auto& p : parts)
        v.insert(v.end(), p.begin(), p.end());
    return v;
}

/// A state holding a hand-made spectrum of N/2 bins (all zero but what the test sets).
ProgramState spectrumWithPeak(int32_t peak, float amp = 1.0f) {
    ProgramState st;
    st.FullScalePos = 32767.0f;
    st.SpAmp.assign(2 * N + 1, 0.0f);
    st.SpAmp[size_t(peak)] = amp;
    st.PeakBin = peak;
    st.PeakHoldBins = N / 2;
    return st;
}

void allOn(ProgramState& st) {
    st.ShowSNR = st.ShowTHD = st.ShowSINAD = st.ShowSFDR = st.ShowENOB = st.ShowTHDN = true;
}

} // namespace

TEST(MetricBands, NoiseAndHarmonicsAreFixedBandsRoundMultiplesOfThePeak) {
    auto st = spectrumWithPeak(100);
    CountAnalys(st);
    EXPECT_EQ(st.NoiseList, join({range(2, 79), range(101, 199), range(201, 299), range(301, 399)}))
        << "the range at 401 is refused: 5 * 100 + 21 reaches the end of the band";
    EXPECT_EQ(st.NoiseCount, int32_t(st.NoiseList.size()));
    EXPECT_EQ(st.HarmList, join({range(179, 221), range(279, 321), range(379, 421)}));
    EXPECT_EQ(st.HarmCount, 129);
    EXPECT_DOUBLE_EQ(st.FundPower, 1.0);
}

TEST(MetricBands, TheBandWidthFollowsTheSampleWidthAndTheTektronixSource) {
    auto st = spectrumWithPeak(100);
    st.SampleBits = 8;
    CountAnalys(st);
    EXPECT_EQ(st.NoiseList.front(), 2);
    EXPECT_EQ(st.NoiseList[size_t(87)], 89) << "h = 10: noise up to P - 11";
    EXPECT_EQ(st.HarmList.front(), 189);
    st.SampleBits = 8;
    st.IsSht = true;
    CountAnalys(st);
    EXPECT_EQ(st.HarmList.front(), 183) << "h = 16 whatever SampleBits says";
}

TEST(MetricBands, APeakNearTheEdgeOfTheBandCountsAsOneBin) {
    for (int32_t p : {5, 500}) {
        auto st = spectrumWithPeak(p, 3.0f);
        st.SpAmp[size_t(p + 1)] = 4.0f; // a neighbour that would count inside the band
        CountAnalys(st);
        EXPECT_DOUBLE_EQ(st.FundPower, 3.0) << "peak at " << p;
    }
    auto st = spectrumWithPeak(100, 3.0f);
    st.SpAmp[101] = 4.0f;
    CountAnalys(st);
    EXPECT_DOUBLE_EQ(st.FundPower, 5.0) << "inside the band the neighbours add their squares";
    EXPECT_TRUE(st.NoiseList.size() > 79 && st.NoiseList[78] == 101)
        << "a bin can be noise and fundamental at once";
}

TEST(MetricResults, ASecondHarmonicFortyDecibelsDownReadsMinusFortyOrOnePercent) {
    SpectrumBench b(N, 1, [](int64_t t) {
        return 1000 * std::sin(2 * M_PI * 50 * t / N) + 10 * std::sin(2 * M_PI * 100 * t / N);
    });
    b.show(0);
    ASSERT_EQ(b.st.PeakBin, 50);
    allOn(b.st);
    AnalysisCaptions an;
    b.st.THDdB = 1;
    NewValue(b.st, an);
    EXPECT_NEAR(b.st.THD_val, -40.0, 0.01);
    EXPECT_EQ(an[1], "THD: -40dB  ");
    b.st.THDdB = 0;
    NewValue(b.st, an);
    EXPECT_NEAR(b.st.THD_val, 1.0, 0.001);
    EXPECT_EQ(an[1], "THD: 1%  ");
    EXPECT_EQ(an[5], "THD+N: 1%  ") << "noise ranges stop short of each multiple of the peak";
    EXPECT_NEAR(b.st.SINAD_dB, 40.0, 0.01);
}

TEST(MetricResults, WhiteNoiseGivesTheSignalToNoiseRatioOfItsPower) {
    const double sigma = 2.0, a = 1000.0;
    std::mt19937 gen(11);
    std::normal_distribution<double> noise(0.0, sigma);
    std::vector<double> samples(N + 1);
    for (auto& x : samples)
        x = noise(gen);
    SpectrumBench b(
        N, 1, [&](int64_t t) { return a * std::sin(2 * M_PI * 64 * t / N) + samples[size_t(t)]; });
    b.show(0);
    allOn(b.st);
    CountAnalys(b.st);
    // Each bin of white noise holds 4 sigma^2 / N of squared amplitude on average.
    const double expected = 20 * std::log10(a / std::sqrt(b.st.NoiseCount * 4 * sigma * sigma / N));
    EXPECT_NEAR(b.st.SNR_dB, expected, 0.5);
    EXPECT_NEAR(b.st.ENOB_bits, (b.st.SINAD_dB - 1.76) / 6.02, 1e-12);
    EXPECT_GT(b.st.SINAD_dB, 0.0);
    EXPECT_LT(b.st.SINAD_dB, b.st.SNR_dB);
}

TEST(MetricResults, TheLargestSpurIsTheBinStandingHighestAboveItsNeighbours) {
    auto st = spectrumWithPeak(50, 1000.0f);
    for (int i = 2; i <= 512; ++i)
        if (i != 50) st.SpAmp[size_t(i)] = 0.5f;
    st.SpAmp[300] = 1.5f;
    st.SpAmp[450] = 1.2f;
    st.SpAmp[80] = 900.0f; // below the second harmonic: never a spur
    allOn(st);
    AnalysisCaptions an;
    NewValue(st, an);
    EXPECT_DOUBLE_EQ(st.SpurAmp, 1.5);
    EXPECT_NEAR(st.SFDR_dB, 20 * std::log10(1000 / 1.5), 1e-9);
    EXPECT_EQ(an[3], "SFDR: -56.48dB  ") << "shown negated";
}

TEST(MetricResults, SilenceAndImpossibleRatiosKeepTheLastValues) {
    auto st = spectrumWithPeak(100, 0.0f);
    allOn(st);
    st.SNR_dB = 42.0;
    st.THD_val = -3.0;
    st.THDN_val = 7.0;
    st.SINAD_dB = 74.0;
    AnalysisCaptions an;
    NewValue(st, an);
    EXPECT_EQ(st.SNR_dB, 42.0);
    EXPECT_EQ(st.THD_val, -3.0);
    EXPECT_EQ(st.THDN_val, 7.0);
    EXPECT_EQ(st.SINAD_dB, 74.0);
    EXPECT_DOUBLE_EQ(st.ENOB_bits, 12.0);
    EXPECT_EQ(an[4], "ENOB: 12Bits  ");
    for (const auto& caption : an) {
        EXPECT_EQ(caption.find("NaN"), std::string::npos) << caption;
        EXPECT_EQ(caption.find("Inf"), std::string::npos) << caption;
    }
    // No bin at or above the second harmonic: the spur stays at -100, its ratio is negative and
    // SFDR keeps its value.
    auto high = spectrumWithPeak(300, 5.0f);
    allOn(high);
    high.SFDR_dB = 33.0;
    CountAnalys(high);
    EXPECT_EQ(high.SpurAmp, -100.0);
    EXPECT_EQ(high.SFDR_dB, 33.0);
}

TEST(MetricCaptions, ShowTwoDecimalsAtMostAndOnlyForMetricsThatAreOn) {
    auto st = spectrumWithPeak(100);
    st.SNR_dB = 12.499;
    EXPECT_EQ(analysisCaption(st, 0), "SNR: 12.5dB  ");
    st.SINAD_dB = 60.0;
    EXPECT_EQ(analysisCaption(st, 2), "SINAD: 60dB  ");
    st.ENOB_bits = 9.666;
    EXPECT_EQ(analysisCaption(st, 4), "ENOB: 9.67Bits  ");
    AnalysisCaptions an;
    an.fill("old");
    st.ShowSNR = true;
    st.SpAmp[150] = 0.001f;
    NewValue(st, an);
    EXPECT_EQ(an[0], "SNR: 60dB  ");
    EXPECT_EQ(an[1], "old");
    EXPECT_EQ(an[5], "old");
}

TEST(MetricCaptions, VisibleLabelsLineUpFromThePlotsLeftThreePixelsApart) {
    const auto lefts = analysisLabelLefts(10, {true, false, true, true, false, false, true},
                                          {50, 60, 70, 80, 90, 100, 40});
    EXPECT_EQ(lefts, (std::array<int, 7>{10, -1, 63, 136, -1, -1, 219}));
}

namespace {

/// The read-outs' bins and powers counted one bin at a time, each read checked against the
/// array and every sum taken exactly as written: the figures the direct loops must reproduce.
struct CountedByHand {
    double fund = 0, harm = 0, noise = 0, spur = -100.0;
    std::vector<int16_t> noiseList, harmList;
};

CountedByHand countByHand(const ProgramState& st, int32_t h) {
    const auto at = [&](int64_t i, double& x) {
        if (i < 0 || size_t(i) >= st.SpAmp.size()) return false;
        x = st.SpAmp[size_t(i)];
        return true;
    };
    CountedByHand r;
    const int64_t P = st.PeakBin, B = st.PeakHoldBins, w = h + 1;
    double peak = 0, x = 0;
    at(P, peak);
    for (int64_t i = P - h; i <= P + h; ++i) {
        if (i > B || i < 1) {
            r.fund = peak * peak;
            break;
        }
        if (at(i, x)) r.fund += x * x;
    }
    r.fund = std::sqrt(r.fund);
    for (int64_t i = 2; i <= P - w; ++i)
        r.noiseList.push_back(int16_t(i));
    for (int64_t k = 1; k <= 5 && (k + 1) * P + w < B; ++k)
        for (int64_t i = k * P + 1; i <= (k + 1) * P - 1; ++i)
            r.noiseList.push_back(int16_t(i));
    for (int64_t k = 1; k <= 6 && (k + 1) * P + w < B; ++k)
        for (int64_t i = (k + 1) * P - w; i <= (k + 1) * P + w; ++i)
            if (i > 1) r.harmList.push_back(int16_t(i));
    double best = 0;
    for (int64_t i = B; i >= 2 * P; --i) {
        if (!at(i, x) || !(float(r.spur) < x)) continue;
        float a = 0;
        double y = 0;
        for (int64_t j = i - h; j <= i + h; ++j)
            if (at(j, y)) a = float(double(a) + y);
        const double t = double(float(x - double(float(double(a) / (2.0 * h)))));
        if (t > best) {
            r.spur = x;
            best = t;
        }
    }
    for (int16_t i : r.harmList)
        if (at(i, x)) r.harm += x * x;
    for (int16_t i : r.noiseList)
        if (at(i, x)) r.noise += x * x;
    return r;
}

} // namespace

TEST(MetricBands, TheCountsMatchTheBinByBinDefinitionBitForBit) {
    std::mt19937 g(7);
    std::uniform_real_distribution<float> level(0.0f, 1.0f);
    // Peaks at the bottom, the middle and the top of the band; bands of 10, 16 and 20 bins; the
    // band's top inside the array and beyond it (an array cut short reads as missing bins).
    // Some spectra carry values that are not numbers and infinities, as a trace of them leaves.
    const auto same = [](double a, double b) { return a == b || (a != a && b != b); };
    for (int32_t peak : {0, 1, 5, 11, 37, 100, 170, 255, 500, 511})
        for (int bits : {8, 16, 0})
            for (size_t size : {size_t(2 * N + 1), size_t(N / 2 - 3)}) {
                ProgramState st = spectrumWithPeak(std::min<int32_t>(peak, int32_t(size) - 1));
                st.SpAmp.resize(size);
                for (float& x : st.SpAmp)
                    x = level(g) * level(g) * 1000.0f;
                if (peak == 37 || peak == 170)
                    for (size_t i = 7; i < size; i += 97)
                        st.SpAmp[i] = i % 2 ? std::numeric_limits<float>::quiet_NaN()
                                            : std::numeric_limits<float>::infinity();
                st.SampleBits = bits == 0 ? 16 : bits;
                st.IsSht = bits == 0;
                const int32_t h = bits == 8 ? 10 : bits == 0 ? 16 : 20;
                const CountedByHand want = countByHand(st, h);
                CountAnalys(st);
                SCOPED_TRACE(testing::Message()
                             << "peak " << peak << " bits " << bits << " size " << size);
                EXPECT_PRED2(same, st.FundPower, want.fund);
                EXPECT_PRED2(same, st.HarmPower, want.harm);
                EXPECT_PRED2(same, st.NoisePower, want.noise);
                EXPECT_PRED2(same, st.SpurAmp, want.spur);
                EXPECT_EQ(st.NoiseList, want.noiseList);
                EXPECT_EQ(st.HarmList, want.harmList);
            }
}
