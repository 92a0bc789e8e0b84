// The O-scope's scales: how counts, volts, seconds and pixels relate, where the grid lines and
// the axis labels go and what they say, and the view's load and resize geometry.
#include "platform/numeric.h"
#include "state/command_state.h"
#include "state/workbench.h"
#include "views/oscilloscope/oscope_view.h"

#include <QFontMetrics>
#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace kv::oscope {

namespace {

int rnd(double x) {
    return toInt32(x);
}

std::string floatText(double x) {
    return shortestText(f32(x));
}

const char* const kUnitNames[] = {"s", "ms", "us", "ns", "ps"};
const int16_t kUnitExponents[] = {0, -3, -6, -9, -12};

// The commands of the main menu that serve this view only.
const char* const kViewMenus[] = {"mnuZoomIn", "mnuZoomOut", "mnuNoZoom", "mnuVertZoom",
                                  "mnuFlip",   "mnuMxA",     "mnuMa",     "mnuPP",
                                  "mnuGain",   "mnuCur",     "mnuRefO",   "mnuTO"};

} // namespace

OscopeView::OscopeView(Workbench& wb) : wb_(wb) {
    for (size_t i = 0; i < lblK_.size(); ++i) {
        lblK_[i].width = kHandleWidth;
        lblK_[i].height = kHandleHeight;
        lblK_[i].visible = false;
        lblK_[i].text = std::to_string(i + 1);
    }
    for (auto& l : lblMarker1_)
        l.visible = false;
    for (auto& l : An_)
        l.visible = false;
    for (Label* l : {&lblTime_, &lblAmp_, &lblMyTm_, &lbldB_})
        l->visible = false;
}

ProgramState& OscopeView::st() const {
    return wb_.st;
}

CommandState& OscopeView::cmd() const {
    return wb_.cmd;
}

// ---- Load, resize, unload ------------------------------------------------------------------

void OscopeView::placeGraph(int w, int h) {
    const GraphLayout g = layOutGraph(w, h, kMargins);
    formWidth_ = g.window.width();
    formHeight_ = g.window.height();
    graphRect_ = g.graph;
    HS_.rect = g.scrollBar;
    GraphWidth_ = float(graphRect_.width());
    GraphHeight_ = float(graphRect_.height());
    const int capH = std::min(160, graphRect_.height());
    picTextRect_ = QRect(6, graphRect_.top() + (graphRect_.height() - capH) / 2, 20, capH);
}

void OscopeView::setUnitAndAmpFactor() {
    ProgramState& s = st();
    if (s.ShowVertical == 1) {
        if (!s.IsSht) AmpFactor_ = f32(double(s.ScaleVolt) / 2 / s.ScaleBits);
        txtText_ = "Volt";
        setText(lblText_, "Volt");
    } else if (s.ShowVertical == 2) {
        AmpFactor_ = 1.0f;
        txtText_ = "Bits";
        setText(lblText_, "Bits");
    }
    if (s.IsSht) {
        AmpFactor_ = 1.0f;
        txtText_ = "Volt";
        setText(lblText_, "Volt");
    }
}

void OscopeView::Form_Load(int w, int h) {
    ProgramState& s = st();
    ZoomFirst_ = 0;
    ZoomLast_ = s.Sp_Samples - 1;
    s.ActiveView = 1;
    s.TimeRefOn = false;
    ZoomOn_ = false;
    AnalysOn_ = false;
    s.OscOpen = true;
    ViewSamples_ = s.Sp_Samples;
    s.ScaleVolt = s.Reference;
    Invert();
    setUnitAndAmpFactor();
    placeGraph(w, h);
    picGraph_.resize(graphRect_.width(), graphRect_.height(), colorFromIni(s.Time_BackColor));
    ShowYText();
    GridLines();
    HS_.Min = 0;
    HS_.Max = s.LastTrace;
    if (s.TracePos > HS_.Max) s.TracePos = int16_t(HS_.Max);
    if (s.TracePos < 0) s.TracePos = 0;
    HS_.Value = s.TracePos;
    HS_.Enabled = s.TraceCount != 1;
    CountTime();
    CountAmpl();
    GridLines();
}

