// The failure report, channel choice, sample decoding, full scale and trace loop of the readers
// of the "all variants" entries.
#include "import/standard_reading.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kv {

int chosenChannel(const ProgramState& st, int channels) {
    const int c = std::max<int>(st.ImportChannel, 1);
    if (c > channels)
        throw UnreadableFile(
            "Channel " + std::to_string(c) + " is chosen in the options, but the file has only " +
            std::to_string(channels) + (channels == 1 ? " channel." : " channels."));
    return c - 1;
}

int sampleBytes(SampleCoding c) {
    switch (c) {
    case SampleCoding::U8:
        return 1;
    case SampleCoding::S16:
    case SampleCoding::U16:
        return 2;
    case SampleCoding::S24:
        return 3;
    case SampleCoding::S32:
    case SampleCoding::F32:
        return 4;
    case SampleCoding::F64:
        return 8;
    }
    return 1;
}

namespace {

template <typename One>
void decodeRun(const uint8_t* p, size_t stride, size_t n, float* out, One one) {
    for (size_t i = 0; i < n; ++i, p += stride)
        out[i] = one(p);
}

} // namespace

void decodeSamples(const uint8_t* p, size_t stride, size_t n, SampleCoding c, float* out) {
    // One loop per coding, so the choice is made once per run and not once per sample.
    switch (c) {
    case SampleCoding::U8:
        decodeRun(p, stride, n, out, [](const uint8_t* q) { return float(int(q[0]) - 128); });
        return;
    case SampleCoding::S16:
        decodeRun(p, stride, n, out,
                  [](const uint8_t* q) { return float(int16_t(uint16_t(q[0] | q[1] << 8))); });
        return;
    case SampleCoding::U16:
        decodeRun(p, stride, n, out,
                  [](const uint8_t* q) { return float(int(q[0] | q[1] << 8) - 32768); });
        return;
    case SampleCoding::S24:
        // The top byte carries the sign: shift it into the top of 32 bits and back.
        decodeRun(p, stride, n, out, [](const uint8_t* q) {
            const uint32_t u = uint32_t(q[0]) << 8 | uint32_t(q[1]) << 16 | uint32_t(q[2]) << 24;
            return float(int32_t(u) >> 8);
        });
        return;
    case SampleCoding::S32:
        decodeRun(p, stride, n, out, [](const uint8_t* q) {
            const uint32_t u =
                uint32_t(q[0]) | uint32_t(q[1]) << 8 | uint32_t(q[2]) << 16 | uint32_t(q[3]) << 24;
            return float(int32_t(u));
        });
        return;
    case SampleCoding::F32:
        decodeRun(p, stride, n, out, [](const uint8_t* q) {
            float f;
            std::memcpy(&f, q, 4);
            return f;
        });
        return;
    case SampleCoding::F64:
        decodeRun(p, stride, n, out, [](const uint8_t* q) {
            double d;
            std::memcpy(&d, q, 8);
            return float(d);
        });
        return;
    }
}

void setIntegerFullScale(ProgramState& st, int bits) {
    const double half = std::ldexp(1.0, bits - 1);
    st.FullScalePos = float(half - 1.0);
    st.FullScaleNeg = float(half);
}

void setFloatFullScale(ProgramState& st, double largestAbs) {
    float v = float(largestAbs);
    // A silent recording still needs a scale to draw against.
    if (!(v > 0.0f) || !std::isfinite(v)) v = 1.0f;
    st.FullScalePos = v;
    st.FullScaleNeg = v;
}

void writeThinnedTraces(ImportContext& ctx, int64_t rawPerTrace,
                        const std::function<void(int32_t k, std::vector<float>& raw)>& fill) {
    ProgramState& st = ctx.st;
    const int ds = std::max<int>(st.NewDS, 1);
    const ThinMode mode = st.DownsampleMode == 0 ? ThinMode::Average : ThinMode::Decimate;
    TraceOutput out(ctx, st.TempPath);
    std::vector<float> raw(static_cast<size_t>(rawPerTrace));
    std::vector<float> thinned, trace(static_cast<size_t>(st.Sp_Samples));
    for (int32_t k = 0; k < st.TraceCount; ++k) {
        if (!out.next(k)) break;
        std::fill(raw.begin(), raw.end(), 0.0f);
        fill(k, raw);
        if (ds == 1 && raw.size() == trace.size()) {
            out.write(raw);
            continue;
        }
        thinTrace(raw.data(), raw.size(), ds, mode, thinned);
        const size_t n = std::min(thinned.size(), trace.size());
        std::copy_n(thinned.begin(), n, trace.begin());
        std::fill(trace.begin() + long(n), trace.end(), 0.0f);
        out.write(trace);
    }
    out.finish();
}

std::string infoLine(const std::string& label, const std::string& value) {
    return label + " : " + value;
}

} // namespace kv
