// The Phase view's window.
#include "app/phase_window.h"

#include "state/workbench.h"

#include <QCloseEvent>

namespace kv {

PhaseWindow::PhaseWindow(Workbench& wb, QWidget* parent)
    : ComposedWindow(parent), wb_(wb), view_(wb) {}

void PhaseWindow::resized(int w, int h) {
    if (!loaded_) {
        view_.Form_Load(w, h);
        loaded_ = true;
        return;
    }
    view_.Form_Resize(w, h);
}

void PhaseWindow::press(int button, int x, int y) {
    const QRect g = view_.graphRect;
    view_.picF_MouseDown(button, x - g.left(), y - g.top());
}

void PhaseWindow::move(int buttons, int x, int y) {
    const QRect g = view_.graphRect;
    view_.picF_MouseMove(buttons, x - g.left(), y - g.top());
}

void PhaseWindow::release(int button, int x, int y) {
    view_.picF_MouseUp(button, x, y);
}

void PhaseWindow::traceChanged() {
    if (!loaded_) return;
    view_.traceChanged();
    refresh();
}

void PhaseWindow::redraw() {
    if (!loaded_) return;
    view_.Cls(); // the colours may have changed
    view_.UpdateFasa();
    view_.Draw_s();
    refresh();
}

void PhaseWindow::clearPicture() {
    view_.Cls();
    refresh();
}

void PhaseWindow::closeEvent(QCloseEvent* e) {
    if (loaded_) view_.Form_Unload();
    e->accept();
}

} // namespace kv
