// Small exact recordings for the "all variants" readers (DZT, WAV, oscilloscope CSV), and a
// workbench that runs one of those readers the way the open runs a reader.
#pragma once

#include "commands/lifecycle.h"
#include "commands/open.h"
#include "import/standard_reading.h"
#include "support/test_home.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kv::test {

/// Little-endian bytes of a value, appended.
template <typename T> void appendLe(std::vector<uint8_t>& b, T v) {
    uint8_t raw[sizeof v];
    std::memcpy(raw, &v, sizeof v);
    b.insert(b.end(), raw, raw + sizeof v);
}

/// One sample in the given coding; unsigned codings are offset by half their range, so `v` is
/// the centred value a reader gives back.
inline void appendSample(std::vector<uint8_t>& b, SampleCoding c, double v) {
    switch (c) {
    case SampleCoding::U8:
        b.push_back(uint8_t(int(v) + 128));
        break;
    case SampleCoding::S16:
        appendLe<int16_t>(b, int16_t(v));
        break;
    case SampleCoding::U16:
        appendLe<uint16_t>(b, uint16_t(int(v) + 32768));
        break;
    case SampleCoding::S24: {
        const uint32_t u = uint32_t(int32_t(v));
        b.insert(b.end(), {uint8_t(u), uint8_t(u >> 8), uint8_t(u >> 16)});
        break;
    }
    case SampleCoding::S32:
        appendLe<int32_t>(b, int32_t(v));
        break;
    case SampleCoding::F32:
        appendLe<float>(b, float(v));
        break;
    case SampleCoding::F64:
        appendLe<double>(b, v);
        break;
    }
}

/// A DZT file: one 1024-byte header block per channel (the first holds the fields), then
/// `scans[channel][scan][sample]` with the channels taking turns scan by scan.
struct DztLayout {
    uint16_t samples = 4;
    uint16_t bits = 16;
    uint16_t dataField = 1024; // rh_data as written
    float rangeNs = 8.0f;
    float scansPerSecond = 64.0f;
    std::string antenna = "1600MHz";
    std::vector<std::vector<std::vector<double>>> scans; // [channel][scan][sample]
    uint64_t headerBytes = 0;                            // 0: 1024 per channel
};

inline std::vector<uint8_t> dztFile(const DztLayout& s) {
    const size_t channels = s.scans.size();
    std::vector<uint8_t> b(s.headerBytes ? s.headerBytes : 1024 * channels, 0);
    auto put16 = [&](size_t off, uint16_t v) { std::memcpy(b.data() + off, &v, 2); };
    auto putF = [&](size_t off, float v) { std::memcpy(b.data() + off, &v, 4); };
    put16(0, 0x00FF);
    put16(2, s.dataField);
    put16(4, s.samples);
    put16(6, s.bits);
    putF(10, s.scansPerSecond);
    putF(26, s.rangeNs);
    put16(52, uint16_t(channels));
    std::memcpy(b.data() + 98, s.antenna.data(), std::min<size_t>(s.antenna.size(), 14));
    const SampleCoding c = s.bits == 8    ? SampleCoding::U8
                           : s.bits == 16 ? SampleCoding::U16
                                          : SampleCoding::S32;
    for (size_t k = 0; channels && k < s.scans[0].size(); ++k)
        for (size_t ch = 0; ch < channels; ++ch)
            for (double v : s.scans[ch][k])
                appendSample(b, c, v);
    return b;
}

/// A four-character code, appended.
inline void appendId(std::vector<uint8_t>& b, const char* id) {
    for (int i = 0; i < 4; ++i)
        b.push_back(uint8_t(id[i]));
}

/// A RIFF file built chunk by chunk: sizes are filled in, odd chunks get their pad byte.
struct RiffBuilder {
    std::vector<uint8_t> bytes;
    explicit RiffBuilder(const char* container = "RIFF") {
        appendId(bytes, container);
        appendLe<uint32_t>(bytes, 0);
        appendId(bytes, "WAVE");
    }
    RiffBuilder& chunk(const char* id, const std::vector<uint8_t>& body, bool pad = true) {
        appendId(bytes, id);
        appendLe<uint32_t>(bytes, uint32_t(body.size()));
        bytes.insert(bytes.end(), body.begin(), body.end());
        if (pad && (body.size() & 1)) bytes.push_back(0);
        const uint32_t riff = uint32_t(bytes.size() - 8);
        std::memcpy(bytes.data() + 4, &riff, 4);
        return *this;
    }
};

/// A plain fmt chunk (16 bytes), or the 40-byte extensible one when `extensible`.
inline std::vector<uint8_t> fmtChunk(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits,
                                     bool extensible = false) {
    std::vector<uint8_t> b;
    appendLe<uint16_t>(b, extensible ? 0xFFFE : tag);
    appendLe<uint16_t>(b, channels);
    appendLe<uint32_t>(b, rate);
    appendLe<uint32_t>(b, rate * channels * bits / 8);
    appendLe<uint16_t>(b, uint16_t(channels * bits / 8));
    appendLe<uint16_t>(b, bits);
    if (extensible) {
        appendLe<uint16_t>(b, 22);
        appendLe<uint16_t>(b, bits);
        appendLe<uint32_t>(b, 0x3);
        appendLe<uint16_t>(b, tag);
        // The rest of the sub-format GUID, the same for every tag.
        for (uint8_t x :
             {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71})
            b.push_back(x);
    }
    return b;
}

/// Interleaved frames of `channels[c][i]` in the given coding.
inline std::vector<uint8_t> frames(SampleCoding c, const std::vector<std::vector<double>>& ch) {
    std::vector<uint8_t> b;
    for (size_t i = 0; !ch.empty() && i < ch[0].size(); ++i)
        for (const auto& one : ch)
            appendSample(b, c, one[i]);
    return b;
}

/// A started workbench that runs one of the readers as the open runs a reader: the source
/// chosen, fresh working files, and the clean-up of a failed read.
struct StdBench : Bench {
    StdBench() { start(); }
    std::string put(const std::vector<uint8_t>& bytes, const std::string& name) {
        const std::string p = home.file(name);
        writeFile(p, bytes);
        return p;
    }
    std::string putText(const std::string& text, const std::string& name) {
        const std::string p = home.file(name);
        writeText(p, text);
        return p;
    }
    /// True when the reader left a data set to show.
    bool read(ReaderFn reader, const std::string& path) {
        host.messages.clear();
        st.SourcePath = path;
        deleteWorkingFiles(st);
        setWorkingPaths(st);
        st.SourceInfoLines.clear();
        ImportContext ctx(wb, path);
        ctx.cleanSet = [this] { CleanSet(wb); };
        reader(ctx);
        return !ctx.dialogFileName.empty() && !st.TempPath.empty();
    }
    /// The one message a failed read shows, or "" when none (or more than one) was shown.
    std::string message() const { return host.messages.size() == 1 ? host.messages[0].text : ""; }
    /// True when some file-information line contains `text`.
    bool infoHas(const std::string& text) const {
        for (const auto& l : st.SourceInfoLines)
            if (l.find(text) != std::string::npos) return true;
        return false;
    }
};

} // namespace kv::test
