// The views as MDI child windows of the main window.
#pragma once

#include "core/view_host.h"

#include <QPointer>
#include <functional>
#include <map>

class QMdiArea;
class QMdiSubWindow;

namespace kv {

class AppViewHost : public ViewHost {
  public:
    explicit AppViewHost(QMdiArea* area) : area_(area) {}

    void loadView(Workbench& wb, ViewId v) override;
    void unloadView(Workbench& wb, ViewId v) override;
    void spectrumFirstDraw(Workbench& wb) override;
    void maximiseView(Workbench& wb, ViewId v) override;
    void arrange(Workbench& wb, int mode) override;
    void redrawView(Workbench& wb, ViewId v) override;

    QMdiSubWindow* window(ViewId v) const;
    /// The main window is going away: closing windows no longer counts as unloading views.
    void shutdown() { unloading_ = true; }
    /// Called after a view window went away by itself (the user closed it).
    std::function<void()> onViewClosed;

  private:
    QMdiArea* area_;
    std::map<ViewId, QPointer<QMdiSubWindow>> windows_;
    bool unloading_ = false;
};

} // namespace kv
