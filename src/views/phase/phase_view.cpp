// The Phase view: scale, grid and frequency labels, the linear and logarithmic painters, the
// pointer read-out and the trace scroll bar. The frequency grid is the Spectrum view's.
#include "views/phase/phase_view.h"

#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "platform/numeric.h"
#include "state/command_state.h"
#include "state/workbench.h"
#include "views/line_math.h"
#include "views/other_views.h"
#include "views/spectrum/spectrum_scales.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace kv::phase {

namespace {

int rnd(double x) {
    return line::roundCoord(x);
}

/// The row of a phase in degrees, +180 at the top, on a graph `half` rows above and below 0.
int rowOfPhase(int32_t half, float degrees) {
    return rnd(half - double(degrees) * half / 180);
}

struct Prefix {
    const char* text;
    double scale;
};

// The labels' unit: kilo from 1000 on, mega from a million on.
Prefix prefixFor(double hz) {
    if (hz >= 1e6) return {" M", 1e-6};
    if (hz >= 1e3) return {" k", 1e-3};
    return {"", 1.0};
}

} // namespace

std::string frequencyText(double hz) {
    const char* unit = "Hz";
    double v = hz;
    if (hz >= 1e3) {
        v = hz * 1e-3;
        unit = "kHz";
    }
    if (hz >= 1e6) {
        v = hz * 1e-6;
        unit = "MHz";
    }
    return formatPicture(v, "###.0") + " " + unit;
}

std::string degreesText(int y, int height) {
    const int h = rnd(height / 2.0);
    const double perPixel = 180.0 / h;
    double deg = 0.0;
    if (y < h)
        deg = 180.0 - y * perPixel;
    else if (y > h)
        deg = -(y * perPixel - 180.0);
    return shortestText(Fix(deg)) + "  degrees";
}

PhaseView::PhaseView(Workbench& wb) : wb_(wb) {
    // The degree axis is fixed text: 180 at the top in steps of 45 down to -180.
    for (int i = 0; i <= 8; ++i)
        setLabelText(lbly_[size_t(i)], std::to_string(180 - 45 * i));
    for (auto& l : lblX_)
        l.visible = false;
    lblHz_.visible = lblDeg_.visible = false;
}

ProgramState& PhaseView::st() const {
    return wb_.st;
}

// ---- Life of the view ------------------------------------------------------------------------

void PhaseView::placeGraph(int w, int h) {
    const GraphLayout g = layOutGraph(w, h, kMargins);
    formWidth_ = g.window.width();
    formHeight_ = g.window.height();
    graphRect_ = g.graph;
    HS_.rect = g.scrollBar;
    PhaseWidth_ = graphRect_.width();
    PhaseHeight_ = graphRect_.height();
    const int capH = std::min(160, graphRect_.height());
    picTextRect_ = QRect(6, graphRect_.top() + (graphRect_.height() - capH) / 2, 20, capH);
    ShowYText();
}

void PhaseView::ShowYText() {
    picText_.resize(std::max(picTextRect_.width(), 1), std::max(picTextRect_.height(), 1),
                    kFormBackColor);
    picText_.textRotated(picText_.width() / 2, picText_.height() / 2,
                         QString::fromStdString(txtText_), qRgb(0, 0, 0), 13,
                         QStringLiteral("Arial"));
}

void PhaseView::Form_Load(int w, int h) {
    ProgramState& s = st();
    s.PhaseOpen = true;
    s.ActiveView = 3;
    s.PhaseRefOn = false;
    s.PhaseBins = s.Fft_Samples / 2;
    HS_.Min = 0;
    HS_.Max = std::max<int>(0, s.LastTrace);
    HS_.Value = std::clamp<int>(s.TracePos, HS_.Min, HS_.Max);
    HS_.Enabled = s.TraceCount != 1;
    Form_Resize(w, h);
}

void PhaseView::Form_Resize(int w, int h) {
    placeGraph(w, h);
    picF_.resize(PhaseWidth_, PhaseHeight_, colorFromIni(st().F_BackColor));
    PhasePointCount_ = 1;
    UpdateFasa();
    Draw_s();
}

