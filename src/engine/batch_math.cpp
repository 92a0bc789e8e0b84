// Whole-trace amplitude, decibel and phase arithmetic, written as straight loops without calls or
// branches so that the compiler runs several bins per instruction. The logarithm and arctangent
// are short polynomials accurate to the f32 they produce; values outside their range (zero,
// tiny, infinite, NaN) are sent through the one-value definitions afterwards, so every special
// case comes out exactly as those definitions say.
#include "engine/batch_math.h"

#include "engine/spectrum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

// Each routine is built twice on x86-64, once for AVX2 (eight floats or four doubles a step) and
// once for the baseline, and the loader picks the one the processor runs. Neither clone may fuse
// a multiply and an add, so both give the same bits.
#if defined(__x86_64__) && defined(__GNUC__)
#define KV_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define KV_VECTOR_CLONES
#endif

namespace kv::batch {

namespace {

/// True when r^2 + i^2 (as s, in single precision) and the bin's amplitude keep their full
/// precision in single precision: neither squares that leave the range nor a value that is not a
/// number. Exact zeros are fine.
inline bool squaresInRange(float r, float i, float s) {
    return (s >= 0x1p-100f && s < 0x1p100f) || (r == 0.0f && i == 0.0f);
}

/// The amplitudes of bins 0..n-1 in single precision, eight bins a step: within an ulp or two of
/// the double-precision figure. True when some bin's squares left the range where that holds.
__attribute__((always_inline)) inline bool singleAmplitudes(const float* re, const float* im,
                                                            float* amp, int32_t n, float scale) {
    uint32_t outOfRange = 0;
    for (int32_t j = 0; j < n; ++j) {
        const float r = re[j], i = im[j];
        const float s = r * r + i * i;
        outOfRange |= uint32_t(!squaresInRange(r, i, s));
        amp[j] = std::sqrt(s) * scale;
    }
    return outOfRange != 0;
}

/// 2 / gain, the factor of every amplitude; false when it is too large or small for the single
/// precision formula.
inline bool amplitudeScale(float gain, float& scale) {
    scale = 2.0f / gain;
    return scale >= 0x1p-60f && scale <= 0x1p60f;
}

/// The amplitude in double, where single precision would lose it (squares out of range, values
/// that are not numbers, an odd gain): those bins read exactly as they always did.
inline void amplitudeInDouble(float r, float i, bool scaleInRange, double gain, float& amp) {
    if (!scaleInRange || !squaresInRange(r, i, r * r + i * i))
        amp = float(2.0 * std::sqrt(double(r) * r + double(i) * i) / gain);
}

} // namespace

KV_VECTOR_CLONES
void amplitudes(const float* re, const float* im, float* amp, int32_t n, float gain) {
    float scale;
    const bool scaleInRange = amplitudeScale(gain, scale);
    const bool outOfRange = singleAmplitudes(re, im, amp, n, scale);
    if (!outOfRange && scaleInRange) return;
    for (int32_t j = 0; j < n; ++j)
        amplitudeInDouble(re[j], im[j], scaleInRange, gain, amp[j]);
}

namespace {

/// True when x is a positive, finite, normal float: the range of the logarithm polynomial.
inline bool logInRange(float x) {
    return std::bit_cast<uint32_t>(x) - 0x00800000u < 0x7f000000u;
}

/// 20 log10 r for a positive, finite, normal r, in single precision. The fold below forms the
/// same figure for single bins, so both go through this one definition.
inline float decibelsInRange(float r) {
    // 20 / ln(10): decibels from a natural logarithm.
    constexpr float kDbPerNeper = 8.685889638065037f;
    const uint32_t bits = std::bit_cast<uint32_t>(r);
    // r = m * 2^e with m in [sqrt(1/2), sqrt(2)); ln r = ln m + e ln 2.
    float e = float(int32_t(bits >> 23) - 127);
    float m = std::bit_cast<float>((bits & 0x007fffffu) | 0x3f800000u);
    const bool high = m > 1.41421356f;
    m = high ? m * 0.5f : m;
    e = high ? e + 1.0f : e;
    const float x = m - 1.0f;
    const float z = x * x;
    // The polynomial in x evaluated in pairs (Estrin's scheme) rather than term after term: the
    // same sum in a quarter of the dependent steps, so that the processor can keep many bins in
    // flight.
    const float z2 = z * z;
    const float p01 = 3.3333331174E-1f + -2.4999993993E-1f * x;
    const float p23 = 2.0000714765E-1f + -1.6668057665E-1f * x;
    const float p45 = 1.4249322787E-1f + -1.2420140846E-1f * x;
    const float p67 = 1.1676998740E-1f + -1.1514610310E-1f * x;
    const float p = (p01 + p23 * z) + (p45 + p67 * z) * z2 + 7.0376836292E-2f * (z2 * z2);
    float y = p * x * z;
    // ln 2 in two parts, so that e * ln 2 keeps its precision.
    y += -2.12194440e-4f * e;
    y += -0.5f * z;
    const float ln = x + y + 0.693359375f * e;
    return ln * kDbPerNeper;
}

} // namespace

KV_VECTOR_CLONES
void decibels(const float* amp, float* disp, int32_t n, float fullScale) {
    uint32_t outOfRange = 0;
    for (int32_t j = 0; j < n; ++j) {
        const float r = amp[j] / fullScale;
        outOfRange |= uint32_t(!logInRange(r));
        disp[j] = decibelsInRange(r);
    }
    if (!outOfRange) return;
    for (int32_t j = 0; j < n; ++j)
        if (!logInRange(amp[j] / fullScale))
            disp[j] = float(20.0 * Log10(double(amp[j] / fullScale), fullScale));
}

KV_VECTOR_CLONES
void phaseDegrees(const float* re, const float* im, float* deg, int32_t n, double pi) {
    constexpr float kPiOver2 = 1.5707963267948966f, kPiOver4 = 0.7853981633974483f;
    const float degPerRadian = float(180.0 / pi);
    // The values Atan2 gives on its special branches, in degrees.
    const float halfTurn = float(pi / pi * 180.0);
    const float quarterUp = float(1.5707963267949 / pi * 180.0);
    const float quarterDown = float(-1.5707963267949 / pi * 180.0);
    for (int32_t j = 0; j < n; ++j) {
        const float x = re[j], y = im[j];
        const float ax = std::fabs(x), ay = std::fabs(y);
        const bool xTiny = ax < 1e-7f;
        const bool yTiny = ay < 1e-7f;
        // atan |y/x| folded onto |u| <= tan(pi/8) round 0, pi/4 or pi/2, with u formed from the
        // two parts in one division: -x/y beyond tan(3pi/8), (y-x)/(y+x) beyond tan(pi/8).
        const bool far = ay > 2.414213562373095f * ax;
        const bool mid = ay > 0.4142135623730950f * ax;
        const float midNum = mid ? ay - ax : ay;
        const float midDen = mid ? ay + ax : ax;
        // The selection is made on the bits, so that the compiler cannot split the quotient
        // into one division per case and blend the results: one division a lane is enough.
        const uint32_t farMask = far ? ~0u : 0u;
        const float num = std::bit_cast<float>((std::bit_cast<uint32_t>(-ax) & farMask) |
                                               (std::bit_cast<uint32_t>(midNum) & ~farMask));
        const float den = std::bit_cast<float>((std::bit_cast<uint32_t>(ay) & farMask) |
                                               (std::bit_cast<uint32_t>(midDen) & ~farMask));
        const float u = num / den;
        const float midBase = mid ? kPiOver4 : 0.0f;
        const float base = far ? kPiOver2 : midBase;
        const float z = u * u;
        const float at =
            base +
            (((8.05374449538e-2f * z - 1.38776856032e-1f) * z + 1.99777106478e-1f) * z -
             3.33329491539e-1f) *
                z * u +
            u;
        // The sign of y/x, that of the product.
        float d = std::copysign(at, x * y) * degPerRadian;
        d += x < 0.0f ? (y < 0.0f ? -halfTurn : halfTurn) : 0.0f;
        d = xTiny ? (yTiny ? 0.0f : (y > 0.0f ? quarterUp : quarterDown)) : d;
        deg[j] = d;
    }
}

KV_VECTOR_CLONES
void windowProducts(const double* w, const float* x, float* y, int32_t n) {
    for (int32_t i = 0; i < n; ++i)
        y[i] = float(w[i] * double(x[i]));
}

KV_VECTOR_CLONES
void windowProductsSingle(const float* w, const float* x, float* y, int32_t n) {
    for (int32_t i = 0; i < n; ++i)
        y[i] = w[i] * x[i];
}

KV_VECTOR_CLONES
bool allWithin(const int32_t* bins, int32_t count, int32_t lo, int32_t hi) {
    int32_t low = lo, high = hi;
    for (int32_t c = 0; c < count; ++c) {
        low = std::min(low, bins[c]);
        high = std::max(high, bins[c]);
    }
    return low >= lo && high <= hi;
}

KV_VECTOR_CLONES
void gatherPairs(const float* re, const float* im, const int32_t* bins, int32_t count, float* outRe,
                 float* outIm) {
    for (int32_t c = 0; c < count; ++c) {
        outRe[c] = re[bins[c]];
        outIm[c] = im[bins[c]];
    }
}

KV_VECTOR_CLONES
void gatherPackedPairs(const float* packed, float scale, const int32_t* bins, int32_t count,
                       float* outRe, float* outIm) {
    for (int32_t c = 0; c < count; ++c) {
        outRe[c] = packed[2 * (bins[c] - 1)] * scale;
        outIm[c] = packed[2 * (bins[c] - 1) + 1] * scale;
    }
}

KV_VECTOR_CLONES
void unpackRealSpectrum(const float* __restrict packed, float* __restrict re, float* __restrict im,
                        int32_t n, float scale) {
    const int32_t half = n / 2;
    const int32_t upto = std::min(half, n - 1);
    for (int32_t k = 0; k <= upto; ++k) {
        re[k] = packed[2 * k] * scale;
        im[k] = packed[2 * k + 1] * scale;
    }
    // The upper half mirrors the lower: X[n-k] is the conjugate of X[k]. Written from the top
    // down, so that the loop reads and writes forwards.
    float* __restrict reTop = re + n;
    float* __restrict imTop = im + n;
    for (int32_t j = 1; j < n - half; ++j) {
        reTop[-j] = packed[2 * j] * scale;
        imTop[-j] = -(packed[2 * j + 1] * scale);
    }
}

KV_VECTOR_CLONES
void unpackRealSpectrumLowerHalf(const float* __restrict packed, float* __restrict re,
                                 float* __restrict im, int32_t n, float scale) {
    const int32_t upto = std::min(n / 2, n - 1);
    for (int32_t k = 0; k <= upto; ++k) {
        re[k] = packed[2 * k] * scale;
        im[k] = packed[2 * k + 1] * scale;
    }
}

// ---- Peak and floor searches --------------------------------------------------------------------
// Eight bins a step in GCC's generic vectors (two SSE halves on the baseline clone). A value that
// is not a number never compares greater, smaller or equal, so it never becomes an extreme, as
// in a running search. Vectors are never passed or returned (that would tie the clones' calls to
// one instruction set), so loads and splats are spelt out in place.

namespace {

typedef float F8 __attribute__((vector_size(32)));
typedef int32_t I8 __attribute__((vector_size(32)));

#define KV_SPLAT8(x)                                                                               \
    F8 {                                                                                           \
        x, x, x, x, x, x, x, x                                                                     \
    }

/// Folds the eight lanes of v together with `pick` (one of the four below), leaving the result in
/// every lane: three steps of lanes four, two and one apart.
#define KV_ACROSS8(v, pick)                                                                        \
    do {                                                                                           \
        auto kvOther = __builtin_shufflevector(v, v, 4, 5, 6, 7, 0, 1, 2, 3);                      \
        v = pick(v, kvOther);                                                                      \
        kvOther = __builtin_shufflevector(v, v, 2, 3, 0, 1, 6, 7, 4, 5);                           \
        v = pick(v, kvOther);                                                                      \
        kvOther = __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6);                           \
        v = pick(v, kvOther);                                                                      \
    } while (0)
#define KV_MAX_OF(a, b) ((b) > (a) ? (b) : (a))
#define KV_MIN_OF(a, b) ((b) < (a) ? (b) : (a))
#define KV_SUM_OF(a, b) ((a) + (b))
#define KV_ANY_OF(a, b) ((a) | (b))

} // namespace

