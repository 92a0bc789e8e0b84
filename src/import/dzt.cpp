// Ground-penetrating-radar recordings in the GSSI DZT layout. Only a handful of fixed header
// fields are used (samples per scan, bits, scans per second, range, channels); the scans follow
// the 1024-byte header. A 16-bit scan is taken from two bytes further on and its last sample is
// left at zero, so a file written by our own DZT export reads back in place.
#include "import/reader.h"

#include "platform/numeric.h"

#include <algorithm>

namespace kv {

namespace {

/// Where the scans start and how wide a trace is, as the header step leaves them.
struct DztLayout {
    int32_t rawPerTrace = 0; // NewDS * samples per scan
};

DztLayout DztHeader(ImportContext& ctx, const ByteSource& src) {
    ProgramState& st = ctx.st;
    // Bits come first: the trace count below needs BytesPerSample. Depths other than 8 and 16
    // set neither the data start nor the sample width, so those keep the last import's values.
    st.BitsPerSample = src.i16le(6);
    if (st.BitsPerSample == 8 || st.BitsPerSample == 16) st.SampleBits = st.BitsPerSample;
    if (st.BitsPerSample == 8) {
        st.BytesPerSample = 1;
        st.DataStart = 1025;
    } else if (st.BitsPerSample == 16) {
        st.BytesPerSample = 2;
        st.DataStart = 1027;
    }
    // The header's scan length is taken as it is, power of two or not.
    st.Sp_Samples = src.i16le(4);
    DztLayout d;
    d.rawPerTrace = checkedInt32(double(st.NewDS) * st.Sp_Samples);
    // 1025 for both depths: the count is what the file length gives after the header.
    st.TraceCount = checkedInt32(
        checkedDiv(double(st.SourceLength) - 1025, double(st.BytesPerSample) * d.rawPerTrace));
    st.Channels = src.i16le(52);
    st.RangeNs = src.f32le(26);
    // The sample interval is kept in single precision before it is inverted.
    const float interval = f32(checkedDiv(1e-9 * double(st.RangeNs), double(st.Sp_Samples)));
    st.SampleRate = checkedDiv(1.0, double(interval));
    st.ScansPerSecond = checkedInt32(double(src.f32le(10)));
    st.TraceLength = st.Sp_Samples;
    if (st.BitsPerSample == 16) {
        st.FullScalePos = 32767;
        st.FullScaleNeg = 32768;
    } else if (st.BitsPerSample == 8) {
        st.FullScalePos = 128;
        st.FullScaleNeg = 128;
    }
    return d;
}

void DztTraces(ImportContext& ctx, const ByteSource& src, const DztLayout& d) {
    ProgramState& st = ctx.st;
    if (st.Sp_Samples < 1) throw ReadError("Subscript out of range");
    TraceOutput out(ctx, st.TempPath);
    std::vector<float> trace(size_t(st.Sp_Samples));
    std::vector<uint8_t> bytes;
    std::vector<uint16_t> words;
    for (int32_t k = 0; k < st.TraceCount; ++k) {
        if (!out.next(k)) break;
        std::fill(trace.begin(), trace.end(), 0.0f);
        st.ReadPos = checkedInt32(st.DataStart + double(st.BytesPerSample) * d.rawPerTrace * k);
        if (st.BitsPerSample == 8) {
            bytes.resize(size_t(d.rawPerTrace));
            src.read(uint64_t(st.ReadPos - 1), bytes.data(), bytes.size());
            for (size_t j = 0; j < trace.size(); ++j) {
                checkIndex(j, bytes.size());
                trace[j] = float(int(bytes[j]) - 128);
            }
        } else if (st.BitsPerSample == 16) {
            words.resize(size_t(d.rawPerTrace));
            src.wordsLe(uint64_t(st.ReadPos - 1), std::span(words));
            // Unsigned samples centred on 32768. The loop ends one sample short, so the last
            // sample of every trace stays 0; a down-sampled read overruns the trace and fails.
            const size_t taken = words.empty() ? 0 : words.size() - 1;
            for (size_t j = 0; j < std::min(taken, trace.size()); ++j)
                trace[j] = float(int(words[j]) - 32768);
            if (taken > trace.size()) throw ReadError("Subscript out of range");
        }
        out.write(trace);
    }
    out.finish();
}

} // namespace

void DztRead(ImportContext& ctx) {
    auto src = openSourceSized(ctx);
    // A header that cannot be worked out fails silently (the open's own handler); only the
    // trace loop reports a corrupted file.
    DztLayout d = DztHeader(ctx, *src);
    withCorruptedFileHandler(ctx, [&] { DztTraces(ctx, *src, d); });
}

} // namespace kv