void PhaseView::Form_Unload() {
    st().PhaseOpen = false;
    wb_.cmd.check("mnuPhase", false);
    wb_.cmd.touch();
}

// ---- Scale and grid ----------------------------------------------------------------------------

void PhaseView::UpdateFasa() {
    const ProgramState& s = st();
    PhaseHalf_ = rnd(PhaseHeight_ / 2.0);
    DegreesPerPixel_ = f32(180.0 / PhaseHalf_);
    PixelsPerBin_ = f32(double(PhaseWidth_) / s.PhaseBins);
    if (s.PhaseBins >= PhaseWidth_) {
        // About one plotted bin per pixel.
        BinStep_ = std::max(1, rnd(double(s.PhaseBins) / PhaseWidth_));
        PixelsPerBin_ = f32(PhaseWidth_ / (double(s.PhaseBins) / BinStep_));
    } else {
        BinStep_ = 1;
    }
    LogPixelsPerDecade_ = f32(PhaseWidth_ / spectrum::Log10(s.Sp_Samples / 2.0, s.FullScalePos));
    PhasePoints_.assign(size_t(std::max(1, s.Sp_Samples / BinStep_)), QPoint());
    PhasePointCount_ = 1;
    DrawGrid();
}

void PhaseView::DrawGrid() {
    const ProgramState& s = st();
    for (int i = 0; i <= 8; ++i) {
        PhaseGridY_[size_t(i)] = rnd(double(i) * PhaseHeight_ / 8);
        Label& l = lbly_[size_t(i)];
        l.left = graphRect_.left() - 2 - l.width;
        l.top = graphRect_.top() + PhaseGridY_[size_t(i)] - l.height / 2;
    }
    for (auto& l : lblX_)
        l.visible = false;
    const int labelTop = HS_.rect.bottom() + 4;
    if (s.DrSet == 2) {
        spectrum::XAxis a =
            spectrum::DrawXLog(PhaseWidth_, s.Sp_Samples, s.MaxFreq, s.BinWidth, s.FullScalePos);
        PhaseGridX_ = std::move(a.GridXs);
        for (size_t i = 0; i < a.labels.size() && i < lblX_.size(); ++i) {
            Label& l = lblX_[i];
            setLabelText(l, a.labels[i].text);
            l.left = graphRect_.left() + a.labels[i].left - l.width / 2;
            l.top = labelTop;
            l.visible = true;
        }
        setLabelText(lblSX_, a.unitText);
        axisText_ = "Hz";
    } else {
        PhaseGridX_ = spectrum::ShowX_lab(PhaseWidth_, s.MaxFreq, 1.0).GridXs;
        ShowX_lab();
    }
    lblSX_.left = graphRect_.left() + (graphRect_.width() - lblSX_.width) / 2;
    lblSX_.top = labelTop + lblX_[0].height + 4;
}

void PhaseView::ShowX_lab() {
    const ProgramState& s = st();
    const double step = double(s.MaxFreq) / 10;
    const Prefix p = prefixFor(step);
    for (int i = 0; i <= 10; ++i) {
        Label& l = lblX_[size_t(i)];
        setLabelText(l, formatPicture(i * step * p.scale, "###0.0"));
        l.left = graphRect_.left() + rnd(i * PhaseWidth_ / 10.0) - l.width / 2;
        l.top = HS_.rect.bottom() + 4;
        l.visible = true;
    }
    // With the band zoomed, the caption names the zoomed band instead of one tenth.
    const double caption = FreqZoom_ > 1 ? double(s.MaxFreq) / FreqZoom_ : step;
    const Prefix c = prefixFor(caption);
    const std::string number = shortestText(throughPicture(caption * c.scale, "###0.00"));
    setLabelText(lblSX_, number + c.text + "Hz/" + "div");
    axisText_ = number + c.text + "Hz";
}

// ---- Painting --------------------------------------------------------------------------------

int PhaseView::phaseRow(float degrees) const {
    return rowOfPhase(PhaseHalf_, degrees);
}

