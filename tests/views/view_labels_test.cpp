// Every view at its smallest window with the bundled sample on show, its read-outs switched on:
// each label it shows lies whole inside the picture and clear of every other, and the smallest
// window grows with the read-outs the user switches on.
#include "commands/commands.h"
#include "support/test_home.h"
#include "views/model_view_host.h"

#include <QFontMetrics>
#include <gtest/gtest.h>

using namespace kv;

namespace {

const char* const kSample = KV_HOME_DIR "/samples/sample_tone.wav";

struct Smallest : ::testing::Test {
    ModelViewHost views;
    test::Bench b{true, &views};

    void SetUp() override {
        b.start();
        b.import(kSample);
        ASSERT_GE(b.st.LastTrace, 0);
    }
    /// The view open, shrunk to its smallest window.
    ViewModel& atMinimum(ViewId v) {
        showView(b.wb, v);
        ViewModel* m = views.model(v);
        EXPECT_NE(m, nullptr);
        const QSize min = m->minimumSize();
        m->resize(min.width(), min.height());
        // Laying out again may bring labels of another length: the size holds for them too.
        EXPECT_EQ(m->minimumSize(), min);
        return *m;
    }
};

/// Where a label's text puts ink: its box holds the line's full height, descent and all, and
/// two lines may stand closer than that; a text turned upright keeps its box.
QRect inkOf(const Label& l) {
    const QRect box(l.left, l.top, l.width, l.height);
    if (l.height > l.width) return box;
    const QFontMetrics fm(labelFont());
    return fm.tightBoundingRect(QString::fromStdString(l.text))
        .translated(l.left + 1, l.top + fm.ascent())
        .intersected(box);
}

/// Every label inside the picture and no two of them on the same pixels.
void expectWholeAndApart(const ViewModel& m) {
    const QImage pic = m.picture();
    const std::vector<Label> labels = m.visibleLabels();
    EXPECT_GE(labels.size(), 4u) << "a view at its smallest still shows its labels";
    for (size_t i = 0; i < labels.size(); ++i) {
        const Label& a = labels[i];
        const QRect ra(a.left, a.top, a.width, a.height);
        EXPECT_TRUE(pic.rect().contains(ra))
            << '"' << a.text << "\" at " << ra.x() << ',' << ra.y() << ' ' << ra.width() << 'x'
            << ra.height() << " in " << pic.width() << 'x' << pic.height();
        for (size_t j = i + 1; j < labels.size(); ++j) {
            const Label& o = labels[j];
            EXPECT_FALSE(inkOf(a).intersects(inkOf(o)))
                << '"' << a.text << "\" runs into \"" << o.text << '"';
        }
    }
}

} // namespace

TEST_F(Smallest, EveryViewShowsItsLabelsWholeAtItsSmallestWindow) {
    for (int button : {41, 42, 43, 44, 45, 46}) // all six of the Spectrum view's read-outs
        pressButton(b.wb, button);
    for (ViewId v :
         {ViewId::Spectrum, ViewId::Oscope, ViewId::Phase, ViewId::Waterfall, ViewId::Radargram}) {
        SCOPED_TRACE(viewName(v));
        ViewModel& m = atMinimum(v);
        if (v == ViewId::Oscope)
            for (const char* key : {"MaxA", "MinA", "PtP"})
                TB_event9(b.wb, key);
        EXPECT_GE(m.minimumSize().width(), kMinViewWidth);
        EXPECT_GE(m.minimumSize().height(), kMinViewHeight);
        const QSize min = m.minimumSize();
        m.resize(min.width(), min.height());
        expectWholeAndApart(m);
        views.unloadView(b.wb, v);
    }
}

TEST_F(Smallest, TheSpectrumViewsSmallestWindowGrowsWithItsReadOuts) {
    ViewModel& m = atMinimum(ViewId::Spectrum);
    const int bare = m.minimumSize().width();
    pressButton(b.wb, 41);
    const int one = m.minimumSize().width();
    EXPECT_GT(one, bare);
    for (int button : {42, 43, 44, 45, 46})
        pressButton(b.wb, button);
    EXPECT_GT(m.minimumSize().width(), one + 300) << "six read-outs side by side";
    // Switched off again, the window may be as small as before.
    for (int button : {41, 42, 43, 44, 45, 46})
        pressButton(b.wb, button);
    EXPECT_EQ(m.minimumSize().width(), bare);
}

TEST_F(Smallest, TheSpectrumPhaseAndOscopeViewsTurnTheirAxisCaptionUpBesideTheGraph) {
    for (ViewId v : {ViewId::Spectrum, ViewId::Oscope, ViewId::Phase}) {
        SCOPED_TRACE(viewName(v));
        const ViewModel& m = atMinimum(v);
        const std::vector<Label> labels = m.visibleLabels();
        const auto up = std::find_if(labels.begin(), labels.end(),
                                     [](const Label& l) { return l.height > 3 * l.width; });
        ASSERT_NE(up, labels.end()) << "an upright caption";
        EXPECT_LT(up->right(), 30) << "left of the level labels";
        // Ink in the caption's box: the text reads from the foot up, so its box is taller than
        // wide and dark pixels run along its height.
        const QImage pic = m.picture();
        int top = pic.height(), bottom = -1;
        for (int y = up->top; y < up->bottom(); ++y)
            for (int x = up->left; x < up->right(); ++x)
                if (qGray(pic.pixel(x, y)) < 100) {
                    top = std::min(top, y);
                    bottom = std::max(bottom, y);
                }
        EXPECT_GT(bottom - top, up->height * 3 / 4) << up->text;
        views.unloadView(b.wb, v);
    }
}
