// Drawing the trace in the O-scope, moving through the data with its scroll bar, the pointer
// cross with its read-out, the rubber-band zoom and its stack of levels, and flipping.
#include "engine/engine.h"
#include "platform/numeric.h"
#include "state/command_state.h"
#include "state/workbench.h"
#include "views/oscilloscope/oscope_view.h"
#include "views/other_views.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>

namespace kv::oscope {

namespace {

int rnd(double x) {
    return toInt32(x);
}

bool fitsInt16(double v) {
    return v >= std::numeric_limits<int16_t>::min() && v <= std::numeric_limits<int16_t>::max();
}

} // namespace

// ---- Sample step -------------------------------------------------------------------------------

void OscopeView::computeSampleStep() {
    const ProgramState& s = st();
    PixelsPerSample = GraphWidth / float(ViewSamples);
    if (GraphWidth <= float(s.Sp_Samples)) {
        // About one drawn point per pixel: every SampleStep-th sample, picked, not averaged.
        SampleStep = std::max(1, rnd(double(s.Sp_Samples) / GraphWidth));
        PixelsPerSample = f32(GraphWidth / (double(s.Sp_Samples) / SampleStep));
    } else {
        SampleStep = 1;
    }
    PointCapacity = toInt16(double(s.Sp_Samples) / SampleStep);
}

// ---- Draw ------------------------------------------------------------------------------------

void OscopeView::Draw() {
    const ProgramState& s = st();
    Surface& g = picGraph_;
    const QRgb back = colorFromIni(s.Time_BackColor);
    const QRgb line = colorFromIni(s.Time_LineColor);

    // Erase by drawing the old polyline again in the background colour: whatever else was
    // painted on the picture stays.
    if (TracePointCount > 1)
        g.polyline(TracePoints.data(), std::min(size_t(TracePointCount - 1), TracePoints.size()),
                   back);

    // The grid again, so the erase leaves no gaps in it; switched off it is painted out.
    const QRgb grid = s.ShowGrid == 1 ? colorFromIni(s.Time_GridColor) : back;
    const int gw = int(GraphWidth), gh = int(GraphHeight);
    for (int32_t x : VerticalLines)
        g.line(x, 0, x, gh, grid);
    for (int32_t y : HorizontalLines)
        g.line(0, y, gw, y, grid);

    HalfHeight = GraphHeight / 2;
    PixelsPerCount = HalfHeight / s.ScaleBits;
    auto point = [&](size_t i, int k) {
        const double v = double(s.TraceBuf[i]) * PixelsPerCount;
        const int y = s.Flipped ? rnd(v + ZeroLine) : rnd(ZeroLine - v);
        return QPoint(rnd(double(PixelsPerSample) * k), y);
    };

    if (!s.ZoomOn) {
        const double capacity = roundHalfEven(double(s.Sp_Samples) / SampleStep + 1);
        if (!fitsInt16(capacity) || capacity < 1) return; // an overflow ends the draw
        PointCapacity = int16_t(capacity);
        TracePoints.assign(size_t(PointCapacity), QPoint());
        TracePointCount = 1;
        // The loop stops at the last sample but one, which is the polyline's end point and so
        // not painted either.
        int k = 0;
        for (int32_t i = 0; i <= s.Sp_Samples - 2; i += SampleStep, ++k) {
            if (size_t(i) >= s.TraceBuf.size() || TracePointCount > PointCapacity) return;
            TracePoints[size_t(TracePointCount - 1)] = point(size_t(i), k);
            ++TracePointCount;
        }
    } else {
        const int32_t n = ZoomLast - ZoomFirst;
        if (n < 1 || !fitsInt16(n)) return;
        TracePoints.assign(size_t(n), QPoint());
        TracePointCount = 1;
        PixelsPerSample = GraphWidth / float(n);
        int k = 0;
        for (int32_t i = ZoomFirst; i <= ZoomLast - 1; ++i, ++k) {
            if (i < 0 || size_t(i) >= s.TraceBuf.size()) return;
            TracePoints[size_t(TracePointCount - 1)] = point(size_t(i), k);
            ++TracePointCount;
        }
    }
    g.polyline(TracePoints.data(), size_t(TracePointCount - 1), line);

    if (s.AnalysOn) {
        MaxMin();
        ProzessingAmp();
    }
    if (s.TimeRefOn) {
        if (s.TimeRef1On) g.polyline(TimeRef1Points, colorFromIni(s.Osc1Color));
        if (s.TimeRef2On) g.polyline(TimeRef2Points, colorFromIni(s.Osc2Color));
    }
}

// ---- Moving through the data --------------------------------------------------------------------

void OscopeView::ScrollNu() {
    ProgramState& s = st();
    const int value = HS.Value;
    const bool idle = s.Idle;
    // Moving forward again brings back a Peak-hold that a move back suspended.
    if (idle && value > s.TracePos && s.PeakHoldSuspended) s.ModeFFT = 3;
    s.TracePos = int16_t(value);
    const int64_t pos = int64_t(s.TraceStep) * s.TracePos * s.Sp_Samples * 4 + s.FirstTracePos;
    if (pos > std::numeric_limits<int32_t>::max()) return; // an overflow ends the routine
    s.CurrentTracePos = int32_t(pos);
    try {
        FyllSpData(s);
    } catch (const std::exception&) {
        return; // a failed read leaves the picture as it was
    }
    // The trace is read once, here; the other open views show it.
    if (idle) showTraceInOtherViews(wb_, ViewId::Oscope);
    Draw();
}

void OscopeView::HS_Change() {
    if (st().Idle) ScrollNu();
    if (st().KursorOn) KursorRefresh();
}

void OscopeView::setScrollValue(int value) {
    value = std::clamp(value, HS.Min, std::max(HS.Min, HS.Max));
    if (value == HS.Value) return;
    HS.Value = value;
    HS_Change();
}

void OscopeView::TimerDraw() {
    const ProgramState& s = st();
    if (s.TracePos == 0)
        setScrollValue(0);
    else if (s.TracePos > HS.Max)
        setScrollValue(HS.Max);
    else
        setScrollValue(s.TracePos);
    Draw();
}

// ---- Zoom stack
// -----------------------------------------------------------------------------------

void OscopeView::setMenuChecks(bool zoomIn, bool zoomOut, bool noZoom) {
    cmd().check("mnuZoomIn", zoomIn);
    cmd().check("mnuZoomOut", zoomOut);
    cmd().check("mnuNoZoom", noZoom);
    cmd().touch();
}

void OscopeView::zoomLabels() {
    ProgramState& s = st();
    const double span = double(ZoomTimeLast) - ZoomTimeFirst;
    for (int i = 0; i <= 10; ++i)
        setText(lblX[size_t(i)], formatPicture(f32(ZoomTimeFirst + i * span / 10), "##0.00"));
    setText(Label1, shortestText(throughPicture(f32(span / 10), "0.##")) + TimeUnit + "/" + "div");
    Label1.left = graphRect.left() + (graphRect.width() - Label1.width) / 2;
    TimeSpan = f32(span);
    s.TimeRangeText = lblX[10].text + " " + TimeUnit;
    cmd().timeRangeText = s.TimeRangeText;
    cmd().panel(5) = "Time Range: " + s.TimeRangeText;
    cmd().touch();
}

void OscopeView::restoreZoomRow(size_t row) {
    ZoomFirst = toInt32(Val(lstZoomStart[row]));
    ZoomLast = toInt32(Val(lstZoomEnd[row]));
    ViewSamples = ZoomLast - ZoomFirst;
    ZoomTimeFirst = f32(Val(lstX_start[row]));
    ZoomTimeLast = f32(Val(lstX_end[row]));
    st().ViewStartTime = ZoomTimeFirst;
    zoomLabels();
}

void OscopeView::mnuZoomIn() {
    ProgramState& s = st();
    s.ZoomOn = true;
    // A row for the whole trace; pressed again, the command adds another such row.
    lstZoomStart.push_back("0");
    lstZoomEnd.push_back(std::to_string(s.Sp_Samples - 1));
    lstX_start.push_back(shortestText(s.ViewStartTime));
    lstX_end.push_back(shortestText(Val(lblX[10].text)));
    imgZoomVisible = true;
    imgZoomPicture = "\\ico\\zoom_plus.ico";
    s.MouseDrawing = true;
    setMenuChecks(true, false, false);
    cmd().enable("mnuZoomOut");
}

void OscopeView::mnuZoomOut() {
    if (!st().ZoomOn) return;
    imgZoomPicture = "\\ico\\zoom_minus.ico";
    setMenuChecks(false, true, false);
    ZoomBack();
}

void OscopeView::ZoomBack() {
    ProgramState& s = st();
    if (zoomDepth() <= 1) {
        NoZoom();
        s.ZoomOn = false;
        CountTime();
        return;
    }
    const size_t r = zoomDepth() - 1;
    restoreZoomRow(r - 1);
    lstZoomStart.pop_back();
    lstZoomEnd.pop_back();
    lstX_start.pop_back();
    lstX_end.pop_back();
    PixelsPerSample = GraphWidth / float(ViewSamples);
    HalfHeight = GraphHeight / 2;
    PixelsPerCount = HalfHeight / s.ScaleBits;
    Draw();
    if (zoomDepth() == 1) {
        // Back at the whole trace. NoZoom restores it from the one row left (sample step and
        // all) before the stack is emptied, so that later draws are decimated as before the
        // zoom instead of spreading the whole trace at the zoom's pixel spacing.
        NoZoom();
        s.ZoomOn = false;
        lstZoomStart.clear();
        lstZoomEnd.clear();
        lstX_start.clear();
        lstX_end.clear();
        return; // NoZoom has refreshed the cursors
    }
    if (s.KursorOn) KursorRefresh();
}

void OscopeView::NoZoom() {
    ProgramState& s = st();
    if (zoomDepth() > 0) {
        restoreZoomRow(0);
        lstZoomStart.clear();
        lstZoomEnd.clear();
        lstX_start.clear();
        lstX_end.clear();
        ViewSamples = s.Sp_Samples;
        // The point array keeps the zoomed polyline until Draw has erased it with it, and is
        // made afresh there for PointCapacity points.
        computeSampleStep();
        GridLines();
        s.ZoomOn = false;
        Draw();
    }
    s.ZoomOn = false;
    imgZoomVisible = false;
    if (HS.Max >= 2) HS.Enabled = true;
    setMenuChecks(false, false, true);
    if (s.KursorOn) KursorRefresh();
}

void OscopeView::mnuFlip() {
    ProgramState& s = st();
    s.Flipped = !s.Flipped;
    cmd().check("mnuFlip", s.Flipped);
    cmd().button(72).down = s.Flipped;
    cmd().panel(9) = s.Flipped ? "Waveform flipped." : "";
    cmd().touch();
    Draw();
    if (s.KursorOn) Kursor();
}

// ---- Pointer
// ---------------------------------------------------------------------------------------

float OscopeView::pointerTimeFromLabel(int x) const {
    // The end of the view as the axis shows it: what the pointer says never contradicts the
    // label under it.
    const double end = Val(lblX[10].text);
    const float perPixel = f32((end - st().ViewStartTime) / GraphWidth);
    return f32(double(perPixel) * x + st().ViewStartTime);
}

float OscopeView::amplitudeAtRow(int row, float centre) const {
    if (float(row) > centre) return f32(-((row - double(centre)) * AmpPerPixel));
    if (float(row) < centre) return f32((double(centre) - row) * AmpPerPixel);
    return 0.0f;
}

void OscopeView::pointerTexts(int y) {
    // The time as the pointer stands, and the amplitude of its row on the rounded grid.
    setText(lblTime, formatPicture(PointerTime, "0.##"));
    setText(lblMyTm, lblTime.text + " " + TimeUnit);
    lblMyTm.left = graphRect.right() + 1 - lblMyTm.width;
    AmpPerPixel = f32(double(DivValue) / (HorizontalLines[1] - HorizontalLines[0]));
    PointerAmp = amplitudeAtRow(y, ZeroLine);
    setText(lblAmp, amplitudeText(PointerAmp, st().ShowVertical == 2));
    setText(lbldB, "Ampl: " + lblAmp.text + " " + lblText.text);
    lbldB.left = lblMyTm.left - 10 - lbldB.width;
}

void OscopeView::picGraph_MouseMove(int buttons, int x, int y) {
    ProgramState& s = st();
    if (x < 0 || y < 0 || x >= graphRect.width() || y >= graphRect.height()) return;
    pointerX = x;
    pointerY = y;
    GraphWidth = float(graphRect.width());
    TimePerPixel = f32((Val(lblX[10].text) - s.ViewStartTime) / GraphWidth);
    PointerTime = pointerTimeFromLabel(x);
    if (s.ZoomOn && (buttons & RightButton)) {
        if (x - shZoom.left() > 0) shZoom.setWidth(x - shZoom.left());
        ZoomGrabLast = rnd(double(ViewSamples) / GraphWidth * x);
        ZoomLast = std::min(ZoomFirst + ZoomGrabLast, s.Sp_Samples - 1);
        ZoomTimeLast = f32(throughPicture(PointerTime, "0.##"));
    }
    if (!s.MouseDrawing) return;
    lnPec_V = lnPec_G = true;
    pointerTexts(y);
}

void OscopeView::picGraph_MouseDown(int button, int x, int y) {
    ProgramState& s = st();
    pointerX = x;
    pointerY = y;
    if (button == RightButton && s.ZoomOn) {
        ZoomGrabFirst = rnd(double(ViewSamples) / GraphWidth * x);
        shZoom = QRect(x, 0, 0, graphRect.height());
        shZoomVisible = true;
    }
    if (button == LeftButton) {
        s.MouseDrawing = true;
        lnPec_V = lnPec_G = true;
    }
    if (s.ZoomOn) {
        PointerTime = pointerTimeFromLabel(x);
    } else {
        TimePerPixel = TimeSpan / GraphWidth;
        PointerTime = f32(double(TimePerPixel) * x + s.ViewStartTime);
    }
    pointerTexts(y);
    if (s.ZoomOn) ZoomTimeFirst = f32(throughPicture(PointerTime, "0.##"));
    lblMyTm.visible = lbldB.visible = true;
}

void OscopeView::picGraph_MouseUp(int button, int, int) {
    ProgramState& s = st();
    lbldB.visible = lblMyTm.visible = false;
    lnPec_V = lnPec_G = false;
    shZoomVisible = false;
    // A drag from right to left has ZoomGrabLast below ZoomGrabFirst and makes no zoom.
    if (s.ZoomOn && button == RightButton && ZoomGrabLast - ZoomGrabFirst >= 1) {
        ZoomFirst += ZoomGrabFirst;
        lstX_end.push_back(shortestText(ZoomTimeLast));
        lstX_start.push_back(shortestText(ZoomTimeFirst));
        lstZoomStart.push_back(std::to_string(ZoomFirst));
        lstZoomEnd.push_back(std::to_string(ZoomLast));
        s.ViewStartTime = ZoomTimeFirst;
        ViewSamples = ZoomLast - ZoomFirst;
        zoomLabels();
        Draw();
        if (s.KursorOn) KursorRefresh();
    }
    s.MouseDrawing = false;
    lblTime.visible = lblAmp.visible = false;
}

} // namespace kv::oscope
