// SEG-Y recordings (.sgy), through two entries of the import dialog: Seismic (the seismic
// industry's layout, sample interval in microseconds) and Radsys (GPR files with the counts in
// the first trace header, interval in picoseconds). Only three numbers are taken from fixed
// places; the text header and all other trace-header fields are ignored, and the byte order is
// decided by the format code alone.
#include "import/reader.h"
#include "import/seismic_samples.h"

#include "platform/message_title.h"
#include "platform/numeric.h"

namespace kv {

namespace {

constexpr int32_t kDataPos = 3841; // 1-based position of the first sample of the first trace

/// A 16-bit header field at the 1-based position `pos1`, as an unsigned number.
float field16(const ByteSource& src, int64_t pos1, bool lowFirst) {
    return HexToNumber(src, uint64_t(pos1 - 1), 2, lowFirst);
}

int32_t sourceLengthOf(const ByteSource& src) {
    if (src.size() > uint64_t(INT32_MAX)) throw ReadError("Overflow");
    return static_cast<int32_t>(src.size());
}

/// Traces that fit between `from` and the end of the file, rounded to the nearest.
int32_t traceCountFrom(const ProgramState& st, double from, double samples) {
    return checkedInt32(checkedDiv(double(st.SourceLength) - from, st.NewDS * samples + 240));
}

void notSupported(ImportContext& ctx) {
    ctx.wb.host.message("Data format not supported by Kelvorandine!", kMessageTitle,
                        MsgIcon::Information);
    ctx.st.TempPath.clear();
}

/// Full scale from the extremes: the larger of the two sides, whole units toward zero. A value
/// above 33000 (or reaching it, for the high-first readers) is clipped to 32767.
void setFullScale(ProgramState& st, const Extremes& e, bool highFirstReader, bool maxOnly) {
    float fs;
    if (maxOnly || -e.min <= e.max)
        fs = float(Fix(e.max));
    else
        fs = float(Fix(e.min) * -1);
    if (highFirstReader ? fs >= 33000.0f : fs > 33000.0f) fs = 32767.0f;
    st.FullScalePos = fs;
    st.FullScaleNeg = fs;
}

/// The trace readers. `samples` is SgySamples; `ext.min` comes in as the entry left it.
void ReadLow16(ImportContext& ctx, const ByteSource& src, int32_t samples, Extremes& ext) {
    const int64_t stride = int64_t(samples) * 2 * ctx.st.NewDS + 240;
    copySeismicTraces(ctx, src, SampleCoding::Int16Low, kDataPos, stride, samples, ext);
    setFullScale(ctx.st, ext, false, false);
}

void ReadLow32Float(ImportContext& ctx, const ByteSource& src, int32_t samples, Extremes& ext) {
    // Format 1 is IBM float in the standard; it is taken as IEEE like format 5.
    const int64_t stride = int64_t(samples) * 4 * ctx.st.NewDS + 240;
    copySeismicTraces(ctx, src, SampleCoding::Float32Low, kDataPos, stride, samples, ext);
    setFullScale(ctx.st, ext, false, false);
}

void ReadHigh16(ImportContext& ctx, const ByteSource& src, int32_t samples, Extremes& ext) {
    // Reading low byte first from one byte further on swaps the bytes without a loop: each value
    // takes its low byte from the second byte of a sample and its high byte from the first byte
    // of the next one. The start is fixed at 3842.
    const int64_t stride = int64_t(samples) * 2 * ctx.st.NewDS + 240;
    copySeismicTraces(ctx, src, SampleCoding::Int16Low, kDataPos + 1, stride, samples, ext);
    setFullScale(ctx.st, ext, true, true);
}

void ReadHighFloat(ImportContext& ctx, const ByteSource& src, int32_t samples, Extremes& ext) {
    ProgramState& st = ctx.st;
    st.TraceCount =
        checkedInt32(checkedDiv(double(st.SourceLength) - 3840, double(samples) * 4 + 240));
    const int64_t stride = int64_t(samples) * 4 * st.NewDS + 240;
    copySeismicTraces(ctx, src, SampleCoding::Float32High, kDataPos, stride, samples, ext);
    setFullScale(st, ext, true, false);
}

/// What a header step hands on: the trace reader it chose, or nothing when it refused the file.
using TraceStep = std::function<void()>;

/// Runs the header step under the corrupted-file handler and then, outside it, the trace reader
/// the header chose: a failure among the traces passes through to the Import command, which
/// ends the open without a message.
void headerThenTraces(ImportContext& ctx, const std::function<TraceStep()>& header) {
    TraceStep traces;
    withCorruptedFileHandler(ctx, [&] { traces = header(); });
    if (traces) traces();
}

void HeaderSeismic(ImportContext& ctx, const ByteSource& src, Extremes& ext) {
    ProgramState& st = ctx.st;
    headerThenTraces(ctx, [&]() -> TraceStep {
        const int16_t format = checkedInt16(field16(src, 3225, true));
        const bool lowFirst = format < 9;
        int32_t samples = 0;
        if (lowFirst) {
            samples = checkedInt32(field16(src, 3221, true));
            st.Sp_Samples = samples;
            const float interval = field16(src, 3219, true);
            st.SampleRate = checkedDiv(1.0, 1e-6 * double(interval));
            // The sample width is missing from this divisor: with 2-byte samples the count is
            // about twice too high and the surplus traces read past the end, as zeros.
            st.TraceCount = traceCountFrom(st, kDataPos, st.Sp_Samples);
            if (format == 3 || format == 1 || format == 5) {
                fitTraceLength(st, samples);
                st.TraceLength = samples;
                if (format == 3) return [&, samples] { ReadLow16(ctx, src, samples, ext); };
                return [&, samples] { ReadLow32Float(ctx, src, samples, ext); };
            }
        } else {
            const int16_t high = checkedInt16(field16(src, 3225, false));
            samples = checkedInt32(field16(src, 3221, false));
            st.Sp_Samples = samples;
            const float interval = field16(src, 3717, false);
            st.SampleRate = checkedDiv(1.0, 1e-6 * double(interval));
            st.TraceCount = traceCountFrom(st, 3840, st.Sp_Samples);
            fitTraceLength(st, samples);
            st.TraceLength = samples;
            st.TraceCount = traceCountFrom(st, kDataPos, st.Sp_Samples);
            if (high == 3 || high == 1) {
                fitTraceLength(st, samples);
                if (high == 3) return [&, samples] { ReadHigh16(ctx, src, samples, ext); };
                return [&, samples] { ReadHighFloat(ctx, src, samples, ext); };
            }
        }
        notSupported(ctx);
        return {};
    });
}

void HeaderRadsys(ImportContext& ctx, const ByteSource& src, Extremes& ext) {
    ProgramState& st = ctx.st;
    headerThenTraces(ctx, [&]() -> TraceStep {
        // Always 16-bit: the format code only tells the byte order, and nothing is refused.
        const bool lowFirst = checkedInt16(field16(src, 3225, true)) < 9;
        const int32_t samples = checkedInt32(field16(src, 3715, lowFirst));
        const float interval = field16(src, 3717, lowFirst);
        st.SampleRate = checkedDiv(1.0, 1e-12 * double(interval));
        // The count is taken with the trace length as it stood before this file.
        st.TraceCount = traceCountFrom(st, 3840, st.Sp_Samples);
        fitTraceLength(st, samples);
        st.TraceLength = samples;
        if (lowFirst) return [&, samples] { ReadLow16(ctx, src, samples, ext); };
        return [&, samples] { ReadHigh16(ctx, src, samples, ext); };
    });
}

/// The minimum outlives the import, also one that failed half-way through its traces.
struct KeepMinimum {
    ProgramState& st;
    const Extremes& ext;
    ~KeepMinimum() { st.SgyMin = ext.min; }
};

} // namespace

void ReadSeismic(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    st.SampleBits = 16;
    st.SourceLength = sourceLengthOf(*src);
    Extremes ext;
    KeepMinimum keep{st, ext};
    HeaderSeismic(ctx, *src, ext);
}

void ReadRadsys(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    st.SampleBits = 16;
    st.SourceLength = sourceLengthOf(*src);
    Extremes ext;
    ext.min = st.SgyMin; // kept from the previous Radsys import, deliberately
    KeepMinimum keep{st, ext};
    HeaderRadsys(ctx, *src, ext);
}

} // namespace kv
