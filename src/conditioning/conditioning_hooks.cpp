// The conditioning plugged into the spectrum builder.
#include "conditioning/conditioning_hooks.h"

#include "conditioning/fft_filter.h"
#include "conditioning/span.h"
#include "conditioning/whitening.h"
#include "engine/fft.h"
#include "engine/spectrum_hooks.h"
#include "platform/numeric.h"
#include "state/program_state.h"

#include <algorithm>

namespace kv {

namespace {

class ConditioningHooks : public SpectrumHooks {
  public:
    bool transformFilterOn(const ProgramState& st) const override { return st.FftFilterOn; }
    void filterTransform(const ProgramState& st, float* re, float* im, int32_t n) const override {
        BoxFilterTransform(st, re, im, n);
    }
    void afterPeakSearch(ProgramState& st) override { AutoSpan(st); }
    void whiten(ProgramState& st) override { FyllWhite(st); }
    float traceGain(const ProgramState& st) const override {
        return st.GainOn ? f32(st.GainFactor) : 1.0f;
    }
};

void copyTime(const std::vector<float>& re, std::vector<float>& trace, int32_t n) {
    if (trace.size() < size_t(n)) trace.resize(size_t(n), 0.0f);
    std::copy(re.begin() + 1, re.begin() + 1 + n, trace.begin());
}

} // namespace

void installConditioning(ProgramState& st) {
    static ConditioningHooks hooks;
    st.spectrumHooks = &hooks;
}

int16_t radargramGain(const ProgramState& st) {
    return st.GainOn ? toInt16(st.GainFactor) : int16_t(1);
}

void conditionRadargramTrace(const ProgramState& st, std::vector<float>& re, std::vector<float>& im,
                             std::vector<float>& trace) {
    const int32_t n = st.Fft_Samples;
    if (!st.WhiteningOn && !st.FftFilterOn) return;
    re.resize(std::max(re.size(), size_t(n) + 1), 0.0f);
    im.assign(std::max(im.size(), size_t(n) + 1), 0.0f);
    fft::forward(re.data() + 1, im.data() + 1, n);
    if (st.WhiteningOn) {
        whiteSubstitute(st, re.data(), im.data(), n);
        fft::inverse(re.data() + 1, im.data() + 1, n);
        copyTime(re, trace, n);
    }
    if (st.FftFilterOn) {
        BoxFilterTransform(st, re.data(), im.data(), n);
        fft::inverse(re.data() + 1, im.data() + 1, n);
        copyTime(re, trace, n);
    }
}

} // namespace kv
