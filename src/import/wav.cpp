// WAV recordings (PCM, 8 or 16 bits). The header is taken at the fixed places of the canonical
// 44-byte header, not parsed chunk by chunk, and the samples always start at byte 45. Stereo
// recordings go to two working files; the views show the left one.
#include "import/reader.h"

#include "platform/message_title.h"
#include "platform/numeric.h"

#include <algorithm>
#include <cstring>

namespace kv {

namespace {

/// The sizes the header step leaves for the sample step.
struct WavLayout {
    int32_t rawPerTrace = 0; // NewDS * Sp_Samples: samples per channel taken for one trace
    int32_t rawUpper = 0;    // last index of the raw arrays
};

WavLayout WavHeader(ImportContext& ctx, const ByteSource& src) {
    ProgramState& st = ctx.st;
    st.BitsPerSample = src.i16le(34);
    if (st.BitsPerSample == 8 || st.BitsPerSample == 16) st.SampleBits = st.BitsPerSample;
    st.Channels = src.i16le(22);
    if (st.Channels == 1) st.StereoFlag = 0;
    if (st.Channels > 1) st.StereoFlag = 1;
    st.SampleRate = static_cast<double>(src.i32le(24));
    st.DataStart = 45;
    st.ReadPos = 45;
    st.ScansPerSecond = 0;

    WavLayout w;
    w.rawPerTrace = checkedInt32(double(st.NewDS) * st.Sp_Samples);
    if (st.BitsPerSample == 8) st.BytesPerSample = 1;
    if (st.BitsPerSample == 16) st.BytesPerSample = 2;
    w.rawUpper = st.StereoFlag == 0 ? w.rawPerTrace - 1
                                    : checkedInt32(double(st.Channels) * w.rawPerTrace - 1);

    const double payload = double(st.SourceLength) - st.DataStart;
    if (st.BitsPerSample == 16) {
        st.TraceCount = checkedInt32(
            checkedDiv(double(st.SourceLength) - 45, double(w.rawPerTrace) * 2 * st.Channels));
        st.FullScalePos = 32767;
        st.FullScaleNeg = 32768;
    } else if (st.BitsPerSample == 8) {
        st.TraceCount = checkedInt32(checkedDiv(payload, double(st.Channels) * w.rawPerTrace));
        st.FullScalePos = 128;
        st.FullScaleNeg = 128;
    }
    if (st.TraceCount == 0) {
        // Shorter than half a trace: shrink the trace to the largest power of two the recording
        // holds. NewDS enters twice and the raw array keeps its size; both are kept so.
        for (int k = 16; k >= 1; --k) {
            const double n = double(1 << k) * st.NewDS;
            if (checkedDiv(payload, n * st.BytesPerSample * st.Channels) >= 1) {
                st.TraceCount = 1;
                st.Sp_Samples = 1 << k;
                w.rawPerTrace = checkedInt32(st.NewDS * n);
                break;
            }
        }
    }
    return w;
}

/// Reads the raw samples of one trace as signed values (8-bit offset to -128..127).
void readRaw(const ProgramState& st, const ByteSource& src, int64_t pos1,
             std::vector<uint8_t>& bytes, std::vector<int16_t>& raw) {
    if (st.BitsPerSample == 16) {
        src.wordsLe(uint64_t(pos1 - 1), std::span(raw));
    } else if (st.BitsPerSample == 8) {
        bytes.resize(raw.size());
        src.read(uint64_t(pos1 - 1), bytes.data(), bytes.size());
        for (size_t j = 0; j < raw.size(); ++j)
            raw[j] = static_cast<int16_t>(bytes[j] - 128);
    }
    // Other depths convert nothing: the trace stays zero.
}

/// How many raw values of a channel one trace takes: the trace's samples, or with NewDS the
/// neighbours they are made of.
size_t rawTaken(const ProgramState& st, int32_t rawPerTrace) {
    return size_t(std::max(st.NewDS <= 1 ? st.Sp_Samples : rawPerTrace, 0));
}

/// One trace from its raw samples: copied, or NewDS neighbours averaged or decimated into one.
/// `rawCount` is the size the raw array stands for, which the subscripts are checked against;
/// `raw` itself need hold no more of it than rawTaken.
void toTrace(const ProgramState& st, const std::vector<int16_t>& raw, size_t rawCount,
             int32_t rawPerTrace, std::vector<float>& work, std::vector<float>& out) {
    std::fill(out.begin(), out.end(), 0.0f);
    if (st.NewDS <= 1) {
        if (!out.empty()) checkIndex(out.size() - 1, rawCount);
        for (size_t j = 0; j < out.size(); ++j)
            out[j] = raw[j];
        return;
    }
    const int ds = st.NewDS;
    work.assign(checkedCount(rawPerTrace), 0.0f);
    for (size_t j = 0; j < work.size(); ++j) {
        checkIndex(j, rawCount);
        work[j] = raw[j];
    }
    size_t i = 0;
    for (int start = 0; start <= rawPerTrace - ds; start += ds, ++i) {
        checkIndex(i, out.size());
        if (st.DownsampleMode == 0) {
            float sum = 0.0f;
            for (int m = 0; m < ds; ++m)
                sum += work[size_t(start + m)];
            out[i] = sum / float(ds);
        } else {
            out[i] = work[size_t(start)];
        }
    }
}

void WavSamplesMono(ImportContext& ctx, const ByteSource& src, const WavLayout& w) {
    ProgramState& st = ctx.st;
    TraceOutput out(ctx, st.TempPath);
    std::vector<uint8_t> bytes;
    std::vector<int16_t> raw(checkedCount(int64_t(w.rawUpper) + 1));
    std::vector<float> work, trace(checkedCount(st.Sp_Samples));
    for (int32_t k = 0; k < st.TraceCount; ++k) {
        if (!out.next(k)) break;
        st.ReadPos = checkedInt32(st.DataStart + double(st.BytesPerSample) * w.rawPerTrace * k);
        readRaw(st, src, st.ReadPos, bytes, raw);
        toTrace(st, raw, raw.size(), w.rawPerTrace, work, trace);
        out.write(trace);
    }
    out.finish();
}

void WavSamplesStereo(ImportContext& ctx, const ByteSource& src, const WavLayout& w) {
    ProgramState& st = ctx.st;
    // This loop neither yields nor tests Cancel.
    TraceOutput left(ctx, st.TempLeftPath, false);
    TraceFileWriter right;
    right.open(st.TempRightPath);
    std::vector<uint8_t> bytes;
    // The raw array stands for all channels of a trace's stretch, interleaved, and each half
    // for one channel; a trace takes only the first values of the halves. Only those are read
    // and split, so a header claiming thousands of channels costs no more than two.
    const size_t half = checkedCount(int64_t(w.rawUpper) + 1) / 2;
    const size_t used = std::min(half, rawTaken(st, w.rawPerTrace));
    std::vector<int16_t> raw(2 * used);
    std::vector<int16_t> rawLeft(used), rawRight(used);
    std::vector<float> work, traceL(checkedCount(st.Sp_Samples)), traceR(traceL.size());
    int64_t pos = 1;
    for (int32_t k = 0; k < st.TraceCount; ++k) {
        left.next(k);
        // The stride leaves Channels out: neighbouring traces overlap by half and the second
        // half of the recording is never read. Kept so.
        st.ReadPos = checkedInt32(st.DataStart + double(st.BytesPerSample) * w.rawPerTrace * k);
        readRaw(st, src, st.ReadPos, bytes, raw);
        for (size_t i = 0; i < used; ++i) {
            rawLeft[i] = raw[2 * i];
            rawRight[i] = raw[2 * i + 1];
        }
        toTrace(st, rawLeft, half, w.rawPerTrace, work, traceL);
        toTrace(st, rawRight, half, w.rawPerTrace, work, traceR);
        left.writeAt(pos, traceL.data(), traceL.size());
        right.write(pos, traceR);
        pos += 4 * int64_t(st.Sp_Samples);
    }
    left.finish();
    st.WorkingFileLength = right.length();
    right.close();
}

} // namespace

void ReadWav(ImportContext& ctx) {
    auto src = openSourceSized(ctx);
    // A file without the RIFF tag is said to be corrupted, and read all the same.
    if (src->text(0, 4) != "RIFF")
        ctx.wb.host.message(ctx.reread ? "Corrupted file!" : "File corrupted!", kMessageTitle,
                            MsgIcon::Critical);
    WavLayout w = WavHeader(ctx, *src);
    if (ctx.st.StereoFlag == 0)
        WavSamplesMono(ctx, *src, w);
    else
        WavSamplesStereo(ctx, *src, w);
}

} // namespace kv
