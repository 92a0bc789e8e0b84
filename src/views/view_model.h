// What every view model offers whatever shows it, and the one thing every view has: its trace
// scroll bar `HS`. The core asks for views through ViewHost by ViewId; a host keeps the open
// views' models in a map by that id and passes each request on through this interface alone,
// so that it never needs to know which view it talks to. A window is a frame round the model:
// it paints the model's picture, puts a real scroll bar where the model keeps its own, and
// passes the pointer, the scroll bar and resizes on.
#pragma once

#include "views/text_labels.h"
#include "views/view_label.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <string>
#include <vector>

namespace kv {

class ViewModel {
  public:
    virtual ~ViewModel() = default;

    // ---- Life of the view ------------------------------------------------------------------
    /// The view comes up in a window of this size (pixels): its scroll bar takes the data set's
    /// range (0..LastTrace) and the trace on show, and it draws what there is to draw.
    virtual void load(int width, int height) = 0;
    virtual void resize(int width, int height) = 0;
    /// The view goes away, closed by the user or by the core: what it switched on goes off and
    /// the commands it served go up and grey. The host runs viewUnloaded afterwards.
    virtual void unload() = 0;

    // ---- Requests of the core -----------------------------------------------------------------
    /// New settings: scales, grid and picture again.
    virtual void redraw() = 0;
    /// The trace on show changed elsewhere (another view, the transport): show it.
    virtual void traceChanged() = 0;
    /// Empties the picture (First does this to a stack of traces).
    virtual void clearPicture() {}
    /// The scroll bar stands on `value`; nothing moves through the data.
    void setScrollValue(int value) { HS_.Value = value; }
    /// A command that belongs to this view, by its name ("mnuZoomIn", "mnuFlip" ...). A name the
    /// view does not know does nothing.
    virtual void command(const std::string& name) { (void)name; }
    /// The first drawing after an open (the Spectrum view's).
    virtual void firstDraw() {}
    /// Pause: the final state of the trace a playback stopped at.
    virtual void finalDraw() {}
    /// A waterfall starts over: from 0, or `atEnd`, from the last trace.
    virtual void reset(bool atEnd) { (void)atEnd; }

    // ---- What a window shows and passes on (window pixels) -----------------------------------
    /// The whole view as the user sees it.
    virtual QImage picture() const = 0;
    const ScrollBar& scrollBar() const { return HS_; }
    /// The smallest window that shows the view's labels whole, as the view stands now (the
    /// read-outs that are on, the captions its data gives); the window holds itself to it.
    virtual QSize minimumSize() const { return {kMinViewWidth, kMinViewHeight}; }
    /// The view's own texts on show, where the picture has them (window pixels), the free text
    /// not included: what the minimum size has to keep whole and apart.
    virtual std::vector<Label> visibleLabels() const = 0;
    /// The user moved the scroll bar to `value`, held in its range: a change runs HS_Change,
    /// as a scroll bar fires its change event.
    virtual void scrolled(int value) {
        if (moveScrollBar(HS_, value)) HS_Change();
    }
    virtual void mousePress(int button, int x, int y) = 0;
    virtual void mouseMove(int buttons, int x, int y) = 0;
    virtual void mouseRelease(int button, int x, int y) = 0;
    /// True once after a press that asks for the view's pop-up menu.
    virtual bool takePopupRequest() { return false; }

    // ---- Text on the view -----------------------------------------------------------------------
    TextLabels& texts() { return texts_; }
    const TextLabels& texts() const { return texts_; }
    /// Where text may be dragged, window pixels: by default the window above the scroll bar.
    virtual QRect textArea() const {
        return QRect(0, 0, HS_.rect.width(), std::max(HS_.rect.top(), 1));
    }
    /// The view as the user sees it with its text over it: what windows, pictures and prints show.
    QImage pictureWithText() const {
        QImage img = picture();
        QPainter p(&img);
        texts_.paint(p);
        return img;
    }
    /// The pointer goes to the text first: true when the event was a text's (a press on a line,
    /// the drag that follows, its release), and the view does not see it.
    bool textPress(int button, int x, int y) { return texts_.lblSText_MouseDown(button, {x, y}); }
    bool textMove(int buttons, int x, int y) {
        return texts_.Form_MouseMove(buttons, {x, y}, textArea());
    }
    bool textRelease() { return texts_.Form_MouseUp(); }

  protected:
    /// The scroll bar's change event: the view moves through the data to `HS_.Value`.
    virtual void HS_Change() {}

    ScrollBar HS_;
    TextLabels texts_;
};

} // namespace kv
