// Drawing the trace in the O-scope, moving through the data with its scroll bar, the pointer
// cross with its read-out, the rubber-band zoom and its stack of levels, and flipping.
#include "engine/engine.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "state/command_state.h"
#include "state/workbench.h"
#include "views/line_math.h"
#include "views/oscilloscope/oscope_view.h"
#include "views/other_views.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <utility>

namespace kv::oscope {

namespace {

int rnd(double x) {
    return line::roundCoord(x);
}

bool fitsInt16(double v) {
    return v >= std::numeric_limits<int16_t>::min() && v <= std::numeric_limits<int16_t>::max();
}

} // namespace

// ---- Sample step -------------------------------------------------------------------------------

SampleStepChoice chooseSampleStep(float graphWidth, int32_t viewSamples, int32_t Sp_Samples) {
    SampleStepChoice c;
    c.PixelsPerSample = graphWidth / float(viewSamples);
    if (graphWidth <= float(Sp_Samples)) {
        // About one drawn point per pixel: every SampleStep-th sample, picked, not averaged.
        c.SampleStep = std::max(1, rnd(double(Sp_Samples) / graphWidth));
        c.PixelsPerSample = f32(graphWidth / (double(Sp_Samples) / c.SampleStep));
    } else {
        c.SampleStep = 1;
    }
    c.PointCapacity = toInt16(double(Sp_Samples) / c.SampleStep);
    return c;
}

void OscopeView::computeSampleStep() {
    const SampleStepChoice c = chooseSampleStep(GraphWidth_, ViewSamples_, st().Sp_Samples);
    SampleStep_ = c.SampleStep;
    PixelsPerSample_ = c.PixelsPerSample;
    PointCapacity_ = c.PointCapacity;
}

// ---- Draw ------------------------------------------------------------------------------------

void OscopeView::Draw() {
    const ProgramState& s = st();
    Surface& g = picGraph_;
    const QRgb back = colorFromIni(s.Time_BackColor);
    const QRgb line = colorFromIni(s.Time_LineColor);

    // The grid goes over the erased trace, so the erase leaves no gaps in it; switched off it is
    // painted out.
    CurveScene scene;
    scene.back = back;
    scene.line = line;
    scene.grid = s.ShowGrid == 1 ? colorFromIni(s.Time_GridColor) : back;
    const int gw = int(GraphWidth_), gh = int(GraphHeight_);
    for (int32_t x : VerticalLines_)
        scene.gridLines.emplace_back(x, 0, x, gh);
    for (int32_t y : HorizontalLines_)
        scene.gridLines.emplace_back(0, y, gw, y);
    // Zoomed in, the references are laid out afresh after the trace, so what they cover is not
    // known beforehand.
    scene.repeatable = !(s.TimeRefOn && ZoomOn_);
    if (s.TimeRefOn && !ZoomOn_) {
        if (s.TimeRef1On) scene.overlays.emplace_back(TimeRef1Points_, colorFromIni(s.Osc1Color));
        if (s.TimeRef2On) scene.overlays.emplace_back(TimeRef2Points_, colorFromIni(s.Osc2Color));
    }

    // Erase by drawing the old polyline again in the background colour: whatever else was
    // painted on the picture stays. When the picture holds just what the last draw left, only
    // the pixels that change are written, after the new trace is known.
    const size_t erasing =
        TracePointCount_ > 1 ? std::min(size_t(TracePointCount_ - 1), TracePoints_.size()) : 0;
    bool quick = repaint_.ready(g, scene, TracePoints_.data(), erasing);
    const auto eraseAndGrid = [&](const QPoint* old, size_t n) {
        if (n > 0) g.polyline(old, n, back);
        g.lines(scene.gridLines.data(), scene.gridLines.size(), scene.grid);
    };
    if (!quick) eraseAndGrid(TracePoints_.data(), erasing);
    // A draw that ends early has erased and painted the grid all the same.
    const auto stop = [&] {
        if (quick) eraseAndGrid(repaint_.drawn().data(), repaint_.drawn().size());
        repaint_.forget();
    };

    HalfHeight_ = GraphHeight_ / 2;
    PixelsPerCount_ = HalfHeight_ / s.ScaleBits;
    // The scales are read into locals once: the loops below store points, which the compiler
    // could otherwise not tell apart from the members.
    const double perCount = PixelsPerCount_, zero = ZeroLine_;
    const bool flipped = s.Flipped;
    const float* trace = s.TraceBuf.data();
    const size_t traceSize = s.TraceBuf.size();
    const auto point = [&](size_t i, double perSample, int k) {
        const double v = double(trace[i]) * perCount;
        const int y = flipped ? rnd(v + zero) : rnd(zero - v);
        return QPoint(rnd(perSample * k), y);
    };

    if (!ZoomOn_) {
        const double capacity = roundHalfEven(double(s.Sp_Samples) / SampleStep_ + 1);
        if (!fitsInt16(capacity) || capacity < 1) return stop(); // an overflow ends the draw
        PointCapacity_ = int16_t(capacity);
        TracePoints_.assign(size_t(PointCapacity_), QPoint());
        QPoint* out = TracePoints_.data();
        const int16_t cap = PointCapacity_;
        const int32_t step = SampleStep_, samples = s.Sp_Samples;
        const double perSample = PixelsPerSample_;
        int16_t count = 1;
        // The loop stops at the last sample but one, which is the polyline's end point and so
        // not painted either.
        int k = 0;
        for (int32_t i = 0; i <= samples - 2; i += step, ++k) {
            if (size_t(i) >= traceSize || count > cap) {
                TracePointCount_ = count;
                return stop();
            }
            out[count - 1] = point(size_t(i), perSample, k);
            ++count;
        }
        TracePointCount_ = count;
    } else {
        const int32_t n = ZoomLast_ - ZoomFirst_;
        if (n < 1 || !fitsInt16(n)) return stop();
        TracePoints_.assign(size_t(n), QPoint());
        TracePointCount_ = 1;
        PixelsPerSample_ = GraphWidth_ / float(n);
        int k = 0;
        for (int32_t i = ZoomFirst_; i <= ZoomLast_ - 1; ++i, ++k) {
            if (i < 0 || size_t(i) >= traceSize) return stop();
            TracePoints_[size_t(TracePointCount_ - 1)] = point(size_t(i), PixelsPerSample_, k);
            ++TracePointCount_;
        }
    }
    const size_t drawing = size_t(TracePointCount_ - 1);
    if (quick && !repaint_.repaint(g, TracePoints_.data(), drawing)) {
        eraseAndGrid(repaint_.drawn().data(), repaint_.drawn().size());
        quick = false;
    }
    if (!quick) g.polyline(TracePoints_.data(), drawing, line);

    if (AnalysOn_) {
        MaxMin();
        ProzessingAmp();
    }
    if (s.TimeRefOn) {
        // Zoomed in, the references show the same stretch of time as the trace.
        if (ZoomOn_) Ref_Zoom_Flip();
        const auto& r1 = ZoomOn_ ? ZoomRef1Points_ : TimeRef1Points_;
        const auto& r2 = ZoomOn_ ? ZoomRef2Points_ : TimeRef2Points_;
        if (s.TimeRef1On) g.polyline(r1, colorFromIni(s.Osc1Color));
        if (s.TimeRef2On) g.polyline(r2, colorFromIni(s.Osc2Color));
    }
    repaint_.remember(g, std::move(scene), TracePoints_.data(), drawing);
}

void OscopeView::Ref_Zoom_Flip() {
    const ProgramState& s = st();
    if (!(s.SampleRate > 0)) return;
    const double RefZoomStart = ZoomFirst_ / s.SampleRate, RefZoomEnd = ZoomLast_ / s.SampleRate;
    const auto lay = [&](bool on, int16_t samples, double span, float half,
                         const std::vector<float>& data, std::vector<QPoint>& pts) {
        if (!on || !(span > 0) || half == 0 || samples < 1) return;
        const double first = roundHalfEven(samples * RefZoomStart / span);
        if (first >= samples) return; // the line is left as it was
        const double t = samples * RefZoomEnd / span;
        const double last = t - std::floor(t) < 0.5 ? std::floor(t) : std::floor(t) + 1;
        const double count = last - first;
        if (!(count >= 1 && count <= 1e7)) return;
        const double step = GraphWidth_ / count;
        const double scale = (GraphHeight_ / 2.0) / half;
        pts.clear();
        // The references are always drawn the right way up, flipped trace or not.
        for (int64_t i = int64_t(first); i <= int64_t(last); ++i) {
            const bool stored = i >= 0 && i < samples && size_t(i) < data.size();
            const double y = stored ? ZeroLine_ - scale * data[size_t(i)] : ZeroLine_;
            pts.emplace_back(toInt32(std::clamp(step * double(i - int64_t(first)), -1e6, 1e6)),
                             toInt32(std::clamp(y, -1e6, 1e6)));
        }
    };
    lay(s.TimeRef1On, s.TimeRef1Samples, s.TimeRef1Span, TimeRefHalfScale_[0], s.TimeRef1Data,
        ZoomRef1Points_);
    lay(s.TimeRef2On, s.TimeRef2Samples, s.TimeRef2Span, TimeRefHalfScale_[1], s.TimeRef2Data,
        ZoomRef2Points_);
}

void OscopeView::setReferencePoints(std::vector<QPoint> ref1, std::vector<QPoint> ref2) {
    TimeRef1Points_ = std::move(ref1);
    TimeRef2Points_ = std::move(ref2);
}

void OscopeView::CreateRef() {
    ProgramState& s = st();
    const bool Rescaled = s.ScaleBits != s.FullScalePos;
    struct RefLine {
        bool& on;
        int16_t samples;
        const std::vector<float>& data;
        float scale;
        double span;
        std::vector<QPoint>& points;
    };
    RefLine lines[] = {
        {s.TimeRef1On, s.TimeRef1Samples, s.TimeRef1Data, s.TimeRef1Scale, s.TimeRef1Span,
         TimeRef1Points_},
        {s.TimeRef2On, s.TimeRef2Samples, s.TimeRef2Data, s.TimeRef2Scale, s.TimeRef2Span,
         TimeRef2Points_},
    };
    for (RefLine& r : lines) {
        r.points.clear();
        if (!r.on) continue;
        float& half = TimeRefHalfScale_[&r == &lines[0] ? 0 : 1];
        half = r.scale;
        if (Rescaled)
            half = s.ShowVertical == 2 ? float(s.ScaleBitsInt)
                                       : f32(double(s.ScaleVolt) * r.scale / s.Reference);
        const double fit = r.span > 0 ? roundHalfEven(r.samples * s.ViewTimeSpan / r.span) : 0;
        if (!(fit > 2 && half != 0 && std::isfinite(half))) {
            wb_.host.message("Reference file does not exist or is invalid", kMessageTitle,
                             MsgIcon::Information);
            r.on = false;
            continue;
        }
        const double step = GraphWidth_ / fit;
        const double scale = (GraphHeight_ / 2.0) / half;
        // A reference that ends before the view does lies on the zero line from its end on.
        const bool endsEarly = fit >= r.samples;
        const int32_t highest = endsEarly ? r.samples - 1 : s.Sp_Samples - 1;
        const int32_t count = std::max(highest + 1, endsEarly ? s.Sp_Samples + 1 : 0);
        r.points.reserve(size_t(std::max(count, 0)));
        for (int32_t i = 0; i < count; ++i) {
            const bool stored = i <= highest && size_t(i) < r.data.size() && i < r.samples;
            const double y = stored ? ZeroLine_ - scale * r.data[size_t(i)] : ZeroLine_;
            r.points.emplace_back(toInt32(std::clamp(step * i, -1e6, 1e6)),
                                  toInt32(std::clamp(y, -1e6, 1e6)));
        }
    }
    s.TimeRefOn = s.TimeRef1On || s.TimeRef2On;
    cmd().check("mnuRefO", s.TimeRefOn);
    cmd().touch();
    GridLines();
    Draw();
}

// ---- Moving through the data --------------------------------------------------------------------

void OscopeView::ScrollNu() {
    ProgramState& s = st();
    const int value = HS_.Value;
    const bool idle = s.Idle;
    // Moving forward again brings back a Peak-hold that a move back suspended.
    if (idle && value > s.TracePos && s.PeakHoldSuspended) s.ModeFFT = 3;
    if (idle) waterfallFollowsScroll(wb_, value);
    s.TracePos = int16_t(value);
    s.CurrentTracePos = int64_t(s.TraceStep) * s.TracePos * s.Sp_Samples * 4 + s.FirstTracePos;
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
    if (KursorOn_) KursorRefresh();
}

void OscopeView::TimerDraw() {
    const ProgramState& s = st();
    if (s.TracePos == 0)
        scrolled(0);
    else if (s.TracePos > HS_.Max)
        scrolled(HS_.Max);
    else
        scrolled(s.TracePos);
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
    const double span = double(ZoomTimeLast_) - ZoomTimeFirst_;
    for (int i = 0; i <= 10; ++i)
        setText(lblX_[size_t(i)], formatPicture(f32(ZoomTimeFirst_ + i * span / 10), "##0.00"));
    setText(Label1_,
            shortestText(throughPicture(f32(span / 10), "0.##")) + TimeUnit_ + "/" + "div");
    Label1_.left = graphRect_.left() + (graphRect_.width() - Label1_.width) / 2;
    TimeSpan_ = f32(span);
    TimeRangeText_ = lblX_[10].text + " " + TimeUnit_;
    cmd().timeRangeText = TimeRangeText_;
    cmd().panel(5) = "Time Range: " + TimeRangeText_;
    cmd().touch();
}

void OscopeView::restoreZoomRow(size_t row) {
    ZoomFirst_ = toInt32(Val(lstZoomStart_[row]));
    ZoomLast_ = toInt32(Val(lstZoomEnd_[row]));
    ViewSamples_ = ZoomLast_ - ZoomFirst_;
    ZoomTimeFirst_ = f32(Val(lstX_start_[row]));
    ZoomTimeLast_ = f32(Val(lstX_end_[row]));
    ViewStartTime_ = ZoomTimeFirst_;
    zoomLabels();
}

void OscopeView::mnuZoomIn() {
    ProgramState& s = st();
    ZoomOn_ = true;
    // A row for the whole trace; pressed again, the command adds another such row.
    lstZoomStart_.push_back("0");
    lstZoomEnd_.push_back(std::to_string(s.Sp_Samples - 1));
    lstX_start_.push_back(shortestText(ViewStartTime_));
    lstX_end_.push_back(shortestText(Val(lblX_[10].text)));
    imgZoomVisible_ = true;
    imgZoomPicture_ = "\\ico\\zoom_plus.ico";
    MouseDrawing_ = true;
    setMenuChecks(true, false, false);
    cmd().enable("mnuZoomOut");
}

void OscopeView::mnuZoomOut() {
    if (!ZoomOn_) return;
    imgZoomPicture_ = "\\ico\\zoom_minus.ico";
    setMenuChecks(false, true, false);
    ZoomBack();
}

void OscopeView::ZoomBack() {
    ProgramState& s = st();
    if (zoomDepth() <= 1) {
        NoZoom();
        ZoomOn_ = false;
        CountTime();
        return;
    }
    const size_t r = zoomDepth() - 1;
    restoreZoomRow(r - 1);
    lstZoomStart_.pop_back();
    lstZoomEnd_.pop_back();
    lstX_start_.pop_back();
    lstX_end_.pop_back();
    PixelsPerSample_ = GraphWidth_ / float(ViewSamples_);
    HalfHeight_ = GraphHeight_ / 2;
    PixelsPerCount_ = HalfHeight_ / s.ScaleBits;
    Draw();
    if (zoomDepth() == 1) {
        // Back at the whole trace. NoZoom restores it from the one row left (sample step and
        // all) before the stack is emptied, so that later draws are decimated as before the
        // zoom instead of spreading the whole trace at the zoom's pixel spacing.
        NoZoom();
        ZoomOn_ = false;
        lstZoomStart_.clear();
        lstZoomEnd_.clear();
        lstX_start_.clear();
        lstX_end_.clear();
        return; // NoZoom has refreshed the cursors
    }
    if (KursorOn_) KursorRefresh();
}

void OscopeView::NoZoom() {
    ProgramState& s = st();
    if (zoomDepth() > 0) {
        restoreZoomRow(0);
        lstZoomStart_.clear();
        lstZoomEnd_.clear();
        lstX_start_.clear();
        lstX_end_.clear();
        ViewSamples_ = s.Sp_Samples;
        // The point array keeps the zoomed polyline until Draw has erased it with it, and is
        // made afresh there for PointCapacity_ points.
        computeSampleStep();
        GridLines();
        ZoomOn_ = false;
        Draw();
    }
    ZoomOn_ = false;
    imgZoomVisible_ = false;
    if (HS_.Max >= 2) HS_.Enabled = true;
    setMenuChecks(false, false, true);
    if (KursorOn_) KursorRefresh();
}

void OscopeView::mnuFlip() {
    ProgramState& s = st();
    s.Flipped = !s.Flipped;
    cmd().check("mnuFlip", s.Flipped);
    cmd().button(72).down = s.Flipped;
    cmd().panel(9) = s.Flipped ? "Waveform flipped." : "";
    cmd().touch();
    Draw();
    if (KursorOn_) Kursor();
}

// ---- Pointer
// ---------------------------------------------------------------------------------------

float OscopeView::pointerTimeFromLabel(int x) const {
    // The end of the view as the axis shows it: what the pointer says never contradicts the
    // label under it.
    const double end = Val(lblX_[10].text);
    const float perPixel = f32((end - ViewStartTime_) / GraphWidth_);
    return f32(double(perPixel) * x + ViewStartTime_);
}

float OscopeView::amplitudeAtRow(int row, float centre) const {
    if (float(row) > centre) return f32(-((row - double(centre)) * AmpPerPixel_));
    if (float(row) < centre) return f32((double(centre) - row) * AmpPerPixel_);
    return 0.0f;
}

void OscopeView::pointerTexts(int y) {
    // The time as the pointer stands, and the amplitude of its row on the rounded grid.
    setText(lblTime_, formatPicture(PointerTime_, "0.##"));
    setText(lblMyTm_, lblTime_.text + " " + TimeUnit_);
    lblMyTm_.left = graphRect_.right() + 1 - lblMyTm_.width;
    AmpPerPixel_ = f32(double(DivValue_) / (HorizontalLines_[1] - HorizontalLines_[0]));
    PointerAmp_ = amplitudeAtRow(y, ZeroLine_);
    setText(lblAmp_, amplitudeText(PointerAmp_, st().ShowVertical == 2));
    setText(lbldB_, "Ampl: " + lblAmp_.text + " " + lblText_.text);
    lbldB_.left = lblMyTm_.left - 10 - lbldB_.width;
}

void OscopeView::picGraph_MouseMove(int buttons, int x, int y) {
    ProgramState& s = st();
    if (x < 0 || y < 0 || x >= graphRect_.width() || y >= graphRect_.height()) return;
    pointerX_ = x;
    pointerY_ = y;
    GraphWidth_ = float(graphRect_.width());
    TimePerPixel_ = f32((Val(lblX_[10].text) - ViewStartTime_) / GraphWidth_);
    PointerTime_ = pointerTimeFromLabel(x);
    if (ZoomOn_ && (buttons & RightButton)) {
        if (x - shZoom_.left() > 0) shZoom_.setWidth(x - shZoom_.left());
        ZoomGrabLast_ = rnd(double(ViewSamples_) / GraphWidth_ * x);
        ZoomLast_ = std::min(ZoomFirst_ + ZoomGrabLast_, s.Sp_Samples - 1);
        ZoomTimeLast_ = f32(throughPicture(PointerTime_, "0.##"));
    }
    if (!MouseDrawing_) return;
    lnPec_V_ = lnPec_G_ = true;
    pointerTexts(y);
}

void OscopeView::picGraph_MouseDown(int button, int x, int y) {
    pointerX_ = x;
    pointerY_ = y;
    if (button == RightButton && ZoomOn_) {
        ZoomGrabFirst_ = rnd(double(ViewSamples_) / GraphWidth_ * x);
        shZoom_ = QRect(x, 0, 0, graphRect_.height());
        shZoomVisible_ = true;
    }
    if (button == LeftButton) {
        MouseDrawing_ = true;
        lnPec_V_ = lnPec_G_ = true;
    }
    if (ZoomOn_) {
        PointerTime_ = pointerTimeFromLabel(x);
    } else {
        TimePerPixel_ = TimeSpan_ / GraphWidth_;
        PointerTime_ = f32(double(TimePerPixel_) * x + ViewStartTime_);
    }
    pointerTexts(y);
    if (ZoomOn_) ZoomTimeFirst_ = f32(throughPicture(PointerTime_, "0.##"));
    lblMyTm_.visible = lbldB_.visible = true;
}

void OscopeView::picGraph_MouseUp(int button, int, int) {
    lbldB_.visible = lblMyTm_.visible = false;
    lnPec_V_ = lnPec_G_ = false;
    shZoomVisible_ = false;
    // A drag from right to left has ZoomGrabLast_ below ZoomGrabFirst_ and makes no zoom.
    if (ZoomOn_ && button == RightButton && ZoomGrabLast_ - ZoomGrabFirst_ >= 1) {
        ZoomFirst_ += ZoomGrabFirst_;
        lstX_end_.push_back(shortestText(ZoomTimeLast_));
        lstX_start_.push_back(shortestText(ZoomTimeFirst_));
        lstZoomStart_.push_back(std::to_string(ZoomFirst_));
        lstZoomEnd_.push_back(std::to_string(ZoomLast_));
        ViewStartTime_ = ZoomTimeFirst_;
        ViewSamples_ = ZoomLast_ - ZoomFirst_;
        zoomLabels();
        Draw();
        if (KursorOn_) KursorRefresh();
    }
    MouseDrawing_ = false;
    lblTime_.visible = lblAmp_.visible = false;
}

} // namespace kv::oscope
