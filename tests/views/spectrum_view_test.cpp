// The Spectrum view's drawing: where a known peak lands on the plot, how a new trace replaces the
// old one without leaving traces of it, how Stacked mode piles traces up until a clear, bars,
// the hidden grid, and the pointer cross with its guards.
#include "state/program_state.h"
#include "views/spectrum/spectrum_view.h"

#include <gtest/gtest.h>

#include <vector>

using namespace kv;
using namespace kv::spectrum;

namespace {

constexpr QRgb kLine = 0x00FF00; // 65280 in the settings: green
constexpr QRgb kGrid = 0x808080; // 8421504: grey

ProgramState plotState() {
    ProgramState st;
    st.FFT_LineColor = "65280";
    st.FFT_BackColor = "0";
    st.FFT_GridColor = "8421504";
    st.Fft_Samples = st.Sp_Samples = 1024;
    st.FullScalePos = 32767;
    st.PlotRange = 100;
    st.Offset_Log = 0;
    st.dBFS_On = true;
    return st;
}

/// A band of `cols` + 1 columns at -100 dB with one column at `peakDb`.
struct Band {
    std::vector<float> val, logx;
    SpectrumFeed feed;
    Band(int cols, int peakCol, float peakDb) : val(size_t(cols) + 1, -100.0f), logx(val.size()) {
        val[size_t(peakCol)] = peakDb;
        for (size_t j = 0; j < logx.size(); ++j)
            logx[j] = float(std::log10(double(j) + 1.0));
        feed.ColVal = val;
        feed.ColLogX = logx;
        feed.ColumnCount = cols;
        feed.PeakDb = peakDb;
        feed.PeakFreq = 1000;
        feed.MaxFreq = 24000;
        feed.BinWidth = 46.875;
    }
};

int countColour(const Surface& s, QRgb c) {
    int n = 0;
    for (int y = 0; y < s.height(); ++y)
        for (int x = 0; x < s.width(); ++x)
            n += s.pixel(x, y) == c;
    return n;
}

} // namespace

TEST(SpectrumView, AKnownPeakLandsOnItsColumnAndRowInDbfsAndDbc) {
    ProgramState st = plotState();
    SpectrumView v;
    v.setPlotSize(800, 300);
    Band b(100, 40, -20.0f);
    v.Resized(st, b.feed);
    // ColStep = 800 / 100; dB scale = 300 / -100, so -20 dBFS sits 60 rows down.
    EXPECT_EQ(v.CurvePoints()[40], QPoint(320, 60));
    EXPECT_EQ(v.surface().pixel(320, 60), kLine);
    EXPECT_EQ(v.CurveCount(), 101) << "points 0..ColumnCount-1, one past the last";

    // In dBc the top of the plot is the trace's own peak.
    st.dBFS_On = false;
    v.Draw_s(st, b.feed);
    EXPECT_EQ(v.CurvePoints()[40], QPoint(320, 0));
    EXPECT_EQ(v.surface().pixel(320, 0), kLine);
    EXPECT_EQ(v.TopDb(), -20.0f);
}

TEST(SpectrumView, LinearLevelsAndLogarithmicColumns) {
    ProgramState st = plotState();
    st.YLinear = true;
    st.Offset_Lin = 50; // a half-scale value reaches the top
    SpectrumView v;
    v.setPlotSize(400, 200);
    Band b(10, 3, 16383.5f);
    v.Resized(st, b.feed);
    EXPECT_EQ(v.CurvePoints()[3], QPoint(120, 0));
    EXPECT_EQ(v.CurvePoints().size(), 9u) << "a linear plot stops one column earlier";

    st.YLinear = false;
    st.DrSet = 2;
    Band l(10, 5, 0.0f);
    v.Resized(st, l.feed);
    // Column j stands at Log10(j+1) * PlotW / Log10(512); the first column is left out.
    const double k = 400 / std::log10(512.0);
    EXPECT_EQ(v.CurvePoints()[0].x(), int(std::lround(std::log10(2.0) * k)));
    EXPECT_EQ(v.CurvePoints()[4], QPoint(int(std::lround(std::log10(6.0) * k)), 0));
}

