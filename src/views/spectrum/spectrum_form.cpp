// The Spectrum view's scroll bar, playback timer and redraw chain.
#include "views/spectrum/spectrum_form.h"

#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "commands/transport.h"
#include "engine/engine.h"
#include "engine/metrics.h"
#include "platform/numeric.h"
#include "references/spectrum_refs.h"
#include "state/workbench.h"
#include "views/other_views.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

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
    // The options dialog's waterfall zoom ("1:1" to "1:8") narrows the frequency labels too.
    f.SpanFactor = st.WaterfallZoom > 0 ? st.WaterfallZoom : 1;
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

void SpectrumForm::prepareReferences() {
    ProgramState& st = wb_.st;
    if (!st.RefShown || st.TempPath.empty()) return;
    // The curves in the plot's present unit and band, folded for the plot's present width. The
    // fold leaves its own bins-per-column behind; the live one is put back.
    activateShownReferences(st);
    const int32_t live = st.BinsPerColumn;
    SamToWidth_Ref(st);
    st.BinsPerColumn = live;
}

void SpectrumForm::layOutIfNeeded(const SpectrumFeed& f) {
    if (wb_.st.ViewLaidOut) return;
    prepareReferences();
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
    prepareReferences();
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
    prepareReferences();
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
    prepareReferences();
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
    const PlotMargins m;
    const QColor contrast(colorFromIni(wb_.st.FFT_BackColor) ^ 0x00FFFFFFu);
    paintMarkers(p, markers_, wb_.st.MarkerCount, QPoint(m.left, m.top), contrast);
    if (!wb_.st.TempPath.empty()) {
        // Clipped to the plot: a cross at its edge does not run into the labels.
        p.setClipRect(textArea());
        DrawBredMarks(p, view_.BredMarks(wb_.st, feedFrom(wb_.st)), QPoint(m.left, m.top),
                      contrast);
        p.setClipping(false);
    }
    paintScrollBar(p, HS_);
    return img;
}

QSize SpectrumForm::minimumSize() const {
    return spectrumMinimumSize(view_, wb_.st);
}

std::vector<Label> SpectrumForm::visibleLabels() const {
    SpectrumTexts t =
        spectrumTexts(view_, wb_.st, {window_.width(), window_.height() - kScrollHeight});
    // As paintSpectrumView paints them: in the painter's own font, black on the form round the
    // plot, the level's label in red, the pointer's read-outs on their pale patches.
    std::vector<Label> all;
    auto add = [&](const std::vector<Label>& from, QRgb back, QRgb color) {
        for (const Label& l : from) {
            all.push_back(onBackground(l, back, color));
            all.back().family.clear();
        }
    };
    add(t.black, kFormBackColor, qRgb(0, 0, 0));
    add(t.level, kFormBackColor, qRgb(255, 0, 0));
    add(t.pointer, qRgb(255, 255, 225), qRgb(0, 0, 0));
    all.push_back(onBackground(t.caption, kFormBackColor));
    std::erase_if(all, [](const Label& l) { return l.text.empty(); });
    return all;
}

QRect SpectrumForm::textArea() const {
    const PlotMargins m;
    return QRect(m.left, m.top, std::max(view_.PlotW(), 1), std::max(view_.PlotH(), 1));
}

QPointF SpectrumForm::onPlot(int x, int y) const {
    const PlotMargins m;
    return {double(x - m.left), double(y - m.top)};
}

void SpectrumForm::mousePress(int button, int x, int y) {
    ProgramState& st = wb_.st;
    if (st.TempPath.empty()) return;
    const QPointF p = onPlot(x, y);
    if (markers_.MarkersActive && button == RightButton) {
        wb_.cmd.enable("mnMM", st.MarkerCount < kMaxMarkers);
        wb_.cmd.touch();
    }
    view_.MouseDown(st, feedFrom(st), button, float(p.x()), float(p.y()));
    if (button != LeftButton || !st.MarkerMode || st.MarkerCount >= kMaxMarkers) return;
    // A press places the current marker; the scroll bar rests until the mode ends.
    HS_.Enabled = false;
    if (markerAt(float(p.x()), float(p.y()))) {
        ++st.MarkerCount;
        markers_.currentShown = false;
        if (markers_.MarkerTableOn) dlgMarkers::UpdateList(st, markers_, markerTable_);
    }
}

bool SpectrumForm::markerAt(float x, float y) {
    ProgramState& st = wb_.st;
    const int col = int(std::lround(x));
    const int row = view_.TraceRowAt(st, col);
    if (row == 0) return false;
    const auto t = view_.ReadoutAt(st, feedFrom(st), x, y, true, row);
    if (!t) return false;
    MarkerRecord& r = markers_.records[size_t(st.MarkerCount + 1)];
    r.x = col;
    r.row = row;
    r.lblSmH = t->lblTime;
    r.lblSmB = shortestText(float(Val(t->lbldB)));
    r.Label1 = std::to_string(st.MarkerCount + 1);
    markers_.currentShown = true;
    return true;
}

void SpectrumForm::markerRowClicked(int row) {
    dlgMarkers::ListView_Click(markers_, markerTable_, row);
}

void SpectrumForm::command(const std::string& name) {
    ProgramState& st = wb_.st;
    if (name == "MarkerModeOn") {
        markers_.clear();
        st.MarkerCount = 0;
        markers_.MarkersActive = true;
        markers_.MarkerTableOn = true;
        view_.setMarkersActive(true);
        dlgMarkers::LoadList(st, view_.FreqUnit(), markerTable_);
    } else if (name == "ExitMarkerModue") {
        markers_.currentShown = false;
        markers_.MarkerShown = st.MarkerCount;
        HS_.Enabled = HS_.Max >= 1;
    } else if (name == "NoMarkers") {
        markers_ = MarkerSet{};
        markerTable_.rows.clear();
        view_.setMarkersActive(false);
        HS_.Enabled = true;
    }
}

void SpectrumForm::mouseMove(int buttons, int x, int y) {
    ProgramState& st = wb_.st;
    if (st.TempPath.empty()) return;
    if (st.MarkerMode) {
        // The 21st marker is never placed: the next move ends the mode, silently.
        if (st.MarkerCount >= kMaxMarkers) {
            st.MarkerMode = false;
            markers_.currentShown = false;
            HS_.Enabled = HS_.Max >= 1;
            return;
        }
        const QPointF p = onPlot(x, y);
        view_.MouseMove(st, feedFrom(st), LeftButton, float(p.x()), float(p.y()));
        if (!markerAt(float(p.x()), float(p.y()))) markers_.currentShown = false;
        return;
    }
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
