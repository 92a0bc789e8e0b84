// The O-scope's picture and measurements: decimation, erase by overdraw, flipping, the zoom
// stack, the cursors reading a drawn trace, and the amplitude read-outs.
#include "views/oscilloscope/oscope_view.h"

#include "support/test_home.h"

#include <gtest/gtest.h>
#include <memory>

using namespace kv;
using namespace kv::oscope;

namespace {

// A graph of 512 x 400 pixels over 1024 samples of a one-second trace in counts: 100 ms a
// division, two samples a pixel; 800 counts from the centre to the top, so one pixel is four
// counts and one division 200.
struct Scope : ::testing::Test {
    test::Bench b;
    ProgramState& st = b.st;
    std::unique_ptr<OscopeView> v;
    QRgb trace = 0, back = 0, grid = 0;

    void SetUp() override {
        b.start();
        st.Sp_Samples = st.Fft_Samples = 1024;
        st.SampleRate = 1024;
        st.FullScalePos = 32767;
        st.ScaleBits = 800;
        st.ShowVertical = 2;
        st.TraceCount = 1;
        st.TraceBuf.assign(1025, 0.0f);
        trace = colorFromIni(st.Time_LineColor);
        back = colorFromIni(st.Time_BackColor);
        grid = colorFromIni(st.Time_GridColor);
    }
    void open(int gw = 512, int gh = 400) {
        v = std::make_unique<OscopeView>(b.wb);
        v->Form_Load(gw + kWidthMargin, gh + kHeightMargin);
        v->Form_Resize(gw + kWidthMargin, gh + kHeightMargin);
        v->UpdateTime();
    }
    QRgb at(int x, int y) const { return v->picGraph().pixel(x, y) & 0xFFFFFF; }
    int traceRowsIn(int x) const {
        int n = 0;
        for (int y = 0; y < v->picGraph().height(); ++y)
            n += at(x, y) == (trace & 0xFFFFFF);
        return n;
    }
    // A right-button drag across the graph (graph pixels).
    void drag(int x1, int x2) {
        v->picGraph_MouseDown(RightButton, x1, 10);
        v->picGraph_MouseMove(RightButton, x2, 10);
        v->picGraph_MouseUp(RightButton, x2, 10);
    }
};

} // namespace

TEST(ScopeSampleStep, DecimatesToAboutOnePointPerPixel) {
    SampleStepChoice c = chooseSampleStep(600, 4096, 4096);
    EXPECT_EQ(c.SampleStep, 7);
    EXPECT_FLOAT_EQ(c.PixelsPerSample, float(600.0 / (4096.0 / 7)));
    EXPECT_EQ(c.PointCapacity, 585);

    // A graph wider than the trace spreads every sample.
    c = chooseSampleStep(5000, 4096, 4096);
    EXPECT_EQ(c.SampleStep, 1);
    EXPECT_FLOAT_EQ(c.PixelsPerSample, 5000.0f / 4096);
}

TEST_F(Scope, UnzoomedDrawLeavesOutTheLastTwoSamples) {
    st.Sp_Samples = st.Fft_Samples = 16;
    st.TraceBuf.assign(17, 0.0f);
    st.TraceBuf[15] = 800; // the last sample: never drawn
    open();
    EXPECT_EQ(v->SampleStep(), 1);
    EXPECT_EQ(v->TracePointCount() - 1, 15);
    EXPECT_EQ(v->TracePoints()[14], QPoint(14 * 32, 200));
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 512; ++x)
            ASSERT_NE(at(x, y), trace & 0xFFFFFF) << x << "," << y;
}

TEST_F(Scope, DecimatedDrawPicksEverySampleStepthSample) {
    open(256, 400);
    EXPECT_EQ(v->SampleStep(), 4);
    for (int i = 0; i < 1024; ++i)
        st.TraceBuf[size_t(i)] = float(i % 4 == 0 ? 400 : -400);
    v->Draw();
    // Only the picked samples (all +400) are drawn: one flat line on row 100.
    EXPECT_EQ(v->TracePointCount() - 1, 256);
    for (int i = 0; i < 255; ++i)
        ASSERT_EQ(v->TracePoints()[size_t(i)].y(), 100);
    EXPECT_EQ(at(50, 310), back & 0xFFFFFF);
}

