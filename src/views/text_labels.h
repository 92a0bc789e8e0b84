// Free text on a view: up to four lines the user types in `dlgText` and then drags over the
// graph with the pointer. Every view carries one set; the labels stand in the view's window
// pixels, so a resize leaves them where the user put them. While a label is dragged a frame
// follows the pointer, held inside the graph, and the label jumps there when the button is
// released; a click without a move leaves it where it was.
#pragma once

#include "views/view_label.h"

#include <QPoint>
#include <QRect>
#include <array>
#include <cstdint>
#include <string>

class QPainter;

namespace kv {

/// A small rectangle with the operations the drag needs. Controls stand in twips (15 to a
/// pixel) where the frame is drawn in pixels; the two conversions go between them.
class CRect {
  public:
    CRect() = default;
    CRect(int left, int top, int right, int bottom)
        : Left_(left), Top_(top), Right_(right), Bottom_(bottom) {}
    int Left() const { return Left_; }
    int Top() const { return Top_; }
    int Right() const { return Right_; }
    int Bottom() const { return Bottom_; }
    int Width() const { return Right_ - Left_; }
    int Height() const { return Bottom_ - Top_; }
    /// The rectangle of a control (a label, in pixels).
    void SetRectToCtrl(const Label& ctrl);
    /// A control takes the rectangle's place (its size stays its text's).
    void SetCtrlToRect(Label& ctrl) const;
    void ScreenToTwips();
    void TwipsToScreen();
    /// Left above right and top above bottom, whichever way the corners were given.
    void NormalizeRect();
    bool PtInRect(QPoint p) const;
    void Offset(int dx, int dy);

  private:
    int Left_ = 0, Top_ = 0, Right_ = 0, Bottom_ = 0;
};

inline constexpr int kTwipsPerPixel = 15;
inline constexpr int kTextLines = 4;
/// Where an empty line's label waits, out of sight.
inline constexpr int kParkedLeft = -100;

/// The text of one view and its drag.
class TextLabels {
  public:
    TextLabels();
    std::array<Label, kTextLines>& lblSText() { return lblSText_; }
    const std::array<Label, kTextLines>& lblSText() const { return lblSText_; }
    /// The text colour (decimal 0x00BBGGRR) and font of the lines.
    std::string color = "0";
    std::string fontFamily = "Arial";
    int fontSize = 10;
    bool bold = false, italic = false;

    /// The line under `p` (window pixels), -1 when none.
    int hit(QPoint p) const;
    /// A left press on a line starts its drag (TextIndex, DraggingText, DragMode 1): true when
    /// the press was the text's.
    bool lblSText_MouseDown(int button, QPoint p);
    /// The frame follows the pointer, held inside `graph`: its left not before the graph's left,
    /// its right not past the graph's right, its top above the graph's bottom.
    bool Form_MouseMove(int buttons, QPoint p, const QRect& graph);
    /// The label takes the frame's place; the drag ends.
    bool Form_MouseUp();

    bool dragging() const { return DragMode_ == 1; }
    int16_t TextIndex() const { return TextIndex_; }
    const CRect& DragRect() const { return DragRect_; }

    /// The visible lines, and the frame while a drag runs.
    void paint(QPainter& p) const;

  private:
    std::array<Label, kTextLines> lblSText_;
    int16_t TextIndex_ = 0;
    int16_t DragMode_ = 0; // 0 none, 1 a label is dragged
    bool DraggingText_ = false;
    CRect DragRect_;
    QPoint DragStart_; // the pointer's offset from the frame's corner
    bool moved_ = false;
};

/// What `dlgText` shows: the four lines as typed and the line with the focus.
struct TextFields {
    std::array<std::string, kTextLines> Text;
    int16_t TextIndex = 0;
};

namespace dlgText {
/// Each box takes its line's text from the view.
void Form_Load(const TextLabels& v, TextFields& f);
/// Writes line TextIndex to the view: an empty line is parked out of sight; a line with text
/// stands at the graph's left, stacked by its number, in the text colour, unless that colour is
/// the graph's background, when `contrast` is used instead.
void mnuWrite_Click(TextLabels& v, TextFields& f, const QRect& graph, const std::string& backColor,
                    const std::string& contrast);
/// Clears line TextIndex, box and label.
void mnuClean_Click(TextLabels& v, TextFields& f);
/// The font and colour chosen in the font dialog go to every line of the view.
void Command1_Click(TextLabels& v, const std::string& family, int size, bool bold, bool italic,
                    const std::string& color);
} // namespace dlgText

} // namespace kv
