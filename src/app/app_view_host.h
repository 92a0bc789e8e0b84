// The views as MDI child windows of the main window: each open view's model in a window of its
// own, loading, closing and arranging them, and the core's requests passed on to the models
// with the windows following.
#pragma once

#include "views/model_view_host.h"

#include <QPointer>
#include <functional>
#include <map>
#include <optional>

class QMdiArea;
class QMdiSubWindow;
class QMenu;

namespace kv {

class ViewWindow;

class AppViewHost : public ModelViewHost {
  public:
    explicit AppViewHost(QMdiArea* area) : area_(area) {}

    void maximiseView(Workbench& wb, ViewId v) override;
    void arrange(Workbench& wb, int mode) override;
    void traceChanged(Workbench& wb, ViewId v) override;
    void spectrumFinalDraw(Workbench& wb) override;
    /// Every dialog the core asks for by name: the conditioning forms and the palette chooser
    /// here (their events run through `runCommand`); the others through `otherDialog`.
    void showDialog(Workbench& wb, const std::string& name, bool modal) override;
    void closeDialog(Workbench& wb, const std::string& name) override;
    /// How a dialog's event runs: the main window's command runner.
    std::function<void(const std::function<void()>&)> runCommand;
    /// The dialogs the main window keeps (references, markers, text).
    std::function<void(const std::string& name, bool modal)> otherDialog;

    /// The area changed size: views tiled by the last arrangement (Horizontal or Vertical) are
    /// tiled again to fill it; cascaded or maximised ones are left as they are.
    void retile();
    /// Save window as and the quick print, on the active view's picture.
    void pictureCommand(Workbench& wb, const std::string& name) override;

    /// The MDI sub-window of an open view.
    QMdiSubWindow* window(ViewId v) const;
    /// The window of an open view.
    ViewWindow* viewWindow(ViewId v) const;
    /// The pop-up menu a view's window brings up when its model asks for one (the Spectrum
    /// plot's right button).
    std::map<ViewId, QMenu*> popups;
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
    /// Called after a press or a release in a view window (a marker set there fills the table).
    std::function<void()> onViewClicked;

  protected:
    void show(Workbench& wb, ViewId v, ViewModel& m) override;
    void bringForward(ViewId v) override;
    bool ready(ViewId v) const override;
    void changed(ViewId v) override;
    void remove(ViewId v) override;

  private:
    QMdiArea* area_;
    std::map<ViewId, QPointer<QMdiSubWindow>> windows_;
    bool unloading_ = false;
    int tiled_ = -1; // the arrangement in force: 1 horizontal, 2 vertical, -1 none
    /// Tiles the visible windows one above the other (1) or side by side (2).
    void tile(int mode);
};

} // namespace kv
