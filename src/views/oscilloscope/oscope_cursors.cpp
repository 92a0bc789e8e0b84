// The O-scope's measuring tools: two time cursors that read the trace off the picture and print
// value, time and the differences between them, the maximum, minimum and peak-to-peak read-outs
// of the whole trace, the mouse routing of the window, and the window composed as one image.
#include "platform/numeric.h"
#include "state/command_state.h"
#include "state/workbench.h"
#include "views/oscilloscope/oscope_view.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace kv::oscope {

namespace {

int rnd(double x) {
    return toInt32(x);
}

} // namespace

std::string amplitudeText(float amp, bool bits) {
    if (amp == 0.0f) return "0";
    return bits ? shortestText(f32(Fix(amp))) : formatPicture(amp, "0.00");
}

// ---- Rate of change between the cursors -------------------------------------------------------

RateReadout rateReadout(double dV, double dt, int16_t timeExponent, const std::string& unitName,
                        bool refreshStyle) {
    RateReadout r;
    if (dt == 0.0) return r; // no rate: the number stays 0 and the unit empty
    double rate = dV / (std::pow(10.0, timeExponent) * dt);
    r.number = rate != 0.0 ? throughPicture(rate, "####.#") : 0.0;
    r.unit = unitName + "/sec.";
    const bool negative = rate < 0.0;
    if (negative) rate = -rate;
    const char* prefixedPicture = refreshStyle ? "####.#" : "####.0";
    // Independent tests: the highest prefix that fits wins.
    bool prefixed = false;
    const struct {
        double limit;
        const char* prefix;
    } steps[] = {{1e3, " k "}, {1e6, " M "}, {1e9, " G "}, {1e12, " T "}};
    for (const auto& s : steps) {
        if (rate > s.limit) {
            r.number = throughPicture(rate / s.limit, prefixedPicture);
            r.unit = s.prefix + unitName + "/sec.";
            prefixed = true;
        }
    }
    if (negative && prefixed) r.number = -r.number;
    return r;
}

// ---- Reading the trace off the screen ---------------------------------------------------------

void OscopeView::scanKursorColumn() {
    const QRgb trace = colorFromIni(st().Time_LineColor) | 0xFF000000u;
    const int h = std::min(int(GraphHeight), picGraph_.height());
    for (int y = 0; y < h; ++y) {
        if ((picGraph_.pixel(KursorColumn, y) | 0xFF000000u) == trace) {
            KursorRow = y;
            return;
        }
    }
    // Nothing of the trace's colour in this column: the previous row stands.
}

void OscopeView::placeKursorHandles() {
    for (size_t i = 0; i < 2; ++i) {
        lblK[i].left = picKLeft[i] + graphRect.left() - 6;
        lblK[i].top = graphRect.top() - lblK[i].height;
    }
}

void OscopeView::layoutMarkers() {
    // Right aligned ten pixels inside the graph, stacked five pixels apart from the top.
    int top = graphRect.top() + 5;
    for (auto& l : lblMarker1) {
        l.left = graphRect.right() + 1 - 10 - l.width;
        l.top = top;
        top += l.height + 5;
    }
}

// ---- Cursors ----------------------------------------------------------------------------------

void OscopeView::Kursor() {
    ProgramState& s = st();
    if (!s.KursorOn) {
        picKVisible = {};
        lnKGVisible = {};
        for (auto& l : lblK)
            l.visible = false;
        for (auto& l : lblMarker1)
            l.visible = false;
        cmd().button(83).down = false;
        cmd().touch();
        return;
    }
    // The bars start almost at the left edge, a quarter and a half of a bar's width in.
    picKLeft[0] = rnd(kKursorWidth / 4.0);
    picKLeft[1] = rnd(kKursorWidth / 2.0);
    for (size_t i = 0; i < 2; ++i) {
        picKVisible[i] = true;
        lblMarker1[i].visible = true;
        lblK[i].visible = true;
    }
    placeKursorHandles();
    for (int16_t i = 0; i < 2; ++i) {
        KursorX = float(picKLeft[size_t(i)]);
        KursorColumn = rnd(KursorX);
        KursorIndex = i;
        scanKursorColumn();
        lnKG[size_t(i)] = QLine(rnd(KursorX - 8.0), KursorRow, rnd(KursorX + 8.0), KursorRow);
        lnKGVisible[size_t(i)] = true;
        KursorMeasure();
    }
    lblMarker1[2].visible = true;
    layoutMarkers();
}

void OscopeView::KursorMeasure() {
    TimePerPixel = TimeSpan / GraphWidth;
    KursorTime = f32(double(TimePerPixel) * KursorColumn + st().ViewStartTime);
    measureKursor();
}

