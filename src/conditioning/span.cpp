// Auto-span and the span's edges in bins.
#include "conditioning/span.h"

#include "engine/spectrum.h"
#include "platform/numeric.h"
#include "state/program_state.h"

#include <algorithm>

namespace kv {

namespace {

void bandFromEdges(ProgramState& st) {
    st.SpanLowFreq = f32(double(st.BinWidth) * st.SpanStart);
    st.SpanHighFreq = f32(double(st.BinWidth) * st.SpanEnd);
    st.SpanWidth = st.SpanHighFreq - st.SpanLowFreq;
    st.SpanBins = st.SpanBinCount = st.ColumnCount = st.SpanEnd - st.SpanStart;
}

} // namespace

void AutoSpan(ProgramState& st) {
    settleDecibels(st);
    const double d = double(st.PeakDb) - st.AutotuneLevel;
    const int32_t last = std::min<int32_t>(st.Sp_Bins, int32_t(st.SpDisp.size())) - 1;
    const int32_t peak = std::clamp<int32_t>(st.PeakBin, 0, std::max(last, 0));
    for (int32_t j = peak; j >= 1; --j)
        if (st.SpDisp[size_t(j)] < d) {
            st.SpanStart = j;
            break;
        }
    for (int32_t j = peak; j <= last; ++j)
        if (st.SpDisp[size_t(j)] < d) {
            st.SpanEnd = j;
            break;
        }
    st.SpanActive = true;
    bandFromEdges(st);
}

void respanForBinWidth(ProgramState& st) {
    if (!st.SpanActive || st.BinWidth == 0.0f) return;
    st.SpanStart = toInt32(double(st.SpanLowFreq) / st.BinWidth);
    st.SpanEnd = toInt32(double(st.SpanHighFreq) / st.BinWidth);
    st.SpanWidth = st.SpanHighFreq - st.SpanLowFreq;
    st.SpanBinCount = st.SpanEnd - st.SpanStart;
}

} // namespace kv
