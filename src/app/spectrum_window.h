// The Spectrum view's window: the plot with its labels, and the trace scroll bar under it. The
// window only shows the view and passes the user's pointer, scroll and resize on to it.
#pragma once

#include "views/spectrum/spectrum_form.h"

#include <QWidget>

class QMenu;
class QScrollBar;
class QTimer;

namespace kv {

class SpectrumWindow : public QWidget {
    Q_OBJECT
  public:
    explicit SpectrumWindow(Workbench& wb, QWidget* parent = nullptr);

    spectrum::SpectrumForm& form() { return form_; }
    QScrollBar* scrollBar() const { return hs_; }
    QTimer* timer() const { return tmrFFT_; }
    QWidget* plotWidget() const { return plot_; }
    /// The right-button pop-up of the plot (mnuMyPopUp).
    void setPopupMenu(QMenu* m) { popup_ = m; }

    /// The scroll bar follows HS without running the chain again.
    void mirrorScrollBar();
    /// The whole window as it is on screen, labels included.
    QImage picture() const;

  protected:
    bool eventFilter(QObject* o, QEvent* e) override;

  private:
    Workbench& wb_;
    spectrum::SpectrumForm form_;
    QWidget* plot_;
    QScrollBar* hs_;
    QTimer* tmrFFT_;
    QMenu* popup_ = nullptr;
    bool mirroring_ = false;
};

} // namespace kv
