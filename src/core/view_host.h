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
};

/// Keeps the view flags as real views would and writes down every request, in order
/// ("load Spectrum", "firstDraw Spectrum", "maximise Spectrum", "arrange 1" ...).
class RecordingViewHost : public ViewHost {
  public:
    std::vector<std::string> log;

    void loadView(Workbench& wb, ViewId v) override;
    void unloadView(Workbench& wb, ViewId v) override;
    void spectrumFirstDraw(Workbench& wb) override;
    void maximiseView(Workbench& wb, ViewId v) override;
    void arrange(Workbench& wb, int mode) override;
    void redrawView(Workbench& wb, ViewId v) override;
};

/// The open flag of a view.
bool& viewFlag(struct ProgramState& st, ViewId v);

} // namespace kv
