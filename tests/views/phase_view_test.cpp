// The Phase view: bins to pixels on both axes, the frequency labels, the two painters and the
// pointer read-out.
#include "views/phase/phase_view.h"

#include "support/test_home.h"
#include "views/spectrum/spectrum_scales.h"

#include <gtest/gtest.h>
#include <memory>

using namespace kv;
using namespace kv::phase;

namespace {

// 4096 samples at 48 kHz: 2048 bins up to 24 kHz, on a graph of 500 x 400 pixels.
struct Phase : ::testing::Test {
    test::Bench b;
    ProgramState& st = b.st;
    std::unique_ptr<PhaseView> v;
    QRgb line = 0, back = 0;

    void SetUp() override {
        b.start();
        st.Sp_Samples = st.Fft_Samples = 4096;
        st.SampleRate = 48000;
        st.MaxFreq = 24000;
        st.BinWidth = 48000.0f / 4096;
        st.FullScalePos = 32767;
        st.TraceCount = 1;
        st.SpPhase.assign(4097, 0.0f);
        line = colorFromIni(st.F_LineColor) & 0xFFFFFF;
        back = colorFromIni(st.F_BackColor) & 0xFFFFFF;
    }
    void open(int w = 500, int h = 400) {
        v = std::make_unique<PhaseView>(b.wb);
        v->Form_Load(w + kWidthMargin, h + kHeightMargin);
    }
    QRgb at(int x, int y) const { return v->picF().pixel(x, y) & 0xFFFFFF; }
};

} // namespace

TEST_F(Phase, PlotsEveryFourthBinOfTwoThousandOnFiveHundredPixels) {
    open();
    EXPECT_TRUE(st.PhaseOpen);
    EXPECT_EQ(st.ActiveView, 3);
    EXPECT_EQ(st.PhaseBins, 2048);
    EXPECT_EQ(v->PhaseHalf(), 200);
    EXPECT_FLOAT_EQ(v->DegreesPerPixel(), 0.9f);
    EXPECT_EQ(v->BinStep(), 4);
    EXPECT_FLOAT_EQ(v->PixelsPerBin(), 500.0f / 512);
    EXPECT_EQ(v->PhasePointCount() - 1, 512);

    // Fewer bins than pixels: every bin, spread out.
    st.Sp_Samples = st.Fft_Samples = 512;
    v->Form_Unload();
    open();
    EXPECT_EQ(v->BinStep(), 1);
    EXPECT_FLOAT_EQ(v->PixelsPerBin(), 500.0f / 256);
}

TEST_F(Phase, DegreesMapToRowsAroundTheCentreWithoutClippingOrUnwrapping) {
    open();
    // Bins 1, 5, 9 ... are plotted; SpPhase runs one index above the bin.
    st.SpPhase[1] = 0;
    st.SpPhase[5] = 90;
    st.SpPhase[9] = -45;
    st.SpPhase[13] = 200;
    st.SpPhase[17] = -180;
    v->Draw_s();
    EXPECT_EQ(v->PhasePoints()[0], QPoint(0, 200));
    EXPECT_EQ(v->PhasePoints()[1].y(), 100);
    EXPECT_EQ(v->PhasePoints()[2].y(), 250);
    EXPECT_EQ(v->PhasePoints()[3].y(), -22);
    EXPECT_EQ(v->PhasePoints()[4].y(), 400);
    EXPECT_EQ(v->PhasePoints()[4].x(), 4); // round(4 * 500 / 512)

    // A flat zero phase lies on the centre row; a new trace erases the old curve.
    std::fill(st.SpPhase.begin(), st.SpPhase.end(), 0.0f);
    v->Draw_s();
    EXPECT_EQ(at(310, 199), back);
    EXPECT_EQ(at(310, 200), line);
    std::fill(st.SpPhase.begin(), st.SpPhase.end(), 90.0f);
    v->Draw_s();
    EXPECT_EQ(at(310, 100), line);
    EXPECT_EQ(at(310, 200), colorFromIni(st.F_GridColor) & 0xFFFFFF); // the grid, whole again
}

TEST_F(Phase, LinearLabelsInTenthsOfTheBandWithTheirPrefix) {
    open();
    EXPECT_EQ(v->lblX()[0].text, "0.0");
    EXPECT_EQ(v->lblX()[1].text, "2.4");
    EXPECT_EQ(v->lblX()[10].text, "24.0");
    EXPECT_FALSE(v->lblX()[11].visible);
    EXPECT_EQ(v->lblSX().text, "2.4 kHz/div");
    EXPECT_EQ(v->axisText(), "2.4 kHz");
    // The grid is the Spectrum view's.
    EXPECT_EQ(v->PhaseGridX(), spectrum::ShowX_lab(500, 24000, 1).GridXs);
    EXPECT_EQ(v->PhaseGridY(), (std::array<int32_t, 9>{0, 50, 100, 150, 200, 250, 300, 350, 400}));

    // Kilo from 1000 on, not only above it.
    st.MaxFreq = 10000;
    v->UpdateFasa();
    EXPECT_EQ(v->lblX()[1].text, "1.0");
    EXPECT_EQ(v->lblSX().text, "1 kHz/div");
    st.MaxFreq = 5000;
    v->UpdateFasa();
    EXPECT_EQ(v->lblX()[1].text, "500.0");
    EXPECT_EQ(v->lblSX().text, "500Hz/div");
    // A zoomed band names its whole width in the caption.
    st.MaxFreq = 24000;
    v->setFreqZoom(4);
    v->UpdateFasa();
    EXPECT_EQ(v->lblSX().text, "6 kHz/div");
    EXPECT_EQ(v->lblX()[1].text, "2.4");
}

