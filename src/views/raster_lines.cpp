// One-pixel lines into an RGB32 picture.
#include "views/raster_lines.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace kv {

namespace {

/// Cuts the segment to the rectangle [0, w-1] x [0, h-1] (Liang-Barsky). False when nothing of
/// it is inside.
bool clip(double& x0, double& y0, double& x1, double& y1, int w, int h) {
    const double dx = x1 - x0, dy = y1 - y0;
    double t0 = 0.0, t1 = 1.0;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {x0, double(w - 1) - x0, y0, double(h - 1) - y0};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0.0) {
            if (q[i] < 0.0) return false;
            continue;
        }
        const double t = q[i] / p[i];
        if (p[i] < 0.0) {
            if (t > t1) return false;
            t0 = std::max(t0, t);
        } else {
            if (t < t0) return false;
            t1 = std::min(t1, t);
        }
    }
    const double ax = x0 + t0 * dx, ay = y0 + t0 * dy;
    x1 = x0 + t1 * dx;
    y1 = y0 + t1 * dy;
    x0 = ax;
    y0 = ay;
    return true;
}

} // namespace

void rasterLine(QImage& img, int x0, int y0, int x1, int y1, QRgb c) {
    const int w = img.width(), h = img.height();
    if (w <= 0 || h <= 0) return;
    if (x0 < 0 || x0 >= w || y0 < 0 || y0 >= h || x1 < 0 || x1 >= w || y1 < 0 || y1 >= h) {
        double ax = x0, ay = y0, bx = x1, by = y1;
        if (!clip(ax, ay, bx, by, w, h)) return;
        x0 = std::clamp(int(std::lround(ax)), 0, w - 1);
        y0 = std::clamp(int(std::lround(ay)), 0, h - 1);
        x1 = std::clamp(int(std::lround(bx)), 0, w - 1);
        y1 = std::clamp(int(std::lround(by)), 0, h - 1);
    }
    const QRgb px = c | 0xFF000000u;
    auto* bits = reinterpret_cast<QRgb*>(img.bits());
    const qsizetype stride = img.bytesPerLine() / qsizetype(sizeof(QRgb));
    if (x0 == x1) {
        if (y0 > y1) std::swap(y0, y1);
        QRgb* p = bits + y0 * stride + x0;
        for (int y = y0; y <= y1; ++y, p += stride)
            *p = px;
        return;
    }
    if (y0 == y1) {
        if (x0 > x1) std::swap(x0, x1);
        std::fill(bits + y0 * stride + x0, bits + y0 * stride + x1 + 1, px);
        return;
    }
    const int dx = std::abs(x1 - x0), dy = -std::abs(y1 - y0);
    const int sx = x0 < x1 ? 1 : -1, sy = y0 < y1 ? 1 : -1;
    int err = dx + dy;
    for (;;) {
        bits[y0 * stride + x0] = px;
        if (x0 == x1 && y0 == y1) break;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x0 += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y0 += sy;
        }
    }
}

void rasterPolyline(QImage& img, const QPoint* pts, int n, QRgb c) {
    if (n == 1) rasterLine(img, pts[0].x(), pts[0].y(), pts[0].x(), pts[0].y(), c);
    for (int i = 1; i < n; ++i)
        rasterLine(img, pts[i - 1].x(), pts[i - 1].y(), pts[i].x(), pts[i].y(), c);
}

void rasterLines(QImage& img, const QLine* lines, int n, QRgb c) {
    for (int i = 0; i < n; ++i)
        rasterLine(img, lines[i].x1(), lines[i].y1(), lines[i].x2(), lines[i].y2(), c);
}

} // namespace kv
