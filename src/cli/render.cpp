// kelvorandine-cli render: a view as the workbench window shows it, drawn offscreen into a PNG.
#include "cli/commands.h"
#include "engine/display_map.h"
#include "engine/spectrum.h"
#include "views/spectrum/spectrum_form.h"
#include "views/view_table.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <cstdio>
#include <iostream>
#include <memory>

namespace kv::cli {

namespace {

/// "800x600" as a size; anything else is a usage error.
QSize parseSize(const std::string& text) {
    int w = 0, h = 0;
    char x = 0, extra = 0;
    if (std::sscanf(text.c_str(), "%d%c%d%c", &w, &x, &h, &extra) != 3 || (x != 'x' && x != 'X') ||
        w < 80 || h < 60 || w > 10000 || h > 10000)
        throw UsageError("--size wants WxH (at least 80x60), got: " + text);
    return {w, h};
}

/// Pictures need fonts and a paint device, so a GUI application object; it never shows a
/// window, and needs no display.
std::unique_ptr<QGuiApplication> offscreenApp() {
    if (QGuiApplication::instance()) return nullptr;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "kelvorandine-cli";
    static char* argv[] = {name, nullptr};
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace

int runRender(const RenderOptions& r, const std::string& exeDir) {
    const bool rows = r.view == "waterfall" || r.view == "radargram";
    if (r.view != "spectrum" && r.view != "oscope" && r.view != "phase" && !rows)
        throw UsageError(
            "render draws --view spectrum, oscope, phase, waterfall or radargram; not: " + r.view);
    const QSize size = parseSize(r.size);
    if (r.trace < 0) throw UsageError("--trace wants a position of 0 or more");
    auto app = offscreenApp();

    Session s;
    nlohmann::json j;
    if (!openForWork(s, r.common, exeDir, j)) return kExitNoData;
    if (r.trace > s.st.LastTrace)
        throw UsageError("--trace must lie between 0 and " + std::to_string(s.st.LastTrace));
    applyConditioning(s, r.common);
    if (r.view == "spectrum" && !s.st.SpectrumOpen) {
        printJson(j);
        return kExitNoData;
    }
    QImage img;
    if (r.view == "spectrum") {
        // The plot with its labels over the whole picture; no scroll bar.
        spectrum::SpectrumForm form(s.wb);
        const QSize plot = spectrum::plotSizeFor(size);
        form.view().setPlotSize(plot.width(), plot.height());
        form.firstDraw();
        if (r.trace > 0) form.HS_Change(r.trace);
        img = QImage(size, QImage::Format_RGB32);
        QPainter p(&img);
        spectrum::paintSpectrumView(p, form.view(), s.st);
    } else if (rows) {
        // The window as it comes up, then one row for each trace from the first to --trace (or,
        // without it, as many as the picture holds).
        const ViewId v = r.view == "waterfall" ? ViewId::Waterfall : ViewId::Radargram;
        s.st.BscanShow = v == ViewId::Radargram ? 1 : 0;
        const auto view = viewTable().at(v).make(s.wb);
        view->load(size.width(), size.height());
        const int last = r.trace > 0 ? r.trace : std::min<int>(s.st.LastTrace, size.height());
        s.st.PlayRew = false;
        for (int k = 0; k <= last; ++k) {
            moveTo(s.st, k);
            FyllSpData(s.st);
            UpdateTopDb(s.st);
            view->traceChanged();
        }
        img = view->picture().copy(0, 0, size.width(), size.height());
    } else {
        // The window as it comes up, then the scroll bar moved to the trace asked for.
        const ViewId v = r.view == "oscope" ? ViewId::Oscope : ViewId::Phase;
        const auto view = viewTable().at(v).make(s.wb);
        view->load(size.width(), size.height());
        if (r.trace > 0) view->scrolled(r.trace);
        img = view->picture().copy(0, 0, size.width(), size.height());
    }
    const bool written = img.save(QString::fromStdString(r.output), "PNG");
    j = describe(s);
    j["TracePos"] = s.st.TracePos;
    j["PeakFreq"] = s.st.PeakFreq;
    j["PeakDb"] = s.st.PeakDb;
    j["output"] = r.output;
    j["written"] = written;
    printJson(j);
    return written ? kExitOk : kExitNoData;
}

} // namespace kv::cli
