// Changing only the pixels in which two curves differ must leave the very picture that erasing
// the old curve, painting the grid and drawing the new curve leaves.
#include "views/curve_repaint.h"

#include "platform/numeric.h"
#include "views/line_math.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <utility>
#include <vector>

using namespace kv;

namespace {

constexpr int kW = 61, kH = 47;
const QRgb kBack = qRgb(0, 0, 0), kLine = qRgb(0, 255, 0), kGrid = qRgb(90, 90, 90);

// A curve whose x never goes back, with steep, flat and empty steps, and points well outside
// the picture on every side.
std::vector<QPoint> randomCurve(std::mt19937& rng, int points) {
    std::uniform_int_distribution<int> dx(0, 4), y(-30, kH + 30), wild(0, 40);
    std::vector<QPoint> pts;
    int x = std::uniform_int_distribution<int>(-20, 5)(rng);
    for (int i = 0; i < points; ++i) {
        int row = y(rng);
        if (wild(rng) == 0) row = (wild(rng) % 2 ? 1 : -1) * 400000000; // beyond the clamp
        pts.emplace_back(x, row);
        x += wild(rng) == 0 ? 30 : dx(rng);
    }
    return pts;
}

std::vector<QLine> gridLines() {
    std::vector<QLine> g;
    for (int x : {6, 12, 18, 60, 0})
        g.emplace_back(x, 0, x, kH);
    for (int y : {5, 10, 46, 0, 0})
        g.emplace_back(0, y, kW, y);
    return g;
}

CurveScene sceneWith(std::vector<std::pair<std::vector<QPoint>, QRgb>> overlays = {}) {
    CurveScene s;
    s.back = kBack;
    s.line = kLine;
    s.grid = kGrid;
    s.gridLines = gridLines();
    s.overlays = std::move(overlays);
    return s;
}

void drawLongWay(Surface& g, const CurveScene& s, const std::vector<QPoint>& old,
                 const std::vector<QPoint>& now) {
    g.polyline(old, s.back);
    g.lines(s.gridLines.data(), s.gridLines.size(), s.grid);
    g.polyline(now, s.line);
    for (const auto& [pts, c] : s.overlays)
        g.polyline(pts, c);
}

::testing::AssertionResult samePicture(const Surface& a, const Surface& b) {
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y))
                return ::testing::AssertionFailure() << "differs at " << x << "," << y;
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(CurveSpans, CoverExactlyThePixelsTheLinePaints) {
    std::mt19937 rng(7);
    for (int round = 0; round < 400; ++round) {
        const std::vector<QPoint> pts = randomCurve(rng, 1 + round % 40);
        Surface g(kW, kH, kBack);
        g.polyline(pts, kLine);
        CurveSpans spans;
        ASSERT_TRUE(spans.build(pts.data(), pts.size(), kW, kH)) << round;
        for (int x = 0; x < kW; ++x)
            for (int y = 0; y < kH; ++y)
                ASSERT_EQ(g.pixel(x, y) == (kLine & 0xFFFFFF),
                          spans.top(x) <= y && y <= spans.bottom(x))
                    << "round " << round << " at " << x << "," << y;
    }
}

// A trace drawn about a point a pixel: every point on the picture, x moving on by zero to three
// columns, rows anywhere from one step to the next.
std::vector<QPoint> traceLikeCurve(std::mt19937& rng, int points) {
    std::uniform_int_distribution<int> dx(0, 3), y(0, kH - 1), near(-3, 3);
    std::vector<QPoint> pts;
    int x = 0, row = y(rng);
    while (int(pts.size()) < points && x < kW) {
        pts.emplace_back(x, row);
        x += dx(rng);
        row = dx(rng) == 0 ? std::clamp(row + near(rng), 0, kH - 1) : y(rng);
    }
    return pts;
}

::testing::AssertionResult spansMatchTheLine(const std::vector<QPoint>& pts) {
    Surface g(kW, kH, kBack);
    g.polyline(pts, kLine);
    CurveSpans spans;
    if (!spans.build(pts.data(), pts.size(), kW, kH))
        return ::testing::AssertionFailure() << "not told as runs";
    for (int x = 0; x < kW; ++x)
        for (int y = 0; y < kH; ++y)
            if ((g.pixel(x, y) == (kLine & 0xFFFFFF)) !=
                (spans.top(x) <= y && y <= spans.bottom(x)))
                return ::testing::AssertionFailure() << "differs at " << x << "," << y;
    return ::testing::AssertionSuccess();
}

TEST(CurveSpans, TraceLikeCurvesCoverExactlyThePixelsTheLinePaints) {
    std::mt19937 rng(19);
    for (int round = 0; round < 600; ++round)
        ASSERT_TRUE(spansMatchTheLine(traceLikeCurve(rng, 2 + round % 60))) << round;
    // Every steep step of two columns or fewer from one row, both ways, and the flat ones.
    for (int dx = 0; dx <= 3; ++dx)
        for (int dy = -kH + 1; dy < kH; ++dy) {
            const int from = dy < 0 ? kH - 1 : 0;
            ASSERT_TRUE(spansMatchTheLine({{5, from}, {5 + dx, from + dy}, {9, 20}}))
                << dx << "," << dy;
        }
}

