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
    const int h = std::min(int(GraphHeight_), picGraph_.height());
    for (int y = 0; y < h; ++y) {
        if ((picGraph_.pixel(KursorColumn_, y) | 0xFF000000u) == trace) {
            KursorRow_ = y;
            return;
        }
    }
    // Nothing of the trace's colour in this column: the previous row stands.
}

void OscopeView::placeKursorHandles() {
    for (size_t i = 0; i < 2; ++i) {
        lblK_[i].left = picKLeft_[i] + graphRect_.left() - 6;
        lblK_[i].top = graphRect_.top() - lblK_[i].height;
    }
}

void OscopeView::layoutMarkers() {
    // Right aligned ten pixels inside the graph, stacked five pixels apart from the top.
    int top = graphRect_.top() + 5;
    for (auto& l : lblMarker1_) {
        l.left = graphRect_.right() + 1 - 10 - l.width;
        l.top = top;
        top += l.height + 5;
    }
}

// ---- Cursors ----------------------------------------------------------------------------------

void OscopeView::Kursor() {
    if (!KursorOn_) {
        picKVisible_ = {};
        lnKGVisible_ = {};
        for (auto& l : lblK_)
            l.visible = false;
        for (auto& l : lblMarker1_)
            l.visible = false;
        cmd().button(83).down = false;
        cmd().touch();
        return;
    }
    // The bars start almost at the left edge, a quarter and a half of a bar's width in.
    picKLeft_[0] = rnd(kKursorWidth / 4.0);
    picKLeft_[1] = rnd(kKursorWidth / 2.0);
    for (size_t i = 0; i < 2; ++i) {
        picKVisible_[i] = true;
        lblMarker1_[i].visible = true;
        lblK_[i].visible = true;
    }
    placeKursorHandles();
    for (int16_t i = 0; i < 2; ++i) {
        KursorX_ = float(picKLeft_[size_t(i)]);
        KursorColumn_ = rnd(KursorX_);
        KursorIndex_ = i;
        scanKursorColumn();
        lnKG_[size_t(i)] = QLine(rnd(KursorX_ - 8.0), KursorRow_, rnd(KursorX_ + 8.0), KursorRow_);
        lnKGVisible_[size_t(i)] = true;
        KursorMeasure();
    }
    lblMarker1_[2].visible = true;
    layoutMarkers();
}

void OscopeView::KursorMeasure() {
    TimePerPixel_ = TimeSpan_ / GraphWidth_;
    KursorTime_ = f32(double(TimePerPixel_) * KursorColumn_ + ViewStartTime_);
    measureKursor();
}

void OscopeView::measureKursor() {
    const size_t i = size_t(KursorIndex_);
    AmpPerPixel_ = f32(double(DivValue_) / (HorizontalLines_[1] - HorizontalLines_[0]));
    KursorAmp_ = amplitudeAtRow(KursorRow_, ZeroLine_);
    lblKAmp_[i] = amplitudeText(KursorAmp_, st().ShowVertical == 2);
    lblYk_[i] = shortestText(KursorTime_);
    KurTime_[i] = formatPicture(KursorTime_, "0.00");
    markerLine(i);
    writeRateLine(false);
    layoutMarkers();
}

void OscopeView::markerLine(size_t i) {
    setText(lblMarker1_[i], "V" + std::to_string(i + 1) + " = " + lblKAmp_[i] + " " +
                                lblText_.text + " ; " + "t" + std::to_string(i + 1) + " = " +
                                KurTime_[i] + " " + TimeUnit_);
}

void OscopeView::writeRateLine(bool refreshStyle) {
    // dt runs from cursor 2 to cursor 1 and dV from cursor 1 to cursor 2.
    const double dt = throughPicture(Val(KurTime_[0]) - Val(KurTime_[1]), "0.00");
    const double dV = throughPicture(Val(lblKAmp_[1]) - Val(lblKAmp_[0]), "0.00");
    const RateReadout r = rateReadout(dV, dt, TimeExponent_, lblText_.text, refreshStyle);
    setText(lblMarker1_[2], "dV =  " + shortestText(dV) + " " + lblText_.text + " ; " +
                                "dt = " + shortestText(dt) + " " + TimeUnit_ + " ; " +
                                "dV/dt =" + shortestText(r.number) + " " + r.unit);
}

