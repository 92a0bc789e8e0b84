// Sensors & Software radar recordings: 16-bit traces in the .DT1 file, each behind a 128-byte
// trace header, described by the text header of the same name with the extension .HD. Three
// values are taken from the header by scanning for a few letters of their keys, in any case.
#include "import/reader.h"

#include "import/key_scan.h"
#include "platform/files.h"
#include "platform/numeric.h"

#include <initializer_list>
#include <utility>

namespace kv {

namespace {

/// How far past a scan position a key's letters reach at most.
constexpr size_t kKeyReach = 16;

/// The header's bytes, taken in one read, with kKeyReach zero bytes after them: past its end a
/// header reads as zeros. The scans count with a 16-bit position, so a header longer than that
/// can hold fails.
std::vector<uint8_t> headerBytes(const ByteSource& hd) {
    if (int64_t(hd.size()) - 10 > 32767) throw ReadError("Overflow");
    std::vector<uint8_t> bytes(size_t(hd.size()) + kKeyReach);
    hd.read(0, bytes.data(), bytes.size());
    return bytes;
}

/// Scans the header from the 1-based position `from` for a key, given as (offset, letter)
/// pairs tested without case, the first at offset 0. Returns the key's position, or 0 when it is
/// not there.
int64_t scanHd(const std::vector<uint8_t>& bytes, int64_t from,
               std::initializer_list<std::pair<int, char>> letters) {
    const int64_t last = int64_t(bytes.size() - kKeyReach) - 10;
    const int64_t first = std::max<int64_t>(from, 1);
    if (first > last) return 0;
    const auto fits = [&](const uint8_t* at) {
        return std::all_of(letters.begin() + 1, letters.end(),
                           [at](const auto& l) { return sameLetter(at[l.first], l.second); });
    };
    const size_t n = size_t(last - first + 1);
    const size_t at = findKey(bytes.data() + (first - 1), n, letters.begin()->second, fits);
    return at < n ? first + int64_t(at) : 0;
}

/// Six characters from the 1-based position `pos` through Val.
double sixChars(const ByteSource& hd, int64_t pos) {
    if (pos < 1) throw ReadError("Bad record number");
    return Val(hd.text(uint64_t(pos - 1), 6));
}

void Dt1Header(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto hd = ctx.open(st.HdPath);
    const std::vector<uint8_t> bytes = headerBytes(*hd);
    // A key that is missing leaves its value position just past the start of the file, and
    // what is read from there is whatever stands there.
    int64_t v = scanHd(bytes, 1,
                       {{0, 'N'},
                        {1, 'U'},
                        {2, 'M'},
                        {4, 'E'},
                        {10, 'T'},
                        {11, 'R'},
                        {12, 'A'},
                        {13, 'C'},
                        {15, 'S'}}) +
                21; // NUMBER OF TRACES
    st.TraceCount = checkedInt32(sixChars(*hd, v));
    v = scanHd(bytes, v, {{0, 'P'}, {1, 'T'}, {2, 'S'}, {3, '/'}, {4, 'T'}, {5, 'R'}, {6, 'C'}}) +
        10; // PTS/TRC
    st.Dt1Samples = checkedInt32(sixChars(*hd, v));
    st.TraceLength = st.Dt1Samples;
    v = scanHd(bytes, v,
               {{0, 'T'}, {1, 'I'}, {2, 'M'}, {3, 'E'}, {5, 'W'}, {6, 'I'}, {7, 'N'}, {8, 'D'}}) +
        14; // TIME WINDOW
    st.TimeWindowNs = sixChars(*hd, v);
    const float interval =
        f32(checkedDiv(1e-9 * st.TimeWindowNs, double(st.Dt1Samples))); // kept as f32
    st.SampleRate = checkedDiv(1.0, double(interval));
    fitTraceLength(st, st.Dt1Samples);
}

void Dt1Traces(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = openSourceSized(ctx);
    st.Dt1DataPos = 129;
    // The raw trace holds Dt1Samples + 1 values and the working trace Sp_Samples; a copy that
    // does not fit both fails the read. Only the samples copied are read, and only those the file
    // holds: past its end a trace reads as zeros, which move neither extreme.
    const size_t rawCount = checkedCount(st.Dt1Samples) + 1;
    LentTrace trace(checkedCount(std::max<int32_t>(st.Sp_Samples, 0)));
    // Each trace has a 128-byte trace header in front of it, skipped.
    const int64_t stride = int64_t(st.Dt1Samples) * 2 + 128;
    const int64_t upto = st.PadWithZero ? st.Dt1Samples : st.Sp_Samples;
    const size_t copy = size_t(std::max<int64_t>(upto, 0));
    const bool fits = copy <= rawCount && copy <= trace.size();
    const uint64_t size = src->size();
    std::vector<int16_t> raw(fits ? size_t(std::min<uint64_t>(copy, (size + 1) / 2)) : 0);
    TraceOutput out(ctx, st.TempPath);
    for (int32_t t = 0; t < st.TraceCount; ++t) {
        if (!out.next(t)) break;
        const int64_t pos = checkedInt32(double(st.Dt1DataPos) + double(stride) * t);
        if (!fits) throw ReadError("Subscript out of range");
        const uint64_t off = uint64_t(pos - 1);
        const size_t held = off < size ? size_t(std::min<uint64_t>(copy, (size - off + 1) / 2)) : 0;
        if (held > 0) src->read(off, raw.data(), held * 2);
        float* values = trace.data();
        for (size_t i = 0; i < held; ++i) {
            const float v = raw[i];
            values[i] = v;
            st.Dt1Max = std::max(st.Dt1Max, v);
            st.Dt1Min = std::min(st.Dt1Min, v);
        }
        trace.holds(held);
        out.write(trace.values());
    }
    out.finish();
    // Full scale is the larger of the extremes, the same both ways.
    const float fs = -st.Dt1Min <= st.Dt1Max ? f32(Fix(st.Dt1Max)) : f32(Fix(st.Dt1Min) * -1);
    st.FullScalePos = st.FullScaleNeg = fs >= 33000.0f ? 32767.0f : fs;
}

} // namespace

void ReadDt1(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    st.SampleBits = 16;
    st.Dt1Max = 0;
    st.Dt1Min = 0;
    st.HdPath = findCompanion(replaceAllNoCase(ctx.sourcePath, ".DT1", ".HD"));
    withCorruptedFileHandler(ctx, [&] {
        Dt1Header(ctx);
        Dt1Traces(ctx);
    });
}

} // namespace kv