TEST_F(Scope, RedrawErasesTheOldTraceButKeepsTheGridAndOtherPaint) {
    open();
    for (auto& s : st.TraceBuf)
        s = 440; // row 90
    v->Draw();
    EXPECT_EQ(traceRowsIn(30), 1);
    // Something else painted in the picture, off the trace and the grid.
    v->picGraph().fillRect(20, 20, 3, 3, qRgb(1, 2, 3));
    for (auto& s : st.TraceBuf)
        s = -220; // row 255
    v->Draw();
    EXPECT_EQ(traceRowsIn(30), 1);
    EXPECT_EQ(at(30, 255), trace & 0xFFFFFF);
    EXPECT_EQ(at(30, 90), back & 0xFFFFFF);
    // Where the old trace crossed a vertical grid line the grid is whole again.
    EXPECT_EQ(at(v->VerticalLines()[0], 90), grid & 0xFFFFFF);
    EXPECT_EQ(at(21, 21), qRgb(1, 2, 3) & 0xFFFFFF);

    // New settings repaint the picture in the new background: the old paint goes.
    st.Time_BackColor = "8388608"; // navy
    v->UpdateTime();
    EXPECT_EQ(at(21, 21), qRgb(0, 0, 128) & 0xFFFFFF);
    back = colorFromIni(st.Time_BackColor);

    // A grid switched off is painted out in the background colour.
    st.ShowGrid = 0;
    v->Draw();
    EXPECT_EQ(at(v->VerticalLines()[0], 30), back & 0xFFFFFF);
}

TEST_F(Scope, FlipMirrorsTheTraceAboutTheCentreLine) {
    open();
    for (auto& s : st.TraceBuf)
        s = 440;
    v->Draw();
    EXPECT_EQ(at(30, 90), trace & 0xFFFFFF);
    v->mnuFlip();
    EXPECT_TRUE(st.Flipped);
    EXPECT_EQ(at(30, 310), trace & 0xFFFFFF);
    EXPECT_EQ(at(30, 90), back & 0xFFFFFF);
    EXPECT_EQ(b.cmd.panel(9), "Waveform flipped.");
    EXPECT_TRUE(b.cmd.button(72).down);
    v->mnuFlip();
    EXPECT_EQ(b.cmd.panel(9), "");
}

TEST_F(Scope, ZoomStackGoesInTwiceAndBackOutToTheWholeTrace) {
    open();
    v->mnuZoomIn();
    EXPECT_TRUE(v->ZoomOn());
    EXPECT_EQ(v->zoomDepth(), 1u);
    EXPECT_TRUE(b.cmd.checked("mnuZoomIn"));
    EXPECT_TRUE(b.cmd.enabled("mnuZoomOut"));

    drag(100, 300); // two samples a pixel: samples 200 to 600
    ASSERT_EQ(v->zoomDepth(), 2u);
    EXPECT_EQ(v->ZoomFirst(), 200);
    EXPECT_EQ(v->ZoomLast(), 600);
    EXPECT_EQ(v->ViewSamples(), 400);
    // The times come from the axis labels: 1000 ms over 512 pixels.
    EXPECT_FLOAT_EQ(v->ViewStartTime(), 195.31f);
    EXPECT_EQ(v->lblX()[0].text, "195.31");
    EXPECT_EQ(v->lblX()[10].text, "585.94");
    EXPECT_EQ(v->Label1().text, "39.06ms/div");
    EXPECT_EQ(v->TimeRangeText(), "585.94 ms");
    EXPECT_EQ(b.cmd.panel(5), "Time Range: 585.94 ms");
    EXPECT_EQ(v->TracePointCount() - 1, 400);

    drag(0, 256); // half of the zoomed view
    ASSERT_EQ(v->zoomDepth(), 3u);
    EXPECT_EQ(v->ZoomFirst(), 200);
    EXPECT_EQ(v->ZoomLast(), 400);

    // A resize keeps the zoom: the same 200 samples across the new width.
    v->Form_Resize(400 + kWidthMargin, 300 + kHeightMargin);
    EXPECT_EQ(v->ViewSamples(), 200);
    EXPECT_EQ(v->TracePointCount() - 1, 200);
    EXPECT_EQ(v->TracePoints()[199].x(), 398); // round(199 * 400 / 200)
    v->Form_Resize(512 + kWidthMargin, 400 + kHeightMargin);

    v->mnuZoomOut();
    ASSERT_EQ(v->zoomDepth(), 2u);
    EXPECT_EQ(v->ZoomFirst(), 200);
    EXPECT_EQ(v->ZoomLast(), 600);
    EXPECT_EQ(v->lblX()[0].text, "195.31");
    EXPECT_TRUE(v->ZoomOn());

    v->mnuZoomOut();
    EXPECT_EQ(v->zoomDepth(), 0u);
    EXPECT_FALSE(v->ZoomOn());
    EXPECT_EQ(v->ZoomFirst(), 0);
    EXPECT_EQ(v->ZoomLast(), 1023);
    EXPECT_EQ(v->ViewSamples(), 1024);
    EXPECT_EQ(v->SampleStep(), 2);
    EXPECT_EQ(v->TracePointCount() - 1, 512);
    EXPECT_TRUE(b.cmd.checked("mnuNoZoom"));
}

