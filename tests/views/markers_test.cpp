// Markers on the Spectrum view: what a marker reads under its cross on a known sine, a column
// without the curve, the table's headings and distances, the row click, the pop-up and the
// limit of 20; and the bandwidth mark's two crosses on the same sine.
#include "commands/commands.h"
#include "platform/numeric.h"
#include "support/test_home.h"
#include "views/spectrum/spectrum_form.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;
using namespace kv::spectrum;

namespace {

/// 4 traces of 256 samples at 8 kHz of a 1 kHz sine over a floor of noise (so that the curve
/// crosses every column), on a plot of 600 x 300, in marker mode.
struct Marking : ::testing::Test {
    test::Bench b;
    SpectrumForm form{b.wb};
    const PlotMargins m;
    void SetUp() override {
        test::writeFile(b.home.file("sine.wav"),
                        test::wavBytes(1, 8000, 16, test::noisySine(4 * 256)));
        b.st.SettingsOverrides["gen.sp_samples"] = "256";
        b.start();
        b.import(b.home.file("sine.wav"));
        form.load(600 + m.left + m.right, 300 + m.top + m.bottom + kScrollHeight);
        form.firstDraw();
        ASSERT_EQ(form.view().PlotW(), 600);
        b.st.MarkerMode = true;
        form.command("MarkerModeOn");
    }
    void press(int x, int y = 150, int button = LeftButton) {
        form.mouseMove(NoButton, x + m.left, y + m.top);
        form.mousePress(button, x + m.left, y + m.top);
    }
};

} // namespace

TEST_F(Marking, AMarkerReadsTheFrequencyAndLevelUnderItsCross) {
    // 1 kHz of 4 kHz across 600 pixels: the peak's point stands in column 151.
    press(151);
    ASSERT_EQ(b.st.MarkerCount, 1);
    const MarkerRecord& r = form.markers().records[1];
    EXPECT_EQ(r.lblSmH, "1.01"); // 4000 * 151 / 600 Hz, in kHz
    EXPECT_EQ(form.view().FreqUnit(), "kHz");
    EXPECT_EQ(r.row, form.view().TraceRowAt(b.st, 151));
    // The level of that row, in whole dB of full scale: the peak's, within a pixel.
    EXPECT_NEAR(std::stod(r.lblSmB), b.st.PeakDb, 1.5);
    EXPECT_FALSE(form.HS().Enabled); // the scroll bar rests in marker mode

    // A column the curve does not reach sets nothing.
    press(599);
    EXPECT_EQ(b.st.MarkerCount, 1);
}

TEST_F(Marking, TheTableListsDistancesAndHighlightsTheRowClicked) {
    MarkerTable& t = form.markerTable();
    EXPECT_EQ(t.headings[1], "F Hz");
    EXPECT_EQ(t.headings[2], "P (dBFS)");
    press(60);
    press(120);
    press(140);
    dlgMarkers::UpdateList(b.st, form.markers(), t);
    ASSERT_EQ(t.rows.size(), 3u);
    EXPECT_EQ(t.rows[0].nr, "1");
    EXPECT_EQ(t.rows[0].distance, "");     // the first has none
    EXPECT_EQ(t.rows[1].frequency, "800"); // "###0.00": no trailing zeros
    EXPECT_EQ(t.rows[1].distance, "400");
    EXPECT_EQ(t.rows[2].frequency, "933.33");
    EXPECT_EQ(t.rows[2].distance, "133.33");
    form.markerRowClicked(1);
    EXPECT_EQ(form.markers().MarkerHot, 2);

    // The unit follows the Y scale as it was when the headings were made.
    b.st.YLinear = true;
    EXPECT_EQ(t.headings[2], "P (dBFS)");
    dlgMarkers::LoadList(b.st, "Hz", t);
    EXPECT_EQ(t.headings[2], "P (%)");
    b.st.YLinear = false;
    b.st.dBFS_On = false;
    dlgMarkers::LoadList(b.st, "kHz", t);
    EXPECT_EQ(t.headings, (std::array<std::string, 4>{"Nr", "F kHz", "P (dBc)", "dFkHz"}));
}

TEST_F(Marking, TwentyMarkersThenTheModeEndsAndMarkerModeIsGrey) {
    for (int i = 0; i < 25; ++i)
        press(10 + 20 * i);
    EXPECT_EQ(b.st.MarkerCount, 20);
    // The next move ends the mode, silently; the scroll bar comes back.
    form.mouseMove(NoButton, 300 + m.left, 100 + m.top);
    EXPECT_FALSE(b.st.MarkerMode);
    EXPECT_TRUE(form.HS().Enabled);
    EXPECT_TRUE(b.host.messages.empty());
    // A right press still brings up the pop-up, with Marker Mode disabled.
    form.mousePress(RightButton, 300 + m.left, 100 + m.top);
    EXPECT_TRUE(form.takePopupRequest());
    EXPECT_FALSE(b.cmd.enabled("mnMM"));
}

