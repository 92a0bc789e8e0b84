// The Phase view: scale, grid and frequency labels, the linear and logarithmic painters, the
// pointer read-out and the trace scroll bar. The frequency grid is the Spectrum view's.
#include "views/phase/phase_view.h"

#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "platform/numeric.h"
#include "state/command_state.h"
#include "state/workbench.h"
#include "views/other_views.h"
#include "views/spectrum/spectrum_scales.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <exception>

namespace kv::phase {

namespace {

int rnd(double x) {
    return toInt32(x);
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
        setLabelText(lbly[size_t(i)], std::to_string(180 - 45 * i));
    for (auto& l : lblX)
        l.visible = false;
    lblHz.visible = lblDeg.visible = false;
}

ProgramState& PhaseView::st() const {
    return wb_.st;
}

// ---- Life of the view ------------------------------------------------------------------------

void PhaseView::placeGraph(int w, int h) {
    formWidth = std::max(w, kMinWidth);
    formHeight = std::max(h, kMinHeight);
    graphRect = QRect(kGraphLeft, kGraphTop, formWidth - kWidthMargin, formHeight - kHeightMargin);
    PhaseWidth = graphRect.width();
    PhaseHeight = graphRect.height();
    HS.rect = QRect(graphRect.left(), graphRect.bottom() + 3, graphRect.width(), kScrollHeight);
}

void PhaseView::Form_Load(int w, int h) {
    ProgramState& s = st();
    s.PhaseOpen = true;
    s.ActiveView = 3;
    s.PhaseRefOn = false;
    s.PhaseBins = s.Fft_Samples / 2;
    HS.Min = 0;
    HS.Max = std::max<int>(0, s.LastTrace);
    HS.Value = std::clamp<int>(s.TracePos, HS.Min, HS.Max);
    HS.Enabled = s.TraceCount != 1;
    Form_Resize(w, h);
}

void PhaseView::Form_Resize(int w, int h) {
    placeGraph(w, h);
    picF_.resize(PhaseWidth, PhaseHeight, colorFromIni(st().F_BackColor));
    PhasePointCount = 1;
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
    PhaseHalf = rnd(PhaseHeight / 2.0);
    DegreesPerPixel = f32(180.0 / PhaseHalf);
    PixelsPerBin = f32(double(PhaseWidth) / s.PhaseBins);
    if (s.PhaseBins >= PhaseWidth) {
        // About one plotted bin per pixel.
        BinStep = std::max(1, rnd(double(s.PhaseBins) / PhaseWidth));
        PixelsPerBin = f32(PhaseWidth / (double(s.PhaseBins) / BinStep));
    } else {
        BinStep = 1;
    }
    LogPixelsPerDecade = f32(PhaseWidth / spectrum::Log10(s.Sp_Samples / 2.0, s.FullScalePos));
    PhasePoints.assign(size_t(std::max(1, s.Sp_Samples / BinStep)), QPoint());
    PhasePointCount = 1;
    DrawGrid();
}

void PhaseView::DrawGrid() {
    const ProgramState& s = st();
    for (int i = 0; i <= 8; ++i) {
        PhaseGridY[size_t(i)] = rnd(double(i) * PhaseHeight / 8);
        Label& l = lbly[size_t(i)];
        l.left = graphRect.left() - 2 - l.width;
        l.top = graphRect.top() + PhaseGridY[size_t(i)] - l.height / 2;
    }
    for (auto& l : lblX)
        l.visible = false;
    const int labelTop = HS.rect.bottom() + 4;
    if (s.DrSet == 2) {
        spectrum::XAxis a =
            spectrum::DrawXLog(PhaseWidth, s.Sp_Samples, s.MaxFreq, s.BinWidth, s.FullScalePos);
        PhaseGridX = std::move(a.GridXs);
        for (size_t i = 0; i < a.labels.size() && i < lblX.size(); ++i) {
            Label& l = lblX[i];
            setLabelText(l, a.labels[i].text);
            l.left = graphRect.left() + a.labels[i].left - l.width / 2;
            l.top = labelTop;
            l.visible = true;
        }
        setLabelText(lblSX, a.unitText);
        axisText = "Hz";
    } else {
        PhaseGridX = spectrum::ShowX_lab(PhaseWidth, s.MaxFreq, 1.0).GridXs;
        ShowX_lab();
    }
    lblSX.left = graphRect.left() + (graphRect.width() - lblSX.width) / 2;
    lblSX.top = labelTop + lblX[0].height + 4;
}

void PhaseView::ShowX_lab() {
    const ProgramState& s = st();
    const double step = double(s.MaxFreq) / 10;
    const Prefix p = prefixFor(step);
    for (int i = 0; i <= 10; ++i) {
        Label& l = lblX[size_t(i)];
        setLabelText(l, formatPicture(i * step * p.scale, "###0.0"));
        l.left = graphRect.left() + rnd(i * PhaseWidth / 10.0) - l.width / 2;
        l.top = HS.rect.bottom() + 4;
        l.visible = true;
    }
    // With the band zoomed, the caption names the zoomed band instead of one tenth.
    const double caption = s.FreqZoom > 1 ? double(s.MaxFreq) / s.FreqZoom : step;
    const Prefix c = prefixFor(caption);
    const std::string number = shortestText(throughPicture(caption * c.scale, "###0.00"));
    setLabelText(lblSX, number + c.text + "Hz/" + "div");
    axisText = number + c.text + "Hz";
}

// ---- Painting --------------------------------------------------------------------------------

int PhaseView::phaseRow(float degrees) const {
    return rnd(PhaseHalf - double(degrees) * PhaseHalf / 180);
}

void PhaseView::paintGrid(QRgb back) {
    const ProgramState& s = st();
    const QRgb grid = s.F_ShowGrid == 1 ? colorFromIni(s.F_GridColor) : back;
    for (int32_t x : PhaseGridX)
        picF_.line(x, 0, x, PhaseHeight, grid);
    for (int32_t y : PhaseGridY)
        picF_.line(0, y, PhaseWidth, y, grid);
}

void PhaseView::Draw_s() {
    if (st().DrSet == 2)
        drawLog();
    else
        drawLinear();
}

void PhaseView::drawLinear() {
    const ProgramState& s = st();
    const QRgb back = colorFromIni(s.F_BackColor);
    const size_t capacity = size_t(std::max(1, s.Sp_Samples / BinStep));
    // Erase by drawing the old curve again in the background colour.
    if (PhasePointCount > 1)
        picF_.polyline(PhasePoints.data(),
                       std::min(size_t(PhasePointCount - 1), PhasePoints.size()), back);
    paintGrid(back);
    PhasePoints.assign(capacity, QPoint());
    PhasePointCount = 1;
    int k = 0;
    for (int32_t b = 1; b <= s.PhaseBins; b += BinStep, ++k) {
        if (size_t(b) >= s.SpPhase.size() || size_t(PhasePointCount) > capacity) break;
        PhasePoints[size_t(PhasePointCount - 1)] =
            QPoint(rnd(double(PixelsPerBin) * k), phaseRow(s.SpPhase[size_t(b)]));
        ++PhasePointCount;
    }
    picF_.polyline(PhasePoints.data(), size_t(PhasePointCount - 1), colorFromIni(s.F_LineColor));
    if (s.PhaseRefOn) {
        if (s.PhaseRef1On) picF_.polyline(PhaseRef1Points, colorFromIni(s.Ph1Color));
        if (s.PhaseRef2On) picF_.polyline(PhaseRef2Points, colorFromIni(s.Ph2Color));
    }
}

void PhaseView::drawLog() {
    const ProgramState& s = st();
    const QRgb back = colorFromIni(s.F_BackColor);
    picF_.fill(back);
    PhasePointCount = 1;
    if (s.F_ShowGrid == 1) paintGrid(back);
    // The points are not evenly spaced: one stroke from each point to the next.
    const QRgb line = colorFromIni(s.F_LineColor);
    QPoint prev;
    for (int32_t b = 1; b <= s.PhaseBins && size_t(b) < s.SpPhase.size(); ++b) {
        const QPoint p(rnd(double(LogPixelsPerDecade) * spectrum::Log10(b, s.FullScalePos)),
                       phaseRow(s.SpPhase[size_t(b)]));
        if (b > 1) picF_.line(prev.x(), prev.y(), p.x(), p.y(), line);
        prev = p;
    }
    if (s.PhaseRefOn) {
        if (s.PhaseRef1On) picF_.polyline(PhaseRef1Points, colorFromIni(s.Ph1Color));
        if (s.PhaseRef2On) picF_.polyline(PhaseRef2Points, colorFromIni(s.Ph2Color));
    }
}

void PhaseView::Cls() {
    picF_.fill(colorFromIni(st().F_BackColor));
    PhasePointCount = 1;
}

// ---- Moving through the data -------------------------------------------------------------------

void PhaseView::setScrollValue(int value) {
    value = std::clamp(value, HS.Min, std::max(HS.Min, HS.Max));
    if (value == HS.Value) return;
    HS.Value = value;
    HS_Change();
}

void PhaseView::HS_Change() {
    ProgramState& s = st();
    if (!s.Idle) return;
    s.TracePos = int16_t(HS.Value);
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
    HS.Max = std::max<int>(0, st().LastTrace);
    HS.Value = std::clamp<int>(st().TracePos, HS.Min, HS.Max);
    Draw_s();
}

// ---- Pointer ---------------------------------------------------------------------------------

void PhaseView::readout(int x, int y) {
    const ProgramState& s = st();
    pointerX = x;
    pointerY = y;
    lnPec_V = lnPec_G = true;
    double hz;
    if (s.DrSet == 2)
        hz = double(s.BinWidth) * std::pow(10.0, x / double(LogPixelsPerDecade));
    else
        hz = double(s.MaxFreq) * x / PhaseWidth;
    setLabelText(lblHz, frequencyText(hz));
    setLabelText(lblDeg, degreesText(y, PhaseHeight));
    lblHz.left = graphRect.right() + 1 - lblHz.width;
    lblHz.top = lblDeg.top = graphRect.top() - lblHz.height - 2;
    lblDeg.left = lblHz.left - 5 - lblDeg.width;
    lblHz.visible = lblDeg.visible = true;
}

void PhaseView::picF_MouseDown(int button, int x, int y) {
    if (button == LeftButton) readout(x, y);
}

void PhaseView::picF_MouseMove(int buttons, int x, int y) {
    if (!(buttons & LeftButton)) return;
    if (x < 0 || y < 0 || x >= PhaseWidth || y >= PhaseHeight) return;
    readout(x, y);
}

void PhaseView::picF_MouseUp(int, int, int) {
    lnPec_V = lnPec_G = false;
    lblHz.visible = lblDeg.visible = false;
}

// ---- The window as one image ------------------------------------------------------------------

QImage PhaseView::renderWindow() const {
    QImage img(std::max(formWidth, 1), std::max(formHeight, 1), QImage::Format_RGB32);
    img.fill(kFormBackColor);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setFont(labelFont());
    const QPoint g = graphRect.topLeft();
    p.drawImage(g, picF_.image());
    const QColor ink(Qt::black);
    for (const auto& l : lbly)
        paintLabel(p, l, ink);
    for (const auto& l : lblX)
        paintLabel(p, l, ink);
    for (const Label* l : {&lblSX, &lblHz, &lblDeg})
        paintLabel(p, *l, ink);
    paintScrollBar(p, HS);
    if (lnPec_V || lnPec_G) {
        p.setClipRect(graphRect);
        p.setPen(QColor(0xFF, 0xFF, 0xFF));
        if (lnPec_V) p.drawLine(g.x() + pointerX, g.y(), g.x() + pointerX, graphRect.bottom());
        if (lnPec_G) p.drawLine(g.x(), g.y() + pointerY, graphRect.right(), g.y() + pointerY);
    }
    return img;
}

} // namespace kv::phase
