// The Spectrum view's scroll bar, playback timer and redraw chain.
#include "views/spectrum/spectrum_form.h"

#include "core/lifecycle.h"
#include "core/workbench.h"
#include "engine/engine.h"

#include <algorithm>

namespace kv::spectrum {

SpectrumFeed feedFrom(const ProgramState& st) {
    SpectrumFeed f;
#if __has_include("engine/display_map.h")
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
#else
    f.MaxFreq = st.SampleRate / 2;
    f.BinWidth = st.Fft_Samples > 0 ? st.SampleRate / st.Fft_Samples : 0;
#endif
    return f;
}

namespace {

void setPlotColumns([[maybe_unused]] ProgramState& st, [[maybe_unused]] int32_t columns) {
#if __has_include("engine/display_map.h")
    st.PlotColumns = columns;
#endif
}

void setLaidOut([[maybe_unused]] ProgramState& st, [[maybe_unused]] bool on) {
#if __has_include("engine/display_map.h")
    st.ViewLaidOut = on;
    st.TopDb = st.dBFS_On ? float(st.Offset_Log) : st.PeakDb;
#endif
}

[[maybe_unused]] bool laidOut([[maybe_unused]] const ProgramState& st) {
#if __has_include("engine/display_map.h")
    return st.ViewLaidOut;
#else
    return true;
#endif
}

} // namespace

void SpectrumForm::showPeak() {
    wb_.cmd.panel(6) = view_.peakStatus();
    wb_.cmd.touch();
    if (onDrawn) onDrawn();
}

void SpectrumForm::layOutIfNeeded(const SpectrumFeed& f) {
    if (laidOut(wb_.st)) return;
    view_.Resized(wb_.st, f);
    setLaidOut(wb_.st, true);
}

void SpectrumForm::resizePlot(int w, int h) {
    if (w == view_.PlotW() && h == view_.PlotH()) return;
    view_.setPlotSize(w, h);
    ProgramState& st = wb_.st;
    if (st.TempPath.empty() || !st.SpectrumOpen) return;
    setPlotColumns(st, view_.PlotColumns());
    // The fold depends on the plot's width: fold the trace on show again for the new one.
    const bool idle = st.Idle;
    FyllSpData(st);
    st.Idle = idle;
    view_.Resized(st, feedFrom(st));
    setLaidOut(st, true);
    view_.ReDrawMode2(st);
    showPeak();
}

void SpectrumForm::firstDraw() {
    ProgramState& st = wb_.st;
    HSMaxCh();
    hs_.Value = st.TracePos;
    setPlotColumns(st, view_.PlotColumns());
    FyllSpData(st);
    view_.Resized(st, feedFrom(st));
    setLaidOut(st, true);
    showPeak();
}

void SpectrumForm::relayout() {
    if (wb_.st.TempPath.empty()) return;
    view_.Resized(wb_.st, feedFrom(wb_.st));
    setLaidOut(wb_.st, true);
    showPeak();
}

void SpectrumForm::HSMaxCh() {
    ProgramState& st = wb_.st;
    BigFile(st);
    hs_.Min = 0;
    hs_.Max = std::max<int>(0, st.LastTrace);
    if (st.ModeFFT == 4) hs_.Value = 0;
}

void SpectrumForm::HS_Change(int value) {
    hs_.Value = std::clamp(value, hs_.Min, hs_.Max);
    if (wb_.st.Idle) ScrollNu();
    view_.ShowMax(wb_.st, feedFrom(wb_.st));
    showPeak();
}

void SpectrumForm::ScrollNu() {
    ProgramState& st = wb_.st;
    if (!st.Idle) return;
    peakHoldOnMove(st, hs_.Value);
    st.TracePos = static_cast<int16_t>(hs_.Value);
    setCurrentTracePos(st);
    FyllSpData(st);
    // The other views follow without turning round to scroll this one.
    st.Idle = false;
    if (st.PhaseOpen) wb_.views.traceChanged(wb_, ViewId::Phase);
    if (st.OscOpen) wb_.views.traceChanged(wb_, ViewId::Oscope);
    st.Idle = true;
    const SpectrumFeed f = feedFrom(st);
    layOutIfNeeded(f);
    view_.Draw_s(st, f);
}

void SpectrumForm::DrawTimer() {
    ProgramState& st = wb_.st;
    st.TracePos = static_cast<int16_t>(std::clamp<int>(st.TracePos, hs_.Min, hs_.Max));
    hs_.Value = st.TracePos;
    const SpectrumFeed f = feedFrom(st);
    layOutIfNeeded(f);
    view_.Draw_s(st, f);
    view_.ShowMax(st, f);
    showPeak();
}

void SpectrumForm::LastPart() {
    HS_Change(hs_.Max);
}

void SpectrumForm::tmrFFT_Timer() {
    if (tmrFFT_Tick(wb_.st, hs_)) HS_Change(hs_.Value);
}

void SpectrumForm::finalDraw() {
    ProgramState& st = wb_.st;
    const SpectrumFeed f = feedFrom(st);
    if (st.ModeFFT != 2) view_.Draw_s(st, f);
    view_.ShowMax(st, f);
    showPeak();
}

void SpectrumForm::clearPicture() {
    view_.Cls(wb_.st);
    if (onDrawn) onDrawn();
}

} // namespace kv::spectrum
