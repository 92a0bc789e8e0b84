// The radargram's rows, time axis, amplitude scale, rebuild from the file and read-outs.
#include "views/radargram/radargram_view.h"

#include "commands/commands.h"
#include "conditioning/conditioning_hooks.h"
#include "engine/trace_blocks.h"
#include "engine/windows.h"
#include "platform/numeric.h"
#include "platform/trace_store.h"
#include "state/workbench.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace kv::radargram {

namespace {

double amplitudeValue(double s, float fullScalePos, bool flipped) {
    if (flipped) s = -s;
    return (double(fullScalePos) + s) / double(fullScalePos) * 127.0;
}

int byteOf(double v) {
    if (std::isnan(v)) return 0;
    return int(roundHalfEven(std::clamp(v, 0.0, 255.0)));
}

} // namespace

int sampleIndex(double s, float fullScalePos, bool flipped) {
    const double v = amplitudeValue(s, fullScalePos, flipped);
    if (std::isnan(v)) return 0;
    // Kept to four decimals first, as a currency figure is.
    return byteOf(roundHalfEven(std::clamp(v, -1.0, 256.0) * 10000.0) / 10000.0);
}

int rebuildIndex(double s, float fullScalePos, bool flipped) {
    const double v = amplitudeValue(s, fullScalePos, flipped);
    if (std::isnan(v)) return 0;
    return byteOf(roundHalfEven(std::clamp(v, -1.0, 256.0)));
}

void rebuildIndices(const float* trace, int32_t n, int16_t gain, float fullScalePos, bool flipped,
                    uint8_t* out) {
    // rebuildIndex for a whole row, inline: a rebuild converts every sample of every row on
    // show. Clamped to -1..256 first, the figure is rounded by adding and taking away 2^52 (ties
    // to even, as the processor rounds) and then held to 0..255, which is what rounding,
    // clamping and rounding again come to.
    const double fs = fullScalePos, g = gain, sign = flipped ? -1.0 : 1.0;
    constexpr double kWhole = 4503599627370496.0; // 2^52
    for (int32_t i = 0; i < n; ++i) {
        const double s = sign * (g * double(trace[i]));
        const double v = (fs + s) / fs * 127.0;
        const double c = v < -1.0 ? -1.0 : (v > 256.0 ? 256.0 : v);
        const double r = (c + kWhole) - kWhole;
        const double b = r < 0.0 ? 0.0 : (r > 255.0 ? 255.0 : r);
        out[i] = v == v ? uint8_t(b) : uint8_t(0);
    }
}

TimeUnitChoice SetTimeUnit(double divTime) {
    static const char* const kUnits[] = {"s", "ms", "us", "ns", "ps"};
    TimeUnitChoice c;
    c.DivTime = divTime;
    if (divTime < 1) {
        for (int e = 0; e <= 12; e += 3) {
            const double t = std::pow(10.0, e) * divTime;
            if (t >= 1) {
                c.DivTime = t;
                c.TimeUnit = kUnits[e / 3];
                c.TimeUnitFactor = std::pow(10.0, -e);
                break;
            }
        }
    }
    return c;
}

// ---- Life of the view ---------------------------------------------------------------------------

void RadargramView::load(int width, int height) {
    Form_Load(width, height);
    Form_Resize(width, height);
}

void RadargramView::Form_Load(int width, int height) {
    ProgramState& s = st();
    WaterfallBase::load(width, height);
    s.RadargramOpen = true;
    ByteFull_ = s.BitsPerSample == 8 ? 256 : 32767;
    s.ScaleVolt = s.Reference;
    RowWidth_ = s.Sp_Samples;
}

void RadargramView::Form_Resize(int width, int height) {
    layOut(width, height);
    placeLabels();
    if (WfRowsOnShow_ == 0) return;
    if (ViewHeight() <= WfRowsFromEnd_)
        RebuildPicture();
    else
        BackFram();
}

void RadargramView::placeLabels() {
    UppdateTime_w();
    DrawTimeGrid();
}

QString RadargramView::title() const {
    return QStringLiteral("Trace number");
}

