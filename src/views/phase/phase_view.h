// The Phase view: the phase of the current trace's spectrum against frequency, from -180 to 180
// degrees, on the Spectrum view's linear or logarithmic frequency axis, with a pointer that
// reads frequency and degrees and the trace scroll bar that moves through the data.
//
// The model owns the picture of the graph and the labels around it; a widget only paints what
// is here and forwards the mouse. Coordinates: the window's origin is top left, the graph sits
// at graphRect inside it; the picF_* mouse methods take graph pixels.
#pragma once

#include "state/view_host.h"
#include "views/surface.h"
#include "views/view_label.h"

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

namespace phase {

// Fixed sizes of the view's furniture, in pixels.
inline constexpr int kGraphLeft = 60;
inline constexpr int kGraphTop = 30;
inline constexpr int kWidthMargin = 100;  // window width - graph width
inline constexpr int kHeightMargin = 110; // window height - graph height
inline constexpr int kScrollHeight = 17;
inline constexpr int kMinWidth = 209;
inline constexpr int kMinHeight = 216;

/// The pointer's frequency as the read-out prints it: "###.0", a blank, Hz, kHz or MHz.
std::string frequencyText(double hz);
/// The pointer's phase for a row of a graph `height` pixels high: the whole degrees, two blanks,
/// "degrees".
std::string degreesText(int y, int height);

class PhaseView {
  public:
    explicit PhaseView(Workbench& wb);

    // ---- Life of the view -------------------------------------------------------------------
    void Form_Load(int width, int height);
    void Form_Resize(int width, int height);
    void Form_Unload();

    // ---- Scale and grid -----------------------------------------------------------------------
    void UpdateFasa();
    void DrawGrid();
    void ShowX_lab();

    // ---- Painting -----------------------------------------------------------------------------
    /// Paints the phase of the trace on show with the linear or the logarithmic painter.
    void Draw_s();
    void drawLinear();
    void drawLog();
    /// Empties the picture (the First button does this).
    void Cls();

    // ---- Moving through the data ----------------------------------------------------------------
    /// Puts the scroll bar on `value`; a change moves through the data when Idle is on.
    void setScrollValue(int value);
    void HS_Change();
    /// The trace on show changed elsewhere: the scroll bar follows and the phase is repainted.
    void traceChanged();

    // ---- Pointer (graph pixels) -----------------------------------------------------------------
    void picF_MouseDown(int button, int x, int y);
    void picF_MouseMove(int buttons, int x, int y);
    void picF_MouseUp(int button, int x, int y);

    // ---- Output -------------------------------------------------------------------------------
    QImage renderWindow() const;
    const Surface& picF() const { return picF_; }
    Surface& picF() { return picF_; }

    // ==== View items ==========================================================================
    int formWidth = 0, formHeight = 0;
    QRect graphRect;
    int32_t PhaseWidth = 0, PhaseHeight = 0;
    int32_t PhaseHalf = 0;
    float DegreesPerPixel = 0.0f;
    float PixelsPerBin = 0.0f;
    int32_t BinStep = 1;
    std::vector<int32_t> PhaseGridX;
    std::array<int32_t, 9> PhaseGridY{};
    std::vector<QPoint> PhasePoints;
    int32_t PhasePointCount = 1;
    float LogPixelsPerDecade = 0.0f;
    /// The two reference curves, prepared in graph pixels by the references.
    std::vector<QPoint> PhaseRef1Points, PhaseRef2Points;

    std::array<Label, 9> lbly;  // 180 at the top to -180 at the bottom
    std::array<Label, 51> lblX; // frequency labels under the graph
    Label lblSX;                // "2.4 kHz/div"
    std::string axisText;       // the status bar's unit of the frequency axis
    Label lblHz, lblDeg;        // pointer read-outs
    bool lnPec_V = false, lnPec_G = false;
    int pointerX = 0, pointerY = 0;
    ScrollBar HS;

  private:
    ProgramState& st() const;
    void placeGraph(int width, int height);
    void paintGrid(QRgb back);
    void readout(int x, int y);
    int phaseRow(float degrees) const;

    Workbench& wb_;
    Surface picF_;
};

} // namespace phase
} // namespace kv
