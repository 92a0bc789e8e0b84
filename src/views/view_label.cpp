// Label text and size for the views' axis and read-out labels.
#include "views/view_label.h"

#include <QFontMetrics>
#include <QPainter>
#include <QString>
#include <algorithm>

namespace kv {

GraphLayout layOutGraph(int width, int height, const GraphMargins& m) {
    GraphLayout g;
    g.window = QSize(std::max(width, m.minWidth), std::max(height, m.minHeight));
    g.graph = QRect(m.left, m.top, g.window.width() - m.width, g.window.height() - m.height);
    g.scrollBar = QRect(g.graph.left(), g.graph.bottom() + 3, g.graph.width(), kScrollHeight);
    return g;
}

bool moveScrollBar(ScrollBar& hs, int value) {
    value = std::clamp(value, hs.Min, std::max(hs.Min, hs.Max));
    if (value == hs.Value) return false;
    hs.Value = value;
    return true;
}

QFont labelFont() {
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(11);
    return f;
}

void setLabelText(Label& l, const std::string& text) {
    const QFontMetrics fm(labelFont());
    l.text = text;
    l.width = fm.horizontalAdvance(QString::fromStdString(text)) + 2;
    l.height = fm.height();
}

Label rotatedLabel(const std::string& text, int cx, int cy, int pixelSize, const QString& family) {
    QFont f(family);
    f.setPixelSize(std::max(pixelSize, 1));
    const QFontMetrics fm(f);
    const int w = fm.horizontalAdvance(QString::fromStdString(text));
    const int h = fm.height();
    Label l{.text = text, .left = cx - h / 2, .top = cy - w / 2, .width = h, .height = w};
    l.rotation = 90;
    l.family = family;
    l.pixelSize = std::max(pixelSize, 1);
    return l;
}

QFont Label::font() const {
    QFont f;
    if (!family.isEmpty()) f.setFamily(family);
    f.setPixelSize(std::max(pixelSize, 1));
    return f;
}

void repaintLabel(QPainter& p, const Label& l) {
    if (!l.visible || l.text.empty()) return;
    const QRect box(l.left, l.top, l.width, l.height);
    if (l.opaque) p.fillRect(box, QColor(l.background));
    const QFont f = l.font();
    const QString s = QString::fromStdString(l.text);
    p.setFont(f);
    p.setPen(QColor(l.color));
    if (l.rotation == 0) {
        p.drawText(box, Qt::AlignLeft | Qt::AlignVCenter, s);
        return;
    }
    // As Surface::textRotated turns it: about the box's centre, a quarter turn back.
    const QFontMetrics fm(f);
    p.save();
    p.translate(l.left + l.width / 2, l.top + l.height / 2);
    p.rotate(-90.0);
    p.drawText(-fm.horizontalAdvance(s) / 2, (fm.ascent() - fm.descent()) / 2, s);
    p.restore();
}

void paintLabel(QPainter& p, const Label& l, const QColor& c) {
    if (!l.visible || l.text.empty()) return;
    p.setPen(c);
    p.drawText(QRect(l.left, l.top, l.width, l.height), Qt::AlignLeft | Qt::AlignVCenter,
               QString::fromStdString(l.text));
}

void paintScrollBar(QPainter& p, const ScrollBar& hs) {
    p.fillRect(hs.rect, QColor(0xD8, 0xD8, 0xD8));
    const int range = std::max(1, hs.Max - hs.Min);
    const int thumbW = std::min(hs.rect.width(), 24);
    const int thumbX = hs.rect.left() + (hs.rect.width() - thumbW) * (hs.Value - hs.Min) / range;
    p.fillRect(QRect(thumbX, hs.rect.top(), thumbW, hs.rect.height()),
               hs.Enabled ? QColor(0x90, 0x90, 0x90) : QColor(0xC0, 0xC0, 0xC0));
}

} // namespace kv