void OscopeView::Form_Resize(int w, int h) {
    ProgramState& s = st();
    placeGraph(w, h);
    ZeroLine_ = GraphHeight_ / 2;
    placeKursorHandles();
    ViewSamples_ = ZoomOn_ ? ZoomLast_ - ZoomFirst_ : s.Sp_Samples;
    GridLines();
    HideXLabels();
    HideYLabels();
    AmpPerPixel_ = f32(double(DivValue_) / (HorizontalLines_[1] - HorizontalLines_[0]));
    computeSampleStep();
    HalfHeight_ = GraphHeight_ / 2;
    picGraph_.resize(graphRect_.width(), graphRect_.height(), colorFromIni(s.Time_BackColor));
    ShowYText();
    CountTime();
    TracePoints_.assign(size_t(std::max<int16_t>(PointCapacity_, 0)), QPoint());
    Draw();
    if (KursorOn_) ReloadKursor();
}

void OscopeView::Form_Unload() {
    ProgramState& s = st();
    s.OscOpen = false;
    AnalysOn_ = false;
    // The flip is the one O-scope switch another view reads (the radargram mirrors its colours
    // by it), so it lives in the program state and goes off here.
    s.Flipped = false;
    for (const char* m : kViewMenus)
        cmd().enable(m, false);
    cmd().check("mnuTime", false);
    cmd().check("mnuCur", false);
    cmd().button(83).down = false;
    cmd().touch();
}

void OscopeView::command(const std::string& name) {
    using Command = void (OscopeView::*)();
    static const std::pair<std::string_view, Command> kCommands[] = {
        {"mnuZoomIn", &OscopeView::mnuZoomIn},
        {"mnuZoomOut", &OscopeView::mnuZoomOut},
        {"mnuNoZoom", &OscopeView::mnuNoZoom},
        {"mnuFlip", &OscopeView::mnuFlip},
        {"mnuMxA", &OscopeView::mnuMxA},
        {"mnuMa", &OscopeView::mnuMa},
        {"mnuPP", &OscopeView::mnuPP},
        {"mnuCur", &OscopeView::mnuCur},
        {"leaveMeasurementModes", &OscopeView::leaveMeasurementModes},
        {"refreshScale", &OscopeView::refreshScale},
        {"CreateRef", &OscopeView::CreateRef},
    };
    for (const auto& [n, run] : kCommands)
        if (n == name) (this->*run)();
}

void OscopeView::load(int w, int h) {
    Form_Load(w, h);
    Form_Resize(w, h);
    if (!st().TempPath.empty()) UpdateTime();
}

// ---- Amplitude scale -------------------------------------------------------------------------

void OscopeView::CountAmpl() {
    ProgramState& s = st();
    if (s.IsSht) {
        DivValue_ = s.ShtVoltDiv;
        for (int i = 0; i <= 4; ++i)
            setText(lbly_[size_t(i)], formatPicture(f32((4 - i) * double(DivValue_)), "0.0"));
        for (int i = 4; i <= 8; ++i)
            setText(lbly_[size_t(i)], formatPicture(f32(-(i - 4) * double(DivValue_)), "0.00"));
    }
    if (s.ShowVertical == 1) {
        if (s.IsSht) {
            s.RefDel = DivValue_;
        } else {
            DivValue_ = s.ScaleVolt / 2 / 4;
            for (int i = 0; i <= 4; ++i)
                setText(lbly_[size_t(i)], formatPicture(f32((4 - i) * double(DivValue_)), "0.00"));
            for (int i = 4; i <= 8; ++i)
                setText(lbly_[size_t(i)], formatPicture(f32(-(i - 4) * double(DivValue_)), "0.00"));
            s.RefDel = DivValue_;
        }
    }
    if (s.ShowVertical == 2) {
        // The lower half runs one count further than the upper: a 16-bit range is -32768..32767.
        DivValue_ = s.ScaleBits / 4;
        for (int i = 0; i <= 4; ++i)
            setText(lbly_[size_t(i)], floatText(Fix(f32(s.ScaleBits - i * double(DivValue_)))));
        for (int i = 4; i <= 8; ++i) {
            const int j = i - 4;
            setText(lbly_[size_t(i)], floatText(Fix(f32(-(j * double(DivValue_)) - 1))));
        }
        setText(lbly_[4], "0");
    }
    const double d = lblText_.text == "Bits" ? Fix(DivValue_) : throughPicture(DivValue_, "##.00");
    txtText_ = shortestText(d) + " " + lblText_.text + " " + "/Div";
    ShowYText();
}

void OscopeView::refreshScale() {
    ProgramState& s = st();
    picGraph_.fill(colorFromIni(s.Time_BackColor));
    TracePointCount_ = 1;
    CountAmpl();
    GridLines();
    Draw();
    if (KursorOn_) Kursor();
    placeYLabels();
}

