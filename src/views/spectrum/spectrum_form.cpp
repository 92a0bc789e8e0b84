// The Spectrum view's scroll bar, playback timer and redraw chain.
#include "views/spectrum/spectrum_form.h"

#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "commands/transport.h"
#include "engine/engine.h"
#include "engine/metrics.h"
#include "state/workbench.h"
#include "views/other_views.h"

#include <QPainter>
#include <algorithm>

namespace kv::spectrum {

SpectrumFeed feedFrom(const ProgramState& st) {
    SpectrumFeed f;
    f.ColVal = st.ColVal;
    f.ColLogX = st.ColLogX;
    f.SpanCol = st.SpanCol;
    f.ColumnCount = st.ColumnCount;
    f.SpanBins = st.SpanBins;
    f.PeakDb = st.PeakDb;
    f.PeakFreq = st.PeakFreq;
    f.MaxFreq = st.MaxFreq;
    f.BinWidth = st.BinWidth;
    f.SpanLowFreq = st.SpanLowFreq;
    f.SpanHighFreq = st.SpanHighFreq;
    f.LevelDb = st.LevelValue;
    return f;
}

namespace {

/// The view is laid out for this data set and this plot; the fold's top level follows it.
void setLaidOut(ProgramState& st) {
    st.ViewLaidOut = true;
    UpdateTopDb(st);
}

} // namespace

void SpectrumForm::showPeak() {
    wb_.cmd.panel(6) = view_.peakStatus();
    wb_.cmd.touch();
}

void SpectrumForm::layOutIfNeeded(const SpectrumFeed& f) {
    if (wb_.st.ViewLaidOut) return;
    view_.Resized(wb_.st, f);
    setLaidOut(wb_.st);
}

void SpectrumForm::resizePlot(int w, int h) {
    if (w == view_.PlotW() && h == view_.PlotH()) return;
    view_.setPlotSize(w, h);
    ProgramState& st = wb_.st;
    if (st.TempPath.empty() || !st.SpectrumOpen) return;
    st.PlotColumns = view_.PlotColumns();
    // The fold depends on the plot's width: fold the trace on show again for the new one.
    const bool idle = st.Idle;
    FyllSpData(st);
    st.Idle = idle;
    view_.Resized(st, feedFrom(st));
    setLaidOut(st);
    view_.ReDrawMode2(st);
    showPeak();
}

void SpectrumForm::firstDraw() {
    ProgramState& st = wb_.st;
    HSMaxCh();
    HS_.Value = st.TracePos;
    st.PlotColumns = view_.PlotColumns();
    FyllSpData(st);
    view_.Resized(st, feedFrom(st));
    setLaidOut(st);
    showPeak();
}

void SpectrumForm::relayout() {
    if (wb_.st.TempPath.empty()) return;
    // A scale change can change what the engine leaves (dB or linear values): build the trace
    // on show again before laying out.
    const bool idle = wb_.st.Idle;
    FyllSpData(wb_.st);
    wb_.st.Idle = idle;
    // A re-read data set may have another trace count; the scroll bar keeps up with it.
    HS_.Max = std::max<int>(0, wb_.st.LastTrace);
    HS_.Value = std::clamp<int>(wb_.st.TracePos, HS_.Min, HS_.Max);
    view_.Resized(wb_.st, feedFrom(wb_.st));
    setLaidOut(wb_.st);
    showPeak();
}

void SpectrumForm::HSMaxCh() {
    ProgramState& st = wb_.st;
    BigFile(st);
    HS_.Min = 0;
    HS_.Max = std::max<int>(0, st.LastTrace);
    if (st.ModeFFT == 4) HS_.Value = 0;
}

void SpectrumForm::HS_Change(int value) {
    HS_.Value = std::clamp(value, HS_.Min, HS_.Max);
    if (wb_.st.Idle) ScrollNu();
    view_.ShowMax(wb_.st, feedFrom(wb_.st));
    showPeak();
}

void SpectrumForm::ScrollNu() {
    ProgramState& st = wb_.st;
    if (!st.Idle) return;
    peakHoldOnMove(st, HS_.Value);
    waterfallFollowsScroll(wb_, HS_.Value);
    st.TracePos = static_cast<int16_t>(HS_.Value);
    setCurrentTracePos(st);
    FyllSpData(st);
    if (st.AnalysOnFFT) NewValue(st, st.An);
    // The other views follow without turning round to scroll this one.
    st.Idle = false;
    const ViewId waterfall = st.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
    if (viewFlag(st, waterfall)) wb_.views.traceChanged(wb_, waterfall);
    if (st.PhaseOpen) wb_.views.traceChanged(wb_, ViewId::Phase);
    if (st.OscOpen) wb_.views.traceChanged(wb_, ViewId::Oscope);
    st.Idle = true;
    const SpectrumFeed f = feedFrom(st);
    layOutIfNeeded(f);
    view_.Draw_s(st, f);
}

void SpectrumForm::DrawTimer() {
    ProgramState& st = wb_.st;
    st.TracePos = static_cast<int16_t>(std::clamp<int>(st.TracePos, HS_.Min, HS_.Max));
    HS_.Value = st.TracePos;
    const SpectrumFeed f = feedFrom(st);
    layOutIfNeeded(f);
    view_.Draw_s(st, f);
    view_.ShowMax(st, f);
    showPeak();
}

void SpectrumForm::LastPart() {
    HS_Change(HS_.Max);
}

bool tmrFFT_Tick(const ProgramState& st, ScrollBar& hs, PlayTimer& timer) {
    if (st.PlayPause) timer = PlayTimer{};
    if (!st.PlayFwd && !st.PlayRew) return false;
    timer.Running = true;
    const bool atEnd = st.PlayFwd ? hs.Value >= hs.Max : hs.Value <= hs.Min;
    if (atEnd) {
        timer = PlayTimer{};
        return false;
    }
    hs.Value += st.PlayFwd ? 1 : -1;
    return true;
}

void SpectrumForm::tmrFFT_Timer() {
    if (tmrFFT_Tick(wb_.st, HS_, tmrFFT_)) HS_Change(HS_.Value);
}

void SpectrumForm::finalDraw() {
    ProgramState& st = wb_.st;
    // The playback loops do not count the read-outs trace by trace; they catch up here, on the
    // trace the loop stopped at.
    if (st.AnalysOnFFT) NewValue(st, st.An);
    const SpectrumFeed f = feedFrom(st);
    if (st.ModeFFT != 2) view_.Draw_s(st, f);
    view_.ShowMax(st, f);
    showPeak();
}

void SpectrumForm::clearPicture() {
    view_.Cls(wb_.st);
}

// ---- In a window ----------------------------------------------------------------------------

void SpectrumForm::load(int w, int h) {
    const ProgramState& st = wb_.st;
    HS_.Min = 0;
    HS_.Max = std::max<int>(0, st.LastTrace);
    HS_.Value = std::clamp<int>(st.TracePos, HS_.Min, HS_.Max);
    resize(w, h);
}

void SpectrumForm::resize(int w, int h) {
    window_ = QSize(std::max(w, 1), std::max(h, kScrollHeight + 1));
    HS_.rect = QRect(0, window_.height() - kScrollHeight, window_.width(), kScrollHeight);
    const QSize plot = plotSizeFor({window_.width(), window_.height() - kScrollHeight});
    resizePlot(plot.width(), plot.height());
}

void SpectrumForm::unload() {
    switchMetricsOff(wb_);
}

QImage SpectrumForm::picture() const {
    QImage plot(window_.width(), window_.height() - kScrollHeight, QImage::Format_RGB32);
    {
        QPainter p(&plot);
        paintSpectrumView(p, view_, wb_.st);
    }
    QImage img(window_, QImage::Format_RGB32);
    img.fill(kFormBackColor);
    QPainter p(&img);
    p.drawImage(0, 0, plot);
    paintScrollBar(p, HS_);
    return img;
}

QPointF SpectrumForm::onPlot(int x, int y) const {
    const PlotMargins m;
    return {double(x - m.left), double(y - m.top)};
}

void SpectrumForm::mousePress(int button, int x, int y) {
    if (wb_.st.TempPath.empty()) return;
    const QPointF p = onPlot(x, y);
    view_.MouseDown(wb_.st, feedFrom(wb_.st), button, float(p.x()), float(p.y()));
}

void SpectrumForm::mouseMove(int buttons, int x, int y) {
    if (wb_.st.TempPath.empty()) return;
    // The cross follows the left button; with several held, the left one counts.
    const int button = buttons & LeftButton    ? LeftButton
                       : buttons & RightButton ? RightButton
                                               : buttons & MiddleButton;
    const QPointF p = onPlot(x, y);
    view_.MouseMove(wb_.st, feedFrom(wb_.st), button, float(p.x()), float(p.y()));
}

void SpectrumForm::mouseRelease(int, int, int) {
    if (wb_.st.TempPath.empty()) return;
    view_.MouseUp();
}

} // namespace kv::spectrum
