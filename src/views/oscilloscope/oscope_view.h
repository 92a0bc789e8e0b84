// The O-scope view: one trace as amplitude against time, eight divisions high and ten wide,
// with its scales and labels, the decimated trace, the scroll bar that moves through the data,
// the rubber-band zoom with its stack of levels, the pointer cross, two measuring cursors and
// the maximum, minimum and peak-to-peak read-outs.
//
// The model owns the picture of the graph (a Surface the size of the graph) and everything laid
// over it or around it: labels with text, position and visibility, cursor bars, the pointer
// cross, the rubber band, the scroll bar. A widget only paints what is here and forwards mouse
// events in pixels; renderWindow() composes the same pieces into one image offscreen.
//
// Coordinates: the form (the view's client area) has its origin top left; the graph sits at
// graphRect inside it. Mouse methods named picGraph_* take graph coordinates, the others form
// coordinates.
#pragma once

#include "state/view_host.h"
#include "views/surface.h"
#include "views/view_label.h"

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
inline constexpr int kGraphLeft = 72;     // room for the amplitude labels and the caption
inline constexpr int kGraphTop = 40;      // room for the read-outs and the cursor handles
inline constexpr int kWidthMargin = 112;  // form width - graph width
inline constexpr int kHeightMargin = 130; // form height - graph height
inline constexpr int kScrollHeight = 17;
inline constexpr int kKursorWidth = 3;     // width of a cursor bar
inline constexpr int kHandleWidth = 15;    // cursor grab handle above the graph
inline constexpr int kHandleHeight = 12;   //
inline constexpr int kMinFormWidth = 209;  // 3132 twips
inline constexpr int kMinFormHeight = 216; // 3240 twips

/// Engineering time unit for a time per division in seconds. `index` -1 (no unit) leaves the
/// time per division as it was; otherwise it is scaled into the unit.
struct TimeUnitChoice {
    int index = -1; // 0 s, 1 ms, 2 us, 3 ns, 4 ps
    float timePerDiv = 0.0f;
};
TimeUnitChoice chooseTimeUnit(float timePerDivSeconds);

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

class OscopeView {
  public:
    explicit OscopeView(Workbench& wb);

    // ---- Life of the view -------------------------------------------------------------------
    /// Loads the view into a form of this size (pixels); a Form_Resize follows, as a shown
    /// window gets one.
    void Form_Load(int formWidth, int formHeight);
    void Form_Resize(int formWidth, int formHeight);
    /// The view goes away: its flags and commands go with it.
    void Form_Unload();

    // ---- Scales -------------------------------------------------------------------------------
    void CountAmpl();
    void CountNewAmp();
    void GridLines();
    /// Back to the whole trace with fresh scales: after a new data set, new options, or a
    /// cancelled scale dialog.
    void UpdateTime();
    void CountTime();
    void TimeUnitScale();
    void HideXLabels();
    void HideYLabels();
    void Invert();
    void InvertText();

    // ---- Drawing and moving through the data ---------------------------------------------------
    void Draw();
    /// The scroll bar moved to `HS.Value`: read and draw that trace, and (when Idle) have the
    /// other open views show it.
    void ScrollNu();
    /// The scroll bar's change event.
    void HS_Change();
    /// Puts the scroll bar on `value`; a change fires HS_Change as a scroll bar does.
    void setScrollValue(int value);
    /// Playback: the scroll bar follows TracePos and the trace is drawn.
    void TimerDraw();
    /// Horizontal sample step and pixels per sample for ViewSamples.
    void computeSampleStep();

    // ---- Zoom and flip ------------------------------------------------------------------------
    void mnuZoomIn();
    void mnuZoomOut();
    void mnuNoZoom() { NoZoom(); }
    void ZoomBack();
    void NoZoom();
    void mnuFlip();
    /// Rows in the zoom stack.
    size_t zoomDepth() const { return lstZoomStart.size(); }

    // ---- Pointer (graph coordinates) ----------------------------------------------------------
    void picGraph_MouseDown(int button, int x, int y);
    void picGraph_MouseMove(int buttons, int x, int y);
    void picGraph_MouseUp(int button, int x, int y);

    // ---- Cursors and read-outs ------------------------------------------------------------------
    void Kursor();
    void KursorMeasure();
    void ReloadKursor();
    void KursorRefresh();
    /// First row from the top in column KursorColumn with exactly the trace colour; none leaves
    /// KursorRow as it was.
    void scanKursorColumn();
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

    // ---- Mouse routing for a widget (form coordinates) ----------------------------------------
    /// Sends a press to a cursor handle when one is under it, else to the graph.
    void mousePress(int button, int x, int y);
    void mouseMove(int buttons, int x, int y);
    void mouseRelease(int button, int x, int y);
    /// Index of the cursor handle under (x, y), -1 when none.
    int handleAt(int x, int y) const;

