// The radargram: each trace as one row of colour in time, the sample's amplitude as the
// palette's colour, zero in the middle of the scale. Unlike the frequency waterfall it can
// make its rows again from the working file, with the filters, whitening and gain applied, and
// does so after a resize.
#pragma once

#include "views/waterfall/waterfall_base.h"

namespace kv {

namespace radargram {

/// The palette index of a sample as a scrolled row paints it: v = (FullScalePos + s) /
/// FullScalePos * 127 (s negated when flipped), kept to four decimals, clamped to 0..255 and
/// rounded, ties to even. Zero gives 127, +full scale 254, -full scale 0.
int sampleIndex(double s, float fullScalePos, bool flipped);
/// The same as a rebuild paints it: v rounded straight to a whole number, then clamped.
int rebuildIndex(double s, float fullScalePos, bool flipped);
/// out[i] = rebuildIndex(gain * trace[i], ...) for i = 0..n-1, a row at a time.
void rebuildIndices(const float* trace, int32_t n, int16_t gain, float fullScalePos, bool flipped,
                    uint8_t* out);

/// The unit of a time division: a division below 1 s is scaled by the first of 10^0, 10^3 ...
/// 10^12 that brings it to 1 or more ("s", "ms", "us", "ns", "ps"); a division of 1 s or more,
/// or one too small for every unit, keeps its figure with no unit and the factor 1.
struct TimeUnitChoice {
    double DivTime = 0.0;
    std::string TimeUnit;
    double TimeUnitFactor = 1.0;
};
TimeUnitChoice SetTimeUnit(double divTime);

class RadargramView : public waterfall::WaterfallBase {
  public:
    explicit RadargramView(Workbench& wb) : WaterfallBase(wb) {}

    void load(int width, int height) override;
    void resize(int width, int height) override { Form_Resize(width, height); }
    /// The vertical scale changed: the colour scale's labels follow. Nothing else moves.
    void redraw() override { UppdateTime_w(); }
    void command(const std::string& name) override;

    void Form_Load(int width, int height);
    void Form_Resize(int width, int height);

    void ScrallBScan() override;
    void ScrollRowDown() override;
    void ScrollRowUp() override;
    /// A level change means nothing to a picture of amplitudes: it returns at once.
    void ReDrawBscan() {}
    /// A new trace length: the time axis again and, with rows on show, the rows from the file.
    void UpdateSamp();
    void UppdateTime_w();
    void DrawTimeGrid();
    void ThinTimeLabels();
    /// The rows on show, made again from the working file into the row picture.
    void RebuildFromFile();
    void RebuildPicture();
    void ShowPointerTime();
    void ShowPointerValue();

    const std::array<Label, 9>& lbly() const { return lbly_; }
    const Label& lblSc() const { return lblSc_; }
    const Label& lblT() const { return lblT_; }
    double DivTime() const { return DivTime_; }
    const std::string& TimeUnit() const { return TimeUnit_; }
    int32_t SampleIndex() const { return SampleIndex_; }
    /// The rebuilt picture: RowWidth wide, one row per trace read, the newest on top.
    const QImage& rebuilt() const { return rebuilt_; }

  protected:
    void placeLabels() override;
    QString title() const override;
    void paintScaleLabels(QPainter& p) const override;
    void addScaleLabels(std::vector<Label>& into) const override;
    bool pointerReadout() override;

  private:
    /// The row of one trace in samples[0..Sp_Samples-1].
    void makeRow(const std::vector<float>& samples);

    double DivTime_ = 0.0;
    std::string TimeUnit_;
    double TimeUnitFactor_ = 1.0;
    float ScaleStep_ = 0.0f;
    int32_t ByteFull_ = 0;
    int32_t SampleIndex_ = 0;
    int32_t RebuildFirst_ = 0, RebuildLast_ = 0;
    bool drawn_ = false;
    std::vector<float> RgReadBuf_;
    QImage rebuilt_;
    std::array<Label, 9> lbly_{};
    Label lblSc_, lblT_;
};

} // namespace radargram
} // namespace kv
