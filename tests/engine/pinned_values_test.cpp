// A few traces' spectra, columns and read-outs pinned to the values the engine gave before its
// arithmetic was reorganised for speed. Amplitudes may move by rounding only (1e-4 relative), dB
// and phase by as little as that allows; bins, column counts and log positions not at all.
#include "spectrum_bench.h"

#include <gtest/gtest.h>

using namespace kv;
using kv::test::SpectrumBench;

namespace {

/// A tone between bins with a weak harmonic in noise, so that every bin has something to say.
double signal(int64_t t, int32_t n) {
    uint32_t s = uint32_t(t) * 2654435761u + 12345u;
    s ^= s >> 13;
    s *= 1274126177u;
    const double noise = (double(s >> 8) / double(1 << 24) - 0.5) * 4.0;
    const double w = 2 * M_PI * 37.3 * double(t) / n;
    return 400 * std::sin(w) + 4 * std::sin(2 * w + 0.3) + noise;
}

struct Case {
    int32_t n;
    int16_t window;
    bool linear;
    int32_t columns;
    int trace;
    // What the engine gave.
    int32_t peakBin, columnCount, binsPerColumn, floorBin;
    float peakDb, peakAmp, floorDbRel;
    float amp[5], phase[5];                   // bins 0, 1, the peak, 100, the last shown
    float colVal[5], colLogX[5], colPhase[5]; // columns 0, 1, the peak's, the middle, the last
    double snr, thd, sinad, sfdr;
};

const Case kCases[] = {
    {1024,
     10,
     false,
     500,
     3,
     37,
     255,
     2,
     455,
     -9.30648804f,
     342.511841f,
     -66.5360031f,
     {2.29708338f, 2.30558658f, 342.511841f, 2.30003786f, 0.658405006f},
     {0, 0, -58.29245f, 118.10437f, 178.509277f},
     {-52.7443695f, -52.2012863f, -9.30648804f, -60.9544868f, -63.6301346f},
     {0, 0.477121264f, 1.56820178f, 2.40483379f, 2.70842099f},
     {180, -178.984238f, -167.313873f, 81.2165756f, 137.200012f},
     7.05719906,
     -21.3886411,
     6.89989101,
     35.4662824},
    {1024,
     7,
     true,
     100,
     5,
     37,
     84,
     6,
     397,
     -8.47198772f,
     377.051453f,
     -111.377693f,
     {0.0143212192f, 0.108815633f, 377.051453f, 0.188069165f, 0.053766977f},
     {0, 180, -23.5315075f, 161.246628f, -136.264603f},
     {0.109219939f, 0.113175623f, 377.051453f, 0.109232314f, 0.0902176946f},
     {0.30103001f, 1.04139268f, 1.56820178f, 2.40654016f, 2.70586371f},
     {-62.3604202f, 49.2593842f, -131.536346f, 170.542007f, 114.453423f},
     4.54122262,
     -39.6923065,
     4.53989642,
     40.5268884},
    {4096,
     7,
     false,
     300,
     1,
     37,
     291,
     7,
     1692,
     -8.46591568f,
     377.315125f,
     -120.798645f,
     {0.0268651992f, 0.0265327469f, 377.315125f, 0.0410327613f, 0.0184469763f},
     {0, 180, -104.897011f, -112.776169f, 133.94165f},
     {-86.2308807f, -83.227417f, -8.46591568f, -83.2890091f, -86.566246f},
     {0.69897002f, 0.90309f, 1.56820178f, 3.00860023f, 3.31005573f},
     {-138.194229f, -105.649551f, 147.092026f, -5.906991f, -110.443275f},
     4.54143731,
     -40.0692575,
     4.54022128,
     40.5066971},
};

constexpr double kAmp = 1e-4;    // relative
constexpr double kDb = 1e-3;     // 1e-4 relative in amplitude is 8.7e-4 dB
constexpr double kDegree = 0.02; // and 1e-4 radian of phase, with room for the weakest bins

void expectAmp(double got, double want, const char* what, int i) {
    EXPECT_NEAR(got, want, kAmp * std::fabs(want) + 1e-12) << what << " " << i;
}

} // namespace

TEST(PinnedValues, SpectraColumnsAndReadOutsStayAsTheyWere) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message()
                     << "N " << c.n << " window " << c.window << (c.linear ? " linear" : " dB"));
        SpectrumBench b(c.n, 8, [&](int64_t t) { return signal(t, c.n); });
        b.st.FFT_Window = c.window;
        SetWindowName(b.st);
        b.st.YLinear = c.linear;
        b.st.PlotColumns = c.columns;
        b.st.ShowSNR = b.st.ShowTHD = b.st.ShowSINAD = b.st.ShowSFDR = true;
        // The trace before first: the phase columns carry its phases.
        b.show(c.trace - 1);
        b.show(c.trace);
        CountAnalys(b.st);
        ensurePhases(b.st);
        const ProgramState& s = b.st;
        EXPECT_EQ(s.PeakBin, c.peakBin);
        EXPECT_EQ(s.ColumnCount, c.columnCount);
        EXPECT_EQ(s.BinsPerColumn, c.binsPerColumn);
        EXPECT_EQ(s.FloorBin, c.floorBin);
        EXPECT_NEAR(s.PeakDb, c.peakDb, kDb);
        expectAmp(s.PeakAmp, c.peakAmp, "PeakAmp", 0);
        EXPECT_NEAR(s.FloorDbRel, c.floorDbRel, kDb);
        const int32_t bins[] = {0, 1, s.PeakBin, 100, c.n / 2 - 1};
        for (int i = 0; i < 5; ++i) {
            expectAmp(s.SpAmp[size_t(bins[i])], c.amp[i], "SpAmp", bins[i]);
            EXPECT_NEAR(s.SpPhase[size_t(bins[i])], c.phase[i], kDegree) << "SpPhase " << bins[i];
        }
        const int32_t cols[] = {0, 1, s.PeakBin / s.BinsPerColumn, s.ColumnCount / 2,
                                s.ColumnCount};
        for (int i = 0; i < 5; ++i) {
            const size_t j = size_t(cols[i]);
            if (c.linear)
                expectAmp(s.ColVal[j], c.colVal[i], "ColVal", cols[i]);
            else
                EXPECT_NEAR(s.ColVal[j], c.colVal[i], kDb) << "ColVal " << j;
            EXPECT_EQ(s.ColLogX[j], c.colLogX[i]) << "ColLogX " << j;
            EXPECT_NEAR(s.ColPhase[j], c.colPhase[i], kDegree) << "ColPhase " << j;
        }
        EXPECT_NEAR(s.SNR_dB, c.snr, kDb);
        EXPECT_NEAR(s.THD_val, c.thd, kDb);
        EXPECT_NEAR(s.SINAD_dB, c.sinad, kDb);
        EXPECT_NEAR(s.SFDR_dB, c.sfdr, kDb);
    }
}