void OscopeView::measureKursor() {
    const size_t i = size_t(KursorIndex);
    AmpPerPixel = f32(double(DivValue) / (HorizontalLines[1] - HorizontalLines[0]));
    KursorAmp = amplitudeAtRow(KursorRow, ZeroLine);
    lblKAmp[i] = amplitudeText(KursorAmp, st().ShowVertical == 2);
    lblYk[i] = shortestText(KursorTime);
    KurTime[i] = formatPicture(KursorTime, "0.00");
    markerLine(i);
    writeRateLine(false);
    layoutMarkers();
}

void OscopeView::markerLine(size_t i) {
    setText(lblMarker1[i], "V" + std::to_string(i + 1) + " = " + lblKAmp[i] + " " + lblText.text +
                               " ; " + "t" + std::to_string(i + 1) + " = " + KurTime[i] + " " +
                               TimeUnit);
}

void OscopeView::writeRateLine(bool refreshStyle) {
    // dt runs from cursor 2 to cursor 1 and dV from cursor 1 to cursor 2.
    const double dt = throughPicture(Val(KurTime[0]) - Val(KurTime[1]), "0.00");
    const double dV = throughPicture(Val(lblKAmp[1]) - Val(lblKAmp[0]), "0.00");
    const RateReadout r = rateReadout(dV, dt, TimeExponent, lblText.text, refreshStyle);
    setText(lblMarker1[2], "dV =  " + shortestText(dV) + " " + lblText.text + " ; " +
                               "dt = " + shortestText(dt) + " " + TimeUnit + " ; " +
                               "dV/dt =" + shortestText(r.number) + " " + r.unit);
}

void OscopeView::ReloadKursor() {
    for (auto& l : lblMarker1)
        setText(l, "");
    GraphWidth = float(graphRect.width());
    for (int16_t i = 0; i < 2; ++i) {
        const size_t k = size_t(i);
        const float time = f32(Val(lblYk[k]));
        TimePerPixel = TimeSpan / GraphWidth;
        KursorX = time / TimePerPixel;
        bool moved = false;
        if (Fix(KursorX) < 0 || Fix(KursorX) >= GraphWidth) {
            KursorX = i == 0 ? GraphWidth / 3 : GraphWidth / 2;
            moved = true;
        }
        picKLeft[k] = int(Fix(KursorX));
        KursorColumn = picKLeft[k];
        KursorIndex = i;
        // The cursor keeps its time; one that had to be brought back into view takes the time
        // of its new column.
        KursorTime = moved ? f32(double(TimePerPixel) * KursorColumn + st().ViewStartTime) : time;
        scanKursorColumn();
        lnKG[k] = QLine(rnd(KursorX - 8.0), KursorRow, rnd(KursorX + 8.0), KursorRow);
        measureKursor();
    }
    placeKursorHandles();
}

void OscopeView::KursorRefresh() {
    for (auto& l : lblMarker1)
        setText(l, "");
    AmpPerPixel = f32(double(DivValue) / (HorizontalLines[1] - HorizontalLines[0]));
    const float centre = GraphHeight / 2;
    for (int16_t i = 0; i < 2; ++i) {
        const size_t k = size_t(i);
        KursorIndex = i;
        KursorColumn = picKLeft[k];
        KursorX = float(KursorColumn);
        scanKursorColumn();
        lnKG[k] = QLine(rnd(KursorX - 8.0), KursorRow, rnd(KursorX + 8.0), KursorRow);
        // The time from the left edge of the picture, without the zoom's start time.
        KursorTime = f32(double(TimeSpan) / GraphWidth * KursorColumn);
        KursorAmp = amplitudeAtRow(KursorRow, centre);
        KurTime[k] = formatPicture(KursorTime, "0.00");
        lblKAmp[k] = formatPicture(KursorAmp, "0.00");
        markerLine(k);
    }
    writeRateLine(true);
    layoutMarkers();
}

// ---- Dragging a cursor by its handle --------------------------------------------------------

int OscopeView::handleAt(int x, int y) const {
    // The second handle lies over the first where they overlap.
    for (int i = 1; i >= 0; --i) {
        const Label& h = lblK[size_t(i)];
        if (h.visible && x >= h.left && x < h.right() && y >= h.top && y < h.bottom()) return i;
    }
    return -1;
}

