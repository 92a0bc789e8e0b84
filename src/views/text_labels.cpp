// Text on the views and its drag.
#include "views/text_labels.h"

#include "views/surface.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

namespace kv {

// ---- CRect
// ----------------------------------------------------------------------------------------

void CRect::SetRectToCtrl(const Label& c) {
    Left_ = c.left;
    Top_ = c.top;
    Right_ = c.left + c.width;
    Bottom_ = c.top + c.height;
}

void CRect::SetCtrlToRect(Label& c) const {
    c.left = Left_;
    c.top = Top_;
}

void CRect::ScreenToTwips() {
    Left_ *= kTwipsPerPixel;
    Top_ *= kTwipsPerPixel;
    Right_ *= kTwipsPerPixel;
    Bottom_ *= kTwipsPerPixel;
}

void CRect::TwipsToScreen() {
    Left_ /= kTwipsPerPixel;
    Top_ /= kTwipsPerPixel;
    Right_ /= kTwipsPerPixel;
    Bottom_ /= kTwipsPerPixel;
}

void CRect::NormalizeRect() {
    if (Left_ > Right_) std::swap(Left_, Right_);
    if (Top_ > Bottom_) std::swap(Top_, Bottom_);
}

bool CRect::PtInRect(QPoint p) const {
    return p.x() >= Left_ && p.x() < Right_ && p.y() >= Top_ && p.y() < Bottom_;
}

void CRect::Offset(int dx, int dy) {
    Left_ += dx;
    Right_ += dx;
    Top_ += dy;
    Bottom_ += dy;
}

// ---- The labels and their drag
// ----------------------------------------------------------------------

namespace {

QFont fontOf(const TextLabels& t) {
    QFont f(QString::fromStdString(t.fontFamily));
    f.setPointSize(std::max(t.fontSize, 1));
    f.setBold(t.bold);
    f.setItalic(t.italic);
    return f;
}

void sizeToText(const TextLabels& t, Label& l) {
    const QFontMetrics fm(fontOf(t));
    l.width = fm.horizontalAdvance(QString::fromStdString(l.text)) + 2;
    l.height = fm.height();
}

} // namespace

TextLabels::TextLabels() {
    for (Label& l : lblSText_) {
        l.left = kParkedLeft;
        l.visible = false;
    }
}

int TextLabels::hit(QPoint p) const {
    for (int i = kTextLines - 1; i >= 0; --i) {
        const Label& l = lblSText_[size_t(i)];
        if (!l.visible || l.text.empty()) continue;
        CRect r;
        r.SetRectToCtrl(l);
        if (r.PtInRect(p)) return i;
    }
    return -1;
}

bool TextLabels::lblSText_MouseDown(int button, QPoint p) {
    if (button != LeftButton) return false;
    const int i = hit(p);
    if (i < 0) return false;
    TextIndex_ = int16_t(i);
    DraggingText_ = true;
    DragRect_.SetRectToCtrl(lblSText_[size_t(i)]);
    DragStart_ = p - QPoint(DragRect_.Left(), DragRect_.Top());
    DragMode_ = 1;
    moved_ = false;
    return true;
}

bool TextLabels::Form_MouseMove(int buttons, QPoint p, const QRect& graph) {
    if (DragMode_ != 1 || !(buttons & LeftButton)) return DragMode_ == 1;
    const int w = DragRect_.Width(), h = DragRect_.Height();
    int left = p.x() - DragStart_.x(), top = p.y() - DragStart_.y();
    // Held inside the graph: the frame's right edge not past the graph's right, its left not
    // before its left, its top above its bottom and not above its top.
    left = std::min(left, graph.right() + 1 - w);
    left = std::max(left, graph.left());
    top = std::min(top, graph.bottom() - h);
    top = std::max(top, graph.top());
    DragRect_ = CRect(left, top, left + w, top + h);
    moved_ = true;
    return true;
}

bool TextLabels::Form_MouseUp() {
    if (DragMode_ != 1) return false;
    if (moved_) DragRect_.SetCtrlToRect(lblSText_[size_t(TextIndex_)]);
    DragMode_ = 0;
    DraggingText_ = false;
    return true;
}

void TextLabels::paint(QPainter& p) const {
    p.save();
    p.setFont(fontOf(*this));
    const QFontMetrics fm(p.font());
    p.setPen(QColor(colorFromIni(color)));
    for (const Label& l : lblSText_)
        if (l.visible && !l.text.empty())
            p.drawText(l.left + 1, l.top + fm.ascent(), QString::fromStdString(l.text));
    if (DragMode_ == 1 && moved_) {
        // The frame stands out on any background, as an inverted rubber band would.
        p.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        QPen pen(QColor(255, 255, 255));
        pen.setWidth(2);
        p.setPen(pen);
        p.setBrush(Qt::NoBrush);
        p.drawRect(DragRect_.Left(), DragRect_.Top(), DragRect_.Width(), DragRect_.Height());
    }
    p.restore();
}

// ---- dlgText
// ---------------------------------------------------------------------------------------

namespace dlgText {

void Form_Load(const TextLabels& v, TextFields& f) {
    for (size_t i = 0; i < size_t(kTextLines); ++i)
        f.Text[i] = v.lblSText()[i].text;
}

void mnuWrite_Click(TextLabels& v, TextFields& f, const QRect& graph, const std::string& backColor,
                    const std::string& contrast) {
    const size_t i = size_t(std::clamp<int>(f.TextIndex, 0, kTextLines - 1));
    Label& l = v.lblSText()[i];
    l.text = f.Text[i];
    if (l.text.empty()) {
        l.left = kParkedLeft;
        l.visible = false;
        return;
    }
    sizeToText(v, l);
    // The four lines start stacked at the graph's left.
    l.left = graph.left() + 6;
    l.top = graph.top() + int(i) * l.height;
    if (v.color == backColor) v.color = contrast;
    l.visible = true;
}

void mnuClean_Click(TextLabels& v, TextFields& f) {
    const size_t i = size_t(std::clamp<int>(f.TextIndex, 0, kTextLines - 1));
    f.Text[i].clear();
    Label& l = v.lblSText()[i];
    l.text.clear();
    l.left = kParkedLeft;
    l.visible = false;
}

void Command1_Click(TextLabels& v, const std::string& family, int size, bool bold, bool italic,
                    const std::string& color) {
    v.fontFamily = family;
    v.fontSize = size;
    v.bold = bold;
    v.italic = italic;
    if (!color.empty()) v.color = color;
    for (Label& l : v.lblSText())
        if (!l.text.empty()) sizeToText(v, l);
}

} // namespace dlgText

} // namespace kv
