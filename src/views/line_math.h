// The integer arithmetic of the one-pixel line, shared by the line drawer and the repaint that
// must find exactly the pixels it paints.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kv::line {

/// The bounds a line's coordinates are held to, so that their products fit in 64 bits.
constexpr int64_t kCoordLimit = int64_t(1) << 28;

inline int64_t clampCoord(int v) {
    return std::clamp<int64_t>(v, -kCoordLimit, kCoordLimit);
}

/// floor(a / b) for b > 0.
inline int64_t floorDiv(int64_t a, int64_t b) {
    const int64_t q = a / b;
    return (a % b != 0 && a < 0) ? q - 1 : q;
}

/// ceil(a / b) for b > 0.
inline int64_t ceilDiv(int64_t a, int64_t b) {
    return -floorDiv(-a, b);
}

/// A point's coordinate from a view's scale: the nearest whole number, halves to even, held to
/// the int32 range, NaN as 0, as the platform's toInt32 rounds, but inline, for the thousands of
/// points a view places every draw. Adding and taking away 2^52 leaves no bits below the units
/// and rounds halves to even, as IEEE arithmetic does by default.
inline int32_t roundCoord(double v) {
    if (v > -2147483648.0 && v < 2147483647.0) {
        const double m = std::copysign(4503599627370496.0, v);
        return int32_t((v + m) - m);
    }
    if (std::isnan(v)) return 0;
    return v < 0 ? std::numeric_limits<int32_t>::min() : std::numeric_limits<int32_t>::max();
}

} // namespace kv::line
