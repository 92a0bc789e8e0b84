// Moving through the traces of a data set: the toolbar's First, Rew, Pause, Fwd and End, the
// playback loops they run, and the rules the views' scroll bars share with them. A loop yields
// to the host once per trace; a Pause pressed meanwhile runs inside that yield and the loop sees
// it when the yield returns.
#pragma once

#include <cstdint>
#include <string>

namespace kv {

struct Workbench;
struct ProgramState;

void transportFirst(Workbench& wb);
void transportRew(Workbench& wb);
void transportPause(Workbench& wb);
void transportFwd(Workbench& wb);
void transportEnd(Workbench& wb);

/// Plays forward one trace at a time until the last position or a Pause.
void FwdLoop(Workbench& wb);
/// Plays backward one trace at a time until position 0 or a Pause.
void RewLoop(Workbench& wb);

/// Puts the trace scroll bars of the Spectrum, Phase and O-scope views on TracePos.
void Begining(Workbench& wb);

/// Every open view shows the trace at CurrentTracePos: Spectrum, O-scope, Phase, radargram,
/// then the waterfall.
void updateViews(Workbench& wb);

/// Leaves the O-scope's measurement modes (their buttons, ticks, flags and texts) and marker
/// mode, as every transport button does.
void leaveMeasurementModes(Workbench& wb);

/// Peak-hold pauses while the user moves back: a move to `newPos` below TracePos in Peak-hold
/// mode clears the accumulator, drops to Single Trace and marks the mode as suspended; with the
/// mark set, a move above TracePos brings Peak-hold back.
void peakHoldOnMove(ProgramState& st, int newPos);

/// Which trace a scroll position shows, for the scroll bar's tip: "Trace k of N", k counted
/// from 1 through the whole data set (a position moves TraceStep traces), N the trace count.
std::string traceTipText(const ProgramState& st, int position);

/// Milliseconds of a monotonic clock, for the playback start time.
uint32_t tickCount();

} // namespace kv