// Where the extreme stands, in one pass: each of eight lanes keeps its own best value and where
// that stands; the lanes are then compared, ties going to the place a running search would find.

KV_VECTOR_CLONES
int32_t lastMaxAt(const float* a, int32_t n) {
    F8 m = KV_SPLAT8(-std::numeric_limits<float>::infinity());
    I8 at = {-1, -1, -1, -1, -1, -1, -1, -1};
    I8 idx = {0, 1, 2, 3, 4, 5, 6, 7};
    const I8 step = {8, 8, 8, 8, 8, 8, 8, 8};
    int32_t i = 0;
    for (; i + 8 <= n; i += 8, idx += step) {
        F8 x;
        std::memcpy(&x, a + i, sizeof x);
        const I8 take = x >= m;
        m = take ? x : m;
        at = take ? idx : at;
    }
    float best = 0.0f;
    int32_t where = -1;
    for (int k = 0; k < 8; ++k)
        if (at[k] >= 0 && (where < 0 || m[k] > best || (m[k] == best && at[k] > where))) {
            best = m[k];
            where = at[k];
        }
    for (; i < n; ++i)
        if (a[i] == a[i] && (where < 0 || a[i] >= best)) {
            best = a[i];
            where = i;
        }
    return where;
}

KV_VECTOR_CLONES
int32_t firstMaxAbove(const float* a, const float* disp, float above, int32_t n) {
    F8 m = KV_SPLAT8(-std::numeric_limits<float>::infinity());
    const F8 limit = KV_SPLAT8(above);
    I8 at = {-1, -1, -1, -1, -1, -1, -1, -1};
    I8 idx = {0, 1, 2, 3, 4, 5, 6, 7};
    const I8 step = {8, 8, 8, 8, 8, 8, 8, 8};
    // Two sets of lanes, each taking every other group of eight, so that each step waits on the
    // step before it only every other time; the second set is then merged into the first, of
    // equal values the earlier place winning.
    F8 m2 = m;
    I8 at2 = at;
    int32_t i = 0;
    for (; i + 16 <= n; i += 16, idx += step + step) {
        F8 x, d, x2, d2;
        std::memcpy(&x, a + i, sizeof x);
        std::memcpy(&d, disp + i, sizeof d);
        std::memcpy(&x2, a + i + 8, sizeof x2);
        std::memcpy(&d2, disp + i + 8, sizeof d2);
        const I8 take = (d > limit) & (x > m);
        m = take ? x : m;
        at = take ? idx : at;
        const I8 take2 = (d2 > limit) & (x2 > m2);
        m2 = take2 ? x2 : m2;
        at2 = take2 ? idx + step : at2;
    }
    for (; i + 8 <= n; i += 8, idx += step) {
        F8 x, d;
        std::memcpy(&x, a + i, sizeof x);
        std::memcpy(&d, disp + i, sizeof d);
        const I8 take = (d > limit) & (x > m);
        m = take ? x : m;
        at = take ? idx : at;
    }
    const I8 second = (at2 >= 0) & ((at < 0) | (m2 > m) | ((m2 == m) & (at2 < at)));
    m = second ? m2 : m;
    at = second ? at2 : at;
    float best = 0.0f;
    int32_t where = -1;
    for (int k = 0; k < 8; ++k)
        if (at[k] >= 0 && (where < 0 || m[k] > best || (m[k] == best && at[k] < where))) {
            best = m[k];
            where = at[k];
        }
    for (; i < n; ++i)
        if (disp[i] > above && a[i] > -std::numeric_limits<float>::infinity() &&
            (where < 0 || a[i] > best)) {
            best = a[i];
            where = i;
        }
    return where;
}

