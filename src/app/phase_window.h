// The Phase view's window: the view model composed as one picture, with its scroll bar.
#pragma once

#include "app/composed_window.h"
#include "views/phase/phase_view.h"

namespace kv {

struct Workbench;

class PhaseWindow : public ComposedWindow {
    Q_OBJECT
  public:
    explicit PhaseWindow(Workbench& wb, QWidget* parent = nullptr);
    phase::PhaseView& view() { return view_; }
    QImage picture() const override { return view_.renderWindow(); }
    /// Another view or the transport moved to a new trace.
    void traceChanged();
    /// New settings: scale, grid and curve again.
    void redraw();
    void clearPicture();

  protected:
    ScrollBar& modelScrollBar() override { return view_.HS; }
    void scrolled(int value) override { view_.setScrollValue(value); }
    void resized(int w, int h) override;
    void press(int button, int x, int y) override;
    void move(int buttons, int x, int y) override;
    void release(int button, int x, int y) override;
    void closeEvent(QCloseEvent* e) override;

  private:
    Workbench& wb_;
    phase::PhaseView view_;
    bool loaded_ = false;
};

} // namespace kv