void RadargramView::command(const std::string& name) {
    WaterfallBase::command(name);
    if (name == "UpdateSamp") UpdateSamp();
}

void RadargramView::UpdateSamp() {
    RowWidth_ = st().Sp_Samples;
    UppdateTime_w();
    DrawTimeGrid();
    // The rebuild reads up to the trace position. After the options dialog has put that back
    // to the first trace, the rows on show all lie past it and the picture comes out white until
    // the next scroll: that is how the workbench has always behaved, so it is kept.
    if (WfRowsOnShow_ != 0) RebuildPicture();
}

// ---- Rows
// ----------------------------------------------------------------------------------------

void RadargramView::makeRow(const std::vector<float>& samples) {
    const ProgramState& s = st();
    RowWidth_ = s.Sp_Samples;
    RowBytes_.assign(size_t(std::max(RowWidth_, 0)) + 1, 0);
    const size_t n = std::min(size_t(std::max(RowWidth_, 0)), samples.size());
    for (size_t i = 0; i < n; ++i)
        RowBytes_[i] = uint8_t(sampleIndex(samples[i], s.FullScalePos, s.Flipped));
    loadRow();
}

void RadargramView::ScrallBScan() {
    ProgramState& s = st();
    DrawBMP();
    if (!s.PlayRew) {
        makeRow(s.TraceBuf);
        ScrollRowDown();
        drawn_ = true;
        return;
    }
    if (s.BackTraceTop > 0) makeRow(s.TraceBufR);
    ScrollRowUp();
}

void RadargramView::ScrollRowDown() {
    st().RgBackOn = false;
    WaterfallBase::ScrollRowDown();
}

void RadargramView::ScrollRowUp() {
    ProgramState& s = st();
    WaterfallBase::ScrollRowUp();
    // The next trace back is read for the row that will enter at the foot.
    if (s.BackTraceTop > 0) {
        s.RgBackOn = true;
        s.RgBackTrace = s.BackTraceTop - 1;
    }
}

void RadargramView::RebuildFromFile() {
    ProgramState& s = st();
    drawn_ = true;
    const int32_t S = std::max<int32_t>(s.Sp_Samples, 1);
    const int32_t N = s.Fft_Samples;
    RebuildFirst_ = s.BackTraceTop <= 0 ? 1 : WfTopTrace_ - WfRowsOnShow_;
    RebuildLast_ = WfRowsOnShow_ + WfTopTrace_;
    const size_t len = size_t(std::max(S, N)) + 1;
    s.BackRe.assign(len, 0.0f);
    std::vector<float> im(len, 0.0f);
    s.TraceBufR.assign(len, 0.0f);
    const int16_t g = radargramGain(s);
    const bool average = s.ModeFFT == 4;
    const int64_t a = std::max<int16_t>(s.AverVal, 1);
    const int64_t stride = int64_t(S) * 4;

    std::vector<uint8_t> flat;
    flat.reserve(size_t(std::max<int64_t>(s.TracePos - RebuildFirst_ + 1, 0)) * size_t(S));
    int32_t rows = 0;
    std::vector<float> one(size_t(N) + 1);
    // The rows are read in order from a file that does not change meanwhile: a block at a time.
    TraceBlockScope blocks;
    for (int64_t k = RebuildFirst_; k <= s.TracePos; ++k) {
        if (!average) {
            readWorkingTrace(s.ActiveTracePath, (k - 1) * stride + s.FirstTracePos, s.BackRe.data(),
                             size_t(N) + 1);
        } else {
            // A row is the mean of its group of traces, in time.
            std::fill(s.BackRe.begin(), s.BackRe.end(), 0.0f);
            for (int64_t j = 0; j < a; ++j) {
                readWorkingTrace(s.ActiveTracePath, ((k - 1) * a + j) * stride + s.FirstTracePos,
                                 one.data(), one.size());
                for (size_t i = 0; i < one.size(); ++i)
                    s.BackRe[i] += one[i];
            }
            for (float& x : s.BackRe)
                x /= float(a);
        }
        ApplyWindowBack(s);
        conditionRadargramTrace(s, s.BackRe, im, s.TraceBufR);
        const size_t at = flat.size();
        flat.resize(at + size_t(S));
        rebuildIndices(s.TraceBufR.data(), S, g, s.FullScalePos, s.Flipped, flat.data() + at);
        ++rows;
    }
    // One bitmap of all the rows, the first trace at its foot; like a scrolled row, each pixel
    // shows the element after its own, so a row's last pixel is the next row's first sample.
    const int32_t height = std::max(average ? rows : WfRowsOnShow_, 1);
    rebuilt_ = QImage(S, height, QImage::Format_RGB32);
    rebuilt_.fill(RowPicture::kBlank);
    for (int32_t r = 0; r < std::min(rows, height); ++r) {
        QRgb* out = reinterpret_cast<QRgb*>(rebuilt_.scanLine(height - 1 - r));
        for (int32_t x = 0; x < S; ++x) {
            const size_t e = size_t(r) * size_t(S) + size_t(x) + 1;
            out[x] = table_[e < flat.size() ? flat[e] : 0];
        }
    }
}

