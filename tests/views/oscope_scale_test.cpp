// The O-scope's scales: amplitude labels in volts and in counts, the time unit and its labels,
// grid positions, label thinning and the contrast colour.
#include "views/oscilloscope/oscope_view.h"

#include "support/test_home.h"

#include <gtest/gtest.h>
#include <memory>

using namespace kv;
using namespace kv::oscope;

namespace {

struct ScopeScale : ::testing::Test {
    test::Bench b;
    ProgramState& st = b.st;
    std::unique_ptr<OscopeView> v;

    void SetUp() override {
        b.start();
        st.Sp_Samples = st.Fft_Samples = 1024;
        st.SampleRate = 1024;
        st.FullScalePos = 32767;
        st.ScaleBits = 32767;
        st.TraceCount = 1;
        st.TraceBuf.assign(1025, 0.0f);
    }
    // A view whose graph is gw x gh pixels.
    void open(int gw = 512, int gh = 400) {
        v = std::make_unique<OscopeView>(b.wb);
        v->Form_Load(gw + kWidthMargin, gh + kHeightMargin);
        v->Form_Resize(gw + kWidthMargin, gh + kHeightMargin);
        v->UpdateTime();
    }
    std::vector<std::string> ylabels() const {
        std::vector<std::string> t;
        for (const auto& l : v->lbly())
            t.push_back(l.text);
        return t;
    }
};

using Texts = std::vector<std::string>;

} // namespace

TEST_F(ScopeScale, BitsModeLowerHalfRunsOneCountFurtherAfterCountAmplButNotAfterCountNewAmp) {
    st.ShowVertical = 2;
    st.ScaleBits = 8192 * 4;
    open();
    EXPECT_EQ(ylabels(), (Texts{"32768", "24576", "16384", "8192", "0", "-8193", "-16385", "-24577",
                                "-32769"}));
    EXPECT_EQ(v->txtText(), "8192 Bits /Div");
    EXPECT_EQ(v->lblText().text, "Bits");
    EXPECT_FLOAT_EQ(v->AmpFactor(), 1.0f);

    st.RefDel = 8192;
    v->CountNewAmp();
    EXPECT_EQ(ylabels(), (Texts{"32768", "24576", "16384", "8192", "0", "-8192", "-16384", "-24576",
                                "-32768"}));
    for (const auto& l : v->lbly())
        EXPECT_EQ(l.right(), v->graphRect().left() - 2);
}

TEST_F(ScopeScale, VoltModeQuarterVoltPerDivisionFillsTheGraphAtFullScale) {
    st.ShowVertical = 1;
    st.Reference = 2;
    open();
    EXPECT_FLOAT_EQ(st.ScaleVolt, 2.0f);
    EXPECT_FLOAT_EQ(v->DivValue(), 0.25f);
    EXPECT_FLOAT_EQ(st.RefDel, 0.25f);
    EXPECT_EQ(ylabels(),
              (Texts{"1.00", "0.75", "0.50", "0.25", "0.00", "-0.25", "-0.50", "-0.75", "-1.00"}));
    EXPECT_EQ(v->txtText(), "0.25 Volt /Div");
    // One count is Reference / (2 * FullScalePos) volts.
    EXPECT_FLOAT_EQ(v->AmpFactor(), 1.0f / 32767);

    // Full scale is drawn on the top row.
    st.TraceBuf.assign(1025, 32767.0f);
    v->picGraph().fill(colorFromIni(st.Time_BackColor));
    v->Draw();
    EXPECT_EQ(v->TracePoints()[10].y(), 0);
}

TEST_F(ScopeScale, TektronixLabelsHaveOneDecimalAboveAndTwoBelow) {
    st.IsSht = true;
    st.ShtVoltDiv = 0.5f;
    st.ShowVertical = 1;
    open();
    // The centre label is written by both halves; the lower half's picture wins.
    EXPECT_EQ(ylabels(),
              (Texts{"2.0", "1.5", "1.0", "0.5", "0.00", "-0.50", "-1.00", "-1.50", "-2.00"}));
    EXPECT_EQ(v->lblText().text, "Volt");
    EXPECT_FLOAT_EQ(v->AmpFactor(), 1.0f);
    EXPECT_FLOAT_EQ(st.RefDel, 0.5f);

    // Samples are volts already, whatever the axis mode says.
    st.ShowVertical = 2;
    v->UpdateTime();
    EXPECT_EQ(v->lblText().text, "Volt");
    EXPECT_FLOAT_EQ(v->AmpFactor(), 1.0f);
}

