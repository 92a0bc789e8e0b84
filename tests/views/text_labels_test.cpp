// Text on the views: the rectangle's operations, the dialog's lines (stacked, parked when
// empty, shown in the contrast colour on a background of their own colour), and the drag: held
// inside the graph, a click without a move changing nothing, the place kept across a resize.
#include "support/test_home.h"
#include "views/oscilloscope/oscope_view.h"
#include "views/text_labels.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

using namespace kv;

TEST(CRect, NormalisesConvertsAndTestsPoints) {
    CRect r(30, 40, 10, 20);
    r.NormalizeRect();
    EXPECT_EQ(r.Left(), 10);
    EXPECT_EQ(r.Top(), 20);
    EXPECT_EQ(r.Width(), 20);
    EXPECT_EQ(r.Height(), 20);
    EXPECT_TRUE(r.PtInRect({10, 20}));
    EXPECT_FALSE(r.PtInRect({30, 25})); // the right edge is outside
    r.ScreenToTwips();
    EXPECT_EQ(r.Right(), 450);
    r.TwipsToScreen();
    EXPECT_EQ(r.Right(), 30);
    Label l{.text = "x", .left = 5, .top = 6, .width = 7, .height = 8};
    r.SetRectToCtrl(l);
    r.Offset(10, 1);
    r.SetCtrlToRect(l);
    EXPECT_EQ(l.left, 15);
    EXPECT_EQ(l.top, 7);
    EXPECT_EQ(l.width, 7);
}

namespace {

struct Text : ::testing::Test {
    TextLabels t;
    TextFields f;
    const QRect graph{72, 40, 400, 300};
    void write(int i, const std::string& s) {
        f.Text[size_t(i)] = s;
        f.TextIndex = int16_t(i);
        dlgText::mnuWrite_Click(t, f, graph, "0", "16777215");
    }
    void drag(QPoint from, QPoint to) {
        ASSERT_TRUE(t.lblSText_MouseDown(LeftButton, from));
        t.Form_MouseMove(LeftButton, to, graph);
        t.Form_MouseUp();
    }
};

} // namespace

TEST_F(Text, LinesStackAtTheGraphsLeftAndEmptyOnesArePutAway) {
    t.color = "255";
    write(0, "first");
    write(2, "third");
    write(1, "");
    const auto& l = t.lblSText();
    EXPECT_TRUE(l[0].visible && l[2].visible);
    EXPECT_EQ(l[0].left, graph.left() + 6);
    EXPECT_EQ(l[2].top, graph.top() + 2 * l[2].height);
    EXPECT_FALSE(l[1].visible);
    EXPECT_EQ(l[1].left, kParkedLeft);
    EXPECT_EQ(t.color, "255");

    // Text in the background's colour would not show: it takes the contrast colour.
    t.color = "0";
    write(3, "fourth");
    EXPECT_EQ(t.color, "16777215");
    // Four lines at most: an index past them writes the last.
    f.TextIndex = 9;
    f.Text[3] = "last";
    dlgText::mnuWrite_Click(t, f, graph, "0", "16777215");
    EXPECT_EQ(l[3].text, "last");

    TextFields back;
    dlgText::Form_Load(t, back);
    EXPECT_EQ(back.Text[0], "first");
    f.TextIndex = 0;
    dlgText::mnuClean_Click(t, f);
    EXPECT_EQ(f.Text[0], "");
    EXPECT_FALSE(l[0].visible);
}

TEST_F(Text, ADraggedLineStaysInsideTheGraph) {
    write(0, "label");
    const Label start = t.lblSText()[0];
    const QPoint grab(start.left + 3, start.top + 3);

    // A click without a move changes nothing.
    ASSERT_TRUE(t.lblSText_MouseDown(LeftButton, grab));
    EXPECT_TRUE(t.Form_MouseUp());
    EXPECT_EQ(t.lblSText()[0].left, start.left);
    EXPECT_EQ(t.lblSText()[0].top, start.top);

    drag(grab, grab + QPoint(100, 50));
    EXPECT_EQ(t.lblSText()[0].left, start.left + 100);
    EXPECT_EQ(t.lblSText()[0].top, start.top + 50);

    // Far past the bottom right corner: the whole label stays on the graph.
    const Label now = t.lblSText()[0];
    drag({now.left + 3, now.top + 3}, {5000, 5000});
    const Label& end = t.lblSText()[0];
    EXPECT_EQ(end.right(), graph.right() + 1);
    EXPECT_EQ(end.bottom(), graph.bottom());
    drag({end.left + 3, end.top + 3}, {-5000, -5000});
    EXPECT_EQ(t.lblSText()[0].left, graph.left());
    EXPECT_EQ(t.lblSText()[0].top, graph.top());

    // A press beside the text is not the text's; nor is a right press on it.
    EXPECT_FALSE(t.lblSText_MouseDown(LeftButton, {0, 0}));
    EXPECT_FALSE(t.lblSText_MouseDown(RightButton, {graph.left() + 2, graph.top() + 2}));
}

TEST(TextOnAView, KeepsItsPlaceAcrossAResizeAndShowsInThePicture) {
    test::Bench b;
    b.start();
    b.st.Sp_Samples = b.st.Fft_Samples = 1024;
    b.st.SampleRate = 1024;
    b.st.FullScalePos = 32767;
    b.st.ScaleBits = 800;
    b.st.TraceBuf.assign(1025, 0.0f);
    oscope::OscopeView v(b.wb);
    v.load(700, 500);
    TextFields f;
    f.Text[0] = "Instrument A";
    v.texts().color = "65535";
    dlgText::mnuWrite_Click(v.texts(), f, v.textArea(), b.st.Time_BackColor, "16777215");
    const Label l = v.texts().lblSText()[0];
    ASSERT_TRUE(v.textPress(LeftButton, l.left + 2, l.top + 2));
    v.textMove(LeftButton, l.left + 82, l.top + 42);
    v.textRelease();
    const Label moved = v.texts().lblSText()[0];
    EXPECT_EQ(moved.left, l.left + 80);
    v.resize(900, 600);
    EXPECT_EQ(v.texts().lblSText()[0].left, moved.left);
    EXPECT_EQ(v.texts().lblSText()[0].top, moved.top);
    // The text is part of what the window, a picture and a print show.
    const QImage img = v.pictureWithText();
    int yellow = 0;
    for (int y = moved.top; y < moved.bottom(); ++y)
        for (int x = moved.left; x < moved.right(); ++x)
            yellow += (img.pixel(x, y) & 0xFFFFFF) == 0x00FFFF00u;
    EXPECT_GT(yellow, 10);
}
