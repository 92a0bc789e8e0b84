// Small exact radar recordings for the radar reader tests: little-endian field writers and a
// DZT header builder.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kv::test {

template <typename T> void putLe(std::vector<uint8_t>& b, size_t off, T v) {
    if (b.size() < off + sizeof v) b.resize(off + sizeof v);
    std::memcpy(b.data() + off, &v, sizeof v);
}

template <typename T> T getLe(const std::vector<uint8_t>& b, size_t off) {
    T v{};
    std::memcpy(&v, b.data() + off, sizeof v);
    return v;
}

inline void putText(std::vector<uint8_t>& b, size_t off, const std::string& s) {
    if (b.size() < off + s.size()) b.resize(off + s.size());
    std::memcpy(b.data() + off, s.data(), s.size());
}

/// A 1024-byte DZT header followed by `data` (already in the file's own encoding).
inline std::vector<uint8_t> dztBytes(int16_t samples, int16_t bits, float rangeNs, float sps,
                                     const std::vector<uint8_t>& data, int16_t channels = 1) {
    std::vector<uint8_t> b(1024 + data.size(), 0);
    if (!data.empty()) std::memcpy(b.data() + 1024, data.data(), data.size());
    putLe<int16_t>(b, 0, 255);
    putLe<int16_t>(b, 2, 1024);
    putLe<int16_t>(b, 4, samples);
    putLe<int16_t>(b, 6, bits);
    putLe<float>(b, 10, sps);
    putLe<float>(b, 26, rangeNs);
    putLe<int16_t>(b, 52, channels);
    return b;
}

/// 16-bit unsigned samples centred on 32768, from signed values.
inline std::vector<uint8_t> u16Samples(const std::vector<int>& values) {
    std::vector<uint8_t> b;
    for (int v : values) {
        const uint16_t u = uint16_t(v + 32768);
        b.push_back(uint8_t(u & 0xFF));
        b.push_back(uint8_t(u >> 8));
    }
    return b;
}

/// 16-bit signed little-endian samples.
inline std::vector<uint8_t> i16Samples(const std::vector<int>& values) {
    std::vector<uint8_t> b;
    for (int v : values) {
        const uint16_t u = uint16_t(int16_t(v));
        b.push_back(uint8_t(u & 0xFF));
        b.push_back(uint8_t(u >> 8));
    }
    return b;
}

} // namespace kv::test
