// The view host of the command-line tool, the tests and the fuzzers: no windows, the view flags
// kept as real views would keep them, every request written down.
#pragma once

#include "state/view_host.h"

#include <string>
#include <vector>

namespace kv {

/// Keeps the view flags as real views would and writes down every request, in order
/// ("load Spectrum", "firstDraw Spectrum", "maximise Spectrum", "arrange 1", "trace Spectrum 4",
/// "dialog dlgWhite modeless" ...). A loaded view becomes the active one, as a window that comes up
/// does.
class RecordingViewHost : public ViewHost {
  public:
    std::vector<std::string> log;
    std::vector<std::string> dialogsShown; // the dialogs asked for, by name

    void loadView(Workbench& wb, ViewId v) override;
    void unloadView(Workbench& wb, ViewId v) override;
    void spectrumFirstDraw(Workbench& wb) override;
    void maximiseView(Workbench& wb, ViewId v) override;
    void arrange(Workbench& wb, int mode) override;
    void redrawView(Workbench& wb, ViewId v) override;
    void traceChanged(Workbench& wb, ViewId v) override;
    void clearPicture(Workbench& wb, ViewId v) override;
    void spectrumFinalDraw(Workbench& wb) override;
    void resetWaterfall(Workbench& wb, ViewId v, bool atEnd) override;
    void setScrollValue(Workbench& wb, ViewId v, int value) override;
    void viewCommand(Workbench& wb, ViewId v, const std::string& name) override;
    void showDialog(Workbench& wb, const std::string& name, bool modal) override;
    void closeDialog(Workbench& wb, const std::string& name) override;
    void pictureCommand(Workbench& wb, const std::string& name) override;
};

} // namespace kv
