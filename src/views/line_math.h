// The integer arithmetic of the one-pixel line, shared by the line drawer and the repaint that
// must find exactly the pixels it paints.
#pragma once

#include <algorithm>
#include <cstdint>

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

} // namespace kv::line
