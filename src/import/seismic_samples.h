// What the SEG-Y and SEG-2 readers share: header numbers assembled byte by byte in either byte
// order, and the trace loop that copies fixed-stride sample blocks into the working file while
// keeping the extremes that decide full scale.
#pragma once

#include "import/reader.h"

namespace kv {

/// The unsigned number held by `nbytes` (1 to 4) bytes at the 0-based offset `off`, taken low
/// byte first or high byte first, and kept as a 32-bit float (so values above 2^24 lose their
/// last digits). No sign ever enters: the bytes FF FF read as 65535.
float HexToNumber(const ByteSource& src, uint64_t off, int nbytes, bool lowFirst);

/// How the samples of one trace are stored.
enum class SampleCoding {
    Int16Low,   // two's complement, low byte first
    Int32Low,   // two's complement, low byte first
    Float32Low, // IEEE single, low byte first
    Float64Low, // IEEE double, low byte first
    Float32High // IEEE single, high byte first
};

/// Bytes one sample of `c` occupies.
int sampleWidth(SampleCoding c);

/// Running extremes of the copied samples.
struct Extremes {
    float max = 0.0f;
    float min = 0.0f;
    void take(float v) {
        if (v > max) max = v;
        if (v < min) min = v;
    }
};

/// The trace loop of the seismic readers. Trace t starts at the 1-based position
/// `firstPos` + `stride` * t and holds `fileSamples` samples. With PadWithZero the whole source
/// trace is copied, otherwise Sp_Samples values; a copy that does not fit the working trace or
/// the source trace fails the read. Every copied value goes through `ext`.
void copySeismicTraces(ImportContext& ctx, const ByteSource& src, SampleCoding coding,
                       int64_t firstPos, int64_t stride, int32_t fileSamples, Extremes& ext);

} // namespace kv
