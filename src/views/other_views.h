// A view that moved to a new trace by its own scroll bar has the other open views show it.
#pragma once

#include "state/view_host.h"

namespace kv {

struct Workbench;

/// With Idle off for the time of it, so that their scroll bars, which follow, don't turn round
/// and move the data again: the waterfall on show, then those of Spectrum, O-scope and Phase
/// that are open, other than `self`.
void showTraceInOtherViews(Workbench& wb, ViewId self);

/// A scroll bar is about to move the data to `value`: the open waterfall takes the direction
/// (PlayRew: True when `value` lies below TracePos, False above) and its trace numbers follow the
/// bar, before the trace is read, so that a move back reads the trace entering at the foot.
void waterfallFollowsScroll(Workbench& wb, int value);

} // namespace kv
