// The conditioning dialogs and commands driven as a user would, through a scripted host, on a
// generated two-tone recording: messages and their order, what each switches on and off, the
// ticks and toolbar buttons.
#include "commands/commands.h"
#include "conditioning/filter_dialogs.h"
#include "conditioning/level_dialogs.h"
#include "conditioning/span_dialog.h"
#include "conditioning/white_dialog.h"
#include "engine/spectrum.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace kv;

namespace {

/// A 16-bit WAV at 8192 Hz (8 Hz a bin with 1024 samples, MaxFreq 4096 Hz): tones at 512 Hz and
/// 2048 Hz, four traces, imported as the Import command does.
struct TwoTones : test::Bench {
    TwoTones() {
        start();
        std::vector<int> s;
        for (int t = 0; t < 4 * 1024; ++t)
            s.push_back(int(std::lround(8000 * std::sin(2 * M_PI * 512 * t / 8192.0) +
                                        8000 * std::sin(2 * M_PI * 2048 * t / 8192.0))));
        const std::string path = home.file("tones.wav");
        test::writeFile(path, test::wavBytes(1, 8192, 16, s));
        import(path);
        host.messages.clear();
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> v;
        for (const auto& m : host.messages)
            v.push_back(m.text);
        return v;
    }
    bool logged(const std::string& entry) const {
        return std::find(views.log.begin(), views.log.end(), entry) != views.log.end();
    }
};

} // namespace

TEST(FftFilterDialog, RefusesMissingFiguresWithItsMessages) {
    TwoTones b;
    ASSERT_EQ(b.st.MaxFreq, 4096.0f);
    BoxFilterFields f;
    dlgBoxFilter::Form_Load(b.wb, f);
    EXPECT_EQ(f.Combo1, 1) << "the axis is in kHz";
    EXPECT_FALSE(dlgBoxFilter::Command1_Click(b.wb, f));
    f.txtHP = "100";
    f.txtLp = "1e300x";
    EXPECT_FALSE(dlgBoxFilter::Command1_Click(b.wb, f));
    EXPECT_EQ(b.texts(), (std::vector<std::string>{"Enter value for HP", "Enter value for LP"}));
    EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
    EXPECT_FALSE(b.st.FftFilterOn);
    EXPECT_FALSE(f.applied);
}

TEST(FftFilterDialog, AppliesTheBandWithEachListsUnitAndWidensThePlot) {
    TwoTones b;
    pressButton(b.wb, 48);
    EXPECT_TRUE(b.logged("dialog dlgBoxFilter modeless"));
    EXPECT_TRUE(b.cmd.checked("mnuBCF"));
    EXPECT_TRUE(b.cmd.button(48).down);

    BoxFilterFields f;
    dlgBoxFilter::Form_Load(b.wb, f);
    f.Combo1 = 0;
    dlgBoxFilter::Combo1_Click(f);
    EXPECT_EQ(f.Combo2, 0) << "the low-pass list follows the high-pass one";
    f.Combo1 = 1; // kHz for the high-pass corner only
    f.txtHP = " 0.1 ";
    f.txtLp = "1000";
    ASSERT_TRUE(dlgBoxFilter::Command1_Click(b.wb, f));
    EXPECT_FLOAT_EQ(b.st.BoxHP, 100.0f);
    EXPECT_FLOAT_EQ(b.st.BoxLP, 1000.0f);
    EXPECT_TRUE(b.st.FftFilterOn);
    EXPECT_NEAR(b.st.SpAmp[64], 8000.0, 80.0) << "512 Hz stays";
    EXPECT_LT(b.st.SpAmp[256], 1.0) << "2048 Hz is gone";
    EXPECT_EQ(b.st.PlotRange, int32_t(std::trunc(b.st.FloorDbRel)) * -1 + 1);
    EXPECT_FALSE(dlgBoxFilter::OKButton_Click(b.wb, f)) << "applied: OK closes at once";
    dlgBoxFilter::Form_Unload(b.wb, f);
    EXPECT_TRUE(b.cmd.checked("mnuBCF")) << "an applied filter stays on after the dialog";

    // The command again switches it off.
    menuCommand(b.wb, "mnuBCF");
    EXPECT_FALSE(b.st.FftFilterOn);
    EXPECT_FALSE(b.cmd.button(48).down);
    EXPECT_NEAR(b.st.SpAmp[256], 8000.0, 80.0);
}