TEST_F(ScopeScale, TimeUnitFollowsTheTimePerDivision) {
    st.Sp_Samples = 4096;
    st.SampleRate = 1e6;
    st.TraceBuf.assign(4097, 0.0f);
    open();
    EXPECT_EQ(v->TimeUnit(), "us");
    EXPECT_EQ(v->TimeExponent(), -6);
    EXPECT_EQ(v->Label1().text, "409.6us/div");
    EXPECT_EQ(v->lblX()[10].text, "4096.0");
    EXPECT_EQ(v->lblX()[1].text, "409.6");
    EXPECT_EQ(v->TimeRangeText(), "4096 us");
    EXPECT_DOUBLE_EQ(v->UnitFactor(), 1e-6);

    // Two seconds a division: no unit at all, and the exponent stays where it was.
    st.Sp_Samples = 20;
    st.SampleRate = 1;
    v->CountTime();
    EXPECT_EQ(v->TimeUnit(), "");
    EXPECT_EQ(v->TimeExponent(), -6);
    EXPECT_EQ(v->Label1().text, "2/div");
    EXPECT_EQ(v->lblX()[10].text, "20.0");
}

TEST(ScopeTimeUnit, PicksTheFirstUnitThatGivesAtLeastOne) {
    auto c = chooseTimeUnit(0.0012f);
    EXPECT_EQ(c.index, 1);
    EXPECT_FLOAT_EQ(c.timePerDiv, 1.2f);
    c = chooseTimeUnit(0.5f);
    EXPECT_EQ(c.index, 1);
    EXPECT_FLOAT_EQ(c.timePerDiv, 500.0f);
    EXPECT_EQ(chooseTimeUnit(3e-9f).index, 3);
    EXPECT_EQ(chooseTimeUnit(1.0f).index, -1);
    // Below a picosecond nothing fits: the value stays in seconds.
    c = chooseTimeUnit(2e-13f);
    EXPECT_EQ(c.index, -1);
    EXPECT_FLOAT_EQ(c.timePerDiv, 2e-13f);
}

TEST_F(ScopeScale, GridLinesAreRoundedDivisionsWithTheLastVerticalOnTheRightEdge) {
    open(500, 300);
    // 300 / 8 = 37.5: halves go to even.
    EXPECT_EQ(v->HorizontalLines(),
              (std::array<int32_t, 9>{38, 75, 112, 150, 188, 225, 262, 0, 0}));
    EXPECT_EQ(v->VerticalLines()[0], 50);
    EXPECT_EQ(v->VerticalLines()[9], 500);
    EXPECT_EQ(v->graphRect(), QRect(kGraphLeft, kGraphTop, 500, 300));
    for (int i = 1; i <= 9; ++i)
        EXPECT_TRUE(v->lnLV()[size_t(i)].visible);
}

TEST_F(ScopeScale, SmallWindowsKeepTheirMinimumSizeAndThinTheLabels) {
    open(512, 400);
    v->Form_Resize(10, 10);
    EXPECT_EQ(v->formWidth(), kMinFormWidth);
    EXPECT_EQ(v->formHeight(), kMinFormHeight);
    // 86 pixels high: the first label reaches the second, so every other one goes.
    for (int i : {1, 3, 5})
        EXPECT_FALSE(v->lbly()[size_t(i)].visible) << i;
    for (int i : {0, 2, 4, 6, 7, 8})
        EXPECT_TRUE(v->lbly()[size_t(i)].visible) << i;
    int shownX = 0;
    for (const auto& l : v->lblX())
        shownX += l.visible;
    EXPECT_LT(shownX, 11);

    v->Form_Resize(1000, 800);
    for (const auto& l : v->lbly())
        EXPECT_TRUE(l.visible);
    for (const auto& l : v->lblX())
        EXPECT_TRUE(l.visible);
}

TEST(ScopeLabels, AmplitudeLabelsThinOutByTheFirstRuleThatMatches) {
    auto stack = [](int step) {
        std::array<Label, 9> lbly;
        for (int i = 0; i <= 8; ++i) {
            lbly[size_t(i)].top = i * step;
            lbly[size_t(i)].height = 12;
        }
        HideYLabels(lbly);
        std::string shown;
        for (const auto& l : lbly)
            shown += l.visible ? '1' : '0';
        return shown;
    };
    EXPECT_EQ(stack(2), "000000111");  // the first label reaches the seventh
    EXPECT_EQ(stack(5), "100000111");  // ... the third
    EXPECT_EQ(stack(10), "101010111"); // ... the second
    EXPECT_EQ(stack(20), "111111111");
}

TEST_F(ScopeScale, ContrastColourIsTheInvertedBackgroundReadBack) {
    st.Time_BackColor = "0";
    open();
    EXPECT_EQ(v->KursorColor(), "16777215");
    st.Time_BackColor = "255"; // red
    v->Invert();
    v->InvertText();
    EXPECT_EQ(v->KursorColor(), "16776960");
    EXPECT_EQ(v->TextColor(), "16776960");
}

TEST_F(ScopeScale, LoadAndUnloadSetTheViewFlags) {
    st.TraceCount = 1;
    open();
    EXPECT_TRUE(st.OscOpen);
    EXPECT_EQ(st.ActiveView, 1);
    EXPECT_FALSE(v->HS().Enabled);
    st.Flipped = true;
    v->Form_Unload();
    EXPECT_FALSE(st.OscOpen);
    EXPECT_FALSE(st.Flipped);
    EXPECT_FALSE(b.cmd.enabled("mnuZoomIn"));
}