void OscopeView::CountNewAmp() {
    ProgramState& s = st();
    const double v = s.RefDel;
    if (s.ShowVertical == 1) {
        for (int i = 0; i <= 4; ++i)
            setText(lbly_[size_t(i)], formatPicture(f32((4 - i) * v), "0.00"));
        for (int i = 4; i <= 8; ++i)
            setText(lbly_[size_t(i)], formatPicture(f32(-(i - 4) * v), "0.00"));
    } else if (s.ShowVertical == 2) {
        for (int i = 0; i <= 4; ++i)
            setText(lbly_[size_t(i)], floatText(Fix(f32((4 - i) * v))));
        for (int i = 4; i <= 8; ++i)
            setText(lbly_[size_t(i)], floatText(Fix(f32(-(i - 4) * v))));
    }
    placeYLabels();
}

void OscopeView::placeYLabels() {
    for (auto& l : lbly_)
        l.left = graphRect_.left() - 2 - l.width;
}

void OscopeView::ShowYText() {
    picText_.resize(std::max(picTextRect_.width(), 1), std::max(picTextRect_.height(), 1),
                    kFormBackColor);
    picText_.textRotated(picText_.width() / 2, picText_.height() / 2,
                         QString::fromStdString(txtText_), qRgb(0, 0, 0), 13,
                         QStringLiteral("Arial"));
}

// ---- Grid ------------------------------------------------------------------------------------

void OscopeView::GridLines() {
    const float rowStep = GraphHeight_ / 8;
    const float colStep = GraphWidth_ / 10;
    HorizontalLines_ = {};
    for (int i = 0; i <= 6; ++i)
        HorizontalLines_[size_t(i)] = rnd(f32((i + 1) * double(rowStep)));
    for (int i = 0; i <= 8; ++i) {
        Label& l = lbly_[size_t(i)];
        l.left = graphRect_.left() - 2 - l.width;
        l.top = rnd(graphRect_.top() + double(rowStep) * i - l.height / 2.0);
    }
    VerticalLines_ = {};
    for (int i = 0; i <= 9; ++i)
        VerticalLines_[size_t(i)] = rnd(f32((i + 1) * double(colStep)));
    const int tickTop = graphRect_.top() + int(GraphHeight_) + kScrollHeight;
    for (int i = 0; i <= 10; ++i) {
        const int x = rnd(graphRect_.left() + i * double(colStep));
        if (i >= 1 && i <= 9) lnLV_[size_t(i)] = Tick{x, tickTop, tickTop + 10, true};
        Label& l = lblX_[size_t(i)];
        l.left = x - l.width / 2;
        l.top = tickTop + 10 + 2;
    }
    Label1_.top = tickTop + 10 + 2 + lblX_[0].height + 4;
    Label1_.left = graphRect_.left() + (graphRect_.width() - Label1_.width) / 2;
    lblMyTm_.top = lbldB_.top = Label1_.top;
    lblMyTm_.left = graphRect_.right() + 1 - lblMyTm_.width;
    lbldB_.left = lblMyTm_.left - 10 - lbldB_.width;
}

// ---- Time scale -------------------------------------------------------------------------------

TimeUnitChoice chooseTimeUnit(float timePerDiv) {
    TimeUnitChoice c;
    c.timePerDiv = timePerDiv;
    if (timePerDiv < 1.0f) {
        for (int k = 0; k <= 12; k += 3) {
            const float p = f32(std::pow(10.0, k) * timePerDiv);
            if (p >= 1.0f) {
                c.index = k / 3;
                c.timePerDiv = p;
                break;
            }
        }
    }
    return c;
}

void OscopeView::TimeUnitScale() {
    const TimeUnitChoice c = chooseTimeUnit(TimePerDiv_);
    TimePerDiv_ = c.timePerDiv;
    std::string unit;
    // With no unit (a second per division or more, or below a picosecond) the exponent keeps
    // its last value and the labels simply hold seconds.
    if (c.index >= 0) {
        unit = kUnitNames[c.index];
        TimeExponent_ = kUnitExponents[c.index];
    }
    UnitFactor_ = std::pow(10.0, TimeExponent_);
    TimeUnit_ = unit;
    setText(Label1_, unit);
}

