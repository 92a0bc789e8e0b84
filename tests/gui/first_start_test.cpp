// The workbench as a new user first sees it, offscreen: the bundled sample's read-outs, the
// Import dialog's list and start folder, our own icon, views that re-tile with the window,
// status panels that give way instead of overlapping, the scroll bar's tip and the keys that
// move through the traces.
#include "app/main_window.h"
#include "app/qt_host.h"
#include "app/view_window.h"
#include "gui/gui_fixture.h"
#include "import/file_filters.h"
#include "import/format_table.h"
#include "views/spectrum/spectrum_form.h"

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScrollBar>
#include <QStatusBar>
#include <QTest>
#include <gtest/gtest.h>

using namespace kv;

namespace {

using test::kSample;

class FirstStart : public test::GuiTest {
  protected:
    void SetUp() override {
        w = std::make_unique<MainWindow>(home.path(), &host);
        w->resize(1100, 760);
        w->show();
        w->importFile(kSample);
        QApplication::processEvents();
        sw = w->viewHost().viewWindow(ViewId::Spectrum);
    }
    void TearDown() override { w->close(); }

    ScriptedHost host;
    std::unique_ptr<MainWindow> w;
    ViewWindow* sw = nullptr;
};

} // namespace

TEST_F(FirstStart, TheSampleReadsTextbookFiguresUnderTheFactorySettings) {
    ASSERT_TRUE(sw);
    EXPECT_EQ(w->state().FFT_Window, 10) << "the factory Uniform window";
    // Ink along the top of the window, where the read-outs stand.
    const spectrum::PlotMargins m;
    auto topInk = [&] {
        const QImage pic = sw->picture();
        const QRgb back = pic.pixel(1, 1);
        int ink = 0;
        for (int y = 2; y < m.top - 2; ++y)
            for (int x = m.left; x < pic.width(); ++x)
                ink += pic.pixel(x, y) != back;
        return ink;
    };
    const int before = topInk();
    for (int button : {45, 41, 44, 43, 46}) // SNR, THD, SINAD, SFDR, ENOB
        w->toolAction(button)->trigger();
    const ProgramState& st = w->state();
    EXPECT_NEAR(st.PeakFreq, 4687.5, 1e-9);
    EXPECT_NEAR(st.THD_val, -49.6, 0.2);
    EXPECT_NEAR(st.SNR_dB, 82.0, 1.5);
    EXPECT_NEAR(st.SINAD_dB, 49.6, 0.2);
    EXPECT_NEAR(st.SFDR_dB, 50.0, 0.3);
    EXPECT_NEAR(st.ENOB_bits, 7.95, 0.05);
    EXPECT_EQ(st.An[1].rfind("THD: -49.", 0), 0u) << st.An[1];
    EXPECT_EQ(st.An[4].rfind("ENOB: 7.", 0), 0u) << st.An[4];
    // The read-outs are on show along the top of the plot, in the window's picture.
    EXPECT_GT(topInk(), before + 300);
}

TEST_F(FirstStart, TheImportDialogListsEachEntryOnceThenAllSupportedFiles) {
    QFileDialog dlg;
    dlg.setOption(QFileDialog::DontUseNativeDialog);
    const QStringList filters = prepareFileDialog(dlg, importDialogFilter(1), 6, home.path());
    auto* combo = dlg.findChild<QComboBox*>("fileTypeCombo");
    ASSERT_TRUE(combo);
    const int entries = int(formatTable().rows().size());
    ASSERT_EQ(combo->count(), entries + 1);
    EXPECT_EQ(combo->itemText(0), "WAVE Files(*.wav)");
    EXPECT_EQ(combo->itemText(7), "SPRScan ERA SEG-2(*sg2)");
    EXPECT_EQ(combo->itemText(entries), "All supported files");
    for (int i = 0; i < combo->count(); ++i) {
        SCOPED_TRACE(combo->itemText(i).toStdString());
        EXPECT_EQ(combo->itemText(i).count('('), i == entries ? 0 : 1) << "one pattern, shown once";
        EXPECT_EQ(chosenFilterPosition(filters, combo->itemText(i)), i + 1);
    }
    EXPECT_EQ(chosenFilterPosition(filters, dlg.selectedNameFilter()), 6) << "Radsys";
    EXPECT_EQ(QDir(dlg.directory()).absolutePath(), QDir(home.path().c_str()).absolutePath());
    // The patterns that pick files are the real ones.
    EXPECT_TRUE(filters[0].endsWith("(*.wav)"));
    EXPECT_TRUE(filters[entries].contains("*.segy"));
}

