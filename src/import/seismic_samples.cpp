// Header numbers and the fixed-stride trace loop shared by the SEG-Y and SEG-2 readers.
#include "import/seismic_samples.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

namespace kv {

float HexToNumber(const ByteSource& src, uint64_t off, int nbytes, bool lowFirst) {
    uint8_t b[4] = {0, 0, 0, 0};
    src.read(off, b, size_t(nbytes));
    uint32_t v = 0;
    for (int i = 0; i < nbytes; ++i) {
        const int from = lowFirst ? nbytes - 1 - i : i;
        v = (v << 8) | b[from];
    }
    return static_cast<float>(v);
}

int sampleWidth(SampleCoding c) {
    switch (c) {
    case SampleCoding::Int16Low:
        return 2;
    case SampleCoding::Float64Low:
        return 8;
    default:
        return 4;
    }
}

namespace {

float decode(SampleCoding c, const uint8_t* p) {
    switch (c) {
    case SampleCoding::Int16Low:
        return float(int16_t(uint16_t(p[0] | (p[1] << 8))));
    case SampleCoding::Int32Low: {
        uint32_t u = uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) |
                     (uint32_t(p[3]) << 24);
        return float(int32_t(u));
    }
    case SampleCoding::Float32Low: {
        uint32_t u = uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) |
                     (uint32_t(p[3]) << 24);
        float f;
        std::memcpy(&f, &u, 4);
        return f;
    }
    case SampleCoding::Float64Low: {
        uint64_t u = 0;
        for (int i = 7; i >= 0; --i)
            u = (u << 8) | p[i];
        double d;
        std::memcpy(&d, &u, 8);
        return float(d);
    }
    case SampleCoding::Float32High: {
        uint32_t u = (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) |
                     uint32_t(p[3]);
        float f;
        std::memcpy(&f, &u, 4);
        return f;
    }
    }
    return 0.0f;
}

/// Decodes `n` samples into `out`, keeping the extremes. The coding is a template argument so
/// that the per-sample loop has no branch on it.
template <SampleCoding C>
void decodeInto(const uint8_t* bytes, size_t n, float* out, Extremes& ext) {
    constexpr size_t w = C == SampleCoding::Int16Low ? 2 : C == SampleCoding::Float64Low ? 8 : 4;
    for (size_t i = 0; i < n; ++i) {
        const float v = decode(C, bytes + i * w);
        ext.take(v);
        out[i] = v;
    }
}

void decodeTrace(SampleCoding c, const uint8_t* bytes, size_t n, float* out, Extremes& ext) {
    switch (c) {
    case SampleCoding::Int16Low:
        return decodeInto<SampleCoding::Int16Low>(bytes, n, out, ext);
    case SampleCoding::Int32Low:
        return decodeInto<SampleCoding::Int32Low>(bytes, n, out, ext);
    case SampleCoding::Float32Low:
        return decodeInto<SampleCoding::Float32Low>(bytes, n, out, ext);
    case SampleCoding::Float64Low:
        return decodeInto<SampleCoding::Float64Low>(bytes, n, out, ext);
    case SampleCoding::Float32High:
        return decodeInto<SampleCoding::Float32High>(bytes, n, out, ext);
    }
}

/// Decodes the `got` bytes at `bytes` into `out`: whole samples as they stand, and a last sample
/// the file cuts short as if zeros followed it. Returns the number of values set.
size_t decodeHeld(SampleCoding c, const uint8_t* bytes, size_t got, float* out, Extremes& ext) {
    const size_t w = size_t(sampleWidth(c));
    const size_t whole = got / w;
    decodeTrace(c, bytes, whole, out, ext);
    if (got % w == 0) return whole;
    uint8_t last[8] = {};
    std::memcpy(last, bytes + whole * w, got % w);
    decodeTrace(c, last, 1, out + whole, ext);
    return whole + 1;
}

} // namespace

void copySeismicTraces(ImportContext& ctx, const ByteSource& src, SampleCoding coding,
                       int64_t firstPos, int64_t stride, int32_t fileSamples, Extremes& ext) {
    ProgramState& st = ctx.st;
    if (st.TraceCount < 0) throw ReadError("Invalid property value"); // the progress bar's Max
    const int w = sampleWidth(coding);
    const int64_t copy = st.PadWithZero ? int64_t(fileSamples) : int64_t(st.Sp_Samples);
    // The source array holds fileSamples + 1 values; the working trace Sp_Samples. Only the part
    // that is copied is read, so memory stays at one working trace whatever the header claims.
    const bool fits = copy <= int64_t(fileSamples) + 1 && copy <= int64_t(st.Sp_Samples);
    const size_t want = fits && copy > 0 ? size_t(copy) * size_t(w) : 0;
    // A source in memory is decoded where it lies; one on disk is read into a buffer first.
    const std::span<const uint8_t> held = src.resident();
    std::vector<uint8_t> bytes(held.empty() ? size_t(std::min<uint64_t>(want, src.size())) : 0);
    LentTrace trace(size_t(std::max(st.Sp_Samples, 0)));

    TraceOutput out(ctx, st.TempPath);
    // Samples past the end of the file are zeros, which move neither extreme: only the samples
    // the file holds (the last one perhaps in part) are decoded, and only the values the last
    // trace set are cleared again. A header that claims long traces or many of them beyond a
    // short file costs no more than the file.
    for (int32_t t = 0; t < st.TraceCount; ++t) {
        if (!out.next(t)) break;
        const int64_t pos = firstPos + stride * int64_t(t);
        if (pos < 1 || pos > std::numeric_limits<int32_t>::max()) throw ReadError("Overflow");
        if (!fits) throw ReadError("Subscript out of range");
        const uint64_t off = uint64_t(pos - 1);
        const size_t inFile =
            off < src.size() ? size_t(std::min<uint64_t>(want, src.size() - off)) : 0;
        size_t set = 0;
        if (inFile > 0 && !held.empty())
            set = decodeHeld(coding, held.data() + off, inFile, trace.data(), ext);
        else if (inFile > 0)
            set = decodeHeld(coding, bytes.data(), src.read(off, bytes.data(), inFile),
                             trace.data(), ext);
        trace.holds(set);
        out.write(trace.values());
    }
    out.finish();
}

} // namespace kv
