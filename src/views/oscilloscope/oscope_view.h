// The O-scope view: one trace as amplitude against time, eight divisions high and ten wide,
// with its scales and labels, the decimated trace, the scroll bar that moves through the data,
// the rubber-band zoom with its stack of levels, the pointer cross, two measuring cursors and
// the maximum, minimum and peak-to-peak read-outs.
//
// The model owns the picture of the graph (a Surface the size of the graph), everything laid
// over it or around it (labels with text, position and visibility, cursor bars, the pointer
// cross, the rubber band, the scroll bar) and the state of this view alone: the zoom, the
// pointer, the cursors and the read-outs. A window only paints picture(), which composes these
// pieces into one image, and forwards mouse events in pixels.
//
// Coordinates: the form (the view's client area) has its origin top left; the graph sits at
// graphRect inside it. Mouse methods named picGraph_* take graph coordinates, the others form
// coordinates.
#pragma once

#include "state/view_host.h"
#include "views/curve_repaint.h"
#include "views/surface.h"
#include "views/view_label.h"
#include "views/view_model.h"

#include <QFont>
#include <QImage>
#include <QPoint>
#include <QRect>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kv {

struct Workbench;
struct ProgramState;
class CommandState;

namespace oscope {

using kv::Label;

/// A short vertical tick under the graph (form pixels).
struct Tick {
    int x = 0, y1 = 0, y2 = 0;
    bool visible = false;
};

using kv::ScrollBar;

// Fixed sizes of the view's furniture, in pixels.
inline constexpr int kGraphLeft = 72;      // room for the amplitude labels and the caption
inline constexpr int kGraphTop = 40;       // room for the read-outs and the cursor handles
inline constexpr int kWidthMargin = 112;   // form width - graph width
inline constexpr int kHeightMargin = 130;  // form height - graph height
inline constexpr int kKursorWidth = 3;     // width of a cursor bar
inline constexpr int kHandleWidth = 15;    // cursor grab handle above the graph
inline constexpr int kHandleHeight = 12;   //
inline constexpr int kMinFormWidth = 209;  // 3132 twips
inline constexpr int kMinFormHeight = 216; // 3240 twips
inline constexpr GraphMargins kMargins{kGraphLeft,    kGraphTop,     kWidthMargin,
                                       kHeightMargin, kMinFormWidth, kMinFormHeight};

/// Engineering time unit for a time per division in seconds. `index` -1 (no unit) leaves the
/// time per division as it was; otherwise it is scaled into the unit.
struct TimeUnitChoice {
    int index = -1; // 0 s, 1 ms, 2 us, 3 ns, 4 ps
    float timePerDiv = 0.0f;
};
TimeUnitChoice chooseTimeUnit(float timePerDivSeconds);

/// Every SampleStep-th sample is drawn, about one a pixel: the step, the distance of two drawn
/// points and the points of an unzoomed trace, for a graph `graphWidth` pixels wide showing
/// `viewSamples` of a trace of `Sp_Samples`.
struct SampleStepChoice {
    int32_t SampleStep = 1;
    float PixelsPerSample = 0.0f;
    int16_t PointCapacity = 0;
};
SampleStepChoice chooseSampleStep(float graphWidth, int32_t viewSamples, int32_t Sp_Samples);

/// Label thinning after a resize, first rule that matches wins: the time labels when they would
/// touch, and the upper amplitude labels when they would overlap (7 and 8 are left alone).
void HideXLabels(std::array<Label, 11>& lblX);
void HideYLabels(std::array<Label, 9>& lbly);

/// The colour that stands out on a background (settings text of 0x00BBGGRR): whatever the
/// picture's inversion makes of it, read back from a pixel, as settings text.
std::string contrastColor(const std::string& backColor);

/// An amplitude as the read-outs print it: whole counts in Bits mode, two decimals in volts, and
/// a plain "0" on the centre line.
std::string amplitudeText(float amp, bool bits);

/// The rate of the cursor read-out: dV per second with a k/M/G/T prefix.
struct RateReadout {
    double number = 0.0;
    std::string unit; // "" when dt is 0
};
/// `dt` in the time unit of `timeExponent`; `refreshStyle` keeps one decimal picture for the
/// prefixed numbers too, as the cursor refresh does.
RateReadout rateReadout(double dV, double dt, int16_t timeExponent, const std::string& unitName,
                        bool refreshStyle);

class OscopeView : public ViewModel {
  public:
    explicit OscopeView(Workbench& wb);

