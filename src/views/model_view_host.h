// The view host over the views' models: the open views' models in a map by ViewId, made from
// their rows in the view table, and every request of the core passed on through ViewModel.
// Without windows (the benchmarks, the tests) a view is loaded at a fixed size; the desktop's
// host puts a window round each model and follows every change through the hooks below.
#pragma once

#include "state/view_host.h"
#include "views/view_model.h"

#include <QSize>
#include <map>
#include <memory>

namespace kv {

class ModelViewHost : public ViewHost {
  public:
    /// The size a view comes up at when no window gives it one.
    QSize windowSize{640, 420};

    /// The model of an open view, or null.
    ViewModel* model(ViewId v) const;
    template <class M> M* modelOf(ViewId v) const { return dynamic_cast<M*>(model(v)); }

    /// Makes the view's model, sets its open flag, shows it and makes it the active view; an
    /// open view is brought forward instead.
    void loadView(Workbench& wb, ViewId v) override;
    /// Runs the view's own unload, takes it away, then clears its flag and runs CleanSet.
    void unloadView(Workbench& wb, ViewId v) override;
    void spectrumFirstDraw(Workbench& wb) override;
    void maximiseView(Workbench& wb, ViewId v) override;
    void arrange(Workbench&, int) override {}
    void redrawView(Workbench& wb, ViewId v) override;
    void traceChanged(Workbench& wb, ViewId v) override;
    void clearPicture(Workbench& wb, ViewId v) override;
    void spectrumFinalDraw(Workbench& wb) override;
    void resetWaterfall(Workbench& wb, ViewId v, bool atEnd) override;
    void setScrollValue(Workbench& wb, ViewId v, int value) override;
    void viewCommand(Workbench& wb, ViewId v, const std::string& name) override;

  protected:
    /// A model was made for `v`: show it. Without a window it is loaded at windowSize.
    virtual void show(Workbench& wb, ViewId v, ViewModel& m);
    /// An open view comes forward.
    virtual void bringForward(ViewId) {}
    /// The view can take requests: its model is loaded (a window loads it when it first gets its
    /// size).
    virtual bool ready(ViewId) const { return true; }
    /// A request changed the view: what shows it follows.
    virtual void changed(ViewId) {}
    /// The core takes the view away, its unload done: the window goes before its model.
    virtual void remove(ViewId) {}
    /// Forgets the model of a view that went away by itself.
    void forget(ViewId v) { models_.erase(v); }

  private:
    /// Passes a request to the view's model when it is open and ready, then `changed`.
    template <class Request> void ask(ViewId v, Request request);

    std::map<ViewId, std::unique_ptr<ViewModel>> models_;
};

} // namespace kv
