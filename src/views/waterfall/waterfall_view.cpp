// The frequency waterfall's rows, level labels, frequency axis and pointer read-out.
#include "views/waterfall/waterfall_view.h"

#include "engine/display_map.h"
#include "platform/numeric.h"
#include "state/workbench.h"
#include "views/spectrum/spectrum_scales.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace kv::waterfall {

float RowDbScaleOf(const ProgramState& st) {
    return f32(255.0 / -double(st.PlotRange));
}

float RowLinScaleAtLoad(const ProgramState& st) {
    return f32(double(st.Offset_Lin) / double(st.FullScalePos) * 100.0);
}

float RowLinScaleAtRedraw(const ProgramState& st) {
    return f32(double(st.Offset_Lin) * double(st.FullScalePos) / 100.0);
}

int levelIndex(double v, bool yLinear, int drSet, double topDb, float dbScale, float linScale) {
    double x = 0.0;
    if (!yLinear)
        x = 255.0 - (v - topDb) * double(dbScale);
    else if (drSet == 2)
        x = v * double(linScale);
    else
        x = v / double(linScale) * 255.0;
    if (std::isnan(x)) return 0;
    x = std::clamp(x, -1.0, 256.0);
    x = !yLinear && drSet == 2 ? Fix(x) : roundHalfEven(x);
    return int(std::clamp(x, 0.0, 255.0));
}

int32_t rowWidthFor(int32_t columns) {
    return columns > 0 ? columns - columns % 4 : 0;
}

std::vector<uint8_t> levelRow(const std::vector<float>& values, const std::vector<float>& logX,
                              int n, int drSet, double logBinSpan, size_t minSize,
                              const std::function<int(double)>& index) {
    n = std::min<int>(n, int(values.size()) - 1);
    std::vector<uint8_t> row(std::max(minSize, size_t(std::max(n, 0)) + 1), 0);
    if (drSet != 2) {
        for (int k = 0; k <= n; ++k)
            row[size_t(k)] = uint8_t(index(values[size_t(k)]));
        return row;
    }
    for (int k = 1; k <= n && size_t(k) < logX.size(); ++k) {
        const double at = logBinSpan != 0.0 ? double(logX[size_t(k)]) * n / logBinSpan : 0.0;
        const int x = int(std::clamp(roundHalfEven(std::isnan(at) ? 0.0 : at), 0.0, double(n)));
        std::fill(row.begin() + x, row.begin() + n + 1, uint8_t(index(values[size_t(k)])));
    }
    return row;
}

PointerFrequency pointerFrequency(const ProgramState& st, double pointerX, int width) {
    double f = 0.0;
    bool formatted = true;
    if (st.DrSet == 2) {
        const double r = width / spectrum::Log10(st.Sp_Samples / 2.0, st.FullScalePos);
        f = double(st.BinWidth) * std::pow(10.0, pointerX / r);
    } else if (st.SpanActive) {
        const double r = width / double(st.SpanHighFreq - st.SpanLowFreq);
        f = pointerX / r + st.SpanLowFreq;
    } else {
        f = double(st.MaxFreq) * pointerX / width;
        formatted = false;
    }
    if (f > 1e6) return {formatPicture(f * 1e-6, "###.0"), "MHz"};
    if (f > 1000) return {formatPicture(f * 1e-3, "###.0"), "kHz"};
    return {formatted ? formatPicture(f, "###.0") : shortestText(f32(f)), "Hz"};
}

// ---- Life of the view ---------------------------------------------------------------------------

void WaterfallView::load(int width, int height) {
    Form_Load(width, height);
    Form_Resize(width, height);
}

void WaterfallView::Form_Load(int width, int height) {
    st().WaterfallOpen = true;
    WaterfallBase::load(width, height);
    RowDbScale_ = RowDbScaleOf(st());
    RowLinScale_ = RowLinScaleAtLoad(st());
    foldForWidth();
    RowWidth_ = rowWidthFor(st().ColumnCount);
    RowBytes_.assign(size_t(std::max(st().ColumnCount, 0)) + 1, 0);
}

void WaterfallView::unload() {
    WaterfallBase::unload();
}

void WaterfallView::foldForWidth() {
    ProgramState& s = st();
    if (s.TempPath.empty() || s.SpDisp.empty()) return;
    if (s.SpectrumOpen && s.PlotColumns > 0) return;
    s.PlotColumns = plotColumnsFor(ViewWidth());
    SamToWidth(s);
}

