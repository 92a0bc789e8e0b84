// The drawing surface every view paints into: an RGB32 image with the few operations the views
// need. Antialiasing is off, so each pixel is exact and what a cursor reads back with pixel()
// is what the user sees.
#pragma once

#include <QImage>
#include <QLine>
#include <QPoint>
#include <QRgb>
#include <QString>
#include <cstdint>
#include <string>
#include <vector>

namespace kv {

/// A settings colour (decimal text of 0x00BBGGRR) as a Qt colour value. Empty or bad text is
/// black.
QRgb colorFromIni(const std::string& text);
/// The 0x00BBGGRR value of a Qt colour.
uint32_t iniFromColor(QRgb c);

/// Whether a one-pixel line paints the pixel of its last point. Left out, two lines that meet
/// paint their common point once, and a curve drawn again in the background colour removes
/// exactly what it drew; the Spectrum view's routines paint it.
enum class LastPoint { Left, Painted };

class Surface;

/// What Surface::polyline paints, onto an image of format RGB32.
void paintPolyline(QImage& image, const QPoint* points, size_t count, QRgb c,
                   LastPoint last = LastPoint::Left);

/// Pixels a surface still owes: a change its owner has worked out but not yet written, because
/// playback may replace it before anyone looks. The surface has it written (settle) before any
/// read of its pixels and before any other paint, so every reader sees the picture as if the
/// change had been written at once.
class PendingPaint {
  public:
    /// Writes the owed pixels into `image`; afterwards nothing is owed.
    virtual void settle(QImage& image) = 0;
    /// The surface is going away: nothing is owed any more and the owner must not write to it.
    virtual void surfaceGone() = 0;

  protected:
    ~PendingPaint() = default;
};

class Surface {
  public:
    Surface() = default;
    Surface(int width, int height, QRgb background = qRgb(0, 0, 0));
    // A copy gets the settled picture; what is owed stays with the original.
    Surface(const Surface& other) : image_(other.image()), revision_(other.revision_) {}
    Surface& operator=(const Surface& other) {
        if (this != &other) {
            settle();
            image_ = other.image();
            revision_ = other.revision_;
        }
        return *this;
    }
    ~Surface() {
        if (pending_) pending_->surfaceGone();
    }

    void resize(int width, int height, QRgb background);
    int width() const { return image_.width(); }
    int height() const { return image_.height(); }
    const QImage& image() const {
        settle();
        return image_;
    }
    /// Write access to the pixels counts as a change (see revision()).
    QImage& image() {
        changing();
        return image_;
    }
    /// Notes that `p` owes pixels to this picture (what another owner owed is written first).
    /// Settling does not count as a change: it finishes one already made.
    void owe(PendingPaint* p) {
        if (pending_ != p) settle();
        pending_ = p;
    }
    /// Writes what is owed, if anything.
    void settle() const {
        if (PendingPaint* p = pending_) {
            pending_ = nullptr;
            p->settle(image_);
        }
    }
    /// Whether pixels are owed (for tests).
    bool owing() const { return pending_ != nullptr; }
    /// The picture as it stands, without what is owed: only for the one that owes it.
    const QImage& unsettledImage() const { return image_; }
    /// Goes up with every change to the picture through this surface, so that a view can tell
    /// whether its picture still holds exactly what its last draw left there.
    uint64_t revision() const { return revision_; }

    void fill(QRgb c);
    void fillRect(int x, int y, int w, int h, QRgb c);
    /// Colour at (x, y); outside the surface gives 0xFFFFFFFF, which no view colour has.
    QRgb pixel(int x, int y) const;
    /// Inverts every pixel of the rectangle (a second call restores it).
    void invertRect(int x, int y, int w, int h);
    void text(int x, int y, const QString& s, QRgb c, int pointSize = 8);
    /// Moves the picture one row down (waterfalls scroll this way); the top row is left as is.
    void scrollDownOneRow();

    // ---- One-pixel lines -----------------------------------------------------------------------
    // Every view draws its curves, grids and bars through these. Each segment paints its start
    // and, walking its longer axis, the pixel nearest the exact line (halves upward); its end
    // is painted only when asked. Drawn without a painter, pixel by pixel, and clipped first: a
    // point far outside the surface costs no more than one on it, and the same points give the
    // same pixels however much of them lies outside. Drawing the same points again in another
    // colour paints exactly the same pixels (erase by overdraw). Coordinates beyond +-2^28 are
    // clamped there.

    /// A polyline through `count` points; one point alone is painted only with its last point.
    void polyline(const QPoint* points, size_t count, QRgb c, LastPoint last = LastPoint::Left);
    void polyline(const std::vector<QPoint>& points, QRgb c, LastPoint last = LastPoint::Left) {
        polyline(points.data(), points.size(), c, last);
    }
    /// One segment from (x1, y1) to (x2, y2).
    void line(int x1, int y1, int x2, int y2, QRgb c, LastPoint last = LastPoint::Left);
    /// Separate segments, each as line() draws it.
    void lines(const QLine* segments, size_t count, QRgb c, LastPoint last = LastPoint::Left);
    /// Segments `width` pixels wide (the grid of a bar plot), both ends included, through the
    /// platform's painter with a square pen and no antialiasing.
    void wideLines(const QLine* segments, size_t count, QRgb c, int width);
    void widePolyline(const QPoint* points, size_t count, QRgb c, int width);

    /// Text turned a quarter turn counter-clockwise (read from bottom to top), centred on
    /// (cx, cy), `pixelSize` high, in `family` or the closest font the system has.
    void textRotated(int cx, int cy, const QString& s, QRgb c, int pixelSize,
                     const QString& family);

  private:
    void changing() {
        settle();
        ++revision_;
    }

    // Settling a const surface writes pixels that, for every reader, are already there.
    mutable QImage image_;
    uint64_t revision_ = 0;
    mutable PendingPaint* pending_ = nullptr;
};

} // namespace kv
