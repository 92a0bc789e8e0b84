// The chain from one view's scroll bar to the others.
#include "views/other_views.h"

#include "state/workbench.h"

namespace kv {

void showTraceInOtherViews(Workbench& wb, ViewId self) {
    ProgramState& s = wb.st;
    const bool idle = s.Idle;
    s.Idle = false;
    const ViewId waterfall = s.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
    if (viewFlag(s, waterfall)) wb.views.traceChanged(wb, waterfall);
    for (ViewId v : {ViewId::Spectrum, ViewId::Oscope, ViewId::Phase})
        if (v != self && viewFlag(s, v)) wb.views.traceChanged(wb, v);
    s.Idle = idle;
}

void waterfallFollowsScroll(Workbench& wb, int value) {
    ProgramState& s = wb.st;
    const ViewId waterfall = s.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
    if (!viewFlag(s, waterfall)) return;
    if (value > s.TracePos) s.PlayRew = false;
    if (value < s.TracePos) s.PlayRew = true;
    wb.views.setScrollValue(wb, waterfall, value);
    wb.views.viewCommand(wb, waterfall, "HS_Follow");
}

} // namespace kv
