// The main window offscreen: it starts with three buttons, imports the bundled sample, and
// mirrors the command model.
#include "app/main_window.h"
#include "support/test_home.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <gtest/gtest.h>

using namespace kv;

namespace {
int argc = 1;
char arg0[] = "gui_test";
char* argv[] = {arg0, nullptr};
} // namespace

TEST(MainWindow, StartsEmptyThenImportsTheSample) {
    QApplication app(argc, argv);
    test::TempHome home;
    MainWindow w(home.path());
    w.show();
    EXPECT_TRUE(w.toolAction(1)->isVisible());
    EXPECT_FALSE(w.toolAction(4)->isVisible());
    EXPECT_EQ(w.panelLabel(1)->text(), "Hallvik Instruments");
    EXPECT_FALSE(w.menuAction("mnuFFT")->isEnabled());

    w.importFile(KV_HOME_DIR "/samples/sample_1khz.wav");
    EXPECT_FALSE(w.state().TempPath.empty());
    EXPECT_EQ(w.state().SampleRate, 48000.0);
    EXPECT_EQ(w.state().TraceCount, 94); // 96000 samples / 1024, to even
    EXPECT_EQ(w.panelLabel(3)->text(), "FFT Bins: 512");
    EXPECT_EQ(w.panelLabel(9)->text(), "Mono");
    EXPECT_TRUE(w.menuAction("mnuFFT")->isEnabled());
    EXPECT_TRUE(w.toolAction(12)->isVisible());
    EXPECT_EQ(w.mdiArea()->subWindowList().size(), 1);
    EXPECT_TRUE(w.state().SpectrumOpen);
    EXPECT_TRUE(w.windowTitle().startsWith("Kelvorandine   sample_1khz.wav"));

    // Closing the only view goes back to the three-button start.
    w.mdiArea()->subWindowList().first()->close();
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(w.state().SpectrumOpen);
    EXPECT_TRUE(w.state().TempPath.empty());
    EXPECT_FALSE(w.toolAction(12)->isVisible());
    w.close();
}
