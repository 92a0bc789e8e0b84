// The furniture every view places round its picture: text labels (what they say, where they
// stand, whether they show; setLabelText sizes a label to its text) and the trace scroll bar.
#pragma once

#include <QColor>
#include <QFont>
#include <QRect>
#include <QRgb>
#include <QSize>
#include <string>
#include <vector>

class QPainter;

namespace kv {

/// The windows' own background, around the graph.
inline constexpr QRgb kFormBackColor = 0xFFF0F0F0u;

/// A text of a view: an axis label, a read-out, a caption. Positions are in the pixels of
/// whatever the view places it against (its window, or its plot for the Spectrum view). How it
/// is painted goes with it, so that a window on a screen of finer pixels can paint the text
/// again at the screen's resolution over the view's picture: its colour and font, a quarter
/// turn for an upright caption (its box then is taller than wide), and the plain colour under
/// it where the view paints it on one (`opaque`), which clears the coarse text first.
struct Label {
    std::string text;
    int left = 0, top = 0, width = 0, height = 0;
    bool visible = true;
    QRgb color = 0xFF000000u;
    bool opaque = false;
    QRgb background = kFormBackColor;
    int rotation = 0; ///< 0, or 90: turned counter-clockwise, read from the foot up
    QString family = QStringLiteral("DejaVu Sans"); ///< empty: the painter's own
    int pixelSize = 11;
    int right() const { return left + width; }
    int bottom() const { return top + height; }
    /// The font the text is painted in.
    QFont font() const;
};

/// The label as painted on a plain `background` in `color`.
inline Label onBackground(Label l, QRgb background, QRgb color = 0xFF000000u) {
    l.opaque = true;
    l.background = background;
    l.color = color;
    return l;
}

/// Mouse buttons as the views' events take them (a held set is an OR of these).
enum Button : int { NoButton = 0, LeftButton = 1, RightButton = 2, MiddleButton = 4 };

/// A view's trace scroll bar `HS`: its range, where it stands, and where the window shows it.
struct ScrollBar {
    int Min = 0, Max = 0, Value = 0;
    bool Enabled = true;
    QRect rect; // window pixels
};

/// Height of every view's trace scroll bar, in window pixels.
inline constexpr int kScrollHeight = 17;

/// The smallest view window: room for the graph, its scroll bar and the shortest labels.
inline constexpr int kMinViewWidth = 209;
inline constexpr int kMinViewHeight = 216;

/// The fixed room round a view's graph, in pixels: left of and above it for the labels, what
/// the window has beyond the graph's size, and the smallest window.
struct GraphMargins {
    int left = 0, top = 0;
    int width = 0, height = 0;
    int minWidth = 0, minHeight = 0;
};
/// A window of `width` x `height`, held at its smallest, with the graph in its margins and the
/// scroll bar two pixels under the graph, as wide as it.
struct GraphLayout {
    QSize window;
    QRect graph;
    QRect scrollBar;
};
GraphLayout layOutGraph(int width, int height, const GraphMargins& m);

/// Moves the scroll bar to `value`, held in its range, as a user's move would. True when the value
/// changed, which is when a scroll bar fires its change event.
bool moveScrollBar(ScrollBar& hs, int value);

/// The labels' font.
QFont labelFont();
/// Sets a label's text and sizes the label to it, keeping its left edge.
void setLabelText(Label& l, const std::string& text);

/// The upright box of `text` turned a quarter turn about (cx, cy), as Surface::textRotated
/// paints it in a font of `pixelSize` pixels of `family`.
Label rotatedLabel(const std::string& text, int cx, int cy, int pixelSize, const QString& family);
/// Adds the labels that show (visible, with text) to `into`.
template <class Labels> void addShown(std::vector<Label>& into, const Labels& labels) {
    for (const Label& l : labels)
        if (l.visible && !l.text.empty()) into.push_back(l);
}
/// The same for labels painted in black on the form's own background.
template <class Labels> void addShownOnForm(std::vector<Label>& into, const Labels& labels) {
    for (const Label& l : labels)
        if (l.visible && !l.text.empty()) into.push_back(onBackground(l, kFormBackColor));
}
/// Paints a label's text as its fields say, over its background when it is opaque: what a
/// window does again at the screen's resolution.
void repaintLabel(QPainter& p, const Label& l);

/// Paints a visible label's text in its box.
void paintLabel(QPainter& p, const Label& l, const QColor& c);
/// Paints a scroll bar: a trough and a thumb where the value stands.
void paintScrollBar(QPainter& p, const ScrollBar& hs);

} // namespace kv
