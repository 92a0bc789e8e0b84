// View windows inside the main window's MDI area. Views that do not have a window class of
// their own yet show a summary of the trace they would draw.
#include "app/app_view_host.h"

#include "app/oscope_window.h"
#include "app/phase_window.h"
#include "app/spectrum_window.h"
#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "state/workbench.h"

#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>

namespace kv {

namespace {

QString summary(const ProgramState& st, ViewId v) {
    return QStringLiteral("%1 view\n\n%2\n%3 traces of %4 samples at %5 Hz\ntrace %6")
        .arg(QString::fromLatin1(viewName(v)), QString::fromStdString(st.FileTitle))
        .arg(st.TraceCount)
        .arg(st.Sp_Samples)
        .arg(st.SampleRate)
        .arg(st.TracePos);
}

/// The caption line of a view window, as the command model names the view.
QString viewCaption(ViewId v) {
    switch (v) {
    case ViewId::Oscope:
        return QStringLiteral("O-scope view");
    case ViewId::Spectrum:
        return QStringLiteral("Spectrum view");
    case ViewId::Phase:
        return QStringLiteral("Phase view");
    case ViewId::Waterfall:
    case ViewId::Radargram:
        break;
    }
    return QStringLiteral("Waterfall view");
}

} // namespace

QMdiSubWindow* AppViewHost::window(ViewId v) const {
    auto it = windows_.find(v);
    return it == windows_.end() ? nullptr : it->second.data();
}

std::optional<ViewId> AppViewHost::viewOf(const QMdiSubWindow* w) const {
    if (!w) return std::nullopt;
    for (const auto& [v, p] : windows_)
        if (p.data() == w) return v;
    return std::nullopt;
}

SpectrumWindow* AppViewHost::spectrumWindow() const {
    auto* w = window(ViewId::Spectrum);
    return w ? qobject_cast<SpectrumWindow*>(w->widget()) : nullptr;
}

QWidget* AppViewHost::makeViewWidget(Workbench& wb, ViewId v) {
    if (v == ViewId::Spectrum) {
        auto* s = new SpectrumWindow(wb);
        s->setPopupMenu(spectrumPopup);
        s->resize(640, 420);
        return s;
    }
    if (v == ViewId::Oscope) {
        auto* o = new OscopeWindow(wb);
        o->resize(640, 420);
        return o;
    }
    if (v == ViewId::Phase) {
        auto* p = new PhaseWindow(wb);
        p->resize(640, 420);
        return p;
    }
    auto* label = new QLabel(summary(wb.st, v));
    label->setAlignment(Qt::AlignCenter);
    label->setMinimumSize(320, 200);
    return label;
}

void AppViewHost::loadView(Workbench& wb, ViewId v) {
    if (auto* w = window(v)) {
        area_->setActiveSubWindow(w);
        return;
    }
    auto* sub = area_->addSubWindow(makeViewWidget(wb, v));
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowTitle(viewCaption(v));
    windows_[v] = sub;
    viewFlag(wb.st, v) = true;
    QObject::connect(sub, &QObject::destroyed, [this, &wb, v] {
        windows_.erase(v);
        if (unloading_) return;
        viewUnloaded(wb, v);
        if (onViewClosed) onViewClosed();
    });
    sub->show();
    viewActivated(wb, v);
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
    viewActivated(wb, ViewId::Spectrum);
    if (auto* s = spectrumWindow()) s->form().firstDraw();
}

void AppViewHost::maximiseView(Workbench& wb, ViewId v) {
    if (!window(v)) loadView(wb, v);
    if (auto* w = window(v)) w->showMaximized();
}

void AppViewHost::arrange(Workbench&, int mode) {
    if (mode == 0) {
        area_->cascadeSubWindows();
        return;
    }
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

void AppViewHost::redrawView(Workbench& wb, ViewId v) {
    if (v == ViewId::Spectrum) {
        if (auto* s = spectrumWindow()) s->form().relayout();
        return;
    }
    if (auto* o = widgetOf<OscopeWindow>(v)) o->redraw();
    if (auto* p = widgetOf<PhaseWindow>(v)) p->redraw();
    if (auto* w = window(v))
        if (auto* label = qobject_cast<QLabel*>(w->widget())) label->setText(summary(wb.st, v));
}

void AppViewHost::traceChanged(Workbench& wb, ViewId v) {
    if (v == ViewId::Spectrum) {
        if (auto* s = spectrumWindow()) s->form().DrawTimer();
    } else if (auto* o = widgetOf<OscopeWindow>(v)) {
        o->traceChanged();
    } else if (auto* p = widgetOf<PhaseWindow>(v)) {
        p->traceChanged();
    } else {
        redrawView(wb, v);
    }
    if (onTraceShown) onTraceShown();
}

void AppViewHost::clearPicture(Workbench&, ViewId v) {
    if (auto* p = widgetOf<PhaseWindow>(v)) p->clearPicture();
    if (v != ViewId::Spectrum) return;
    if (auto* s = spectrumWindow()) s->form().clearPicture();
}

void AppViewHost::spectrumFinalDraw(Workbench&) {
    if (auto* s = spectrumWindow()) s->form().finalDraw();
    if (onTraceShown) onTraceShown();
}

void AppViewHost::setScrollValue(Workbench&, ViewId v, int value) {
    if (auto* o = widgetOf<OscopeWindow>(v)) {
        o->view().HS.Value = value;
        o->mirrorScrollBar();
    }
    if (auto* p = widgetOf<PhaseWindow>(v)) {
        p->view().HS.Value = value;
        p->mirrorScrollBar();
    }
    if (v != ViewId::Spectrum) return;
    if (auto* s = spectrumWindow()) {
        s->form().HS().Value = value;
        s->mirrorScrollBar();
    }
}

void AppViewHost::viewCommand(Workbench&, ViewId v, const std::string& name) {
    if (auto* o = widgetOf<OscopeWindow>(v)) o->command(name);
    // The read-out labels are painted with the window: showing them anew is a repaint.
    if (v == ViewId::Spectrum && name == "UpdateAn")
        if (auto* s = spectrumWindow()) s->update();
}

} // namespace kv
