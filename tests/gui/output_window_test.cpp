// Pictures, file information and options from the workbench's own menus, offscreen: Save window
// as writes the active view's window as the user sees it, File Info lists the source's facts, and
// the options dialog's widgets reach the settings.
#include "app/main_window.h"
#include "app/settings_form.h"
#include "app/view_window.h"
#include "gui/gui_fixture.h"
#include "platform/files.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kv;

namespace {

using test::kSample;
using Shell = test::GuiTest;

TEST_F(Shell, SaveWindowAsWritesTheActiveViewAsItsWindowShowsIt) {
    ScriptedHost host;
    MainWindow w(home.path(), &host);
    w.resize(1000, 700);
    w.show();
    w.importFile(kSample);
    ASSERT_TRUE(w.menuAction("mnuSw")->isEnabled());
    ASSERT_TRUE(w.toolAction(5)->isEnabled());
    ViewWindow* view = w.viewHost().viewWindow(ViewId::Spectrum);
    ASSERT_NE(view, nullptr);
    QApplication::processEvents();

    host.queueFile(home.file("view.bmp"), 1);
    w.menuAction("mnuSw")->trigger();
    QImage saved(QString::fromStdString(home.file("view.bmp")));
    ASSERT_FALSE(saved.isNull());
    saved = saved.convertToFormat(QImage::Format_RGB32);
    // The window's grab is the same picture, up to where its scroll bar begins.
    const QImage grab = view->grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(saved.width(), grab.width());
    const int above = view->scrollBar()->isVisible() ? view->scrollBar()->y() : grab.height();
    EXPECT_TRUE(saved.copy(0, 0, saved.width(), above) == grab.copy(0, 0, grab.width(), above));

    host.queueFile(home.file("view.jpg"), 2);
    w.toolAction(5)->trigger();
    EXPECT_EQ(QImage(QString::fromStdString(home.file("view.jpg"))).size(), saved.size());
    EXPECT_TRUE(host.messages.empty());
    w.close();
    EXPECT_FALSE(fileExists(home.file("print.bmp"))) << "the hand-over goes at exit";
}

TEST_F(Shell, FileInfoFromTheToolbarListsTheSourcesFacts) {
    ScriptedHost host;
    MainWindow w(home.path(), &host);
    w.show();
    w.importFile(kSample);
    ASSERT_TRUE(w.menuAction("mnuFInf")->isEnabled());
    w.toolAction(4)->trigger();
    ASSERT_NE(w.fileInfoForm(), nullptr);
    QListWidget* list = w.fileInfoForm()->list();
    ASSERT_EQ(list->count(), 5);
    EXPECT_EQ(list->item(0)->text(), "Samples/trace : 1024");
    EXPECT_EQ(list->item(2)->text(), "Sample Rate(Hz) : 48000");
    EXPECT_EQ(list->item(4)->text(), "Mono File");
    w.close();
}

} // namespace

namespace {

/// Runs `act` on the options dialog once it is up (it is modal: the menu's trigger returns
/// when it has closed).
void onOptionsDialog(const std::function<void(SettingsForm&)>& act) {
    QTimer::singleShot(0, [act] {
        auto* form = qobject_cast<SettingsForm*>(QApplication::activeModalWidget());
        ASSERT_NE(form, nullptr);
        act(*form);
    });
}

template <class W> W* child(QWidget& w, const char* name) {
    return w.findChild<W*>(QString::fromLatin1(name));
}

TEST_F(Shell, TheOptionsDialogSavesWhatItsPagesSetAndCancelKeepsTheOldValues) {
    ScriptedHost host;
    MainWindow w(home.path(), &host);
    w.show();
    w.importFile(kSample);
    ASSERT_TRUE(w.menuAction("mnuOp")->isEnabled());

    onOptionsDialog([](SettingsForm& f) {
        child<QComboBox>(f, "cmbWindow")->setCurrentIndex(6);
        child<QCheckBox>(f, "chFasa")->setChecked(false);
        child<QPushButton>(f, "Command1")->click();
    });
    w.menuAction("mnuOp")->trigger();
    EXPECT_EQ(w.state().FFT_Window, 10) << "Cancel keeps the old window";
    EXPECT_EQ(w.state().F_ShowGrid, 1);

    onOptionsDialog([](SettingsForm& f) {
        child<QComboBox>(f, "cmbWindow")->setCurrentIndex(6);
        child<QCheckBox>(f, "chFasa")->setChecked(false);
        child<QPushButton>(f, "Command3")->click();
    });
    w.toolAction(3)->trigger();
    EXPECT_EQ(w.state().FFT_Window, 7);
    EXPECT_EQ(w.state().F_ShowGrid, 0);
    const std::string ini = test::readText(home.file("SP.ini"));
    EXPECT_NE(ini.find("FFT_Window=7"), std::string::npos);
    EXPECT_NE(ini.find("F_ShowGrid=0"), std::string::npos);
    EXPECT_TRUE(w.state().SpectrumOpen);
    EXPECT_TRUE(host.messages.empty());
    w.close();
}

TEST_F(Shell, ThePrintDialogPrintsToPdfWithItsHeader) {
    ScriptedHost host;
    MainWindow w(home.path(), &host);
    w.show();
    w.importFile(kSample);
    QTimer::singleShot(0, [&] {
        auto* form = qobject_cast<PrinterForm*>(QApplication::activeModalWidget());
        ASSERT_NE(form, nullptr);
        form->cboPrinter()->setCurrentText("Print to PDF");
        form->txtHeader()->setText("Survey line 3");
        EXPECT_EQ(form->lblH()->text(), "Survey line 3");
        host.queueFile(home.file("page.pdf"), 1);
        child<QPushButton>(*form, "Command1")->click();
        child<QPushButton>(*form, "Command2")->click();
    });
    w.menuAction("mnuPrint")->trigger();
    EXPECT_GT(fileSize(home.file("page.pdf")), 1000);
    EXPECT_TRUE(host.messages.empty());
    w.close();
}

} // namespace
