// The picture of a scrolling waterfall, which is also its only store of the rows already shown.
// The rows are kept in a ring: moving the picture one row down or up turns the ring and copies
// the one row a real move leaves in place, so a move costs one row however tall the picture is.
#pragma once

#include <QImage>
#include <QRgb>
#include <vector>

namespace kv {

class RowPicture {
  public:
    /// White, the colour of an empty picture.
    static constexpr QRgb kBlank = 0xFFFFFFFFu;

    void resize(int width, int height);
    int width() const { return width_; }
    int height() const { return height_; }

    /// Every row blank.
    void clear();
    /// Moves the picture `rows` down (positive) or up (negative), as one overlapping move: the
    /// rows that the move uncovers keep what they held (the top rows on a move down, the foot
    /// rows on a move up).
    void move(int rows);
    /// Copies `src` rectangle (sx, sy, sw, sh) to rows y..y+dh-1, columns 0..dw-1, scaled to
    /// the new size by taking the nearest source pixel (rows and columns are dropped or
    /// repeated, never blended). Parts outside either picture are left out.
    void stretchFrom(const QImage& src, int sx, int sy, int sw, int sh, int y, int dw, int dh);
    /// Fills rows y..y+h-1 with one colour.
    void fillRows(int y, int h, QRgb c);

    /// The colour at (x, y); outside gives 0 (no colour the picture holds has a zero alpha).
    QRgb pixel(int x, int y) const;
    /// The picture as an image, top row first.
    QImage toImage() const;

  private:
    QRgb* row(int y);
    const QRgb* row(int y) const;

    int width_ = 0, height_ = 0;
    int top_ = 0; // ring index of the picture's top row
    std::vector<QRgb> pixels_;
};

} // namespace kv
