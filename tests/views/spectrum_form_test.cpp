// The Spectrum view's scroll bar and playback timer over a real import: a move runs the whole
// chain for its trace, a move while a loop runs is only shown, the timer steps to the end and
// stops, the last-trace jump, and Peak-hold resting while the user goes back.
#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "support/test_home.h"
#include "views/spectrum/spectrum_form.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;

namespace {

/// 8 traces of 256 samples at 8 kHz; trace k is a tone at 400 * (k + 1) Hz.
std::vector<int> steppedTones() {
    std::vector<int> s;
    for (int k = 0; k < 8; ++k)
        for (int i = 0; i < 256; ++i)
            s.push_back(int(std::lround(20000 * std::sin(2 * M_PI * 400.0 * (k + 1) * i / 8000))));
    return s;
}

struct Played : ::testing::Test {
    test::Bench b;
    spectrum::SpectrumForm form{b.wb};
    Played() {
        test::writeFile(b.home.file("tones.wav"), test::wavBytes(1, 8000, 16, steppedTones()));
        b.st.SettingsOverrides["gen.sp_samples"] = "256";
        b.start();
        b.import(b.home.file("tones.wav"));
        form.view().setPlotSize(600, 300);
        form.firstDraw();
    }
    /// The column of the curve's highest point.
    int peakX() const {
        const auto& pts = form.view().CurvePoints();
        return std::min_element(pts.begin(), pts.end(),
                                [](QPoint a, QPoint c) { return a.y() < c.y(); })
            ->x();
    }
};

} // namespace

TEST_F(Played, AScrollMoveShowsThatTraceAndItsPeak) {
    ASSERT_EQ(b.st.TraceCount, 8);
    ASSERT_EQ(form.HS().Max, 7);
    EXPECT_NEAR(b.st.PeakFreq, 400, 16);
    form.HS_Change(3);
    EXPECT_EQ(b.st.TracePos, 3);
    EXPECT_EQ(b.st.CurrentTracePos, 1 + 3 * 256 * 4);
    EXPECT_NEAR(b.st.PeakFreq, 1600, 16);
    EXPECT_NEAR(peakX(), 1600.0 / 4000.0 * 600, 8);
    EXPECT_EQ(b.cmd.panel(6).substr(0, 6), "Peak: ");
    EXPECT_NE(b.cmd.panel(6).find("kHz"), std::string::npos);

    // While a loop runs (Idle false) the scroll bar only shows where it is.
    b.st.Idle = false;
    form.HS_Change(5);
    EXPECT_EQ(b.st.TracePos, 3);
    b.st.Idle = true;

    form.LastPart();
    EXPECT_EQ(b.st.TracePos, 7);
    EXPECT_NEAR(b.st.PeakFreq, 3200, 16);
}

TEST_F(Played, TheTimerStepsForwardAndStopsAtTheEnd) {
    b.st.PlayFwd = true;
    form.tmrFFT().Enabled = true;
    for (int i = 0; i < 10; ++i)
        form.tmrFFT_Timer();
    EXPECT_EQ(b.st.TracePos, 7);
    EXPECT_FALSE(form.tmrFFT().Enabled);
    EXPECT_FALSE(form.tmrFFT().Running);

    b.st.PlayFwd = false;
    b.st.PlayRew = true;
    form.tmrFFT().Enabled = true;
    form.tmrFFT_Timer();
    EXPECT_EQ(b.st.TracePos, 6);
    b.st.PlayPause = true; // a pause stops the timer at its next tick
    form.tmrFFT_Timer();
    EXPECT_FALSE(form.tmrFFT().Enabled);
}

TEST_F(Played, PeakHoldRestsWhileTheUserGoesBack) {
    form.HS_Change(4);
    b.st.ModeFFT = 3;
    form.HS_Change(2);
    EXPECT_EQ(b.st.ModeFFT, 1);
    EXPECT_TRUE(b.st.PeakHoldSuspended);
    form.HS_Change(3);
    EXPECT_EQ(b.st.ModeFFT, 3);
}

TEST_F(Played, AResizeFoldsForTheNewWidthAndEmptiesAStack) {
    b.st.ModeFFT = 2;
    form.HS_Change(1);
    form.resizePlot(300, 200);
    EXPECT_EQ(b.st.PlotColumns, 150);
    EXPECT_TRUE(b.st.ViewLaidOut);
    const Surface& s = form.view().surface();
    int lit = 0;
    for (int y = 0; y < s.height(); ++y)
        for (int x = 0; x < s.width(); ++x)
            lit += s.pixel(x, y) == 0x00FF00u;
    EXPECT_EQ(lit, 0) << "a stack starts empty after a resize";
}

TEST_F(Played, ARelayoutFollowsANewTraceCount) {
    // The data set was read again with more positions, and a loop has gone past the old end.
    b.st.LastTrace = 20;
    form.relayout();
    EXPECT_EQ(form.HS().Max, 20);
    b.st.TracePos = 15;
    form.DrawTimer();
    EXPECT_EQ(b.st.TracePos, 15) << "not pulled back into the old range";
    EXPECT_EQ(form.HS().Value, 15);
}

TEST_F(Played, SwitchedOnReadOutsAreCountedAgainForEveryTraceTheScrollBarShows) {
    b.st.AnalysOnFFT = true;
    b.st.ShowSINAD = true;
    form.HS_Change(1);
    const std::string first = b.st.An[2];
    ASSERT_EQ(first.rfind("SINAD: ", 0), 0u) << first;
    b.st.An[2].clear();
    form.HS_Change(5);
    EXPECT_EQ(b.st.An[2].rfind("SINAD: ", 0), 0u);
    EXPECT_TRUE(b.st.An[0].empty()) << "a metric that is off keeps its caption";
}

TEST_F(Played, AFinalDrawBringsTheReadOutsToTheTraceAPlaybackStoppedAt) {
    b.st.AnalysOnFFT = true;
    b.st.ShowSNR = true;
    form.HS_Change(0);
    const std::string atStart = b.st.An[0];
    // A loop moved on without counting (it does not go through the scroll chain).
    b.st.TracePos = 6;
    setCurrentTracePos(b.st);
    FyllSpData(b.st);
    form.DrawTimer();
    EXPECT_EQ(b.st.An[0], atStart);
    form.finalDraw();
    EXPECT_NE(b.st.An[0], atStart);
}

TEST(PlaybackTimer, StepsTheScrollBarUntilItsEndOrAPause) {
    ProgramState st;
    ScrollBar hs;
    spectrum::PlayTimer t;
    hs.Max = 2;
    t.Enabled = true;
    st.PlayFwd = true;
    EXPECT_TRUE(spectrum::tmrFFT_Tick(st, hs, t));
    EXPECT_TRUE(spectrum::tmrFFT_Tick(st, hs, t));
    EXPECT_EQ(hs.Value, 2);
    EXPECT_TRUE(t.Running);
    EXPECT_FALSE(spectrum::tmrFFT_Tick(st, hs, t)) << "at Max the timer stops";
    EXPECT_FALSE(t.Enabled);
    EXPECT_FALSE(t.Running);

    st.PlayFwd = false;
    st.PlayRew = true;
    t.Enabled = true;
    EXPECT_TRUE(spectrum::tmrFFT_Tick(st, hs, t));
    EXPECT_EQ(hs.Value, 1);
    st.PlayPause = true;
    st.PlayRew = false;
    EXPECT_FALSE(spectrum::tmrFFT_Tick(st, hs, t));
    EXPECT_FALSE(t.Enabled);
    EXPECT_EQ(hs.Value, 1);
}
