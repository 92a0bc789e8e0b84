// The whitening dialog.
#include "conditioning/white_dialog.h"

#include "conditioning/dialog_input.h"
#include "conditioning/dialog_support.h"
#include "conditioning/filter_dialogs.h"
#include "conditioning/whitening.h"
#include "engine/spectrum.h"
#include "platform/numeric.h"
#include "state/workbench.h"

namespace kv {

namespace {

constexpr int kWhiteButton = 47;

void releaseCommand(Workbench& wb) {
    wb.cmd.check("mnuWhite", false);
    wb.cmd.button(kWhiteButton).down = false;
    wb.cmd.touch();
}

} // namespace

void whiteningOff(Workbench& wb) {
    wb.st.WhiteningOn = false;
    releaseCommand(wb);
    wb.views.closeDialog(wb, "dlgWhite");
}

void mnuWhite_Click(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    if (!cmd.checked("mnuWhite")) {
        cmd.button(kWhiteButton).down = true;
        cmd.check("mnuWhite");
        wb.views.showDialog(wb, "dlgWhite", false);
        st.AutotuneOn = false;
        cmd.button(32).down = false;
        cmd.check("mnuAutotune", false);
        st.SpanActive = false;
        cmd.button(33).enabled = true;
        cmd.button(33).down = false;
        cmd.check("mnuSpan", false);
        fftFilterOff(wb);
        rebuildViews(wb, false);
        cmd.touch();
        return;
    }
    releaseCommand(wb);
    if (st.ModeFFT == 3) resetPeakHold(st);
    st.WhiteningOn = false;
    rebuildViews(wb, true);
    wb.views.closeDialog(wb, "dlgWhite");
}

void dlgWhite::Form_Load(Workbench& wb, WhiteFields& f) {
    f.Combo1 = f.Combo2 = axisUnitIndex(wb.st);
    f.applied = false;
}

void dlgWhite::Combo1_Click(WhiteFields& f) {
    f.Combo2 = f.Combo1;
}

bool dlgWhite::Command1_Click(Workbench& wb, WhiteFields& f) {
    ProgramState& st = wb.st;
    if (!isNumeric(f.txtHP)) {
        conditioningMessage(wb, "Enter value for Lower Frequency", MsgIcon::Critical);
        return false;
    }
    if (!isNumeric(f.txtLp)) {
        conditioningMessage(wb, "Enter value for Higher Frequency", MsgIcon::Critical);
        return false;
    }
    f.applied = true;
    const float l = f32(Val(f.txtHP));
    const double h = Val(f.txtLp);
    const float keepLow = st.WhiteLowHz, keepHigh = st.WhiteHighHz;
    setWhiteBand(st, l > 0 ? double(l) * unitFactor(f.Combo1) : 0.0, h * unitFactor(f.Combo2));
    if (st.ModeFFT == 3) resetPeakHold(st);

    // The scan holds the workbench for one pass over the file; its progress window repaints and
    // offers Cancel, which leaves everything as it was.
    auto progress = wb.host.progress("Whitening", st.TraceCount);
    const bool done = ScanWhiteBand(st, [&](int32_t t) {
        progress->setValue(t);
        wb.host.yield();
        return !progress->cancelled();
    });
    progress.reset();
    if (!done) {
        st.WhiteLowHz = keepLow;
        st.WhiteHighHz = keepHigh;
        st.WhiteningOn = false;
        f.applied = false;
        rebuildViews(wb, true);
        return false;
    }
    st.WhiteningOn = true;
    rebuildViews(wb, true);
    plotWholeCurve(wb);
    wb.cmd.check("mnuWhite");
    wb.cmd.touch();
    return true;
}

bool dlgWhite::OKButton_Click(Workbench& wb, WhiteFields& f) {
    if (f.applied) return false;
    Command1_Click(wb, f);
    return !f.applied;
}

void dlgWhite::CancelButton_Click(Workbench& wb, WhiteFields& f) {
    wb.st.WhiteningOn = false;
    rebuildViews(wb, true);
    releaseCommand(wb);
    f.applied = false;
}

void dlgWhite::Form_Unload(Workbench& wb, WhiteFields& f) {
    if (!f.applied) releaseCommand(wb);
}

} // namespace kv
