// The views' drawing surface.
#include "views/surface.h"

#include <QFont>
#include <QPainter>
#include <QPen>
#include <charconv>
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
    image_ = QImage(std::max(width, 1), std::max(height, 1), QImage::Format_RGB32);
    image_.fill(background);
}

void Surface::fill(QRgb c) {
    image_.fill(c);
}

void Surface::line(int x1, int y1, int x2, int y2, QRgb c, int width) {
    QPainter p(&image_);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(QPen(QColor(c), width));
    p.drawLine(x1, y1, x2, y2);
}

void Surface::polyline(const std::vector<QPoint>& points, QRgb c, int width) {
    if (points.size() < 2) return;
    QPainter p(&image_);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(QPen(QColor(c), width));
    p.drawPolyline(points.data(), int(points.size()));
}

void Surface::fillRect(int x, int y, int w, int h, QRgb c) {
    QPainter p(&image_);
    p.fillRect(x, y, w, h, QColor(c));
}

QRgb Surface::pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= image_.width() || y >= image_.height()) return 0xFFFFFFFFu;
    return image_.pixel(x, y) & 0x00FFFFFFu;
}

void Surface::invertRect(int x, int y, int w, int h) {
    const int x0 = std::max(0, x), y0 = std::max(0, y);
    const int x1 = std::min(image_.width(), x + w), y1 = std::min(image_.height(), y + h);
    for (int yy = y0; yy < y1; ++yy) {
        auto* row = reinterpret_cast<QRgb*>(image_.scanLine(yy));
        for (int xx = x0; xx < x1; ++xx)
            row[xx] = (row[xx] ^ 0x00FFFFFFu) | 0xFF000000u;
    }
}

void Surface::text(int x, int y, const QString& s, QRgb c, int pointSize) {
    QPainter p(&image_);
    QFont f = p.font();
    f.setPointSize(pointSize);
    p.setFont(f);
    p.setPen(QColor(c));
    p.drawText(x, y, s);
}

void Surface::scrollDownOneRow() {
    const int h = image_.height();
    const qsizetype bpl = image_.bytesPerLine();
    for (int yy = h - 1; yy > 0; --yy)
        std::memcpy(image_.scanLine(yy), image_.constScanLine(yy - 1), size_t(bpl));
}

} // namespace kv
