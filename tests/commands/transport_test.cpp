// The transport buttons and playback loops over a small imported recording: how far they go,
// what the views are asked to do, and how Pause stops a running loop from inside its yield.
#include "commands/commands.h"
#include "commands/transport.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kv;

namespace {

/// A started workbench with a mono recording of `traces` traces of 1024 samples imported, the
/// Spectrum view up and the request log emptied.
struct Played : test::Bench {
    explicit Played(int traces) {
        start();
        std::vector<int> s(size_t(traces) * 1024);
        for (size_t i = 0; i < s.size(); ++i)
            s[i] = int(i % 1024) - 512; // each trace different from its neighbours' start
        const std::string path = home.file("rec.wav");
        test::writeFile(path, test::wavBytes(1, 8000, 16, s));
        import(path);
        views.log.clear();
        host.yields = 0; // the import's own
    }
    int traceRequests() const {
        return int(std::count_if(views.log.begin(), views.log.end(), [](const std::string& l) {
            return l.rfind("trace Spectrum", 0) == 0;
        }));
    }
};

} // namespace

TEST(Playback, FwdPlaysToTheLastTraceYieldingOncePerTraceAndBusyMeanwhile) {
    Played p(12);
    ASSERT_EQ(p.st.LastTrace, 11);
    bool idleSeen = false;
    p.host.onYield([&] { idleSeen |= p.st.Idle; });
    TB_event9(p.wb, "Fwd");
    EXPECT_EQ(p.st.TracePos, 11);
    EXPECT_EQ(p.st.CurrentTracePos, 1 + 11 * 1024 * 4);
    EXPECT_EQ(p.host.yields, 11);
    EXPECT_FALSE(idleSeen) << "Idle is false while the loop runs";
    EXPECT_TRUE(p.st.Idle);
    EXPECT_TRUE(p.st.PlayFwd);
    EXPECT_EQ(p.traceRequests(), 11);
    EXPECT_EQ(p.views.log.back(), "trace Spectrum 11");

    // At the last position Fwd does nothing but set Idle.
    p.views.log.clear();
    TB_event9(p.wb, "Fwd");
    EXPECT_EQ(p.host.yields, 11);
    EXPECT_EQ(p.traceRequests(), 0);
    EXPECT_TRUE(p.st.Idle);
}

TEST(Playback, PausePressedInsideTheLoopStopsItWithTheNextPositionTaken) {
    Played p(20);
    p.host.onYield([&] {
        if (p.st.TracePos == 5) pressButton(p.wb, 11); // Pause
    });
    pressButton(p.wb, 12); // Fwd
    // The loop had already stepped to 5 before it yielded; the trace on show stays the 4th.
    EXPECT_EQ(p.st.TracePos, 5);
    EXPECT_EQ(p.st.CurrentTracePos, 1 + 4 * 1024 * 4);
    EXPECT_TRUE(p.st.PlayPause);
    EXPECT_FALSE(p.st.PlayFwd);
    EXPECT_TRUE(p.st.Idle);
    EXPECT_EQ(p.traceRequests(), 4);
    // Pause's own final draw, then the loop's when it sees the flag.
    EXPECT_EQ(std::count(p.views.log.begin(), p.views.log.end(), "finalDraw Spectrum"), 2);

    // Rew from there plays back down to the first trace.
    p.host.onYield(nullptr);
    TB_event9(p.wb, "Rew");
    EXPECT_EQ(p.st.TracePos, 0);
    EXPECT_EQ(p.st.CurrentTracePos, 1);
    EXPECT_TRUE(p.st.PlayRew);
    EXPECT_FALSE(p.st.PlayPause);
}