KV_VECTOR_CLONES
int32_t firstMinAt(const float* a, int32_t n) {
    F8 m = KV_SPLAT8(std::numeric_limits<float>::infinity());
    I8 at = {-1, -1, -1, -1, -1, -1, -1, -1};
    I8 idx = {0, 1, 2, 3, 4, 5, 6, 7};
    const I8 step = {8, 8, 8, 8, 8, 8, 8, 8};
    int32_t i = 0;
    for (; i + 8 <= n; i += 8, idx += step) {
        F8 x;
        std::memcpy(&x, a + i, sizeof x);
        const I8 take = x < m;
        m = take ? x : m;
        at = take ? idx : at;
    }
    float best = 0.0f;
    int32_t where = -1;
    for (int k = 0; k < 8; ++k)
        if (at[k] >= 0 && (where < 0 || m[k] < best || (m[k] == best && at[k] < where))) {
            best = m[k];
            where = at[k];
        }
    for (; i < n; ++i)
        if (a[i] < std::numeric_limits<float>::infinity() && (where < 0 || a[i] < best)) {
            best = a[i];
            where = i;
        }
    return where;
}

namespace {

/// Folds a[0..n-1] (n >= 8) into the lanes: the largest values into h0 and h1, the least into
/// l0 and l1, values that are not numbers left out, and with `Tell` whether there were any into
/// `odd`. The bins short of a group of eight are taken with the group that ends there: a second
/// look at some of them changes none of those.
template <bool Tell>
__attribute__((always_inline)) inline void extremeLanes(const float* a, int32_t n, F8& h0, F8& h1,
                                                        F8& l0, F8& l1, I8& odd) {
    int32_t i = 0;
    for (; i + 16 <= n; i += 16) {
        F8 x, y;
        std::memcpy(&x, a + i, sizeof x);
        std::memcpy(&y, a + i + 8, sizeof y);
        h0 = x > h0 ? x : h0;
        h1 = y > h1 ? y : h1;
        l0 = x < l0 ? x : l0;
        l1 = y < l1 ? y : l1;
        if (Tell) odd |= (x != x) | (y != y);
    }
    const auto take = [&](int32_t at) {
        F8 x;
        std::memcpy(&x, a + at, sizeof x);
        h0 = x > h0 ? x : h0;
        l0 = x < l0 ? x : l0;
        if (Tell) odd |= x != x;
    };
    if (i + 8 <= n) take(i), i += 8;
    if (i < n) take(n - 8);
}

/// The largest and the smallest of a[0..n-1], values that are not numbers left out (hi stays
/// -infinity and lo +infinity when nothing is left), and with `Tell`, whether there were any such
/// values. Two sets of lanes for each, so that each step waits on the one before only every
/// other time.
template <bool Tell>
__attribute__((always_inline)) inline void extremeValues(const float* a, int32_t n, float& hi,
                                                         float& lo, bool* notNumber = nullptr) {
    F8 h0 = KV_SPLAT8(-std::numeric_limits<float>::infinity());
    F8 h1 = h0;
    F8 l0 = KV_SPLAT8(std::numeric_limits<float>::infinity());
    F8 l1 = l0;
    I8 odd = {};
    int32_t i = 0;
    if (n >= 8) {
        extremeLanes<Tell>(a, n, h0, h1, l0, l1, odd);
        i = n;
    }
    h0 = h1 > h0 ? h1 : h0;
    l0 = l1 < l0 ? l1 : l0;
    KV_ACROSS8(h0, KV_MAX_OF);
    KV_ACROSS8(l0, KV_MIN_OF);
    if (Tell) KV_ACROSS8(odd, KV_ANY_OF);
    float top = h0[0], low = l0[0];
    bool any = odd[0] != 0;
    for (; i < n; ++i) {
        top = a[i] > top ? a[i] : top;
        low = a[i] < low ? a[i] : low;
        any |= !(a[i] == a[i]);
    }
    hi = top;
    lo = low;
    if (Tell) *notNumber = any;
}

/// The first i from `from` on with a[i] == value, which a[from..end-1] holds: eight bins a look.
__attribute__((always_inline)) inline int32_t firstPlaceOf(const float* a, int32_t from,
                                                           int32_t end, float value) {
    const F8 t = KV_SPLAT8(value);
    int32_t i = from;
    for (; i + 8 <= end; i += 8) {
        F8 x;
        std::memcpy(&x, a + i, sizeof x);
        I8 here = x == t;
        KV_ACROSS8(here, KV_ANY_OF);
        if (here[0]) break;
    }
    while (!(a[i] == value))
        ++i;
    return i;
}

} // namespace

