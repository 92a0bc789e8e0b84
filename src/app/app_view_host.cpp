// View windows inside the main window's MDI area. Until a view has its own window class, it
// shows a summary of the data set it would draw.
#include "app/app_view_host.h"

#include "core/lifecycle.h"
#include "core/workbench.h"

#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>

namespace kv {

namespace {

QString summary(const ProgramState& st, ViewId v) {
    return QStringLiteral("%1 view\n\n%2\n%3 traces of %4 samples at %5 Hz")
        .arg(QString::fromLatin1(viewName(v)), QString::fromStdString(st.FileTitle))
        .arg(st.TraceCount)
        .arg(st.Sp_Samples)
        .arg(st.SampleRate);
}

} // namespace

QMdiSubWindow* AppViewHost::window(ViewId v) const {
    auto it = windows_.find(v);
    return it == windows_.end() ? nullptr : it->second.data();
}

void AppViewHost::loadView(Workbench& wb, ViewId v) {
    if (auto* w = window(v)) {
        area_->setActiveSubWindow(w);
        return;
    }
    auto* label = new QLabel(summary(wb.st, v));
    label->setAlignment(Qt::AlignCenter);
    label->setMinimumSize(320, 200);
    auto* sub = area_->addSubWindow(label);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowTitle(QString::fromLatin1(viewName(v)));
    windows_[v] = sub;
    viewFlag(wb.st, v) = true;
    wb.st.ActiveView = static_cast<int16_t>(v);
    QObject::connect(sub, &QObject::destroyed, [this, &wb, v] {
        windows_.erase(v);
        if (unloading_) return;
        viewUnloaded(wb, v);
        if (onViewClosed) onViewClosed();
    });
    sub->show();
}

void AppViewHost::unloadView(Workbench& wb, ViewId v) {
    auto* w = window(v);
    if (!w) return;
    unloading_ = true;
    windows_.erase(v);
    delete w;
    unloading_ = false;
    viewUnloaded(wb, v);
}

void AppViewHost::spectrumFirstDraw(Workbench& wb) {
    wb.st.SpectrumOpen = true;
}

void AppViewHost::maximiseView(Workbench& wb, ViewId v) {
    if (!window(v)) loadView(wb, v);
    if (auto* w = window(v)) w->showMaximized();
}

void AppViewHost::arrange(Workbench&, int mode) {
    if (mode == 0)
        area_->cascadeSubWindows();
    else
        area_->tileSubWindows();
}

void AppViewHost::redrawView(Workbench& wb, ViewId v) {
    if (auto* w = window(v))
        if (auto* label = qobject_cast<QLabel*>(w->widget())) label->setText(summary(wb.st, v));
}

} // namespace kv
