// SEG-2 recordings (.sg2), through two entries of the import dialog that differ only in the unit
// of the sample interval: SEG-2 (seconds) and SPRScan ERA (picoseconds). The headers are read in
// the byte order the file announces; the samples are always taken low byte first.
#include "import/key_scan.h"
#include "import/reader.h"
#include "import/seismic_samples.h"

#include "platform/numeric.h"

#include <algorithm>

namespace kv {

namespace {

/// True when the 21 bytes at `w`, whose S stands already, have the shape SAMPLE???INTERVAL
/// (letters compared without case, only seven of them tested).
bool isIntervalKey(const uint8_t* w) {
    auto is = [&](int i, char c) { return sameLetter(w[i], c); };
    return is(1, 'A') && is(2, 'M') && is(4, 'L') && is(10, 'N') && is(12, 'E') && is(16, 'L');
}

/// The 1-based position of the first interval key, scanning positions 1 to length - 10. When
/// none matches the position is where the scan ended (one past its last, and at least 1).
int64_t findIntervalKey(const ByteSource& src) {
    const int64_t last = int64_t(src.size()) - 10;
    constexpr size_t kBlock = 1 << 16;
    // A block, or the whole file when it is shorter: a small file clears no 64 KiB buffer.
    std::vector<uint8_t> buf(size_t(std::clamp<int64_t>(last, 0, int64_t(kBlock))) + 21);
    for (int64_t start = 1; start <= last; start += int64_t(kBlock)) {
        src.read(uint64_t(start - 1), buf.data(), buf.size());
        const int64_t n = std::min<int64_t>(int64_t(kBlock), last - start + 1);
        const size_t at = findKey(buf.data(), size_t(n), 'S', isIntervalKey);
        if (at < size_t(n)) return start + int64_t(at);
    }
    return std::max<int64_t>(1, last + 1);
}

SampleCoding codingOf(int16_t format, int& strideFactor) {
    switch (format) {
    case 1:
        strideFactor = 2;
        return SampleCoding::Int16Low;
    case 2:
        strideFactor = 4;
        return SampleCoding::Int32Low;
    case 4:
        // The stride counts 8 bytes a sample for 4-byte floats (and 16 for doubles); kept so.
        strideFactor = 8;
        return SampleCoding::Float32Low;
    default:
        strideFactor = 16;
        return SampleCoding::Float64Low;
    }
}

} // namespace

void ReadSg2(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    withCorruptedFileHandler(ctx, [&] {
        auto src = ctx.openSource();
        if (src->size() > uint64_t(INT32_MAX)) throw ReadError("Overflow");
        st.SourceLength = static_cast<int32_t>(src->size());
        st.SampleBits = 16;
        bool lowFirst;
        if (src->u8(0) == 0x55 && src->u8(1) == 0x3A)
            lowFirst = true;
        else if (src->u8(0) == 0x3A && src->u8(1) == 0x55)
            lowFirst = false;
        else
            throw ReadError("not a SEG-2 file");

        const int32_t firstTrace = checkedInt32(HexToNumber(*src, 32, 4, lowFirst));
        st.TraceCount = checkedInt32(HexToNumber(*src, 6, 2, lowFirst));
        // firstTrace is a 0-based offset; the fields below are at its 1-based p + 3 and p + 9.
        const int64_t p = firstTrace;
        const int32_t descSize = checkedInt32(HexToNumber(*src, uint64_t(p + 2), 2, lowFirst));
        const int32_t samples = checkedInt32(HexToNumber(*src, uint64_t(p + 8), 4, lowFirst));

        const int64_t q = findIntervalKey(*src);
        // Whole units only: a SEG-2 interval in seconds below 0.5 becomes 0 and fails below.
        const int16_t interval = checkedInt16(Val(src->text(uint64_t(q - 1 + 17), 6)));
        if (st.IsSprScan)
            st.SampleRate = checkedDiv(1.0, 1e-12 * interval);
        else
            st.SampleRate = checkedDiv(1.0, double(interval));

        const int16_t format = int16_t(src->u8(uint64_t(p + 12)));
        const int64_t dataPos = int64_t(descSize) + firstTrace + 1;
        // Other codes (3, the 20-bit packed samples, among them) do nothing at all.
        if (format != 1 && format != 2 && format != 4 && format != 5) return;
        fitTraceLength(st, samples);
        st.TraceLength = samples;
        int factor = 0;
        const SampleCoding coding = codingOf(format, factor);
        const int64_t stride = int64_t(samples) * factor + descSize;
        Extremes ext;
        copySeismicTraces(ctx, *src, coding, dataPos, stride, samples, ext);
        float fs = -ext.min <= ext.max ? float(Fix(ext.max)) : float(Fix(ext.min) * -1);
        if (fs >= 33000.0f) fs = 32767.0f;
        st.FullScalePos = fs;
        st.FullScaleNeg = fs;
    });
}

} // namespace kv
