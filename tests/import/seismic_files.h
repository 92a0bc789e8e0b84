// Small exact SEG-Y and SEG-2 files for the seismic reader tests, built field by field at the
// 1-based positions the readers use.
#pragma once

#include "support/test_home.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kv::test {

/// A started workbench that imports byte images saved under one file name, with the import
/// dialog's filter index given per open or taken from the default.
struct FileCase : Bench {
    FileCase(std::string name, int filter) : name_(std::move(name)), filter_(filter) { start(); }
    void open(const std::vector<uint8_t>& bytes) { open(bytes, filter_); }
    void open(const std::vector<uint8_t>& bytes, int filter) {
        const std::string p = home.file(name_);
        writeFile(p, bytes);
        import(p, filter);
    }
    bool loaded() const { return !st.TempPath.empty(); }
    /// The text of the one message shown, or "" when there were none or several.
    std::string onlyMessage() const {
        return host.messages.size() == 1 ? host.messages[0].text : "";
    }

  private:
    std::string name_;
    int filter_;
};

/// A growing byte image with writers at 1-based positions, either byte order.
struct ByteImage {
    std::vector<uint8_t> b;
    void ensure(size_t n) {
        if (b.size() < n) b.resize(n, 0);
    }
    void put(size_t pos1, uint64_t v, int n, bool low) {
        ensure(pos1 - 1 + size_t(n));
        for (int i = 0; i < n; ++i) {
            const int shift = 8 * (low ? i : n - 1 - i);
            b[pos1 - 1 + size_t(i)] = uint8_t(v >> shift);
        }
    }
    void put16(size_t pos1, int v, bool low = true) { put(pos1, uint16_t(v), 2, low); }
    void put32(size_t pos1, int64_t v, bool low = true) { put(pos1, uint32_t(v), 4, low); }
    void putF32(size_t pos1, float f, bool low = true) {
        uint32_t u;
        std::memcpy(&u, &f, 4);
        put(pos1, u, 4, low);
    }
    void putF64(size_t pos1, double d) {
        uint64_t u;
        std::memcpy(&u, &d, 8);
        put(pos1, u, 8, true);
    }
    void putText(size_t pos1, const std::string& s) {
        ensure(pos1 - 1 + s.size());
        std::memcpy(b.data() + pos1 - 1, s.data(), s.size());
    }
};

/// A SEG-Y file: 3600 header bytes, then traces of a 240-byte header and `samples` values.
/// Format 3 writes 16-bit integers, 1 and 5 32-bit floats. The interval goes into the binary
/// header at 3217 and 3219 and into every trace header at 117, the sample count at 3221 and
/// into every trace header at 115.
inline std::vector<uint8_t> segyBytes(bool low, int format, int interval,
                                      const std::vector<std::vector<double>>& traces,
                                      int samples = -1) {
    ByteImage img;
    const int n = samples >= 0 ? samples : (traces.empty() ? 0 : int(traces[0].size()));
    const int w = format == 3 ? 2 : 4;
    img.ensure(3600);
    img.put16(3217, interval, low);
    img.put16(3219, interval, low);
    img.put16(3221, n, low);
    img.put16(3225, format, low);
    size_t pos = 3601;
    for (const auto& t : traces) {
        img.put16(pos + 114, n, low);
        img.put16(pos + 116, interval, low);
        img.ensure(pos - 1 + 240 + size_t(n) * size_t(w));
        for (size_t i = 0; i < t.size() && i < size_t(n); ++i) {
            const size_t at = pos + 240 + i * size_t(w);
            if (w == 2)
                img.put16(at, int(t[i]), low);
            else
                img.putF32(at, float(t[i]), low);
        }
        pos += 240 + size_t(n) * size_t(w);
    }
    return img.b;
}

/// A SEG-2 file with one trace pointer block and equal traces: `key` is written in the file
/// descriptor, then the value text after it (e.g. "SAMPLE___INTERVAL", " 100").
struct Seg2File {
    bool low = true;
    int format = 2;
    int samples = 4;
    int descSize = 32;
    std::string key = "SAMPLE___INTERVAL";
    std::string value = " 100";
    std::vector<std::vector<double>> traces;
};

inline std::vector<uint8_t> seg2Bytes(const Seg2File& s) {
    ByteImage img;
    const bool low = s.low;
    img.put(1, low ? 0x3A55 : 0x3A55, 2, low); // 55 3A low first, 3A 55 high first
    img.put16(3, 1, low);
    img.put16(5, 4 * int(s.traces.size()), low);
    img.put16(7, int(s.traces.size()), low);
    const size_t stringsAt = 33 + 4 * s.traces.size();
    img.putText(stringsAt + 2, s.key + s.value + std::string(1, '\0'));
    size_t desc = stringsAt + 64; // 1-based start of the first descriptor
    const int w = s.format == 1 ? 2 : s.format == 5 ? 8 : 4;
    for (size_t t = 0; t < s.traces.size(); ++t) {
        img.put32(33 + 4 * t, int64_t(desc - 1), low);
        img.put16(desc, 0x4422, low);
        img.put16(desc + 2, s.descSize, low);
        img.put32(desc + 4, s.samples * w, low);
        img.put32(desc + 8, s.samples, low);
        img.put(desc + 12, uint64_t(s.format), 1, true);
        const size_t data = desc + size_t(s.descSize);
        img.ensure(data - 1 + size_t(s.samples) * size_t(w));
        for (size_t i = 0; i < s.traces[t].size(); ++i) {
            const size_t at = data + i * size_t(w);
            const double v = s.traces[t][i];
            if (s.format == 1) img.put16(at, int(v));
            if (s.format == 2) img.put32(at, int64_t(v));
            if (s.format == 4) img.putF32(at, float(v));
            if (s.format == 5) img.putF64(at, v);
        }
        desc = data + size_t(s.samples) * size_t(w);
    }
    return img.b;
}

} // namespace kv::test
