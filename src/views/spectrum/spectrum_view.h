// The Spectrum view: the plot of the trace on show, its grid and labels, how a new trace
// replaces the old one without flicker (the old curve is redrawn in the background colour, then
// the new one drawn), and the Stacked mode that lets traces pile up until something clears the
// plot. The view draws into its own persistent surface; a window or a picture only shows it.
#pragma once

#include "views/spectrum/pointer_readout.h"
#include "views/spectrum/spectrum_scales.h"
#include "views/surface.h"

#include <QPoint>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

class QPainter;

namespace kv {
struct ProgramState;
}

namespace kv::spectrum {

/// What the spectrum engine leaves for the view after each trace: the folded columns and the
/// figures of the band and of the peak.
struct SpectrumFeed {
    std::span<const float> ColVal;  // 0..ColumnCount, the largest level of each column
    std::span<const float> ColLogX; // Log10 of the bin where that level stands
    std::span<const float> SpanCol; // 0..SpanBins, the columns of a span
    int32_t ColumnCount = 0;
    int32_t SpanBins = 0;
    float PeakDb = 0;
    double PeakFreq = 0;
    double MaxFreq = 0;
    double BinWidth = 0;
    double SpanFactor = 1;
    double SpanLowFreq = 0;
    double SpanHighFreq = 0;
    double LevelDb = 0;
};

class SpectrumView {
  public:
    /// The plot area in pixels (the picture `picFFT`).
    void setPlotSize(int w, int h);

    /// Full layout after a new data set, a resize or a display change: scale factors, grid,
    /// labels, the curve, the level line and the peak text. On the first draw of a data set it
    /// lifts the plot's top above a strong peak.
    void Resized(ProgramState& st, const SpectrumFeed& f);
    /// After a change of the scale settings: factors, grid, a cleared plot and a fresh curve.
    void UpdateFFT_A(ProgramState& st, const SpectrumFeed& f);
    /// As UpdateFFT_A after the options dialog, which may also have changed the colours.
    void FromSettings(ProgramState& st, const SpectrumFeed& f) { UpdateFFT_A(st, f); }
    /// Grid positions and the labels of both axes.
    void DrawGrid(const ProgramState& st, const SpectrumFeed& f);
    /// Draws the trace on show, choosing the routine by DrSet, SpanActive and ModeFFT.
    void Draw_s(const ProgramState& st, const SpectrumFeed& f);
    /// Peak text for the status panel and the label over the plot.
    void ShowMax(const ProgramState& st, const SpectrumFeed& f);
    /// Places the level line and its label.
    void VisaDb(const ProgramState& st, const SpectrumFeed& f);
    /// Line width of the plot: bars get as wide as a column, a curve 1 pixel.
    void LineWidth(const ProgramState& st, int32_t Sp_Bins);
    /// A Stacked plot starts again empty after a size or scale change.
    void ReDrawMode2(const ProgramState& st);
    /// Empties the plot in the background colour; the old curve is forgotten.
    void Cls(const ProgramState& st);

    // The six drawing routines Draw_s picks from.
    void DrawLinX(const ProgramState& st, const SpectrumFeed& f);
    void DrawLogX(const ProgramState& st, const SpectrumFeed& f);
    void DrawSpan(const ProgramState& st, const SpectrumFeed& f);
    void DrawLinX_Stak(const ProgramState& st, const SpectrumFeed& f);
    void DrawLogX_Stak(const ProgramState& st, const SpectrumFeed& f);
    void DrawSpan_Stak(const ProgramState& st, const SpectrumFeed& f);

    /// The reference curves that are on, over the live one, each in its colour (Line1Color,
    /// Line2Color), from the folded reference columns: placed by their own frequencies, so a
    /// reference of a narrower band covers only its share of the plot.
    void DrawReferences(const ProgramState& st, const SpectrumFeed& f);
    /// The points of reference line 1 or 2 as last drawn (empty when it is off).
    const std::vector<QPoint>& RefPoints(int line) const {
        return line == 2 ? RefPoints2_ : RefPoints1_;
    }

