// Signal metrics. The noise and harmonic bins are chosen by fixed bands round multiples of the
// peak bin, not as the complement of the signal: the read-outs were always defined this way, and
// a bin may count both as noise and as a harmonic.
#include "engine/metrics.h"

#include "engine/spectrum.h"
#include "platform/numeric.h"
#include "state/program_state.h"

#include <cmath>
#include <optional>

namespace kv {

namespace {

/// Amplitude of bin i, or nothing when i lies outside the array: such a read fails its
/// statement alone and the count goes on without it.
std::optional<double> amp(const ProgramState& st, int64_t i) {
    if (i < 0 || size_t(i) >= st.SpAmp.size()) return std::nullopt;
    return double(st.SpAmp[size_t(i)]);
}

/// a / b, or nothing for a division by zero (or a result that is not a number).
std::optional<double> divide(double a, double b) {
    if (b == 0.0) return std::nullopt;
    const double r = a / b;
    if (!std::isfinite(r)) return std::nullopt;
    return r;
}

/// 20 * Log10(x), or nothing for a negative x (Log10 of exactly 0 is a number).
std::optional<double> db(const ProgramState& st, std::optional<double> x) {
    if (!x || *x < 0.0 || !std::isfinite(*x)) return std::nullopt;
    const double r = 20.0 * Log10(*x, st.FullScalePos);
    if (!std::isfinite(r)) return std::nullopt;
    return r;
}

void keepOrSet(double& result, std::optional<double> v) {
    if (v && std::isfinite(*v)) result = *v;
}

std::optional<double> ratioOrDb(const ProgramState& st, std::optional<double> r) {
    if (!r) return std::nullopt;
    if (st.THDdB == 1) return db(st, r);
    return *r * 100.0;
}

int32_t halfWidth(const ProgramState& st) {
    int32_t h = 10;
    if (st.SampleBits > 8) h = 20;
    if (st.SampleBits == 8) h = 10;
    if (st.IsSht) h = 16;
    return h;
}

void appendRange(std::vector<int16_t>& list, int64_t from, int64_t to, int64_t above) {
    for (int64_t i = from; i <= to; ++i)
        if (i > above) list.push_back(int16_t(i));
}

double sumOfSquares(const ProgramState& st, const std::vector<int16_t>& bins) {
    double sum = 0.0;
    for (int16_t i : bins)
        if (auto a = amp(st, i)) sum += *a * *a;
    return sum;
}

} // namespace

void CountAnalys(ProgramState& st) {
    const int64_t P = st.PeakBin, B = st.PeakHoldBins;
    const int32_t h = halfWidth(st);
    const int64_t w = h + 1;
    const double peak = amp(st, P).value_or(0.0);

    // The fundamental: its band of 2h+1 bins, or the peak bin alone when the band leaves 1..B.
    double sum = 0.0;
    for (int64_t i = P - h; i <= P + h; ++i) {
        if (i > B || i < 1) {
            sum = peak * peak;
            break;
        }
        if (auto a = amp(st, i)) sum += *a * *a;
    }
    st.FundPower = std::sqrt(sum);

    st.NoiseList.clear();
    appendRange(st.NoiseList, 2, P - w, 1);
    for (int64_t k = 1; k <= 5; ++k) {
        if ((k + 1) * P + w >= B) break;
        appendRange(st.NoiseList, k * P + 1, (k + 1) * P - 1, INT64_MIN);
    }
    st.NoiseCount = int32_t(st.NoiseList.size());

    st.HarmList.clear();
    for (int64_t k = 1; k <= 6; ++k) {
        const int64_t c = (k + 1) * P;
        if (c + w >= B) break;
        appendRange(st.HarmList, c - w, c + w, 1);
    }
    st.HarmCount = int32_t(st.HarmList.size());

    // The largest spur above the second harmonic: the bin that stands highest above its own
    // neighbourhood, searched from the top of the band down. The mean divides by 2h although the
    // neighbourhood has 2h+1 bins.
    st.SpurAmp = -100.0;
    double best = 0.0;
    for (int64_t i = B; i >= 2 * P; --i) {
        const auto x = amp(st, i);
        if (!x || !(f32(st.SpurAmp) < *x)) continue;
        float a = 0.0f;
        for (int64_t j = i - h; j <= i + h; ++j)
            if (auto y = amp(st, j)) a = f32(double(a) + *y);
        const float m = f32(double(a) / (2.0 * h));
        const double t = double(f32(*x - double(m)));
        if (t > best) {
            st.SpurAmp = *x;
            best = t;
        }
    }
    if (st.SpurAmp != 0.0) st.SpurRatio = peak / st.SpurAmp;

    st.HarmPower = sumOfSquares(st, st.HarmList);
    st.NoisePower = sumOfSquares(st, st.NoiseList);

    if (st.ShowSNR) CountSNR(st);
    if (st.ShowTHD) CountTHD(st);
    if (st.ShowSFDR) CountSFDR(st);
    CountSINAD(st);
    if (st.ShowENOB) CountENOB(st);
    if (st.ShowTHDN) CountTHDN(st);
}

void CountSNR(ProgramState& st) {
    keepOrSet(st.SNR_dB, db(st, divide(st.FundPower, std::sqrt(st.NoisePower))));
}

void CountTHD(ProgramState& st) {
    keepOrSet(st.THD_val, ratioOrDb(st, divide(std::sqrt(st.HarmPower), st.FundPower)));
}

void CountTHDN(ProgramState& st) {
    keepOrSet(st.THDN_val,
              ratioOrDb(st, divide(std::sqrt(st.NoisePower + st.HarmPower), st.FundPower)));
}

void CountSINAD(ProgramState& st) {
    keepOrSet(st.SINAD_dB, db(st, divide(st.FundPower, std::sqrt(st.NoisePower + st.HarmPower))));
}

void CountSFDR(ProgramState& st) {
    keepOrSet(st.SFDR_dB, db(st, st.SpurRatio));
}

void CountENOB(ProgramState& st) {
    keepOrSet(st.ENOB_bits, (st.SINAD_dB - 1.76) / 6.02);
}

std::string analysisCaption(const ProgramState& st, int index) {
    static const char* const kPrefix[6] = {
        "SNR: ", "THD: ", "SINAD: ", "SFDR: ", "ENOB: ", "THD+N: "};
    const char* ratioSuffix = st.THDdB == 1 ? "dB  " : "%  ";
    double v = 0.0;
    const char* suffix = "dB  ";
    switch (index) {
    case 0:
        v = st.SNR_dB;
        break;
    case 1:
        v = st.THD_val;
        suffix = ratioSuffix;
        break;
    case 2:
        v = st.SINAD_dB;
        break;
    case 3:
        v = -st.SFDR_dB; // a spur 60 dB down reads -60
        break;
    case 4:
        v = st.ENOB_bits;
        suffix = "Bits  ";
        break;
    case 5:
        v = st.THDN_val;
        suffix = ratioSuffix;
        break;
    default:
        return "";
    }
    return std::string(kPrefix[index]) + shortestText(throughPicture(v, "###0.00")) + suffix;
}

std::array<bool, 6> analysisLabelsShown(const ProgramState& st) {
    return {st.ShowSNR, st.ShowTHD, st.ShowSINAD, st.ShowSFDR, st.ShowENOB, st.ShowTHDN};
}

std::array<int, 7> analysisLabelLefts(int left, const std::array<bool, 7>& visible,
                                      const std::array<int, 7>& widths) {
    std::array<int, 7> lefts;
    int x = left;
    for (size_t i = 0; i < 7; ++i) {
        lefts[i] = visible[i] ? x : -1;
        if (visible[i]) x += widths[i] + 3;
    }
    return lefts;
}

void NewValue(ProgramState& st, AnalysisCaptions& An) {
    CountAnalys(st);
    const auto on = analysisLabelsShown(st);
    for (size_t i = 0; i < on.size(); ++i)
        if (on[i]) An[i] = analysisCaption(st, int(i));
}

} // namespace kv
