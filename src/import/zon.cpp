// Zon radar recordings (.dt): one binary file whose header has no fixed size. Its parts are
// found by byte signatures: the block that holds the trace length, the time window written
// as text with a mantissa and an exponent, and the mark in front of the traces. Traces are
// 16-bit, with a 4-byte gap between them.
#include "import/reader.h"

#include "platform/numeric.h"

#include <cmath>

namespace kv {

namespace {

/// Signature bytes are compared through their hexadecimal text read as a decimal number, so
/// 0x20 matches 20; a byte whose hexadecimal text holds a letter never matches.
/// The hexadecimal text is taken digit by digit (the header is scanned byte by byte, twice).
bool hexTextIs(uint8_t byte, int decimal) {
    const int high = byte >> 4, low = byte & 0xF;
    if (high > 9 || low > 9) return false;
    return high * 10 + low == decimal;
}

bool signatureAt(const ByteSource& src, int64_t pos1, const int (&sig)[4]) {
    for (int i = 0; i < 4; ++i)
        if (!hexTextIs(src.u8(uint64_t(pos1 - 1 + i)), sig[i])) return false;
    return true;
}

void ZonBody(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = openSourceSized(ctx);
    const int64_t last = int64_t(st.SourceLength) - 10;

    // The block with the trace length; before position 100 it is not looked for. A scan that
    // finds nothing leaves its position one past where it stopped.
    static const int kBlock[4] = {20, 48, 15, 4};
    int64_t p = 100;
    while (p <= last && !signatureAt(*src, p, kBlock))
        ++p;
    st.ZonSamples = src->i16le(uint64_t(p + 13 - 1));

    // The time window: the third point from p + 35 is the point of its mantissa.
    int64_t r = p + 35;
    for (int points = 0; r <= last; ++r) {
        if (src->u8(uint64_t(r - 1)) == '.' && ++points == 3) break;
    }
    const int64_t q = r - 2;
    const std::string mantissa = src->text(uint64_t(q - 1), 8).substr(0, 7);
    int64_t e = p + 35;
    for (int64_t i = q; i <= q + 20; ++i) {
        if (src->u8(uint64_t(i - 1)) == 'E') {
            e = i;
            break;
        }
    }
    double exponent = Val(src->text(uint64_t(e), 3));
    // The sign is taken from the byte at e itself, which is the "E" whenever one was found.
    if (src->u8(uint64_t(e - 1)) == '-') exponent = -exponent;
    // In seconds, although the name is shared with the readers that keep nanoseconds.
    st.TimeWindowNs = Val(mantissa) * std::pow(10.0, exponent);
    if (!std::isfinite(st.TimeWindowNs)) throw ReadError("Overflow");
    st.SampleRate = checkedDiv(double(st.ZonSamples), st.TimeWindowNs);

    // The traces follow the first of four marks after the exponent.
    static const int kMarks[4][4] = {{52, 0, 0, 0}, {52, 37, 0, 0}, {52, 38, 0, 0}, {52, 39, 0, 0}};
    st.ZonDataPos = 0;
    for (int64_t s = std::max<int64_t>(e, 1); s <= last && st.ZonDataPos == 0; ++s) {
        for (const auto& mark : kMarks) {
            if (signatureAt(*src, s, mark)) {
                st.ZonDataPos = checkedInt32(double(s) + 4);
                break;
            }
        }
    }
    // The count leaves the gaps out, so the last traces read past the end and are zero.
    st.TraceCount = checkedInt32(
        checkedDiv(double(st.SourceLength) - st.ZonDataPos, double(st.ZonSamples) * 2));
    fitTraceLength(st, st.ZonSamples);
    st.TraceLength = st.ZonSamples;

    std::vector<int16_t> raw(checkedCount(st.ZonSamples) + 1);
    std::vector<float> trace(checkedCount(std::max<int32_t>(st.Sp_Samples, 0)));
    const double stride = double(st.ZonSamples) * 2 * st.NewDS + 4;
    const int64_t upto = st.PadWithZero ? st.ZonSamples : st.Sp_Samples;
    TraceOutput out(ctx, st.TempPath);
    for (int32_t t = 0; t < st.TraceCount; ++t) {
        if (!out.next(t)) break;
        std::fill(trace.begin(), trace.end(), 0.0f);
        const int32_t pos = checkedInt32(st.ZonDataPos + stride * t);
        if (pos < 1) throw ReadError("Bad record number"); // no mark was found
        src->read(uint64_t(pos - 1), raw.data(), raw.size() * 2);
        copySamples(raw, trace, upto);
        out.write(trace);
    }
    out.finish();
    st.FullScalePos = 32767;
    st.FullScaleNeg = 32768;
}

} // namespace

void ReadZon(ImportContext& ctx) {
    ctx.st.SampleBits = 16;
    withCorruptedFileHandler(ctx, [&] { ZonBody(ctx); });
}

} // namespace kv
