// The ring of rows behind a waterfall's picture.
#include "views/waterfall/row_picture.h"

#include <algorithm>
#include <cstring>

namespace kv {

void RowPicture::resize(int width, int height) {
    width_ = std::max(width, 0);
    height_ = std::max(height, 0);
    top_ = 0;
    pixels_.assign(size_t(width_) * size_t(height_), kBlank);
}

void RowPicture::clear() {
    std::fill(pixels_.begin(), pixels_.end(), kBlank);
}

QRgb* RowPicture::row(int y) {
    return pixels_.data() + size_t((top_ + y) % height_) * size_t(width_);
}

const QRgb* RowPicture::row(int y) const {
    return pixels_.data() + size_t((top_ + y) % height_) * size_t(width_);
}

void RowPicture::move(int rows) {
    if (height_ == 0 || rows == 0) return;
    const int n = std::min(std::abs(rows), height_);
    const size_t bytes = size_t(width_) * sizeof(QRgb);
    if (n == height_) return; // everything moved out; what was uncovered keeps its rows
    // The rows a real move leaves alone, kept before the ring turns over them.
    std::vector<QRgb> keep(size_t(n) * size_t(width_));
    const int kept = rows > 0 ? 0 : height_ - n;
    for (int i = 0; i < n; ++i)
        std::memcpy(keep.data() + size_t(i) * size_t(width_), row(kept + i), bytes);
    top_ = rows > 0 ? (top_ - n + height_) % height_ : (top_ + n) % height_;
    for (int i = 0; i < n; ++i)
        std::memcpy(row(kept + i), keep.data() + size_t(i) * size_t(width_), bytes);
}

void RowPicture::stretchFrom(const QImage& src, int sx, int sy, int sw, int sh, int y, int dw,
                             int dh) {
    if (sw <= 0 || sh <= 0 || dw <= 0 || dh <= 0 || src.isNull()) return;
    const QImage s = src.format() == QImage::Format_RGB32 || src.format() == QImage::Format_ARGB32
                         ? src
                         : src.convertToFormat(QImage::Format_RGB32);
    std::vector<int> cols(size_t(std::min(dw, width_)));
    for (size_t x = 0; x < cols.size(); ++x)
        cols[x] = sx + int(int64_t(x) * sw / dw);
    for (int j = 0; j < dh; ++j) {
        const int ty = y + j;
        const int syy = sy + int(int64_t(j) * sh / dh);
        if (ty < 0 || ty >= height_ || syy < 0 || syy >= s.height()) continue;
        const QRgb* in = reinterpret_cast<const QRgb*>(s.constScanLine(syy));
        QRgb* out = row(ty);
        for (size_t x = 0; x < cols.size(); ++x)
            if (cols[x] >= 0 && cols[x] < s.width()) out[x] = in[cols[x]] | 0xFF000000u;
    }
}

void RowPicture::fillRows(int y, int h, QRgb c) {
    for (int j = std::max(y, 0); j < std::min(y + h, height_); ++j)
        std::fill_n(row(j), width_, c);
}

QRgb RowPicture::pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
    return row(y)[x];
}

QImage RowPicture::toImage() const {
    QImage img(std::max(width_, 1), std::max(height_, 1), QImage::Format_RGB32);
    img.fill(kBlank);
    for (int y = 0; y < height_; ++y)
        std::memcpy(img.scanLine(y), row(y), size_t(width_) * sizeof(QRgb));
    return img;
}

} // namespace kv
