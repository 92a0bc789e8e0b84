// The span dialog.
#include "conditioning/span_dialog.h"

#include "conditioning/dialog_input.h"
#include "conditioning/dialog_support.h"
#include "conditioning/filter_dialogs.h"
#include "conditioning/white_dialog.h"
#include "engine/display_map.h"
#include "platform/numeric.h"
#include "state/workbench.h"

#include <string_view>

namespace kv {

namespace {

constexpr int kSpanButton = 33;

/// A typed figure in Hz; nothing when the text is empty or the figure below 0 (non-numeric
/// text reads as 0).
bool readFigure(std::string_view text, int unit, double& hz) {
    if (text.empty()) return false;
    const double v = Val(text);
    if (v < 0) return false;
    hz = v * unitFactor(unit);
    return true;
}

void redrawSpan(Workbench& wb) {
    ProgramState& st = wb.st;
    SamToWidth(st);
    if (st.RefShown) SamToWidth_Ref(st);
    if (st.SpectrumOpen) wb.views.redrawView(wb, ViewId::Spectrum);
}

} // namespace

void ZenterFr::Form_Load(Workbench&, SpanFields& f) {
    f.Combo1 = f.Combo2 = 0;
    f.Applied = false;
}

void ZenterFr::Combo1_Click(SpanFields& f) {
    f.Combo2 = f.Combo1;
}

void ZenterFr::ReadCenter(Workbench& wb, SpanFields& f) {
    double hz = 0;
    if (!readFigure(f.txtCenter, f.Combo1, hz)) {
        f.InputBad = true;
        return;
    }
    wb.st.CenterFreq = hz;
}

void ZenterFr::ReadSpan(Workbench& wb, SpanFields& f) {
    double hz = 0;
    if (!readFigure(f.txtSp, f.Combo2, hz)) {
        f.InputBad = true;
        return;
    }
    wb.st.SpanFreq = f32(hz);
    f.HalfSpan = f32(double(wb.st.SpanFreq) / 2);
}

bool ZenterFr::Command1_Click(Workbench& wb, SpanFields& f) {
    ProgramState& st = wb.st;
    f.InputBad = false;
    ReadCenter(wb, f);
    ReadSpan(wb, f);
    const float low = f32(st.CenterFreq - f.HalfSpan);
    const float high = f32(st.CenterFreq + f.HalfSpan);
    const auto check = [&](bool failed, const char* text) {
        if (!failed) return;
        conditioningMessage(wb, text, MsgIcon::Information);
        f.InputBad = true;
    };
    check(st.CenterFreq >= st.MaxFreq, "Decrease Center Frequency!");
    check(f.HalfSpan >= st.MaxFreq, "Decrease Span or Increase Center Frequency!");
    check(high > st.MaxFreq, "Decrease Span or Increase Center Frequency!");
    check(low < 0, "Decrease Span or Increase Center Frequency!");
    // The span is always drawn on a linear axis, and the axis stays linear afterwards.
    st.DrSet = 1;
    const int32_t start = toInt32(double(low) / st.BinWidth);
    const int32_t end = toInt32(double(high) / st.BinWidth);
    if (int64_t(end) - start < 1) {
        conditioningMessage(wb, "Increase Span!", MsgIcon::Information);
        return false;
    }
    const float width = high - low;
    if (!(width > 0)) {
        conditioningMessage(wb, "Low resolution!\nIncrease Center Frequency\nor Decrease Span",
                            MsgIcon::Information);
        f.InputBad = true;
    }
    // A refused band leaves the span on show as it was.
    if (f.InputBad) return false;
    st.SpanLowFreq = low;
    st.SpanHighFreq = high;
    st.SpanStart = start;
    st.SpanEnd = end;
    st.SpanWidth = width;
    st.SpanBinCount = end - start;
    st.SpanActive = true;
    redrawSpan(wb);
    if (st.WaterfallOpen) wb.views.redrawView(wb, ViewId::Waterfall);
    f.Applied = true;
    return true;
}

bool ZenterFr::OKButton_Click(Workbench& wb, SpanFields& f) {
    if (f.Applied) return false;
    return !Command1_Click(wb, f);
}

void ZenterFr::CancelButton_Click(Workbench& wb, SpanFields&) {
    wb.st.SpanActive = false;
    redrawSpan(wb);
    wb.cmd.button(kSpanButton).down = false;
    wb.cmd.check("mnuSpan", false);
    wb.cmd.touch();
}

void mnuSpan_Click(Workbench& wb) {
    if (wb.cmd.checked("mnuSpan")) {
        SpanFields f;
        ZenterFr::CancelButton_Click(wb, f);
        wb.views.closeDialog(wb, "ZenterFr");
        return;
    }
    // Span shows the spectrum as built; a filter or whitening on it goes off.
    const bool rebuild = wb.st.FftFilterOn || wb.st.WhiteningOn;
    fftFilterOff(wb);
    whiteningOff(wb);
    if (rebuild) rebuildViews(wb, true);
    wb.views.showDialog(wb, "ZenterFr", false);
    wb.cmd.button(kSpanButton).down = true;
    wb.cmd.check("mnuSpan");
    wb.cmd.touch();
}

} // namespace kv