TEST_F(FirstStart, OurOwnIconOnTheWindow) {
    EXPECT_FALSE(w->windowIcon().isNull());
    EXPECT_FALSE(QApplication::windowIcon().isNull());
    const QImage icon = w->windowIcon().pixmap(64, 64).toImage();
    // The dark tile with the green bars of the drawing, not the toolkit's own mark.
    EXPECT_EQ(icon.pixelColor(32, 60).name(), "#263238");
    EXPECT_EQ(icon.pixelColor(26, 45).name(), "#43a047");
}

TEST_F(FirstStart, TiledViewsReTileWhenTheWindowIsResized) {
    w->menuAction("mnuOlOp")->trigger(); // All open: tiled one above the other
    auto subs = w->mdiArea()->subWindowList();
    ASSERT_GE(subs.size(), 3);
    auto fillsTheArea = [&] {
        const QRect area = w->mdiArea()->viewport()->rect();
        int bottom = 0;
        for (auto* s : subs) {
            EXPECT_EQ(s->width(), area.width());
            bottom = std::max(bottom, s->geometry().bottom());
        }
        EXPECT_EQ(bottom, area.bottom());
    };
    fillsTheArea();
    w->resize(800, 900);
    QApplication::processEvents();
    fillsTheArea();
    w->resize(1300, 700);
    QApplication::processEvents();
    fillsTheArea();

    // Cascaded windows are the user's: a resize leaves them.
    w->menuAction("mnuCasc")->trigger();
    const QRect before = subs[0]->geometry();
    w->resize(900, 650);
    QApplication::processEvents();
    EXPECT_EQ(subs[0]->geometry(), before);
}

TEST_F(FirstStart, StatusPanelsGiveWayInsteadOfOverlapping) {
    w->resize(520, 600);
    QApplication::processEvents();
    QRect previous;
    for (int p = 1; p <= 9; ++p) {
        QLabel* l = w->panelLabel(p);
        if (!l->isVisible()) continue;
        const QRect r = l->geometry();
        if (!previous.isNull()) {
            EXPECT_LE(previous.right(), r.left()) << p;
        }
        EXPECT_LE(r.right(), w->statusBar()->width()) << p;
        previous = r;
    }
    EXPECT_EQ(w->panelLabel(6)->toolTip(), w->panelLabel(6)->text()) << "the whole text as tip";
}

TEST_F(FirstStart, TheScrollBarTipAndTheKeysFollowTheTraceOnShow) {
    ASSERT_TRUE(sw);
    QScrollBar* hs = sw->scrollBar();
    EXPECT_EQ(hs->toolTip(), "Trace 1 of 48");
    hs->setValue(5);
    EXPECT_EQ(hs->toolTip(), "Trace 6 of 48");

    QTest::keyClick(w.get(), Qt::Key_Right);
    EXPECT_EQ(w->state().TracePos, 6);
    EXPECT_EQ(hs->value(), 6);
    EXPECT_EQ(hs->toolTip(), "Trace 7 of 48");
    QTest::keyClick(w.get(), Qt::Key_Left);
    QTest::keyClick(w.get(), Qt::Key_Left);
    EXPECT_EQ(w->state().TracePos, 4);
    QTest::keyClick(w.get(), Qt::Key_End);
    EXPECT_EQ(w->state().TracePos, 47);
    EXPECT_EQ(hs->toolTip(), "Trace 48 of 48");
    QTest::keyClick(w.get(), Qt::Key_Right);
    EXPECT_EQ(w->state().TracePos, 47) << "the last trace is the end";
    QTest::keyClick(w.get(), Qt::Key_Home);
    EXPECT_EQ(w->state().TracePos, 0);
    EXPECT_EQ(hs->value(), 0);
    // The caption stays as the workbench gives it.
    EXPECT_EQ(w->windowTitle().toStdString(), "Kelvorandine   sample_tone.wav - [Spectrum view]");
}
