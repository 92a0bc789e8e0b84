// Small exact radar recordings for the radar reader tests: little-endian field writers, file
// builders for each radar format, and a workbench that exports and opens project files.
#pragma once

#include "commands/export.h"
#include "support/test_home.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kv::test {

template <typename T> void putLe(std::vector<uint8_t>& b, size_t off, T v) {
    if (b.size() < off + sizeof v) b.resize(off + sizeof v);
    std::memcpy(b.data() + off, &v, sizeof v);
}

template <typename T> T getLe(const std::vector<uint8_t>& b, size_t off) {
    T v{};
    std::memcpy(&v, b.data() + off, sizeof v);
    return v;
}

inline void putText(std::vector<uint8_t>& b, size_t off, const std::string& s) {
    if (b.size() < off + s.size()) b.resize(off + s.size());
    std::memcpy(b.data() + off, s.data(), s.size());
}

/// A 1024-byte DZT header followed by `data` (already in the file's own encoding).
inline std::vector<uint8_t> dztBytes(int16_t samples, int16_t bits, float rangeNs, float sps,
                                     const std::vector<uint8_t>& data, int16_t channels = 1) {
    std::vector<uint8_t> b(1024 + data.size(), 0);
    if (!data.empty()) std::memcpy(b.data() + 1024, data.data(), data.size());
    putLe<int16_t>(b, 0, 255);
    putLe<int16_t>(b, 2, 1024);
    putLe<int16_t>(b, 4, samples);
    putLe<int16_t>(b, 6, bits);
    putLe<float>(b, 10, sps);
    putLe<float>(b, 26, rangeNs);
    putLe<int16_t>(b, 52, channels);
    return b;
}

/// 16-bit unsigned samples centred on 32768, from signed values.
inline std::vector<uint8_t> u16Samples(const std::vector<int>& values) {
    std::vector<uint8_t> b;
    for (int v : values) {
        const uint16_t u = uint16_t(v + 32768);
        b.push_back(uint8_t(u & 0xFF));
        b.push_back(uint8_t(u >> 8));
    }
    return b;
}

/// 16-bit signed little-endian samples.
inline std::vector<uint8_t> i16Samples(const std::vector<int>& values) {
    std::vector<uint8_t> b;
    for (int v : values) {
        const uint16_t u = uint16_t(int16_t(v));
        b.push_back(uint8_t(u & 0xFF));
        b.push_back(uint8_t(u >> 8));
    }
    return b;
}

/// A .rad header with the two values the reader uses.
inline std::string radText(const std::string& samples, const std::string& window,
                           const std::string& before = "") {
    return "SAMPLES:" + samples + "\r\nFREQUENCY:1000.0\r\n" + before + "TIMEWINDOW:" + window +
           "\r\nSTACKS:4\r\n";
}

/// A .HD header, CR CR LF line ends as the instruments write them.
inline std::string hdText(const std::string& traces, const std::string& points,
                          const std::string& window) {
    return "1234\r\r\nData Collected with a test\r\r\nNUMBER OF TRACES   = " + traces +
           " \r\r\nNUMBER OF PTS/TRC  = " + points + " \r\r\nTIMEZERO AT POINT  = 34.07 \r\r\n" +
           "TOTAL TIME WINDOW  = " + window + " \r\r\nPOSITION UNITS     = m \r\r\n";
}

/// Traces of `points` samples, each behind a 128-byte trace header full of 0x7F.
inline std::vector<uint8_t> dt1Bytes(const std::vector<std::vector<int>>& traces) {
    std::vector<uint8_t> b;
    for (const auto& t : traces) {
        b.insert(b.end(), 128, 0x7F);
        auto s = test::i16Samples(t);
        b.insert(b.end(), s.begin(), s.end());
    }
    return b;
}

/// A Zon file: filler up to `blockAt` (0-based), the block signature with the trace length
/// 13 bytes behind its first byte, `text` from 35 bytes behind it, then `mark` and the traces, each
/// followed by a 4-byte gap.
inline std::vector<uint8_t> zonBytes(size_t blockAt, int16_t samples, const std::string& text,
                                     std::vector<uint8_t> mark,
                                     const std::vector<std::vector<int>>& traces) {
    std::vector<uint8_t> b(blockAt, 0x11);
    for (uint8_t x : {0x20, 0x48, 0x15, 0x04})
        b.push_back(x);
    b.resize(blockAt + 35, 0x11);
    test::putLe<int16_t>(b, blockAt + 13, samples);
    test::putText(b, blockAt + 35, text);
    b.insert(b.end(), {0x01, 0x02});
    b.insert(b.end(), mark.begin(), mark.end());
    for (size_t t = 0; t < traces.size(); ++t) {
        auto s = test::i16Samples(traces[t]);
        b.insert(b.end(), s.begin(), s.end());
        if (t + 1 < traces.size()) b.insert(b.end(), {0xEE, 0xEE, 0xEE, 0xEE});
    }
    return b;
}

/// A started workbench with the file, Export and "Open Kelvorandine File" steps the radar tests
/// take.
struct RadarBench : Bench {
    RadarBench() { start(); }
    std::string put(const std::vector<uint8_t>& bytes, const std::string& name) {
        const std::string p = home.file(name);
        writeFile(p, bytes);
        return p;
    }
    static std::vector<uint8_t> bytesOf(const std::string& p) {
        const std::string s = readText(p);
        return {s.begin(), s.end()};
    }
    /// The Export command, the user choosing `target` in its dialog.
    void exportTo(const std::string& target) {
        host.queueFile(target, 1);
        ExportFile(wb);
    }
    /// "Open Kelvorandine File", the user choosing `p`.
    void openProject(const std::string& p) {
        host.queueFile(p, 1);
        mnuOimp_Click(wb);
    }
};

} // namespace kv::test
