// Where a print-out puts its three pieces: a header line, the window's picture, a footer line.
// The picture is scaled to fill the printable area in one dimension, keeping its shape, and is
// centred; the header stands 400 twips above it and the footer 200 twips below it, each centred
// across the page. Computed apart from any printer so it can be checked exactly.
#pragma once

#include <QRectF>
#include <QSizeF>

namespace kv::output {

struct PrintLayout {
    QRectF picture;     ///< where the picture is painted, in the printable area's units
    QRectF header;      ///< the header text's box (its top-left is where the text starts)
    QRectF footer;      ///< the footer text's box
    float scale = 0.0f; ///< printable units per unit of the picture
};

/// Lays out a page. `picture` is the picture's size in any unit, `printable` the printable area in
/// device units (its origin at 0, 0), `unitsPerTwip` how many device units a twip (1/1440 inch)
/// is, and `headerText`, `footerText` the sizes of the two texts in device units. A picture that
/// fills the page's height leaves no room for the lines: they then keep inside the page, the
/// header at its top edge and the footer at its foot.
PrintLayout layoutPrintPage(QSizeF picture, QSizeF printable, double unitsPerTwip,
                            QSizeF headerText, QSizeF footerText);

} // namespace kv::output
