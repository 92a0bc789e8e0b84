// Signal metrics. The noise and harmonic bins are chosen by fixed bands round multiples of the
// peak bin, not as the complement of the signal: the read-outs were always defined this way, and
// a bin may count both as noise and as a harmonic.
#include "engine/metrics.h"

#include "engine/batch_math.h"
#include "engine/spectrum.h"
#include "platform/numeric.h"
#include "state/program_state.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace kv {

namespace {

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

/// Appends from..to (those above `above`) to the list; the list holds bins, so int16 as stored.
void appendRange(std::vector<int16_t>& list, int64_t from, int64_t to, int64_t above) {
    from = std::max(from, above + 1);
    if (to < from) return;
    const size_t at = list.size();
    list.resize(at + size_t(to - from + 1));
    int16_t* out = list.data() + at;
    for (int64_t i = from; i <= to; ++i)
        *out++ = int16_t(i);
}

/// The amplitude array as plain numbers: the survey takes every figure below for every trace,
/// so the loops index it directly and test each subscript against its size, as amp() does.
struct Amplitudes {
    const float* a;
    int64_t size;
    explicit Amplitudes(const ProgramState& st)
        : a(st.SpAmp.data()), size(int64_t(st.SpAmp.size())) {}
    bool has(int64_t i) const { return i >= 0 && i < size; }
};

/// The sums of squares of two lists, each added in its own order. Each sum is a chain of
/// dependent additions, so the two are run side by side rather than one after the other.
void sumsOfSquares(const Amplitudes& A, const std::vector<int16_t>& first,
                   const std::vector<int16_t>& second, double& sumFirst, double& sumSecond) {
    const auto square = [&](int16_t i) {
        if (!A.has(i)) return 0.0;
        const double x = A.a[i];
        return x * x;
    };
    // A bin outside the array adds nothing: x + 0.0 is x for every sum these can hold (they
    // start at +0 and only grow).
    double s1 = 0.0, s2 = 0.0;
    const size_t both = std::min(first.size(), second.size());
    for (size_t k = 0; k < both; ++k) {
        s1 += square(first[k]);
        s2 += square(second[k]);
    }
    for (size_t k = both; k < first.size(); ++k)
        s1 += square(first[k]);
    for (size_t k = both; k < second.size(); ++k)
        s2 += square(second[k]);
    sumFirst = s1;
    sumSecond = s2;
}

/// The mean round bin i as the spur search forms it: the bins i-h..i+h that lie in the array,
/// summed in order in single precision, over 2h. Each step is f32(a + x) of two floats formed in
/// double; double holds that sum exactly enough that rounding it to a float is the same as
/// adding in single precision, which is what the sums here do.
///
/// The search asks for the means of a few bins, walking down the band, and each is a chain of
/// 2h+1 dependent additions. So the means are made eight neighbouring bins at a time (the bin
/// asked for and the seven below it, where the search goes next), one chain for all eight.
class NeighbourhoodMeans {
  public:
    NeighbourhoodMeans(const Amplitudes& A, int32_t h) : A_(A), h_(h) {}

    float at(int64_t i) {
        const int64_t lo = i - 7;
        if (lo - h_ >= 0 && i + h_ < A_.size) {
            if (!(lo >= from_ && lo < from_ + 8)) {
                batch::neighbourhoodSums8(A_.a + lo, h_, sums_);
                from_ = lo;
            }
            return f32(double(sums_[i - from_]) / (2.0 * h_));
        }
        const int64_t from = std::max<int64_t>(i - h_, 0);
        const int64_t to = std::min<int64_t>(i + h_, A_.size - 1);
        float a = 0.0f;
        for (int64_t j = from; j <= to; ++j)
            a += A_.a[j];
        return f32(double(a) / (2.0 * h_));
    }

  private:
    const Amplitudes& A_;
    int32_t h_;
    int64_t from_ = INT64_MIN / 2;
    float sums_[8] = {};
};

} // namespace

void CountAnalys(ProgramState& st) {
    const int64_t P = st.PeakBin, B = st.PeakHoldBins;
    const int32_t h = halfWidth(st);
    const int64_t w = h + 1;
    const Amplitudes A(st);
    const double peak = A.has(P) ? double(A.a[P]) : 0.0;

    // The fundamental: its band of 2h+1 bins, or the peak bin alone when the band leaves 1..B.
    double sum = 0.0;
    if (P - h < 1 || P + h > B) {
        sum = peak * peak;
    } else {
        for (int64_t i = P - h; i <= P + h; ++i)
            if (A.has(i)) {
                const double x = A.a[i];
                sum += x * x;
            }
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
    float spur = f32(st.SpurAmp);
    double best = 0.0;
    NeighbourhoodMeans means(A, h);
    // Only bins above the spur found so far are looked at, so the walk skips from one such bin
    // to the next below it.
    const int64_t bottom = std::max<int64_t>(2 * P, 0);
    for (int64_t i = std::min(B, A.size - 1); i >= bottom; --i) {
        const int32_t next = batch::lastAbove(A.a + bottom, int32_t(i - bottom + 1), spur);
        if (next < 0) break;
        i = bottom + next;
        const float x = A.a[i];
        const float m = means.at(i);
        const double t = double(f32(double(x) - double(m)));
        if (t > best) {
            st.SpurAmp = x;
            spur = x;
            best = t;
        }
    }
    if (st.SpurAmp != 0.0) st.SpurRatio = peak / st.SpurAmp;

    sumsOfSquares(A, st.HarmList, st.NoiseList, st.HarmPower, st.NoisePower);

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