void WaterfallView::Form_Resize(int width, int height) {
    ProgramState& s = st();
    // The rows on show are kept: stretched to the new width, cut (not stretched) in height.
    QImage kept;
    int keepHeight = 0;
    if (WfRowsOnShow_ != 0) {
        keepHeight = std::clamp(WfTopTrace_, 0, ViewHeight());
        kept = picOriginal_.toImage().copy(0, 0, ViewWidth(), keepHeight);
    }
    const int keepWidth = ViewWidth();
    RowDbScale_ = RowDbScaleOf(s);
    RowLinScale_ = RowLinScaleAtRedraw(s);
    layOut(width, height);
    levelLabels();
    foldForWidth();
    WfRowsFromEnd_ = ViewHeight();
    DrawBMP();
    if (WfRowsOnShow_ != 0) {
        picOriginal_.clear();
        const int h = std::min(keepHeight, ViewHeight());
        picOriginal_.stretchFrom(kept, 0, 0, keepWidth, h, 0, ViewWidth(), h);
        s.BackTraceTop = WfTopTrace_ - ViewHeight();
        showTraceNumbers();
        WfRowsOnShow_ = s.BackTraceTop <= 0 ? WfTopTrace_ : ViewHeight();
    }
    placeLabels();
}

void WaterfallView::placeLabels() {
    levelLabels();
    DrawGrid();
}

QString WaterfallView::title() const {
    return QStringLiteral("Trace number");
}

// ---- Rows
// ----------------------------------------------------------------------------------------

void WaterfallView::traceChanged() {
    if (st().SpanActive)
        ScrallBScan_1();
    else
        ScrallBScan();
}

void WaterfallView::makeRow(const std::vector<float>& values, const std::vector<float>& logX, int n,
                            int drSet) {
    const ProgramState& s = st();
    const bool yLinear = s.YLinear;
    const double top = s.TopDb;
    const float dbScale = RowDbScale_, linScale = RowLinScale_;
    RowWidth_ = rowWidthFor(std::max<int32_t>(int32_t(values.size()) - 1, 0));
    const double logSpan = spectrum::Log10(s.Sp_Samples / 2.0, s.FullScalePos);
    RowBytes_ = levelRow(values, logX, n, drSet, logSpan, size_t(RowWidth_) + 1, [&](double v) {
        return levelIndex(v, yLinear, drSet, top, dbScale, linScale);
    });
    loadRow();
}

void WaterfallView::ScrallBScan() {
    ProgramState& s = st();
    DrawBMP();
    if (!s.PlayRew) {
        makeRow(s.ColVal, s.ColLogX, int(s.ColVal.size()) - 2, s.DrSet);
        ScrollRowDown();
        return;
    }
    if (s.BackTraceTop <= 0) {
        ScrollRowUp();
        return;
    }
    makeRow(s.BackCol, s.BackColLogX, int(s.BackCol.size()) - 1, s.DrSet);
    ScrollRowUp();
}

void WaterfallView::ScrallBScan_1() {
    ProgramState& s = st();
    DrawBMP();
    if (s.PlayRew && s.BackTraceTop <= 0) {
        ScrollRowUp();
        return;
    }
    makeRow(s.SpanCol, {}, s.SpanBins - 1, 1);
    if (s.PlayRew)
        ScrollRowUp();
    else
        ScrollRowDown();
}

// ---- Labels -------------------------------------------------------------------------------------

void WaterfallView::levelLabels() {
    ProgramState& s = st();
    std::array<std::string, 5> t;
    if (!s.YLinear) {
        if (s.dBFS_On) {
            setLabelText(lbldBB_, " dBFS");
        } else {
            setLabelText(lbldBB_, "dBc");
            s.Offset_Log = 0;
        }
        const double o = s.Offset_Log, r = s.PlotRange;
        t = {std::to_string(s.Offset_Log), shortestText(Fix(-o + r / 4) * -1),
             shortestText(Fix(-o + r / 2) * -1), shortestText(Fix(r / 4 * 3 - o) * -1),
             shortestText(-(-o + r))};
    } else {
        setLabelText(lbldBB_, "%");
        const double o = s.Offset_Lin;
        t = {shortestText(s.Offset_Lin), shortestText(Fix(o / 4 * 3)), shortestText(Fix(o / 2)),
             shortestText(Fix(o / 4)), "0"};
    }
    const int x = picRect_.right() + 9 + kScaleWidth + 4 + 4;
    for (size_t i = 0; i < 5; ++i) {
        setLabelText(lbldB_[i], t[i]);
        lbldB_[i].left = x;
        lbldB_[i].top =
            picRect_.top() + int(i) * (picRect_.height() - 1) / 4 - lbldB_[i].height / 2;
    }
    lbldBB_.left = picRect_.right() + 9;
    lbldBB_.top = 3;
}

void WaterfallView::addScaleLabels(std::vector<Label>& into) const {
    addShownOnForm(into, lbldB_);
    addShownOnForm(into, std::array{lbldBB_});
}

void WaterfallView::paintScaleLabels(QPainter& p) const {
    const int x0 = picRect_.right() + 9 + kScaleWidth;
    for (int i = 0; i < 5; ++i) {
        const int y = picRect_.top() + i * (picRect_.height() - 1) / 4;
        p.drawLine(x0, y, x0 + 3, y);
    }
    for (const Label& l : lbldB_)
        paintLabel(p, l, QColor(Qt::black));
    paintLabel(p, lbldBB_, QColor(Qt::black));
}

