// Print-outs: the page layout fits a wide and a tall picture on portrait and landscape pages,
// centred, with the header above and the footer below; a PDF print-out is one page with the
// picture on it; the print dialog lists "Print to PDF" after the system's printers and remembers
// the default.
#include "output/print_layout.h"
#include "output/printing.h"
#include "output_fixture.h"
#include "platform/files.h"

#include <QImage>
#include <cstdlib>
#include <filesystem>

namespace kv {
namespace {

using output::layoutPrintPage;
using test::Pictured;

// A page of 1000 x 1400 units, half a unit a twip; texts 100 x 20.
const QSizeF kPortrait(1000, 1400), kLandscape(1400, 1000), kText(100, 20);

TEST(PrintLayout, AWidePictureFillsThePortraitWidthAndIsCentredInHeight) {
    const auto l = layoutPrintPage({800, 400}, kPortrait, 0.5, kText, kText);
    EXPECT_FLOAT_EQ(l.scale, 1.25f);
    EXPECT_EQ(l.picture, QRectF(0, 450, 1000, 500));
    EXPECT_EQ(l.header, QRectF(450, 450 - 200, 100, 20)) << "400 twips above, centred";
    EXPECT_EQ(l.footer, QRectF(450, 950 + 100, 100, 20)) << "200 twips below";
}

TEST(PrintLayout, ATallPictureFillsTheHeightAndIsCentredInWidthWithTheLinesKeptOnThePage) {
    const auto l = layoutPrintPage({300, 900}, kPortrait, 0.5, {60, 20}, kText);
    const double w = 300 * double(float(1400.0 / 900.0));
    EXPECT_NEAR(l.picture.width(), w, 1e-9);
    // The scale is a 32-bit float: the height comes within a hair of the page's.
    EXPECT_NEAR(l.picture.height(), 1400, 1e-3);
    EXPECT_NEAR(l.picture.left(), (1000 - w) / 2, 1e-9);
    EXPECT_NEAR(l.picture.top(), 0, 1e-3);
    EXPECT_EQ(l.header, QRectF(470, 0, 60, 20)) << "no room above: the page's top edge";
    EXPECT_EQ(l.footer.top(), 1400 - 20) << "no room below: the page's foot";
}

TEST(PrintLayout, OnALandscapePageTheSameRulesHold) {
    const auto wide = layoutPrintPage({800, 400}, kLandscape, 0.5, kText, kText);
    EXPECT_EQ(wide.picture, QRectF(0, 150, 1400, 700));
    EXPECT_EQ(wide.header.top(), 0) << "150 - 200 would leave the page";
    EXPECT_EQ(wide.footer.top(), 850 + 100);

    const auto tall = layoutPrintPage({300, 900}, kLandscape, 0.5, kText, kText);
    EXPECT_NEAR(tall.picture.width(), 300 * double(float(1000.0 / 900.0)), 1e-9);
    EXPECT_NEAR(tall.picture.height(), 1000, 1e-3);
    EXPECT_NEAR(tall.picture.center().x(), 700, 1e-9);
}

TEST(PrintLayout, AnEmptyPictureHasNoPlace) {
    EXPECT_TRUE(layoutPrintPage({0, 10}, kPortrait, 0.5, kText, kText).picture.isNull());
}

/// Renders every page of `pdf` at 20 dpi as PNG files; returns them.
std::vector<std::string> renderPages(const std::string& pdf, const std::string& folder) {
    const std::string cmd = "pdftoppm -r 20 -png '" + pdf + "' '" + folder + "/page' 2>/dev/null";
    if (std::system(cmd.c_str()) != 0) return {};
    std::vector<std::string> pages;
    for (const auto& e : std::filesystem::directory_iterator(folder))
        if (e.path().filename().string().rfind("page", 0) == 0) pages.push_back(e.path().string());
    return pages;
}

/// Pixels of `img` that are not white.
int inkOf(const QImage& img) {
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            if ((img.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF) ++n;
    return n;
}

TEST_F(Pictured, APdfPrintOutIsOnePageWithThePictureOnIt) {
    if (std::system("command -v pdftoppm >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "pdftoppm (poppler-utils) is not installed";
    PrinterFields f;
    ASSERT_TRUE(dlgPrinter::Form_Load(b.wb, views, f));
    ASSERT_EQ(f.cboPrinter.back(), "Print to PDF");
    f.cboPrinterIndex = int(f.cboPrinter.size()) - 1;
    f.txtHeader = "Line 12";
    dlgPrinter::txtHeader_Change(f);
    EXPECT_EQ(f.lblH, "Line 12");
    b.host.queueFile(b.home.file("out"), 1);
    dlgPrinter::Command1_Click(b.wb, f);
    ASSERT_TRUE(fileExists(b.home.file("out.pdf"))) << "the ending is added";
    EXPECT_FALSE(fileExists(b.home.file("out.pdf.tmp")));

    std::filesystem::create_directory(b.home.file("pages"));
    const auto pages = renderPages(b.home.file("out.pdf"), b.home.file("pages"));
    ASSERT_EQ(pages.size(), 1u);
    const QImage page(QString::fromStdString(pages[0]));
    ASSERT_FALSE(page.isNull());
    EXPECT_LT(page.width(), page.height()) << "portrait";
    // The spectrum's dark background covers a good part of the page.
    EXPECT_GT(inkOf(page), page.width() * page.height() / 10);
    EXPECT_TRUE(b.host.messages.empty());
}

TEST_F(Pictured, ThePrintDialogRemembersTheDefaultAndACancelledPdfWritesNothing) {
    PrinterFields f;
    ASSERT_TRUE(dlgPrinter::Form_Load(b.wb, views, f));
    EXPECT_EQ(f.cmbCopiesText, "1");
    f.cboPrinterIndex = int(f.cboPrinter.size()) - 1;
    dlgPrinter::cmdSetDef_Click(b.wb, f);
    EXPECT_EQ(output::defaultPrinter(b.wb), "Print to PDF");
    b.host.queueCancel();
    dlgPrinter::Command1_Click(b.wb, f);
    EXPECT_TRUE(b.host.messages.empty());

    test::LimitedFolder ro(b.home.file("ro"), "64k", true);
    if (!ro.usable()) return;
    b.host.queueFile(ro.file("out.pdf"), 1);
    dlgPrinter::Command1_Click(b.wb, f);
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text.rfind("The print-out could not be written", 0), 0u);
}

TEST_F(Pictured, TheQuickPrintGoesToTheDefaultPrinterWithoutTheDialog) {
    b.host.setUserSettingValue("Printer", "Default", "Print to PDF");
    b.host.queueFile(b.home.file("quick.pdf"), 1);
    output::quickPrint(b.wb, views);
    EXPECT_TRUE(fileExists(b.home.file("quick.pdf")));
    ASSERT_EQ(b.host.dialogTitles.size(), 1u) << "only the PDF's file is asked for";
    EXPECT_EQ(b.host.dialogTitles[0], "Print to PDF");
}

} // namespace
} // namespace kv
