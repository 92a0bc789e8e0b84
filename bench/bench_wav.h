// The header of the mono 16-bit 48 kHz WAV recordings the benchmarks generate.
#pragma once

#include <cstdint>
#include <ostream>

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

} // namespace kv::bench
