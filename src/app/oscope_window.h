// The O-scope's window: the view model composed as one picture, with its scroll bar.
#pragma once

#include "app/composed_window.h"
#include "views/oscilloscope/oscope_view.h"

namespace kv {

struct Workbench;

class OscopeWindow : public ComposedWindow {
    Q_OBJECT
  public:
    explicit OscopeWindow(Workbench& wb, QWidget* parent = nullptr);
    oscope::OscopeView& view() { return view_; }
    QImage picture() const override { return view_.renderWindow(); }
    /// A menu or toolbar command of this view, by its menu name.
    void command(const std::string& name);
    /// Another view or the transport moved to a new trace.
    void traceChanged();
    /// New settings: scales back to the whole trace.
    void redraw();

  protected:
    ScrollBar& modelScrollBar() override { return view_.HS; }
    void scrolled(int value) override { view_.setScrollValue(value); }
    void resized(int w, int h) override;
    void press(int button, int x, int y) override { view_.mousePress(button, x, y); }
    void move(int buttons, int x, int y) override { view_.mouseMove(buttons, x, y); }
    void release(int button, int x, int y) override { view_.mouseRelease(button, x, y); }
    void closeEvent(QCloseEvent* e) override;

  private:
    Workbench& wb_;
    oscope::OscopeView view_;
    bool loaded_ = false;
};

} // namespace kv
