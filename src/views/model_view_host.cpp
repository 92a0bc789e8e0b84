// Requests of the core passed on to the views' models.
#include "views/model_view_host.h"

#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "state/workbench.h"
#include "views/view_table.h"

namespace kv {

ViewModel* ModelViewHost::model(ViewId v) const {
    auto it = models_.find(v);
    return it == models_.end() ? nullptr : it->second.get();
}

template <class Request> void ModelViewHost::ask(ViewId v, Request request) {
    ViewModel* m = model(v);
    if (!m || !ready(v)) return;
    request(*m);
    changed(v);
}

void ModelViewHost::show(Workbench&, ViewId, ViewModel& m) {
    m.load(windowSize.width(), windowSize.height());
}

void ModelViewHost::loadView(Workbench& wb, ViewId v) {
    if (model(v)) {
        bringForward(v);
        return;
    }
    ViewModel& m = *(models_[v] = viewTable().at(v).make(wb));
    viewFlag(wb.st, v) = true;
    show(wb, v, m);
    viewActivated(wb, v);
}

void ModelViewHost::unloadView(Workbench& wb, ViewId v) {
    ViewModel* m = model(v);
    if (!m) return;
    if (ready(v)) m->unload();
    remove(v);
    models_.erase(v);
    viewUnloaded(wb, v);
}

void ModelViewHost::spectrumFirstDraw(Workbench& wb) {
    wb.st.SpectrumOpen = true;
    viewActivated(wb, ViewId::Spectrum);
    ask(ViewId::Spectrum, [](ViewModel& m) { m.firstDraw(); });
}

void ModelViewHost::maximiseView(Workbench& wb, ViewId v) {
    if (!model(v)) loadView(wb, v);
}

void ModelViewHost::redrawView(Workbench&, ViewId v) {
    ask(v, [](ViewModel& m) { m.redraw(); });
}

void ModelViewHost::traceChanged(Workbench&, ViewId v) {
    ask(v, [](ViewModel& m) { m.traceChanged(); });
}

void ModelViewHost::clearPicture(Workbench&, ViewId v) {
    ask(v, [](ViewModel& m) { m.clearPicture(); });
}

void ModelViewHost::spectrumFinalDraw(Workbench&) {
    ask(ViewId::Spectrum, [](ViewModel& m) { m.finalDraw(); });
}

void ModelViewHost::resetWaterfall(Workbench&, ViewId v, bool atEnd) {
    ask(v, [atEnd](ViewModel& m) { m.reset(atEnd); });
}

void ModelViewHost::setScrollValue(Workbench&, ViewId v, int value) {
    ask(v, [value](ViewModel& m) { m.setScrollValue(value); });
}

void ModelViewHost::viewCommand(Workbench&, ViewId v, const std::string& name) {
    ask(v, [&name](ViewModel& m) { m.command(name); });
}

} // namespace kv
