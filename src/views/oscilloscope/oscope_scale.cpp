// The O-scope's scales: how counts, volts, seconds and pixels relate, where the grid lines and
// the axis labels go and what they say, and the view's load and resize geometry.
#include "platform/numeric.h"
#include "state/command_state.h"
#include "state/workbench.h"
#include "views/oscilloscope/oscope_view.h"

#include <QFontMetrics>
#include <algorithm>
#include <cmath>

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
    for (size_t i = 0; i < lblK.size(); ++i) {
        lblK[i].width = kHandleWidth;
        lblK[i].height = kHandleHeight;
        lblK[i].visible = false;
        lblK[i].text = std::to_string(i + 1);
    }
    for (auto& l : lblMarker1)
        l.visible = false;
    for (auto& l : An)
        l.visible = false;
    for (Label* l : {&lblTime, &lblAmp, &lblMyTm, &lbldB})
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
    formWidth = std::max(w, kMinFormWidth);
    formHeight = std::max(h, kMinFormHeight);
    graphRect = QRect(kGraphLeft, kGraphTop, formWidth - kWidthMargin, formHeight - kHeightMargin);
    GraphWidth = float(graphRect.width());
    GraphHeight = float(graphRect.height());
    HS.rect = QRect(graphRect.left(), graphRect.top() + graphRect.height() + 2, graphRect.width(),
                    kScrollHeight);
    const int capH = std::min(160, graphRect.height());
    picTextRect = QRect(6, graphRect.top() + (graphRect.height() - capH) / 2, 20, capH);
}

void OscopeView::setUnitAndAmpFactor() {
    ProgramState& s = st();
    if (s.ShowVertical == 1) {
        if (!s.IsSht) AmpFactor = f32(double(s.ScaleVolt) / 2 / s.ScaleBits);
        txtText = "Volt";
        setText(lblText, "Volt");
    } else if (s.ShowVertical == 2) {
        AmpFactor = 1.0f;
        txtText = "Bits";
        setText(lblText, "Bits");
    }
    if (s.IsSht) {
        AmpFactor = 1.0f;
        txtText = "Volt";
        setText(lblText, "Volt");
    }
}

void OscopeView::Form_Load(int w, int h) {
    ProgramState& s = st();
    ZoomFirst = 0;
    ZoomLast = s.Sp_Samples - 1;
    s.ActiveView = 1;
    s.TimeRefOn = false;
    s.ZoomOn = false;
    s.AnalysOn = false;
    s.OscOpen = true;
    ViewSamples = s.Sp_Samples;
    s.ScaleVolt = s.Reference;
    Invert();
    setUnitAndAmpFactor();
    placeGraph(w, h);
    picGraph_.resize(graphRect.width(), graphRect.height(), colorFromIni(s.Time_BackColor));
    ShowYText();
    GridLines();
    HS.Min = 0;
    HS.Max = s.LastTrace;
    if (s.TracePos > HS.Max) s.TracePos = int16_t(HS.Max);
    if (s.TracePos < 0) s.TracePos = 0;
    HS.Value = s.TracePos;
    HS.Enabled = s.TraceCount != 1;
    CountTime();
    CountAmpl();
    GridLines();
}

void OscopeView::Form_Resize(int w, int h) {
    ProgramState& s = st();
    placeGraph(w, h);
    ZeroLine = GraphHeight / 2;
    placeKursorHandles();
    ViewSamples = s.ZoomOn ? ZoomLast - ZoomFirst : s.Sp_Samples;
    GridLines();
    HideXLabels();
    HideYLabels();
    AmpPerPixel = f32(double(DivValue) / (HorizontalLines[1] - HorizontalLines[0]));
    computeSampleStep();
    HalfHeight = GraphHeight / 2;
    picGraph_.resize(graphRect.width(), graphRect.height(), colorFromIni(s.Time_BackColor));
    ShowYText();
    CountTime();
    TracePoints.assign(size_t(std::max<int16_t>(PointCapacity, 0)), QPoint());
    Draw();
    if (s.KursorOn) ReloadKursor();
}