TEST(FftFilterDialog, ATaperWithoutWidthEndsTheApplyWithTheFilterOff) {
    TwoTones b;
    BoxFilterFields f{"100", "9000", 0, 0, false};
    EXPECT_FALSE(dlgBoxFilter::Command1_Click(b.wb, f));
    EXPECT_FLOAT_EQ(b.st.BoxLP, 0.0f) << "the held corner never reached the state";
    EXPECT_FALSE(b.st.FftFilterOn);
    EXPECT_TRUE(b.host.messages.empty());
    // Cancel after that leaves everything off and the command released.
    dlgBoxFilter::CancelButton_Click(b.wb, f);
    EXPECT_FALSE(b.cmd.checked("mnuBCF"));
}

TEST(WhiteningDialog, SwitchesTheOthersOffScansAndCanBeCancelled) {
    TwoTones b;
    b.st.AutotuneOn = b.st.SpanActive = b.st.FftFilterOn = true;
    b.cmd.check("mnuBCF");
    b.cmd.button(32).down = b.cmd.button(33).down = b.cmd.button(48).down = true;
    menuCommand(b.wb, "mnuWhite");
    EXPECT_FALSE(b.st.AutotuneOn || b.st.SpanActive || b.st.FftFilterOn);
    EXPECT_FALSE(b.cmd.button(32).down || b.cmd.button(33).down || b.cmd.button(48).down);
    EXPECT_TRUE(b.cmd.button(47).down);
    EXPECT_TRUE(b.logged("dialog dlgWhite modeless"));

    WhiteFields f;
    dlgWhite::Form_Load(b.wb, f);
    EXPECT_FALSE(dlgWhite::Command1_Click(b.wb, f));
    f.txtHP = "0";
    EXPECT_FALSE(dlgWhite::Command1_Click(b.wb, f));
    EXPECT_EQ(b.texts(), (std::vector<std::string>{"Enter value for Lower Frequency",
                                                   "Enter value for Higher Frequency"}));

    // Cancel during the scan: whitening stays off and the band as it was.
    f.Combo1 = f.Combo2 = 0;
    f.txtLp = "600";
    b.host.cancelProgressAt(2);
    EXPECT_FALSE(dlgWhite::Command1_Click(b.wb, f));
    EXPECT_FALSE(b.st.WhiteningOn);
    EXPECT_EQ(b.st.WhiteHighHz, 0.0f);

    b.host.cancelProgressAt(-1);
    ASSERT_TRUE(dlgWhite::Command1_Click(b.wb, f));
    EXPECT_EQ(b.host.lastProgressMax, 4);
    EXPECT_EQ(b.host.lastProgressValue, 4);
    EXPECT_TRUE(b.st.WhiteningOn);
    EXPECT_EQ(b.st.WhiteLowBin, 1) << "0 Hz starts at one bin";
    EXPECT_EQ(b.st.WhiteHighBin, 75);
    const float a =
        float(2 * std::hypot(double(b.st.WhiteRe), double(b.st.WhiteIm)) / b.st.WindowGain);
    for (int k = 1; k <= 75; ++k)
        ASSERT_NEAR(b.st.SpAmp[size_t(k - 1)], a, a * 1e-5) << k;
    EXPECT_TRUE(b.cmd.checked("mnuWhite"));

    dlgWhite::CancelButton_Click(b.wb, f);
    EXPECT_FALSE(b.st.WhiteningOn);
    EXPECT_FALSE(b.cmd.button(47).down);
}

TEST(SpanDialog, ChecksInOrderWithTheInformationIcon) {
    TwoTones b;
    SpanFields f;
    ZenterFr::Form_Load(b.wb, f);
    const auto apply = [&](const char* c, const char* w) {
        b.host.messages.clear();
        f.txtCenter = c;
        f.txtSp = w;
        return ZenterFr::Command1_Click(b.wb, f);
    };
    EXPECT_FALSE(apply("4096", "100"));
    EXPECT_EQ(b.texts(), (std::vector<std::string>{"Decrease Center Frequency!",
                                                   "Decrease Span or Increase Center Frequency!"}));
    EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Information);
    EXPECT_FALSE(apply("3900", "800")); // high edge 4300
    EXPECT_EQ(b.texts(), (std::vector<std::string>{"Decrease Span or Increase Center Frequency!"}));
    EXPECT_FALSE(apply("100", "400")); // low edge -100
    EXPECT_EQ(b.texts(), (std::vector<std::string>{"Decrease Span or Increase Center Frequency!"}));
    EXPECT_FALSE(apply("1000", "4"));
    EXPECT_EQ(b.texts(), (std::vector<std::string>{"Increase Span!"}));
    EXPECT_FALSE(apply("", "100")) << "empty: unread, the old figures checked";
    EXPECT_FALSE(b.st.SpanActive);
    EXPECT_EQ(b.st.SpanEnd, 0) << "a refused band never reaches the span";
}