void RadargramView::RebuildPicture() {
    Cls();
    RebuildFromFile();
    const int h = std::min(rebuilt_.height(), ViewHeight());
    // From source column 1, as the rows scrolled in are.
    picOriginal_.stretchFrom(rebuilt_, 1, 0, std::max(rebuilt_.width() - 1, 1), h, 0, ViewWidth(),
                             h);
}

// ---- Scales
// --------------------------------------------------------------------------------------

void RadargramView::UppdateTime_w() {
    ProgramState& s = st();
    std::array<std::string, 9> t;
    if (s.ShowVertical == 2) {
        setLabelText(lblSc_, "Bits");
        s.RefDel = s.ScaleBits;
        ScaleStep_ = s.ScaleBits / 4;
        for (int i = 0; i <= 4; ++i)
            t[size_t(i)] = shortestText(Fix(double(s.ScaleBits) - i * double(ScaleStep_)));
        for (int j = 0; j <= 4; ++j)
            t[size_t(4 + j)] = shortestText(Fix(-j * double(ScaleStep_) - 1));
        t[4] = "0";
    } else {
        if (s.ShowVertical == 1) setLabelText(lblSc_, "Volt");
        const char* upper = "0.00";
        if (s.IsSht) {
            ScaleStep_ = s.ShtVoltDiv;
            upper = "0.0";
        } else {
            ScaleStep_ = s.ScaleVolt / 2 / 4;
            s.RefDel = ScaleStep_;
        }
        for (int i = 0; i <= 4; ++i)
            t[size_t(i)] = formatPicture((4 - i) * double(ScaleStep_), upper);
        for (int j = 0; j <= 4; ++j)
            t[size_t(4 + j)] = formatPicture(-j * double(ScaleStep_), "0.00");
    }
    const int x = picRect_.right() + 9 + waterfall::kScaleWidth + 4 + 4;
    for (size_t i = 0; i < 9; ++i) {
        setLabelText(lbly_[i], t[i]);
        lbly_[i].left = x;
        lbly_[i].top = picRect_.top() + int(i) * (picRect_.height() - 1) / 8 - lbly_[i].height / 2;
    }
    lblSc_.left = picRect_.right() + 9;
    lblSc_.top = 3;
}

