// Trace length and thinning rules shared by all readers.
#include "engine/trace_length.h"

#include "state/program_state.h"

namespace kv {

void fitTraceLength(ProgramState& st, int64_t traceLength) {
    if (st.PadWithZero) {
        for (int k = 1; k <= 16; ++k) {
            if ((int64_t(1) << k) >= traceLength) {
                st.Sp_Samples = 1 << k;
                return;
            }
        }
    } else {
        for (int k = 16; k >= 1; --k) {
            if ((int64_t(1) << k) <= traceLength) {
                st.Sp_Samples = 1 << k;
                return;
            }
        }
    }
}

void thinTrace(const float* in, size_t n, int ds, ThinMode mode, std::vector<float>& out) {
    out.clear();
    if (ds <= 1) {
        out.assign(in, in + n);
        return;
    }
    const size_t step = size_t(ds);
    out.reserve(n / step);
    for (size_t i = 0; i + step <= n; i += step) {
        if (mode == ThinMode::Decimate) {
            out.push_back(in[i]);
            continue;
        }
        double sum = 0.0;
        for (size_t m = 0; m < step; ++m)
            sum += in[i + m];
        out.push_back(float(sum / ds));
    }
}

} // namespace kv