void OscopeView::lblK_MouseDown(int index, int button, int x, int y) {
    if (button != LeftButton || index < 0 || index > 1) return;
    KursorIndex = int16_t(index);
    DraggingKursor = true;
    DraggingText = false;
    DragMode = 1;
    dragStart = QPoint(x, y);
    // The frame stands two pixels right of the bar it carries, in graph pixels.
    dragFrame = QRect(picKLeft[size_t(index)] + 2, 0, kHandleWidth, int(GraphHeight));
    dragFrameVisible = true;
}

void OscopeView::Form_MouseMove(int buttons, int x, int) {
    if (DragMode == 0 || !(buttons & LeftButton)) return;
    const int left = picKLeft[size_t(KursorIndex)] + 2 + (x - dragStart.x());
    // The frame stays over the graph.
    dragFrame.moveLeft(std::clamp(left, 2, std::max(2, int(GraphWidth) + 1)));
}

void OscopeView::Form_MouseUp(int, int, int) {
    if (DragMode == 0) return;
    dragFrameVisible = false;
    DragMode = 0;
    if (!DraggingKursor) return;
    DraggingKursor = false;
    const size_t i = size_t(KursorIndex);
    KursorColumn = dragFrame.left() - 2;
    KursorX = float(KursorColumn);
    picKLeft[i] = KursorColumn;
    scanKursorColumn();
    KursorMeasure();
    lnKG[i] = QLine(KursorColumn - 8, KursorRow, KursorColumn + 8, KursorRow);
    placeKursorHandles();
}

// ---- Maximum, minimum, peak to peak -----------------------------------------------------------

void OscopeView::MaxMin() {
    const ProgramState& s = st();
    // The whole trace, whatever the zoom shows, without its first four and last three samples.
    // The maximum starts at 0, so a trace below zero throughout reports 0.
    const int32_t last = std::min<int32_t>(s.Sp_Samples - 4, int32_t(s.TraceBuf.size()) - 1);
    MaxAmp = 0.0f;
    for (int32_t i = 4; i <= last; ++i) {
        if (s.TraceBuf[size_t(i)] > MaxAmp) {
            MaxAmp = s.TraceBuf[size_t(i)];
            MaxPos = i;
        }
    }
    MinAmp = MaxAmp;
    for (int32_t i = 4; i <= last; ++i) {
        if (s.TraceBuf[size_t(i)] < MinAmp) {
            MinAmp = s.TraceBuf[size_t(i)];
            MinPos = i;
        }
    }
}

void OscopeView::ProzessingAmp() {
    const ProgramState& s = st();
    if (s.ShowPeakPeak) PeakPeak = f32(double(f32(MaxAmp * AmpFactor)) - f32(MinAmp * AmpFactor));
    const std::string unit = " " + lblText.text;
    if (s.ShowMaxAmp) {
        setText(An[0], "Max.Amp: " + formatPicture(f32(AmpFactor * MaxAmp), "0.##") + unit);
        anSwitch[0] = true;
        UpdateAnalys();
    }
    if (s.ShowMinAmp) {
        setText(An[1], "Min.Amp: " + formatPicture(f32(AmpFactor * MinAmp), "0.##") + unit);
        anSwitch[1] = true;
        UpdateAnalys();
    }
    if (s.ShowPeakPeak) {
        setText(An[2], "Peak_Peak: " + formatPicture(PeakPeak, "0.##") + unit);
        anSwitch[2] = true;
        UpdateAnalys();
    }
}

void OscopeView::UpdateAnalys() {
    ProgramState& s = st();
    anSwitch[0] = s.ShowMaxAmp;
    anSwitch[1] = s.ShowMinAmp;
    anSwitch[2] = s.ShowPeakPeak;
    int x = graphRect.left();
    bool any = false;
    for (size_t n = 0; n < An.size(); ++n) {
        An[n].visible = anSwitch[n];
        if (!An[n].visible) continue;
        any = true;
        An[n].left = x;
        An[n].top = graphRect.top() - 5 - An[n].height;
        x += An[n].width + 10;
    }
    if (!any) s.AnalysOn = false;
}

namespace {

void toggleReadout(OscopeView& v, ProgramState& s, CommandState& c, const char* menu, bool& flag,
                   int button) {
    const bool on = !c.checked(menu);
    c.check(menu, on);
    c.button(button).down = on;
    flag = on;
    if (on) {
        s.AnalysOn = true;
        // The figures of the trace on show, not of the last draw with read-outs on.
        v.MaxMin();
        v.ProzessingAmp();
    } else {
        v.ProzessingAmp();
        v.UpdateAnalys();
    }
    c.touch();
}

} // namespace

void OscopeView::mnuMxA() {
    toggleReadout(*this, st(), cmd(), "mnuMxA", st().ShowMaxAmp, 74);
}

