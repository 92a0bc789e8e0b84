// Whole-trace amplitude, decibel and phase arithmetic, written as straight loops without calls or
// branches so that the compiler runs several bins per instruction. The logarithm and arctangent
// are short polynomials accurate to the f32 they produce; values outside their range (zero,
// tiny, infinite, NaN) are sent through the one-value definitions afterwards, so every special
// case comes out exactly as those definitions say.
#include "engine/batch_math.h"

#include "engine/spectrum.h"

#include <bit>
#include <cmath>
#include <cstdint>

// Each routine is built twice on x86-64, once for AVX2 (eight floats or four doubles a step) and
// once for the baseline, and the loader picks the one the processor runs. Neither clone may fuse
// a multiply and an add, so both give the same bits.
#if defined(__x86_64__) && defined(__GNUC__)
#define KV_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define KV_VECTOR_CLONES
#endif

namespace kv::batch {

KV_VECTOR_CLONES
void amplitudes(const float* re, const float* im, float* amp, int32_t n, float gain) {
    const double g = gain;
    for (int32_t j = 0; j < n; ++j) {
        const double r = re[j], i = im[j];
        amp[j] = float(2.0 * std::sqrt(r * r + i * i) / g);
    }
}

namespace {

/// True when x is a positive, finite, normal float: the range of the logarithm polynomial.
inline bool logInRange(float x) {
    return std::bit_cast<uint32_t>(x) - 0x00800000u < 0x7f000000u;
}

} // namespace

KV_VECTOR_CLONES
void decibels(const float* amp, float* disp, int32_t n, float fullScale) {
    // 20 / ln(10): decibels from a natural logarithm.
    constexpr float kDbPerNeper = 8.685889638065037f;
    uint32_t outOfRange = 0;
    for (int32_t j = 0; j < n; ++j) {
        const float r = amp[j] / fullScale;
        const uint32_t bits = std::bit_cast<uint32_t>(r);
        outOfRange |= uint32_t(!logInRange(r));
        // r = m * 2^e with m in [sqrt(1/2), sqrt(2)); ln r = ln m + e ln 2.
        float e = float(int32_t(bits >> 23) - 127);
        float m = std::bit_cast<float>((bits & 0x007fffffu) | 0x3f800000u);
        const bool high = m > 1.41421356f;
        m = high ? m * 0.5f : m;
        e = high ? e + 1.0f : e;
        const float x = m - 1.0f;
        const float z = x * x;
        float y = ((((((((7.0376836292E-2f * x - 1.1514610310E-1f) * x + 1.1676998740E-1f) * x -
                        1.2420140846E-1f) *
                           x +
                       1.4249322787E-1f) *
                          x -
                      1.6668057665E-1f) *
                         x +
                     2.0000714765E-1f) *
                        x -
                    2.4999993993E-1f) *
                       x +
                   3.3333331174E-1f) *
                  x * z;
        // ln 2 in two parts, so that e * ln 2 keeps its precision.
        y += -2.12194440e-4f * e;
        y += -0.5f * z;
        const float ln = x + y + 0.693359375f * e;
        disp[j] = ln * kDbPerNeper;
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
        const bool xTiny = std::fabs(x) < 1e-7f;
        const bool yTiny = std::fabs(y) < 1e-7f;
        const float t = y / (xTiny ? 1.0f : x);
        const float a = std::fabs(t);
        // atan on [0, inf): fold onto |u| <= tan(pi/8) around 0, pi/4 or pi/2.
        const bool far = a > 2.414213562373095f;
        const bool mid = a > 0.4142135623730950f;
        const float u = far ? -1.0f / a : (mid ? (a - 1.0f) / (a + 1.0f) : a);
        const float base = far ? kPiOver2 : (mid ? kPiOver4 : 0.0f);
        const float z = u * u;
        const float at =
            base +
            (((8.05374449538e-2f * z - 1.38776856032e-1f) * z + 1.99777106478e-1f) * z -
             3.33329491539e-1f) *
                z * u +
            u;
        float d = std::copysign(at, t) * degPerRadian;
        d += x < 0.0f ? (y < 0.0f ? -halfTurn : halfTurn) : 0.0f;
        d = xTiny ? (yTiny ? 0.0f : (y > 0.0f ? quarterUp : quarterDown)) : d;
        deg[j] = d;
    }
}

} // namespace kv::batch