TEST(MarkerCommands, TheMenuTicksTheModeAndNoMarkersClearsAll) {
    test::Bench b;
    b.start();
    b.st.SpectrumOpen = true;
    b.st.TempPath = b.home.file("temp.sp");
    mnuMarkers_Click(b.wb);
    EXPECT_TRUE(b.st.MarkerMode && b.cmd.checked("mnuMarkers") && b.cmd.button(55).down);
    EXPECT_EQ(b.views.dialogsShown, std::vector<std::string>{"dlgMarkers"});
    b.st.MarkerCount = 3;
    mnuMarkers_Click(b.wb); // off: the mode is left, the markers stay
    EXPECT_FALSE(b.st.MarkerMode || b.cmd.checked("mnuMarkers"));
    EXPECT_EQ(b.st.MarkerCount, 3);
    b.cmd.enable("mnuExM");
    menuCommand(b.wb, "mnuExM");
    EXPECT_EQ(b.st.MarkerCount, 0);
    EXPECT_TRUE(b.cmd.menu("mnuMarkers").available && b.cmd.button(55).available);
}

TEST(BandwidthMark, CrossesTheCurveWhereItFallsToTheBandwidthLevelOnEveryScale) {
    test::Bench b;
    SpectrumForm form{b.wb};
    const PlotMargins m;
    test::writeFile(b.home.file("sine.wav"), test::wavBytes(1, 8000, 16, test::noisySine(4 * 256)));
    b.st.SettingsOverrides["gen.sp_samples"] = "256";
    b.start();
    b.import(b.home.file("sine.wav"));
    form.load(600 + m.left + m.right, 300 + m.top + m.bottom + kScrollHeight);
    form.firstDraw();
    ASSERT_EQ(b.st.Bred, 3);
    EXPECT_TRUE(form.view().BredMarks(b.st, feedFrom(b.st)).empty()); // not before the read-out
    menuCommand(b.wb, "mnuGPR");
    EXPECT_TRUE(b.cmd.checked("mnuGPR"));
    const QRgb contrast = QColor(colorFromIni(b.st.FFT_BackColor) ^ 0x00FFFFFFu).rgb();

    auto check = [&](const std::string& scale, double levelDb) {
        SCOPED_TRACE(scale);
        form.relayout();
        const auto marks = form.view().BredMarks(b.st, feedFrom(b.st));
        ASSERT_EQ(marks.size(), 2u);
        // One cross each side of the 1 kHz peak, both on the row of the bandwidth level.
        EXPECT_LT(marks[0].hz, b.st.PeakFreq);
        EXPECT_GT(marks[1].hz, b.st.PeakFreq);
        const QImage pic = form.picture();
        for (const auto& mk : marks) {
            const int x = m.left + int(std::lround(mk.x)), y = m.top + mk.y;
            for (const QPoint d :
                 {QPoint(0, 0), QPoint(-3, -3), QPoint(3, 3), QPoint(-3, 3), QPoint(3, -3)})
                EXPECT_EQ(pic.pixel(x + d.x(), y + d.y()), contrast) << mk.x << " " << d.x();
            EXPECT_NE(pic.pixel(x + 1, y), contrast); // a cross, not a box
            // The pointer at the cross reads the edge frequency and the bandwidth level.
            const auto t = form.view().ReadoutAt(b.st, feedFrom(b.st), mk.x, float(mk.y), false, 0);
            ASSERT_TRUE(t);
            EXPECT_NEAR(t->FreqShown, mk.hz, mk.hz * 1e-4);
            EXPECT_NEAR(Val(t->lbldB), levelDb, double(b.st.PlotRange) / 300);
            // The edge is where the curve has fallen 3 dB under the peak, and the bin before it
            // (towards the peak) has not.
            const auto bin = size_t(std::lround(mk.hz / b.st.BinWidth));
            const auto db = [&](size_t j) {
                return 20 * std::log10(b.st.SpAmp[j] / b.st.FullScalePos);
            };
            EXPECT_LE(db(bin), b.st.PeakDb - 3 + 1e-3);
            EXPECT_GT(db(mk.hz < b.st.PeakFreq ? bin + 1 : bin - 1), b.st.PeakDb - 3);
        }
    };
    // In dBFS the row is 3 dB under full scale.
    check("dBFS, linear X", -3.0);
    b.st.DrSet = 2;
    check("dBFS, log X", -3.0);
    b.st.DrSet = 1;
    b.st.dBFS_On = false;
    check("dBc", -3.0);
    // On a linear level axis there is no dB level to mark.
    b.st.YLinear = true;
    form.relayout();
    EXPECT_TRUE(form.view().BredMarks(b.st, feedFrom(b.st)).empty());
}