CurveScene PhaseView::scene(int painter) const {
    const ProgramState& s = st();
    CurveScene c;
    c.painter = painter;
    c.back = colorFromIni(s.F_BackColor);
    c.line = colorFromIni(s.F_LineColor);
    c.grid = s.F_ShowGrid == 1 ? colorFromIni(s.F_GridColor) : c.back;
    // The log painter starts from a cleared picture and leaves a grid that is off out.
    if (painter == 1 || s.F_ShowGrid == 1) {
        for (int32_t x : PhaseGridX_)
            c.gridLines.emplace_back(x, 0, x, PhaseHeight_);
        for (int32_t y : PhaseGridY_)
            c.gridLines.emplace_back(0, y, PhaseWidth_, y);
    }
    if (s.PhaseRefOn) {
        if (s.PhaseRef1On) c.overlays.emplace_back(PhaseRef1Points_, colorFromIni(s.Ph1Color));
        if (s.PhaseRef2On) c.overlays.emplace_back(PhaseRef2Points_, colorFromIni(s.Ph2Color));
    }
    return c;
}

void PhaseView::paintGrid(const CurveScene& c) {
    picF_.lines(c.gridLines.data(), c.gridLines.size(), c.grid);
}

void PhaseView::paintReferences() {
    const ProgramState& s = st();
    if (s.PhaseRefOn) {
        if (s.PhaseRef1On) picF_.polyline(PhaseRef1Points_, colorFromIni(s.Ph1Color));
        if (s.PhaseRef2On) picF_.polyline(PhaseRef2Points_, colorFromIni(s.Ph2Color));
    }
}

void PhaseView::Draw_s() {
    ensurePhases(st());
    if (st().DrSet == 2)
        drawLog();
    else
        drawLinear();
}

void PhaseView::drawLinear() {
    const ProgramState& s = st();
    CurveScene c = scene(1);
    const size_t capacity = size_t(std::max(1, s.Sp_Samples / BinStep_));
    // Erase by drawing the old curve again in the background colour, then the grid. When the
    // picture holds just what the last draw left, only the pixels that change are written.
    const size_t erasing =
        PhasePointCount_ > 1 ? std::min(size_t(PhasePointCount_ - 1), PhasePoints_.size()) : 0;
    bool quick = repaint_.ready(picF_, c, PhasePoints_.data(), erasing);
    if (!quick) {
        if (erasing > 0) picF_.polyline(PhasePoints_.data(), erasing, c.back);
        paintGrid(c);
    }
    PhasePoints_.assign(capacity, QPoint());
    // Locals, not members, in the loop: its stores could otherwise be the members for all the
    // compiler knows.
    QPoint* out = PhasePoints_.data();
    const float* phase = s.SpPhase.data();
    const size_t phases = s.SpPhase.size();
    const int32_t bins = s.PhaseBins, step = BinStep_, half = PhaseHalf_;
    const double perBin = PixelsPerBin_;
    int32_t count = 1;
    int k = 0;
    for (int32_t b = 1; b <= bins; b += step, ++k) {
        if (size_t(b) >= phases || size_t(count) > capacity) break;
        out[size_t(count - 1)] = QPoint(rnd(perBin * k), rowOfPhase(half, phase[size_t(b)]));
        ++count;
    }
    PhasePointCount_ = count;
    const size_t drawing = size_t(PhasePointCount_ - 1);
    if (quick && !repaint_.repaint(picF_, PhasePoints_.data(), drawing)) {
        picF_.polyline(repaint_.drawn(), c.back);
        paintGrid(c);
        quick = false;
    }
    if (!quick) picF_.polyline(PhasePoints_.data(), drawing, c.line);
    paintReferences();
    repaint_.remember(picF_, std::move(c), PhasePoints_.data(), drawing);
}