void OscopeView::Form_Unload() {
    ProgramState& s = st();
    s.OscOpen = false;
    s.AnalysOn = false;
    s.Flipped = false;
    for (const char* m : kViewMenus)
        cmd().enable(m, false);
    cmd().check("mnuTime", false);
    cmd().touch();
}

// ---- Amplitude scale -------------------------------------------------------------------------

void OscopeView::CountAmpl() {
    ProgramState& s = st();
    if (s.IsSht) {
        DivValue = s.ShtVoltDiv;
        for (int i = 0; i <= 4; ++i)
            setText(lbly[size_t(i)], formatPicture(f32((4 - i) * double(DivValue)), "0.0"));
        for (int i = 4; i <= 8; ++i)
            setText(lbly[size_t(i)], formatPicture(f32(-(i - 4) * double(DivValue)), "0.00"));
    }
    if (s.ShowVertical == 1) {
        if (s.IsSht) {
            s.RefDel = DivValue;
        } else {
            DivValue = s.ScaleVolt / 2 / 4;
            for (int i = 0; i <= 4; ++i)
                setText(lbly[size_t(i)], formatPicture(f32((4 - i) * double(DivValue)), "0.00"));
            for (int i = 4; i <= 8; ++i)
                setText(lbly[size_t(i)], formatPicture(f32(-(i - 4) * double(DivValue)), "0.00"));
            s.RefDel = DivValue;
        }
    }
    if (s.ShowVertical == 2) {
        // The lower half runs one count further than the upper: a 16-bit range is -32768..32767.
        DivValue = s.ScaleBits / 4;
        for (int i = 0; i <= 4; ++i)
            setText(lbly[size_t(i)], floatText(Fix(f32(s.ScaleBits - i * double(DivValue)))));
        for (int i = 4; i <= 8; ++i) {
            const int j = i - 4;
            setText(lbly[size_t(i)], floatText(Fix(f32(-(j * double(DivValue)) - 1))));
        }
        setText(lbly[4], "0");
    }
    const double d = lblText.text == "Bits" ? Fix(DivValue) : throughPicture(DivValue, "##.00");
    txtText = shortestText(d) + " " + lblText.text + " " + "/Div";
    ShowYText();
}

void OscopeView::CountNewAmp() {
    ProgramState& s = st();
    const double v = s.RefDel;
    if (s.ShowVertical == 1) {
        for (int i = 0; i <= 4; ++i)
            setText(lbly[size_t(i)], formatPicture(f32((4 - i) * v), "0.00"));
        for (int i = 4; i <= 8; ++i)
            setText(lbly[size_t(i)], formatPicture(f32(-(i - 4) * v), "0.00"));
    } else if (s.ShowVertical == 2) {
        for (int i = 0; i <= 4; ++i)
            setText(lbly[size_t(i)], floatText(Fix(f32((4 - i) * v))));
        for (int i = 4; i <= 8; ++i)
            setText(lbly[size_t(i)], floatText(Fix(f32(-(i - 4) * v))));
    }
    placeYLabels();
}

void OscopeView::placeYLabels() {
    for (auto& l : lbly)
        l.left = graphRect.left() - 2 - l.width;
}

void OscopeView::ShowYText() {
    picText_.resize(std::max(picTextRect.width(), 1), std::max(picTextRect.height(), 1),
                    kFormBackColor);
    picText_.textRotated(picText_.width() / 2, picText_.height() / 2,
                         QString::fromStdString(txtText), qRgb(0, 0, 0), 13,
                         QStringLiteral("Arial"));
}

// ---- Grid ------------------------------------------------------------------------------------