    // ---- ViewModel ------------------------------------------------------------------------------
    /// Form_Load and Form_Resize at this size, then, with a data set, the whole trace.
    void load(int width, int height) override;
    void resize(int width, int height) override { Form_Resize(width, height); }
    void unload() override { Form_Unload(); }
    void redraw() override { UpdateTime(); }
    void traceChanged() override { TimerDraw(); }
    /// The menu commands of this view ("mnuZoomIn", "mnuZoomOut", "mnuNoZoom", "mnuFlip",
    /// "mnuMxA", "mnuMa", "mnuPP", "mnuCur") and "leaveMeasurementModes", which the transport
    /// buttons send: the maximum, minimum and peak-to-peak read-outs go off; "refreshScale"
    /// after the scale or gain dialogs.
    void command(const std::string& name) override;
    /// The whole view as the user sees it: graph, labels, cursors, pointer, scroll bar.
    QImage picture() const override;
    QSize minimumSize() const override;
    std::vector<Label> visibleLabels() const override;
    /// Text is dragged over the graph.
    QRect textArea() const override { return graphRect_; }
    /// Sends a press to a cursor handle when one is under it, else to the graph.
    void mousePress(int button, int x, int y) override;
    void mouseMove(int buttons, int x, int y) override;
    void mouseRelease(int button, int x, int y) override;

    // ---- Life of the view -------------------------------------------------------------------
    /// Loads the view into a form of this size (pixels); a Form_Resize follows, as a shown
    /// window gets one.
    void Form_Load(int formWidth, int formHeight);
    void Form_Resize(int formWidth, int formHeight);
    /// The view goes away: the flip, the cursors and the read-outs go off with it, and so do the
    /// commands it served.
    void Form_Unload();

    // ---- Scales -------------------------------------------------------------------------------
    void CountAmpl();
    void CountNewAmp();
    /// A new value per division or gain: the graph drawn again at the present zoom, with its
    /// amplitude labels and cursors.
    void refreshScale();
    void GridLines();
    /// Back to the whole trace with fresh scales: after a new data set, new options, or a
    /// cancelled scale dialog.
    void UpdateTime();
    void CountTime();
    void TimeUnitScale();
    void HideXLabels() { oscope::HideXLabels(lblX_); }
    void HideYLabels() { oscope::HideYLabels(lbly_); }
    /// The contrast colour of the background for the cursors and read-outs (KursorColor) and for
    /// text annotations (TextColor).
    void Invert();
    void InvertText();

    // ---- Drawing and moving through the data ---------------------------------------------------
    void Draw();
    /// The scroll bar moved to `HS.Value`: read and draw that trace, and (when Idle) have the
    /// other open views show it.
    void ScrollNu();
    /// The scroll bar's change event.
    void HS_Change() override;
    /// Playback: the scroll bar follows TracePos and the trace is drawn.
    void TimerDraw();
    /// The two reference traces in graph pixels, as the references prepare them.
    void setReferencePoints(std::vector<QPoint> ref1, std::vector<QPoint> ref2);
    /// Lays the reference lines that are on over the graph, each at its own time scale: the
    /// view's span holds round(samples * ViewTimeSpan / stored span) of its samples, and a
    /// reference that ends before the view does lies on the zero line from there. A line with
    /// fewer than three samples in the view goes off with a message. Then grid and trace again.
    void CreateRef();
    const std::vector<QPoint>& TimeRefPoints(int line) const {
        return line == 2 ? TimeRef2Points_ : TimeRef1Points_;
    }
    /// The reference lines for the zoomed stretch of time: its first stored sample at the left
    /// edge, the samples after a reference's end on the zero line. Never flipped.
    void Ref_Zoom_Flip();
    const std::vector<QPoint>& ZoomRefPoints(int line) const {
        return line == 2 ? ZoomRef2Points_ : ZoomRef1Points_;
    }

