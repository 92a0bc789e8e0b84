// Spectrum, O-scope and Phase side by side in the workbench, offscreen, on the bundled sample:
// "All open" brings them up, a move of any view's scroll bar brings all three to the same
// trace, and the O-scope's commands reach it from the menu and the toolbar.
#include "app/main_window.h"
#include "app/view_window.h"
#include "platform/trace_store.h"
#include "support/test_home.h"
#include "views/oscilloscope/oscope_view.h"

#include <QAction>
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScrollBar>
#include <gtest/gtest.h>

using namespace kv;

namespace {
int argc = 1;
char arg0[] = "three_views_test";
char* argv[] = {arg0, nullptr};

const char* const kSample = KV_HOME_DIR "/samples/sample_tone.wav";

class ThreeViews : public ::testing::Test {
  protected:
    ThreeViews() {
        qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(home.path()));
        app = std::make_unique<QApplication>(argc, argv);
        w = std::make_unique<MainWindow>(home.path(), &host);
        w->resize(1200, 800);
        w->show();
        w->importFile(kSample);
        w->menuAction("mnuOlOp")->trigger();
        QApplication::processEvents();
        auto& vh = w->viewHost();
        sw = vh.viewWindow(ViewId::Spectrum);
        ow = vh.viewWindow(ViewId::Oscope);
        pw = vh.viewWindow(ViewId::Phase);
        oscope = vh.modelOf<oscope::OscopeView>(ViewId::Oscope);
    }
    ~ThreeViews() override { w->close(); }

    /// The trace at scroll position `pos` as the engine leaves it for the O-scope: read from the
    /// working file from its second float on (element 0 of the read is not shown).
    std::vector<float> traceAt(int pos) const {
        const ProgramState& st = w->state();
        std::vector<float> t(size_t(st.Sp_Samples) + 1);
        readTrace(st.ActiveTracePath, st.FirstTracePos + st.ScrollStride * pos, t.data(), t.size());
        t.erase(t.begin());
        return t;
    }

    /// All three views stand on trace `pos`: their scroll bars, and the O-scope's picture
    /// drawn from that trace.
    void expectAllOn(int pos) {
        const ProgramState& st = w->state();
        EXPECT_EQ(st.TracePos, pos);
        EXPECT_EQ(sw->scrollBar()->value(), pos);
        EXPECT_EQ(ow->scrollBar()->value(), pos);
        EXPECT_EQ(pw->scrollBar()->value(), pos);
        const auto want = traceAt(pos);
        ASSERT_GE(st.TraceBuf.size(), want.size());
        EXPECT_TRUE(std::equal(want.begin(), want.end(), st.TraceBuf.begin()));
        // The O-scope's first point is the trace's first sample on its row.
        const auto& v = *oscope;
        EXPECT_EQ(v.TracePoints()[0].y(),
                  int(std::lrint(v.ZeroLine() - want[0] * v.PixelsPerCount())));
    }

    test::TempHome home;
    std::unique_ptr<QApplication> app;
    ScriptedHost host;
    std::unique_ptr<MainWindow> w;
    ViewWindow* sw = nullptr;
    ViewWindow* ow = nullptr;
    ViewWindow* pw = nullptr;
    oscope::OscopeView* oscope = nullptr;
};

} // namespace

TEST_F(ThreeViews, EachViewsScrollBarBringsAllThreeToTheSameTrace) {
    ASSERT_TRUE(sw && ow && pw && oscope);
    const ProgramState& st = w->state();
    EXPECT_TRUE(st.SpectrumOpen && st.OscOpen && st.PhaseOpen);
    EXPECT_TRUE(w->commands().checked("mnuOlOp"));

    ow->scrollBar()->setValue(5);
    expectAllOn(5);
    pw->scrollBar()->setValue(11);
    expectAllOn(11);
    sw->scrollBar()->setValue(2);
    expectAllOn(2);
    EXPECT_TRUE(st.Idle);

    // The transport and playback move all three too.
    w->toolAction(13)->trigger(); // End
    expectAllOn(st.LastTrace);
    w->toolAction(9)->trigger(); // First
    expectAllOn(0);
    host.onYield([&] {
        QApplication::processEvents();
        if (st.TracePos == 6) w->toolAction(11)->trigger(); // Pause
    });
    w->toolAction(12)->trigger(); // Fwd
    host.onYield(nullptr);
    EXPECT_EQ(ow->scrollBar()->value(), sw->scrollBar()->value());
    EXPECT_EQ(pw->scrollBar()->value(), sw->scrollBar()->value());
    EXPECT_GE(ow->scrollBar()->value(), 5);
}

TEST_F(ThreeViews, OscopeCommandsComeFromTheMenuAndTheToolbar) {
    ASSERT_TRUE(oscope);
    // The commands serve the active view: bring the O-scope forward first.
    w->mdiArea()->setActiveSubWindow(w->viewHost().window(ViewId::Oscope));
    QApplication::processEvents();
    EXPECT_EQ(w->state().ActiveView, 1);
    w->menuAction("mnuZoomIn")->trigger();
    EXPECT_EQ(oscope->zoomDepth(), 1u);
    w->pressToolButton(72); // Flip
    EXPECT_TRUE(w->state().Flipped);
    w->menuAction("mnuCur")->trigger();
    EXPECT_TRUE(oscope->KursorOn());
    EXPECT_TRUE(oscope->picKVisible()[1]);
    w->menuAction("mnuNoZoom")->trigger();
    EXPECT_EQ(oscope->zoomDepth(), 0u);
    EXPECT_FALSE(oscope->ZoomOn());
}

TEST_F(ThreeViews, ANewImportRunsTheUnloadOfEveryViewItCloses) {
    ASSERT_TRUE(oscope);
    w->mdiArea()->setActiveSubWindow(w->viewHost().window(ViewId::Oscope));
    QApplication::processEvents();
    w->pressToolButton(72); // Flip
    w->pressToolButton(83); // Cursor
    ASSERT_TRUE(w->state().Flipped && oscope->KursorOn());

    w->importFile(kSample);
    EXPECT_FALSE(w->state().Flipped);
    EXPECT_FALSE(w->commands().button(83).down);
    EXPECT_EQ(w->viewHost().viewWindow(ViewId::Oscope), nullptr);

    w->menuAction("mnuTime")->trigger();
    QApplication::processEvents();
    auto* next = w->viewHost().modelOf<oscope::OscopeView>(ViewId::Oscope);
    ASSERT_NE(next, nullptr);
    EXPECT_FALSE(next->KursorOn());
    w->pressToolButton(83);
    EXPECT_TRUE(next->KursorOn()) << "one press brings the cursors up";
}

TEST_F(ThreeViews, TheSpectrumWindowReopenedBesideTheOthersScrollsTheWholeDataSet) {
    w->viewHost().window(ViewId::Spectrum)->close();
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_FALSE(w->state().SpectrumOpen);
    w->menuAction("mnuFFT")->trigger();
    QApplication::processEvents();
    sw = w->viewHost().viewWindow(ViewId::Spectrum);
    ASSERT_NE(sw, nullptr);
    EXPECT_EQ(sw->scrollBar()->maximum(), w->state().LastTrace);
    ow->scrollBar()->setValue(5);
    expectAllOn(5);
    w->toolAction(13)->trigger(); // End
    expectAllOn(w->state().LastTrace);
}
