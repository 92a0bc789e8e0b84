// What the menus, the toolbar and the status bar offer for the view the user works in, and
// what happens when a menu entry or a toolbar button is used. The desktop shell only mirrors
// the command model and forwards clicks here, so every rule is testable without widgets.
#pragma once

#include "state/view_host.h"

#include <string>

namespace kv {

struct Workbench;

/// Menus and buttons for `ActiveView`: ticks of the view entries and "All open", the common
/// entries enabled, the view's button set shown (21..105 hidden first; 20..105 for Phase) and
/// its commands enabled while those of the other views go grey.
void TBButtons_View(Workbench& wb);

/// The six read-out switches (menu and toolbar): SNR, THD, SINAD, SFDR, ENOB, THD+N.
void mnuSnr_Click(Workbench& wb);
void mnuThd_Click(Workbench& wb);
void mnuSnd_Click(Workbench& wb);
void mnuSdr_Click(Workbench& wb);
void mnuEnob_Click(Workbench& wb);
void mnuThdN_Click(Workbench& wb);
/// The spectrum view shows the read-out labels of the metrics that are on, laid out anew.
void UpdateAn(Workbench& wb);
/// The six read-out switches off together: their flags, the counting, their toolbar buttons
/// (41 to 46) and their menu ticks (the Spectrum view's unload).
void switchMetricsOff(Workbench& wb);

/// The status panels of `ActiveView`. Panels 4 and 5 carry the X and Y scale (the O-scope's Y
/// scale in 4 and its time range in 5), 3 the bin count, 8 the display mode or the O-scope's
/// windowing word, 9 the O-scope's flip note. Panel 6 (peak) and 7 (FFT window) belong to the
/// spectrum engine and view.
void StatusBarSet(Workbench& wb);

/// A view window became the active one: `ActiveView`, then the menus, buttons and panels.
void viewActivated(Workbench& wb, ViewId v);

/// The toolbar's click handler: compares `key` with every key in the toolbar's order and runs
/// each block that matches. May be re-entered from inside a playback loop (that is how Pause
/// stops it).
void TB_event9(Workbench& wb, const std::string& key);

/// A click on toolbar button `number`: a toggle button changes its down state first, then the
/// button's key goes to TB_event9. Hidden, disabled and unavailable buttons do nothing.
void pressButton(Workbench& wb, int number);

/// A menu entry was chosen (`mnuOpen`, `mnuCasc`, `mnuxlog` ...). Entries that the toolbar also
/// has do what the toolbar's key does. Disabled and unavailable entries do nothing. Returns
/// false for the entry the core leaves to the shell (Exit, which closes the main window).
bool menuCommand(Workbench& wb, const std::string& name);
/// Markers (menu and button 55), by the menu's tick: on, the spectrum's marker mode starts
/// with an empty set and the table shows; off, the mode is left.
void mnuMarkers_Click(Workbench& wb);
/// Leaves marker mode: the markers set stay, the current one goes, the scroll bar comes back.
void ExitMarkerModue(Workbench& wb);

/// Help > About: the program's name, version and purpose, through the host's About box.
void mnuAbout_Click(Workbench& wb);

/// The menus' Spectrum/O-scope/Phase/Waterfall command: a closed view is loaded and the windows
/// arranged; an open one is brought forward.
void showView(Workbench& wb, ViewId v);
/// "All open": loads the views that are missing, arranges them side by side, ticks mnuOlOp.
void openAllViews(Workbench& wb);

} // namespace kv
