// Changing only the pixels in which two curves differ.
#include "views/curve_repaint.h"

#include "views/line_math.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <limits>

namespace kv {

// ---- Spans -------------------------------------------------------------------------------------

namespace {

using line::ceilDiv;
using line::clampCoord;
using line::floorDiv;

/// The runs of a curve as its pieces come in. A curve that never goes left reaches the columns
/// in order and each column's pixels one after another, so the column being filled is the only
/// one that can still grow: its run is kept here (in registers, as long as nothing takes this
/// object's address) and written through to the arrays. A column left behind is never visited
/// again, and a new piece always touches what its column has; anything else cannot be told as
/// one run and clears `ok`.
struct RunBuilder {
    int32_t* top;
    int32_t* bottom;
    int64_t width, height;
    int column = -1;
    int32_t first = std::numeric_limits<int32_t>::max(), last = std::numeric_limits<int32_t>::min();
    bool ok = true;

    // No branches: which pieces come to a fresh column changes at random along a trace.
    void add(int x, int64_t row1, int64_t row2) {
        const int32_t a = int32_t(std::min(row1, row2)), b = int32_t(std::max(row1, row2));
        const bool fresh = x != column;
        first = fresh ? std::numeric_limits<int32_t>::max() : first;
        last = fresh ? std::numeric_limits<int32_t>::min() : last;
        column = x;
        ok &= (first > last) |
              ((int64_t(a) <= int64_t(last) + 1) & (int64_t(b) >= int64_t(first) - 1));
        first = std::min(first, a);
        last = std::max(last, b);
        top[x] = first;
        bottom[x] = last;
    }
};

// addSegment's pixels for a segment inside the picture that moves right by at most two columns,
// with its divisions worked out by hand: the minor coordinate at step t is
// floor((2 d t + n) / 2n), and along a steep segment column x1 + j starts at step
// ceil((2j - 1) n / 2dx).
inline void addShortSegment(RunBuilder& r, int x1, int y1, int dx, int dy) {
    const int n = std::abs(dy), s = dy > 0 ? 1 : -1;
    if (n <= dx) {
        if (dx == 0) return; // a single point paints nothing
        r.add(x1, y1, y1);
        if (dx == 1) return;
        const int row = y1 + ((dy + 1) >> 1);
        r.add(x1 + 1, row, row);
        return;
    }
    if (dx == 0) return r.add(x1, y1, y1 + s * (n - 1));
    // The steps each column holds, as [from, to).
    const auto column = [&](int j, int from, int to) {
        if (from < to) r.add(x1 + j, y1 + s * from, y1 + s * (to - 1));
    };
    if (dx == 1) {
        const int half = (n + 1) >> 1;
        column(0, 0, half);
        column(1, half, n);
        return;
    }
    const int quarter = (n + 3) >> 2, threeQuarters = (3 * n + 3) >> 2;
    column(0, 0, quarter);
    column(1, quarter, threeQuarters);
    column(2, threeQuarters, n);
}

// The pixels of one segment as the surface's line paints them: the major axis walked from t = 0
// to n - 1, the minor coordinate at step t the start plus floor((2 d t + n) / 2n). Instead of
// walking a steep segment pixel by pixel, each column's first and last step are worked out.
// False for a segment that goes left.
bool addSegment(RunBuilder& r, int x1, int y1, int x2, int y2) {
    const int64_t w = r.width, h = r.height;
    const int64_t ax = clampCoord(x1), ay = clampCoord(y1);
    const int64_t dx = clampCoord(x2) - ax, dy = clampCoord(y2) - ay;
    if (dx == 0 && dy == 0) return true;
    if (dx < 0) return false;
    if (dx >= std::llabs(dy)) {
        // One pixel in each column.
        const int64_t n = dx;
        const int64_t t0 = std::max<int64_t>(0, -ax), t1 = std::min(n - 1, w - 1 - ax);
        if (t0 > t1) return true;
        const int64_t den = 2 * n, step = 2 * dy;
        const int64_t num = step * t0 + n;
        const int64_t q = floorDiv(num, den);
        int64_t rem = num - q * den;
        int64_t b = ay + q;
        for (int64_t t = t0; t <= t1; ++t) {
            if (b >= 0 && b < h) r.add(int(ax + t), b, b);
            rem += step;
            if (rem >= den) {
                rem -= den;
                ++b;
            } else if (rem < 0) {
                rem += den;
                --b;
            }
        }
        return true;
    }
    // Steep: rows are walked, the column moves right by at most one a row.
    const int64_t n = std::llabs(dy), s = dy > 0 ? 1 : -1;
    int64_t t0 = 0, t1 = n - 1;
    if (s > 0) {
        t0 = std::max(t0, -ay);
        t1 = std::min(t1, h - 1 - ay);
    } else {
        t0 = std::max(t0, ay - (h - 1));
        t1 = std::min(t1, ay);
    }
    if (t0 > t1) return true;
    if (dx == 0) {
        if (ax >= 0 && ax < w) r.add(int(ax), ay + s * t0, ay + s * t1);
        return true;
    }
    const int64_t den = 2 * n, step = 2 * dx;
    // Column ax + j holds the steps from first(j) to first(j + 1) - 1, worked out column by
    // column. Most steep segments move one or two columns: dividing by a power of two is a
    // shift (towards minus infinity, so ceil(a / 2^k) = (a + 2^k - 1) >> k).
    const bool powerOfTwo = (step & (step - 1)) == 0;
    const int shift = std::countr_zero(uint64_t(step));
    const auto first = [&](int64_t j) {
        const int64_t a = den * j - n;
        return powerOfTwo ? (a + step - 1) >> shift : ceilDiv(a, step);
    };
    int64_t j = t0 == 0 ? 0 : floorDiv(step * t0 + n, den);
    if (ax + j < 0) j = -ax;
    // first(j) of the column t0 lies in is t0 or less.
    for (int64_t from = j == 0 ? t0 : std::max(t0, first(j)); from <= t1 && ax + j < w; ++j) {
        const int64_t next = first(j + 1);
        const int64_t to = std::min(t1, next - 1);
        if (from <= to) r.add(int(ax + j), ay + s * from, ay + s * to);
        from = std::max(t0, next);
    }
    return true;
}

} // namespace

// An empty column holds the largest top and the smallest bottom, so taking the smaller top and
// the larger bottom needs no test for it.
bool CurveSpans::build(const QPoint* points, size_t count, int width, int height) {
    top_.assign(size_t(std::max(width, 0)), std::numeric_limits<int32_t>::max());
    bottom_.assign(size_t(std::max(width, 0)), std::numeric_limits<int32_t>::min());
    const int w = width, h = std::max(height, 0);
    RunBuilder r{top_.data(), bottom_.data(), int64_t(top_.size()), h};
    for (size_t k = 1; k < count; ++k) {
        const int x1 = points[k - 1].x(), y1 = points[k - 1].y();
        const int x2 = points[k].x(), y2 = points[k].y();
        // Most segments of a trace drawn about a point a pixel lie inside the picture and move
        // right by at most two columns.
        const bool inside = x1 >= 0 && x2 < w && y1 >= 0 && y1 < h && y2 >= 0 && y2 < h && x2 >= x1;
        if (inside && x2 - x1 <= 2) {
            addShortSegment(r, x1, y1, x2 - x1, y2 - y1);
        } else {
            // Through a copy, so that the builder's address is never taken and it stays in
            // registers on the common path above.
            RunBuilder slow = r;
            if (!addSegment(slow, x1, y1, x2, y2)) return false;
            r = slow;
        }
    }
    return r.ok;
}

// ---- Repainting --------------------------------------------------------------------------------

bool CurveRepaint::ready(const Surface& g, const CurveScene& scene, const QPoint* erase,
                         size_t n) const {
    return valid_ && scene.repeatable && g.revision() == revision_ && g.width() == width_ &&
           g.height() == height_ && n == drawn_.size() &&
           std::equal(erase, erase + n, drawn_.begin()) && scene == scene_;
}

bool CurveRepaint::buildBackdrop(int width, int height) {
    if (width == backdropWidth_ && height == backdropHeight_ && scene_.back == backdropBack_ &&
        scene_.grid == backdropGrid_ && scene_.gridLines == backdropLines_)
        return backdropOk_;
    backdropWidth_ = width;
    backdropHeight_ = height;
    backdropBack_ = scene_.back;
    backdropGrid_ = scene_.grid;
    backdropLines_ = scene_.gridLines;
    // The grid as the long way paints it over the background, then read back as rows and
    // columns of grid colour.
    Surface grid(width, height, scene_.back);
    grid.lines(scene_.gridLines.data(), scene_.gridLines.size(), scene_.grid);
    const QRgb want = scene_.grid & 0x00FFFFFFu;
    gridRow_.assign(size_t(height), 1);
    gridColumn_.assign(size_t(width), 1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (grid.pixel(x, y) != want) gridRow_[size_t(y)] = gridColumn_[size_t(x)] = 0;
    // For each row, the first grid row at or below it (the height when there is none).
    nextGridRow_.assign(size_t(height) + 1, height);
    for (int y = height - 1; y >= 0; --y)
        nextGridRow_[size_t(y)] = gridRow_[size_t(y)] ? y : nextGridRow_[size_t(y) + 1];
    backdropOk_ = true;
    for (int y = 0; y < height && backdropOk_; ++y)
        for (int x = 0; x < width; ++x)
            if ((grid.pixel(x, y) == want) != bool(gridRow_[size_t(y)] | gridColumn_[size_t(x)])) {
                backdropOk_ = false;
                break;
            }
    return backdropOk_;
}

namespace {

/// Writes `v` to rows `from` to `to` (from <= to) of one column. The lengths differ from column
/// to column at random, so the loop is kept to one exit: a short stretch is three stores that
/// may hit the same row, a long one starts with four rows and goes on four at a time; a row written
/// twice gets the same colour.
inline void fillColumn(QRgb* column, int64_t stride, int32_t from, int32_t to, QRgb v) {
    QRgb* p = column + from * stride;
    const int32_t n = to - from + 1;
    if (n < 4) {
        p[0] = v;
        p[(n >> 1) * stride] = v;
        p[(n - 1) * stride] = v;
        return;
    }
    p[0] = v;
    p[stride] = v;
    p[2 * stride] = v;
    p[3 * stride] = v;
    // The first four rows cover what is left over from the whole fours that end the stretch.
    const int32_t head = ((n - 1) & 3) + 1;
    p += head * stride;
    for (int32_t k = (n - head) >> 2; k > 0; --k, p += 4 * stride) {
        p[0] = v;
        p[stride] = v;
        p[2 * stride] = v;
        p[3 * stride] = v;
    }
}

} // namespace

void CurveRepaint::noteCovered(const CurveSpans& spans) {
    for (int x = 0; x < spans.width(); ++x) {
        const int32_t a = spans.top(x), b = spans.bottom(x);
        if (a > b) continue;
        uint64_t* column = covered_.data() + size_t(x) * wordsPerColumn_;
        const size_t first = size_t(a) >> 6, last = size_t(b) >> 6;
        // Within one word or across several alike, without a branch on which.
        const uint64_t from = ~0ull << (a & 63), to = ~0ull >> (63 - (b & 63));
        const uint64_t one = first == last ? ~0ull : 0;
        column[first] |= from & (to | ~one);
        column[last] |= to & (from | ~one);
        for (size_t k = first + 1; k < last; ++k)
            column[k] = ~0ull;
    }
}

bool CurveRepaint::pictureClean(const Surface& g) {
    if (cleanRevision_ == g.revision()) return clean_;
    cleanRevision_ = g.revision();
    const QImage& img = g.unsettledImage();
    const QRgb line = scene_.line & 0x00FFFFFFu, back = scene_.back & 0x00FFFFFFu,
               grid = scene_.grid & 0x00FFFFFFu;
    const int w = std::min(img.width(), shown_.width());
    clean_ = w == img.width();
    for (int y = 0; y < img.height() && clean_; ++y) {
        const QRgb* row = reinterpret_cast<const QRgb*>(img.constScanLine(y));
        const QRgb rowBack = gridRow_[size_t(y)] ? grid : back;
        uint32_t differs = 0;
        for (int x = 0; x < w; ++x) {
            const bool onCurve = shown_.top(x) <= y && y <= shown_.bottom(x);
            const QRgb want = onCurve ? line : gridColumn_[size_t(x)] ? grid : rowBack;
            differs |= (row[x] ^ want) & 0x00FFFFFFu;
        }
        clean_ = differs == 0;
    }
    return clean_;
}

bool CurveRepaint::repaint(Surface& g, const QPoint* points, size_t n) {
    const int w = g.width(), h = g.height();
    if (!spansKnown_ || !buildBackdrop(w, h)) return false;
    if (owedOn_ != &g) {
        if (owedOn_) owedOn_->settle();
        // Nothing owed yet: the picture holds the remembered curve, whose runs are known.
        std::swap(shown_, spans_);
        replaced_ = 0;
        g.owe(this);
        owedOn_ = &g;
    } else if (!pictureClean(g)) {
        // Someone else's paint is on the picture, and a curve drawn over it takes it away even
        // if no one looked at the curve: the pixels of every replaced curve are noted.
        if (!spans_.build(drawn_.data(), drawn_.size(), w, h)) {
            // That curve cannot be told by runs: what is owed is written first, and the draw
            // goes the long way.
            g.settle();
            return false;
        }
        if (!noted_) {
            noted_ = true;
            wordsPerColumn_ = (size_t(h) + 63) / 64;
            covered_.assign(size_t(w) * wordsPerColumn_, 0);
            noteCovered(shown_);
        }
        noteCovered(spans_);
    }
    ++replaced_;
    drawn_.assign(points, points + n);
    repainted_ = true;
    return true;
}

void CurveRepaint::settle(QImage& img) {
    owedOn_ = nullptr;
    const int w = img.width();
    // The newest curve's runs; one that cannot be told by them is drawn after the rest.
    spansKnown_ = spans_.build(drawn_.data(), drawn_.size(), w, img.height());
    valid_ = valid_ && spansKnown_;
    QRgb* bits = reinterpret_cast<QRgb*>(img.bits());
    const int64_t stride = img.bytesPerLine() / int64_t(sizeof(QRgb));
    const QRgb line = scene_.line | 0xFF000000u, back = scene_.back | 0xFF000000u,
               grid = scene_.grid | 0xFF000000u;
    const int32_t* nextGridRow = nextGridRow_.data();
    for (int x = 0; x < w; ++x) {
        const int32_t a = shown_.top(x), b = shown_.bottom(x);
        const int32_t c = spansKnown_ ? spans_.top(x) : 1, d = spansKnown_ ? spans_.bottom(x) : 0;
        QRgb* column = bits + x;
        const bool gridColumn = gridColumn_[size_t(x)] != 0;
        const QRgb restored = gridColumn ? grid : back;
        if (!noted_) {
            // The old curve's pixels that the newest does not cover: the column's colour, then
            // the few grid rows over it.
            const auto restore = [&](int32_t from, int32_t to) {
                if (from > to) return;
                fillColumn(column, stride, from, to, restored);
                if (!gridColumn)
                    for (int32_t y = nextGridRow[from]; y <= to; y = nextGridRow[y + 1])
                        column[y * stride] = grid;
            };
            if (c > d || b < c || d < a) {
                restore(a, b);
            } else {
                restore(a, c - 1);
                restore(d + 1, b);
            }
        } else {
            // Every pixel a replaced curve covered and the newest does not.
            const uint64_t* covered = covered_.data() + size_t(x) * wordsPerColumn_;
            for (size_t k = 0; k < wordsPerColumn_; ++k) {
                uint64_t word = covered[k];
                const int32_t row0 = int32_t(k * 64);
                if (c <= d && c < row0 + 64 && d >= row0) {
                    const int lo = std::max(c - row0, 0), hi = std::min(d - row0, 63);
                    word &= ~((~0ull << lo) & (~0ull >> (63 - hi)));
                }
                for (; word != 0; word &= word - 1) {
                    const int32_t y = row0 + std::countr_zero(word);
                    column[y * stride] = gridRow_[size_t(y)] ? grid : restored;
                }
            }
        }
        // The newest curve where the picture does not show it yet.
        if (c > d) continue;
        if (a > b || b < c || d < a) {
            fillColumn(column, stride, c, d, line);
        } else {
            if (c < a) fillColumn(column, stride, c, a - 1, line);
            if (b < d) fillColumn(column, stride, b + 1, d, line);
        }
    }
    if (!spansKnown_) paintPolyline(img, drawn_.data(), drawn_.size(), line);
    if (noted_) std::fill(covered_.begin(), covered_.end(), 0);
    noted_ = false;
}

void CurveRepaint::remember(const Surface& g, CurveScene scene, const QPoint* points, size_t n) {
    // What is owed was worked out with the remembered curve and scene.
    if (owedOn_ && (!repainted_ || !(scene == scene_))) owedOn_->settle();
    // After repaint() the curve is the newest one owed, its runs worked out when it is written.
    if (!repainted_) {
        drawn_.assign(points, points + n);
        spansKnown_ = spans_.build(points, n, g.width(), g.height());
        cleanRevision_ = ~0ull; // the long way may have left anything
    }
    scene_ = std::move(scene);
    width_ = g.width();
    height_ = g.height();
    revision_ = g.revision();
    valid_ = spansKnown_;
    repainted_ = false;
}

} // namespace kv