void OscopeView::GridLines() {
    const float rowStep = GraphHeight / 8;
    const float colStep = GraphWidth / 10;
    HorizontalLines = {};
    for (int i = 0; i <= 6; ++i)
        HorizontalLines[size_t(i)] = rnd(f32((i + 1) * double(rowStep)));
    for (int i = 0; i <= 8; ++i) {
        Label& l = lbly[size_t(i)];
        l.left = graphRect.left() - 2 - l.width;
        l.top = rnd(graphRect.top() + double(rowStep) * i - l.height / 2.0);
    }
    VerticalLines = {};
    for (int i = 0; i <= 9; ++i)
        VerticalLines[size_t(i)] = rnd(f32((i + 1) * double(colStep)));
    const int tickTop = graphRect.top() + int(GraphHeight) + kScrollHeight;
    for (int i = 0; i <= 10; ++i) {
        const int x = rnd(graphRect.left() + i * double(colStep));
        if (i >= 1 && i <= 9) lnLV[size_t(i)] = Tick{x, tickTop, tickTop + 10, true};
        Label& l = lblX[size_t(i)];
        l.left = x - l.width / 2;
        l.top = tickTop + 10 + 2;
    }
    Label1.top = tickTop + 10 + 2 + lblX[0].height + 4;
    Label1.left = graphRect.left() + (graphRect.width() - Label1.width) / 2;
    lblMyTm.top = lbldB.top = Label1.top;
    lblMyTm.left = graphRect.right() + 1 - lblMyTm.width;
    lbldB.left = lblMyTm.left - 10 - lbldB.width;
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
    const TimeUnitChoice c = chooseTimeUnit(TimePerDiv);
    TimePerDiv = c.timePerDiv;
    std::string unit;
    // With no unit (a second per division or more, or below a picosecond) the exponent keeps
    // its last value and the labels simply hold seconds.
    if (c.index >= 0) {
        unit = kUnitNames[c.index];
        TimeExponent = kUnitExponents[c.index];
    }
    UnitFactor = std::pow(10.0, TimeExponent);
    TimeUnit = unit;
    setText(Label1, unit);
}

void OscopeView::CountTime() {
    ProgramState& s = st();
    const double samples = s.ZoomOn ? double(ZoomLast - ZoomFirst) : double(s.Sp_Samples);
    TimePerDiv = f32((1.0 / s.SampleRate) * samples / 10);
    s.ViewTimeSpan = double(TimePerDiv) * 10;
    TimeUnitScale();
    TimeSpan = f32(double(TimePerDiv) * 10);
    const double r = throughPicture(TimePerDiv, "0.#");
    setText(Label1, shortestText(r) + TimeUnit + "/" + "div");
    Label1.left = graphRect.left() + (graphRect.width() - Label1.width) / 2;
    s.TimeRangeText = shortestText(r * 10) + " " + TimeUnit;
    cmd().timeRangeText = s.TimeRangeText; // what the status bar shows while this view is active
    for (int i = 0; i <= 10; ++i)
        setText(lblX[size_t(i)], formatPicture(f32(i * double(TimePerDiv)), "0.0"));
}

// ---- Thinning the labels ----------------------------------------------------------------------

void OscopeView::HideXLabels() {
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

void OscopeView::HideYLabels() {
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

namespace {

// The colour that stands out on the background is whatever the platform's inversion makes of
// it, read back from a pixel.
std::string invertedBackColor(const ProgramState& s) {
    Surface bg(2, 2, colorFromIni(s.Time_BackColor));
    bg.invertRect(0, 0, 2, 2);
    return std::to_string(iniFromColor(bg.pixel(0, 0)));
}

} // namespace

void OscopeView::Invert() {
    st().KursorColor = invertedBackColor(st());
}

void OscopeView::InvertText() {
    st().TextColor = invertedBackColor(st());
}

// ---- Full reset -------------------------------------------------------------------------------

void OscopeView::UpdateTime() {
    ProgramState& s = st();
    GraphWidth = float(graphRect.width());
    s.ZoomOn = false;
    ViewSamples = s.Sp_Samples;
    computeSampleStep();
    HalfHeight = GraphHeight / 2;
    PixelsPerCount = HalfHeight / s.ScaleBits;
    HS.Max = s.LastTrace;
    if (s.TracePos > HS.Max) s.TracePos = int16_t(HS.Max);
    if (s.TracePos < 0) s.TracePos = 0;
    HS.Value = s.TracePos;
    // A picture takes a new background colour by being painted in it: what was drawn goes.
    picGraph_.fill(colorFromIni(s.Time_BackColor));
    TracePointCount = 1;
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
    if (s.KursorOn) ReloadKursor();
    if (s.AnalysOn) ProzessingAmp();
    placeYLabels();
}

} // namespace kv::oscope