TEST_F(Scope, DragsThatMakeNoZoomAndDragsPastTheEnd) {
    open();
    v->mnuZoomIn();
    drag(300, 100); // right to left
    EXPECT_EQ(v->zoomDepth(), 1u);
    EXPECT_FALSE(v->shZoomVisible());

    drag(250, 511); // samples 500 to 1022
    ASSERT_EQ(v->zoomDepth(), 2u);

    // A drag that would end past the trace (here cut shorter while zoomed) ends on its last
    // sample.
    st.Sp_Samples = 800;
    v->picGraph_MouseDown(RightButton, 0, 10);
    v->picGraph_MouseMove(RightButton, 511, 10);
    EXPECT_EQ(v->ZoomLast(), 799);
    v->picGraph_MouseUp(RightButton, 511, 10);
    ASSERT_EQ(v->zoomDepth(), 3u);
    EXPECT_EQ(v->lstZoomEnd().back(), "799");
    st.Sp_Samples = 1024;

    // Zoom In again adds another whole-trace row; No Zoom empties the stack.
    v->mnuZoomIn();
    EXPECT_EQ(v->zoomDepth(), 4u);
    EXPECT_EQ(v->lstZoomStart().back(), "0");
    EXPECT_EQ(v->lstZoomEnd().back(), "1023");
    v->NoZoom();
    EXPECT_EQ(v->zoomDepth(), 0u);
    EXPECT_FALSE(v->ZoomOn());
    EXPECT_EQ(v->lblX()[10].text, "1000.00");
    EXPECT_EQ(v->ViewSamples(), 1024);
}

TEST_F(Scope, PointerReadsTimeFromTheAxisAndAmplitudeFromTheRoundedGrid) {
    open();
    v->picGraph_MouseDown(LeftButton, 256, 150);
    EXPECT_TRUE(v->MouseDrawing());
    EXPECT_EQ(v->lblMyTm().text, "500 ms");
    EXPECT_EQ(v->lbldB().text, "Ampl: 200 Bits");
    v->picGraph_MouseMove(LeftButton, 128, 260);
    EXPECT_EQ(v->lblMyTm().text, "250 ms");
    EXPECT_EQ(v->lbldB().text, "Ampl: -240 Bits");
    v->picGraph_MouseMove(LeftButton, 128, 200);
    EXPECT_EQ(v->lbldB().text, "Ampl: 0 Bits");
    v->picGraph_MouseUp(LeftButton, 128, 200);
    EXPECT_FALSE(v->MouseDrawing());
    EXPECT_FALSE(v->lbldB().visible);

    st.ShowVertical = 1;
    st.Reference = 2;
    v->UpdateTime();
    v->picGraph_MouseDown(LeftButton, 10, 150);
    EXPECT_EQ(v->lbldB().text, "Ampl: 0.25 Volt"); // a quarter volt a division, 50 pixels
}

