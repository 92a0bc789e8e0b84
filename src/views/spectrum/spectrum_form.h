// The Spectrum view as a form of the workbench: its plot, its trace scroll bar `HS` and the
// playback timer `tmrFFT`, and the chain a move of the scroll bar runs (the trace read, the
// spectrum, the other open views, the drawing). Windows and the command-line renderer both
// drive the view through this one object. In a window the plot with its labels fills the
// window above the scroll bar.
#pragma once

#include "views/spectrum/markers.h"
#include "views/spectrum/spectrum_view.h"
#include "views/view_label.h"
#include "views/view_model.h"

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

class SpectrumForm : public ViewModel {
  public:
    explicit SpectrumForm(Workbench& wb) : wb_(wb) {}

    // ---- ViewModel ------------------------------------------------------------------------------
    /// The scroll bar takes the data set's range however the view comes up (after an open, from
    /// the menu, beside other views), then the plot is laid out for the window.
    void load(int width, int height) override;
    void resize(int width, int height) override;
    /// The metric read-outs are this view's: they go off with it, flags, buttons and ticks
    /// together, so that the next press switches one on again.
    void unload() override;
    /// The markers' commands: "MarkerModeOn" (records cleared, the markers' pop-up armed),
    /// "ExitMarkerModue" (the current marker's cross goes, the scroll bar comes back) and
    /// "NoMarkers" (every marker goes). "UpdateAn" needs no work here: the read-out labels are
    /// painted from the state with every picture, and the host repaints after each command.
    void command(const std::string& name) override;
    void redraw() override { relayout(); }
    void traceChanged() override { DrawTimer(); }
    QImage picture() const override;
    QSize minimumSize() const override;
    std::vector<Label> visibleLabels() const override;
    /// Text is dragged over the plot.
    QRect textArea() const override;
    /// The Spectrum view runs its chain for every move of its scroll bar, also to where it is.
    void scrolled(int value) override { HS_Change(value); }
    void mousePress(int button, int x, int y) override;
    void mouseMove(int buttons, int x, int y) override;
    void mouseRelease(int button, int x, int y) override;
    /// After a right press once markers have been used: the markers' pop-up menu.
    bool takePopupRequest() override { return view_.takePopupRequest(); }

    MarkerSet& markers() { return markers_; }
    const MarkerSet& markers() const { return markers_; }
    /// The marker table as `dlgMarkers` shows it, headed when marker mode began.
    MarkerTable& markerTable() { return markerTable_; }
    /// A click on row `row` of the table: that marker's frame shows.
    void markerRowClicked(int row);

    SpectrumView& view() { return view_; }
    const SpectrumView& view() const { return view_; }
    ScrollBar& HS() { return HS_; }
    const ScrollBar& HS() const { return HS_; }
    PlayTimer& tmrFFT() { return tmrFFT_; }

    /// The plot got a new size: the fold is made for the new width, the view laid out again,
    /// and a Stacked plot starts empty.
    void resizePlot(int w, int h);
    /// The first drawing after an open: the scroll range, the fold for this plot, the layout.
    void firstDraw() override;
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
    void finalDraw() override;
    /// Empties the plot (First in Stacked mode).
    void clearPicture() override;

  private:
    void showPeak();
    /// The pointer's place on the plot, from window pixels.
    QPointF onPlot(int x, int y) const;
    void layOutIfNeeded(const SpectrumFeed& f);
    /// The marker routine: the current marker (MarkerCount + 1) on the curve under `x`. False
    /// when the column holds no curve.
    bool markerAt(float x, float y);
    /// The reference curves that are on, activated and folded for the plot as it is laid out.
    void prepareReferences();

    Workbench& wb_;
    SpectrumView view_;
    QSize window_; // the window the view fills
    PlayTimer tmrFFT_;
    MarkerSet markers_;
    MarkerTable markerTable_;
};

} // namespace kv::spectrum
