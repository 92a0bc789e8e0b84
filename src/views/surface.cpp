// The views' drawing surface.
#include "views/surface.h"

#include "views/line_math.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPen>
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace kv {

QRgb colorFromIni(const std::string& text) {
    long long v = 0;
    const char* b = text.data();
    const char* e = b + text.size();
    while (b < e && *b == ' ')
        ++b;
    if (std::from_chars(b, e, v).ec != std::errc()) v = 0;
    const uint32_t u = static_cast<uint32_t>(v);
    return qRgb(int(u & 0xFF), int((u >> 8) & 0xFF), int((u >> 16) & 0xFF));
}

uint32_t iniFromColor(QRgb c) {
    return uint32_t(qRed(c)) | (uint32_t(qGreen(c)) << 8) | (uint32_t(qBlue(c)) << 16);
}

Surface::Surface(int width, int height, QRgb background) {
    resize(width, height, background);
}

void Surface::resize(int width, int height, QRgb background) {
    changing();
    image_ = QImage(std::max(width, 1), std::max(height, 1), QImage::Format_RGB32);
    image_.fill(background);
}

void Surface::fill(QRgb c) {
    changing();
    image_.fill(c);
}

void Surface::fillRect(int x, int y, int w, int h, QRgb c) {
    changing();
    QPainter p(&image_);
    p.fillRect(x, y, w, h, QColor(c));
}

QRgb Surface::pixel(int x, int y) const {
    settle();
    if (x < 0 || y < 0 || x >= image_.width() || y >= image_.height()) return 0xFFFFFFFFu;
    return image_.pixel(x, y) & 0x00FFFFFFu;
}

void Surface::invertRect(int x, int y, int w, int h) {
    changing();
    const int x0 = std::max(0, x), y0 = std::max(0, y);
    const int x1 = std::min(image_.width(), x + w), y1 = std::min(image_.height(), y + h);
    for (int yy = y0; yy < y1; ++yy) {
        auto* row = reinterpret_cast<QRgb*>(image_.scanLine(yy));
        for (int xx = x0; xx < x1; ++xx)
            row[xx] = (row[xx] ^ 0x00FFFFFFu) | 0xFF000000u;
    }
}

void Surface::text(int x, int y, const QString& s, QRgb c, int pointSize) {
    changing();
    QPainter p(&image_);
    QFont f = p.font();
    f.setPointSize(pointSize);
    p.setFont(f);
    p.setPen(QColor(c));
    p.drawText(x, y, s);
}

void Surface::scrollDownOneRow() {
    changing();
    const int h = image_.height();
    const qsizetype bpl = image_.bytesPerLine();
    for (int yy = h - 1; yy > 0; --yy)
        std::memcpy(image_.scanLine(yy), image_.constScanLine(yy - 1), size_t(bpl));
}

namespace {

using line::clampCoord;
using line::floorDiv;

// One segment from (x1, y1) towards (x2, y2), the end left out. The major axis is walked from
// t = 0 to n - 1; the minor coordinate at step t is the start plus d * t / n rounded to nearest,
// halves upward, i.e. floor((2 d t + n) / 2n). It is kept as a quotient and a remainder that
// move by 2d each step instead of being divided again, and the same points always give the same
// pixels however the segment is clipped.
void segment(QRgb* bits, int64_t stride, int64_t w, int64_t h, int x1, int y1, int x2, int y2,
             QRgb px) {
    const int64_t ax = clampCoord(x1), ay = clampCoord(y1);
    const int64_t dx = clampCoord(x2) - ax, dy = clampCoord(y2) - ay;
    if (dx == 0 && dy == 0) return;
    const bool xMajor = std::llabs(dx) >= std::llabs(dy);
    const int64_t n = xMajor ? std::llabs(dx) : std::llabs(dy);
    const int64_t s = (xMajor ? dx : dy) > 0 ? 1 : -1;
    const int64_t a0 = xMajor ? ax : ay, extent = xMajor ? w : h;
    const int64_t b0 = xMajor ? ay : ax, bExtent = xMajor ? h : w;
    const int64_t d = xMajor ? dy : dx;
    int64_t t0 = 0, t1 = n - 1;
    if (s > 0) {
        t0 = std::max(t0, -a0);
        t1 = std::min(t1, extent - 1 - a0);
    } else {
        t0 = std::max(t0, a0 - (extent - 1));
        t1 = std::min(t1, a0);
    }
    if (t0 > t1) return;
    if (d == 0) {
        // Straight along an axis: no rounding to do.
        if (b0 < 0 || b0 >= bExtent) return;
        for (int64_t t = t0; t <= t1; ++t) {
            const int64_t a = a0 + s * t;
            bits[xMajor ? b0 * stride + a : a * stride + b0] = px;
        }
        return;
    }
    const int64_t den = 2 * n, step = 2 * d;
    const int64_t num = step * t0 + n;
    int64_t q = floorDiv(num, den);
    int64_t r = num - q * den;
    // Walk by index: one major step moves `major` elements, one minor step `minor`. The index
    // may stand outside the picture while the minor coordinate does; nothing is written there.
    const int64_t major = xMajor ? s : s * stride, minor = xMajor ? stride : 1;
    int64_t b = b0 + q;
    int64_t i = xMajor ? b * stride + (a0 + s * t0) : (a0 + s * t0) * stride + b;
    for (int64_t t = t0; t <= t1; ++t) {
        if (b >= 0 && b < bExtent) bits[i] = px;
        i += major;
        r += step;
        if (r >= den) {
            r -= den;
            ++b;
            i += minor;
        } else if (r < 0) {
            r += den;
            --b;
            i -= minor;
        }
    }
}

} // namespace

void Surface::line(int x1, int y1, int x2, int y2, QRgb c, LastPoint last) {
    const QPoint pts[2] = {QPoint(x1, y1), QPoint(x2, y2)};
    polyline(pts, 2, c, last);
}

void Surface::lines(const QLine* segments, size_t count, QRgb c, LastPoint last) {
    for (size_t i = 0; i < count; ++i)
        line(segments[i].x1(), segments[i].y1(), segments[i].x2(), segments[i].y2(), c, last);
}

void Surface::polyline(const QPoint* points, size_t count, QRgb c, LastPoint last) {
    changing();
    paintPolyline(image_, points, count, c, last);
}

void paintPolyline(QImage& image, const QPoint* points, size_t count, QRgb c, LastPoint last) {
    if (count == 0) return;
    QRgb* bits = reinterpret_cast<QRgb*>(image.bits());
    const int64_t stride = image.bytesPerLine() / int64_t(sizeof(QRgb));
    const int64_t w = image.width(), h = image.height();
    const QRgb px = c | 0xFF000000u;
    for (size_t k = 1; k < count; ++k)
        segment(bits, stride, w, h, points[k - 1].x(), points[k - 1].y(), points[k].x(),
                points[k].y(), px);
    const QPoint& end = points[count - 1];
    if (last == LastPoint::Painted && end.x() >= 0 && end.y() >= 0 && end.x() < w && end.y() < h)
        bits[end.y() * stride + end.x()] = px;
}

namespace {

QPen widePen(QRgb c, int width) {
    QPen pen{QColor(c)};
    pen.setWidth(width);
    pen.setCosmetic(true);
    pen.setCapStyle(Qt::FlatCap);
    return pen;
}

} // namespace

void Surface::wideLines(const QLine* segments, size_t count, QRgb c, int width) {
    changing();
    if (count == 0) return;
    QPainter p(&image_);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(widePen(c, width));
    p.drawLines(segments, int(count));
}

void Surface::widePolyline(const QPoint* points, size_t count, QRgb c, int width) {
    changing();
    if (count == 0) return;
    QPainter p(&image_);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(widePen(c, width));
    if (count == 1)
        p.drawPoint(points[0]);
    else
        p.drawPolyline(points, int(count));
}

void Surface::textRotated(int cx, int cy, const QString& s, QRgb c, int pixelSize,
                          const QString& family) {
    changing();
    QPainter p(&image_);
    QFont f(family);
    f.setPixelSize(std::max(pixelSize, 1));
    p.setFont(f);
    p.setPen(QColor(c));
    p.translate(cx, cy);
    p.rotate(-90.0);
    const QFontMetrics fm(f);
    const int w = fm.horizontalAdvance(s);
    p.drawText(-w / 2, (fm.ascent() - fm.descent()) / 2, s);
}

} // namespace kv