    // ---- Zoom and flip ------------------------------------------------------------------------
    void mnuZoomIn();
    void mnuZoomOut();
    void mnuNoZoom() { NoZoom(); }
    void ZoomBack();
    void NoZoom();
    void mnuFlip();

    // ---- Pointer (graph coordinates) ----------------------------------------------------------
    void picGraph_MouseDown(int button, int x, int y);
    void picGraph_MouseMove(int buttons, int x, int y);
    void picGraph_MouseUp(int button, int x, int y);

    // ---- Cursors and read-outs ------------------------------------------------------------------
    void Kursor();
    void KursorMeasure();
    void ReloadKursor();
    void KursorRefresh();
    /// A press on cursor handle `index` (form coordinates) starts its drag.
    void lblK_MouseDown(int index, int button, int x, int y);
    void Form_MouseMove(int buttons, int x, int y);
    void Form_MouseUp(int button, int x, int y);
    void MaxMin();
    void ProzessingAmp();
    void UpdateAnalys();
    void mnuMxA();
    void mnuMa();
    void mnuPP();
    void mnuCur();
    /// Index of the cursor handle under (x, y), -1 when none.
    int handleAt(int x, int y) const;

    // ---- Pictures -----------------------------------------------------------------------------
    const Surface& picGraph() const { return picGraph_; }
    Surface& picGraph() { return picGraph_; }
    const Surface& picText() const { return picText_; }

    /// Sets a label's text and sizes the label to it, keeping its left edge.
    static void setText(Label& l, const std::string& text) { setLabelText(l, text); }

    // ==== What the view shows ===================================================================
    // Geometry and scales
    int formWidth() const { return formWidth_; }
    int formHeight() const { return formHeight_; }
    const QRect& graphRect() const { return graphRect_; }
    float GraphWidth() const { return GraphWidth_; }
    float ZeroLine() const { return ZeroLine_; }
    float PixelsPerCount() const { return PixelsPerCount_; }
    float AmpFactor() const { return AmpFactor_; }
    float DivValue() const { return DivValue_; }
    const std::array<int32_t, 9>& HorizontalLines() const { return HorizontalLines_; }
    const std::array<int32_t, 10>& VerticalLines() const { return VerticalLines_; }
    int32_t ViewSamples() const { return ViewSamples_; }
    const std::string& TimeUnit() const { return TimeUnit_; }
    int16_t TimeExponent() const { return TimeExponent_; }
    double UnitFactor() const { return UnitFactor_; }
    /// Time at the graph's left edge, in the time unit on show; 0 until a zoom sets it.
    float ViewStartTime() const { return ViewStartTime_; }
    /// The time range for the status bar ("12 ms").
    const std::string& TimeRangeText() const { return TimeRangeText_; }

    // Labels round the graph
    const std::array<Label, 9>& lbly() const { return lbly_; }
    const std::array<Label, 11>& lblX() const { return lblX_; }
    const std::array<Tick, 10>& lnLV() const { return lnLV_; }
    const Label& Label1() const { return Label1_; }
    const Label& lblText() const { return lblText_; }
    const std::string& txtText() const { return txtText_; }
    const ScrollBar& HS() const { return HS_; }

    // Trace drawing
    const std::vector<QPoint>& TracePoints() const { return TracePoints_; }
    int16_t TracePointCount() const { return TracePointCount_; }
    int16_t PointCapacity() const { return PointCapacity_; }
    int32_t SampleStep() const { return SampleStep_; }
    float PixelsPerSample() const { return PixelsPerSample_; }

    // Zoom
    bool ZoomOn() const { return ZoomOn_; }
    int32_t ZoomFirst() const { return ZoomFirst_; }
    int32_t ZoomLast() const { return ZoomLast_; }
    /// Rows in the zoom stack; the sample numbers of each row's ends.
    size_t zoomDepth() const { return lstZoomStart_.size(); }
    const std::vector<std::string>& lstZoomStart() const { return lstZoomStart_; }
    const std::vector<std::string>& lstZoomEnd() const { return lstZoomEnd_; }
    bool shZoomVisible() const { return shZoomVisible_; }