KV_VECTOR_CLONES
AmplitudeExtremes packedAmplitudes(const float* __restrict packed, float* __restrict amp,
                                   int32_t bins, int32_t maxFrom, float scale, float gain) {
    // The amplitudes straight from the interleaved parts, and each block's extreme values on the
    // way. Where the extremes stand is looked for only in the first block that holds each: that
    // is where a running search from the first bin would end.
    constexpr int32_t kBlock = 1024;
    float ampScale;
    const bool scaleInRange = amplitudeScale(gain, ampScale);
    uint32_t outOfRange = 0;
    float hi = -std::numeric_limits<float>::infinity();
    float lo = std::numeric_limits<float>::infinity();
    int32_t hiBlock = -1, loBlock = -1;
    for (int32_t from = 0; from < bins; from += kBlock) {
        const int32_t len = std::min(kBlock, bins - from);
        const float* p = packed + 2 * int64_t(from);
        float* a = amp + from;
        // The squares' largest and smallest bit patterns: a square is never negative (nor -0),
        // so its bits order as its value, and a square that is not a number has bits above any
        // other's. They tell at once whether the whole block is within the range, and give its
        // largest and smallest amplitudes, which are those of its largest and smallest squares.
        uint32_t top = 0, bottom = ~0u;
        for (int32_t j = 0; j < len; ++j) {
            const float r = p[2 * j] * scale, i = p[2 * j + 1] * scale;
            const float s = r * r + i * i;
            const uint32_t bits = std::bit_cast<uint32_t>(s);
            top = bits > top ? bits : top;
            bottom = bits < bottom ? bits : bottom;
            a[j] = std::sqrt(s) * ampScale;
        }
        if (!(bottom >= std::bit_cast<uint32_t>(0x1p-100f) &&
              top < std::bit_cast<uint32_t>(0x1p100f))) {
            // A square of 0 (within the range only when both parts are 0) or one out of the
            // range: the block is looked at bin by bin.
            for (int32_t j = 0; j < len; ++j) {
                const float r = p[2 * j] * scale, i = p[2 * j + 1] * scale;
                outOfRange |= uint32_t(!squaresInRange(r, i, r * r + i * i));
            }
        }
        // The peak's search leaves out the bins before maxFrom; the floor's takes them all.
        const int32_t skip = std::clamp(maxFrom - from, 0, len);
        float blockHi = std::sqrt(std::bit_cast<float>(top)) * ampScale;
        const float blockLo = std::sqrt(std::bit_cast<float>(bottom)) * ampScale;
        if (skip > 0) {
            float low;
            extremeValues<false>(a + skip, len - skip, blockHi, low);
            if (skip == len) blockHi = -std::numeric_limits<float>::infinity();
        }
        if (blockHi > hi) {
            hi = blockHi;
            hiBlock = from;
        }
        if (blockLo < lo) {
            lo = blockLo;
            loBlock = from;
        }
    }
    if (outOfRange || !scaleInRange) {
        // Some bins want the double formula: they are formed again, and searched in full.
        for (int32_t j = 0; j < bins; ++j)
            amplitudeInDouble(packed[2 * j] * scale, packed[2 * j + 1] * scale, scaleInRange, gain,
                              amp[j]);
        AmplitudeExtremes x;
        const int32_t count = bins - maxFrom;
        const int32_t at = count > 0 ? firstMaxAbove(amp + maxFrom, amp + maxFrom,
                                                     -std::numeric_limits<float>::infinity(), count)
                                     : -1;
        x.firstMax = at >= 0 ? maxFrom + at : -1;
        x.firstMin = firstMinAt(amp, std::max(bins, 0));
        return x;
    }
    AmplitudeExtremes x;
    if (hiBlock >= 0)
        x.firstMax =
            firstPlaceOf(amp, std::max(hiBlock, maxFrom), std::min(hiBlock + kBlock, bins), hi);
    if (loBlock >= 0) x.firstMin = firstPlaceOf(amp, loBlock, std::min(loBlock + kBlock, bins), lo);
    return x;
}