void WaterfallView::ReDrawBscan() {
    ProgramState& s = st();
    levelLabels();
    WfTopTrace_ = 0;
    s.BackTraceTop = 0 - ViewHeight();
    showTraceNumbers();
    RowDbScale_ = RowDbScaleOf(s);
    RowLinScale_ = RowLinScaleAtRedraw(s);
    Cls();
    WfRowsOnShow_ = 0;
    DrawBMP();
    DrawGrid();
}

void WaterfallView::DrawGrid() {
    const ProgramState& s = st();
    const int W = ViewWidth();
    const int labelTop = picRect_.bottom() + 2;
    auto centreUnder = [&](int i, int x) {
        Label& l = lblX_[size_t(i)];
        l.left = picRect_.left() + x - l.width / 2;
        l.top = labelTop;
    };
    if (s.SpanActive) {
        const double step = s.SpanWidth / 10.0;
        for (int i = 0; i < 10; ++i) {
            const double f = i * step + s.SpanLowFreq;
            const double scale = f >= 1e6 ? 1e-6 : f >= 1000 ? 1e-3 : 1.0;
            const std::string prefix = f >= 1e6 ? "M" : f >= 1000 ? "k" : "";
            setLabelText(lblX_[size_t(i)], formatPicture(f * scale, "##0.00") + prefix);
        }
        const double scale = step >= 1e6 ? 1e-6 : step >= 1000 ? 1e-3 : 1.0;
        const char* unit = step >= 1e6 ? "MHz" : step >= 1000 ? "kHz" : "Hz";
        setLabelText(lblSX_, formatPicture(step * scale, "##0.00") + unit + "/Div");
    }
    if (s.DrSet == 2) {
        DrawLogGrid();
    } else {
        hideTicks();
        for (int i = 1; i <= 9; ++i)
            placeTick(i, i * W / 10);
        if (!s.SpanActive) ShowX_lab();
        for (int i = 0; i <= 9; ++i) {
            centreUnder(i, i * W / 10);
            lblX_[size_t(i)].visible = true;
        }
        lblX_[0].left = std::max(lblX_[0].left, 0);
        ThinLabels();
    }
    lblSX_.left = picRect_.center().x() - lblSX_.width / 2;
    lblSX_.top = picRect_.bottom() + 22;
}

void WaterfallView::ShowX_lab() {
    const ProgramState& s = st();
    // The options' waterfall zoom (1:1 .. 1:8) narrows the labelled band.
    double top = s.MaxFreq / std::max<double>(s.WaterfallZoom, 1);
    std::string prefix;
    if (top >= 1e6) {
        top *= 1e-6;
        prefix = " M";
    } else if (top >= 1000) {
        top *= 1e-3;
        prefix = " k";
    }
    for (int i = 0; i <= 9; ++i)
        setLabelText(lblX_[size_t(i)], formatPicture(top / 10 * i, "###0.0"));
    setLabelText(lblSX_, formatPicture(top / 10, "###0.00") + prefix + "Hz/" + "div");
}

void WaterfallView::ThinLabels() {
    auto& l = lblX_;
    if (l[1].right() + 5 < l[2].left) {
        for (int i = 0; i <= 9; ++i)
            l[size_t(i)].visible = true;
        return;
    }
    for (int i = 0; i <= 8; i += 2)
        l[size_t(i)].visible = false;
    if (l[1].right() + 5 >= l[3].left) {
        for (int i = 0; i <= 10; ++i)
            l[size_t(i)].visible = false;
        l[3].visible = l[7].visible = true;
    }
    if (l[3].right() + 5 >= l[7].left)
        for (int i = 0; i <= 10; ++i)
            l[size_t(i)].visible = false;
}

void WaterfallView::DrawLogGrid() {
    const ProgramState& s = st();
    hideTicks();
    const spectrum::XAxis a =
        spectrum::DrawXLog(ViewWidth(), s.Sp_Samples, s.MaxFreq, s.BinWidth, s.FullScalePos);
    for (size_t i = 0; i < a.labels.size() && i < lblX_.size(); ++i) {
        placeTick(int(i), a.GridXs[i]);
        Label& l = lblX_[i];
        setLabelText(l, a.labels[i].text);
        l.left = picRect_.left() + a.GridXs[i] - l.width / 2;
        l.top = picRect_.bottom() + 2;
        l.visible = true;
    }
    setLabelText(lblSX_, "Frequency Hz");
}

// ---- Pointer
// -------------------------------------------------------------------------------------

void WaterfallView::ShowPointerHz() {
    const PointerFrequency f = pointerFrequency(st(), PointerX_, ViewWidth());
    setLabelText(lblHz_, f.figure + "  " + f.unit);
}

bool WaterfallView::pointerReadout() {
    ShowPointerHz();
    return true;
}

} // namespace kv::waterfall