TEST(SpanDialog, AppliedBandFoldsItsBinsAcrossThePlot) {
    TwoTones b;
    b.st.DrSet = 2;
    b.st.PlotColumns = 20;
    pressButton(b.wb, 33);
    EXPECT_TRUE(b.cmd.checked("mnuSpan"));
    SpanFields f;
    ZenterFr::Form_Load(b.wb, f);
    f.Combo1 = 1;
    ZenterFr::Combo1_Click(f);
    EXPECT_EQ(f.Combo2, 1) << "the span unit follows the centre unit";
    f.txtCenter = "0.512";
    f.txtSp = "0.32"; // 352 to 672 Hz
    ASSERT_TRUE(ZenterFr::Command1_Click(b.wb, f));
    EXPECT_TRUE(b.st.SpanActive);
    EXPECT_EQ(b.st.DrSet, 1);
    EXPECT_EQ(b.st.SpanStart, 44);
    EXPECT_EQ(b.st.SpanEnd, 84);
    EXPECT_EQ(b.st.SpanBinCount, 40);
    EXPECT_EQ(b.st.BinsPerColumn, 3);
    EXPECT_EQ(b.st.SpanBins, 13) << "columns of 3 bins from 44 to 85";
    EXPECT_EQ(b.st.SpanCol[6], b.st.SpDisp[64]) << "the 512 Hz tone in its column";
    EXPECT_FALSE(ZenterFr::OKButton_Click(b.wb, f)) << "OK after Apply closes with no check";

    menuCommand(b.wb, "mnuSpan");
    EXPECT_FALSE(b.st.SpanActive);
    EXPECT_FALSE(b.cmd.button(33).down);
}

TEST(LevelDialog, RefusedOnLinearScaleAndOutOfRange) {
    TwoTones b;
    b.st.YLinear = true;
    pressButton(b.wb, 54);
    EXPECT_EQ(b.texts(),
              (std::vector<std::string>{"This function can't be use for Linear Y scale"}));
    EXPECT_FALSE(b.cmd.button(54).down);
    b.st.YLinear = false;
    b.host.messages.clear();
    menuCommand(b.wb, "mnuLevel");
    EXPECT_TRUE(b.logged("dialog dlgdB modeless"));
    b.st.dBFS_On = true;
    b.st.Offset_Log = 0;
    b.st.PlotRange = 100;
    LevelFields f;
    dlgdB::Form_Load(b.wb, f);
    EXPECT_EQ(f.lblMin, "-100");
    for (const char* bad : {"5", "-100", "-1e300"}) {
        f.Text1 = bad;
        EXPECT_TRUE(dlgdB::OKButton_Click(b.wb, f)) << bad;
    }
    EXPECT_EQ(b.texts(), std::vector<std::string>(3, "Out of range!"));
    EXPECT_FALSE(b.st.LevelOn);
    f.Text1 = "-30";
    EXPECT_FALSE(dlgdB::OKButton_Click(b.wb, f));
    EXPECT_TRUE(b.st.LevelOn);
    EXPECT_EQ(b.st.LevelValue, -30.0);
    EXPECT_EQ(b.st.LevelShown, 30.0f);
    EXPECT_TRUE(b.cmd.checked("mnuLevel"));
    dlgdB::CancelButton_Click(b.wb, f);
    EXPECT_FALSE(b.st.LevelOn || b.cmd.checked("mnuLevel"));
}

