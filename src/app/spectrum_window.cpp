// The Spectrum view's window.
#include "app/spectrum_window.h"

#include "state/workbench.h"

#include <QEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

namespace kv {

namespace {

int buttonNumber(Qt::MouseButtons b) {
    if (b & Qt::LeftButton) return 1;
    if (b & Qt::RightButton) return 2;
    if (b & Qt::MiddleButton) return 4;
    return 0;
}

} // namespace

SpectrumWindow::SpectrumWindow(Workbench& wb, QWidget* parent)
    : QWidget(parent), wb_(wb), form_(wb), plot_(new QWidget(this)),
      hs_(new QScrollBar(Qt::Horizontal, this)), tmrFFT_(new QTimer(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(plot_, 1);
    layout->addWidget(hs_);
    plot_->setMinimumSize(240, 160);
    plot_->setAttribute(Qt::WA_OpaquePaintEvent);
    plot_->installEventFilter(this);
    plot_->setMouseTracking(false);
    hs_->setObjectName(QStringLiteral("HS"));
    hs_->setSingleStep(1);
    tmrFFT_->setObjectName(QStringLiteral("tmrFFT"));
    tmrFFT_->setInterval(1);

    form_.onDrawn = [this] {
        mirrorScrollBar();
        plot_->update();
    };
    connect(hs_, &QScrollBar::valueChanged, this, [this](int v) {
        if (!mirroring_) form_.HS_Change(v);
    });
    connect(tmrFFT_, &QTimer::timeout, this, [this] {
        form_.tmrFFT_Timer();
        if (!form_.tmrFFT().Enabled) tmrFFT_->stop();
    });
}

void SpectrumWindow::mirrorScrollBar() {
    mirroring_ = true;
    const ScrollBar& s = form_.HS();
    hs_->setRange(s.Min, s.Max);
    hs_->setValue(s.Value);
    mirroring_ = false;
}

QImage SpectrumWindow::picture() const {
    QImage img(plot_->size(), QImage::Format_RGB32);
    QPainter p(&img);
    spectrum::paintSpectrumView(p, form_.view(), wb_.st);
    return img;
}

bool SpectrumWindow::eventFilter(QObject* o, QEvent* e) {
    if (o != plot_) return QWidget::eventFilter(o, e);
    const spectrum::PlotMargins m;
    switch (e->type()) {
    case QEvent::Paint: {
        QPainter p(plot_);
        spectrum::paintSpectrumView(p, form_.view(), wb_.st);
        return true;
    }
    case QEvent::Resize: {
        const QSize s = spectrum::plotSizeFor(plot_->size());
        form_.resizePlot(s.width(), s.height());
        plot_->update();
        return false;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease: {
        if (wb_.st.TempPath.empty()) return false;
        auto* me = static_cast<QMouseEvent*>(e);
        const float x = float(me->position().x() - m.left);
        const float y = float(me->position().y() - m.top);
        const auto feed = spectrum::feedFrom(wb_.st);
        auto& v = form_.view();
        if (e->type() == QEvent::MouseButtonPress) {
            v.MouseDown(wb_.st, feed, buttonNumber(me->button()), x, y);
            if (v.takePopupRequest() && popup_) popup_->popup(me->globalPosition().toPoint());
        } else if (e->type() == QEvent::MouseMove) {
            v.MouseMove(wb_.st, feed, buttonNumber(me->buttons()), x, y);
        } else {
            v.MouseUp();
        }
        plot_->update();
        return true;
    }
    default:
        return false;
    }
}

} // namespace kv
