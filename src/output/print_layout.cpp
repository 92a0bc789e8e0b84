// The page layout of a print-out.
#include "output/print_layout.h"

#include <algorithm>

namespace kv::output {

PrintLayout layoutPrintPage(QSizeF picture, QSizeF printable, double unitsPerTwip,
                            QSizeF headerText, QSizeF footerText) {
    PrintLayout l;
    if (picture.width() <= 0 || picture.height() <= 0) return l;
    // Both ratios are kept as 32-bit floats; the smaller one fits the picture in both directions.
    const float fx = float(printable.width() / picture.width());
    const float fy = float(printable.height() / picture.height());
    l.scale = std::min(fx, fy);
    const double w = picture.width() * double(l.scale), h = picture.height() * double(l.scale);
    const double left = (printable.width() - w) / 2, top = (printable.height() - h) / 2;
    l.picture = QRectF(left, top, w, h);

    const double headerTop = std::max(0.0, top - 400 * unitsPerTwip);
    const double footerTop = std::min(top + h + 200 * unitsPerTwip,
                                      std::max(0.0, printable.height() - footerText.height()));
    l.header = QRectF(QPointF((printable.width() - headerText.width()) / 2, headerTop), headerText);
    l.footer = QRectF(QPointF((printable.width() - footerText.width()) / 2, footerTop), footerText);
    return l;
}

} // namespace kv::output
