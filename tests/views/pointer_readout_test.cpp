// The pointer read-out: its guards at the plot's edges, the frequency on each kind of axis, and
// the level texts.
#include "views/spectrum/pointer_readout.h"

#include <gtest/gtest.h>

using namespace kv::spectrum;

namespace {

PointerInput plot(int w, int h) {
    PointerInput in;
    in.PlotW = w;
    in.PlotH = h;
    in.ScaleWidth = float(w);
    in.ScaleHeight = float(h);
    in.MaxFreq = 24000;
    in.BinWidth = 46.875;
    in.Sp_Samples = 1024;
    in.FullScalePos = 32767;
    return in;
}

} // namespace

TEST(PointerReadout, NothingOnOrBeyondTheRightAndBottomEdges) {
    PointerInput in = plot(480, 400);
    for (auto [x, y] :
         {std::pair{480.0f, 10.0f}, {10.0f, 400.0f}, {-0.5f, 10.0f}, {10.0f, -1.0f}}) {
        in.PointerX = x;
        in.PointerY = y;
        EXPECT_FALSE(PointerReadout(in)) << x << "," << y;
        EXPECT_FALSE(PointerFreqOnly(in)) << x << "," << y;
    }
    in.PointerX = 479.5f;
    in.PointerY = 399;
    EXPECT_TRUE(PointerReadout(in));
}

TEST(PointerReadout, FrequencyOnLinearSpanAndLogAxes) {
    PointerInput in = plot(480, 400);
    in.PointerX = 20; // 24000 * 20 / 480 = 1000: not above 10^3, so still Hz
    auto t = PointerReadout(in);
    ASSERT_TRUE(t);
    EXPECT_EQ(t->lblMyFr, "F = 1000Hz");
    EXPECT_EQ(t->FreqUnit, "Hz");
    in.PointerX = 240;
    EXPECT_EQ(PointerReadout(in)->lblMyFr, "F = 12kHz");
    EXPECT_DOUBLE_EQ(PointerReadout(in)->FreqShown, 12000);

    in.SpanActive = true;
    in.SpanLowFreq = 1000;
    in.SpanHighFreq = 3000;
    in.PointerX = 120; // 120 / (480 / 2000) + 1000
    EXPECT_EQ(PointerReadout(in)->lblMyFr, "F = 1.5kHz");

    in.DrSet = 2; // log wins over a span
    in.PointerX = 0;
    t = PointerReadout(in);
    EXPECT_DOUBLE_EQ(t->FreqShown, 46.875) << "the left edge reads one bin, not 0";
    EXPECT_EQ(t->lblTime, "46.88");
    in.PointerX = 480 / 3.0f; // a third of log10(512): 8 bins
    EXPECT_NEAR(PointerReadout(in)->FreqShown, 375, 1e-3);
}

TEST(PointerReadout, LevelTextsAndTheCrossOutsideAndInsideMarkerMode) {
    PointerInput in = plot(480, 500);
    in.PointerX = 10;
    in.PointerY = 125;
    in.Offset_Log = -10;
    auto t = PointerReadout(in);
    EXPECT_EQ(t->lbldB, "-35dBFS  ");
    EXPECT_EQ(t->row, 125);
    EXPECT_TRUE(t->showLines);
    in.dBFS_On = false;
    EXPECT_EQ(PointerReadout(in)->lbldB, "-25dBc  ");
    in.YLinear = true;
    in.Offset_Lin = 50;
    EXPECT_EQ(PointerReadout(in)->lbldB, "37.5 % ");

    // In marker mode the row is the marker's, the number its whole part, and no cross shows.
    in.MarkerMode = true;
    in.MarkerRow = 133;
    t = PointerReadout(in);
    EXPECT_EQ(t->row, 133);
    EXPECT_FALSE(t->showLines);
    EXPECT_EQ(t->lbldB, "36%  ");
    in.YLinear = false;
    EXPECT_EQ(PointerReadout(in)->lbldB, "-26dBc  ");
}