// Cursors on a trace that is +440 counts (row 90) on its first half and -220 (row 255) on its
// second.
struct ScopeCursors : Scope {
    void SetUp() override {
        Scope::SetUp();
        for (size_t i = 0; i < 1025; ++i)
            st.TraceBuf[i] = i < 512 ? 440.0f : -220.0f;
        open();
    }
    // Drags cursor `i`'s handle by dx pixels.
    void dragHandle(int i, int dx) {
        const Label& h = v->lblK()[size_t(i)];
        const int x = h.left + 2, y = h.top + 2;
        v->mousePress(LeftButton, x, y);
        v->mouseMove(LeftButton, x + dx, y);
        v->mouseRelease(LeftButton, x + dx, y);
    }
};

TEST_F(ScopeCursors, ReadTheDrawnTraceAndPrintTheDifferences) {
    v->mnuCur();
    EXPECT_TRUE(v->KursorOn());
    EXPECT_TRUE(b.cmd.button(83).down);
    EXPECT_EQ(v->picKLeft(), (std::array<int, 2>{1, 2}));
    EXPECT_EQ(v->lblMarker1()[0].text, "V1 = 440 Bits ; t1 = 1.95 ms");
    EXPECT_EQ(v->lblMarker1()[1].text, "V2 = 440 Bits ; t2 = 3.91 ms");
    EXPECT_EQ(v->lnKG()[0], QLine(-7, 90, 9, 90));

    dragHandle(1, 398);
    EXPECT_EQ(v->picKLeft()[1], 400);
    EXPECT_EQ(v->lblMarker1()[1].text, "V2 = -220 Bits ; t2 = 781.25 ms");
    // dt runs from cursor 2 to cursor 1, dV from cursor 1 to cursor 2.
    EXPECT_EQ(v->lblMarker1()[2].text, "dV =  -660 Bits ; dt = -779.3 ms ; dV/dt =846.9 Bits/sec.");
    EXPECT_EQ(v->lblK()[1].left, 400 + kGraphLeft - 6);

    // Both on one column: no rate, and no unit for it.
    dragHandle(1, -399);
    EXPECT_EQ(v->picKLeft()[1], 1);
    EXPECT_EQ(v->lblMarker1()[2].text, "dV =  0 Bits ; dt = 0 ms ; dV/dt =0 ");

    v->mnuCur();
    EXPECT_FALSE(v->picKVisible()[0]);
    EXPECT_FALSE(v->lblMarker1()[2].visible);
}

TEST_F(ScopeCursors, ColumnWithoutTheTraceColourKeepsThePreviousRow) {
    v->mnuCur(); // both cursors find the trace on row 90
    v->picGraph().fill(back);
    v->picGraph().fillRect(2, 60, 1, 1, trace);
    v->KursorRefresh();
    EXPECT_EQ(v->lnKG()[0].y1(), 90) << "nothing in column 1: the row found before stands";
    EXPECT_EQ(v->lnKG()[1].y1(), 60);
    // The first pixel of the trace colour from the top wins, whatever drew it.
    v->picGraph().fillRect(1, 40, 1, 1, trace);
    v->picGraph().fillRect(1, 60, 1, 1, trace);
    v->KursorRefresh();
    EXPECT_EQ(v->lnKG()[0].y1(), 40);
}

TEST_F(ScopeCursors, RefreshAfterAZoomKeepsTheColumnsAndCountsTimeFromTheLeftEdge) {
    v->mnuCur();
    dragHandle(1, 298); // column 300: sample 600, -220 counts
    v->mnuZoomIn();
    drag(256, 511); // samples 512 .. 1022: all -220
    EXPECT_EQ(v->picKLeft()[1], 300);
    // KursorRefresh writes two decimals in Bits mode too, and no zoom start time.
    EXPECT_EQ(v->lblMarker1()[0].text, "V1 = -220.00 Bits ; t1 = 0.97 ms");
    EXPECT_EQ(v->lblMarker1()[1].text, "V2 = -220.00 Bits ; t2 = 291.83 ms");

    // A new scale keeps each cursor's time where it can: at twice the rate 1.95 ms is column
    // 2, and 585.94 ms is past the end, so that cursor goes to the middle.
    st.SampleRate = 2048;
    v->UpdateTime();
    EXPECT_EQ(v->picKLeft()[0], 2);
    EXPECT_EQ(v->picKLeft()[1], 256);
    EXPECT_EQ(v->lblK()[1].left, 256 + kGraphLeft - 6);
}