TEST(CurveSpans, ACurveThatGoesBackIsNotTold) {
    const std::vector<QPoint> back = {{10, 5}, {20, 30}, {15, 8}};
    CurveSpans spans;
    EXPECT_FALSE(spans.build(back.data(), back.size(), kW, kH));
}

TEST(CurveRepaint, LeavesThePictureTheLongWayLeaves) {
    std::mt19937 rng(11);
    const std::vector<QPoint> ref = {{0, 20}, {30, 3}, {61, 40}};
    Surface quick(kW, kH, kBack), slow(kW, kH, kBack);
    // Paint of someone else's, off the curves' rows, survives both ways.
    quick.fillRect(40, 0, 3, 2, qRgb(1, 2, 3));
    slow.fillRect(40, 0, 3, 2, qRgb(1, 2, 3));
    CurveRepaint r;
    std::vector<QPoint> old;
    int repainted = 0;
    for (int round = 0; round < 300; ++round) {
        const CurveScene scene = round < 150 ? sceneWith() : sceneWith({{ref, qRgb(255, 0, 0)}});
        const std::vector<QPoint> now = randomCurve(rng, 5 + round % 30);
        drawLongWay(slow, scene, old, now);
        if (r.ready(quick, scene, old.data(), old.size()) &&
            r.repaint(quick, now.data(), now.size())) {
            ++repainted;
            for (const auto& [pts, c] : scene.overlays)
                quick.polyline(pts, c);
        } else {
            drawLongWay(quick, scene, old, now);
        }
        r.remember(quick, scene, now.data(), now.size());
        ASSERT_TRUE(samePicture(quick, slow)) << "round " << round;
        old = now;
    }
    EXPECT_GT(repainted, 290); // all but the first draw and the one where the scene changed
}

TEST(CurveRepaint, OwedPixelsAreWhatDrawingEveryCurveLeaves) {
    // On a picture of grid, background and curve alone, only the newest curve matters when
    // someone looks. With someone else's paint all over it, a curve drawn in between two looks
    // erases what it crosses, so every curve drawn since the last look counts. Now and then a
    // curve goes back on itself and cannot be told by runs.
    for (const bool foreign : {false, true}) {
        SCOPED_TRACE(foreign ? "someone else's paint" : "a clean picture");
        std::mt19937 rng(5);
        std::uniform_int_distribution<int> px(0, kW - 1), py(0, kH - 1), gap(1, 6), odd(0, 25);
        Surface quick(kW, kH, kBack), slow(kW, kH, kBack);
        for (int i = 0; foreign && i < 400; ++i) {
            const int x = px(rng), y = py(rng);
            quick.fillRect(x, y, 1, 1, qRgb(1, 2, 3));
            slow.fillRect(x, y, 1, 1, qRgb(1, 2, 3));
        }
        const CurveScene scene = sceneWith();
        CurveRepaint r;
        std::vector<QPoint> old;
        int owed = 0;
        const auto draw = [&](const std::vector<QPoint>& now) {
            drawLongWay(slow, scene, old, now);
            if (!(r.ready(quick, scene, old.data(), old.size()) &&
                  r.repaint(quick, now.data(), now.size())))
                drawLongWay(quick, scene, old, now);
            r.remember(quick, scene, now.data(), now.size());
            old = now;
            owed += quick.owing();
        };
        for (int round = 0, look = 0; round < 400; ++round) {
            std::vector<QPoint> now = randomCurve(rng, 5 + round % 30);
            if (odd(rng) == 0) std::reverse(now.begin(), now.end());
            draw(now);
            if (round == look) {
                ASSERT_TRUE(samePicture(quick, slow)) << "round " << round;
                EXPECT_FALSE(quick.owing());
                look += gap(rng);
            }
        }
        EXPECT_GT(owed, 300);
        // Painting settles first, and so does a copy; the copy owes nothing.
        draw(randomCurve(rng, 20));
        draw(randomCurve(rng, 20));
        ASSERT_TRUE(quick.owing());
        const Surface copy = quick;
        EXPECT_FALSE(quick.owing());
        EXPECT_TRUE(samePicture(copy, slow));
        draw(randomCurve(rng, 20));
        draw(randomCurve(rng, 20));
        ASSERT_TRUE(quick.owing());
        quick.fillRect(0, 0, 2, 2, qRgb(9, 9, 9));
        slow.fillRect(0, 0, 2, 2, qRgb(9, 9, 9));
        EXPECT_FALSE(quick.owing());
        EXPECT_TRUE(samePicture(quick, slow));
    }
}

