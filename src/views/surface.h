// The drawing surface every view paints into: an RGB32 image with the few operations the views
// need. Antialiasing is off, so each pixel is exact and what a cursor reads back with pixel()
// is what the user sees.
#pragma once

#include <QImage>
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

class Surface {
  public:
    Surface() = default;
    Surface(int width, int height, QRgb background = qRgb(0, 0, 0));

    void resize(int width, int height, QRgb background);
    int width() const { return image_.width(); }
    int height() const { return image_.height(); }
    const QImage& image() const { return image_; }
    QImage& image() { return image_; }

    void fill(QRgb c);
    void line(int x1, int y1, int x2, int y2, QRgb c, int width = 1);
    void polyline(const std::vector<QPoint>& points, QRgb c, int width = 1);
    void fillRect(int x, int y, int w, int h, QRgb c);
    /// Colour at (x, y); outside the surface gives 0xFFFFFFFF, which no view colour has.
    QRgb pixel(int x, int y) const;
    /// Inverts every pixel of the rectangle (a second call restores it).
    void invertRect(int x, int y, int w, int h);
    void text(int x, int y, const QString& s, QRgb c, int pointSize = 8);
    /// Moves the picture one row down (waterfalls scroll this way); the top row is left as is.
    void scrollDownOneRow();

    /// A one-pixel polyline whose every segment includes its start and leaves out its end, so
    /// the last point itself is not painted. Drawn without a painter, pixel by pixel, and
    /// clipped first: a point far outside the surface costs no more than one on it. Drawing the
    /// same points again in another colour paints exactly the same pixels (erase by overdraw).
    /// Coordinates beyond +-2^28 are clamped there.
    void polylineHalfOpen(const QPoint* points, size_t count, QRgb c);
    void polylineHalfOpen(const std::vector<QPoint>& points, QRgb c) {
        polylineHalfOpen(points.data(), points.size(), c);
    }
    /// One segment of the same kind: (x2, y2) is not painted.
    void lineHalfOpen(int x1, int y1, int x2, int y2, QRgb c);
    /// Text turned a quarter turn counter-clockwise (read from bottom to top), centred on
    /// (cx, cy), `pixelSize` high, in `family` or the closest font the system has.
    void textRotated(int cx, int cy, const QString& s, QRgb c, int pixelSize,
                     const QString& family);

  private:
    QImage image_;
};

} // namespace kv
