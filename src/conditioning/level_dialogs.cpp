// Level, gain, autotune, autoscale and the vertical scale.
#include "conditioning/level_dialogs.h"

#include "conditioning/dialog_input.h"
#include "conditioning/dialog_support.h"
#include "conditioning/white_dialog.h"
#include "platform/numeric.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <algorithm>
#include <cmath>

namespace kv {

namespace {

constexpr int kAutoscaleButton = 31, kAutotuneButton = 32, kSpanButton = 33, kLevelButton = 54;

/// The level at the top of the plot, as the level line is placed.
double topLevel(const ProgramState& st) {
    return st.dBFS_On ? double(st.Offset_Log) : 0.0;
}

void redrawSpectrum(Workbench& wb) {
    if (wb.st.SpectrumOpen) wb.views.redrawView(wb, ViewId::Spectrum);
}

void levelOff(Workbench& wb) {
    wb.st.LevelOn = false;
    wb.cmd.check("mnuLevel", false);
    wb.cmd.button(kLevelButton).down = false;
    wb.cmd.touch();
    redrawSpectrum(wb);
}

void autotuneOff(Workbench& wb) {
    ProgramState& st = wb.st;
    st.AutotuneOn = false;
    st.SpanActive = false;
    for (const char* m : {"mnuAutotune", "mnuSpan"})
        wb.cmd.check(m, false);
    wb.cmd.button(kAutotuneButton).down = wb.cmd.button(kSpanButton).down = false;
    wb.cmd.touch();
    rebuildViews(wb, false);
}

bool voltScale(const ProgramState& st) {
    return st.ShowVertical == 1;
}

} // namespace

// ---- Level ----------------------------------------------------------------------------------

double lowestLevel(const Workbench& wb) {
    return topLevel(wb.st) - wb.st.PlotRange;
}

void dlgdB::Form_Load(Workbench& wb, LevelFields& f) {
    f.lblMin = shortestText(lowestLevel(wb));
    f.Text1 = shortestText(wb.st.LevelValue);
}

bool dlgdB::Command1_Click(Workbench& wb, LevelFields& f) {
    ProgramState& st = wb.st;
    if (f.Text1.empty()) return false;
    const double value = Val(f.Text1);
    const double shown = topLevel(st) - value;
    if (!(shown >= 0 && value > lowestLevel(wb))) {
        conditioningMessage(wb, "Out of range!", MsgIcon::Critical);
        return false;
    }
    st.LevelValue = value;
    st.LevelShown = f32(shown);
    st.LevelOn = true;
    wb.cmd.button(kLevelButton).down = true;
    redrawSpectrum(wb);
    return true;
}

bool dlgdB::OKButton_Click(Workbench& wb, LevelFields& f) {
    if (f.Text1.empty()) return false;
    if (!Command1_Click(wb, f)) return true;
    wb.cmd.check("mnuLevel");
    wb.cmd.touch();
    return false;
}

void dlgdB::CancelButton_Click(Workbench& wb, LevelFields&) {
    levelOff(wb);
}

void mnuLevel_Click(Workbench& wb) {
    if (wb.st.YLinear) {
        wb.cmd.button(kLevelButton).down = wb.st.LevelOn;
        conditioningMessage(wb, "This function can't be use for Linear Y scale",
                            MsgIcon::Exclamation);
        return;
    }
    if (wb.cmd.checked("mnuLevel")) {
        levelOff(wb);
        wb.views.closeDialog(wb, "dlgdB");
        return;
    }
    wb.cmd.button(kLevelButton).down = true;
    wb.cmd.touch();
    wb.views.showDialog(wb, "dlgdB", false);
}

// ---- Gain -----------------------------------------------------------------------------------

void dlgDoGain::Form_Load(Workbench& wb, GainFields& f) {
    f.txtdb = shortestText(wb.st.GainDb);
}

bool dlgDoGain::Command1_Click(Workbench& wb, GainFields& f) {
    ProgramState& st = wb.st;
    if (!isNumeric(f.txtdb)) {
        conditioningMessage(wb, "Enter value for Gain", MsgIcon::Critical);
        return false;
    }
    const double db = std::clamp(Val(f.txtdb), -kMaxGainDb, kMaxGainDb);
    st.GainFactor = std::pow(10.0, db / 20.0);
    st.GainOn = true;
    st.GainDb = db;
    rebuildViews(wb, false);
    refreshOscopeScale(wb);
    return true;
}

bool dlgDoGain::OKButton_Click(Workbench& wb, GainFields& f) {
    return !Command1_Click(wb, f);
}

void dlgDoGain::CancelButton_Click(Workbench& wb, GainFields&) {
    wb.st.GainOn = false;
    wb.st.GainDb = 0;
    wb.st.GainFactor = 1;
    rebuildViews(wb, false);
    refreshOscopeScale(wb);
}

void mnuGain_Click(Workbench& wb) {
    wb.views.showDialog(wb, "dlgDoGain", false);
}

// ---- Autotune -------------------------------------------------------------------------------

void dlgAutotune::Form_Load(Workbench& wb, AutotuneFields& f) {
    f.cmbL = std::to_string(wb.st.AutotuneLevel);
}

void dlgAutotune::Command1_Click(Workbench& wb, AutotuneFields& f) {
    ProgramState& st = wb.st;
    st.AutotuneLevel = toInt16(Val(f.cmbL));
    st.AutotuneOn = true;
    st.SpanActive = true;
    whiteningOff(wb);
    for (const char* m : {"mnuAutotune", "mnuSpan"})
        wb.cmd.check(m);
    wb.cmd.button(kAutotuneButton).down = wb.cmd.button(kSpanButton).down = true;
    wb.cmd.touch();
    rebuildViews(wb, false);
}

bool dlgAutotune::OKButton_Click(Workbench& wb, AutotuneFields& f) {
    Command1_Click(wb, f);
    return false;
}

void dlgAutotune::CancelButton_Click(Workbench& wb, AutotuneFields&) {
    autotuneOff(wb);
}

void mnuAutotune_Click(Workbench& wb) {
    if (wb.cmd.checked("mnuAutotune")) {
        autotuneOff(wb);
        wb.views.closeDialog(wb, "dlgAutotune");
        return;
    }
    wb.cmd.button(kAutotuneButton).down = true;
    wb.cmd.touch();
    wb.views.showDialog(wb, "dlgAutotune", false);
}

void mnuAutoscale_Click(Workbench& wb) {
    ProgramState& st = wb.st;
    // The range that takes in the whole curve, from its top to its lowest bin.
    st.AutoRange = f32(-double(st.FloorDbRel));
    if (std::isfinite(st.AutoRange)) st.PlotRange = std::max(toInt32(st.AutoRange), 1);
    wb.cmd.button(kAutoscaleButton).down = false;
    redrawSpectrum(wb);
}

// ---- Vertical scale -------------------------------------------------------------------------

void dlgYscale::Form_Load(Workbench& wb, YscaleFields& f) {
    ProgramState& st = wb.st;
    if (st.IsSht || st.IsCsv) {
        f.txtRefTime = formatPicture(double(st.Reference) / 8, "#0.000");
        st.ShowVertical = 1;
        f.caption = "Volt/Div Scale";
    } else if (st.ShowVertical == 1) {
        f.txtRefTime = shortestText(st.RefDel);
        f.caption = "Volt/Div Scale";
    } else {
        f.txtRefTime = shortestText(float(Int(double(st.ScaleBits) / 4)));
        f.caption = "Bits/Div Scale";
    }
    f.keptScaleBits = st.ScaleBits;
    f.keptScaleVolt = st.ScaleVolt;
    f.keptScaleBitsInt = st.ScaleBitsInt;
    f.applied = false;
}

bool dlgYscale::Command1_Click(Workbench& wb, YscaleFields& f) {
    ProgramState& st = wb.st;
    const double v = isNumeric(f.txtRefTime) ? Val(f.txtRefTime) : 0.0;
    // A scale of nothing, a negative one or one past every float has no graph to draw.
    const double bits = voltScale(st) ? double(st.FullScalePos) * (v * 8) / st.Reference : v * 4;
    if (!(v > 0) || !std::isfinite(f32(bits)) || !(f32(bits) > 0)) {
        conditioningMessage(wb, "Enter value", MsgIcon::Critical);
        return false;
    }
    if (voltScale(st)) {
        st.ScaleVolt = f32(v * 8);
        st.ScaleBits = f32(double(st.FullScalePos) * st.ScaleVolt / st.Reference);
    } else {
        st.ScaleBitsInt = toInt32(v * 4);
        st.ScaleBits = f32(v * 4);
    }
    refreshOscopeScale(wb);
    f.applied = true;
    return true;
}

bool dlgYscale::OKButton_Click(Workbench& wb, YscaleFields& f) {
    if (f.applied) return false;
    return !Command1_Click(wb, f);
}

void dlgYscale::CancelButton_Click(Workbench& wb, YscaleFields& f) {
    ProgramState& st = wb.st;
    if (voltScale(st)) {
        // The volts per division saved in the settings file, not those before the last Apply.
        f.txtRefTime = readSetting(st, "TimeWindow", "RefDel");
        const double volts = Val(f.txtRefTime) * 8;
        if (volts > 0 && st.Reference != 0) {
            st.ScaleVolt = f32(volts);
            st.ScaleBits = f32(double(st.FullScalePos) * st.ScaleVolt / st.Reference);
        }
    } else {
        const double whole = Int(double(st.FullScalePos) / 4);
        f.txtRefTime = shortestText(whole);
        st.ScaleBitsInt = toInt32(whole * 4);
        st.ScaleBits = f32(whole * 4);
    }
    if (st.OscOpen) wb.views.redrawView(wb, ViewId::Oscope);
}

void mnuVertZoom_Click(Workbench& wb) {
    wb.views.showDialog(wb, "dlgYscale", false);
}

} // namespace kv