    // Pointer
    /// The pointer cross follows the mouse.
    bool MouseDrawing() const { return MouseDrawing_; }
    bool lnPec_V() const { return lnPec_V_; }
    const Label& lblMyTm() const { return lblMyTm_; }
    const Label& lbldB() const { return lbldB_; }

    // Cursors and read-outs
    bool KursorOn() const { return KursorOn_; }
    const std::string& KursorColor() const { return KursorColor_; }
    const std::string& TextColor() const { return TextColor_; }
    const std::array<int, 2>& picKLeft() const { return picKLeft_; }
    const std::array<bool, 2>& picKVisible() const { return picKVisible_; }
    const std::array<Label, 2>& lblK() const { return lblK_; }
    const std::array<QLine, 2>& lnKG() const { return lnKG_; }
    const std::array<Label, 3>& lblMarker1() const { return lblMarker1_; }
    /// Any amplitude read-out is on; which ones.
    bool AnalysOn() const { return AnalysOn_; }
    bool ShowMaxAmp() const { return ShowMaxAmp_; }
    bool ShowMinAmp() const { return ShowMinAmp_; }
    bool ShowPeakPeak() const { return ShowPeakPeak_; }
    float MaxAmp() const { return MaxAmp_; }
    float MinAmp() const { return MinAmp_; }
    int32_t MaxPos() const { return MaxPos_; }
    int32_t MinPos() const { return MinPos_; }
    const std::array<Label, 10>& An() const { return An_; }

  private:
    ProgramState& st() const;
    CommandState& cmd() const;
    /// Horizontal sample step and pixels per sample for ViewSamples.
    void computeSampleStep();
    /// First row from the top in column KursorColumn with exactly the trace colour; none leaves
    /// KursorRow as it was.
    void scanKursorColumn();
    void placeGraph(int formWidth, int formHeight);
    void setUnitAndAmpFactor();
    void placeYLabels();
    void ShowYText();
    void restoreZoomRow(size_t row);
    void zoomLabels();
    void setMenuChecks(bool zoomIn, bool zoomOut, bool noZoom);
    float pointerTimeFromLabel(int x) const;
    float amplitudeAtRow(int row, float centre) const;
    void placeKursorHandles();
    void layoutMarkers();
    void writeRateLine(bool refreshStyle);
    /// KursorMeasure from the amplitude on: for KursorIndex at KursorRow and KursorTime.
    void measureKursor();
    /// The read-out line of cursor i from its amplitude and time texts.
    void markerLine(size_t i);
    /// The pointer's time and amplitude texts for row y.
    void pointerTexts(int y);
    /// A read-out switch from its menu entry and tool button.
    void toggleReadout(const char* menu, bool& flag, int button);
    /// The transport buttons leave the read-outs: all three go off.
    void leaveMeasurementModes();

    Workbench& wb_;
    Surface picGraph_;
    Surface picText_;

    // Geometry and scales
    int formWidth_ = 0, formHeight_ = 0;
    QRect graphRect_;   // picGraph in form pixels
    QRect picTextRect_; // the rotated caption
    float GraphWidth_ = 0.0f, GraphHeight_ = 0.0f;
    float ZeroLine_ = 0.0f, HalfHeight_ = 0.0f, PixelsPerCount_ = 0.0f;
    float AmpFactor_ = 1.0f;
    float DivValue_ = 0.0f;
    std::array<int32_t, 9> HorizontalLines_{};
    std::array<int32_t, 10> VerticalLines_{};
    int32_t ViewSamples_ = 0;
    float TimePerDiv_ = 0.0f;
    float TimeSpan_ = 0.0f;
    std::string TimeUnit_;
    int16_t TimeExponent_ = 0;
    double UnitFactor_ = 1.0;
    float ViewStartTime_ = 0.0f;
    std::string TimeRangeText_;

