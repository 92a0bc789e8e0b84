// Malå RAMAC radar recordings: headerless 16-bit traces in the .rd3 file, described by the
// text header of the same name with the extension .rad. Only two header values are used: the
// time window, found by a short scan for its key, and the trace length, which stands at a
// fixed place at the head of the header.
#include "import/reader.h"

#include "platform/files.h"
#include "platform/numeric.h"

namespace kv {

namespace {

/// The 1-based position of the key TIMEWINDOW: only its first letter and its two W's are
/// looked at, with case. Not found: where the scan stopped, one past its last position.
int64_t findTimeWindowKey(const ByteSource& rad) {
    const int64_t last = int64_t(rad.size()) - 10;
    // A header is a few hundred bytes, but nothing keeps a file from being large: it is read a
    // chunk at a time, each chunk reaching the nine bytes past its last position a key spans.
    constexpr int64_t kChunk = int64_t(64) << 10;
    std::vector<uint8_t> chunk;
    for (int64_t from = 1; from <= last; from += kChunk) {
        const int64_t to = std::min(last, from + kChunk - 1);
        chunk.resize(size_t(to - from) + 10);
        rad.read(uint64_t(from - 1), chunk.data(), chunk.size());
        for (int64_t p = from; p <= to; ++p) {
            const uint8_t* k = chunk.data() + (p - from);
            if (k[0] == 'T' && k[4] == 'W' && k[9] == 'W') return p;
        }
    }
    return std::max<int64_t>(1, last + 1);
}

void Rd3Header(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto rad = ctx.open(st.RadPath);
    const int64_t p = findTimeWindowKey(*rad);
    // The value follows the key and its colon; SAMPLES: fills positions 1 to 8 of the header.
    st.RadTimeWindowText = rad->text(uint64_t(p - 1 + 11), 11).substr(0, 10);
    st.RadSamplesText = rad->text(8, 6).substr(0, 5);
    st.TraceLength = checkedInt32(Val(st.RadSamplesText));
    if (st.TraceLength < 0) throw ReadError("Subscript out of range");
    st.TimeWindowNs = Val(st.RadTimeWindowText);
    st.SampleRate = checkedDiv(double(st.TraceLength), 1e-9 * st.TimeWindowNs);
    st.FullScalePos = 32767;
    st.FullScaleNeg = 32768;
    fitTraceLength(st, st.TraceLength);
}

void Rd3Traces(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = openSourceSized(ctx);
    const double samples = Val(st.RadSamplesText);
    st.Rd3Stride = checkedInt32(samples * 2 * st.NewDS);
    st.TraceCount = checkedInt32(checkedDiv(double(st.SourceLength), double(st.Rd3Stride)));

    const int32_t ds = st.NewDS;
    const int64_t n = st.TraceLength;
    std::vector<int16_t> rd3Trace(checkedCount(n) + 1), rd3Wide;
    std::vector<float> trace(checkedCount(std::max<int32_t>(st.Sp_Samples, 0)));
    TraceOutput out(ctx, st.TempPath);
    for (int32_t t = 0; t < st.TraceCount; ++t) {
        if (!out.next(t)) break;
        std::fill(trace.begin(), trace.end(), 0.0f);
        const uint64_t pos = uint64_t(int64_t(st.Rd3Stride) * t);
        auto readI16 = [&](std::vector<int16_t>& v) { src->read(pos, v.data(), v.size() * 2); };
        if (ds <= 1) {
            rd3Trace.assign(size_t(std::max<int32_t>(st.Sp_Samples, 0)) + 1, 0);
            readI16(rd3Trace);
        } else {
            // Thinning: NewDS neighbours become one sample, their mean or the first of them.
            rd3Wide.assign(size_t(ds) * size_t(std::max<int32_t>(st.Sp_Samples, 0)) + 1, 0);
            readI16(rd3Wide);
            for (int64_t start = 0; start <= n * ds - ds; start += ds) {
                const size_t i = size_t(start / ds);
                checkIndex(i, rd3Trace.size());
                if (st.DownsampleMode == 0) {
                    double sum = 0;
                    for (int32_t m = 0; m < ds; ++m) {
                        checkIndex(size_t(start + m), rd3Wide.size());
                        sum += rd3Wide[size_t(start + m)];
                    }
                    rd3Trace[i] = checkedInt16(sum / ds);
                } else {
                    checkIndex(size_t(start), rd3Wide.size());
                    rd3Trace[i] = rd3Wide[size_t(start)];
                }
            }
        }
        const int64_t upto = st.PadWithZero ? n : int64_t(st.Sp_Samples);
        copySamples(rd3Trace, trace, upto);
        out.write(trace);
    }
    out.finish();
}

} // namespace

void ReadRd3(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    st.Rd3Path = ctx.sourcePath;
    st.RadPath = findCompanion(replaceAllNoCase(ctx.sourcePath, ".rd3", ".rad"));
    st.SampleBits = 16;
    // The header and the trace loop share one handler: "File corrupted!" and no data set. A
    // header without the key reads a time window of 0, which ends here too, as does a missing
    // header file.
    withCorruptedFileHandler(ctx, [&] {
        Rd3Header(ctx);
        Rd3Traces(ctx);
    });
}

} // namespace kv
