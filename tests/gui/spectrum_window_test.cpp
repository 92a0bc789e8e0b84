// The Spectrum view in the workbench, offscreen: the bundled sample imported through a scripted
// user, played with Fwd, Pause and End from the toolbar, the scroll bar following and moving
// the data, the peak on its pixel, and the pointer cross under a held mouse button.
#include "app/main_window.h"
#include "app/view_window.h"
#include "gui/gui_fixture.h"
#include "gui/sample_shell.h"
#include "views/spectrum/spectrum_form.h"

#include <QApplication>
#include <QLabel>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

using namespace kv;

namespace {

using test::kSample;
constexpr QRgb kGreen = 0x00FF00; // the factory curve colour

class SpectrumShell : public test::SampleShell {
  protected:
    /// The highest point of the curve on show.
    QPoint topOfCurve() const {
        const auto& pts = form->view().CurvePoints();
        return *std::min_element(pts.begin(), pts.end(),
                                 [](QPoint a, QPoint b) { return a.y() < b.y(); });
    }
};

} // namespace

TEST_F(SpectrumShell, PlaysPausesAndEndsWithTheCurveAndPanelsFollowing) {
    ASSERT_TRUE(sw && form);
    const ProgramState& st = w->state();
    host.onYield([&] {
        QApplication::processEvents();
        if (st.TracePos == 10) w->toolAction(11)->trigger(); // Pause
    });
    w->toolAction(12)->trigger(); // Fwd
    // Pause came inside the step to trace 10, before its read: the plot and the scroll bar
    // stay on trace 9, the last one drawn.
    EXPECT_EQ(st.TracePos, 10);
    EXPECT_EQ(sw->scrollBar()->value(), 9);
    EXPECT_EQ(sw->scrollBar()->maximum(), 47);
    EXPECT_EQ(w->panelLabel(6)->text(), "Peak: -6 dBFS 4.69kHz");
    EXPECT_EQ(w->panelLabel(4)->text(), "X-scale: linear ");

    // The peak of the 4687.5 Hz tone sits on its column, one dB scale step per pixel row down.
    const auto& view = form->view();
    const QPoint top = topOfCurve();
    EXPECT_NEAR(top.x(), 4687.5 / 24000.0 * view.PlotW(), view.ColStep());
    EXPECT_EQ(top.y(), int(std::lround(-6.0 * view.DbScale())));
    EXPECT_EQ(view.surface().pixel(top.x(), top.y()), kGreen);
    const spectrum::PlotMargins m;
    EXPECT_EQ(sw->picture().pixel(m.left + top.x(), m.top + top.y()) & 0xFFFFFFu, kGreen);

    host.onYield(nullptr);
    w->toolAction(13)->trigger(); // End
    EXPECT_EQ(st.TracePos, 47);
    EXPECT_EQ(sw->scrollBar()->value(), 47);
    EXPECT_EQ(w->panelLabel(8)->text(), "Single Trace mode");
    EXPECT_EQ(w->panelLabel(6)->text().left(6), "Peak: ");

    // The user drags the scroll bar back: the chain runs for that trace.
    sw->scrollBar()->setValue(5);
    EXPECT_EQ(st.TracePos, 5);
    EXPECT_EQ(st.CurrentTracePos, 1 + 5 * 1024 * 4);
    EXPECT_EQ(view.surface().pixel(topOfCurve().x(), topOfCurve().y()), kGreen);
}

TEST_F(SpectrumShell, ScaleButtonsRedrawTheViewOnItsNewAxes) {
    ASSERT_TRUE(sw && form);
    const auto& view = form->view();
    w->toolAction(28)->trigger(); // logarithmic X
    EXPECT_EQ(view.XUnitText(), "Frequency Hz");
    EXPECT_EQ(view.xLabels().front().text, "50") << "the first decade mark past one bin";
    // 4687.5 Hz is bin 100 of 512: at Log10(100) / Log10(512) of the width.
    const auto& pts = view.CurvePoints();
    const QPoint top =
        *std::min_element(pts.begin(), pts.end(), [](QPoint a, QPoint b) { return a.y() < b.y(); });
    EXPECT_NEAR(top.x(), std::log10(100.0) / std::log10(512.0) * view.PlotW(), 1.0);
    EXPECT_EQ(view.surface().pixel(top.x(), top.y()), kGreen);
}

TEST_F(SpectrumShell, ThePointerCrossReadsFrequencyAndLevelWhileTheButtonIsHeld) {
    ASSERT_TRUE(sw && form);
    const auto& view = form->view();
    const spectrum::PlotMargins m;
    QWidget* plot = sw; // the plot fills the window above its scroll bar
    const QPoint at(m.left + view.PlotW() / 2, m.top + view.PlotH() / 5);
    QTest::mousePress(plot, Qt::LeftButton, {}, at);
    EXPECT_TRUE(view.crossShown());
    EXPECT_EQ(view.lblMyFr().text, "F = 12kHz");
    const std::string level = view.lbldB().text;
    EXPECT_NEAR(std::stod(level), -20.0, 0.5);
    EXPECT_EQ(level.substr(level.size() - 6), "dBFS  ");
    QTest::mouseRelease(plot, Qt::LeftButton, {}, at);
    EXPECT_FALSE(view.crossShown());
    EXPECT_FALSE(view.lblMyFr().visible);
}

TEST_F(SpectrumShell, StackedTracesStayUntilFirstClearsThePlot) {
    ASSERT_TRUE(sw && form);
    const auto& surface = form->view().surface();
    auto lit = [&] {
        int n = 0;
        for (int y = 0; y < surface.height(); ++y)
            for (int x = 0; x < surface.width(); ++x)
                n += surface.pixel(x, y) == kGreen;
        return n;
    };
    w->state().ModeFFT = 2;
    sw->scrollBar()->setValue(1);
    const int one = lit();
    sw->scrollBar()->setValue(93); // the last trace is partly silence: a very different curve
    sw->scrollBar()->setValue(2);
    const int piled = lit();
    EXPECT_GT(piled, one);

    w->toolAction(9)->trigger(); // First empties the stack, then draws the first trace
    EXPECT_EQ(w->state().TracePos, 0);
    EXPECT_LT(lit(), piled);
    EXPECT_GT(lit(), 0);
}
