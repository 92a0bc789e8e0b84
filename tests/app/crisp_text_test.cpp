// The view windows on a screen of twice the pixels (a scale factor of 2), offscreen: the window
// shows the view's picture enlarged, and its labels painted again at the screen's resolution.
#include "app/main_window.h"
#include "app/view_window.h"
#include "gui/sample_shell.h"
#include "views/view_model.h"

#include <gtest/gtest.h>

using namespace kv;

namespace {

/// Set before the application starts, which reads it once; taken away after the test.
struct ScaleFactorTwo {
    ScaleFactorTwo() { qputenv("QT_SCALE_FACTOR", "2"); }
    ~ScaleFactorTwo() { qunsetenv("QT_SCALE_FACTOR"); }
};

class ScaleTwo : public ScaleFactorTwo, public test::SampleShell {};

/// Pixels of `grab` (device pixels) in the logical rectangle `r` that differ from the picture
/// enlarged pixel for pixel.
int differing(const QImage& grab, const QImage& picture, const QRect& r) {
    int n = 0;
    for (int y = 2 * r.top(); y < 2 * (r.bottom() + 1); ++y)
        for (int x = 2 * r.left(); x < 2 * (r.right() + 1); ++x)
            n += (grab.pixel(x, y) & 0xFFFFFFu) != (picture.pixel(x / 2, y / 2) & 0xFFFFFFu);
    return n;
}

} // namespace

TEST_F(ScaleTwo, LabelsAreDrawnAtTheScreensResolutionOverTheEnlargedPicture) {
    ViewWindow* sw = w->viewHost().viewWindow(ViewId::Spectrum);
    ASSERT_TRUE(sw);
    ASSERT_DOUBLE_EQ(sw->devicePixelRatioF(), 2.0);
    const QImage grab = sw->grab().toImage();
    const QImage picture = sw->picture();
    ASSERT_EQ(grab.size(), picture.size() * 2);
    // KV_SCREENSHOT=FILE.png keeps the top left corner of the grab, to look at.
    if (qEnvironmentVariableIsSet("KV_SCREENSHOT"))
        grab.copy(0, 0, 640, 400).save(qEnvironmentVariable("KV_SCREENSHOT"));

    const std::vector<Label> labels = sw->model().visibleLabels();
    int checked = 0;
    for (const Label& l : labels) {
        if (!l.opaque || l.text.size() < 2) continue;
        SCOPED_TRACE(l.text);
        // The text's strokes are finer than the enlarged picture's two-pixel steps.
        EXPECT_GT(differing(grab, picture, QRect(l.left, l.top, l.width, l.height)), 10);
        ++checked;
    }
    EXPECT_GE(checked, 5);
    const auto caption =
        std::find_if(labels.begin(), labels.end(), [](const Label& l) { return l.rotation == 90; });
    EXPECT_NE(caption, labels.end()) << "the upright caption is among them";

    // The plot is the view's own picture, enlarged as it is.
    const QRect plot = sw->model().textArea();
    EXPECT_EQ(differing(grab, picture, plot.adjusted(1, 1, -1, -1)), 0);
}
