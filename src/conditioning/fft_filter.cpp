// The GPR band read-out and the FFT filter's band and shape.
#include "conditioning/fft_filter.h"

#include "engine/spectrum.h"
#include "platform/numeric.h"
#include "state/program_state.h"

#include <algorithm>
#include <cmath>

namespace kv {

namespace {

// The taper's angle is converted with this value written out, as the tapers were tuned with it.
constexpr double kTaperPi = 3.14159265359;

/// Fix of a quotient as a bin number; false when it is no number or out of the int32 range.
bool wholeBin(double x, int32_t& out) {
    const double w = Fix(x);
    if (!(std::fabs(w) <= 2147483647.0)) return false;
    out = int32_t(w);
    return true;
}

/// Round(90 / width) as degrees per bin; false when the width is 0 (the division has no result)
/// or the result is out of the int32 range.
bool taperStep(double width, int32_t& out) {
    if (width == 0.0 || !std::isfinite(width)) return false;
    const double r = roundHalfEven(90.0 / width);
    if (!(std::fabs(r) <= 2147483647.0)) return false;
    out = int32_t(r);
    return true;
}

} // namespace

BandEdgeBins bandEdgeBins(const ProgramState& st, double limitDb) {
    const int32_t bins = std::min<int32_t>(st.Fft_Samples / 2, int32_t(st.SpAmp.size()));
    const float fs = st.FullScalePos;
    const auto level = [&](int32_t j) {
        return float(20.0 * Log10(double(st.SpAmp[size_t(j)] / fs), fs));
    };
    BandEdgeBins e;
    for (int32_t j = std::max(st.PeakBin, 0); j < bins; ++j)
        if (level(j) <= limitDb) {
            e.high = j;
            break;
        }
    for (int32_t j = std::min(st.PeakBin, bins - 1); j >= 1; --j)
        if (level(j) <= limitDb) {
            e.low = j;
            break;
        }
    return e;
}

void GPRFilter(ProgramState& st) {
    const BandEdgeBins e = bandEdgeBins(st, double(st.PeakDb) - 10.0);
    const double offset = 0.0; // the frequency axis starts at 0 Hz
    st.GprHighHz = f32(double(st.BinWidth) * e.high + offset);
    st.GprLowHz = f32(double(st.BinWidth) * e.low + offset);
}

BandFigure bandFigure(double hz) {
    if (hz > 1e6) return {formatPicture(hz / 1e6, "###.#"), "MHz"};
    if (hz > 1e3) return {formatPicture(hz / 1e3, "###.#"), "kHz"};
    return {formatPicture(hz, "###.#"), "Hz"};
}

bool setBoxFilterBand(ProgramState& st, double hpHz, double lpHz) {
    const float maxFreq = st.MaxFreq;
    const float oneBin = f32(double(maxFreq) / (st.Fft_Samples / 2));
    const float hp = hpHz > 0 ? f32(hpHz) : oneBin;
    float lp = f32(lpHz);
    if (lp > maxFreq) lp = maxFreq;
    const float hpStop = f32(double(hp) / 1.05) > 0 ? f32(double(hp) / 1.05) : 1.0f;
    const float lpStop = f32(double(lp) * 1.05) < maxFreq ? f32(double(lp) * 1.05) : maxFreq;
    const float width = oneBin;
    const float hpBin = f32(double(hp) / width), lpBin = f32(double(lp) / width);
    int32_t hpStopBin = 0, lpStopBin = 0, hpStep = 0, lpStep = 0;
    if (!wholeBin(double(hpStop) / width, hpStopBin) ||
        !wholeBin(double(lpStop) / width, lpStopBin) ||
        !taperStep(double(hpBin) - hpStopBin, hpStep) ||
        !taperStep(double(lpStopBin) - lpBin, lpStep) || !std::isfinite(hpBin) ||
        !std::isfinite(lpBin))
        return false;
    st.BoxHP = hp;
    st.BoxLP = lp;
    st.BoxHPStop = hpStop;
    st.BoxLPStop = lpStop;
    st.BoxBinWidth = width;
    st.BoxHPBin = hpBin;
    st.BoxLPBin = lpBin;
    st.BoxHPStopBin = hpStopBin;
    st.BoxLPStopBin = lpStopBin;
    st.BoxHPStep = hpStep;
    st.BoxLPStep = lpStep;
    return true;
}

void BoxFilterTransform(const ProgramState& st, float* re, float* im, int32_t n) {
    for (int32_t k = 1; k <= n; ++k) {
        const float f = f32(double(st.BoxBinWidth) * k);
        if (f < st.BoxHPStop || f > st.BoxLPStop) re[k] = im[k] = 0.0f;
    }
    // The skirts: the first element of the high-pass one is multiplied by sin 180 degrees (not
    // quite 0) and the factor rises to 1 at the corner; the low-pass one falls from 1 at its
    // corner towards 0 at the stop edge. Elements outside 0..n are not touched.
    const auto skirt = [&](int64_t from, int64_t to, double start, int32_t step) {
        for (int64_t k = std::max<int64_t>(from, 0); k <= std::min<int64_t>(to, n); ++k) {
            const double c = double(k - from);
            const double a = (start - double(step) * c) * kTaperPi / 180.0;
            const double s = std::sin(a);
            re[k] = f32(double(re[k]) * s);
            im[k] = f32(double(im[k]) * s);
        }
    };
    skirt(st.BoxHPStopBin, int64_t(roundHalfEven(st.BoxHPBin)), 180.0, st.BoxHPStep);
    skirt(int64_t(roundHalfEven(st.BoxLPBin)), st.BoxLPStopBin, 90.0, st.BoxLPStep);
}

} // namespace kv
