// kelvorandine-cli render: a view as the workbench window shows it, drawn offscreen into a PNG,
// through the picture export into a BMP or JPEG, or through the print layout into a PDF.
#include "cli/commands.h"
#include "engine/display_map.h"
#include "engine/spectrum.h"
#include "output/picture_export.h"
#include "output/printing.h"
#include "platform/files.h"
#include "references/spectrum_refs.h"
#include "references/time_phase_refs.h"
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

/// The output's ending in upper case; one the command cannot write is a usage error.
std::string outputKind(const std::string& path) {
    const std::string title = fileTitleOf(path);
    const auto dot = title.find_last_of('.');
    const std::string ending = dot == std::string::npos ? "" : upperAscii(title.substr(dot + 1));
    if (ending == "PNG" || ending == "BMP" || ending == "JPG" || ending == "PDF") return ending;
    throw UsageError("-o wants a file ending in .png, .bmp, .jpg or .pdf, got: " + path);
}

/// Writes the picture as the output's ending asks: PNG directly, BMP and JPEG the way "Save
/// window as" does (through print.bmp, removed afterwards as the workbench removes it at exit),
/// PDF the way a print-out to PDF does.
bool writeOutput(Session& s, const QImage& img, const std::string& kind, const std::string& path) {
    if (kind == "PNG") return img.save(QString::fromStdString(path), "PNG");
    if (kind == "PDF") {
        output::PrintJob job;
        job.printer = output::kPdfPrinter;
        job.pdfPath = path;
        return output::printPicture(img, job);
    }
    const bool written = output::savePrintBmp(s.wb, img) && output::saveWindowAs(s.wb, path);
    removeFileQuietly(output::printBmpPath(s.st));
    return written;
}

} // namespace

int runRender(const RenderOptions& r, const std::string& exeDir) {
    const bool rows = r.view == "waterfall" || r.view == "radargram";
    if (r.view != "spectrum" && r.view != "oscope" && r.view != "phase" && !rows)
        throw UsageError(
            "render draws --view spectrum, oscope, phase, waterfall or radargram; not: " + r.view);
    const QSize size = parseSize(r.size);
    if (r.trace < 0) throw UsageError("--trace wants a position of 0 or more");
    const std::string kind = outputKind(r.output);
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
    // The references go with the view of their kind; they are read from where they lie and
    // the home's own reference files are left alone.
    const std::string wanted = r.view == "spectrum" ? "spectrum"
                               : r.view == "oscope" ? "time"
                                                    : "phase";
    if (rows && (!r.ref1.empty() || !r.ref2.empty()))
        throw UsageError("--ref1 and --ref2 go with --view spectrum, oscope or phase");
    for (const std::string* ref : {&r.ref1, &r.ref2}) {
        if (ref->empty()) continue;
        if (referenceKindOf(*ref) != wanted)
            throw UsageError("--view " + r.view +
                             " draws references of its own kind; not: " + *ref);
        const int line = ref == &r.ref1 ? 1 : 2;
        ProgramState& st = s.st;
        if (wanted == "spectrum") {
            st.RefSelect = int16_t(line);
            readSpectrumRef(s.wb, line, *ref);
        } else if (wanted == "time") {
            setUnzoomedTimeSpan(st);
            if (readTimeRef(st, line, *ref)) (line == 1 ? st.TimeRef1On : st.TimeRef2On) = true;
        } else if (readPhaseRef(s.wb, line, *ref)) {
            (line == 1 ? st.PhaseRef1On : st.PhaseRef2On) = true;
        }
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
        if (s.st.TimeRef1On || s.st.TimeRef2On || s.st.PhaseRef1On || s.st.PhaseRef2On)
            view->command("CreateRef");
        img = view->picture().copy(0, 0, size.width(), size.height());
    }
    const bool written = writeOutput(s, img, kind, r.output);
    j = describe(s);
    j["TracePos"] = s.st.TracePos;
    j["PeakFreq"] = s.st.PeakFreq;
    j["PeakDb"] = s.st.PeakDb;
    j["output"] = r.output;
    j["written"] = written;
    j["RefOn"] = {s.st.RefOn1 || s.st.TimeRef1On || s.st.PhaseRef1On,
                  s.st.RefOn2 || s.st.TimeRef2On || s.st.PhaseRef2On};
    printJson(j);
    return written ? kExitOk : kExitNoData;
}

} // namespace kv::cli
