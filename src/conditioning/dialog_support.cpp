// Messages and redraws of the conditioning dialogs.
#include "conditioning/dialog_support.h"

#include "engine/spectrum.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "state/workbench.h"

#include <cmath>

namespace kv {

void conditioningMessage(Workbench& wb, const char* text, MsgIcon icon) {
    wb.host.message(text, kMessageTitle, icon);
}

void rebuildViews(Workbench& wb, bool withOscope) {
    ProgramState& st = wb.st;
    if (st.TempPath.empty()) return;
    FyllSpData(st);
    if (st.SpectrumOpen) wb.views.redrawView(wb, ViewId::Spectrum);
    if (withOscope && st.OscOpen) wb.views.redrawView(wb, ViewId::Oscope);
}

void plotWholeCurve(Workbench& wb) {
    ProgramState& st = wb.st;
    const double range = Fix(double(st.FloorDbRel)) * -1 + 1;
    // A floor that is no number leaves the range as it was.
    if (std::isfinite(range)) st.PlotRange = toInt32(range);
    if (st.SpectrumOpen) {
        wb.views.redrawView(wb, ViewId::Spectrum);
        if (st.AnalysOnFFT) wb.views.viewCommand(wb, ViewId::Spectrum, "UpdateAn");
    }
}

void referencesOff(Workbench& wb) {
    ProgramState& st = wb.st;
    if (!st.RefShown && !st.RefOn1 && !st.RefOn2) return;
    st.RefShown = st.RefOn1 = st.RefOn2 = false;
    if (st.SpectrumOpen) wb.views.redrawView(wb, ViewId::Spectrum);
}

void refreshOscopeScale(Workbench& wb) {
    if (wb.st.OscOpen) wb.views.viewCommand(wb, ViewId::Oscope, "refreshScale");
    if (wb.st.RadargramOpen) wb.views.redrawView(wb, ViewId::Radargram);
}

} // namespace kv