void PhaseView::drawLog() {
    const ProgramState& s = st();
    CurveScene c = scene(2);
    PhasePointCount_ = 1;
    // The points are not evenly spaced: one stroke from each point to the next.
    logPoints_.clear();
    for (int32_t b = 1; b <= s.PhaseBins && size_t(b) < s.SpPhase.size(); ++b)
        logPoints_.emplace_back(
            rnd(double(LogPixelsPerDecade_) * spectrum::Log10(b, s.FullScalePos)),
            phaseRow(s.SpPhase[size_t(b)]));
    // The picture is cleared and the grid drawn afresh; when it holds just what the last draw
    // left, that is the old curve to take away and the new one to put in.
    const bool quick = repaint_.ready(picF_, c, repaint_.drawn().data(), repaint_.drawn().size()) &&
                       repaint_.repaint(picF_, logPoints_.data(), logPoints_.size());
    if (!quick) {
        picF_.fill(c.back);
        paintGrid(c);
        picF_.polyline(logPoints_, c.line);
    }
    paintReferences();
    repaint_.remember(picF_, std::move(c), logPoints_.data(), logPoints_.size());
}

void PhaseView::redraw() {
    Cls(); // the colours may have changed
    UpdateFasa();
    Draw_s();
}

void PhaseView::setReferencePoints(std::vector<QPoint> ref1, std::vector<QPoint> ref2) {
    PhaseRef1Points_ = std::move(ref1);
    PhaseRef2Points_ = std::move(ref2);
}

void PhaseView::command(const std::string& name) {
    if (name == "CreateRef") CreateRef();
}

void PhaseView::CreateRef() {
    ProgramState& s = st();
    const int32_t half = rnd(PhaseHeight_ / 2.0);
    const auto lay = [&](bool on, int32_t samples, float maxFreq, const std::vector<float>& data,
                         std::vector<QPoint>& pts) {
        pts.clear();
        if (!on || samples < 1 || s.MaxFreq <= 0) return;
        const double w = maxFreq <= s.MaxFreq ? rnd(double(maxFreq) * PhaseWidth_ / s.MaxFreq)
                                              : double(PhaseWidth_);
        const double step = w / samples;
        const int32_t n = std::min<int64_t>(samples, int64_t(data.size()));
        pts.reserve(size_t(std::max(n, 0)));
        for (int32_t i = 0, k = -1; i < n; ++i, ++k)
            pts.emplace_back(rnd(step * k), rnd(half - double(data[size_t(i)]) * half / 180.0));
    };
    lay(s.PhaseRef1On, s.PhaseRef1Samples, s.PhaseRef1MaxFreq, s.PhaseRef1Data, PhaseRef1Points_);
    lay(s.PhaseRef2On, s.PhaseRef2Samples, s.PhaseRef2MaxFreq, s.PhaseRef2Data, PhaseRef2Points_);
    s.PhaseRefOn = s.PhaseRef1On || s.PhaseRef2On;
    Draw_s();
}

void PhaseView::Cls() {
    picF_.fill(colorFromIni(st().F_BackColor));
    PhasePointCount_ = 1;
}

// ---- Moving through the data -------------------------------------------------------------------

void PhaseView::HS_Change() {
    ProgramState& s = st();
    if (!s.Idle) return;
    waterfallFollowsScroll(wb_, HS_.Value);
    s.TracePos = int16_t(HS_.Value);
    setCurrentTracePos(s);
    try {
        FyllSpData(s);
    } catch (const std::exception&) {
        return; // a failed read leaves the picture as it was
    }
    showTraceInOtherViews(wb_, ViewId::Phase);
    Draw_s();
}

void PhaseView::traceChanged() {
    HS_.Max = std::max<int>(0, st().LastTrace);
    HS_.Value = std::clamp<int>(st().TracePos, HS_.Min, HS_.Max);
    Draw_s();
}

// ---- Pointer ---------------------------------------------------------------------------------

void PhaseView::readout(int x, int y) {
    const ProgramState& s = st();
    pointerX_ = x;
    pointerY_ = y;
    lnPec_V_ = lnPec_G_ = true;
    double hz;
    if (s.DrSet == 2)
        hz = double(s.BinWidth) * std::pow(10.0, x / double(LogPixelsPerDecade_));
    else
        hz = double(s.MaxFreq) * x / PhaseWidth_;
    setLabelText(lblHz_, frequencyText(hz));
    setLabelText(lblDeg_, degreesText(y, PhaseHeight_));
    lblHz_.left = graphRect_.right() + 1 - lblHz_.width;
    lblHz_.top = lblDeg_.top = graphRect_.top() - lblHz_.height - 2;
    lblDeg_.left = lblHz_.left - 5 - lblDeg_.width;
    lblHz_.visible = lblDeg_.visible = true;
}

