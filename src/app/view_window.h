// The window of a view inside the main window's MDI area: a frame round the view's model. It
// paints the model's picture, puts a real scroll bar where the model keeps its own, passes the
// pointer, the scroll bar and resizes on, and brings up the view's pop-up menu when the model
// asks for it. Every view has this one window; what differs between views is in their models.
#pragma once

#include <QWidget>
#include <functional>

class QMenu;
class QScrollBar;

namespace kv {

class ViewModel;

class ViewWindow : public QWidget {
    Q_OBJECT
  public:
    explicit ViewWindow(ViewModel& model, QWidget* parent = nullptr);

    ViewModel& model() { return model_; }
    /// The model is loaded: it got its size when the window first did.
    bool loaded() const { return loaded_; }
    /// The window as the model draws it.
    QImage picture() const;
    QScrollBar* scrollBar() const { return hs_; }
    /// The pop-up a press may ask for (the Spectrum view's markers menu).
    void setPopupMenu(QMenu* m) { popup_ = m; }
    /// After every change the model made: the scroll bar and the picture follow.
    void refresh();
    /// The scroll bar's tip for a position ("Trace k of N"), shown on hover and while dragging.
    std::function<QString(int)> tipText;
    /// After a press or a release went to the model: what it changed beyond the picture (a
    /// marker set, commands enabled) shows in the rest of the workbench.
    std::function<void()> afterClick;

  protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void mousePressEvent(QMouseEvent*) override;
    void mouseMoveEvent(QMouseEvent*) override;
    void mouseReleaseEvent(QMouseEvent*) override;
    /// The user closed the window: the view's own unload runs.
    void closeEvent(QCloseEvent*) override;

  private:
    /// The scroll bar follows the model's without moving through the data.
    void mirrorScrollBar();
    /// The tip follows the position: set for hovering, and shown at once where it is on show.
    void updateTip(int value, bool show);

    ViewModel& model_;
    QScrollBar* hs_;
    QMenu* popup_ = nullptr;
    bool loaded_ = false;
    bool mirroring_ = false;
};

} // namespace kv
