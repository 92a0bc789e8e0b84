// The Spectrum view's frame: grid positions and the exact texts of its labels for linear, span
// and logarithmic frequency axes and for dB and linear level axes.
#include "views/spectrum/spectrum_scales.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv::spectrum;

namespace {

std::vector<std::string> texts(const XAxis& a) {
    std::vector<std::string> v;
    for (const auto& l : a.labels)
        v.push_back(l.text);
    return v;
}

} // namespace

TEST(SpectrumScales, Log10OfSilenceIsFarBelowAnyPlot) {
    EXPECT_EQ(Log10(0.0, 32767.0f), -16383.5);
    EXPECT_DOUBLE_EQ(Log10(1000.0, 32767.0f), 3.0);
}

TEST(SpectrumScales, UnitsChangeOnlyAboveTheirThreshold) {
    EXPECT_EQ(frequencyUnit(1000.0).unit, "Hz");
    EXPECT_EQ(frequencyUnit(1000.01).unit, "kHz");
    EXPECT_EQ(frequencyUnit(1e6).unit, "kHz");
    EXPECT_EQ(frequencyUnit(1.5e6).unit, "MHz");
}

TEST(SpectrumScales, LinearAxisLabelsTheTenthsOfTheBand) {
    XAxis a = ShowX_lab(800, 24000, 1);
    EXPECT_EQ(a.GridXs, (std::vector<int>{80, 160, 240, 320, 400, 480, 560, 640, 720, 800}));
    EXPECT_EQ(texts(a), (std::vector<std::string>{"2.4", "4.8", "7.2", "9.6", "12", "14.4", "16.8",
                                                  "19.2", "21.6", "24"}));
    EXPECT_EQ(a.stepText, "2.4 kHz/div");
    EXPECT_EQ(a.unitText, "(  kHz)");

    // A span factor of 2 halves the step; a narrow band stays in Hz.
    EXPECT_EQ(ShowX_lab(800, 24000, 2).labels[0].text, "1.2");
    a = ShowX_lab(500, 1000, 1);
    EXPECT_EQ(a.labels.back().text, "1000") << "1000 Hz is not above 10^3";
    EXPECT_EQ(a.stepText, "100Hz/div");
    EXPECT_EQ(a.unitText, "( Hz)");
    // Grid positions round half to even: 333 / 10 * 5 = 166.5.
    EXPECT_EQ(ShowX_lab(333, 1000, 1).GridXs[4], 166);
}

TEST(SpectrumScales, SpanLabelsStartAtTheLowEdgeEachWithItsOwnPrefix) {
    XAxis a = spanXAxis(500, 800, 2000);
    EXPECT_EQ(texts(a), (std::vector<std::string>{"800", "1000", "1.2k", "1.4k", "1.6k", "1.8k",
                                                  "2k", "2.2k", "2.4k", "2.6k"}));
    EXPECT_EQ(a.labels[0].left, 0);
    EXPECT_EQ(a.labels[5].left, 250);
    EXPECT_EQ(a.stepText, "200Hz/Div");
    EXPECT_EQ(a.unitText, "( Hz )");
    EXPECT_EQ(spanXAxis(500, 2e6, 5e6).stepText, "500kHz/Div");
}

TEST(SpectrumScales, LogAxisMarksOneToTenThenTensThenHundreds) {
    // 1 Hz bins: a mark's x is K * Log10(f), K = 900 / Log10(512).
    XAxis a = DrawXLog(900, 1024, 512, 1.0, 32767.0f);
    EXPECT_EQ(texts(a), (std::vector<std::string>{
                            "2",  "3",  "4",  "5",  "6",  "7",  "8",   "9",   "10",  "20",  "30",
                            "40", "50", "60", "70", "80", "90", "100", "200", "300", "400", "500"}))
        << "1 stands at x = 0 and is dropped; 11 to 19 are never marks";
    const double K = 900 / std::log10(512.0);
    EXPECT_EQ(a.GridXs[8], std::lround(K)) << "10 Hz one decade in";
    EXPECT_EQ(a.unitText, "Frequency Hz");

    // The sample: 46.875 Hz bins up to 24 kHz; labels in k above 1000 Hz.
    a = DrawXLog(800, 1024, 24000, 46.875, 32767.0f);
    EXPECT_EQ(a.labels.front().text, "50");
    EXPECT_EQ(a.labels.back().text, "20k");
    for (int x : a.GridXs) {
        EXPECT_GE(x, 1);
        EXPECT_LT(x, 800);
    }

    // Above 10^6 Hz the count runs in hundreds of Hz.
    a = DrawXLog(800, 1024, 5e6, 9765.625, 32767.0f);
    EXPECT_EQ(a.labels.front().text, "10k");
    EXPECT_EQ(a.labels.back().text, "4M") << "5 MHz stands on the right edge, outside";
}

