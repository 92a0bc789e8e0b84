// Folding bins into plot columns and placing values and columns in pixels.
#include "engine/engine.h"
#include "state/program_state.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;

namespace {

/// A spectrum of `bins` bins already in SpDisp (value = f(bin)), phase = 10 * index.
ProgramState folded(int32_t bins, int32_t columns, float (*f)(int32_t)) {
    ProgramState st;
    st.FullScalePos = 100.0f;
    st.Fft_Samples = 2 * bins;
    st.PlotColumns = columns;
    st.ViewLaidOut = true;
    st.SpDisp.resize(size_t(bins) + 1);
    st.SpPhase.resize(size_t(2 * bins) + 1);
    for (int32_t i = 0; i <= bins; ++i)
        st.SpDisp[size_t(i)] = f(i);
    for (size_t i = 0; i < st.SpPhase.size(); ++i)
        st.SpPhase[i] = float(10 * i);
    SamToWidth(st);
    return st;
}

float flat(int32_t) {
    return -50.0f;
}

} // namespace

TEST(ColumnFold, FoldsAtLeastOneBinAColumnAndMayLeaveFewerColumns) {
    auto a = folded(512, 512, flat);
    EXPECT_EQ(a.BinsPerColumn, 2);
    EXPECT_EQ(a.ColumnCount, 255) << "256 columns, highest index 255";
    EXPECT_EQ(a.Sp_Bins, a.ColumnCount) << "Sp_Bins counts columns until the next fold";
    auto b = folded(512, 513, flat);
    EXPECT_EQ(b.BinsPerColumn, 1);
    EXPECT_EQ(b.ColumnCount, 511);
    auto c = folded(1000, 500, flat);
    EXPECT_EQ(c.BinsPerColumn, 3);
    EXPECT_EQ(c.ColumnCount, 332) << "333 columns, not 500";
    EXPECT_EQ(c.ColVal.size(), 333u);
}

TEST(ColumnFold, KeepsEachColumnsMaximumWithTheLastOfEqualsAndItsPhase) {
    // Bins 0..7 with PlotColumns 3: three bins a column, columns at 0 and 3, bins 6 and 7 left
    // out because a third column would run past the band.
    auto st = folded(8, 3, [](int32_t i) {
        const float v[9] = {-10, -30, -20, -40, -5, -5, 0, 0, 0};
        return v[i];
    });
    ASSERT_EQ(st.ColumnCount, 1);
    EXPECT_EQ(st.ColVal[0], -10.0f);
    EXPECT_EQ(st.ColVal[1], -5.0f);
    EXPECT_FLOAT_EQ(st.ColLogX[1], float(std::log10(5.0))) << "the later of two equal bins";
    EXPECT_EQ(st.ColPhase[1], 50.0f) << "the phase at the same index, i.e. of the bin below";
    EXPECT_EQ(st.ColLogX[0], -50.0f) << "a DC column lands far left: Log10(0) = -FullScalePos/2";
}

TEST(ColumnFold, ASingleStrongBinSurvivesAnyWidth) {
    for (int32_t cols : {1, 7, 100, 4096}) {
        auto st = folded(4096, cols, [](int32_t i) { return i == 3001 ? 0.0f : -90.0f; });
        float best = -1000;
        for (int32_t c = 0; c <= st.ColumnCount; ++c)
            best = std::max(best, st.ColVal[size_t(c)]);
        EXPECT_EQ(best, 0.0f) << cols << " columns";
    }
}

TEST(ColumnFold, APlotOfNoWidthKeepsTheOldColumns) {
    auto st = folded(64, 16, flat);
    const auto before = st.ColVal;
    st.PlotColumns = 0;
    st.SpDisp.assign(65, 7.0f);
    GenDraw(st);
    EXPECT_EQ(st.ColVal, before);
}

TEST(ColumnFold, TheSpanEndsWithAColumnOfItsOwn) {
    ProgramState st;
    st.SpDisp.resize(40);
    for (size_t i = 0; i < 40; ++i)
        st.SpDisp[i] = float(i == 21 ? 100 : int(i));
    st.SpanActive = true;
    st.SpanStart = 10;
    st.SpanEnd = 20;
    st.PlotColumns = 5;
    st.ViewLaidOut = true;
    SamToWidth(st);
    EXPECT_EQ(st.BinsPerColumn, 3);
    ASSERT_EQ(st.SpanBins, 3) << "columns at 10, 13, 16, 19";
    EXPECT_EQ(st.ColumnCount, 3);
    EXPECT_EQ(st.SpanCol[0], 12.0f);
    EXPECT_EQ(st.SpanCol[3], 100.0f) << "the bound reaches one beyond the span";
}