TEST(ScopeRate, PrefixesAndSigns) {
    auto r = rateReadout(1.5, 1.0, -3, "Volt", false); // 1500 V/s
    EXPECT_DOUBLE_EQ(r.number, 1.5);
    EXPECT_EQ(r.unit, " k Volt/sec.");
    r = rateReadout(-2.5, 1.0, -6, "Volt", false);
    EXPECT_DOUBLE_EQ(r.number, -2.5);
    EXPECT_EQ(r.unit, " M Volt/sec.");
    r = rateReadout(3, 1.0, -12, "Bits", true);
    EXPECT_DOUBLE_EQ(r.number, 3);
    EXPECT_EQ(r.unit, " T Bits/sec.");
    r = rateReadout(0.5, 1.2, -3, "Volt", false);
    EXPECT_DOUBLE_EQ(r.number, 416.7);
    EXPECT_EQ(r.unit, "Volt/sec.");
    r = rateReadout(-0.5, 1.2, -3, "Volt", false);
    EXPECT_DOUBLE_EQ(r.number, -416.7);
    r = rateReadout(0, 1.2, -3, "Volt", false);
    EXPECT_DOUBLE_EQ(r.number, 0);
    EXPECT_EQ(r.unit, "Volt/sec.");
    r = rateReadout(5, 0, -3, "Volt", false);
    EXPECT_EQ(r.unit, "");
}

TEST_F(Scope, MaxMinSkipsTheEndsAndStartsTheMaximumAtZero) {
    open();
    for (auto& s : st.TraceBuf)
        s = -100;
    st.TraceBuf[3] = 5000;
    st.TraceBuf[1021] = -5000;
    st.TraceBuf[500] = -300;
    v->MaxMin();
    EXPECT_FLOAT_EQ(v->MaxAmp(), 0);
    EXPECT_FLOAT_EQ(v->MinAmp(), -300);
    EXPECT_EQ(v->MinPos(), 500);

    st.TraceBuf[4] = 700;
    st.TraceBuf[1020] = -900;
    v->MaxMin();
    EXPECT_FLOAT_EQ(v->MaxAmp(), 700);
    EXPECT_EQ(v->MaxPos(), 4);
    EXPECT_FLOAT_EQ(v->MinAmp(), -900);
    EXPECT_EQ(v->MinPos(), 1020);
}

TEST_F(Scope, AmplitudeReadoutsLineUpAboveTheGraphInVolts) {
    st.ShowVertical = 1;
    st.Reference = 2;
    st.FullScalePos = 32767;
    st.ScaleBits = 32767;
    open();
    for (auto& s : st.TraceBuf)
        s = 0;
    st.TraceBuf[100] = 16383.5f;
    st.TraceBuf[200] = -32767;
    v->mnuMxA();
    v->mnuPP();
    EXPECT_TRUE(v->AnalysOn());
    EXPECT_TRUE(b.cmd.button(74).down);
    EXPECT_EQ(v->An()[0].text, "Max.Amp: 0.5 Volt");
    EXPECT_EQ(v->An()[2].text, "Peak_Peak: 1.5 Volt");
    EXPECT_FALSE(v->An()[1].visible);
    EXPECT_EQ(v->An()[0].left, v->graphRect().left());
    EXPECT_EQ(v->An()[2].left, v->An()[0].right() + 10);
    EXPECT_EQ(v->An()[0].bottom(), v->graphRect().top() - 5);

    v->mnuMa();
    EXPECT_EQ(v->An()[1].text, "Min.Amp: -1 Volt");
    for (auto m : {&OscopeView::mnuMxA, &OscopeView::mnuMa, &OscopeView::mnuPP})
        (v.get()->*m)();
    EXPECT_FALSE(v->AnalysOn());
    EXPECT_FALSE(v->An()[0].visible);
}
