// The transport buttons and the playback loops.
#include "commands/transport.h"

#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "engine/trace_blocks.h"
#include "state/workbench.h"

#include <algorithm>
#include <chrono>

namespace kv {

namespace {

void pressedLast(ProgramState& st, bool& which) {
    st.PlayFirst = st.PlayRew = st.PlayPause = st.PlayFwd = st.PlayEnd = false;
    which = true;
}

/// Leaving Peak-hold when the user goes back: the collected peaks go and the mode falls to
/// Single Trace until the next move forward.
void suspendPeakHold(ProgramState& st) {
    if (st.ModeFFT != 3) return;
    st.ModeFFT = 1;
    st.PeakHoldSuspended = true;
}

void resetWaterfalls(Workbench& wb, bool atEnd) {
    if (wb.st.WaterfallOpen) wb.views.resetWaterfall(wb, ViewId::Waterfall, atEnd);
    if (wb.st.RadargramOpen) wb.views.resetWaterfall(wb, ViewId::Radargram, atEnd);
}

/// Idle stays false while a loop or a jump runs, and comes back even when the trace read of a
/// data set that went away mid-loop ends the command.
struct BusyScope {
    explicit BusyScope(ProgramState& s) : st(s) { st.Idle = false; }
    ~BusyScope() { st.Idle = true; }
    ProgramState& st;
};

/// One step of a playback loop: false when the loop must stop.
bool playStep(Workbench& wb, int delta) {
    ProgramState& st = wb.st;
    st.TracePos = static_cast<int16_t>(st.TracePos + delta);
    wb.host.yield();
    if (st.PlayPause) {
        if (st.SpectrumOpen) wb.views.spectrumFinalDraw(wb);
        return false;
    }
    setCurrentTracePos(st);
    FyllSpData(st);
    updateViews(wb);
    return true;
}

} // namespace

uint32_t tickCount() {
    using namespace std::chrono;
    return static_cast<uint32_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void updateViews(Workbench& wb) {
    const ProgramState& st = wb.st;
    if (st.SpectrumOpen) wb.views.traceChanged(wb, ViewId::Spectrum);
    if (st.OscOpen) wb.views.traceChanged(wb, ViewId::Oscope);
    if (st.PhaseOpen) wb.views.traceChanged(wb, ViewId::Phase);
    if (st.RadargramOpen) wb.views.traceChanged(wb, ViewId::Radargram);
    if (st.WaterfallOpen) wb.views.traceChanged(wb, ViewId::Waterfall);
}

void leaveMeasurementModes(Workbench& wb) {
    CommandState& cmd = wb.cmd;
    for (int b : {74, 75, 76})
        cmd.button(b).down = false;
    for (const char* m : {"mnuMxA", "mnuMa", "mnuPP"})
        cmd.check(m, false);
    wb.st.MarkerMode = false;
    cmd.touch();
    // The read-outs' flags and texts are the O-scope's own.
    if (wb.st.OscOpen) wb.views.viewCommand(wb, ViewId::Oscope, "leaveMeasurementModes");
    if (wb.st.SpectrumOpen) wb.views.viewCommand(wb, ViewId::Spectrum, "ExitMarkerModue");
}

void Begining(Workbench& wb) {
    const ProgramState& st = wb.st;
    if (st.SpectrumOpen) wb.views.setScrollValue(wb, ViewId::Spectrum, st.TracePos);
    if (st.PhaseOpen) wb.views.setScrollValue(wb, ViewId::Phase, st.TracePos);
    if (st.OscOpen) wb.views.setScrollValue(wb, ViewId::Oscope, st.TracePos);
}

void transportFirst(Workbench& wb) {
    ProgramState& st = wb.st;
    pressedLast(st, st.PlayFirst);
    st.PlayPause = true; // stops a loop that is running
    resetPeakHold(st);
    suspendPeakHold(st);
    leaveMeasurementModes(wb);
    st.TracePos = 0;
    st.CurrentTracePos = st.FirstTracePos;
    FyllSpData(st);
    BusyScope busy(st);
    if (st.SpectrumOpen && st.ModeFFT == 2) wb.views.clearPicture(wb, ViewId::Spectrum);
    if (st.PhaseOpen) wb.views.clearPicture(wb, ViewId::Phase);
    resetWaterfalls(wb, false);
    updateViews(wb);
}

void transportRew(Workbench& wb) {
    ProgramState& st = wb.st;
    if (st.ModeFFT == 3) resetPeakHold(st);
    suspendPeakHold(st);
    // Pause for a moment, so that a forward loop still running lets go, then rewind.
    pressedLast(st, st.PlayPause);
    st.PlayPause = false;
    st.PlayRew = true;
    leaveMeasurementModes(wb);
    RewLoop(wb);
}

void transportPause(Workbench& wb) {
    ProgramState& st = wb.st;
    pressedLast(st, st.PlayPause);
    st.Idle = true;
    if (st.SpectrumOpen) wb.views.spectrumFinalDraw(wb);
}

void transportFwd(Workbench& wb) {
    ProgramState& st = wb.st;
    pressedLast(st, st.PlayFwd);
    st.PlayStartTicks = tickCount();
    if (st.PeakHoldSuspended) st.ModeFFT = 3;
    leaveMeasurementModes(wb);
    resetWaterfalls(wb, false);
    FwdLoop(wb);
}

void transportEnd(Workbench& wb) {
    ProgramState& st = wb.st;
    pressedLast(st, st.PlayEnd);
    st.PlayPause = true;
    st.TracePos = st.LastTrace;
    setCurrentTracePos(st);
    FyllSpData(st);
    BusyScope busy(st);
    updateViews(wb);
    if (st.OscOpen) wb.views.setScrollValue(wb, ViewId::Oscope, st.LastTrace);
    resetWaterfalls(wb, true);
}

void FwdLoop(Workbench& wb) {
    ProgramState& st = wb.st;
    BusyScope busy(st);
    // Short traces are read a block at a time while the loop runs.
    TraceBlockScope blocks;
    while (st.TracePos < st.LastTrace)
        if (!playStep(wb, +1)) break;
}

void RewLoop(Workbench& wb) {
    ProgramState& st = wb.st;
    BusyScope busy(st);
    TraceBlockScope blocks;
    while (st.TracePos >= 1)
        if (!playStep(wb, -1)) break;
}

void peakHoldOnMove(ProgramState& st, int newPos) {
    if (st.ModeFFT == 3 && newPos < st.TracePos) {
        resetPeakHold(st);
        st.ModeFFT = 1;
        st.PeakHoldSuspended = true;
    }
    if (st.PeakHoldSuspended && newPos > st.TracePos) st.ModeFFT = 3;
}

std::string traceTipText(const ProgramState& st, int position) {
    const int64_t trace = int64_t(std::max<int>(st.TraceStep, 1)) * std::max(position, 0) + 1;
    return "Trace " + std::to_string(std::min<int64_t>(trace, std::max(st.TraceCount, 1))) +
           " of " + std::to_string(st.TraceCount);
}

} // namespace kv
