// Print-outs on printers and as PDF.
#include "output/printing.h"

#include "output/picture_export.h"
#include "output/print_layout.h"
#include "platform/files.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "state/workbench.h"

#include <QFontMetricsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <algorithm>
#include <filesystem>
#include <system_error>

namespace kv {

namespace {
// Where the print dialog keeps the printer made the default, among this user's settings.
constexpr const char* kDefaultSection = "Printer";
constexpr const char* kDefaultKey = "Default";
} // namespace

namespace output {

namespace {

/// Header line, picture, footer line on the device `painter` paints on, whose printable area is
/// `printable` (device units, origin at its top-left).
void paintPage(QPainter& painter, QSizeF printable, double unitsPerTwip, const QImage& picture,
               const PrintJob& job) {
    QFont font(QStringLiteral("Sans Serif"));
    font.setPointSizeF(10);
    painter.setFont(font);
    const QFontMetricsF fm(font, painter.device());
    const QString header = QString::fromStdString(job.header);
    const QString footer = QString::fromStdString(job.footer);
    const QSizeF hs(fm.horizontalAdvance(header), fm.height());
    const QSizeF fs(fm.horizontalAdvance(footer), fm.height());
    // The picture's size as the screen shows it: 15 twips a pixel.
    const QSizeF pictureTwips(picture.width() * 15.0, picture.height() * 15.0);
    const PrintLayout l = layoutPrintPage(pictureTwips, printable, unitsPerTwip, hs, fs);
    painter.drawImage(l.picture, picture);
    painter.drawText(l.header, Qt::AlignLeft | Qt::AlignTop, header);
    painter.drawText(l.footer, Qt::AlignLeft | Qt::AlignTop, footer);
}

QPageLayout::Orientation orientationOf(const PrintJob& job) {
    return job.orientation == 1 ? QPageLayout::Landscape : QPageLayout::Portrait;
}

bool printPdf(const QImage& picture, const PrintJob& job) {
    const std::string tmp = job.pdfPath + ".tmp";
    bool painted = false;
    {
        QPdfWriter pdf(QString::fromStdString(tmp));
        pdf.setResolution(600);
        pdf.setPageSize(QPageSize(QPageSize::A4));
        pdf.setPageOrientation(orientationOf(job));
        // The margins a printer keeps, so the page looks as it would on paper.
        pdf.setPageMargins(QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
        QPainter painter;
        if (painter.begin(&pdf)) {
            const QRect area = pdf.pageLayout().paintRectPixels(pdf.resolution());
            paintPage(painter, QSizeF(area.size()), pdf.resolution() / 1440.0, picture, job);
            painted = painter.end();
        }
    }
    std::error_code ec;
    if (painted && fileSize(tmp) > 0) {
        std::filesystem::rename(tmp, job.pdfPath, ec);
        if (!ec) return true;
    }
    removeFileQuietly(tmp);
    return false;
}

bool printOnPrinter(const QImage& picture, const PrintJob& job) {
    const QPrinterInfo info = QPrinterInfo::printerInfo(QString::fromStdString(job.printer));
    if (info.isNull()) return false;
    QPrinter printer(info, QPrinter::HighResolution);
    printer.setCopyCount(std::max(1, job.copies));
    printer.setPageOrientation(orientationOf(job));
    QPainter painter;
    if (!painter.begin(&printer)) return false;
    const QRect area = printer.pageLayout().paintRectPixels(printer.resolution());
    paintPage(painter, QSizeF(area.size()), printer.resolution() / 1440.0, picture, job);
    return painter.end();
}

} // namespace

std::vector<std::string> printerNames() {
    std::vector<std::string> names;
    for (const QString& n : QPrinterInfo::availablePrinterNames())
        names.push_back(n.toStdString());
    names.push_back(kPdfPrinter);
    return names;
}

std::string defaultPrinter(Workbench& wb) {
    const auto names = printerNames();
    const auto known = [&](const std::string& n) {
        return !n.empty() && std::find(names.begin(), names.end(), n) != names.end();
    };
    const std::string chosen = wb.host.userSetting(kDefaultSection, kDefaultKey, "");
    if (known(chosen)) return chosen;
    const std::string system = QPrinterInfo::defaultPrinterName().toStdString();
    if (known(system)) return system;
    return kPdfPrinter;
}

bool printPicture(const QImage& picture, const PrintJob& job) {
    if (picture.isNull()) return false;
    if (job.printer == kPdfPrinter) return printPdf(picture, job);
    return printOnPrinter(picture, job);
}

bool DoMyPrint(Workbench& wb, const PrintJob& job) {
    QImage picture;
    picture.load(QString::fromStdString(printBmpPath(wb.st)), "BMP");
    const bool printed = printPicture(picture, job);
    if (!printed && job.printer == kPdfPrinter)
        wb.host.message("The print-out could not be written to " + job.pdfPath +
                            ". Check that the folder can be written to and that the disk has "
                            "room.",
                        kMessageTitle, MsgIcon::Critical);
    return printed;
}

bool choosePdfFile(Workbench& wb, PrintJob& job) {
    const FileChoice c = wb.host.saveFile("PDF Files(*.pdf)|*.pdf|", kPdfPrinter, 1, "");
    if (c.cancelled || c.path.empty()) return false;
    job.pdfPath = c.path;
    const std::string up = upperAscii(c.path);
    if (up.size() < 4 || up.compare(up.size() - 4, 4, ".PDF") != 0) job.pdfPath += ".pdf";
    return true;
}

void quickPrint(Workbench& wb, const ModelViewHost& views) {
    if (!PrintNu(wb, views)) return;
    PrintJob job;
    job.printer = defaultPrinter(wb);
    if (job.printer == kPdfPrinter && !choosePdfFile(wb, job)) return;
    DoMyPrint(wb, job);
}

} // namespace output

namespace dlgPrinter {

bool Form_Load(Workbench& wb, const ModelViewHost& views, PrinterFields& f) {
    if (!output::PrintNu(wb, views)) return false;
    f.cboPrinter = output::printerNames();
    const std::string def = output::defaultPrinter(wb);
    const auto it = std::find(f.cboPrinter.begin(), f.cboPrinter.end(), def);
    f.cboPrinterIndex = it == f.cboPrinter.end() ? 0 : int(it - f.cboPrinter.begin());
    f.cmbCopies.clear();
    for (int n = 1; n <= 10; ++n)
        f.cmbCopies.push_back(std::to_string(n));
    f.cmbCopiesText = f.cmbCopies.front();
    txtHeader_Change(f);
    txtFot_Change(f);
    return true;
}

void txtHeader_Change(PrinterFields& f) {
    f.lblH = f.txtHeader;
}

void txtFot_Change(PrinterFields& f) {
    f.lblF = f.txtFot;
}

void Command1_Click(Workbench& wb, PrinterFields& f) {
    if (f.cboPrinterIndex < 0 || f.cboPrinterIndex >= int(f.cboPrinter.size())) return;
    output::PrintJob job;
    job.printer = f.cboPrinter[size_t(f.cboPrinterIndex)];
    job.copies = std::max(1, int(std::clamp(Fix(Val(f.cmbCopiesText)), 1.0, 999.0)));
    job.orientation = f.optOrien == 1 ? 1 : 0;
    job.header = f.lblH;
    job.footer = f.lblF;
    if (job.printer == output::kPdfPrinter && !output::choosePdfFile(wb, job)) return;
    output::DoMyPrint(wb, job);
}

void cmdSetDef_Click(Workbench& wb, PrinterFields& f) {
    if (f.cboPrinterIndex < 0 || f.cboPrinterIndex >= int(f.cboPrinter.size())) return;
    wb.host.setUserSetting(kDefaultSection, kDefaultKey, f.cboPrinter[size_t(f.cboPrinterIndex)]);
}

} // namespace dlgPrinter
} // namespace kv