TEST(Playback, FirstPressedDuringPlaybackStopsTheLoopAtTheStart) {
    Played p(30);
    p.st.ModeFFT = 2; // Stacked: First also empties the picture
    p.host.onYield([&] {
        if (p.st.TracePos == 7) TB_event9(p.wb, "First");
    });
    TB_event9(p.wb, "Fwd");
    EXPECT_EQ(p.st.TracePos, 0);
    EXPECT_EQ(p.st.CurrentTracePos, p.st.FirstTracePos);
    EXPECT_TRUE(p.st.PlayFirst);
    EXPECT_TRUE(p.st.PlayPause);
    auto clear = std::find(p.views.log.begin(), p.views.log.end(), "clear Spectrum");
    ASSERT_NE(clear, p.views.log.end());
    EXPECT_EQ(*(clear + 1), "trace Spectrum 0") << "cleared before the first trace is drawn";
}

TEST(Playback, EndJumpsToTheLastTraceAndResetsWaterfallsToTheEnd) {
    Played p(9);
    p.views.loadView(p.wb, ViewId::Waterfall);
    p.views.loadView(p.wb, ViewId::Oscope);
    p.views.log.clear();
    TB_event9(p.wb, "End");
    EXPECT_EQ(p.st.TracePos, 8);
    EXPECT_EQ(p.st.CurrentTracePos, 1 + 8 * 4096);
    EXPECT_TRUE(p.st.PlayEnd);
    EXPECT_TRUE(p.st.PlayPause);
    EXPECT_TRUE(p.st.Idle);
    EXPECT_EQ(p.views.log,
              (std::vector<std::string>{"trace Spectrum 8", "trace O-scope 8", "trace Waterfall 8",
                                        "scroll O-scope 8", "reset Waterfall end"}));
    EXPECT_EQ(p.host.yields, 0) << "a jump does not yield";

    Played one(1);
    TB_event9(one.wb, "End");
    EXPECT_EQ(one.st.TracePos, 0);
    EXPECT_EQ(one.st.CurrentTracePos, 1);
}

TEST(Playback, PeakHoldIsSuspendedWhileGoingBackAndComesBackGoingForward) {
    Played p(6);
    p.st.ModeFFT = 3;
    TB_event9(p.wb, "End");
    TB_event9(p.wb, "Rew");
    EXPECT_EQ(p.st.ModeFFT, 1);
    EXPECT_TRUE(p.st.PeakHoldSuspended);
    EXPECT_EQ(p.st.TracePos, 0);
    TB_event9(p.wb, "Fwd");
    EXPECT_EQ(p.st.ModeFFT, 3);

    // The scroll bar follows the same rule: back drops to Single Trace, forward restores.
    ProgramState st;
    st.ModeFFT = 3;
    st.TracePos = 4;
    peakHoldOnMove(st, 5);
    EXPECT_EQ(st.ModeFFT, 3);
    EXPECT_FALSE(st.PeakHoldSuspended);
    peakHoldOnMove(st, 3);
    EXPECT_EQ(st.ModeFFT, 1);
    EXPECT_TRUE(st.PeakHoldSuspended);
    peakHoldOnMove(st, 4); // still the same TracePos: no move forward yet
    EXPECT_EQ(st.ModeFFT, 1);
    peakHoldOnMove(st, 3);
    EXPECT_EQ(st.ModeFFT, 1);
    st.TracePos = 3;
    peakHoldOnMove(st, 4);
    EXPECT_EQ(st.ModeFFT, 3);
}

TEST(Playback, TransportButtonsLeaveMeasurementAndMarkerModes) {
    Played p(4);
    for (int b : {74, 75, 76})
        p.cmd.button(b).down = true;
    p.cmd.check("mnuMxA");
    p.st.MarkerMode = true;
    TB_event9(p.wb, "First");
    for (int b : {74, 75, 76})
        EXPECT_FALSE(p.cmd.button(b).down) << b;
    EXPECT_FALSE(p.cmd.checked("mnuMxA"));
    EXPECT_FALSE(p.st.MarkerMode);
}

TEST(Playback, BeginingPutsTheOpenViewsScrollBarsOnTheTrace) {
    Played p(10);
    p.views.loadView(p.wb, ViewId::Phase);
    p.views.log.clear();
    p.st.TracePos = 6;
    Begining(p.wb);
    EXPECT_EQ(p.views.log, (std::vector<std::string>{"scroll Spectrum 6", "scroll Phase 6"}));
}