KV_VECTOR_CLONES
void foldColumns(const float* disp, int32_t count, int32_t b, float* val, int32_t* bin) {
    int32_t c = 0;
    if (b >= 16) {
        // Wide columns: the last place of the largest of each, eight bins a step (the first bin
        // is a number, so there is one).
        for (; c < count; ++c) {
            const float* d = disp + int64_t(c) * b;
            if (!(d[0] == d[0])) {
                val[c] = d[0];
                bin[c] = -1;
                continue;
            }
            // The largest number first, eight lanes at a time, then its last place from the
            // column's end: the place a running search ends on, of equal values (zeros of
            // either sign among them) the last. Both passes stay within this clone.
            F8 m = KV_SPLAT8(-std::numeric_limits<float>::infinity());
            int32_t i = 0;
            for (; i + 8 <= b; i += 8) {
                F8 x;
                std::memcpy(&x, d + i, sizeof x);
                m = x > m ? x : m;
            }
            float top = m[0];
            for (int k = 1; k < 8; ++k)
                top = m[k] > top ? m[k] : top;
            for (; i < b; ++i)
                top = d[i] > top ? d[i] : top;
            // Eight bins at a time from the end: the first group holding the value answers, and
            // its last lane equal to it is the place. The head short of a group goes one by one.
            const F8 t = KV_SPLAT8(top);
            int32_t at = -1;
            int32_t j = b - 8;
            for (; j >= 0; j -= 8) {
                F8 x;
                std::memcpy(&x, d + j, sizeof x);
                // Lane k equal to the value counts k + 1; the largest count, gathered across the
                // lanes without leaving the vector, is the last such lane (0: none).
                I8 last = (x == t) & I8{1, 2, 3, 4, 5, 6, 7, 8};
                KV_ACROSS8(last, KV_MAX_OF);
                if (last[0] == 0) continue;
                at = j + last[0] - 1;
                break;
            }
            if (at < 0) {
                at = j + 7;
                while (!(d[at] == top))
                    --at;
            }
            val[c] = d[at];
            bin[c] = int32_t(int64_t(c) * b + at);
        }
        return;
    }
    // Narrow columns: eight columns side by side, one bin of each a step.
    for (; c + 8 <= count; c += 8) {
        F8 v;
        I8 at;
        for (int j = 0; j < 8; ++j) {
            const int32_t i = (c + j) * b;
            v[j] = disp[i];
            at[j] = disp[i] == disp[i] ? i : -1;
        }
        for (int32_t k = 1; k < b; ++k) {
            F8 x;
            I8 here;
            for (int j = 0; j < 8; ++j) {
                x[j] = disp[(c + j) * b + k];
                here[j] = (c + j) * b + k;
            }
            const I8 take = v <= x;
            v = take ? x : v;
            at = take ? here : at;
        }
        for (int j = 0; j < 8; ++j) {
            val[c + j] = v[j];
            bin[c + j] = at[j];
        }
    }
    for (; c < count; ++c) {
        const int32_t i = c * b;
        float v = disp[i];
        int32_t at = v == v ? i : -1;
        for (int32_t k = 1; k < b; ++k)
            if (v <= disp[i + k]) {
                v = disp[i + k];
                at = i + k;
            }
        val[c] = v;
        bin[c] = at;
    }
}