void RadargramView::DrawTimeGrid() {
    ProgramState& s = st();
    const int W = ViewWidth();
    const double div = s.SampleRate > 0 ? (1.0 / s.SampleRate) * s.Sp_Samples / 10 : 0.0;
    s.ViewTimeSpan = div * 10;
    const TimeUnitChoice u = SetTimeUnit(div);
    DivTime_ = u.DivTime;
    TimeUnit_ = u.TimeUnit;
    TimeUnitFactor_ = u.TimeUnitFactor;
    setLabelText(lblSX_, formatPicture(DivTime_, "0.#") + TimeUnit_ + "/" + "div");
    wb_.cmd.timeRangeText =
        shortestText(Val(formatPicture(DivTime_, "0.#")) * 10) + " " + TimeUnit_;
    hideTicks();
    for (int i = 0; i <= 10; ++i)
        placeTick(i, std::min(i * W / 10, W - 1));
    for (int i = 1; i <= 9; ++i) {
        Label& l = lblX_[size_t(i)];
        setLabelText(l, formatPicture(i * DivTime_, "0.0"));
        l.left = picRect_.left() + i * W / 10 - l.width / 2;
        l.top = picRect_.bottom() + 2;
        l.visible = true;
    }
    ThinTimeLabels();
    lblSX_.left = picRect_.center().x() - lblSX_.width / 2;
    lblSX_.top = picRect_.bottom() + 22;
}

void RadargramView::ThinTimeLabels() {
    // Every label, every second, every fourth: the first spacing whose neighbours keep a gap of
    // 5 pixels stays; when even 4 and 8 would touch, 8 alone.
    auto& l = lblX_;
    for (int step : {1, 2, 4}) {
        const Label& a = l[size_t(step)];
        const Label& b = l[size_t(2 * step)];
        if (a.right() + 5 < b.left) {
            for (int i = 1; i <= 9; ++i)
                l[size_t(i)].visible = i % step == 0;
            return;
        }
    }
    for (int i = 1; i <= 9; ++i)
        l[size_t(i)].visible = i == 8;
}

void RadargramView::addScaleLabels(std::vector<Label>& into) const {
    addShownOnForm(into, lbly_);
    addShownOnForm(into, std::array{lblSc_});
    addShown(into, std::array{lblT_});
}

void RadargramView::paintScaleLabels(QPainter& p) const {
    const int x0 = picRect_.right() + 9 + waterfall::kScaleWidth;
    for (int i = 0; i < 9; ++i) {
        const int y = picRect_.top() + i * (picRect_.height() - 1) / 8;
        p.drawLine(x0, y, x0 + 3, y);
    }
    for (const Label& l : lbly_)
        paintLabel(p, l, QColor(Qt::black));
    paintLabel(p, lblSc_, QColor(Qt::black));
    paintLabel(p, lblT_, QColor(Qt::black));
}

// ---- Pointer
// -------------------------------------------------------------------------------------

void RadargramView::ShowPointerTime() {
    const double t = ViewWidth() > 0 ? DivTime_ * 10 / ViewWidth() * PointerX_ : 0.0;
    setLabelText(lblT_, formatPicture(t, "0.##") + " " + TimeUnit_);
}

void RadargramView::ShowPointerValue() {
    ProgramState& s = st();
    const int32_t S = s.Sp_Samples;
    RgReadBuf_.assign(size_t(std::max(S, 0)) + 1, 0.0f);
    if (S < 1 || ViewWidth() < 1) return;
    SampleIndex_ =
        std::clamp<int32_t>(int32_t(roundHalfEven(double(PointerX_) * S / ViewWidth())), 1, S);
    const int64_t pos = int64_t(roundHalfEven(double(PointerTrace_) * S * 4)) + s.FirstTracePos;
    readTrace(s.ActiveTracePath, pos, RgReadBuf_.data(), size_t(S));
    ApplyWindowRg(s, RgReadBuf_.data());
    const float v = RgReadBuf_[size_t(SampleIndex_ - 1)];
    if (SampleIndex_ >= S) {
        setLabelText(lblHz_, "");
        PointerTrace_ = 0;
        return;
    }
    if (s.ShowVertical == 2)
        setLabelText(lblHz_, shortestText(Fix(v)) + "  bits");
    else
        setLabelText(lblHz_, formatPicture(double(s.ScaleVolt) / 2 * v / s.FullScalePos, "0.00") +
                                 "  volt");
}

bool RadargramView::pointerReadout() {
    ShowPointerTime();
    ShowPointerValue();
    lblT_.visible = true;
    lblT_.top = picRect_.bottom() + 22;
    lblT_.left = picRect_.right() + 1 - lblT_.width;
    return true;
}

} // namespace kv::radargram
