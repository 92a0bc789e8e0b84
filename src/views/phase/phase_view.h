// The Phase view: the phase of the current trace's spectrum against frequency, from -180 to 180
// degrees, on the Spectrum view's linear or logarithmic frequency axis, with a pointer that
// reads frequency and degrees and the trace scroll bar that moves through the data.
//
// The model owns the picture of the graph, the labels round it and its own band zoom; a window
// only paints what is here and forwards the mouse. Coordinates: the window's origin is top left,
// the graph sits at graphRect inside it; the picF_* mouse methods take graph pixels.
#pragma once

#include "state/view_host.h"
#include "views/curve_repaint.h"
#include "views/surface.h"
#include "views/view_label.h"
#include "views/view_model.h"

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
inline constexpr int kMinWidth = 209;
inline constexpr int kMinHeight = 216;
inline constexpr GraphMargins kMargins{kGraphLeft,    kGraphTop, kWidthMargin,
                                       kHeightMargin, kMinWidth, kMinHeight};

/// The pointer's frequency as the read-out prints it: "###.0", a blank, Hz, kHz or MHz.
std::string frequencyText(double hz);
/// The pointer's phase for a row of a graph `height` pixels high: the whole degrees, two blanks,
/// "degrees".
std::string degreesText(int y, int height);

class PhaseView : public ViewModel {
  public:
    explicit PhaseView(Workbench& wb);

    // ---- ViewModel ------------------------------------------------------------------------------
    void load(int width, int height) override { Form_Load(width, height); }
    void resize(int width, int height) override { Form_Resize(width, height); }
    void unload() override { Form_Unload(); }
    /// New settings: the colours may have changed, so the picture starts afresh.
    void redraw() override;
    /// The trace on show changed elsewhere: the scroll bar follows and the phase is repainted.
    void traceChanged() override;
    /// Empties the picture (the First button does this).
    void clearPicture() override { Cls(); }
    QImage picture() const override;
    /// Room for the frequency labels side by side under the graph, the phase labels one above
    /// the other beside it.
    QSize minimumSize() const override;
    std::vector<Label> visibleLabels() const override;
    void mousePress(int button, int x, int y) override;
    void mouseMove(int buttons, int x, int y) override;
    void mouseRelease(int button, int x, int y) override;

    // ---- Life of the view -------------------------------------------------------------------
    void Form_Load(int width, int height);
    void Form_Resize(int width, int height);
    void Form_Unload();

    // ---- Scale and grid -----------------------------------------------------------------------
    void UpdateFasa();
    void DrawGrid();
    void ShowX_lab();
    /// The band zoom of the frequency caption: 1, 2, 4, 6 or 8; the caption names the band
    /// MaxFreq / FreqZoom instead of one tenth of it.
    void setFreqZoom(int16_t zoom) { FreqZoom_ = zoom; }

    // ---- Painting -----------------------------------------------------------------------------
    /// Paints the phase of the trace on show with the linear or the logarithmic painter.
    void Draw_s();
    void drawLinear();
    void drawLog();
    void Cls();
    /// The two reference curves in graph pixels, as the references prepare them.
    void setReferencePoints(std::vector<QPoint> ref1, std::vector<QPoint> ref2);
    /// Lays the reference lines that are on over the graph: a reference of a narrower band
    /// covers only its share of the axis. Then the phase is painted again.
    void CreateRef();
    /// "CreateRef", after the reference dialog.
    void command(const std::string& name) override;
    const std::vector<QPoint>& PhaseRefPoints(int line) const {
        return line == 2 ? PhaseRef2Points_ : PhaseRef1Points_;
    }

    // ---- Moving through the data ----------------------------------------------------------------
    /// The scroll bar's change event: when Idle is on, the trace at its value is read and shown
    /// here and in the other open views.
    void HS_Change() override;

    // ---- Pointer (graph pixels) -----------------------------------------------------------------
    /// The read-out is for the graph only: a press or a move outside it shows nothing new.
    void picF_MouseDown(int button, int x, int y);
    void picF_MouseMove(int buttons, int x, int y);
    void picF_MouseUp(int button, int x, int y);

    const Surface& picF() const { return picF_; }

    // ==== What the view shows ===================================================================
    const QRect& graphRect() const { return graphRect_; }
    int32_t PhaseHalf() const { return PhaseHalf_; }
    float DegreesPerPixel() const { return DegreesPerPixel_; }
    float PixelsPerBin() const { return PixelsPerBin_; }
    int32_t BinStep() const { return BinStep_; }
    const std::vector<int32_t>& PhaseGridX() const { return PhaseGridX_; }
    const std::array<int32_t, 9>& PhaseGridY() const { return PhaseGridY_; }
    const std::vector<QPoint>& PhasePoints() const { return PhasePoints_; }
    int32_t PhasePointCount() const { return PhasePointCount_; }
    float LogPixelsPerDecade() const { return LogPixelsPerDecade_; }
    const std::array<Label, 9>& lbly() const { return lbly_; }
    const std::array<Label, 51>& lblX() const { return lblX_; }
    const Label& lblSX() const { return lblSX_; }
    /// The status bar's unit of the frequency axis.
    const std::string& axisText() const { return axisText_; }
    const Label& lblHz() const { return lblHz_; }
    const Label& lblDeg() const { return lblDeg_; }
    /// The phase axis' caption, turned up beside the graph, and where it stands in the window.
    const std::string& txtText() const { return txtText_; }
    const QRect& picTextRect() const { return picTextRect_; }
    bool lnPec_V() const { return lnPec_V_; }
    const ScrollBar& HS() const { return HS_; }

  private:
    ProgramState& st() const;
    void placeGraph(int width, int height);
    /// Paints the caption, turned a quarter turn, centred in `picText`.
    void ShowYText();
    /// What a painter draws besides the curve: 1 the linear painter, 2 the log painter.
    CurveScene scene(int painter) const;
    void paintGrid(const CurveScene& c);
    void paintReferences();
    void readout(int x, int y);
    bool inGraph(int x, int y) const;
    int phaseRow(float degrees) const;

    Workbench& wb_;
    Surface picF_;
    int formWidth_ = 0, formHeight_ = 0;
    QRect graphRect_;
    int32_t PhaseWidth_ = 0, PhaseHeight_ = 0;
    int32_t PhaseHalf_ = 0;
    float DegreesPerPixel_ = 0.0f;
    float PixelsPerBin_ = 0.0f;
    int32_t BinStep_ = 1;
    int16_t FreqZoom_ = 1;
    std::vector<int32_t> PhaseGridX_;
    std::array<int32_t, 9> PhaseGridY_{};
    std::vector<QPoint> PhasePoints_;
    int32_t PhasePointCount_ = 1;
    float LogPixelsPerDecade_ = 0.0f;
    std::vector<QPoint> PhaseRef1Points_, PhaseRef2Points_;
    std::vector<QPoint> logPoints_; // the log painter's curve
    CurveRepaint repaint_;          // what the last draw left, so the next writes only changes

    std::array<Label, 9> lbly_;  // 180 at the top to -180 at the bottom
    std::array<Label, 51> lblX_; // frequency labels under the graph
    Label lblSX_;                // "2.4 kHz/div"
    std::string axisText_;
    Label lblHz_, lblDeg_; // pointer read-outs
    // The axis is fixed at 45 degrees a division; the caption says so as the O-scope's does.
    std::string txtText_ = "45 degrees /Div";
    Surface picText_;
    QRect picTextRect_;
    bool lnPec_V_ = false, lnPec_G_ = false;
    int pointerX_ = 0, pointerY_ = 0;
};

} // namespace phase
} // namespace kv