void OscopeView::ReloadKursor() {
    for (auto& l : lblMarker1_)
        setText(l, "");
    GraphWidth_ = float(graphRect_.width());
    for (int16_t i = 0; i < 2; ++i) {
        const size_t k = size_t(i);
        const float time = f32(Val(lblYk_[k]));
        TimePerPixel_ = TimeSpan_ / GraphWidth_;
        KursorX_ = time / TimePerPixel_;
        bool moved = false;
        if (Fix(KursorX_) < 0 || Fix(KursorX_) >= GraphWidth_) {
            KursorX_ = i == 0 ? GraphWidth_ / 3 : GraphWidth_ / 2;
            moved = true;
        }
        picKLeft_[k] = int(Fix(KursorX_));
        KursorColumn_ = picKLeft_[k];
        KursorIndex_ = i;
        // The cursor keeps its time; one that had to be brought back into view takes the time
        // of its new column.
        KursorTime_ = moved ? f32(double(TimePerPixel_) * KursorColumn_ + ViewStartTime_) : time;
        scanKursorColumn();
        lnKG_[k] = QLine(rnd(KursorX_ - 8.0), KursorRow_, rnd(KursorX_ + 8.0), KursorRow_);
        measureKursor();
    }
    placeKursorHandles();
}

void OscopeView::KursorRefresh() {
    for (auto& l : lblMarker1_)
        setText(l, "");
    AmpPerPixel_ = f32(double(DivValue_) / (HorizontalLines_[1] - HorizontalLines_[0]));
    const float centre = GraphHeight_ / 2;
    for (int16_t i = 0; i < 2; ++i) {
        const size_t k = size_t(i);
        KursorIndex_ = i;
        KursorColumn_ = picKLeft_[k];
        KursorX_ = float(KursorColumn_);
        scanKursorColumn();
        lnKG_[k] = QLine(rnd(KursorX_ - 8.0), KursorRow_, rnd(KursorX_ + 8.0), KursorRow_);
        // The time from the left edge of the picture, without the zoom's start time.
        KursorTime_ = f32(double(TimeSpan_) / GraphWidth_ * KursorColumn_);
        KursorAmp_ = amplitudeAtRow(KursorRow_, centre);
        KurTime_[k] = formatPicture(KursorTime_, "0.00");
        lblKAmp_[k] = formatPicture(KursorAmp_, "0.00");
        markerLine(k);
    }
    writeRateLine(true);
    layoutMarkers();
}

// ---- Dragging a cursor by its handle --------------------------------------------------------

int OscopeView::handleAt(int x, int y) const {
    // The second handle lies over the first where they overlap.
    for (int i = 1; i >= 0; --i) {
        const Label& h = lblK_[size_t(i)];
        if (h.visible && x >= h.left && x < h.right() && y >= h.top && y < h.bottom()) return i;
    }
    return -1;
}

void OscopeView::lblK_MouseDown(int index, int button, int x, int y) {
    if (button != LeftButton || index < 0 || index > 1) return;
    KursorIndex_ = int16_t(index);
    DraggingKursor_ = true;
    DraggingText_ = false;
    DragMode_ = 1;
    dragStart_ = QPoint(x, y);
    // The frame stands two pixels right of the bar it carries, in graph pixels.
    dragFrame_ = QRect(picKLeft_[size_t(index)] + 2, 0, kHandleWidth, int(GraphHeight_));
    dragFrameVisible_ = true;
}

void OscopeView::Form_MouseMove(int buttons, int x, int) {
    if (DragMode_ == 0 || !(buttons & LeftButton)) return;
    const int left = picKLeft_[size_t(KursorIndex_)] + 2 + (x - dragStart_.x());
    // The frame stays over the graph.
    dragFrame_.moveLeft(std::clamp(left, 2, std::max(2, int(GraphWidth_) + 1)));
}

void OscopeView::Form_MouseUp(int, int, int) {
    if (DragMode_ == 0) return;
    dragFrameVisible_ = false;
    DragMode_ = 0;
    if (!DraggingKursor_) return;
    DraggingKursor_ = false;
    const size_t i = size_t(KursorIndex_);
    KursorColumn_ = dragFrame_.left() - 2;
    KursorX_ = float(KursorColumn_);
    picKLeft_[i] = KursorColumn_;
    scanKursorColumn();
    KursorMeasure();
    lnKG_[i] = QLine(KursorColumn_ - 8, KursorRow_, KursorColumn_ + 8, KursorRow_);
    placeKursorHandles();
}

// ---- Maximum, minimum, peak to peak -----------------------------------------------------------

