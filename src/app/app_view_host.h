// The views as MDI child windows of the main window: loading, closing, arranging, and passing
// the transport's requests on to the view windows.
#pragma once

#include "state/view_host.h"

#include <QMdiSubWindow>
#include <QPointer>
#include <functional>
#include <map>
#include <optional>

class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QWidget;

namespace kv {

class SpectrumWindow;

class AppViewHost : public ViewHost {
  public:
    explicit AppViewHost(QMdiArea* area) : area_(area) {}

    void loadView(Workbench& wb, ViewId v) override;
    void unloadView(Workbench& wb, ViewId v) override;
    void spectrumFirstDraw(Workbench& wb) override;
    void maximiseView(Workbench& wb, ViewId v) override;
    void arrange(Workbench& wb, int mode) override;
    void redrawView(Workbench& wb, ViewId v) override;
    void traceChanged(Workbench& wb, ViewId v) override;
    void clearPicture(Workbench& wb, ViewId v) override;
    void spectrumFinalDraw(Workbench& wb) override;
    void setScrollValue(Workbench& wb, ViewId v, int value) override;
    void viewCommand(Workbench& wb, ViewId v, const std::string& name) override;

    QMdiSubWindow* window(ViewId v) const;
    /// The Spectrum view's window while it is open.
    SpectrumWindow* spectrumWindow() const;
    /// The window of view `v` when it is open and of type W.
    template <class W> W* widgetOf(ViewId v) const {
        auto* w = window(v);
        return w ? qobject_cast<W*>(w->widget()) : nullptr;
    }
    /// The pop-up the Spectrum plot's right button brings up.
    QMenu* spectrumPopup = nullptr;
    /// The view a sub-window shows, if it is one of ours.
    std::optional<ViewId> viewOf(const QMdiSubWindow* w) const;
    /// True while a view window is being taken down on the core's request.
    bool isUnloading() const { return unloading_; }
    /// The main window is going away: closing windows no longer counts as unloading views.
    void shutdown() { unloading_ = true; }
    /// Called after a view window went away by itself (the user closed it).
    std::function<void()> onViewClosed;
    /// Called after a view showed a new trace, so that the status bar can follow a loop.
    std::function<void()> onTraceShown;

  private:
    QWidget* makeViewWidget(Workbench& wb, ViewId v);

    QMdiArea* area_;
    std::map<ViewId, QPointer<QMdiSubWindow>> windows_;
    bool unloading_ = false;
};

} // namespace kv
