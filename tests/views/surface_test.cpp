// The one-pixel lines every view draws with: which end points are painted, how a tie between
// two rows is settled (the pixels cursor and marker read-outs scan), that clipping never moves
// a pixel, and that drawing the same points again in the background removes them all.
#include "views/surface.h"

#include <gtest/gtest.h>

#include <vector>

using namespace kv;

namespace {

constexpr QRgb kInk = 0xFFFFFF;

/// The lit pixels of row y, left to right.
std::vector<int> litIn(const Surface& s, int y) {
    std::vector<int> xs;
    for (int x = 0; x < s.width(); ++x)
        if (s.pixel(x, y) == kInk) xs.push_back(x);
    return xs;
}

int lit(const Surface& s) {
    int n = 0;
    for (int y = 0; y < s.height(); ++y)
        n += int(litIn(s, y).size());
    return n;
}

} // namespace

TEST(SurfaceLines, TheLastPointIsPaintedOnlyWhenAsked) {
    Surface s(10, 10, 0);
    s.line(1, 1, 6, 1, kInk);
    EXPECT_EQ(litIn(s, 1), (std::vector<int>{1, 2, 3, 4, 5}));
    s.line(1, 3, 6, 3, kInk, LastPoint::Painted);
    EXPECT_EQ(litIn(s, 3), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    // Segments of a polyline meet without a gap; one point alone is a dot only when asked.
    const std::vector<QPoint> corner{{1, 5}, {4, 5}, {4, 8}};
    s.polyline(corner, kInk);
    EXPECT_EQ(litIn(s, 5), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(s.pixel(4, 8), 0u);
    const QPoint dot(8, 8);
    s.polyline(&dot, 1, kInk);
    EXPECT_EQ(s.pixel(8, 8), 0u);
    s.polyline(&dot, 1, kInk, LastPoint::Painted);
    EXPECT_EQ(s.pixel(8, 8), kInk);
}

TEST(SurfaceLines, ATieBetweenTwoRowsGoesToTheLargerRow) {
    Surface s(4, 4, 0);
    s.line(0, 0, 2, 1, kInk); // half way: row 0.5
    EXPECT_EQ(s.pixel(1, 1), kInk);
    s.fill(0);
    s.line(0, 2, 2, 1, kInk); // half way: row 1.5
    EXPECT_EQ(s.pixel(1, 2), kInk);
    EXPECT_EQ(s.pixel(1, 1), 0u);
}

TEST(SurfaceLines, ClippingNeverMovesAPixelAndOverdrawErasesExactly) {
    // The same segments on a small picture, reaching far outside it, and moved into a large one
    // that holds the first whole: where the two overlap they agree pixel for pixel.
    const QPoint shift(300, 70);
    const std::vector<QPoint> far{{-300, -70}, {60, 40}, {-20, 45}, {2000000, 49}};
    Surface small(50, 50, 0), large(400, 130, 0);
    small.polyline(far, kInk);
    std::vector<QPoint> moved;
    for (const QPoint& p : far)
        moved.push_back(p + shift);
    large.polyline(moved, kInk);
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 50; ++x)
            ASSERT_EQ(small.pixel(x, y), large.pixel(x + shift.x(), y + shift.y()))
                << x << "," << y;
    EXPECT_GT(lit(small), 50);

    small.polyline(far, 0);
    EXPECT_EQ(lit(small), 0) << "drawn again in the background, nothing is left";
}
