// The Spectrum view's layout and drawing.
#include "views/spectrum/spectrum_view.h"

#include "conditioning/fft_filter.h"
#include "engine/display_map.h"
#include "engine/metrics.h"
#include "platform/numeric.h"
#include "state/program_state.h"

#include <QFont>
#include <QFontMetrics>
#include <QLine>
#include <QPainter>
#include <QPen>
#include <algorithm>
#include <cmath>

namespace kv::spectrum {

namespace {

// Points far outside the plot (silent bins sit near -FullScalePos / 2 on a log axis) are pulled
// in to a distance the rasteriser handles; on screen the visible part of such a segment is the
// same to well below a pixel.
constexpr double kFar = 1.0e6;

int pixel(double v) {
    if (!std::isfinite(v)) return v < 0 ? -int(kFar) : int(kFar);
    return toInt32(std::clamp(v, -kFar, kFar));
}

// Width-1 lines, the playback path, are the surface's own and paint their last point; wider
// ones (the grid in bar mode) go through the painter.
void strokePolyline(Surface& s, const std::vector<QPoint>& pts, size_t n, QRgb c, int width) {
    n = std::min(n, pts.size());
    if (width <= 1)
        s.polyline(pts.data(), n, c, LastPoint::Painted);
    else
        s.widePolyline(pts.data(), n, c, width);
}

void strokeLines(Surface& s, const std::vector<QLine>& lines, QRgb c, int width) {
    if (width <= 1)
        s.lines(lines.data(), lines.size(), c, LastPoint::Painted);
    else
        s.wideLines(lines.data(), lines.size(), c, width);
}

} // namespace

void SpectrumView::setPlotSize(int w, int h) {
    w = std::max(w, 0);
    h = std::max(h, 0);
    if (w == PlotW_ && h == PlotH_ && surface_.width() == std::max(w, 1)) return;
    PlotW_ = w;
    PlotH_ = h;
    surface_.resize(w, h, qRgb(0, 0, 0));
    CurveCount_ = 1;
}

int32_t SpectrumView::PlotColumns() const {
    return plotColumnsFor(PlotW_);
}

float SpectrumView::topDbFor(const ProgramState& st, const SpectrumFeed& f) const {
    return st.dBFS_On ? float(st.Offset_Log) : f.PeakDb;
}

void SpectrumView::computeFactors(const ProgramState& st, const SpectrumFeed& f) {
    BinsHalf_ = st.Fft_Samples / 2;
    LogBinsHalf_ = Log10(BinsHalf_, st.FullScalePos);
    ColStep_ = f.ColumnCount > 0 ? f32(double(PlotW_) / f.ColumnCount) : 0.0f;
    AmpScale_ = st.FullScalePos != 0 ? f32(double(PlotH_) / st.FullScalePos) : 0.0f;
    LogStep_ = LogBinsHalf_ != 0 ? f32(PlotW_ / LogBinsHalf_) : 0.0f;
    DbScale_ = st.PlotRange != 0 ? f32(double(PlotH_) / -double(st.PlotRange)) : 0.0f;
    LinScale_ = st.Offset_Lin != 0 ? f32(double(AmpScale_) * 100.0 / st.Offset_Lin) : 0.0f;
    TopDb_ = topDbFor(st, f);
}

void SpectrumView::setYCaption(const ProgramState& st) {
    txtText_ = yAxisText(st.YLinear, st.dBFS_On, yStep_);
}

void SpectrumView::Resized(ProgramState& st, const SpectrumFeed& f) {
    FirstDrawOffset(st);
    computeFactors(st, f);
    CurveCount_ = 1;
    CurvePoints_.clear();
    surface_.fill(colorFromIni(st.FFT_BackColor));
    LineWidth(st, f.ColumnCount);
    DrawGrid(st, f);
    setYCaption(st);
    Draw_s(st, f);
    if (st.LevelOn) VisaDb(st, f);
    PeakPrefix_ = frequencyUnit(f.PeakFreq).unit;
    ShowMax(st, f);
}

void SpectrumView::UpdateFFT_A(ProgramState& st, const SpectrumFeed& f) {
    computeFactors(st, f);
    LineWidth(st, f.ColumnCount);
    DrawGrid(st, f);
    Cls(st);
    Draw_s(st, f);
    ShowMax(st, f);
    setYCaption(st);
}

void SpectrumView::DrawGrid(const ProgramState& st, const SpectrumFeed& f) {
    XAxis x;
    if (st.DrSet == 2)
        x = DrawXLog(PlotW_, st.Sp_Samples, f.MaxFreq, f.BinWidth, st.FullScalePos);
    else if (st.SpanActive)
        x = spanXAxis(PlotW_, f.SpanLowFreq, f.SpanHighFreq - f.SpanLowFreq);
    else
        x = ShowX_lab(PlotW_, f.MaxFreq, f.SpanFactor);
    GridXs_ = std::move(x.GridXs);
    xLabels_ = std::move(x.labels);
    XUnitText_ = std::move(x.unitText);
    xStepText_ = std::move(x.stepText);

    const YAxis y = st.YLinear ? DrawYLinear(st.Offset_Lin, PlotH_)
                               : DrawYDb(st.dBFS_On ? st.Offset_Log : 0, st.PlotRange, PlotH_);
    GridYs_ = y.GridYs;
    lbly_ = y.lbly;
    // The level caption names the dB step, the difference of two neighbouring labels.
    yStep_ = y.step;
}

void SpectrumView::Cls(const ProgramState& st) {
    surface_.fill(colorFromIni(st.FFT_BackColor));
}

void SpectrumView::LineWidth(const ProgramState& st, int32_t Sp_Bins) {
    if (st.AS_Bar == 1 && Sp_Bins > 0)
        DrawWidth_ = std::max(1, int(std::ceil(double(PlotW_) / Sp_Bins)));
    else
        DrawWidth_ = 1;
}

void SpectrumView::ReDrawMode2(const ProgramState& st) {
    if (st.ModeFFT != 2) return;
    Cls(st);
}

void SpectrumView::ShowMax(const ProgramState& st, const SpectrumFeed& f) {
    const PeakText t = peakText(st.dBFS_On, f.PeakDb, f.PeakFreq);
    peakStatus_ = t.status;
    peakLabel_ = Label{.text = t.label};
}

void SpectrumView::VisaDb(const ProgramState& st, const SpectrumFeed& f) {
    LevelY_ = levelLineY(st.dBFS_On, f.LevelDb, st.Offset_Log, st.PlotRange, PlotH_);
    levelShown_ = true;
    lbldbS_ = Label{.text = shortestText(f.LevelDb) + "dB", .left = PlotW_, .top = pixel(LevelY_)};
}

int SpectrumView::yOf(const ProgramState& st, float value) const {
    if (st.YLinear) return pixel(double(f32(float(PlotH_) - value * LinScale_)));
    return pixel(double(f32((value - TopDb_) * DbScale_)));
}

std::vector<QPoint> SpectrumView::curveFor(const ProgramState& st, const SpectrumFeed& f,
                                           XRule rule) const {
    std::vector<QPoint> pts;
    const bool bars = st.AS_Bar == 1;
    if (rule == XRule::Span) {
        const int32_t n = std::min<int64_t>(f.SpanBins, int64_t(f.SpanCol.size()));
        if (f.SpanBins < 2 || n < 1) return pts;
        const float step = f32(double(PlotW_) / (f.SpanBins - 1));
        pts.reserve(size_t(n));
        for (int32_t j = 0; j < n; ++j) {
            const int x = j == f.SpanBins - 1 ? PlotW_ : pixel(double(f32(step * float(j))));
            pts.emplace_back(x, yOf(st, f.SpanCol[size_t(j)]));
        }
        return pts;
    }
    const int32_t cols = f.ColumnCount;
    if (rule == XRule::Log) {
        const int32_t last =
            std::min<int64_t>(cols, int64_t(std::min(f.ColVal.size(), f.ColLogX.size())));
        pts.reserve(size_t(std::max(last, 0)));
        for (int32_t j = 1; j < last; ++j)
            pts.emplace_back(pixel(double(f.ColLogX[size_t(j)]) * LogStep_),
                             yOf(st, f.ColVal[size_t(j)]));
        return pts;
    }
    // Linear: a dB plot runs to the last column but one, a linear plot one column shorter.
    const int32_t upper = st.YLinear ? cols - 2 : cols - 1;
    const int32_t shift = bars ? 1 : 0;
    const int64_t avail = int64_t(f.ColVal.size()) - shift;
    const int32_t last = int32_t(std::min<int64_t>(upper, avail - 1));
    pts.reserve(size_t(std::max(last + 1, 0)));
    for (int32_t j = 0; j <= last; ++j)
        pts.emplace_back(pixel(double(f32(ColStep_ * float(j + shift)))),
                         yOf(st, f.ColVal[size_t(j + shift)]));
    return pts;
}

void SpectrumView::repairGrid(Surface& pic, const ProgramState& st, bool onlyWhenShown) const {
    const bool shown = st.FFT_ShowGrid == 1;
    if (onlyWhenShown && !shown) return;
    std::vector<QLine> lines;
    lines.reserve(GridXs_.size() + GridYs_.size());
    for (int x : GridXs_)
        lines.emplace_back(x, 0, x, PlotH_);
    for (int y : GridYs_)
        lines.emplace_back(0, y, PlotW_, y);
    strokeLines(pic, lines, colorFromIni(shown ? st.FFT_GridColor : st.FFT_BackColor), DrawWidth_);
}

void SpectrumView::drawBars(Surface& pic, const std::vector<QPoint>& pts, QRgb c) const {
    // Each point draws the open outline of the bar before it, centred on that earlier point;
    // the first outline belongs to the corner (0, PlotH) and the last point gets none.
    std::vector<QLine> lines;
    lines.reserve(pts.size() * 3);
    int prevX = 0, prevY = PlotH_;
    for (const QPoint& pt : pts) {
        // Half the distance to the point before, rounded half to even as every pixel here is.
        const int hw = toInt32((pt.x() - prevX) / 2.0);
        const int left = prevX - hw, right = pt.x() - hw;
        lines.emplace_back(left, prevY, left, PlotH_);
        lines.emplace_back(left, prevY, right, prevY);
        lines.emplace_back(right, prevY, right, PlotH_);
        prevX = pt.x();
        prevY = pt.y();
    }
    strokeLines(pic, lines, c, 1);
}

void SpectrumView::erasingDraw(const ProgramState& st, const SpectrumFeed& f, XRule rule) {
    const QRgb back = colorFromIni(st.FFT_BackColor);
    const QRgb line = colorFromIni(st.FFT_LineColor);
    if (rule == XRule::Span) DbScale_ = f32(double(PlotH_) / -double(st.PlotRange));
    Surface& pic = surface_;
    // The old curve goes by drawing it again in the background colour: no flicker, and the
    // plot keeps whatever else is on it.
    if (CurveCount_ > 1)
        strokePolyline(pic, CurvePoints_, size_t(CurveCount_ - 1), back, DrawWidth_);
    TopDb_ = topDbFor(st, f);
    // Bars cannot be erased by a polyline: the whole plot goes.
    if (st.AS_Bar == 1) pic.fill(back);
    if (rule == XRule::Linear) ShowMax(st, f);
    // The erasing cut into the grid; put it back.
    repairGrid(pic, st, false);
    CurveCount_ = 1;
    std::vector<QPoint> pts = curveFor(st, f, rule);
    if (st.AS_Bar == 1) {
        drawBars(pic, pts, line);
        CurvePoints_.clear();
        DrawReferences(st, f);
        return;
    }
    strokePolyline(pic, pts, pts.size(), line, DrawWidth_);
    CurveCount_ = int32_t(pts.size()) + 1;
    CurvePoints_ = std::move(pts);
    // Erasing the live curve next time cuts into the references; they are drawn again each time.
    DrawReferences(st, f);
}

void SpectrumView::stackedDraw(const ProgramState& st, const SpectrumFeed& f, XRule rule) {
    const QRgb line = colorFromIni(st.FFT_LineColor);
    if (rule == XRule::Span) DbScale_ = f32(double(PlotH_) / -double(st.PlotRange));
    TopDb_ = topDbFor(st, f);
    Surface& pic = surface_;
    repairGrid(pic, st, true);
    const std::vector<QPoint> pts = curveFor(st, f, rule);
    if (st.AS_Bar == 1) {
        drawBars(pic, pts, line);
        return;
    }
    // Segment by segment from the bottom-left corner; nothing is kept, nothing erased.
    std::vector<QLine> lines;
    lines.reserve(pts.size());
    QPoint prev(0, PlotH_);
    for (const QPoint& pt : pts) {
        lines.emplace_back(prev, pt);
        prev = pt;
    }
    strokeLines(pic, lines, line, 1);
    DrawReferences(st, f);
}

std::vector<QPoint> SpectrumView::referenceCurve(const ProgramState& st, const SpectrumFeed& f,
                                                 int line) const {
    std::vector<QPoint> pts;
    const bool two = line == 2;
    const std::vector<float>& col = two ? st.RefCol2 : st.RefCol1;
    const std::vector<float>& logX = two ? st.RefColLogX2 : st.RefColLogX1;
    const std::vector<float>& span = two ? st.RefSpanCol2 : st.RefSpanCol1;
    const int32_t count = two ? st.RefColCount2 : st.RefColCount1;
    const int32_t spanBins = two ? st.RefSpanBins2 : st.RefSpanBins1;
    const float binStep = two ? st.RefBinWidth2 : st.RefBinWidth1;
    if (st.SpanActive && st.DrSet != 2) {
        const int32_t n = std::min<int64_t>(spanBins, int64_t(span.size()));
        if (spanBins < 2 || n < 1) return pts;
        const double step = double(PlotW_) / (spanBins - 1);
        for (int32_t j = 0; j < n; ++j)
            pts.emplace_back(j == spanBins - 1 ? PlotW_ : pixel(step * j),
                             yOf(st, span[size_t(j)]));
        return pts;
    }
    const int32_t n = std::min<int64_t>(int64_t(count) + 1, int64_t(col.size()));
    if (st.DrSet == 2) {
        // The column's X is the log of the reference's own bin; shifted by the ratio of the
        // steps it lands at its frequency on the live axis.
        if (!(binStep > 0 && f.BinWidth > 0)) return pts;
        const double shift = std::log10(double(binStep) / f.BinWidth);
        const int32_t m = std::min<int64_t>(n, int64_t(logX.size()));
        for (int32_t j = 1; j < m; ++j)
            pts.emplace_back(pixel((double(logX[size_t(j)]) + shift) * LogStep_),
                             yOf(st, col[size_t(j)]));
        return pts;
    }
    for (int32_t j = 0; j < n; ++j)
        pts.emplace_back(pixel(double(f32(ColStep_ * float(j)))), yOf(st, col[size_t(j)]));
    return pts;
}

void SpectrumView::DrawReferences(const ProgramState& st, const SpectrumFeed& f) {
    RefPoints1_.clear();
    RefPoints2_.clear();
    if (!st.RefShown || PlotW_ <= 0 || PlotH_ <= 0) return;
    TopDb_ = topDbFor(st, f);
    if (st.RefOn1) {
        RefPoints1_ = referenceCurve(st, f, 1);
        surface_.polyline(RefPoints1_, colorFromIni(st.Line1Color), LastPoint::Painted);
    }
    if (st.RefOn2) {
        RefPoints2_ = referenceCurve(st, f, 2);
        surface_.polyline(RefPoints2_, colorFromIni(st.Line2Color), LastPoint::Painted);
    }
}

void SpectrumView::DrawLinX(const ProgramState& st, const SpectrumFeed& f) {
    erasingDraw(st, f, XRule::Linear);
}
void SpectrumView::DrawLogX(const ProgramState& st, const SpectrumFeed& f) {
    erasingDraw(st, f, XRule::Log);
}
void SpectrumView::DrawSpan(const ProgramState& st, const SpectrumFeed& f) {
    erasingDraw(st, f, XRule::Span);
}
void SpectrumView::DrawLinX_Stak(const ProgramState& st, const SpectrumFeed& f) {
    stackedDraw(st, f, XRule::Linear);
}
void SpectrumView::DrawLogX_Stak(const ProgramState& st, const SpectrumFeed& f) {
    stackedDraw(st, f, XRule::Log);
}
void SpectrumView::DrawSpan_Stak(const ProgramState& st, const SpectrumFeed& f) {
    stackedDraw(st, f, XRule::Span);
}

void SpectrumView::Draw_s(const ProgramState& st, const SpectrumFeed& f) {
    if (PlotW_ <= 0 || PlotH_ <= 0) return;
    const bool stacked = st.ModeFFT == 2;
    if (st.DrSet == 1) {
        if (st.SpanActive) {
            if (stacked) {
                DrawSpan_Stak(st, f);
            } else {
                Cls(st);
                DrawSpan(st, f);
            }
        } else if (stacked) {
            DrawLinX_Stak(st, f);
        } else {
            DrawLinX(st, f);
        }
    } else if (st.DrSet == 2) {
        if (st.SpanActive)
            stacked ? DrawSpan_Stak(st, f) : DrawSpan(st, f);
        else
            stacked ? DrawLogX_Stak(st, f) : DrawLogX(st, f);
    }
}

// ---- The pointer cross ---------------------------------------------------------------------

void SpectrumView::MouseDown(const ProgramState& st, const SpectrumFeed& f, int button, float x,
                             float y) {
    PointerX_ = x;
    PointerY_ = y;
    // The pop-up belongs to the markers; until a marker has been set it does not come up.
    if (MarkersActive_ && button == 2) popupRequested_ = true;
    if (button != 1 || !st.MarkerMode) PointerReadout(st, f);
}

void SpectrumView::MouseMove(const ProgramState& st, const SpectrumFeed& f, int button, float x,
                             float y) {
    PointerX_ = x;
    PointerY_ = y;
    // The cross blinks off at each move and follows only while the left button is held.
    crossShown_ = false;
    lblMyFr_.visible = lbldB_.visible = false;
    if (button == 1) PointerReadout(st, f);
}

void SpectrumView::MouseUp() {
    crossShown_ = false;
    lblMyFr_.visible = lbldB_.visible = false;
}

bool SpectrumView::takePopupRequest() {
    const bool r = popupRequested_;
    popupRequested_ = false;
    return r;
}

void SpectrumView::PointerReadout(const ProgramState& st, const SpectrumFeed& f) {
    const auto t = ReadoutAt(st, f, PointerX_, PointerY_, st.MarkerMode, 0);
    if (!t) return;
    crossShown_ = t->showLines;
    crossRow_ = t->row;
    FreqShown_ = t->FreqShown;
    FreqUnit_ = t->FreqUnit;
    // The frequency sits just right of the cross, above its row; the level directly left of it.
    const int lx = pixel(double(PointerX_)) + 6;
    const int ly = std::max(0, t->row - 16);
    lblMyFr_ = Label{.text = t->lblMyFr, .left = lx, .top = ly};
    lbldB_ = Label{.text = t->lbldB, .left = lx, .top = ly, .visible = !st.MarkerMode};
}

int SpectrumView::TraceRowAt(const ProgramState& st, int x) const {
    if (x < 0 || x >= surface_.width()) return 0;
    const QRgb want = colorFromIni(st.FFT_LineColor) & 0xFFFFFFu;
    for (int y = 0; y < surface_.height(); ++y)
        if ((surface_.pixel(x, y) & 0xFFFFFFu) == want) return y;
    return 0;
}

std::optional<PointerText> SpectrumView::ReadoutAt(const ProgramState& st, const SpectrumFeed& f,
                                                   float x, float y, bool markerMode,
                                                   int markerRow) const {
    PointerInput in;
    in.PointerX = x;
    in.PointerY = y;
    in.PlotW = PlotW_;
    in.PlotH = PlotH_;
    in.ScaleWidth = float(PlotW_);
    in.ScaleHeight = float(PlotH_);
    in.DrSet = st.DrSet;
    in.SpanActive = st.SpanActive;
    in.MaxFreq = f.MaxFreq;
    in.SpanLowFreq = f.SpanLowFreq;
    in.SpanHighFreq = f.SpanHighFreq;
    in.BinWidth = f.BinWidth;
    in.Sp_Samples = st.Sp_Samples;
    in.FullScalePos = st.FullScalePos;
    in.YLinear = st.YLinear;
    in.dBFS_On = st.dBFS_On;
    in.Offset_Lin = st.Offset_Lin;
    in.PlotRange = st.PlotRange;
    in.Offset_Log = st.Offset_Log;
    in.MarkerMode = markerMode;
    in.MarkerRow = markerRow;
    return spectrum::PointerReadout(in);
}

float SpectrumView::columnOf(const ProgramState& st, const SpectrumFeed& f, double hz) const {
    const double W = PlotW_;
    if (st.DrSet == 2) {
        const double K = W / Log10(st.Sp_Samples / 2.0, st.FullScalePos);
        return f32(K * std::log10(hz / f.BinWidth));
    }
    if (st.SpanActive) return f32((hz - f.SpanLowFreq) * W / (f.SpanHighFreq - f.SpanLowFreq));
    return f32(hz * W / f.MaxFreq);
}

std::vector<SpectrumView::BredMark> SpectrumView::BredMarks(const ProgramState& st,
                                                            const SpectrumFeed& f) const {
    std::vector<BredMark> marks;
    if (!st.GprFilterOn || st.YLinear || st.PlotRange == 0 || PlotW_ <= 0) return marks;
    // The row of the level Bred under the plot's 0 dB (full scale, or the peak in dBc). The
    // edges are the band's: where the curve falls Bred under its peak, searched as the GPR
    // read-out searches. In dBc both are the same level and the crosses sit on the curve; in
    // dBFS they do when the peak is at full scale.
    const double rowDb = st.dBFS_On ? double(st.Bred) + st.Offset_Log : double(st.Bred);
    const int y = toInt32(rowDb * PlotH_ / st.PlotRange);
    const BandEdgeBins e = bandEdgeBins(st, double(f.PeakDb) - st.Bred);
    for (const int32_t bin : {e.low, e.high}) {
        if (bin <= 0) continue;
        const double hz = f.BinWidth * bin;
        const float x = columnOf(st, f, hz);
        if (std::isfinite(x) && x >= 0 && x < float(PlotW_)) marks.push_back({x, y, hz});
    }
    return marks;
}

// ---- The view as its window shows it -------------------------------------------------------

QSize plotSizeFor(QSize window) {
    const PlotMargins m;
    return {std::max(0, window.width() - m.left - m.right),
            std::max(0, window.height() - m.top - m.bottom)};
}

namespace {

/// The level axis' name is turned up in a font of the platform this many pixels high.
constexpr int kCaptionPixels = 13;

/// The font of the view's texts: the painter's own at 11 pixels.
QFont spectrumFont() {
    QFont f;
    f.setPixelSize(11);
    return f;
}

} // namespace

QRect captionRect(const SpectrumView& v) {
    const PlotMargins m;
    return QRect(2, m.top, 20, std::max(v.PlotH(), 0));
}

SpectrumTexts spectrumTexts(const SpectrumView& v, const ProgramState& st, QSize window) {
    const PlotMargins m;
    const QFontMetrics fm(spectrumFont());
    SpectrumTexts t;
    auto place = [&](std::vector<Label>& into, const QString& s, int x, int y) {
        into.push_back(Label{.text = s.toStdString(),
                             .left = x,
                             .top = y,
                             .width = fm.horizontalAdvance(s),
                             .height = fm.height()});
    };
    // Level labels: lbly(0) at the top edge, lbly(i) at GridYs(i).
    const auto& ly = v.lbly();
    for (size_t i = 0; i < ly.size(); ++i) {
        const int row = i == 0 ? 0 : v.GridYs()[i - 1];
        const QString s = QString::fromStdString(ly[i]);
        const int y = std::clamp(m.top + row - fm.height() / 2, 0, window.height() - fm.height());
        place(t.black, s, m.left - 4 - fm.horizontalAdvance(s), y);
    }
    // Frequency labels, centred under their grid line.
    const int xRow = m.top + v.PlotH() + 3;
    int freeFrom = 0;
    for (const auto& l : v.xLabels()) {
        const QString s = QString::fromStdString(l.text);
        const int tw = fm.horizontalAdvance(s);
        // The last label stands on the right edge: keep it whole inside the window.
        const int x = std::min(m.left + l.left - tw / 2, window.width() - tw - 2);
        // Log marks crowd at the top of each decade; a label that would run into the one before
        // it is left out rather than printed over it.
        if (x < freeFrom) continue;
        place(t.black, s, x, xRow);
        freeFrom = x + tw + 4;
    }
    const QString unit = QString::fromStdString(v.XUnitText() + "   " + v.xStepText());
    place(t.black, unit, window.width() - m.right - fm.horizontalAdvance(unit), xRow + fm.height());
    const QRect capRect = captionRect(v);
    t.caption =
        rotatedLabel(v.txtText(), capRect.center().x() + 1, capRect.top() + capRect.height() / 2,
                     kCaptionPixels, QStringLiteral("Arial"));
    // The read-out labels along the top, left to right: the metrics that are on, then the peak.
    const auto metricsShown = analysisLabelsShown(st);
    std::array<bool, 7> shown{};
    std::array<int, 7> widths{};
    std::array<QString, 7> texts;
    for (size_t i = 0; i < 6; ++i) {
        shown[i] = metricsShown[i];
        texts[i] = QString::fromStdString(st.An[i]);
    }
    shown[6] = v.peakLabel().visible;
    texts[6] = QString::fromStdString(v.peakLabel().text);
    for (size_t i = 0; i < 7; ++i)
        widths[i] = fm.horizontalAdvance(texts[i]);
    const auto lefts = analysisLabelLefts(m.left + v.peakLabel().left, shown, widths);
    for (size_t i = 0; i < 7; ++i)
        if (shown[i]) place(t.black, texts[i], lefts[i], 4);
    if (v.levelLineShown()) {
        const int y = m.top + int(std::lround(v.LevelY()));
        place(t.level, QString::fromStdString(v.lbldbS().text), m.left + v.PlotW() + 2,
              y + fm.ascent() / 2 - fm.ascent());
    }
    if (v.lblMyFr().visible) {
        const QString fr = QString::fromStdString(v.lblMyFr().text);
        const int x = m.left + v.lblMyFr().left, y = m.top + v.lblMyFr().top;
        place(t.pointer, fr, x, y);
        if (v.lbldB().visible) {
            const QString db = QString::fromStdString(v.lbldB().text);
            place(t.pointer, db, x - fm.horizontalAdvance(db), y);
        }
    }
    return t;
}

QSize spectrumMinimumSize(const SpectrumView& v, const ProgramState& st) {
    const PlotMargins m;
    const QFontMetrics fm(spectrumFont());
    // The read-outs change with every trace: each metric is measured at its widest figure, so
    // that the smallest window does not change from one trace to the next.
    static const char* const kPrefix[6] = {
        "SNR: ", "THD: ", "SINAD: ", "SFDR: ", "ENOB: ", "THD+N: "};
    const auto on = analysisLabelsShown(st);
    int row = m.left + v.peakLabel().left;
    for (size_t i = 0; i < 6; ++i)
        if (on[i]) row += fm.horizontalAdvance(QString(kPrefix[i]) + "-888.88Bits  ") + 3;
    if (v.peakLabel().visible)
        row += fm.horizontalAdvance(QString::fromStdString(v.peakLabel().text)) + 3;
    const int width = row + m.right;
    // The frequency unit and step under the frequency labels; ten level labels down the side,
    // and the level axis' name turned up beside them.
    const QString unit = QString::fromStdString(v.XUnitText() + "   " + v.xStepText());
    const int unitWidth = m.left + fm.horizontalAdvance(unit) + m.right;
    const Label caption = rotatedLabel(v.txtText(), 0, 0, kCaptionPixels, QStringLiteral("Arial"));
    const int plotHeight = std::max(10 * (fm.height() + 1), caption.height + 4);
    return {std::max({kMinViewWidth, width, unitWidth}),
            std::max(kMinViewHeight, m.top + plotHeight + m.bottom + kScrollHeight)};
}

void paintSpectrumView(QPainter& p, const SpectrumView& v, const ProgramState& st) {
    const PlotMargins m;
    const QRect all = p.viewport();
    p.fillRect(all, QColor(240, 240, 240));
    p.drawImage(m.left, m.top, v.surface().image());
    const QFont font = spectrumFont();
    p.setFont(font);
    const QFontMetrics fm(font);
    const int asc = fm.ascent();
    p.setPen(QColor(0, 0, 0));
    const SpectrumTexts texts = spectrumTexts(v, st, all.size());
    for (const Label& l : texts.black)
        p.drawText(l.left, l.top + asc, QString::fromStdString(l.text));
    // The caption as the O-scope paints its own: on a patch of the form's colour, turned up.
    const QRect capRect = captionRect(v);
    if (capRect.height() > 0) {
        Surface picText(capRect.width(), capRect.height(), kFormBackColor);
        picText.textRotated(picText.width() / 2, picText.height() / 2,
                            QString::fromStdString(v.txtText()), qRgb(0, 0, 0), kCaptionPixels,
                            QStringLiteral("Arial"));
        p.drawImage(capRect.topLeft(), picText.image());
    }

    if (v.levelLineShown()) {
        const int y = m.top + int(std::lround(v.LevelY()));
        p.setPen(QColor(255, 0, 0));
        p.drawLine(m.left, y, m.left + v.PlotW() - 1, y);
        p.drawText(m.left + v.PlotW() + 2, y + asc / 2, QString::fromStdString(v.lbldbS().text));
    }
    if (v.crossShown()) {
        // The cross stands out from the plot's background whatever colours the user chose.
        const QRgb c = colorFromIni(st.FFT_BackColor) ^ 0x00FFFFFFu;
        p.setPen(QColor(c));
        const int x = m.left + int(std::lround(v.PointerX()));
        p.drawLine(x, m.top, x, m.top + v.PlotH());
        p.drawLine(m.left, m.top + v.crossRow(), m.left + v.PlotW(), m.top + v.crossRow());
    }
    if (v.lblMyFr().visible) {
        const QString fr = QString::fromStdString(v.lblMyFr().text);
        const int x = m.left + v.lblMyFr().left, y = m.top + v.lblMyFr().top;
        p.fillRect(x, y, fm.horizontalAdvance(fr), fm.height(), QColor(255, 255, 225));
        p.setPen(QColor(0, 0, 0));
        p.drawText(x, y + asc, fr);
        if (v.lbldB().visible) {
            const QString db = QString::fromStdString(v.lbldB().text);
            const int w = fm.horizontalAdvance(db);
            p.fillRect(x - w, y, w, fm.height(), QColor(255, 255, 225));
            p.drawText(x - w, y + asc, db);
        }
    }
}

void DrawBredMarks(QPainter& p, const std::vector<SpectrumView::BredMark>& marks, QPoint origin,
                   QColor c) {
    p.setPen(c);
    for (const auto& m : marks) {
        const int x = origin.x() + int(std::lround(m.x)), y = origin.y() + m.y;
        p.drawLine(x - 3, y - 3, x + 3, y + 3);
        p.drawLine(x - 3, y + 3, x + 3, y - 3);
    }
}

} // namespace kv::spectrum
