// The view window.
#include "app/view_window.h"

#include "views/view_model.h"

#include <QCloseEvent>
#include <QCursor>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

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

ViewWindow::ViewWindow(ViewModel& model, QWidget* parent)
    : QWidget(parent), model_(model), hs_(new QScrollBar(Qt::Horizontal, this)) {
    hs_->setObjectName(QStringLiteral("HS"));
    hs_->setSingleStep(1);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(model_.minimumSize());
    setMouseTracking(true);
    connect(hs_, &QScrollBar::valueChanged, this, [this](int v) {
        if (mirroring_ || !loaded_) return;
        model_.scrolled(v);
        refresh();
    });
    // While the thumb is dragged the tip rides with it, so the user sees where it will land.
    connect(hs_, &QScrollBar::sliderMoved, this, [this](int v) { updateTip(v, true); });
    connect(hs_, &QScrollBar::sliderPressed, this, [this] { updateTip(hs_->value(), true); });
}

void ViewWindow::updateTip(int value, bool show) {
    if (!tipText) return;
    const QString tip = tipText(value);
    hs_->setToolTip(tip);
    if (show || (QToolTip::isVisible() && hs_->underMouse()))
        QToolTip::showText(QCursor::pos(), tip, hs_);
}

QImage ViewWindow::picture() const {
    return model_.pictureWithText();
}

void ViewWindow::mirrorScrollBar() {
    mirroring_ = true;
    const ScrollBar& s = model_.scrollBar();
    hs_->setGeometry(s.rect);
    hs_->setVisible(!s.rect.isEmpty());
    hs_->setRange(s.Min, s.Max);
    hs_->setValue(s.Value);
    hs_->setEnabled(s.Enabled);
    mirroring_ = false;
    updateTip(s.Value, hs_->isSliderDown());
}

void ViewWindow::refresh() {
    // The labels the view shows may have changed (a read-out switched on, a new data set's
    // captions): the window keeps to the size that shows them whole.
    if (loaded_) setMinimumSize(model_.minimumSize());
    mirrorScrollBar();
    update();
}

void ViewWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    if (!loaded_) {
        p.fillRect(rect(), QColor(kFormBackColor));
        return;
    }
    p.drawImage(0, 0, model_.pictureWithText());
    // The picture has the window's size in logical pixels, the same on every screen, and the
    // screen shows it enlarged pixel for pixel. On a screen of finer pixels the labels on plain
    // ground are painted again over it at the screen's own resolution, so that text stays sharp;
    // the curves, grids and rows are what the view drew.
    if (devicePixelRatioF() > 1.0)
        for (const Label& l : model_.visibleLabels())
            if (l.opaque) repaintLabel(p, l);
}

void ViewWindow::resizeEvent(QResizeEvent*) {
    if (loaded_) {
        model_.resize(width(), height());
    } else {
        model_.load(width(), height());
        loaded_ = true;
    }
    refresh();
}

void ViewWindow::mousePressEvent(QMouseEvent* e) {
    if (!loaded_) return;
    const int x = int(e->position().x()), y = int(e->position().y());
    if (model_.textPress(buttonsOf(e->button()), x, y)) {
        refresh();
        return;
    }
    model_.mousePress(buttonsOf(e->button()), x, y);
    if (model_.takePopupRequest() && popup_) popup_->popup(e->globalPosition().toPoint());
    refresh();
    if (afterClick) afterClick();
}

void ViewWindow::mouseMoveEvent(QMouseEvent* e) {
    if (!loaded_) return;
    const int x = int(e->position().x()), y = int(e->position().y());
    if (model_.textMove(buttonsOf(e->buttons()), x, y)) {
        refresh();
        return;
    }
    model_.mouseMove(buttonsOf(e->buttons()), x, y);
    refresh();
}

void ViewWindow::mouseReleaseEvent(QMouseEvent* e) {
    if (!loaded_) return;
    if (model_.textRelease()) {
        refresh();
        return;
    }
    model_.mouseRelease(buttonsOf(e->button()), int(e->position().x()), int(e->position().y()));
    refresh();
    if (afterClick) afterClick();
}

void ViewWindow::closeEvent(QCloseEvent* e) {
    if (loaded_) model_.unload();
    e->accept();
}

} // namespace kv
