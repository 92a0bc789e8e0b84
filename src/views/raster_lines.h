// One-pixel solid lines written straight into an RGB32 picture. Playback draws every curve
// twice per trace (once to erase the old one in the background colour, once new), so this is
// the path that sets the playback rate. The same points always give the same pixels, which is
// what erasing by drawing again relies on; parts outside the picture are clipped away first, so
// a point far off the plot costs nothing.
#pragma once

#include <QImage>
#include <QLine>
#include <QPoint>
#include <QRgb>

namespace kv {

/// A line from (x0, y0) to (x1, y1), both ends included.
void rasterLine(QImage& img, int x0, int y0, int x1, int y1, QRgb c);
/// Lines through `n` points in turn.
void rasterPolyline(QImage& img, const QPoint* pts, int n, QRgb c);
/// `n` separate lines.
void rasterLines(QImage& img, const QLine* lines, int n, QRgb c);

} // namespace kv
