// Export to a GSSI-compatible DZT file: a 1024-byte header with the few fields other radar
// software needs, then the working traces as unsigned 16-bit samples centred on 32768, placed
// two bytes behind the header exactly where our own DZT import looks for them.
#include "commands/export.h"

#include "platform/files.h"
#include "platform/numeric.h"
#include "platform/read_error.h"
#include "platform/trace_store.h"
#include "state/workbench.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace kv {

namespace {

/// A value that fits the 32-bit integer it is stored in, rounded half to even; nothing when
/// the arithmetic fails (division by zero, overflow), which the writer passes over.
std::optional<int32_t> roundedInt32(double x) {
    const double r = roundHalfEven(x);
    if (!(r >= -2147483648.0 && r <= 2147483647.0)) return std::nullopt;
    return static_cast<int32_t>(r);
}

/// Writes quietly: the export goes on whatever the target does. The bytes go to a file beside
/// the target that starts as a copy of it, renamed over it at the end, so that a kill half-way
/// leaves the old file; a write that failed leaves it too.
struct QuietFile {
    ReplacingFile replacement;
    TraceFileWriter f;
    bool ok = false;
    explicit QuietFile(const std::string& path) : replacement(path, true) {
        try {
            f.open(replacement.path(), true);
            ok = true;
        } catch (const WriteError&) {
        } catch (const ReadError&) { // no scratch file could be made
        }
    }
    void put(int64_t pos1, const void* data, size_t n) {
        if (!ok) return;
        try {
            f.writeBytes(pos1, data, n);
        } catch (const WriteError&) {
            ok = false;
        } catch (const ReadError&) {
        }
    }
    bool finish() {
        if (!ok) return false;
        try {
            f.length();
            f.close();
            return replacement.commit();
        } catch (const WriteError&) {
            return false;
        }
    }
    void i16(int64_t pos1, double v) {
        if (!(v >= -32768.0 && v <= 32767.0)) return; // overflow: the field is left alone
        const int16_t x = static_cast<int16_t>(v);
        put(pos1, &x, 2);
    }
};

} // namespace

bool DztWrite(Workbench& wb, const std::string& target) {
    ProgramState& st = wb.st;
    auto progress = wb.host.progress(target, st.TraceCount);
    if (progress) progress->setValue(0);
    QuietFile out(target);

    out.i16(1, 255);
    out.i16(3, 1024);
    out.i16(5, st.Sp_Samples);
    out.i16(7, 16);
    if (st.SampleRate != 0.0) {
        const double range = 1e9 * st.Sp_Samples / st.SampleRate;
        if (std::fabs(range) <= std::numeric_limits<float>::max()) {
            const float r = f32(range);
            out.put(27, &r, 4);
        }
    }
    out.i16(41, 400);
    out.i16(47, 600);
    out.i16(53, 1);

    // Each sample is stored as a 32-bit value while the position moves on by two bytes only:
    // its upper half is overwritten by the next sample, and the last one leaves two spare
    // bytes at the end of the file. A trace is put together in memory first, with the same
    // overlap; its last two bytes are overwritten by the next trace, so only the last trace's
    // are written, at the end.
    const int32_t n = std::max<int32_t>(st.Sp_Samples, 0);
    std::vector<float> in(size_t(n) + 1, 0.0f);
    std::vector<uint8_t> bytes(2 * size_t(n) + 2);
    int32_t v = 0;
    int64_t pos = 1027;
    for (int32_t k = 0; k < st.TraceCount; ++k) {
        try {
            readTrace(st.TempPath, 1 + int64_t(k) * n * 4, in);
        } catch (const ReadError&) {
            // A failed read leaves the buffer as it was.
        }
        std::fill(bytes.begin(), bytes.end(), 0);
        for (int32_t j = 0; j < n; ++j) {
            const float s = in[size_t(j)];
            std::optional<int32_t> r;
            if (st.FullScalePos == 32767.0f) {
                r = roundedInt32(double(s) + 32768.0);
            } else if (st.FullScalePos != 0.0f) {
                r = roundedInt32(double(f32(st.FullScalePos + s)) * 65536.0 /
                                 double(f32(2.0 * st.FullScalePos)));
            }
            if (r) v = *r; // a failed conversion keeps the previous value
            if (st.FullScalePos == 32767.0f && v > 65536) v = 65536;
            std::memcpy(&bytes[2 * size_t(j)], &v, 4);
        }
        out.put(pos, bytes.data(), bytes.size() - 2);
        pos += 2 * int64_t(n);
        if (progress) progress->setValue(k);
    }
    if (st.TraceCount > 0) out.put(pos, &bytes[bytes.size() - 2], 2);
    return out.finish();
}

} // namespace kv