TEST(SpectrumView, ASpanEndsExactlyOnTheRightEdge) {
    ProgramState st = plotState();
    st.SpanActive = true;
    SpectrumView v;
    v.setPlotSize(301, 100);
    std::vector<float> span(8, -50.0f);
    SpectrumFeed f;
    f.SpanCol = span;
    f.SpanBins = 7;
    f.SpanLowFreq = 1000;
    f.SpanHighFreq = 3000;
    v.Resized(st, f);
    ASSERT_EQ(v.CurvePoints().size(), 7u);
    EXPECT_EQ(v.CurvePoints().front(), QPoint(0, 50));
    EXPECT_EQ(v.CurvePoints().back().x(), 301);
    EXPECT_EQ(v.xStepText(), "200Hz/Div");
}

TEST(SpectrumView, ANewTraceLeavesNothingOfTheOldOneAndTheGridIsRepaired) {
    ProgramState st = plotState();
    SpectrumView played, fresh;
    played.setPlotSize(640, 240);
    fresh.setPlotSize(640, 240);
    Band a(80, 10, -5.0f), b(80, 60, -30.0f);
    played.Resized(st, a.feed);
    played.Draw_s(st, b.feed);
    fresh.Resized(st, b.feed);
    EXPECT_EQ(played.surface().image(), fresh.surface().image());
    EXPECT_GT(countColour(played.surface(), kGrid), 0);

    // The same on a log axis with points far outside the plot: a silent bin sits at
    // Log10(0) = -FullScalePos / 2 decades, a silent level far below the bottom.
    st.DrSet = 2;
    a.logx[1] = -16383.5f;
    a.val[2] = -327670.0f;
    played.Resized(st, a.feed);
    played.Draw_s(st, b.feed);
    fresh.Resized(st, b.feed);
    EXPECT_EQ(played.surface().image(), fresh.surface().image());
}

TEST(SpectrumView, StackedTracesPileUpUntilTheyAreCleared) {
    ProgramState st = plotState();
    st.ModeFFT = 2;
    SpectrumView v;
    v.setPlotSize(400, 200);
    Band a(50, 11, -5.0f), b(50, 30, -40.0f);
    v.Resized(st, a.feed);
    v.Draw_s(st, b.feed);
    EXPECT_EQ(v.surface().pixel(88, 10), kLine) << "the first trace's peak stays";
    EXPECT_EQ(v.surface().pixel(240, 80), kLine);
    EXPECT_EQ(v.CurveCount(), 1) << "stacked drawing keeps no points to erase";

    // A resize empties the stack: nothing comes back until the next trace.
    v.setPlotSize(400, 200);
    v.ReDrawMode2(st);
    EXPECT_EQ(countColour(v.surface(), kLine), 0);
    st.ModeFFT = 1;
    v.Draw_s(st, a.feed);
    v.ReDrawMode2(st);
    EXPECT_GT(countColour(v.surface(), kLine), 0) << "outside Stacked mode it does nothing";
}

TEST(SpectrumView, BarsAreOpenOutlinesOfThePointBeforeAndTheLastHasNone) {
    ProgramState st = plotState();
    st.AS_Bar = 1;
    st.FFT_ShowGrid = 0;
    SpectrumView v;
    v.setPlotSize(300, 100);
    std::vector<float> val{-100, -20, -40, -60};
    SpectrumFeed f;
    f.ColVal = val;
    f.ColumnCount = 3;
    f.MaxFreq = 24000;
    v.Resized(st, f);
    EXPECT_EQ(v.DrawWidth(), 100);
    // Points (100, 20), (200, 40), (300, 60): bars of the first two, centred on them.
    EXPECT_EQ(v.surface().pixel(50, 60), kLine);
    EXPECT_EQ(v.surface().pixel(100, 20), kLine);
    EXPECT_EQ(v.surface().pixel(150, 30), kLine);
    EXPECT_EQ(v.surface().pixel(150, 60), kLine);
    EXPECT_EQ(v.surface().pixel(250, 70), kLine);
    EXPECT_EQ(v.surface().pixel(200, 40), kLine);
    EXPECT_EQ(v.surface().pixel(299, 60), 0u) << "the last point has no bar";
    EXPECT_EQ(v.surface().pixel(100, 10), 0u);
}

