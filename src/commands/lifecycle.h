// The life of the workbench and of its one data set: start, how the trace position maps to the
// working file, re-reading after a settings change, closing, cleaning up after the last view,
// and exit.
#pragma once

#include "platform/message_title.h"
#include "state/view_host.h"

namespace kv {

class HomeLock;

struct Workbench;
struct ProgramState;

/// The constants the workbench sets before it reads its settings.
void applyStartConstants(ProgramState& st);

/// Start: constants, the three-button toolbar, an empty temp.sp, then the settings.
void MDIForm_Load(Workbench& wb);
/// Exit: deletes temp.sp and print.bmp (failures ignored). temp_l.sp and temp_r.sp stay.
void MDIForm_Unload(Workbench& wb);
/// Claims the home folder for this workbench through `lock`, so that two workbenches never
/// share its working files. When another workbench holds it, says so through the host (naming
/// the folder and that workbench's process) and returns false: this one must not go on. A home
/// where no lock file can be made is not locked.
bool claimHome(Workbench& wb, HomeLock& lock);

/// How a scroll position maps to a trace: LastTrace, TraceStep, ScrollStride; TracePos to 0.
void BigFile(ProgramState& st);
/// Re-reads the data set after the down-sampling settings changed.
void ChNewDS(Workbench& wb);
/// Redraws all open views after a settings change.
void ReloadForms(Workbench& wb);
/// Closes the views and resets the commands; no data set afterwards.
void CloseDataSet(Workbench& wb);
/// What a view's unload leaves behind; with no view left, back to the three-button start.
void CleanSet(Workbench& wb);
/// An open or re-read that failed: CleanSet, the three start buttons, no data set.
void abandonDataSet(Workbench& wb);
void NoMarkers(Workbench& wb);
void NoAnalys(Workbench& wb);

/// A view went away: its flag goes false and CleanSet runs. Every view's unload calls this.
void viewUnloaded(Workbench& wb, ViewId v);
/// True when any view (or the reserved extra view) is open.
bool anyViewOpen(const ProgramState& st);
/// The status panels after an open.
void InitStatusPanels(Workbench& wb);
/// Mode text for the status bar: "Single Trace mode" ...
const char* modeText(int modeFFT);
/// CurrentTracePos for the present TracePos.
void setCurrentTracePos(ProgramState& st);

} // namespace kv
