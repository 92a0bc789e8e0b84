// A view window whose model composes the whole window itself (labels, graph, overlays): the
// O-scope and the Phase view. The window paints the model's picture, puts a real scroll bar
// where the model keeps its own, and passes the pointer, the scroll bar and resizes on.
#pragma once

#include <QImage>
#include <QWidget>

class QScrollBar;

namespace kv {

struct ScrollBar;

class ComposedWindow : public QWidget {
    Q_OBJECT
  public:
    explicit ComposedWindow(QWidget* parent = nullptr);

    /// The window as the model draws it.
    virtual QImage picture() const = 0;
    /// The scroll bar follows the model's without moving through the data.
    void mirrorScrollBar();
    QScrollBar* scrollBar() const { return hs_; }

  protected:
    virtual ScrollBar& modelScrollBar() = 0;
    virtual void scrolled(int value) = 0;
    virtual void resized(int w, int h) = 0;
    virtual void press(int button, int x, int y) = 0;
    virtual void move(int buttons, int x, int y) = 0;
    virtual void release(int button, int x, int y) = 0;
    /// After every change the model made: the scroll bar and the picture follow.
    void refresh();

    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void mousePressEvent(QMouseEvent*) override;
    void mouseMoveEvent(QMouseEvent*) override;
    void mouseReleaseEvent(QMouseEvent*) override;

  private:
    QScrollBar* hs_;
    bool mirroring_ = false;
};

} // namespace kv