TEST(ColumnFold, AReferenceCoversTheShareOfTheBandItWasRecordedOver) {
    ProgramState st;
    st.FullScalePos = 100.0f;
    st.Fft_Samples = 1024;
    st.MaxFreq = 1000.0f;
    st.BinWidth = 1000.0f / 512;
    st.PlotColumns = 200;
    st.DrSet = 1;
    st.RefOn1 = true;
    st.RefMaxFreq1 = 500.0f;
    st.RefCount1 = 400;
    st.RefShow1.assign(401, -60.0f);
    st.RefShow1[399] = -3.0f;
    SamToWidth_Ref(st);
    // 100 columns for half the band: 400 / 100 + 1 = 5 values a column.
    EXPECT_EQ(st.BinsPerColumn, 5);
    EXPECT_EQ(st.RefColCount1, 79);
    EXPECT_EQ(st.RefCol1[79], -3.0f);
    EXPECT_EQ(st.RefColCount2, 0) << "slot 2 is neither on nor selected";

    st.SpanActive = true;
    st.SpanLowFreq = 100.0f;
    st.SpanHighFreq = 200.0f;
    st.RefBinWidth1 = 1.25f; // bins 80 to 160
    GenDrawSpan_Ref(st);
    EXPECT_EQ(st.BinsPerColumn, 1);
    EXPECT_EQ(st.RefSpanBins1, 80);
}

TEST(PlotLevel, TheTopIsFullScaleOrThePeak) {
    ProgramState st;
    st.PeakDb = -12.5f;
    st.Offset_Log = 0;
    st.dBFS_On = true;
    UpdateTopDb(st);
    EXPECT_EQ(st.TopDb, 0.0f);
    st.dBFS_On = false;
    UpdateTopDb(st);
    EXPECT_EQ(st.TopDb, -12.5f);

    // The first draw of a new data set lifts the top over a strong signal, once.
    st.NewDataSet = true;
    st.Offset_Log = -20;
    FirstDrawOffset(st);
    EXPECT_EQ(st.Offset_Log, -10) << "-12.5 + 2 = -10.5 rounds to the even -10";
    EXPECT_FALSE(st.NewDataSet);
    st.PeakDb = 30.0f;
    FirstDrawOffset(st);
    EXPECT_EQ(st.Offset_Log, -10);
    st.NewDataSet = true;
    st.Offset_Log = 40;
    FirstDrawOffset(st);
    EXPECT_EQ(st.Offset_Log, 40) << "a top already above the peak stays";
}

TEST(PlotPixels, ValuesLandAtTheirHeight) {
    ProgramState st;
    st.FullScalePos = 32767.0f;
    st.PlotRange = 100;
    st.TopDb = 0.0f;
    EXPECT_DOUBLE_EQ(valueToY(st, -25.0, 400), 100.0);
    st.dBFS_On = false;
    st.PeakDb = -37.0f;
    UpdateTopDb(st);
    EXPECT_DOUBLE_EQ(valueToY(st, st.PeakDb, 400), 0.0) << "the peak draws on the top edge";
    st.YLinear = true;
    st.Offset_Lin = 100.0f;
    EXPECT_DOUBLE_EQ(valueToY(st, 32767.0, 400), 0.0) << "a full-scale sine reaches the top";
    st.Offset_Lin = 50.0f;
    EXPECT_DOUBLE_EQ(valueToY(st, 8191.75, 400), 200.0) << "50 doubles the curve";
}

TEST(PlotPixels, ColumnsLandLinearlyAtTheirPeakBinOnALogAxisAndAcrossTheSpan) {
    ProgramState st;
    st.FullScalePos = 100.0f;
    st.Fft_Samples = 2048;
    st.ColumnCount = 250;
    EXPECT_DOUBLE_EQ(columnToX(st, 125, 500), 250.0);
    st.DrSet = 2;
    st.ColLogX = {-50.0f, float(std::log10(32.0))};
    EXPECT_NEAR(columnToX(st, 1, 500), 500 * std::log10(32.0) / std::log10(1024.0), 1e-4);
    EXPECT_LT(columnToX(st, 0, 500), -2000.0) << "a DC column lies far left of the plot";
    st.SpanActive = true;
    st.SpanBins = 11;
    EXPECT_DOUBLE_EQ(columnToX(st, 5, 500), 250.0);
    EXPECT_DOUBLE_EQ(columnToX(st, 11, 500), 500.0) << "the last point is exactly the width";
    EXPECT_EQ(plotColumnsFor(501), 250);
    EXPECT_EQ(plotColumnsFor(503), 252);
}

TEST(ColumnFold, AReferenceSpanOfNoBinNumberKeepsTheOldColumns) {
    ProgramState st;
    st.PlotColumns = 10;
    st.RefOn1 = true;
    st.RefShow1.assign(50, -1.0f);
    st.RefSpanCol1 = {7.0f};
    st.RefSpanBins1 = 0;
    st.SpanLowFreq = 10.0f;
    st.SpanHighFreq = 20.0f;
    st.RefBinWidth1 = 0.0f;
    GenDrawSpan_Ref(st);
    st.RefBinWidth1 = 1e-30f;
    GenDrawSpan_Ref(st);
    EXPECT_EQ(st.RefSpanCol1, std::vector<float>{7.0f});
    st.RefBinWidth1 = 1.0f;
    GenDrawSpan_Ref(st);
    EXPECT_EQ(st.RefSpanBins1, 5) << "two bins a column, starting at 10, 12 ... 20: six columns";
}
