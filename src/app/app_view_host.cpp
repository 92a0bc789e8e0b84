// View windows inside the main window's MDI area.
#include "app/app_view_host.h"

#include "app/conditioning_forms.h"
#include "app/palette_form.h"
#include "app/view_window.h"
#include "commands/lifecycle.h"
#include "commands/transport.h"
#include "output/picture_export.h"
#include "output/printing.h"
#include "state/workbench.h"
#include "views/view_table.h"

#include <QMdiArea>
#include <QMdiSubWindow>

namespace kv {

void AppViewHost::showDialog(Workbench& wb, const std::string& name, bool modal) {
    const CommandRunner run = runCommand ? runCommand : [](const std::function<void()>& f) { f(); };
    if (name == "dlgPal") return showPaletteForm(area_->window(), wb, run);
    if (!showConditioningForm(area_->window(), wb, name, modal, run) && otherDialog)
        otherDialog(name, modal);
}

void AppViewHost::closeDialog(Workbench&, const std::string& name) {
    closeConditioningForm(name);
}

QMdiSubWindow* AppViewHost::window(ViewId v) const {
    auto it = windows_.find(v);
    return it == windows_.end() ? nullptr : it->second.data();
}

ViewWindow* AppViewHost::viewWindow(ViewId v) const {
    auto* w = window(v);
    return w ? qobject_cast<ViewWindow*>(w->widget()) : nullptr;
}

std::optional<ViewId> AppViewHost::viewOf(const QMdiSubWindow* w) const {
    if (!w) return std::nullopt;
    for (const auto& [v, p] : windows_)
        if (p.data() == w) return v;
    return std::nullopt;
}

void AppViewHost::show(Workbench& wb, ViewId v, ViewModel& m) {
    auto* view = new ViewWindow(m);
    if (auto it = popups.find(v); it != popups.end()) view->setPopupMenu(it->second);
    view->tipText = [&wb](int position) {
        return QString::fromStdString(traceTipText(wb.st, position));
    };
    view->afterClick = [this] {
        if (onViewClicked) onViewClicked();
    };
    view->resize(640, 420);
    auto* sub = area_->addSubWindow(view);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowTitle(QString::fromLatin1(viewTable().at(v).caption));
    windows_[v] = sub;
    QObject::connect(sub, &QObject::destroyed, [this, &wb, v] {
        windows_.erase(v);
        if (unloading_) return;
        // The user closed it: the window ran the view's unload as it closed.
        forget(v);
        viewUnloaded(wb, v);
        if (onViewClosed) onViewClosed();
    });
    sub->show();
}

void AppViewHost::bringForward(ViewId v) {
    if (auto* w = window(v)) area_->setActiveSubWindow(w);
}

bool AppViewHost::ready(ViewId v) const {
    auto* w = viewWindow(v);
    return w && w->loaded();
}

void AppViewHost::changed(ViewId v) {
    if (auto* w = viewWindow(v)) w->refresh();
}

void AppViewHost::remove(ViewId v) {
    auto* w = window(v);
    if (!w) return;
    unloading_ = true;
    windows_.erase(v);
    delete w;
    unloading_ = false;
}

void AppViewHost::maximiseView(Workbench& wb, ViewId v) {
    tiled_ = -1;
    ModelViewHost::maximiseView(wb, v);
    if (auto* w = window(v)) w->showMaximized();
}

void AppViewHost::arrange(Workbench&, int mode) {
    if (mode == 0) {
        tiled_ = -1;
        area_->cascadeSubWindows();
        return;
    }
    tiled_ = mode;
    tile(mode);
}

void AppViewHost::retile() {
    if (tiled_ != 1 && tiled_ != 2) return;
    for (auto* w : area_->subWindowList())
        if (w->isMaximized()) return; // the user maximised one since: leave the layout to them
    tile(tiled_);
}

void AppViewHost::tile(int mode) {
    // 1: one above the other, each the full width; 2: side by side, each the full height.
    QList<QMdiSubWindow*> list;
    for (auto* w : area_->subWindowList())
        if (w->isVisible() && !w->isMinimized()) list << w;
    if (list.isEmpty()) return;
    const QRect r = area_->viewport()->rect();
    const int n = int(list.size());
    for (int i = 0; i < n; ++i) {
        QMdiSubWindow* w = list[i];
        if (w->isMaximized()) w->showNormal();
        if (mode == 1) {
            const int y0 = r.height() * i / n, y1 = r.height() * (i + 1) / n;
            w->setGeometry(0, y0, r.width(), y1 - y0);
        } else {
            const int x0 = r.width() * i / n, x1 = r.width() * (i + 1) / n;
            w->setGeometry(x0, 0, x1 - x0, r.height());
        }
    }
}

void AppViewHost::traceChanged(Workbench& wb, ViewId v) {
    ModelViewHost::traceChanged(wb, v);
    if (onTraceShown) onTraceShown();
}

void AppViewHost::spectrumFinalDraw(Workbench& wb) {
    ModelViewHost::spectrumFinalDraw(wb);
    if (onTraceShown) onTraceShown();
}

void AppViewHost::pictureCommand(Workbench& wb, const std::string& name) {
    if (name == "mnuSw") output::mnuSw_Click(wb, *this);
    if (name == "QuickPrint") output::quickPrint(wb, *this);
}

} // namespace kv