bool PhaseView::inGraph(int x, int y) const {
    return x >= 0 && y >= 0 && x < PhaseWidth_ && y < PhaseHeight_;
}

void PhaseView::picF_MouseDown(int button, int x, int y) {
    if (button == LeftButton && inGraph(x, y)) readout(x, y);
}

void PhaseView::picF_MouseMove(int buttons, int x, int y) {
    if ((buttons & LeftButton) && inGraph(x, y)) readout(x, y);
}

void PhaseView::picF_MouseUp(int, int, int) {
    lnPec_V_ = lnPec_G_ = false;
    lblHz_.visible = lblDeg_.visible = false;
}

void PhaseView::mousePress(int button, int x, int y) {
    picF_MouseDown(button, x - graphRect_.left(), y - graphRect_.top());
}

void PhaseView::mouseMove(int buttons, int x, int y) {
    picF_MouseMove(buttons, x - graphRect_.left(), y - graphRect_.top());
}

void PhaseView::mouseRelease(int button, int x, int y) {
    picF_MouseUp(button, x - graphRect_.left(), y - graphRect_.top());
}

// ---- The window as one image ------------------------------------------------------------------

QSize PhaseView::minimumSize() const {
    int widest = 0;
    for (const Label& l : lblX_)
        if (l.visible) widest = std::max(widest, l.width);
    // Eleven labels a tenth of the graph apart on the linear axis; the log axis spaces its own.
    const int graphWidth = 10 * (widest + 2);
    const int graphHeight = 8 * lbly_[0].height;
    // The caption turned up beside the graph stands whole.
    const Label caption = rotatedLabel(txtText_, 0, 0, 13, QStringLiteral("Arial"));
    return {
        std::max(kMinWidth, kWidthMargin + graphWidth),
        std::max({kMinHeight, kHeightMargin + graphHeight, kHeightMargin + caption.height + 4})};
}

std::vector<Label> PhaseView::visibleLabels() const {
    std::vector<Label> all;
    addShownOnForm(all, lbly_);
    addShownOnForm(all, lblX_);
    addShownOnForm(all, std::array{lblSX_});
    addShown(all, std::array{lblHz_, lblDeg_});
    all.push_back(onBackground(rotatedLabel(txtText_, picTextRect_.center().x() + 1,
                                            picTextRect_.top() + picTextRect_.height() / 2, 13,
                                            QStringLiteral("Arial")),
                               kFormBackColor));
    return all;
}

QImage PhaseView::picture() const {
    QImage img(std::max(formWidth_, 1), std::max(formHeight_, 1), QImage::Format_RGB32);
    img.fill(kFormBackColor);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setFont(labelFont());
    const QPoint g = graphRect_.topLeft();
    p.drawImage(g, picF_.image());
    p.drawImage(picTextRect_.topLeft(), picText_.image());
    const QColor ink(Qt::black);
    for (const auto& l : lbly_)
        paintLabel(p, l, ink);
    for (const auto& l : lblX_)
        paintLabel(p, l, ink);
    for (const Label* l : {&lblSX_, &lblHz_, &lblDeg_})
        paintLabel(p, *l, ink);
    paintScrollBar(p, HS_);
    if (lnPec_V_ || lnPec_G_) {
        p.setClipRect(graphRect_);
        p.setPen(QColor(0xFF, 0xFF, 0xFF));
        if (lnPec_V_) p.drawLine(g.x() + pointerX_, g.y(), g.x() + pointerX_, graphRect_.bottom());
        if (lnPec_G_) p.drawLine(g.x(), g.y() + pointerY_, graphRect_.right(), g.y() + pointerY_);
    }
    return img;
}

} // namespace kv::phase
