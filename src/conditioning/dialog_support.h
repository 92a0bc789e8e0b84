// What the conditioning dialogs share: their messages, and the rebuild and redraw after a
// change of what the views show.
#pragma once

#include "platform/host.h"

namespace kv {

struct Workbench;

/// A message box with the program's title.
void conditioningMessage(Workbench& wb, const char* text, MsgIcon icon);

/// The trace on show is built again (FyllSpData) and the Spectrum view redrawn; the O-scope too
/// when `withOscope` and it is open.
void rebuildViews(Workbench& wb, bool withOscope);

/// After a filter or whitening is applied: PlotRange = Fix(FloorDbRel) * -1 + 1, so that the
/// whole filtered curve stays on the plot; the Spectrum view lays out again and its read-outs
/// follow.
void plotWholeCurve(Workbench& wb);

/// References on show go off, as a filtered trace is no longer comparable with them.
void referencesOff(Workbench& wb);

/// The O-scope draws again at its present zoom with a new value per division (and the
/// radargram, which shares its scale, repaints).
void refreshOscopeScale(Workbench& wb);

} // namespace kv