TEST(SpectrumView, ABarsHalfWidthIsRoundedHalfToEven) {
    ProgramState st = plotState();
    st.AS_Bar = 1;
    st.FFT_ShowGrid = 0;
    std::vector<float> val{-100, -20, -40, -60};
    SpectrumFeed f;
    f.ColVal = val;
    f.ColumnCount = 3;
    f.MaxFreq = 24000;
    // Points 7 pixels apart: a half-width of 3.5 makes 4, so the bar of the point at 7 stands
    // from 3 to 10 and the next from 10 to 17. Points 5 apart: 2.5 makes 2, not 3.
    for (const auto& [width, edges] :
         {std::pair{21, std::vector<int>{3, 10, 17}}, std::pair{15, std::vector<int>{3, 8, 13}}}) {
        SpectrumView v;
        v.setPlotSize(width, 100);
        v.Resized(st, f);
        std::vector<int> lit;
        for (int x = 0; x < width; ++x)
            if (v.surface().pixel(x, 99) == kLine) lit.push_back(x);
        EXPECT_EQ(lit, edges) << "plot " << width << " wide";
    }
}

TEST(SpectrumView, AHiddenGridPaintsItsPlacesInTheBackground) {
    ProgramState st = plotState();
    st.FFT_ShowGrid = 0;
    SpectrumView v;
    v.setPlotSize(400, 200);
    Band b(50, 10, -5.0f);
    v.Resized(st, b.feed);
    EXPECT_EQ(countColour(v.surface(), kGrid), 0);
    EXPECT_FALSE(v.GridXs().empty());
}

TEST(SpectrumView, LayoutTextsAndTheFirstDrawOfAStrongSignal) {
    ProgramState st = plotState();
    st.NewDataSet = true;
    st.PeakDb = 7.4f;
    SpectrumView v;
    v.setPlotSize(480, 400);
    Band b(100, 20, 7.4f);
    v.Resized(st, b.feed);
    EXPECT_EQ(st.Offset_Log, 9) << "the plot's top moves above a peak over 0 dBFS";
    EXPECT_FALSE(st.NewDataSet);
    EXPECT_EQ(v.txtText(), "20 dBFS/Div");
    EXPECT_EQ(v.lbly().front(), "9");
    EXPECT_EQ(v.xLabels().front().text, "2.4");
    EXPECT_EQ(v.peakStatus(), "Peak: 7.4 dBFS 1000Hz");
    EXPECT_EQ(v.peakLabel().text, "Peak: = 1000Hz");
    EXPECT_EQ(v.PlotColumns(), 240);

    st.YLinear = true;
    st.dBFS_On = false;
    v.UpdateFFT_A(st, b.feed);
    EXPECT_EQ(v.txtText(), "Percent Full Scale (%)");
}

TEST(SpectrumView, ThePointerCrossShowsWhileTheLeftButtonIsHeldInsideThePlot) {
    ProgramState st = plotState();
    SpectrumView v;
    v.setPlotSize(480, 400);
    Band b(100, 20, -3.0f);
    v.Resized(st, b.feed);

    v.MouseDown(st, b.feed, 1, 240, 100);
    EXPECT_TRUE(v.crossShown());
    EXPECT_EQ(v.crossRow(), 100);
    EXPECT_EQ(v.lblMyFr().text, "F = 12kHz");
    EXPECT_EQ(v.lbldB().text, "-25dBFS  ");
    EXPECT_TRUE(v.lbldB().visible);

    // A move without the left button hides the cross; with it, the cross follows.
    v.MouseMove(st, b.feed, 0, 120, 100);
    EXPECT_FALSE(v.crossShown());
    v.MouseMove(st, b.feed, 1, 120, 200);
    EXPECT_TRUE(v.crossShown());
    EXPECT_EQ(v.lblMyFr().text, "F = 6kHz");

    // On the right edge nothing shows and the labels keep their text.
    v.MouseMove(st, b.feed, 1, 480, 200);
    EXPECT_FALSE(v.crossShown());
    EXPECT_EQ(v.lblMyFr().text, "F = 6kHz");
    v.MouseDown(st, b.feed, 1, 100, 200);
    v.MouseUp();
    EXPECT_FALSE(v.crossShown());
    EXPECT_FALSE(v.lblMyFr().visible);

    // The right button's pop-up belongs to markers: it waits until they have been used.
    v.MouseDown(st, b.feed, 2, 100, 200);
    EXPECT_FALSE(v.takePopupRequest());
    v.setMarkersActive(true);
    v.MouseDown(st, b.feed, 2, 100, 200);
    EXPECT_TRUE(v.takePopupRequest());
}