void OscopeView::MaxMin() {
    const ProgramState& s = st();
    // The whole trace, whatever the zoom shows, without its first four and last three samples.
    // The maximum starts at 0, so a trace below zero throughout reports 0.
    const int32_t last = std::min<int32_t>(s.Sp_Samples - 4, int32_t(s.TraceBuf.size()) - 1);
    MaxAmp_ = 0.0f;
    for (int32_t i = 4; i <= last; ++i) {
        if (s.TraceBuf[size_t(i)] > MaxAmp_) {
            MaxAmp_ = s.TraceBuf[size_t(i)];
            MaxPos_ = i;
        }
    }
    MinAmp_ = MaxAmp_;
    for (int32_t i = 4; i <= last; ++i) {
        if (s.TraceBuf[size_t(i)] < MinAmp_) {
            MinAmp_ = s.TraceBuf[size_t(i)];
            MinPos_ = i;
        }
    }
}

void OscopeView::ProzessingAmp() {
    if (ShowPeakPeak_)
        PeakPeak_ = f32(double(f32(MaxAmp_ * AmpFactor_)) - f32(MinAmp_ * AmpFactor_));
    const std::string unit = " " + lblText_.text;
    if (ShowMaxAmp_) {
        setText(An_[0], "Max.Amp: " + formatPicture(f32(AmpFactor_ * MaxAmp_), "0.##") + unit);
        anSwitch_[0] = true;
        UpdateAnalys();
    }
    if (ShowMinAmp_) {
        setText(An_[1], "Min.Amp: " + formatPicture(f32(AmpFactor_ * MinAmp_), "0.##") + unit);
        anSwitch_[1] = true;
        UpdateAnalys();
    }
    if (ShowPeakPeak_) {
        setText(An_[2], "Peak_Peak: " + formatPicture(PeakPeak_, "0.##") + unit);
        anSwitch_[2] = true;
        UpdateAnalys();
    }
}

void OscopeView::UpdateAnalys() {
    anSwitch_[0] = ShowMaxAmp_;
    anSwitch_[1] = ShowMinAmp_;
    anSwitch_[2] = ShowPeakPeak_;
    int x = graphRect_.left();
    bool any = false;
    for (size_t n = 0; n < An_.size(); ++n) {
        An_[n].visible = anSwitch_[n];
        if (!An_[n].visible) continue;
        any = true;
        An_[n].left = x;
        An_[n].top = graphRect_.top() - 5 - An_[n].height;
        x += An_[n].width + 10;
    }
    if (!any) AnalysOn_ = false;
}

void OscopeView::toggleReadout(const char* menu, bool& flag, int button) {
    CommandState& c = cmd();
    const bool on = !c.checked(menu);
    c.check(menu, on);
    c.button(button).down = on;
    flag = on;
    if (on) {
        AnalysOn_ = true;
        // The figures of the trace on show, not of the last draw with read-outs on.
        MaxMin();
        ProzessingAmp();
    } else {
        ProzessingAmp();
        UpdateAnalys();
    }
    c.touch();
}

void OscopeView::mnuMxA() {
    toggleReadout("mnuMxA", ShowMaxAmp_, 74);
}

void OscopeView::mnuMa() {
    toggleReadout("mnuMa", ShowMinAmp_, 75);
}

void OscopeView::mnuPP() {
    toggleReadout("mnuPP", ShowPeakPeak_, 76);
}

void OscopeView::leaveMeasurementModes() {
    ShowMaxAmp_ = ShowMinAmp_ = ShowPeakPeak_ = false;
    for (int b : {74, 75, 76})
        cmd().button(b).down = false;
    for (const char* m : {"mnuMxA", "mnuMa", "mnuPP"})
        cmd().check(m, false);
    UpdateAnalys();
    cmd().touch();
}

void OscopeView::mnuCur() {
    KursorOn_ = !KursorOn_;
    cmd().check("mnuCur", KursorOn_);
    cmd().button(83).down = KursorOn_;
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
    if (graphRect_.contains(x, y))
        picGraph_MouseDown(button, x - graphRect_.left(), y - graphRect_.top());
}

void OscopeView::mouseMove(int buttons, int x, int y) {
    if (DragMode_ != 0) {
        Form_MouseMove(buttons, x, y);
        return;
    }
    picGraph_MouseMove(buttons, x - graphRect_.left(), y - graphRect_.top());
}

void OscopeView::mouseRelease(int button, int x, int y) {
    if (DragMode_ != 0) {
        Form_MouseUp(button, x, y);
        return;
    }
    picGraph_MouseUp(button, x - graphRect_.left(), y - graphRect_.top());
}

// ---- The window as one image ------------------------------------------------------------------

