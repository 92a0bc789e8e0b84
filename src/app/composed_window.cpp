// The O-scope's and the Phase view's windows share this frame.
#include "app/composed_window.h"

#include "views/view_label.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

namespace kv {

namespace {

int buttonsOf(Qt::MouseButtons b) {
    int n = NoButton;
    if (b & Qt::LeftButton) n |= LeftButton;
    if (b & Qt::RightButton) n |= RightButton;
    if (b & Qt::MiddleButton) n |= MiddleButton;
    return n;
}

} // namespace

ComposedWindow::ComposedWindow(QWidget* parent)
    : QWidget(parent), hs_(new QScrollBar(Qt::Horizontal, this)) {
    hs_->setObjectName(QStringLiteral("HS"));
    hs_->setSingleStep(1);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(209, 216);
    connect(hs_, &QScrollBar::valueChanged, this, [this](int v) {
        if (mirroring_) return;
        scrolled(v);
        refresh();
    });
}

void ComposedWindow::mirrorScrollBar() {
    mirroring_ = true;
    const ScrollBar& s = modelScrollBar();
    hs_->setGeometry(s.rect);
    hs_->setRange(s.Min, s.Max);
    hs_->setValue(s.Value);
    hs_->setEnabled(s.Enabled);
    mirroring_ = false;
}

void ComposedWindow::refresh() {
    mirrorScrollBar();
    update();
}

void ComposedWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.drawImage(0, 0, picture());
}

void ComposedWindow::resizeEvent(QResizeEvent*) {
    resized(width(), height());
    refresh();
}

void ComposedWindow::mousePressEvent(QMouseEvent* e) {
    press(buttonsOf(e->button()), int(e->position().x()), int(e->position().y()));
    refresh();
}

void ComposedWindow::mouseMoveEvent(QMouseEvent* e) {
    move(buttonsOf(e->buttons()), int(e->position().x()), int(e->position().y()));
    refresh();
}

void ComposedWindow::mouseReleaseEvent(QMouseEvent* e) {
    release(buttonsOf(e->button()), int(e->position().x()), int(e->position().y()));
    refresh();
}

} // namespace kv