void OscopeView::mnuMa() {
    toggleReadout(*this, st(), cmd(), "mnuMa", st().ShowMinAmp, 75);
}

void OscopeView::mnuPP() {
    toggleReadout(*this, st(), cmd(), "mnuPP", st().ShowPeakPeak, 76);
}

void OscopeView::mnuCur() {
    ProgramState& s = st();
    s.KursorOn = !s.KursorOn;
    cmd().check("mnuCur", s.KursorOn);
    cmd().button(83).down = s.KursorOn;
    cmd().touch();
    Kursor();
}

// ---- Mouse routing (form coordinates) ---------------------------------------------------------

void OscopeView::mousePress(int button, int x, int y) {
    const int h = handleAt(x, y);
    if (h >= 0) {
        lblK_MouseDown(h, button, x, y);
        return;
    }
    if (graphRect.contains(x, y))
        picGraph_MouseDown(button, x - graphRect.left(), y - graphRect.top());
}

void OscopeView::mouseMove(int buttons, int x, int y) {
    if (DragMode != 0) {
        Form_MouseMove(buttons, x, y);
        return;
    }
    picGraph_MouseMove(buttons, x - graphRect.left(), y - graphRect.top());
}

void OscopeView::mouseRelease(int button, int x, int y) {
    if (DragMode != 0) {
        Form_MouseUp(button, x, y);
        return;
    }
    picGraph_MouseUp(button, x - graphRect.left(), y - graphRect.top());
}

// ---- The window as one image ------------------------------------------------------------------

QImage OscopeView::renderWindow() const {
    const ProgramState& s = st();
    QImage img(std::max(formWidth, 1), std::max(formHeight, 1), QImage::Format_RGB32);
    img.fill(kFormBackColor);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setFont(labelFont());
    const QColor kursor(colorFromIni(s.KursorColor));
    const QColor back(colorFromIni(s.Time_BackColor));
    const QPoint g = graphRect.topLeft();

    p.drawImage(g, picGraph_.image());
    p.drawImage(picTextRect.topLeft(), picText_.image());

    auto label = [&](const Label& l, const QColor& c) { paintLabel(p, l, c); };
    const QColor ink(Qt::black);
    for (const auto& l : lbly)
        label(l, ink);
    for (const auto& l : lblX)
        label(l, ink);
    label(Label1, ink);
    for (const auto& l : An)
        label(l, ink);
    p.setPen(ink);
    for (const auto& t : lnLV)
        if (t.visible) p.drawLine(t.x, t.y1, t.x, t.y2);

    paintScrollBar(p, HS);

    // Overlays on the graph.
    p.setClipRect(graphRect);
    for (size_t i = 0; i < 2; ++i) {
        if (picKVisible[i])
            p.fillRect(QRect(g.x() + picKLeft[i], g.y(), kKursorWidth, graphRect.height()), kursor);
        if (lnKGVisible[i]) {
            p.setPen(kursor);
            p.drawLine(lnKG[i].translated(g));
        }
    }
    if (lnPec_V || lnPec_G) {
        p.setPen(kursor);
        if (lnPec_V) p.drawLine(g.x() + pointerX, g.y(), g.x() + pointerX, graphRect.bottom());
        if (lnPec_G) p.drawLine(g.x(), g.y() + pointerY, graphRect.right(), g.y() + pointerY);
    }
    if (shZoomVisible) {
        p.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        p.fillRect(shZoom.translated(g), Qt::white);
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    if (dragFrameVisible) {
        p.setPen(QPen(kursor, 2));
        p.drawRect(dragFrame.translated(g));
    }
    for (const auto& l : lblMarker1) {
        if (!l.visible || l.text.empty()) continue;
        p.fillRect(QRect(l.left, l.top, l.width, l.height), back);
        label(l, kursor);
    }
    p.setClipping(false);
    for (const auto& l : {lblMyTm, lbldB})
        label(l, ink);
    for (size_t i = 0; i < 2; ++i) {
        const Label& h = lblK[i];
        if (!h.visible) continue;
        p.fillRect(QRect(h.left, h.top, h.width, h.height), kursor);
        p.setPen(back);
        p.drawText(QRect(h.left, h.top, h.width, h.height), Qt::AlignCenter,
                   QString::fromStdString(h.text));
    }
    if (imgZoomVisible) {
        p.setPen(ink);
        p.drawText(QPoint(graphRect.right() - 12, g.y() - 4),
                   imgZoomPicture.find("plus") != std::string::npos ? "+" : "-");
    }
    return img;
}

} // namespace kv::oscope
