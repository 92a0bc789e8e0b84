// Print-outs of a view: the print dialog's behaviour (printer names from the system, copies,
// orientation, header and footer, making a printer the default), the page itself (header line,
// the window's picture fitted and centred, footer line), the quick print, and "Print to PDF", a
// printer that writes a PDF file, so that a print-out can be made on a machine with no printer.
#pragma once

#include <QImage>
#include <string>
#include <vector>

namespace kv {

struct Workbench;
class ModelViewHost;

/// What the print dialog shows, as the user set it.
struct PrinterFields {
    std::vector<std::string> cboPrinter; ///< the printers, "Print to PDF" last
    int cboPrinterIndex = 0;
    std::vector<std::string> cmbCopies;
    std::string cmbCopiesText; ///< the copies box's text, as typed
    int optOrien = 0;          ///< 0 portrait, 1 landscape
    std::string txtHeader, txtFot;
    std::string lblH, lblF; ///< the header and footer that go to the page
};

namespace output {

inline constexpr const char* kPdfPrinter = "Print to PDF";

/// One print-out: where it goes and how.
struct PrintJob {
    std::string printer; ///< a printer's name, or kPdfPrinter
    std::string pdfPath; ///< the file a PDF print-out goes to
    int copies = 1;
    int orientation = 0; ///< 0 portrait, 1 landscape
    std::string header, footer;
};

/// The system's printers by name, then "Print to PDF".
std::vector<std::string> printerNames();
/// The printer a print-out goes to when none is chosen: the one made the default in the print
/// dialog, else the system's default, else "Print to PDF".
std::string defaultPrinter(Workbench& wb);

/// Prints `picture` on one page as the job says. A PDF is written beside its name and renamed
/// over it. True when the page was made.
bool printPicture(const QImage& picture, const PrintJob& job);

/// `DoMyPrint`: print.bmp through printPicture. A PDF that could not be written gets a message;
/// a failed print on a printer ends silently.
bool DoMyPrint(Workbench& wb, const PrintJob& job);

/// Asks for the PDF file of a "Print to PDF" job; false when the user cancelled. A name without
/// the ending gets ".pdf".
bool choosePdfFile(Workbench& wb, PrintJob& job);

/// The quick print: the active view on the default printer, portrait, one copy, no header or
/// footer.
void quickPrint(Workbench& wb, const ModelViewHost& views);

} // namespace output

namespace dlgPrinter {

/// `CreatePicture` (the active view to print.bmp), the printers with the default selected, the
/// copies with the first shown. False when there is no picture to print: the form stays shut.
bool Form_Load(Workbench& wb, const ModelViewHost& views, PrinterFields& f);
/// The labels that go to the page follow the texts.
void txtHeader_Change(PrinterFields& f);
void txtFot_Change(PrinterFields& f);
/// Print: the copies are the whole part of the copies text, then DoMyPrint.
void Command1_Click(Workbench& wb, PrinterFields& f);
/// Makes the chosen printer the default of the workbench's print-outs.
void cmdSetDef_Click(Workbench& wb, PrinterFields& f);

} // namespace dlgPrinter
} // namespace kv