KV_VECTOR_CLONES
void foldDecibelColumns(const float* amp, int32_t count, int32_t b, float fullScale, float* val,
                        int32_t* bin) {
    // The decibel polynomial strays from 20 log10 r by no more than 2^-21 of its value (checked
    // over every float in its range), and the quotient by full scale by less than 1e-6 dB. A bin
    // whose amplitude is under the column's largest by more than delta (below) is therefore
    // further under it in decibels than twice both errors together: it can be neither the
    // column's largest decibel value nor equal to it. So only the bins from there up, the
    // candidates, are turned into decibels, and of those the last of the largest is the
    // column's place, as the fold over every bin would find it. Usually the largest bin is the
    // only candidate.
    if (count <= 0) return;
    thread_local std::vector<int32_t> at;    // candidates' bins, column after column
    thread_local std::vector<float> level;   // their amplitudes, then their decibels
    thread_local std::vector<int32_t> start; // column c's candidates from start[c]; -1: folded
    at.clear();
    start.resize(size_t(count) + 1);
    // The least amplitude and whether any is not a number, over all columns: the shortcut holds
    // only when neither zeros nor values that are not numbers are among them.
    float low = std::numeric_limits<float>::infinity();
    bool notNumber = false;
    const I8 step = {8, 8, 8, 8, 8, 8, 8, 8};
    // First every column's largest value, then every column's candidates: no column waits for
    // the one before to be settled, so the processor works on several at once. A value that is
    // not a number is never the largest; where the largest stands comes from the second pass,
    // which looks for the candidates in any case.
    thread_local std::vector<float> tops;
    tops.resize(size_t(count));
    if (b >= 8) {
        // Only each column's largest is wanted column by column: the least value and whether
        // any is not a number are kept in lanes across all columns and gathered once.
        const F8 none = KV_SPLAT8(std::numeric_limits<float>::infinity());
        F8 least = none;
        I8 odd = {};
        for (int32_t c = 0; c < count; ++c) {
            const float* a = amp + int64_t(c) * b;
            // Lanes of the column's own, so that no column waits on the one before; only
            // `least` and `odd` carry over, one step a column.
            F8 h0 = KV_SPLAT8(-std::numeric_limits<float>::infinity()), h1 = h0;
            F8 low0 = none, low1 = none;
            extremeLanes<true>(a, b, h0, h1, low0, low1, odd);
            h0 = h1 > h0 ? h1 : h0;
            KV_ACROSS8(h0, KV_MAX_OF);
            tops[size_t(c)] = h0[0];
            low0 = low1 < low0 ? low1 : low0;
            least = low0 < least ? low0 : least;
        }
        KV_ACROSS8(least, KV_MIN_OF);
        KV_ACROSS8(odd, KV_ANY_OF);
        low = least[0];
        notNumber = odd[0] != 0;
    } else {
        for (int32_t c = 0; c < count; ++c) {
            float columnLow;
            bool columnOdd;
            extremeValues<true>(amp + int64_t(c) * b, b, tops[size_t(c)], columnLow, &columnOdd);
            low = columnLow < low ? columnLow : low;
            notNumber |= columnOdd;
        }
    }
    const int32_t vectorEnd = b / 8 * 8;
    for (int32_t c = 0; c < count; ++c) {
        const float* a = amp + int64_t(c) * b;
        start[size_t(c)] = int32_t(at.size());
        const float top = tops[size_t(c)];
        const float topRatio = top / fullScale;
        if (!logInRange(topRatio)) {
            // A column of amplitudes beyond the polynomial's range (or of nothing but values that
            // are not numbers): its decibels formed in full and folded the ordinary way.
            thread_local std::vector<float> column;
            column.resize(size_t(b));
            decibels(a, column.data(), b, fullScale);
            foldColumns(column.data(), 1, b, val + c, bin + c);
            if (bin[c] >= 0) bin[c] += c * b;
            start[size_t(c)] = -1;
            continue;
        }
        // |20 log10 r| is under 6.03 (|e| + 1) for r = m 2^e; delta is four times both errors
        // for such a value, in parts of the amplitude (1 dB is 0.115 in natural parts).
        const int32_t e = int32_t(std::bit_cast<uint32_t>(topRatio) >> 23) - 127;
        const float delta = float(3 * ((e < 0 ? -e : e) + 2)) * 0x1p-21f + 5e-7f;
        const float near = top - top * delta;
        // How many reach that far, and where the last of them stands: when only one does, it is
        // the largest, and the one candidate.
        const F8 limit = KV_SPLAT8(near);
        I8 reach = {};
        // Lanes count bins from 1 here, so that a lane that never reached holds 0 and the
        // largest lane is one past the last bin that did.
        I8 past = {};
        I8 idx = {1, 2, 3, 4, 5, 6, 7, 8};
        for (int32_t i = 0; i < vectorEnd; i += 8, idx += step) {
            F8 x;
            std::memcpy(&x, a + i, sizeof x);
            const I8 in = x >= limit;
            reach -= in;
            past = KV_MAX_OF(past, in & idx);
        }
        int32_t tail = vectorEnd;
        if (tail < b && b >= 8) {
            // The bins short of a group: the group that ends the column, less its lanes already
            // counted.
            F8 x;
            std::memcpy(&x, a + b - 8, sizeof x);
            const I8 at = idx - (vectorEnd - (b - 8));
            const I8 in = (x >= limit) & (at > vectorEnd);
            reach -= in;
            past = KV_MAX_OF(past, in & at);
            tail = b;
        }
        KV_ACROSS8(reach, KV_SUM_OF);
        int32_t many = reach[0];
        KV_ACROSS8(past, KV_MAX_OF);
        int32_t last = past[0] - 1;
        for (int32_t i = tail; i < b; ++i)
            if (a[i] >= near) {
                ++many;
                last = i;
            }
        if (many == 1) {
            at.push_back(c * b + last);
            continue;
        }
        for (int32_t i = 0; i < b; ++i)
            if (a[i] >= near) at.push_back(c * b + i);
    }
    start[size_t(count)] = int32_t(at.size());
    // The quotient by a positive full scale keeps the amplitudes' order, so when the least is in
    // the polynomial's range, so is every bin above it. Otherwise the fold is done the ordinary
    // way over every bin's decibels.
    if (notNumber || !logInRange(low / fullScale)) {
        level.resize(size_t(count) * size_t(b));
        decibels(amp, level.data(), count * b, fullScale);
        foldColumns(level.data(), count, b, val, bin);
        return;
    }
    level.resize(at.size());
    for (size_t m = 0; m < at.size(); ++m)
        level[m] = amp[at[m]];
    decibels(level.data(), level.data(), int32_t(level.size()), fullScale);
    for (int32_t c = 0; c < count; ++c) {
        if (start[size_t(c)] < 0) continue;
        int32_t next = c + 1;
        while (start[size_t(next)] < 0)
            ++next;
        float best = -std::numeric_limits<float>::infinity();
        int32_t where = -1;
        for (int32_t m = start[size_t(c)]; m < start[size_t(next)]; ++m)
            if (level[size_t(m)] > best || (level[size_t(m)] == best && at[size_t(m)] > where)) {
                best = level[size_t(m)];
                where = at[size_t(m)];
            }
        val[c] = best;
        bin[c] = where;
    }
}