    /// One cross of the bandwidth mark: its centre on the plot and the edge frequency it marks.
    struct BredMark {
        float x = 0;
        int y = 0;
        double hz = 0;
    };
    /// The bandwidth mark while it shows (the GPR read-out was taken, a dB scale): a cross at
    /// each edge where the curve on show falls Bred dB under its peak, on the row of the level
    /// Bred under the plot's 0 dB (full scale in dBFS, the peak in dBc). A side with no such bin
    /// has none.
    std::vector<BredMark> BredMarks(const ProgramState& st, const SpectrumFeed& f) const;
    /// The column of a frequency on the present X scale, the inverse of the pointer read-out.
    float columnOf(const ProgramState& st, const SpectrumFeed& f, double hz) const;

    // The pointer cross: a press, a move with the left button held, the release.
    void MouseDown(const ProgramState& st, const SpectrumFeed& f, int button, float x, float y);
    void MouseMove(const ProgramState& st, const SpectrumFeed& f, int button, float x, float y);
    void MouseUp();

    // ---- What the view shows ------------------------------------------------------------------
    const Surface& surface() const { return surface_; }
    int PlotW() const { return PlotW_; }
    int PlotH() const { return PlotH_; }
    /// The column budget of the fold: half the plot's width, rounded.
    int32_t PlotColumns() const;
    float TopDb() const { return TopDb_; }
    int DrawWidth() const { return DrawWidth_; }
    const std::vector<QPoint>& CurvePoints() const { return CurvePoints_; }
    int32_t CurveCount() const { return CurveCount_; }
    const std::vector<int>& GridXs() const { return GridXs_; }
    const std::vector<int>& GridYs() const { return GridYs_; }
    float ColStep() const { return ColStep_; }
    float LogStep() const { return LogStep_; }
    float DbScale() const { return DbScale_; }
    float LinScale() const { return LinScale_; }
    float AmpScale() const { return AmpScale_; }

    /// Labels under the plot (x relative to the plot) and beside it (lbly, top to bottom).
    const std::vector<Label>& xLabels() const { return xLabels_; }
    const std::vector<std::string>& lbly() const { return lbly_; }
    /// The name of the level axis (`txtText`).
    const std::string& txtText() const { return txtText_; }
    /// The frequency axis' unit text and its step text ("2.4 kHz/div").
    const std::string& XUnitText() const { return XUnitText_; }
    const std::string& xStepText() const { return xStepText_; }
    /// The peak: the status panel's text and the label over the plot.
    const std::string& peakStatus() const { return peakStatus_; }
    const Label& peakLabel() const { return peakLabel_; }
    const std::string& PeakPrefix() const { return PeakPrefix_; }
    /// The level line and its label.
    bool levelLineShown() const { return levelShown_; }
    float LevelY() const { return LevelY_; }
    const Label& lbldbS() const { return lbldbS_; }

    /// The pointer cross and its labels.
    bool crossShown() const { return crossShown_; }
    float PointerX() const { return PointerX_; }
    int crossRow() const { return crossRow_; }
    const Label& lblMyFr() const { return lblMyFr_; }
    const Label& lbldB() const { return lbldB_; }
    double FreqShown() const { return FreqShown_; }
    const std::string& FreqUnit() const { return FreqUnit_; }
    /// The read-out at (x, y) of the plot; in marker mode the level is that of `markerRow`.
    std::optional<PointerText> ReadoutAt(const ProgramState& st, const SpectrumFeed& f, float x,
                                         float y, bool markerMode, int markerRow) const;
    /// The first row from the top of column `x` in the trace colour; 0 when there is none.
    int TraceRowAt(const ProgramState& st, int x) const;
    /// True after a right press, when the pop-up menu is to show at the press.
    bool takePopupRequest();
    /// Markers have been used in this data set: a right press brings up their pop-up.
    void setMarkersActive(bool on) { MarkersActive_ = on; }