std::vector<Label> OscopeView::visibleLabels() const {
    std::vector<Label> all;
    addShownOnForm(all, lbly_);
    addShownOnForm(all, lblX_);
    addShownOnForm(all, std::array{Label1_});
    addShown(all, std::array{lblMyTm_, lbldB_});
    addShown(all, An_);
    addShown(all, lblK_);
    addShown(all, lblMarker1_);
    all.push_back(onBackground(rotatedLabel(txtText_, picTextRect_.center().x() + 1,
                                            picTextRect_.top() + picTextRect_.height() / 2, 13,
                                            QStringLiteral("Arial")),
                               kFormBackColor));
    return all;
}

QSize OscopeView::minimumSize() const {
    // The time per division centred under the graph; the read-outs side by side over it, free
    // to run on into the right margin; the amplitude caption turned up beside the graph.
    int row = 0;
    for (const Label& l : An_)
        if (l.visible) row += l.width + 10;
    const Label caption = rotatedLabel(txtText_, 0, 0, 13, QStringLiteral("Arial"));
    const int width = std::max({kMinFormWidth, kWidthMargin + Label1_.width + 2, kGraphLeft + row});
    // Nine amplitude labels, a grid row apart.
    const int labelsHeight = 8 * (lbly_[0].height + 1);
    return {width, std::max({kMinFormHeight, kHeightMargin + caption.height + 4,
                             kHeightMargin + labelsHeight})};
}

QImage OscopeView::picture() const {
    const ProgramState& s = st();
    QImage img(std::max(formWidth_, 1), std::max(formHeight_, 1), QImage::Format_RGB32);
    img.fill(kFormBackColor);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setFont(labelFont());
    const QColor kursor(colorFromIni(KursorColor_));
    const QColor back(colorFromIni(s.Time_BackColor));
    const QPoint g = graphRect_.topLeft();

    p.drawImage(g, picGraph_.image());
    p.drawImage(picTextRect_.topLeft(), picText_.image());

    auto label = [&](const Label& l, const QColor& c) { paintLabel(p, l, c); };
    const QColor ink(Qt::black);
    for (const auto& l : lbly_)
        label(l, ink);
    for (const auto& l : lblX_)
        label(l, ink);
    label(Label1_, ink);
    for (const auto& l : An_)
        label(l, ink);
    p.setPen(ink);
    for (const auto& t : lnLV_)
        if (t.visible) p.drawLine(t.x, t.y1, t.x, t.y2);

    paintScrollBar(p, HS_);

    // Overlays on the graph.
    p.setClipRect(graphRect_);
    for (size_t i = 0; i < 2; ++i) {
        if (picKVisible_[i])
            p.fillRect(QRect(g.x() + picKLeft_[i], g.y(), kKursorWidth, graphRect_.height()),
                       kursor);
        if (lnKGVisible_[i]) {
            p.setPen(kursor);
            p.drawLine(lnKG_[i].translated(g));
        }
    }
    if (lnPec_V_ || lnPec_G_) {
        p.setPen(kursor);
        if (lnPec_V_) p.drawLine(g.x() + pointerX_, g.y(), g.x() + pointerX_, graphRect_.bottom());
        if (lnPec_G_) p.drawLine(g.x(), g.y() + pointerY_, graphRect_.right(), g.y() + pointerY_);
    }
    if (shZoomVisible_) {
        p.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        p.fillRect(shZoom_.translated(g), Qt::white);
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    if (dragFrameVisible_) {
        p.setPen(QPen(kursor, 2));
        p.drawRect(dragFrame_.translated(g));
    }
    for (const auto& l : lblMarker1_) {
        if (!l.visible || l.text.empty()) continue;
        p.fillRect(QRect(l.left, l.top, l.width, l.height), back);
        label(l, kursor);
    }
    p.setClipping(false);
    for (const auto& l : {lblMyTm_, lbldB_})
        label(l, ink);
    for (size_t i = 0; i < 2; ++i) {
        const Label& h = lblK_[i];
        if (!h.visible) continue;
        p.fillRect(QRect(h.left, h.top, h.width, h.height), kursor);
        p.setPen(back);
        p.drawText(QRect(h.left, h.top, h.width, h.height), Qt::AlignCenter,
                   QString::fromStdString(h.text));
    }
    if (imgZoomVisible_) {
        p.setPen(ink);
        p.drawText(QPoint(graphRect_.right() - 12, g.y() - 4),
                   imgZoomPicture_.find("plus") != std::string::npos ? "+" : "-");
    }
    return img;
}

} // namespace kv::oscope
