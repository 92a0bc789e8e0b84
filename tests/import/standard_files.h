// Generated SEG-Y and SEG-2 files for the standards-conformant entries, written field by field
// in either byte order, and a workbench that runs one of those readers on a file directly.
#pragma once

#include "commands/lifecycle.h"
#include "commands/open.h"
#include "import/standard_readers.h"
#include "support/test_home.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kv::test {

/// A started workbench that runs a reader's entry point the way the open step hands it over:
/// working paths set, the file information cleared, the lifecycle's clean-up in the context.
struct StdReader : Bench {
    StdReader() { start(); }
    void run(ReaderFn read, const std::string& path) {
        setWorkingPaths(st);
        st.SourceInfoLines.clear();
        ImportContext ctx(wb, path);
        ctx.cleanSet = [this] { CleanSet(wb); };
        read(ctx);
        dialogFileName = ctx.dialogFileName;
    }
    void run(ReaderFn read, const std::vector<uint8_t>& bytes, const std::string& name) {
        const std::string p = home.file(name);
        writeFile(p, bytes);
        run(read, p);
    }
    void segy(const std::vector<uint8_t>& bytes) { run(ReadSegyStd, bytes, "x.sgy"); }
    void seg2(const std::vector<uint8_t>& bytes) { run(ReadSeg2Std, bytes, "x.seg2"); }
    bool loaded() const { return !st.TempPath.empty() && !dialogFileName.empty(); }
    /// The text of the one message shown, or "" when there were none or several.
    std::string onlyMessage() const {
        return host.messages.size() == 1 ? host.messages[0].text : "";
    }
    /// Trace t of the working file.
    std::vector<float> trace(size_t t) const {
        const auto w = working();
        const size_t n = size_t(st.Sp_Samples);
        if ((t + 1) * n > w.size()) return {};
        return {w.begin() + std::ptrdiff_t(t * n), w.begin() + std::ptrdiff_t((t + 1) * n)};
    }
    std::string dialogFileName;
};

/// Little writers at 0-based offsets, either byte order.
struct Bytes {
    std::vector<uint8_t> b;
    void ensure(size_t n) {
        if (b.size() < n) b.resize(n, 0);
    }
    void put(size_t off, uint64_t v, int n, bool big) {
        ensure(off + size_t(n));
        for (int i = 0; i < n; ++i)
            b[off + size_t(i)] = uint8_t(v >> (8 * (big ? n - 1 - i : i)));
    }
    void text(size_t off, const std::string& s) {
        ensure(off + s.size());
        std::memcpy(b.data() + off, s.data(), s.size());
    }
};

/// The bits of an IBM float for a value it holds exactly (fraction cut, not rounded).
inline uint32_t ibmBits(double v) {
    if (v == 0) return 0;
    const uint32_t sign = v < 0 ? 0x80000000u : 0;
    double m = std::fabs(v);
    int e = 64;
    while (m >= 1) {
        m /= 16;
        ++e;
    }
    while (m < 1.0 / 16) {
        m *= 16;
        --e;
    }
    return sign | (uint32_t(e) << 24) | uint32_t(m * 16777216.0);
}

/// One sample of SEG-Y format `format` holding `v`, in `n` bytes.
inline uint64_t segySampleBits(int format, double v, int& n) {
    switch (format) {
    case 1:
        n = 4;
        return ibmBits(v);
    case 2:
    case 10:
        n = 4;
        return uint32_t(int64_t(v));
    case 3:
    case 11:
        n = 2;
        return uint16_t(int64_t(v));
    case 5:
        n = 4;
        return std::bit_cast<uint32_t>(float(v));
    case 6:
        n = 8;
        return std::bit_cast<uint64_t>(v);
    case 7:
    case 15:
        n = 3;
        return uint64_t(int64_t(v)) & 0xFFFFFF;
    case 8:
    case 16:
        n = 1;
        return uint8_t(int64_t(v));
    case 12:
        n = 8;
        return uint64_t(v);
    default: // 9
        n = 8;
        return uint64_t(int64_t(v));
    }
}