KV_VECTOR_CLONES
bool foldPairs(const float* disp, const float* ph, const float* logs, int32_t count, float* val,
               int32_t* bin, float* logX, float* phase) {
    // The even and the odd lanes of two vectors side by side. __builtin_shufflevector is the
    // spelling both compilers take (GCC's own __builtin_shuffle is unknown to clang); a macro,
    // since a function taking the vectors by value would change the ABI without AVX.
#define KV_EVENS(x, y) __builtin_shufflevector(x, y, 0, 2, 4, 6, 8, 10, 12, 14)
#define KV_ODDS(x, y) __builtin_shufflevector(x, y, 1, 3, 5, 7, 9, 11, 13, 15)
    const I8 none = {-1, -1, -1, -1, -1, -1, -1, -1};
    I8 first = {0, 2, 4, 6, 8, 10, 12, 14};
    const I8 step = {16, 16, 16, 16, 16, 16, 16, 16};
    I8 carried = {};
    int32_t c = 0;
    for (; c + 8 <= count; c += 8, first += step) {
        const int64_t i = int64_t(c) * 2;
        F8 lo, hi, plo, phi, llo, lhi;
        std::memcpy(&lo, disp + i, sizeof lo);
        std::memcpy(&hi, disp + i + 8, sizeof hi);
        std::memcpy(&plo, ph + i, sizeof plo);
        std::memcpy(&phi, ph + i + 8, sizeof phi);
        std::memcpy(&llo, logs + i, sizeof llo);
        std::memcpy(&lhi, logs + i + 8, sizeof lhi);
        const F8 a = KV_EVENS(lo, hi), b = KV_ODDS(lo, hi);
        // The first bin compared with itself takes unless it is not a number; the second takes
        // when it is not below the first.
        const I8 ok = a == a;
        const I8 take = a <= b;
        const F8 v = take ? b : a;
        const I8 at = take ? first + 1 : (ok ? first : none);
        const F8 l = take ? KV_ODDS(llo, lhi) : KV_EVENS(llo, lhi);
        const F8 p = take ? KV_ODDS(plo, phi) : KV_EVENS(plo, phi);
        carried |= ~ok;
        std::memcpy(val + c, &v, sizeof v);
        std::memcpy(bin + c, &at, sizeof at);
        std::memcpy(logX + c, &l, sizeof l);
        std::memcpy(phase + c, &p, sizeof p);
    }
#undef KV_EVENS
#undef KV_ODDS
    bool anyCarried = false;
    for (int k = 0; k < 8; ++k)
        anyCarried |= carried[k] != 0;
    for (; c < count; ++c) {
        const int32_t i = c * 2;
        const bool take = disp[i] <= disp[i + 1];
        const int32_t at = take ? i + 1 : (disp[i] == disp[i] ? i : -1);
        anyCarried |= at < 0;
        val[c] = take ? disp[i + 1] : disp[i];
        bin[c] = at;
        logX[c] = logs[take ? i + 1 : i];
        phase[c] = ph[take ? i + 1 : i];
    }
    return anyCarried;
}

KV_VECTOR_CLONES
int32_t lastAbove(const float* a, int32_t n, float limit) {
    int32_t i = n - 1;
    // Eight at a time from the end while none of them is above the limit.
    const F8 lim = KV_SPLAT8(limit);
    for (; i >= 7; i -= 8) {
        F8 x;
        std::memcpy(&x, a + i - 7, sizeof x);
        const I8 above = x > lim;
        int32_t any = 0;
        for (int k = 0; k < 8; ++k)
            any |= above[k];
        if (any) break;
    }
    for (; i >= 0; --i)
        if (a[i] > limit) return i;
    return -1;
}

KV_VECTOR_CLONES
void neighbourhoodSums8(const float* a, int32_t h, float* sum) {
    // Each lane adds its own neighbourhood in its own order; the lanes only share the loads.
    F8 acc = KV_SPLAT8(0.0f);
    for (int32_t j = -h; j <= h; ++j) {
        F8 x;
        std::memcpy(&x, a + j, sizeof x);
        acc += x;
    }
    std::memcpy(sum, &acc, sizeof acc);
}

#undef KV_SPLAT8

} // namespace kv::batch
