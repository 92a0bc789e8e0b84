// The Spectrum view as a form of the workbench: its plot, its trace scroll bar `HS` and the
// playback timer `tmrFFT`, and the chain a move of the scroll bar runs (the trace read, the
// spectrum, the other open views, the drawing). Windows and the command-line renderer both
// drive the view through this one object.
#pragma once

#include "views/spectrum/spectrum_view.h"
#include "views/view_label.h"

#include <functional>

namespace kv {
struct Workbench;
}

namespace kv::spectrum {

/// The engine's results for the trace on show, as the view reads them.
SpectrumFeed feedFrom(const ProgramState& st);

/// The playback timer `tmrFFT`: whether it is switched on, and whether it is stepping.
struct PlayTimer {
    bool Enabled = false;
    bool Running = false;
};

/// One tick of the playback timer: forward or backward by one position of `hs`, until its end
/// or a Pause, which switch the timer off. True when it moved `hs.Value`, in which case the
/// caller runs the scroll bar's change handler, as a moved scroll bar would.
bool tmrFFT_Tick(const ProgramState& st, ScrollBar& hs, PlayTimer& timer);

class SpectrumForm {
  public:
    explicit SpectrumForm(Workbench& wb) : wb_(wb) {}

    SpectrumView& view() { return view_; }
    const SpectrumView& view() const { return view_; }
    ScrollBar& HS() { return hs_; }
    const ScrollBar& HS() const { return hs_; }
    PlayTimer& tmrFFT() { return tmrFFT_; }

    /// The plot got a new size: the fold is made for the new width, the view laid out again,
    /// and a Stacked plot starts empty.
    void resizePlot(int w, int h);
    /// The first drawing after an open: the scroll range, the fold for this plot, the layout.
    void firstDraw();
    /// The scroll bar moved to `value` (by the user, the timer or LastPart).
    void HS_Change(int value);
    /// Moves to the scroll bar's position: the whole chain for one trace.
    void ScrollNu();
    /// A loop elsewhere moved TracePos and built the spectrum: follow it.
    void DrawTimer();
    /// Jumps to the last position.
    void LastPart();
    /// Recomputes the scroll range.
    void HSMaxCh();
    /// One tick of the playback timer.
    void tmrFFT_Timer();
    /// Lays the view out again when a display setting or the data changed.
    void relayout();
    /// Pause: the final state, the peak text and, unless Stacked, the curve.
    void finalDraw();
    /// Empties the plot (First in Stacked mode).
    void clearPicture();

    /// Runs after the view drew (the window repaints and mirrors the status panel).
    std::function<void()> onDrawn;

  private:
    void showPeak();
    void layOutIfNeeded(const SpectrumFeed& f);

    Workbench& wb_;
    SpectrumView view_;
    ScrollBar hs_;
    PlayTimer tmrFFT_;
};

} // namespace kv::spectrum