TEST_F(Phase, LogarithmicAxisSharesTheSpectrumMarksAndStrokesFromPointToPoint) {
    st.DrSet = 2;
    open();
    const spectrum::XAxis a = spectrum::DrawXLog(500, 4096, 24000, st.BinWidth, 32767);
    EXPECT_EQ(v->PhaseGridX(), a.GridXs);
    ASSERT_FALSE(a.labels.empty());
    EXPECT_EQ(v->lblX()[0].text, a.labels[0].text);
    EXPECT_EQ(v->lblSX().text, "Frequency Hz");
    // log10(2048) decades across the width: bin 10 is one decade in.
    EXPECT_FLOAT_EQ(v->LogPixelsPerDecade(), float(500 / std::log10(2048.0)));
    std::fill(st.SpPhase.begin(), st.SpPhase.end(), -90.0f);
    v->Draw_s();
    const int x10 = int(std::lround(v->LogPixelsPerDecade()));
    EXPECT_EQ(at(x10, 300), line);
    EXPECT_EQ(at(x10, 200), colorFromIni(st.F_GridColor) & 0xFFFFFF);
    EXPECT_EQ(v->PhasePointCount(), 1);

    // With the grid off the log painter leaves it out altogether.
    st.F_ShowGrid = 0;
    v->Draw_s();
    EXPECT_EQ(at(x10, 200), back);
}

TEST(PhaseReadout, FrequencyUnitsAndDegrees) {
    EXPECT_EQ(frequencyText(999), "999.0 Hz");
    EXPECT_EQ(frequencyText(1000), "1.0 kHz");
    EXPECT_EQ(frequencyText(12000), "12.0 kHz");
    EXPECT_EQ(frequencyText(1.5e6), "1.5 MHz");
    EXPECT_EQ(frequencyText(0), ".0 Hz");
    EXPECT_EQ(degreesText(0, 400), "180  degrees");
    EXPECT_EQ(degreesText(100, 400), "90  degrees");
    EXPECT_EQ(degreesText(200, 400), "0  degrees");
    EXPECT_EQ(degreesText(300, 400), "-90  degrees");
    EXPECT_EQ(degreesText(399, 400), "-179  degrees");
}

TEST_F(Phase, PointerShowsWhileTheLeftButtonIsHeld) {
    open();
    v->picF_MouseDown(LeftButton, 250, 100);
    EXPECT_TRUE(v->lblHz().visible);
    EXPECT_EQ(v->lblHz().text, "12.0 kHz");
    EXPECT_EQ(v->lblDeg().text, "90  degrees");
    EXPECT_EQ(v->lblDeg().right() + 5, v->lblHz().left);
    v->picF_MouseMove(LeftButton, 50, 300);
    EXPECT_EQ(v->lblHz().text, "2.4 kHz");
    v->picF_MouseMove(NoButton, 100, 300);
    EXPECT_EQ(v->lblHz().text, "2.4 kHz");
    v->picF_MouseUp(LeftButton, 100, 300);
    EXPECT_FALSE(v->lblHz().visible);
    EXPECT_FALSE(v->lnPec_V());

    st.DrSet = 2;
    v->UpdateFasa();
    v->picF_MouseDown(LeftButton, 0, 10);
    EXPECT_EQ(v->lblHz().text, "11.7 Hz"); // the first bin
}

TEST_F(Phase, APressOutsideTheGraphReadsNothing) {
    open();
    // Left of the graph the frequency would be negative, above or below it the phase beyond
    // +-180 degrees, right of it past the band.
    for (const auto& [x, y] : {std::pair{-5, 100}, {100, -3}, {100, 400}, {500, 100}}) {
        v->picF_MouseDown(LeftButton, x, y);
        EXPECT_FALSE(v->lblHz().visible) << x << "," << y;
        EXPECT_FALSE(v->lnPec_V());
    }
    // The same in window pixels, on the labels left of the graph.
    v->mousePress(LeftButton, v->graphRect().left() - 10, v->graphRect().top() + 50);
    EXPECT_FALSE(v->lblDeg().visible);
    v->mousePress(LeftButton, v->graphRect().left() + 10, v->graphRect().top() + 50);
    EXPECT_TRUE(v->lblDeg().visible);
}
