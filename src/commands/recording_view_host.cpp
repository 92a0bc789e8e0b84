// View requests without a shell: flags kept, requests recorded.
#include "commands/recording_view_host.h"

#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "state/workbench.h"

namespace kv {

void RecordingViewHost::loadView(Workbench& wb, ViewId v) {
    log.push_back(std::string("load ") + viewName(v));
    viewFlag(wb.st, v) = true;
    viewActivated(wb, v);
}

void RecordingViewHost::unloadView(Workbench& wb, ViewId v) {
    if (!viewFlag(wb.st, v)) return;
    log.push_back(std::string("unload ") + viewName(v));
    viewUnloaded(wb, v);
}

void RecordingViewHost::spectrumFirstDraw(Workbench& wb) {
    log.push_back("firstDraw Spectrum");
    wb.st.SpectrumOpen = true;
    viewActivated(wb, ViewId::Spectrum);
}

void RecordingViewHost::maximiseView(Workbench& wb, ViewId v) {
    log.push_back(std::string("maximise ") + viewName(v));
    if (!viewFlag(wb.st, v)) loadView(wb, v);
}

void RecordingViewHost::arrange(Workbench&, int mode) {
    log.push_back("arrange " + std::to_string(mode));
}

void RecordingViewHost::redrawView(Workbench&, ViewId v) {
    log.push_back(std::string("redraw ") + viewName(v));
}

void RecordingViewHost::traceChanged(Workbench& wb, ViewId v) {
    log.push_back(std::string("trace ") + viewName(v) + " " + std::to_string(wb.st.TracePos));
}

void RecordingViewHost::clearPicture(Workbench&, ViewId v) {
    log.push_back(std::string("clear ") + viewName(v));
}

void RecordingViewHost::spectrumFinalDraw(Workbench&) {
    log.push_back("finalDraw Spectrum");
}

void RecordingViewHost::resetWaterfall(Workbench&, ViewId v, bool atEnd) {
    log.push_back(std::string("reset ") + viewName(v) + (atEnd ? " end" : ""));
}

void RecordingViewHost::setScrollValue(Workbench&, ViewId v, int value) {
    log.push_back(std::string("scroll ") + viewName(v) + " " + std::to_string(value));
}

void RecordingViewHost::viewCommand(Workbench&, ViewId v, const std::string& name) {
    log.push_back(std::string("command ") + viewName(v) + " " + name);
}

void RecordingViewHost::showDialog(Workbench&, const std::string& name, bool modal) {
    log.push_back("dialog " + name + (modal ? " modal" : " modeless"));
    dialogsShown.push_back(name);
}

void RecordingViewHost::closeDialog(Workbench&, const std::string& name) {
    log.push_back("close " + name);
}

void RecordingViewHost::pictureCommand(Workbench&, const std::string& name) {
    log.push_back("picture " + name);
}

} // namespace kv
