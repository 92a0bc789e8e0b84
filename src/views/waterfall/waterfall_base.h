// What the frequency waterfall and the radargram share: traces side by side as rows of colour,
// the newest on top. The picture is the only store of the rows already shown; each trace is
// made into a one-row picture through the palette, and the big picture moves one row down
// (forward) or up (back) to take it. Also shared: the two trace-number labels and their rules,
// the From-end run after End, the colour scale beside the picture, the pointer cross with its
// "Trace :" read-out, and the layout of the window.
#pragma once

#include "options/palette.h"
#include "views/surface.h"
#include "views/view_label.h"
#include "views/view_model.h"
#include "views/waterfall/row_picture.h"

#include <QImage>
#include <QRect>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kv {

struct Workbench;
struct ProgramState;

namespace waterfall {

// The window round the picture, in pixels.
inline constexpr int kPicLeft = 30;
inline constexpr int kPicTop = 20;
inline constexpr int kRightMargin = 96; // colour scale and its labels
inline constexpr int kBottomMargin = 40;
inline constexpr int kMinWidth = 209; // the smallest window
inline constexpr int kMinHeight = 216;
inline constexpr int kScaleWidth = 20;

/// The colour scale's picture: 48 wide, 256 high, value 0 at the foot and 255 on top, each row
/// in its palette colour.
QImage scalePicture(const ColorTable& table);
/// A one-row picture of `width` pixels where pixel x shows element x + 1 of `bytes` (the first
/// element never shows; elements that the row lacks are index 0), in the colours of `table`.
QImage rowImage(const std::vector<uint8_t>& bytes, int width, const ColorTable& table);

class WaterfallBase : public ViewModel {
  public:
    explicit WaterfallBase(Workbench& wb);

    // ---- ViewModel ------------------------------------------------------------------------------
    void load(int width, int height) override;
    void resize(int width, int height) override;
    void unload() override;
    void traceChanged() override { ScrallBScan(); }
    void clearPicture() override { Cls(); }
    void reset(bool atEnd) override;
    void command(const std::string& name) override;
    QImage picture() const override;
    std::vector<Label> visibleLabels() const override;
    void mousePress(int button, int x, int y) override;
    void mouseMove(int buttons, int x, int y) override;
    void mouseRelease(int button, int x, int y) override;
    /// Text stands and is dragged over the picture.
    QRect textArea() const override { return picRect_; }

    // ---- The rows ------------------------------------------------------------------------------
    /// One row for the trace on show, forward or back as PlayRew says.
    virtual void ScrallBScan() = 0;
    /// The palette file named by PalFile is read again when it changed, so that the next row
    /// takes its colours; the row picture is made as wide as RowWidth.
    void DrawBMP();
    /// Moves the picture one row down and puts the row just made on top.
    virtual void ScrollRowDown();
    /// Moves the picture one row up and puts the row just made (or, with nothing older, white)
    /// into the strip two rows above the foot.
    virtual void ScrollRowUp();
    /// Empties the picture and starts again from the trace on show.
    void BackFram();
    void Cls();

    // ---- The trace numbers
    // ------------------------------------------------------------------------
    /// lblTopScan's text; a negative number empties the picture and reads "0" instead.
    void setTopScan(const std::string& text);
    /// lblBottenScan's number: a negative one hides the label and sets BackTraceTop to 0.
    void setBottenScan(int32_t value);
    void showTraceNumbers();

    // ==== What the view shows ===================================================================
    const RowPicture& picOriginal() const { return picOriginal_; }
    const QRect& pictureRect() const { return picRect_; }
    const QImage& Picture1() const { return Picture1_; }
    const std::vector<uint8_t>& RowBytes() const { return RowBytes_; }
    const ColorTable& colours() const { return table_; }
    int32_t RowWidth() const { return RowWidth_; }
    int32_t WfTopTrace() const { return WfTopTrace_; }
    int32_t WfRowsOnShow() const { return WfRowsOnShow_; }
    int32_t WfRowsFromEnd() const { return WfRowsFromEnd_; }
    int ViewWidth() const { return picOriginal_.width(); }
    int ViewHeight() const { return picOriginal_.height(); }
    const Label& lblTopScan() const { return lblTopScan_; }
    const Label& lblBottenScan() const { return lblBottenScan_; }
    const Label& lblTime() const { return lblTime_; }
    const Label& lblHz() const { return lblHz_; }
    const Label& lblSX() const { return lblSX_; }
    const std::array<Label, 51>& lblX() const { return lblX_; }
    /// The tick lines under the axis labels: x in picture pixels, shown or not.
    const std::array<int, 51>& tickX() const { return tickX_; }
    const std::array<bool, 51>& tickShown() const { return tickShown_; }
    float PointerTrace() const { return PointerTrace_; }
    float PointerX() const { return PointerX_; }
    bool crossShown() const { return crossShown_; }
    const QImage& imgPal() const { return imgPal_; }

  protected:
    ProgramState& st() const;
    /// The view's own layout after the picture's size is known.
    virtual void placeLabels() = 0;
    /// The caption turned up the left side.
    virtual QString title() const = 0;
    /// The labels beside the colour scale.
    virtual void paintScaleLabels(class QPainter& p) const = 0;
    /// The labels beside the colour scale, as paintScaleLabels paints them.
    virtual void addScaleLabels(std::vector<Label>& into) const = 0;
    /// What the pointer reads besides the trace, into lblHz; false leaves both labels empty.
    virtual bool pointerReadout() = 0;
    /// The row made from `bytes` as RowWidth pixels in the palette's colours into Picture1.
    void loadRow();
    /// Lays out the picture for a window of this size; true when its size changed.
    bool layOut(int width, int height);
    void placeTick(int i, int x);
    void hideTicks();
    /// The pointer's cross and its read-out (picture pixels).
    void pointerAt(int x, int y, bool moving);

    Workbench& wb_;
    int formWidth_ = 0, formHeight_ = 0;
    QRect picRect_;
    RowPicture picOriginal_;
    QImage Picture1_;
    std::vector<uint8_t> RowBytes_;
    ColorTable table_{};
    std::string tableFile_; // the file table_ was read from
    bool tableRead_ = false;
    QImage imgPal_;
    int32_t RowWidth_ = 0;
    int32_t RowHeight_ = 1;
    int32_t WfTopTrace_ = 0;
    int32_t WfRowsOnShow_ = 0;
    int32_t WfRowsFromEnd_ = 0;
    float PointerX_ = 0.0f;
    float PointerTrace_ = 0.0f;
    bool crossShown_ = false;
    int crossY_ = 0;
    Label lblTopScan_, lblBottenScan_, lblTime_, lblHz_, lblSX_;
    std::array<Label, 51> lblX_{};
    std::array<int, 51> tickX_{};
    std::array<bool, 51> tickShown_{};
};

} // namespace waterfall
} // namespace kv