  private:
    void computeFactors(const ProgramState& st, const SpectrumFeed& f);
    void setYCaption(const ProgramState& st);
    float topDbFor(const ProgramState& st, const SpectrumFeed& f) const;
    int yOf(const ProgramState& st, float value) const;
    /// The points of the trace on show for the routine's X rule.
    enum class XRule { Linear, Log, Span };
    std::vector<QPoint> curveFor(const ProgramState& st, const SpectrumFeed& f, XRule rule) const;
    void erasingDraw(const ProgramState& st, const SpectrumFeed& f, XRule rule);
    void stackedDraw(const ProgramState& st, const SpectrumFeed& f, XRule rule);
    void repairGrid(Surface& pic, const ProgramState& st, bool onlyWhenShown) const;
    void drawBars(Surface& pic, const std::vector<QPoint>& pts, QRgb c) const;
    void PointerReadout(const ProgramState& st, const SpectrumFeed& f);
    std::vector<QPoint> referenceCurve(const ProgramState& st, const SpectrumFeed& f,
                                       int line) const;

    Surface surface_;
    int PlotW_ = 0, PlotH_ = 0;
    int DrawWidth_ = 1;
    std::vector<QPoint> CurvePoints_;
    int32_t CurveCount_ = 1;
    std::vector<int> GridXs_, GridYs_;
    float ColStep_ = 0, LogStep_ = 0, AmpScale_ = 0, DbScale_ = 0, LinScale_ = 0;
    int32_t BinsHalf_ = 0;
    double LogBinsHalf_ = 0;
    float TopDb_ = 0;
    double yStep_ = 0;

    std::vector<Label> xLabels_;
    std::vector<std::string> lbly_;
    std::string txtText_, XUnitText_, xStepText_;
    std::string peakStatus_, PeakPrefix_ = "Hz";
    Label peakLabel_;
    bool levelShown_ = false;
    float LevelY_ = 0;
    Label lbldbS_;

    float PointerX_ = 0, PointerY_ = 0;
    bool crossShown_ = false;
    int crossRow_ = 0;
    Label lblMyFr_, lbldB_;
    double FreqShown_ = 0;
    std::string FreqUnit_ = "Hz";
    bool popupRequested_ = false;
    bool MarkersActive_ = false;
    std::vector<QPoint> RefPoints1_, RefPoints2_;
};

/// Paints the view as its window shows it into `target` (size w x h): the plot inside margins,
/// the level and frequency labels round it, the axis captions, the peak text, and the pointer
/// cross while it shows.
void paintSpectrumView(QPainter& p, const SpectrumView& v, const ProgramState& st);
/// Paints the bandwidth mark's crosses (`lnBredR`, `lnBredC`) over a plot whose corner is
/// `origin`.
void DrawBredMarks(QPainter& p, const std::vector<SpectrumView::BredMark>& marks, QPoint origin,
                   QColor c);
/// The margins round the plot in a window of the given size, and the plot size they leave.
struct PlotMargins {
    int left = 56, top = 22, right = 14, bottom = 40;
};
QSize plotSizeFor(QSize window);
/// The texts round the plot in a window of the given size, where paintSpectrumView puts them
/// (window pixels): the black ones (level and frequency labels, axis captions, read-outs), the
/// level line's label, the pointer's read-outs, and the level axis' caption.
struct SpectrumTexts {
    std::vector<Label> black, level, pointer;
    Label caption; ///< the level axis' name, turned up beside the level labels
};
/// Where the level axis' name stands, turned a quarter turn, in a window of the given size:
/// left of the level labels, as high as the plot.
QRect captionRect(const SpectrumView& v);
SpectrumTexts spectrumTexts(const SpectrumView& v, const ProgramState& st, QSize window);
/// The smallest window that shows the view's texts whole: the read-outs that are on side by side
/// with the axis caption, and room for the level labels.
QSize spectrumMinimumSize(const SpectrumView& v, const ProgramState& st);

} // namespace kv::spectrum