TEST(GainDialog, FactorOfTheTypedDecibelsOnTheTimeTrace) {
    TwoTones b;
    GainFields f;
    dlgDoGain::Form_Load(b.wb, f);
    EXPECT_EQ(f.txtdb, "0");
    const std::vector<float> plain(b.st.TraceBuf.begin(), b.st.TraceBuf.begin() + 1024);
    for (const char* bad : {"", "six", "NaN"}) {
        f.txtdb = bad;
        EXPECT_TRUE(dlgDoGain::OKButton_Click(b.wb, f)) << bad;
    }
    EXPECT_EQ(b.texts(), std::vector<std::string>(3, "Enter value for Gain"));
    f.txtdb = "0";
    ASSERT_TRUE(dlgDoGain::Command1_Click(b.wb, f));
    EXPECT_EQ(b.st.GainFactor, 1.0);
    f.txtdb = "20";
    ASSERT_TRUE(dlgDoGain::Command1_Click(b.wb, f));
    EXPECT_NEAR(b.st.GainFactor, 10.0, 1e-12);
    EXPECT_FLOAT_EQ(b.st.TraceBuf[100], plain[100] * 10.0f);
    f.txtdb = "1e300";
    ASSERT_TRUE(dlgDoGain::Command1_Click(b.wb, f));
    EXPECT_EQ(b.st.GainDb, kMaxGainDb) << "held";
    dlgDoGain::CancelButton_Click(b.wb, f);
    EXPECT_FALSE(b.st.GainOn);
    EXPECT_EQ(b.st.TraceBuf[100], plain[100]);
}

TEST(AutotuneAndAutoscale, SwitchSpanAndTheRange) {
    TwoTones b;
    b.st.WhiteningOn = true;
    menuCommand(b.wb, "mnuAutotune");
    EXPECT_TRUE(b.logged("dialog dlgAutotune modeless"));
    AutotuneFields f;
    dlgAutotune::Form_Load(b.wb, f);
    EXPECT_EQ(f.cmbL, "10");
    f.cmbL = "20";
    EXPECT_FALSE(dlgAutotune::OKButton_Click(b.wb, f));
    EXPECT_EQ(b.st.AutotuneLevel, 20);
    EXPECT_TRUE(b.st.AutotuneOn && b.st.SpanActive);
    EXPECT_FALSE(b.st.WhiteningOn);
    EXPECT_TRUE(b.cmd.checked("mnuAutotune") && b.cmd.checked("mnuSpan"));
    EXPECT_LE(b.st.SpanStart, b.st.PeakBin);
    EXPECT_GE(b.st.SpanEnd, b.st.PeakBin);
    menuCommand(b.wb, "mnuAutotune");
    EXPECT_FALSE(b.st.AutotuneOn || b.st.SpanActive || b.cmd.checked("mnuSpan"));

    menuCommand(b.wb, "mnuAutoscale");
    EXPECT_EQ(b.st.PlotRange, std::max(int32_t(std::lround(-b.st.FloorDbRel)), 1));
}

TEST(YscaleDialog, BitsPerDivisionAppliedAndTakenBack) {
    TwoTones b;
    b.st.ShowVertical = 2;
    YscaleFields f;
    dlgYscale::Form_Load(b.wb, f);
    EXPECT_EQ(f.caption, "Bits/Div Scale");
    for (const char* bad : {"", "x", "0", "-3"}) {
        f.txtRefTime = bad;
        EXPECT_FALSE(dlgYscale::Command1_Click(b.wb, f)) << bad;
    }
    EXPECT_EQ(b.texts(), std::vector<std::string>(4, "Enter value"));
    f.txtRefTime = "1000.4";
    ASSERT_TRUE(dlgYscale::Command1_Click(b.wb, f));
    EXPECT_FLOAT_EQ(b.st.ScaleBits, 4001.6f);
    EXPECT_EQ(b.st.ScaleBitsInt, 4002);
    dlgYscale::CancelButton_Click(b.wb, f);
    EXPECT_EQ(f.txtRefTime, "8191");
    EXPECT_FLOAT_EQ(b.st.ScaleBits, 8191.0f * 4);
}

TEST(ConditioningCommands, StandReadyInTheSpectrumAndOscopeViews) {
    TwoTones b;
    for (const char* m : {"mnuLevel", "mnuGain", "mnuAutoscale", "mnuAutotune", "mnuSpan", "mnuGPR",
                          "mnuBCF", "mnuWhite", "mnuVertZoom", "mnuEYS"})
        EXPECT_TRUE(b.cmd.menu(m).available) << m;
    for (int n : {31, 32, 33, 39, 47, 48, 54, 68, 73})
        EXPECT_TRUE(b.cmd.button(n).available) << n;
    menuCommand(b.wb, "mnuGPR");
    EXPECT_TRUE(b.logged("dialog dlgFilterSel modal"));
    FilterSelFields f;
    dlgFilterSel::Form_Load(b.wb, f);
    EXPECT_EQ(f.lblFc.substr(0, 4), "Fc  ");
    EXPECT_EQ(f.lblLP.substr(0, 3), "LP ");
    EXPECT_NE(f.lblLP.find("   "), std::string::npos) << f.lblLP;
}