/// A SEG-Y file as a writer following the standard makes it.
struct SegyLayout {
    bool big = true;
    int format = 5;
    int interval = 1000; // microseconds, in the binary header and every trace header
    int revision = 1;    // the major revision, written as the standard asks (1 is 0x0100)
    bool ebcdic = true;
    std::vector<std::string> cards = {"C 1 CLIENT TEST", "C 2 LINE 7"};
    /// Extended textual headers, each 3200 bytes of ASCII text.
    std::vector<std::string> extended;
    bool variableExtended = false; // count written as -1, the last one ends with the stanza
    std::vector<std::vector<double>> traces;
    int binarySamples = -1; // -1: the traces' length
    int traceSamples = -1;  // in every trace header; -1: the traces' length
};

inline uint8_t toEbcdic(char c) {
    static const std::string from = " .<(+&!$*);-/,%_>?:#@'=\"abcdefghijklmnopqrstuvwxyz"
                                    "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    static const uint8_t to[] = {
        0x40, 0x4B, 0x4C, 0x4D, 0x4E, 0x50, 0x5A, 0x5B, 0x5C, 0x5D, 0x5E, 0x60, 0x61, 0x6B, 0x6C,
        0x6D, 0x6E, 0x6F, 0x7A, 0x7B, 0x7C, 0x7D, 0x7E, 0x7F, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86,
        0x87, 0x88, 0x89, 0x91, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0xA2, 0xA3, 0xA4,
        0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xD1,
        0xD2, 0xD3, 0xD4, 0xD5, 0xD6, 0xD7, 0xD8, 0xD9, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8,
        0xE9, 0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9};
    const size_t i = from.find(c);
    return i == std::string::npos ? 0x40 : to[i];
}

inline std::vector<uint8_t> segyFile(const SegyLayout& s) {
    Bytes img;
    const bool big = s.big;
    const int n = s.traces.empty() ? 0 : int(s.traces[0].size());
    img.ensure(3600);
    for (size_t c = 0; c < 40; ++c) {
        std::string card = c < s.cards.size() ? s.cards[c] : "";
        card.resize(80, ' ');
        for (size_t i = 0; i < 80; ++i)
            img.b[c * 80 + i] = s.ebcdic ? toEbcdic(card[i]) : uint8_t(card[i]);
    }
    img.put(3216, uint64_t(s.interval), 2, big);
    img.put(3220, uint64_t(s.binarySamples >= 0 ? s.binarySamples : n), 2, big);
    img.put(3224, uint64_t(s.format), 2, big);
    img.put(3500, uint64_t(s.revision) << 8, 2, big);
    img.put(3502, 1, 2, big);
    img.put(3504, s.variableExtended ? 0xFFFF : s.extended.size(), 2, big);
    if (s.revision >= 2) img.put(3296, 0x01020304, 4, big);
    size_t pos = 3600;
    for (const std::string& text : s.extended) {
        std::string block = text;
        block.resize(3200, ' ');
        img.text(pos, block);
        pos += 3200;
    }
    for (const auto& t : s.traces) {
        img.ensure(pos + 240);
        img.put(pos + 114, uint64_t(s.traceSamples >= 0 ? s.traceSamples : n), 2, big);
        img.put(pos + 116, uint64_t(s.interval), 2, big);
        pos += 240;
        for (double v : t) {
            int w = 0;
            const uint64_t bits = segySampleBits(s.format, v, w);
            img.put(pos, bits, w, big);
            pos += size_t(w);
        }
    }
    return img.b;
}

/// A SEG-2 trace: its data format, its samples, and the strings of its descriptor.
struct Seg2Trace {
    int format = 2;
    std::vector<double> samples;
    std::vector<std::string> strings = {"SAMPLE_INTERVAL 0.001", "DESCALING_FACTOR 0.5"};
    int padding = 0; // extra bytes at the end of the descriptor block
};

