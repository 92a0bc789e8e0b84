// The main window offscreen: it starts with three buttons, imports the bundled sample, mirrors
// the command model, arranges its views, and plays through the data from its toolbar with the
// user scripted (Pause pressed from inside the running loop).
#include "app/main_window.h"
#include "commands/lifecycle.h"
#include "gui/gui_fixture.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <gtest/gtest.h>

using namespace kv;

namespace {

using test::kSample;
using Shell = test::GuiTest;

std::vector<int> shownButtons(MainWindow& w) {
    std::vector<int> v;
    for (int n = 1; n <= 105; ++n)
        if (w.commands().button(n).key.size() && w.toolAction(n)->isVisible()) v.push_back(n);
    return v;
}
} // namespace

TEST_F(Shell, StartsEmptyThenImportsTheSample) {
    MainWindow w(home.path());
    w.show();
    EXPECT_TRUE(w.toolAction(1)->isVisible());
    EXPECT_FALSE(w.toolAction(4)->isVisible());
    EXPECT_EQ(w.panelLabel(1)->text(), "Hallvik Instruments");
    EXPECT_FALSE(w.menuAction("mnuFFT")->isEnabled());

    w.importFile(kSample);
    EXPECT_FALSE(w.state().TempPath.empty());
    EXPECT_EQ(w.state().SampleRate, 48000.0);
    EXPECT_EQ(w.state().TraceCount, 48); // 48 traces of 1024 samples
    EXPECT_EQ(w.panelLabel(3)->text(), "FFT Bins: 512");
    EXPECT_EQ(w.panelLabel(9)->text(), "Mono");
    EXPECT_TRUE(w.menuAction("mnuFFT")->isEnabled());
    EXPECT_TRUE(w.toolAction(12)->isVisible());
    EXPECT_EQ(w.mdiArea()->subWindowList().size(), 1);
    EXPECT_TRUE(w.state().SpectrumOpen);
    EXPECT_EQ(w.windowTitle().toStdString(), "Kelvorandine   sample_tone.wav - [Spectrum view]");

    // Closing the only view goes back to the three-button start.
    w.mdiArea()->subWindowList().first()->close();
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(w.state().SpectrumOpen);
    EXPECT_TRUE(w.state().TempPath.empty());
    EXPECT_FALSE(w.toolAction(12)->isVisible());
    w.close();
}

TEST_F(Shell, MirrorsTheCommandModelWithCommandsToComeGreyed) {
    ScriptedHost host;
    MainWindow w(home.path(), &host);
    w.show();
    QStringList bar;
    for (QAction* a : w.menuBar()->actions())
        bar << a->text();
    EXPECT_EQ(bar, (QStringList{"&File", "&Edit", "&Tools", "&View", "&Window", "&Help"}));
    ASSERT_NE(w.popupMenu("mnuMyPopUp"), nullptr);
    EXPECT_EQ(w.popupMenu("mnuMyPopUp")->actions().size(), 3);

    w.importFile(kSample);
    std::vector<int> model;
    for (int n : w.commands().visibleButtons())
        if (!w.commands().button(n).key.empty()) model.push_back(n);
    EXPECT_EQ(shownButtons(w), model);
    EXPECT_EQ(w.toolAction(24)->toolTip(), "Show Grid");
    EXPECT_TRUE(w.toolAction(24)->isChecked()) << "grid on in the factory settings";
    EXPECT_TRUE(w.toolAction(53)->isVisible());
    EXPECT_TRUE(w.toolAction(53)->isEnabled());
    EXPECT_FALSE(w.menuAction("mnuDM")->isEnabled()) << "deleting a marker is not offered";
    EXPECT_TRUE(w.toolAction(47)->isEnabled()) << "whitening stands ready";
    EXPECT_TRUE(w.menuAction("mnuWhite")->isEnabled());
    // A metric from the toolbar: the menu entry's tick follows the button.
    ASSERT_TRUE(w.toolAction(41)->isEnabled());
    w.toolAction(41)->trigger();
    EXPECT_TRUE(w.state().ShowTHD);
    EXPECT_TRUE(w.menuAction("mnuThd")->isChecked());
    EXPECT_TRUE(w.toolAction(41)->isChecked());
    EXPECT_TRUE(w.menuAction("mnuxl")->isChecked());

    // A scale button goes through the core; ticks and panels follow.
    w.toolAction(28)->trigger();
    EXPECT_EQ(w.state().DrSet, 2);
    EXPECT_TRUE(w.menuAction("mnuxlog")->isChecked());
    EXPECT_FALSE(w.menuAction("mnuxl")->isChecked());
    EXPECT_EQ(w.panelLabel(4)->text(), "X-scale: logaritm ");
    w.close();
}

TEST_F(Shell, TilesViewsHorizontallyAndVertically) {
    MainWindow w(home.path());
    w.resize(1000, 800);
    w.show();
    w.importFile(kSample);
    w.workbench().views.loadView(w.workbench(), ViewId::Oscope);
    auto subs = w.mdiArea()->subWindowList();
    ASSERT_EQ(subs.size(), 2);
    w.menuAction("mnuHor")->trigger();
    EXPECT_EQ(subs[0]->width(), subs[1]->width());
    EXPECT_EQ(subs[0]->x(), subs[1]->x());
    EXPECT_LT(subs[0]->y() + subs[0]->height(), subs[1]->y() + 2);
    w.menuAction("mnuVert")->trigger();
    EXPECT_EQ(subs[0]->height(), subs[1]->height());
    EXPECT_LT(subs[0]->x() + subs[0]->width(), subs[1]->x() + 2);
    w.close();
}

TEST_F(Shell, PlaysFromTheToolbarAndPausesFromInsideTheLoop) {
    ScriptedHost host;
    MainWindow w(home.path(), &host);
    w.show();
    w.importFile(kSample);
    ASSERT_EQ(w.state().LastTrace, 47);
    host.onYield([&] {
        QApplication::processEvents();
        if (w.state().TracePos == 10) w.toolAction(11)->trigger(); // Pause
    });
    w.toolAction(12)->trigger(); // Fwd
    EXPECT_EQ(w.state().TracePos, 10);
    EXPECT_TRUE(w.state().Idle);
    EXPECT_TRUE(w.state().PlayPause);

    host.onYield(nullptr);
    w.toolAction(13)->trigger(); // End
    EXPECT_EQ(w.state().TracePos, 47);
    EXPECT_EQ(w.state().CurrentTracePos, 1 + 47 * 1024 * 4);
    EXPECT_EQ(w.panelLabel(8)->text(), "Single Trace mode");

    // Closing the window while a loop runs stops the loop first, then closes.
    w.toolAction(9)->trigger(); // First
    host.onYield([&] {
        if (w.state().TracePos == 3) w.close();
    });
    w.toolAction(12)->trigger();
    EXPECT_EQ(w.state().TracePos, 3);
    QApplication::processEvents();
    EXPECT_FALSE(w.isVisible());
}
