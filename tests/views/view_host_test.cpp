// The views' models behind the core's commands, without windows: however a view comes up its
// scroll bar spans the data set, and whatever a view switched on goes with it when it goes,
// when the user leaves a mode with the transport, and when a new import closes it.
#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "support/test_home.h"
#include "views/model_view_host.h"
#include "views/oscilloscope/oscope_view.h"
#include "views/spectrum/spectrum_form.h"

#include <gtest/gtest.h>

using namespace kv;

namespace {

/// A started workbench whose views are models, with a mono recording of 12 traces of 1024
/// samples at hand; `settings` override SP.ini ("gen.stsp" = "0" ...).
struct Hosted : ::testing::Test {
    ModelViewHost views;
    test::Bench b{true, &views};
    std::string recording = b.home.file("rec.wav");

    void SetUp() override {
        std::vector<int> s(12 * 1024);
        for (size_t i = 0; i < s.size(); ++i)
            s[i] = int(i % 1024) - 512;
        test::writeFile(recording, test::wavBytes(1, 8000, 16, s));
    }
    void start(std::map<std::string, std::string> settings = {}) {
        b.st.SettingsOverrides = std::move(settings);
        b.start();
        b.import(recording);
        ASSERT_EQ(b.st.LastTrace, 11);
    }
    spectrum::SpectrumForm* spectrum() {
        return views.modelOf<spectrum::SpectrumForm>(ViewId::Spectrum);
    }
    oscope::OscopeView* oscope() { return views.modelOf<oscope::OscopeView>(ViewId::Oscope); }
};

} // namespace

TEST_F(Hosted, ASpectrumViewOpenedWithoutItsFirstDrawScrollsTheWholeDataSet) {
    // No view named for the start: the Spectrum view comes up maximised, with no first draw.
    start({{"gen.stsp", "0"}});
    ASSERT_NE(spectrum(), nullptr);
    EXPECT_EQ(spectrum()->HS().Max, 11);
    TB_event9(b.wb, "End");
    EXPECT_EQ(b.st.TracePos, 11);
    EXPECT_EQ(spectrum()->HS().Value, 11);
    // Playback ends by itself at the last trace (a Pause stops one that would not).
    TB_event9(b.wb, "First");
    b.host.yields = 0;
    b.host.onYield([&] {
        if (b.host.yields > 40) TB_event9(b.wb, "Pause");
    });
    TB_event9(b.wb, "Fwd");
    EXPECT_EQ(b.st.TracePos, 11);
    EXPECT_EQ(b.host.yields, 11);
}

TEST_F(Hosted, ASpectrumViewReopenedBesideTheOscopeFollowsItsScrollBar) {
    start();
    showView(b.wb, ViewId::Oscope);
    views.unloadView(b.wb, ViewId::Spectrum);
    showView(b.wb, ViewId::Spectrum);
    ASSERT_NE(spectrum(), nullptr);
    EXPECT_EQ(spectrum()->HS().Max, 11);
    oscope()->scrolled(5);
    EXPECT_EQ(b.st.TracePos, 5);
    EXPECT_EQ(spectrum()->HS().Value, 5);
    EXPECT_EQ(b.st.CurrentTracePos, 1 + 5 * 1024 * 4);
}

TEST_F(Hosted, ANewImportTakesTheViewsSwitchesWithTheViews) {
    start();
    showView(b.wb, ViewId::Oscope);
    TB_event9(b.wb, "Flip");
    TB_event9(b.wb, "Cursor");
    viewActivated(b.wb, ViewId::Spectrum);
    pressButton(b.wb, 41); // THD
    ASSERT_TRUE(b.st.Flipped && oscope()->KursorOn() && b.st.ShowTHD);

    b.import(recording); // closes the views, then opens the Spectrum view alone
    EXPECT_EQ(oscope(), nullptr);
    EXPECT_FALSE(b.st.Flipped);
    EXPECT_FALSE(b.cmd.button(83).down);
    EXPECT_FALSE(b.st.ShowTHD);
    EXPECT_FALSE(b.st.AnalysOnFFT);
    EXPECT_FALSE(b.cmd.button(41).down);

    // Each switch takes one press to come on and one to go off again.
    showView(b.wb, ViewId::Oscope);
    EXPECT_TRUE(b.cmd.panel(9).empty()) << "no flip note";
    // Not upside down: the first sample, below zero, is drawn below the centre line.
    ASSERT_LT(b.st.TraceBuf[0], 0.0f);
    EXPECT_GT(oscope()->TracePoints()[0].y(), oscope()->ZeroLine());
    pressButton(b.wb, 83);
    EXPECT_TRUE(oscope()->KursorOn());
    EXPECT_TRUE(b.cmd.button(83).down);
    viewActivated(b.wb, ViewId::Spectrum);
    pressButton(b.wb, 41);
    EXPECT_TRUE(b.st.ShowTHD);
    pressButton(b.wb, 41);
    EXPECT_FALSE(b.st.ShowTHD);
    EXPECT_FALSE(b.cmd.checked("mnuThd"));
}

TEST_F(Hosted, TheTransportTakesTheOscopeReadOutsOff) {
    start();
    showView(b.wb, ViewId::Oscope);
    for (const char* key : {"First", "Rew", "Fwd"}) {
        TB_event9(b.wb, "MaxA");
        TB_event9(b.wb, "PtP");
        ASSERT_TRUE(oscope()->ShowMaxAmp() && oscope()->An()[0].visible) << key;
        TB_event9(b.wb, key);
        EXPECT_FALSE(oscope()->ShowMaxAmp()) << key;
        EXPECT_FALSE(oscope()->ShowPeakPeak()) << key;
        EXPECT_FALSE(oscope()->AnalysOn()) << key;
        EXPECT_FALSE(oscope()->An()[0].visible) << key;
        EXPECT_FALSE(oscope()->An()[2].visible) << key;
        EXPECT_FALSE(b.cmd.button(74).down) << key;
    }
}
