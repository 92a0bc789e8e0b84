// The frequency waterfall: the spectrum of each trace as one row of colour, frequency across,
// the level as the palette's colour. Rows that scroll off are gone; a change of level or range
// empties the picture and the next trace starts it again.
#pragma once

#include "views/waterfall/waterfall_base.h"

#include <functional>

namespace kv {

namespace waterfall {

// ---- Level to colour --------------------------------------------------------------------------
/// 255 / -PlotRange: the dB rows' scale, negative since PlotRange is a positive span.
float RowDbScaleOf(const ProgramState& st);
/// The linear rows' scale as the view sets it when it loads: Offset_Lin / FullScalePos * 100.
float RowLinScaleAtLoad(const ProgramState& st);
/// ... and as a redraw and a resize set it: Offset_Lin * FullScalePos / 100.
float RowLinScaleAtRedraw(const ProgramState& st);

/// The palette index of a level, clamped to 0..255. dB, linear X: Round(255 - (v - TopDb) *
/// dbScale); dB, log X: the same through Fix; linear level, linear X: Round(v / linScale * 255);
/// linear level, log X: Round(v * linScale).
int levelIndex(double v, bool yLinear, int drSet, double topDb, float dbScale, float linScale);

/// The row width for `columns` (the upper bound of the column array): rounded down to a
/// multiple of 4.
int32_t rowWidthFor(int32_t columns);

/// The row's palette indices from columns 0..n. On a linear axis (drSet 1) element k is column
/// k. On the log axis column k (from 1) paints every element from x = Round(logX[k] * n /
/// logBinSpan) to n, so each pixel keeps the colour of the last column at or left of it and
/// no gap stays. The row has at least `minSize` elements; those no column reaches are 0.
std::vector<uint8_t> levelRow(const std::vector<float>& values, const std::vector<float>& logX,
                              int n, int drSet, double logBinSpan, size_t minSize,
                              const std::function<int(double)>& index);

/// "Hz", "kHz", "MHz" read-out of the pointer's frequency: the figure and its unit.
struct PointerFrequency {
    std::string figure;
    std::string unit;
};
PointerFrequency pointerFrequency(const ProgramState& st, double pointerX, int width);

class WaterfallView : public WaterfallBase {
  public:
    explicit WaterfallView(Workbench& wb) : WaterfallBase(wb) {}

    void load(int width, int height) override;
    void resize(int width, int height) override { Form_Resize(width, height); }
    void unload() override;
    void redraw() override { ReDrawBscan(); }
    void traceChanged() override;

    void Form_Load(int width, int height);
    void Form_Resize(int width, int height);

    void ScrallBScan() override;
    /// In a span: the span's columns on a linear axis.
    void ScrallBScan_1();
    /// New level labels and an empty picture; the next trace starts it again.
    void ReDrawBscan();
    void DrawGrid();
    void ShowX_lab();
    void ThinLabels();
    void DrawLogGrid();
    void ShowPointerHz();

    float RowDbScale() const { return RowDbScale_; }
    float RowLinScale() const { return RowLinScale_; }
    const std::array<Label, 5>& lbldB() const { return lbldB_; }
    const Label& lbldBB() const { return lbldBB_; }

  protected:
    void placeLabels() override;
    QString title() const override;
    void paintScaleLabels(QPainter& p) const override;
    void addScaleLabels(std::vector<Label>& into) const override;
    bool pointerReadout() override;

  private:
    void levelLabels();
    void makeRow(const std::vector<float>& values, const std::vector<float>& logX, int n,
                 int drSet);
    /// The columns follow the picture's width when no Spectrum view decides them.
    void foldForWidth();

    float RowDbScale_ = 0.0f;
    float RowLinScale_ = 0.0f;
    std::array<Label, 5> lbldB_{};
    Label lbldBB_;
};

} // namespace waterfall
} // namespace kv