void OscopeView::CountTime() {
    ProgramState& s = st();
    const double samples = ZoomOn_ ? double(ZoomLast_ - ZoomFirst_) : double(s.Sp_Samples);
    TimePerDiv_ = f32((1.0 / s.SampleRate) * samples / 10);
    s.ViewTimeSpan = double(TimePerDiv_) * 10;
    TimeUnitScale();
    TimeSpan_ = f32(double(TimePerDiv_) * 10);
    const double r = throughPicture(TimePerDiv_, "0.#");
    setText(Label1_, shortestText(r) + TimeUnit_ + "/" + "div");
    Label1_.left = graphRect_.left() + (graphRect_.width() - Label1_.width) / 2;
    TimeRangeText_ = shortestText(r * 10) + " " + TimeUnit_;
    cmd().timeRangeText = TimeRangeText_; // what the status bar shows while this view is active
    for (int i = 0; i <= 10; ++i)
        setText(lblX_[size_t(i)], formatPicture(f32(i * double(TimePerDiv_)), "0.0"));
}

// ---- Thinning the labels ----------------------------------------------------------------------

void HideXLabels(std::array<Label, 11>& lblX) {
    for (int i = 1; i <= 9; ++i)
        lblX[size_t(i)].visible = true;
    auto hide = [&](int from, int to) {
        for (int i = from; i <= to; ++i)
            lblX[size_t(i)].visible = false;
    };
    auto show = [&](std::initializer_list<int> which) {
        for (int i : which)
            lblX[size_t(i)].visible = true;
    };
    if (lblX[0].right() >= lblX[8].left) {
        hide(0, 9);
    } else if (lblX[4].right() >= lblX[8].left) {
        hide(0, 9);
        show({8});
    } else if (lblX[4].right() >= lblX[6].left) {
        hide(1, 9);
        show({4, 8});
    } else if (lblX[2].right() >= lblX[3].left) {
        hide(0, 9);
        show({2, 4, 6, 8});
    }
}

void HideYLabels(std::array<Label, 9>& lbly) {
    for (int i = 0; i <= 6; ++i)
        lbly[size_t(i)].visible = true;
    auto hide = [&](std::initializer_list<int> which) {
        for (int i : which)
            lbly[size_t(i)].visible = false;
    };
    const int bottom0 = lbly[0].bottom();
    if (bottom0 >= lbly[6].top) {
        hide({0, 1, 2, 3, 4, 5});
    } else if (bottom0 >= lbly[2].top) {
        hide({1, 2, 3, 4, 5, 6});
        lbly[0].visible = lbly[6].visible = true;
    } else if (bottom0 >= lbly[1].top) {
        hide({1, 3, 5});
    }
}

// ---- Contrast colours --------------------------------------------------------------------------

std::string contrastColor(const std::string& backColor) {
    // Not arithmetic: whatever the picture's inversion makes of the background, read back.
    Surface bg(2, 2, colorFromIni(backColor));
    bg.invertRect(0, 0, 2, 2);
    return std::to_string(iniFromColor(bg.pixel(0, 0)));
}

void OscopeView::Invert() {
    KursorColor_ = contrastColor(st().Time_BackColor);
}

void OscopeView::InvertText() {
    TextColor_ = contrastColor(st().Time_BackColor);
}

// ---- Full reset -------------------------------------------------------------------------------

void OscopeView::UpdateTime() {
    ProgramState& s = st();
    GraphWidth_ = float(graphRect_.width());
    ZoomOn_ = false;
    ViewSamples_ = s.Sp_Samples;
    computeSampleStep();
    HalfHeight_ = GraphHeight_ / 2;
    PixelsPerCount_ = HalfHeight_ / s.ScaleBits;
    HS_.Max = s.LastTrace;
    if (s.TracePos > HS_.Max) s.TracePos = int16_t(HS_.Max);
    if (s.TracePos < 0) s.TracePos = 0;
    HS_.Value = s.TracePos;
    // A picture takes a new background colour by being painted in it: what was drawn goes.
    picGraph_.fill(colorFromIni(s.Time_BackColor));
    TracePointCount_ = 1;
    setUnitAndAmpFactor();
    CountAmpl();
    NoZoom();
    setMenuChecks(false, false, true);
    cmd().enable("mnuZoomOut", false);
    GridLines();
    ShowYText();
    Invert();
    CountTime();
    Draw();
    if (KursorOn_) ReloadKursor();
    if (AnalysOn_) ProzessingAmp();
    placeYLabels();
}

} // namespace kv::oscope