struct Seg2Layout {
    bool big = false;
    std::vector<std::string> fileStrings = {"COMPANY TEST", "NOTE first\nsecond"};
    std::vector<Seg2Trace> traces;
    int pointerBlock = -1; // bytes of the trace pointer sub-block; -1: four per trace
};

/// Strings as SEG-2 writes them: a 2-byte offset to the next, the text, a NUL; then a 0 offset.
inline void seg2Strings(Bytes& img, size_t& pos, const std::vector<std::string>& strings,
                        bool big) {
    for (const std::string& s : strings) {
        const size_t len = 2 + s.size() + 1;
        img.put(pos, len, 2, big);
        img.text(pos + 2, s);
        img.put(pos + 2 + s.size(), 0, 1, big);
        pos += len;
    }
    img.put(pos, 0, 2, big);
    pos += 2;
}

inline std::vector<uint8_t> seg2File(const Seg2Layout& s) {
    Bytes img;
    const bool big = s.big;
    const size_t count = s.traces.size();
    const size_t pointers = s.pointerBlock >= 0 ? size_t(s.pointerBlock) : 4 * count;
    img.put(0, 0x3A55, 2, big);
    img.put(2, 1, 2, big);
    img.put(4, pointers, 2, big);
    img.put(6, count, 2, big);
    img.put(8, 1, 1, big);  // string terminator: one byte, NUL
    img.put(11, 1, 1, big); // line terminator: one byte, line feed
    img.put(12, 0x0A, 1, big);
    size_t pos = 32 + pointers;
    seg2Strings(img, pos, s.fileStrings, big);
    for (size_t t = 0; t < count; ++t) {
        const Seg2Trace& tr = s.traces[t];
        img.put(32 + 4 * t, pos, 4, big);
        const size_t desc = pos;
        size_t at = desc + 32;
        seg2Strings(img, at, tr.strings, big);
        at += size_t(tr.padding);
        const size_t blockSize = at - desc;
        const size_t n = tr.samples.size();
        Bytes data;
        size_t d = 0;
        if (tr.format == 3) {
            // Groups of four: the exponents word, then four one's-complement mantissas. Each
            // value is written with the smallest exponent that fits its mantissa.
            for (size_t g = 0; g < n; g += 4) {
                uint64_t exps = 0;
                for (size_t k = 0; k < 4 && g + k < n; ++k) {
                    int64_t v = int64_t(tr.samples[g + k]);
                    int e = 0;
                    while (v > 32767 || v < -32767) {
                        v /= 2;
                        ++e;
                    }
                    exps |= uint64_t(e) << (4 * k);
                    const int64_t stored = v < 0 ? v - 1 : v;
                    data.put(d + 2 + 2 * k, uint16_t(stored), 2, big);
                }
                data.put(d, exps, 2, big);
                d += 10;
            }
        } else {
            for (double v : tr.samples) {
                const int w = tr.format == 1 ? 2 : tr.format == 5 ? 8 : 4;
                uint64_t bits = 0;
                if (tr.format == 1) bits = uint16_t(int64_t(v));
                if (tr.format == 2) bits = uint32_t(int64_t(v));
                if (tr.format == 4) bits = std::bit_cast<uint32_t>(float(v));
                if (tr.format == 5) bits = std::bit_cast<uint64_t>(v);
                data.put(d, bits, w, big);
                d += size_t(w);
            }
        }
        data.ensure(d);
        img.ensure(desc + 32);
        img.put(desc, 0x4422, 2, big);
        img.put(desc + 2, blockSize, 2, big);
        img.put(desc + 4, data.b.size(), 4, big);
        img.put(desc + 8, n, 4, big);
        img.put(desc + 12, uint64_t(tr.format), 1, big);
        img.ensure(desc + blockSize);
        pos = desc + blockSize;
        img.ensure(pos + data.b.size());
        if (!data.b.empty()) std::memcpy(img.b.data() + pos, data.b.data(), data.b.size());
        pos += data.b.size();
    }
    return img.b;
}

} // namespace kv::test
