// The GPR read-out and the FFT filter dialogs.
#include "conditioning/filter_dialogs.h"

#include "conditioning/dialog_input.h"
#include "conditioning/dialog_support.h"
#include "conditioning/fft_filter.h"
#include "engine/spectrum.h"
#include "platform/numeric.h"
#include "state/workbench.h"

namespace kv {

namespace {

constexpr int kFilterButton = 48;

void releaseCommand(Workbench& wb) {
    wb.cmd.check("mnuBCF", false);
    wb.cmd.button(kFilterButton).down = false;
    wb.cmd.touch();
}

} // namespace

void dlgFilterSel::Form_Load(Workbench& wb, FilterSelFields& f) {
    const double high = wb.st.GprHighHz, low = wb.st.GprLowHz;
    const BandFigure lp = bandFigure(high * 0.1 + high);
    const BandFigure hp = bandFigure(low - low * 0.1);
    const BandFigure fc = bandFigure((high - low) / 2 + low);
    f.lblLP += " " + lp.number + "   " + lp.unit;
    f.lblHP += " " + hp.number + "   " + hp.unit;
    f.lblFc += "  " + fc.number + "  " + fc.unit;
}

void mnuGPR_Click(Workbench& wb) {
    wb.st.GprHighHz = 0;
    GPRFilter(wb.st);
    // The band measured is marked on the spectrum too, trace after trace, until the data set
    // closes: two crosses where the curve falls to the "dB bandwith" level.
    wb.st.GprFilterOn = true;
    wb.cmd.check("mnuGPR");
    wb.cmd.touch();
    wb.views.showDialog(wb, "dlgFilterSel", true);
}

void fftFilterOff(Workbench& wb) {
    wb.st.FftFilterOn = false;
    releaseCommand(wb);
    wb.views.closeDialog(wb, "dlgBoxFilter");
}

void mnuBCF_Click(Workbench& wb) {
    if (!wb.cmd.checked("mnuBCF")) {
        wb.views.showDialog(wb, "dlgBoxFilter", false);
        wb.cmd.button(kFilterButton).down = true;
        wb.cmd.check("mnuBCF");
        wb.cmd.touch();
        return;
    }
    wb.st.FftFilterOn = false;
    rebuildViews(wb, true);
    releaseCommand(wb);
    wb.views.closeDialog(wb, "dlgBoxFilter");
}

void dlgBoxFilter::Form_Load(Workbench& wb, BoxFilterFields& f) {
    f.Combo1 = f.Combo2 = axisUnitIndex(wb.st);
    f.applied = false;
}

void dlgBoxFilter::Combo1_Click(BoxFilterFields& f) {
    f.Combo2 = f.Combo1;
}

bool dlgBoxFilter::Command1_Click(Workbench& wb, BoxFilterFields& f) {
    ProgramState& st = wb.st;
    if (!isNumeric(f.txtHP)) {
        conditioningMessage(wb, "Enter value for HP", MsgIcon::Critical);
        return false;
    }
    if (!isNumeric(f.txtLp)) {
        conditioningMessage(wb, "Enter value for LP", MsgIcon::Critical);
        return false;
    }
    f.applied = true;
    const float h = f32(Val(f.txtHP));
    const double l = Val(f.txtLp);
    // Each corner in the unit of its own list.
    const double hpHz = h > 0 ? double(h) * unitFactor(f.Combo1) : 0.0;
    if (!setBoxFilterBand(st, hpHz, l * unitFactor(f.Combo2))) return false;
    if (st.ModeFFT == 3) resetPeakHold(st);
    st.FftFilterOn = true;
    rebuildViews(wb, true);
    referencesOff(wb);
    plotWholeCurve(wb);
    return true;
}

bool dlgBoxFilter::OKButton_Click(Workbench& wb, BoxFilterFields& f) {
    if (f.applied) return false;
    Command1_Click(wb, f);
    return !f.applied;
}

void dlgBoxFilter::CancelButton_Click(Workbench& wb, BoxFilterFields& f) {
    wb.st.FftFilterOn = false;
    rebuildViews(wb, true);
    releaseCommand(wb);
    f.applied = false;
}

void dlgBoxFilter::Form_Unload(Workbench& wb, BoxFilterFields& f) {
    if (!f.applied) releaseCommand(wb);
}

} // namespace kv