    // ---- Output -----------------------------------------------------------------------------
    /// The whole view as the user sees it: graph, labels, cursors, pointer, scroll bar.
    QImage renderWindow() const;
    const Surface& picGraph() const { return picGraph_; }
    Surface& picGraph() { return picGraph_; }
    const Surface& picText() const { return picText_; }

    /// Sets a label's text and sizes the label to it, keeping its left edge.
    static void setText(Label& l, const std::string& text) { setLabelText(l, text); }

    // ==== View items ==========================================================================
    // Geometry
    int formWidth = 0, formHeight = 0;
    QRect graphRect;   // picGraph in form pixels
    QRect picTextRect; // the rotated caption
    float GraphWidth = 0.0f, GraphHeight = 0.0f;
    float ZeroLine = 0.0f, HalfHeight = 0.0f, PixelsPerCount = 0.0f;
    float AmpFactor = 1.0f;
    float DivValue = 0.0f;
    std::array<int32_t, 9> HorizontalLines{};
    std::array<int32_t, 10> VerticalLines{};
    int32_t ViewSamples = 0;
    float TimePerDiv = 0.0f;
    float TimeSpan = 0.0f;
    std::string TimeUnit;
    int16_t TimeExponent = 0;
    double UnitFactor = 1.0;

    // Labels around the graph
    std::array<Label, 9> lbly;  // amplitude axis, top to bottom
    std::array<Label, 11> lblX; // time axis, left to right
    std::array<Tick, 10> lnLV;  // ticks 1..9 under the graph
    Label Label1;               // time per division
    Label lblText;              // the unit name, "Volt" or "Bits"
    std::string txtText;        // the rotated caption, e.g. "0.25 Volt /Div"
    ScrollBar HS;

    // Trace drawing
    std::vector<QPoint> TracePoints; // the polyline on screen
    int16_t TracePointCount = 1;     // points + 1
    int16_t PointCapacity = 0;
    int32_t SampleStep = 1;
    float PixelsPerSample = 0.0f;
    /// The two reference traces, prepared in graph pixels by the references.
    std::vector<QPoint> TimeRef1Points, TimeRef2Points;

    // Zoom
    int32_t ZoomFirst = 0, ZoomLast = 0;
    int32_t ZoomGrabFirst = 0, ZoomGrabLast = 0;
    float ZoomTimeFirst = 0.0f, ZoomTimeLast = 0.0f;
    std::vector<std::string> lstZoomStart, lstZoomEnd, lstX_start, lstX_end;
    bool imgZoomVisible = false;
    std::string imgZoomPicture; // "\ico\zoom_plus.ico" or "\ico\zoom_minus.ico"
    QRect shZoom;               // rubber band, graph pixels
    bool shZoomVisible = false;

    // Pointer
    float PointerTime = 0.0f, PointerAmp = 0.0f;
    float TimePerPixel = 0.0f, AmpPerPixel = 0.0f;
    int pointerX = 0, pointerY = 0;
    bool lnPec_V = false, lnPec_G = false; // cross lines at pointerX / pointerY
    Label lblTime, lblAmp, lblMyTm, lbldB;

    // Cursors
    int16_t KursorIndex = 0;
    float KursorX = 0.0f;
    int32_t KursorColumn = 0;
    int32_t KursorRow = 0;
    float KursorTime = 0.0f;
    float KursorAmp = 0.0f;
    std::array<int, 2> picKLeft{};      // bar columns, graph pixels
    std::array<bool, 2> picKVisible{};  //
    std::array<Label, 2> lblK;          // grab handles, form pixels
    std::array<QLine, 2> lnKG;          // cross lines through the trace, graph pixels
    std::array<bool, 2> lnKGVisible{};  //
    std::array<std::string, 2> lblYk;   // exact cursor time
    std::array<std::string, 2> KurTime; // cursor time in "0.00"
    std::array<std::string, 2> lblKAmp; // cursor amplitude
    std::array<Label, 3> lblMarker1;    // the three read-out lines
    int16_t DragMode = 0;
    bool DraggingKursor = false, DraggingText = false;
    QRect dragFrame; // graph pixels; its left edge - 2 is where the bar lands
    bool dragFrameVisible = false;
    QPoint dragStart; // form pixels of the press

    // Amplitude read-outs
    float MaxAmp = 0.0f, MinAmp = 0.0f;
    int32_t MaxPos = 0, MinPos = 0;
    float PeakPeak = 0.0f;
    std::array<Label, 10> An;
    std::array<bool, 10> anSwitch{}; // only 0..2 are ever on

  private:
    ProgramState& st() const;
    CommandState& cmd() const;
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

    Workbench& wb_;
    Surface picGraph_;
    Surface picText_;
};

} // namespace oscope
} // namespace kv
