// The O-scope's window.
#include "app/oscope_window.h"

#include "state/workbench.h"

#include <QCloseEvent>

namespace kv {

OscopeWindow::OscopeWindow(Workbench& wb, QWidget* parent)
    : ComposedWindow(parent), wb_(wb), view_(wb) {
    setMouseTracking(true);
}

void OscopeWindow::resized(int w, int h) {
    if (!loaded_) {
        view_.Form_Load(w, h);
        loaded_ = true;
        view_.Form_Resize(w, h);
        if (!wb_.st.TempPath.empty()) view_.UpdateTime();
        return;
    }
    view_.Form_Resize(w, h);
}

void OscopeWindow::command(const std::string& name) {
    if (name == "mnuZoomIn") view_.mnuZoomIn();
    if (name == "mnuZoomOut") view_.mnuZoomOut();
    if (name == "mnuNoZoom") view_.mnuNoZoom();
    if (name == "mnuFlip") view_.mnuFlip();
    if (name == "mnuMxA") view_.mnuMxA();
    if (name == "mnuMa") view_.mnuMa();
    if (name == "mnuPP") view_.mnuPP();
    if (name == "mnuCur") view_.mnuCur();
    refresh();
}

void OscopeWindow::traceChanged() {
    if (!loaded_) return;
    view_.TimerDraw();
    refresh();
}

void OscopeWindow::redraw() {
    if (!loaded_) return;
    view_.UpdateTime();
    refresh();
}

void OscopeWindow::closeEvent(QCloseEvent* e) {
    if (loaded_) view_.Form_Unload();
    e->accept();
}

} // namespace kv
