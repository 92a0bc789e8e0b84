// How the core asks for views to be opened, closed, drawn and arranged. The desktop shell
// implements it with real windows; without a shell (tests, the command-line tool) the requests
// are recorded and the view flags kept as a loaded view would keep them.
#pragma once

#include <string>
#include <vector>

namespace kv {

struct Workbench;

enum class ViewId { Oscope = 1, Spectrum = 2, Phase = 3, Waterfall = 4, Radargram = 5 };

const char* viewName(ViewId v);

class ViewHost {
  public:
    virtual ~ViewHost() = default;
    /// Loads the view if it is not loaded (its load sets its open flag) and shows it.
    virtual void loadView(Workbench& wb, ViewId v) = 0;
    /// Unloads the view if it is loaded; its unload clears its flag and runs CleanSet.
    virtual void unloadView(Workbench& wb, ViewId v) = 0;
    /// The spectrum view's first-draw method, after an open.
    virtual void spectrumFirstDraw(Workbench& wb) = 0;
    virtual void maximiseView(Workbench& wb, ViewId v) = 0;
    /// 0 cascade, 1 tile horizontally, 2 tile vertically.
    virtual void arrange(Workbench& wb, int mode) = 0;
    /// Redraws an open view after a settings change.
    virtual void redrawView(Workbench& wb, ViewId v) = 0;

    // ---- Moving through the data (the transport) --------------------------------------------
    // A view that is not built yet, or a host without windows, may ignore these.
    /// The trace on show changed: an open view shows the trace at CurrentTracePos (the Spectrum
    /// view puts its scroll bar on TracePos and draws).
    virtual void traceChanged(Workbench&, ViewId) {}
    /// Empties a view's picture (a Stacked spectrum and the Phase view on First).
    virtual void clearPicture(Workbench&, ViewId) {}
    /// Pause: the Spectrum view draws its final state, its metric labels and, unless Stacked,
    /// its picture.
    virtual void spectrumFinalDraw(Workbench&) {}
    /// A waterfall starts over: trace counters and labels back to 0, or, `atEnd`, showing
    /// TraceCount and "N/A".
    virtual void resetWaterfall(Workbench&, ViewId, bool /*atEnd*/) {}
    /// Puts a view's trace scroll bar on `value` without moving through the data again.
    virtual void setScrollValue(Workbench&, ViewId, int /*value*/) {}
    /// A command that belongs to one view, by its menu entry's name (the O-scope's "mnuZoomIn",
    /// "mnuFlip", "mnuCur" ...), or a request of the core that only the view can carry out (the
    /// transport's "leaveMeasurementModes"). The view's model dispatches it.
    virtual void viewCommand(Workbench&, ViewId, const std::string& /*name*/) {}

    // ---- Dialogs beside the views -----------------------------------------------------------
    /// Shows the dialog whose form is named `name` ("dlgBoxFilter", "ZenterFr" ...), modal or
    /// modeless beside the active view. Its behaviour runs in the core; the host only shows the
    /// form. A host without windows ignores it (the tests drive the behaviour directly).
    virtual void showDialog(Workbench&, const std::string& /*name*/, bool /*modal*/) {}
    /// Closes a modeless dialog the core has switched off (its menu entry unticked).
    virtual void closeDialog(Workbench&, const std::string& /*name*/) {}

    // ---- Pictures and print-outs ------------------------------------------------------------
    /// The active view's picture goes out: "mnuSw" saves it under a name the user gives,
    /// "QuickPrint" prints it on the default printer. Only a host that draws views can; one
    /// without pictures ignores it.
    virtual void pictureCommand(Workbench&, const std::string& /*name*/) {}
};

/// The open flag of a view.
bool& viewFlag(struct ProgramState& st, ViewId v);

} // namespace kv
