// Moving a one-pixel curve from one trace to the next by changing only the pixels that differ.
//
// The O-scope and the Phase view erase their old curve by drawing it again in the background
// colour, paint the whole grid again and draw the new curve. For a steep curve that is tens of
// thousands of single pixels a column apart, every one a cache line of its own, most of them
// written twice. The picture that sequence leaves is known in advance, though: the new curve in
// the line colour, the grid where the old curve was, the background elsewhere on the old curve,
// and everything else as it stood. CurveRepaint writes exactly that, and only where it changes,
// as long as the picture still holds what its last draw left there; otherwise the view draws
// the long way and the result is the same to the pixel.
//
// During playback a view draws many traces for every one the screen shows, so the pixels are
// not written when a trace is drawn: the surface is told they are owed and has them written when
// someone reads it or paints on it. Until then each draw only notes which pixels the curve it
// replaces covered. Written at last, the old curves' pixels get the grid or the background and
// the newest curve's get the line colour: what the draws one after another would have left.
#pragma once

#include "views/surface.h"

#include <QLine>
#include <QPoint>
#include <QRgb>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kv {

/// The pixels a polyline covers as Surface::polyline paints it (its end point left out), column
/// by column. A curve whose x never decreases covers one unbroken run of rows in each column, so
/// the two ends of the run say it all.
class CurveSpans {
  public:
    /// The runs of the polyline through `points` on a picture of `width` x `height`. False when
    /// the curve cannot be told this way (its x goes back, or a column's pixels are not one run).
    bool build(const QPoint* points, size_t count, int width, int height);
    int width() const { return int(top_.size()); }
    /// First and last row covered in column x; top > bottom when the column has none.
    int32_t top(int x) const { return top_[size_t(x)]; }
    int32_t bottom(int x) const { return bottom_[size_t(x)]; }

  private:
    std::vector<int32_t> top_, bottom_;
};

/// Everything a view's draw paints besides the curve: when all of it is as it was at the last
/// draw, only the curve's pixels can change.
struct CurveScene {
    int painter = 0; // which of a view's painters drew (the Phase view has two)
    bool repeatable = true;
    QRgb back = 0, line = 0;
    QRgb grid = 0; // the colour the grid lines are drawn in (the background when switched off)
    std::vector<QLine> gridLines;
    /// Curves drawn over the trace's curve after it (references), with their colours.
    std::vector<std::pair<std::vector<QPoint>, QRgb>> overlays;
    bool operator==(const CurveScene&) const = default;
};

class CurveRepaint final : public PendingPaint {
  public:
    CurveRepaint() = default;
    CurveRepaint(const CurveRepaint&) = delete;
    CurveRepaint& operator=(const CurveRepaint&) = delete;
    ~CurveRepaint() {
        if (owedOn_) owedOn_->settle();
    }

    /// Whether the picture holds exactly what the last draw left: it has not been painted on
    /// since, the scene is the same, and `erase` (the points the draw is about to erase) is the
    /// curve it drew.
    bool ready(const Surface& g, const CurveScene& scene, const QPoint* erase, size_t n) const;
    /// The curve the last draw left.
    const std::vector<QPoint>& drawn() const { return drawn_; }
    /// Turns the remembered curve into the one through `points`, as erasing the old curve,
    /// drawing the grid and drawing the new curve would (ready() said yes). The pixels are owed
    /// to `g` until it settles. False, with nothing painted, when that cannot be done here; the
    /// caller then draws the long way.
    bool repaint(Surface& g, const QPoint* points, size_t n);
    /// Notes what a draw has just finished painting: the scene and the curve through `points`.
    void remember(const Surface& g, CurveScene scene, const QPoint* points, size_t n);
    /// The next draw goes the long way.
    void forget() {
        valid_ = false;
        repainted_ = false;
    }

    void settle(QImage& image) override;
    void surfaceGone() override { owedOn_ = nullptr; }

  private:
    /// Per-row and per-column grid flags of the scene's grid, when every grid line runs across
    /// the whole picture; false when it does not.
    bool buildBackdrop(int width, int height);

    bool valid_ = false;
    uint64_t revision_ = 0;
    int width_ = 0, height_ = 0;
    CurveScene scene_;
    std::vector<QPoint> drawn_;
    // The runs of the curve the picture holds, when nothing is owed; spansKnown_ says whether
    // that curve could be told by runs at all.
    CurveSpans spans_;
    bool spansKnown_ = false;
    bool repainted_ = false;

    /// Whether the picture, owed pixels aside, holds nothing but the grid, the background and
    /// the curve in shown_: then a curve drawn and replaced before anyone looks leaves no trace,
    /// and only the newest one matters. Worked out once for each change to the picture.
    bool pictureClean(const Surface& g);
    /// Sets the covered_ bits of every pixel in `spans`.
    void noteCovered(const CurveSpans& spans);

    // Owed pixels: the surface they are owed to, the runs of the curve the picture holds
    // (shown_), and how many curves were replaced since. The newest curve's runs are worked out
    // when the pixels are written. On a picture that holds someone else's paint, every replaced
    // curve's pixels are noted too, a bit each, column after column (wordsPerColumn_ words of
    // 64 rows each).
    Surface* owedOn_ = nullptr;
    CurveSpans shown_;
    int replaced_ = 0;
    bool noted_ = false;
    std::vector<uint64_t> covered_;
    size_t wordsPerColumn_ = 0;
    uint64_t cleanRevision_ = ~0ull;
    bool clean_ = false;

    // What the grid leaves under the old curve: grid colour on a flagged row or column.
    bool backdropOk_ = false;
    int backdropWidth_ = -1, backdropHeight_ = -1;
    QRgb backdropBack_ = 0, backdropGrid_ = 0;
    std::vector<QLine> backdropLines_;
    std::vector<uint8_t> gridRow_, gridColumn_;
    std::vector<int32_t> nextGridRow_;
};

} // namespace kv