TEST(SpectrumScales, LinearLevelAxisFindsARoundStepForEachTop) {
    struct Case {
        double top;
        double step;
        size_t lines;
    };
    for (const Case& c : std::vector<Case>{{100, 20, 5},
                                           {50, 10, 5},
                                           {7, 1, 7},
                                           {3, 0.5, 6},
                                           {1, 0.1, 10},
                                           {250, 10, 25},
                                           {2000, 100, 20},
                                           {20000, 2000, 10},
                                           {0.3f, 0.3f / 10, 10}}) {
        YAxis a = DrawYLinear(c.top, 400);
        EXPECT_DOUBLE_EQ(a.step, c.step) << c.top;
        EXPECT_EQ(a.GridYs.size(), c.lines) << c.top;
        EXPECT_EQ(a.lbly.size(), c.lines + 1) << c.top;
        EXPECT_EQ(a.GridYs.back(), 400) << c.top;
    }
    YAxis a = DrawYLinear(1, 400);
    EXPECT_EQ(a.lbly, (std::vector<std::string>{"1", "0.9", "0.8", "0.7", "0.6", "0.5", "0.4",
                                                "0.3", "0.2", "0.1", "0"}));
    a = DrawYLinear(100, 300);
    EXPECT_EQ(a.lbly, (std::vector<std::string>{"100", "80", "60", "40", "20", "0"}));
    EXPECT_EQ(a.GridYs, (std::vector<int>{60, 120, 180, 240, 300}));
}

TEST(SpectrumScales, DbAxisTakesTheFirstStepGivingFourToEightLines) {
    YAxis a = DrawYDb(0, 100, 500);
    EXPECT_EQ(a.step, 20);
    EXPECT_EQ(a.lbly, (std::vector<std::string>{"0", "-20", "-40", "-60", "-80", "-100"}));
    EXPECT_EQ(a.GridYs, (std::vector<int>{100, 200, 300, 400, 500}));
    EXPECT_EQ(DrawYDb(0, 120, 500).step, 20);
    EXPECT_EQ(DrawYDb(0, 10, 500).step, 2);
    EXPECT_EQ(DrawYDb(0, 3, 500).step, 0.5);
    EXPECT_EQ(DrawYDb(10, 5000, 500).lbly[1], "-990");
    a = DrawYDb(-6, 100000, 500);
    EXPECT_EQ(a.lbly, (std::vector<std::string>{"-6"})) << "no step fits: the top label only";
    EXPECT_TRUE(a.GridYs.empty());

    EXPECT_EQ(yAxisText(false, true, 20), "20 dBFS/Div");
    EXPECT_EQ(yAxisText(false, false, 0.25), "0.25 dBc/Div");
    EXPECT_EQ(yAxisText(true, true, 20), "Percent Full Scale (%)");
}

TEST(SpectrumScales, PeakTextsInEitherDbMode) {
    PeakText t = peakText(true, -3.04, 1000);
    EXPECT_EQ(t.status, "Peak: -3 dBFS 1000Hz");
    EXPECT_EQ(t.label, "Peak: = 1000Hz");
    t = peakText(false, -3.04, 1546.875);
    EXPECT_EQ(t.status, "Peak: 0 dBc 1.55kHz");
    EXPECT_EQ(t.label, "Peak: = 1.55kHz");
    EXPECT_EQ(peakText(true, -12.25, 2.5e6).status, "Peak: -12.3 dBFS 2.5MHz");
}

TEST(SpectrumScales, LevelLineRow) {
    EXPECT_FLOAT_EQ(levelLineY(true, -30, -10, 100, 500), 100.0f);
    EXPECT_FLOAT_EQ(levelLineY(false, -30, -10, 100, 500), 150.0f);
}