    // Labels round the graph
    std::array<Label, 9> lbly_;  // amplitude axis, top to bottom
    std::array<Label, 11> lblX_; // time axis, left to right
    std::array<Tick, 10> lnLV_;  // ticks 1..9 under the graph
    Label Label1_;               // time per division
    Label lblText_;              // the unit name, "Volt" or "Bits"
    std::string txtText_;        // the rotated caption, e.g. "0.25 Volt /Div"

    // Trace drawing
    std::vector<QPoint> TracePoints_; // the polyline on screen
    int16_t TracePointCount_ = 1;     // points + 1
    int16_t PointCapacity_ = 0;
    int32_t SampleStep_ = 1;
    float PixelsPerSample_ = 0.0f;
    std::vector<QPoint> TimeRef1Points_, TimeRef2Points_;
    std::vector<QPoint> ZoomRef1Points_, ZoomRef2Points_;
    std::array<float, 2> TimeRefHalfScale_{};
    CurveRepaint repaint_; // what the last Draw left, so the next one writes only what changes

    // Zoom
    bool ZoomOn_ = false;
    int32_t ZoomFirst_ = 0, ZoomLast_ = 0;
    int32_t ZoomGrabFirst_ = 0, ZoomGrabLast_ = 0;
    float ZoomTimeFirst_ = 0.0f, ZoomTimeLast_ = 0.0f;
    std::vector<std::string> lstZoomStart_, lstZoomEnd_, lstX_start_, lstX_end_;
    bool imgZoomVisible_ = false;
    std::string imgZoomPicture_; // "\ico\zoom_plus.ico" or "\ico\zoom_minus.ico"
    QRect shZoom_;               // rubber band, graph pixels
    bool shZoomVisible_ = false;

    // Pointer
    bool MouseDrawing_ = false;
    float PointerTime_ = 0.0f, PointerAmp_ = 0.0f;
    float TimePerPixel_ = 0.0f, AmpPerPixel_ = 0.0f;
    int pointerX_ = 0, pointerY_ = 0;
    bool lnPec_V_ = false, lnPec_G_ = false; // cross lines at pointerX / pointerY
    Label lblTime_, lblAmp_, lblMyTm_, lbldB_;

    // Cursors
    bool KursorOn_ = false;
    std::string KursorColor_; // contrast colour of Time_BackColor (cursors, read-outs)
    std::string TextColor_;   // the same, for text annotations
    int16_t KursorIndex_ = 0;
    float KursorX_ = 0.0f;
    int32_t KursorColumn_ = 0;
    int32_t KursorRow_ = 0;
    float KursorTime_ = 0.0f;
    float KursorAmp_ = 0.0f;
    std::array<int, 2> picKLeft_{};      // bar columns, graph pixels
    std::array<bool, 2> picKVisible_{};  //
    std::array<Label, 2> lblK_;          // grab handles, form pixels
    std::array<QLine, 2> lnKG_;          // cross lines through the trace, graph pixels
    std::array<bool, 2> lnKGVisible_{};  //
    std::array<std::string, 2> lblYk_;   // exact cursor time
    std::array<std::string, 2> KurTime_; // cursor time in "0.00"
    std::array<std::string, 2> lblKAmp_; // cursor amplitude
    std::array<Label, 3> lblMarker1_;    // the three read-out lines
    int16_t DragMode_ = 0;
    bool DraggingKursor_ = false, DraggingText_ = false;
    QRect dragFrame_; // graph pixels; its left edge - 2 is where the bar lands
    bool dragFrameVisible_ = false;
    QPoint dragStart_; // form pixels of the press

    // Amplitude read-outs
    bool AnalysOn_ = false;
    bool ShowMaxAmp_ = false, ShowMinAmp_ = false, ShowPeakPeak_ = false;
    float MaxAmp_ = 0.0f, MinAmp_ = 0.0f;
    int32_t MaxPos_ = 0, MinPos_ = 0;
    float PeakPeak_ = 0.0f;
    std::array<Label, 10> An_;
    std::array<bool, 10> anSwitch_{}; // only 0..2 are ever on
};

} // namespace oscope
} // namespace kv