TEST(CurveRepaint, OwedPixelsOutliveNeitherSide) {
    const CurveScene scene = sceneWith();
    const std::vector<QPoint> a = {{0, 10}, {60, 30}}, b = {{0, 30}, {60, 10}};
    const auto owe = [&](Surface& g, CurveRepaint& r) {
        drawLongWay(g, scene, {}, a);
        r.remember(g, scene, a.data(), a.size());
        ASSERT_TRUE(r.ready(g, scene, a.data(), a.size()) && r.repaint(g, b.data(), b.size()));
        ASSERT_TRUE(g.owing());
    };
    {
        // The surface goes first: the repaint must not write to it afterwards.
        CurveRepaint r;
        auto g = std::make_unique<Surface>(kW, kH, kBack);
        owe(*g, r);
        g.reset();
    }
    // The repaint goes first: what it owed is written.
    Surface g(kW, kH, kBack), slow(kW, kH, kBack);
    drawLongWay(slow, scene, {}, a);
    drawLongWay(slow, scene, a, b);
    {
        CurveRepaint r;
        owe(g, r);
    }
    EXPECT_FALSE(g.owing());
    EXPECT_TRUE(samePicture(g, slow));
}

TEST(CurveRepaint, EveryStretchLengthOverAndBetweenGridRows) {
    // A steep zigzag moved down a row at a time, then back up by growing steps: the columns'
    // stretches to restore and to paint take every length from one row to the whole height,
    // starting on, just before and just after grid rows.
    const auto zigzag = [](int shift, int height) {
        std::vector<QPoint> pts;
        for (int x = 0; x < kW; x += 2)
            pts.emplace_back(x, (x / 2) % 2 ? std::min(kH - 1, shift + height) : shift);
        return pts;
    };
    Surface quick(kW, kH, kBack), slow(kW, kH, kBack);
    const CurveScene scene = sceneWith();
    CurveRepaint r;
    std::vector<QPoint> old;
    for (int round = 0; round < 120; ++round) {
        const int height = 1 + round % 13, shift = round < 60 ? round % 40 : (round * round) % 40;
        const std::vector<QPoint> now = zigzag(shift, height);
        drawLongWay(slow, scene, old, now);
        if (!(r.ready(quick, scene, old.data(), old.size()) &&
              r.repaint(quick, now.data(), now.size())))
            drawLongWay(quick, scene, old, now);
        r.remember(quick, scene, now.data(), now.size());
        ASSERT_TRUE(samePicture(quick, slow)) << "round " << round;
        old = now;
    }
}

TEST(CurveRepaint, GoesTheLongWayWhenThePictureIsNotAsItWasLeft) {
    Surface g(kW, kH, kBack);
    CurveRepaint r;
    const std::vector<QPoint> a = {{0, 10}, {60, 30}}, b = {{0, 30}, {60, 10}};
    CurveScene s = sceneWith();
    drawLongWay(g, s, {}, a);
    r.remember(g, s, a.data(), a.size());
    EXPECT_TRUE(r.ready(g, s, a.data(), a.size()));
    // Another curve to erase, another scene, or paint over the picture since.
    EXPECT_FALSE(r.ready(g, s, b.data(), b.size()));
    CurveScene other = s;
    other.grid = kBack;
    EXPECT_FALSE(r.ready(g, other, a.data(), a.size()));
    g.fillRect(0, 0, 1, 1, kBack);
    EXPECT_FALSE(r.ready(g, s, a.data(), a.size()));

    // A grid line that stops short cannot be told by rows and columns: the long way, untouched.
    drawLongWay(g, s, a, a);
    s.gridLines.emplace_back(3, 20, 30, 20);
    drawLongWay(g, s, a, a);
    r.remember(g, s, a.data(), a.size());
    ASSERT_TRUE(r.ready(g, s, a.data(), a.size()));
    const QImage before = std::as_const(g).image().copy();
    EXPECT_FALSE(r.repaint(g, b.data(), b.size()));
    EXPECT_EQ(std::as_const(g).image(), before);
}

TEST(RoundCoord, RoundsAsThePlatformDoesEverywhere) {
    const double inf = std::numeric_limits<double>::infinity();
    std::vector<double> values = {
        0.0,          -0.0,          0.5,           1.5,           2.5,           -0.5,
        -1.5,         -2.5,          0.49999999999, 2147483646.5,  2147483647.0,  2147483647.4,
        2147483648.0, -2147483647.5, -2147483647.7, -2147483648.0, -2147483648.6, 1e300,
        -1e300,       inf,           -inf,          std::nan("")};
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> near(-2000.0, 2000.0);
    std::uniform_int_distribution<int> whole(-100000, 100000);
    for (int i = 0; i < 20000; ++i) {
        values.push_back(near(rng));
        values.push_back(whole(rng) + 0.5); // ties
        values.push_back(std::nextafter(whole(rng) + 0.5, inf));
        values.push_back(std::nextafter(whole(rng) + 0.5, -inf));
    }
    for (double v : values)
        ASSERT_EQ(line::roundCoord(v), toInt32(v)) << v;
}
