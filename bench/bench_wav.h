// The header of the mono 16-bit 48 kHz WAV recordings the benchmarks generate.
#pragma once

#include <cmath>
#include <cstdint>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

namespace kv::bench {

/// Writes the 44-byte header of a mono 16-bit 48 kHz WAV holding `samples` samples.
inline void writeWavHeader(std::ostream& f, uint64_t samples) {
    const uint32_t data = uint32_t(samples * 2);
    auto u32 = [&](uint32_t v) { f.write(reinterpret_cast<const char*>(&v), 4); };
    auto u16 = [&](uint16_t v) { f.write(reinterpret_cast<const char*>(&v), 2); };
    f.write("RIFF", 4);
    u32(36 + data);
    f.write("WAVEfmt ", 8);
    u32(16);
    u16(1);
    u16(1);
    u32(48000);
    u32(96000);
    u16(2);
    u16(16);
    f.write("data", 4);
    u32(data);
}

/// A recording of `traces` x `samples` samples: a tone whose pitch and level wander from trace
/// to trace over noise, so that every trace draws a different curve.
inline void writeWanderingTone(const std::string& path, int traces, int samples) {
    const uint32_t n = uint32_t(traces) * uint32_t(samples);
    std::ofstream f(path, std::ios::binary);
    writeWavHeader(f, n);
    uint32_t seed = 1;
    std::vector<int16_t> buf(n);
    for (uint32_t i = 0; i < n; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const double t = i / 48000.0;
        const double f0 = 1000.0 + 800.0 * std::sin(t * 0.7);
        const double noise = (double(seed >> 16) / 65536.0 - 0.5) * 600.0;
        buf[i] = int16_t(12000.0 * std::sin(2 * M_PI * f0 * t) + noise);
    }
    f.write(reinterpret_cast<const char*>(buf.data()), std::streamsize(buf.size() * 2));
}

} // namespace kv::bench
