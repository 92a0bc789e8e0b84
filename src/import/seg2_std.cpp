// SEG-2 of any variant, through the "SEG-2, all variants" entry. Where the SEG-2 and SPRScan
// ERA entries take fixed offsets and the first interval key anywhere in the file, this one
// follows the file's own structure: the block id gives the byte order, the trace pointer table
// where each trace's descriptor lies, and each descriptor its sample count, data format and
// strings. Traces of unequal length are padded with zeros to the longest.
#include "engine/fft.h"
#include "import/standard_readers.h"
#include "import/standard_samples.h"

#include <charconv>
#include <cmath>
#include <map>
#include <optional>

namespace kv {

namespace {

constexpr uint64_t kBlockHead = 32; // fixed part of the file and trace descriptor blocks
constexpr size_t kMostInfoLines = 1000;
constexpr size_t kMostStrings = 4096; // per block: more is a damaged block, not a header
constexpr const char* kNotSupported = "Data format not supported by Kelvorandine!";

struct Numbers {
    const ByteSource& src;
    bool big;
    uint64_t u16(uint64_t off) const { return big ? src.u16be(off) : src.u16le(off); }
    uint64_t u32(uint64_t off) const { return big ? src.u32be(off) : src.u32le(off); }
};

/// A descriptor string split at its first blank: "SAMPLE_INTERVAL 0.001".
struct Entry {
    std::string key;
    std::string value;
};

std::string trimmed(const std::string& s) {
    const size_t a = s.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return s.substr(a, s.find_last_not_of(' ') - a + 1);
}

/// Keeps the printable characters (a tab becomes a blank).
std::string printable(const std::string& s) {
    std::string out;
    for (char c : s) {
        if (c == '\t') c = ' ';
        if (c >= 0x20 && c < 0x7F) out += c;
    }
    return out;
}

/// The strings of a descriptor block between `from` and `to`: each begins with a 2-byte offset
/// to the next and ends at the string terminator; an offset of 0 ends the list. Each string is
/// cut into lines at the line terminator (a NOTE holds several).
std::vector<std::vector<std::string>> stringsIn(const Numbers& n, uint64_t from, uint64_t to,
                                                const std::string& terminator,
                                                const std::string& lineEnd) {
    std::vector<std::vector<std::string>> out;
    uint64_t at = from;
    while (at + 2 <= to && out.size() < kMostStrings) {
        const uint64_t len = n.u16(at);
        if (len <= 2) break;
        std::string s = n.src.text(at + 2, size_t(std::min(len, to - at) - 2));
        const size_t end = terminator.empty() ? std::string::npos : s.find(terminator);
        s = s.substr(0, std::min(end, s.find('\0')));
        std::vector<std::string> lines;
        size_t start = 0;
        while (start <= s.size()) {
            const size_t stop = lineEnd.empty() ? std::string::npos : s.find(lineEnd, start);
            const std::string line = trimmed(printable(s.substr(start, stop - start)));
            if (!line.empty()) lines.push_back(line);
            if (stop == std::string::npos) break;
            start = stop + lineEnd.size();
        }
        if (!lines.empty()) out.push_back(std::move(lines));
        at += len;
    }
    return out;
}

Entry entryOf(const std::string& line) {
    const size_t blank = line.find(' ');
    if (blank == std::string::npos) return {line, ""};
    return {line.substr(0, blank), trimmed(line.substr(blank + 1))};
}

/// A terminator as the file descriptor gives it: a length of 1 or 2, then up to two bytes.
std::string terminatorAt(const ByteSource& src, uint64_t off) {
    const uint8_t len = src.u8(off);
    if (len < 1 || len > 2) throw ReadError("terminator");
    return src.text(off + 1, len);
}

std::optional<double> positiveNumber(const std::string& text) {
    double v = 0;
    const char* b = text.data();
    const char* e = b + text.size();
    if (b != e && *b == '+') ++b;
    const auto r = std::from_chars(b, e, v);
    if (r.ec != std::errc() || !std::isfinite(v) || v <= 0) return std::nullopt;
    return v;
}

std::optional<SampleType> typeOfCode(uint8_t code) {
    switch (code) {
    case 1:
        return SampleType::Int16;
    case 2:
        return SampleType::Int32;
    case 3:
        return SampleType::Packed20;
    case 4:
        return SampleType::Float32;
    case 5:
        return SampleType::Float64;
    default:
        return std::nullopt;
    }
}

struct TraceAt {
    uint64_t data = 0;
    uint32_t samples = 0;
    SampleType type = SampleType::Int16;
};

const std::string* valueOf(const std::vector<Entry>& entries, const std::string& key) {
    for (const Entry& e : entries)
        if (e.key == key) return &e.value;
    return nullptr;
}

void readSeg2(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    const uint64_t size = src->size();
    setSourceLength(st, size);
    if (size < kBlockHead) throw ReadError("shorter than the file descriptor");
    bool big;
    if (src->u8(0) == 0x55 && src->u8(1) == 0x3A)
        big = false;
    else if (src->u8(0) == 0x3A && src->u8(1) == 0x55)
        big = true;
    else
        throw ReadError("not a SEG-2 file");
    const Numbers n{*src, big};
    const uint64_t pointerBlock = n.u16(4);
    const uint64_t count = n.u16(6);
    if (count == 0 || 4 * count > pointerBlock || kBlockHead + pointerBlock > size)
        throw ReadError("trace pointers");
    const std::string terminator = terminatorAt(*src, 8);
    const std::string lineEnd = terminatorAt(*src, 11);

    std::vector<uint64_t> pointers(count);
    for (uint64_t t = 0; t < count; ++t) {
        pointers[t] = n.u32(kBlockHead + 4 * t);
        if (pointers[t] < kBlockHead + pointerBlock || pointers[t] + kBlockHead > size)
            throw ReadError("trace pointer past the end");
    }

    std::vector<std::string> lines;
    auto addLine = [&lines](const std::string& line) {
        if (lines.size() < kMostInfoLines) lines.push_back(line);
    };
    std::vector<Entry> fileEntries;
    for (const auto& s :
         stringsIn(n, kBlockHead + pointerBlock, pointers[0], terminator, lineEnd)) {
        fileEntries.push_back(entryOf(s[0]));
        for (const auto& line : s)
            addLine(line);
    }

    // First pass: every descriptor, so that the longest trace is known before the first is
    // written and a damaged descriptor fails the read before anything is.
    std::vector<TraceAt> traces(count);
    std::vector<Entry> firstEntries;
    std::optional<double> interval;
    bool intervalsDiffer = false, allInteger = true;
    double integerScale = 0;
    uint64_t longest = 0, shortest = UINT64_MAX;
    for (uint64_t t = 0; t < count; ++t) {
        const uint64_t p = pointers[t];
        if (n.u16(p) != 0x4422) throw ReadError("trace descriptor id");
        const uint64_t blockSize = n.u16(p + 2);
        const uint64_t samples = n.u32(p + 8);
        const auto type = typeOfCode(src->u8(p + 12));
        if (!type) throw ReadRefused(kNotSupported, MsgIcon::Information);
        if (blockSize < kBlockHead || samples > uint64_t(fft::kMaxLength)) {
            throw ReadError("trace descriptor");
        }
        const uint64_t data = p + blockSize;
        if (data + bytesForSamples(*type, samples) > size) throw ReadError("trace past the end");
        traces[t] = {data, uint32_t(samples), *type};
        longest = std::max(longest, samples);
        shortest = std::min(shortest, samples);
        if (isIntegerType(*type))
            integerScale = std::max(integerScale, integerFullScale(*type));
        else
            allInteger = false;

        std::vector<Entry> entries;
        const auto strings = stringsIn(n, p + kBlockHead, data, terminator, lineEnd);
        for (const auto& s : strings)
            entries.push_back(entryOf(s[0]));
        const std::string* text = valueOf(entries, "SAMPLE_INTERVAL");
        if (!text) text = valueOf(fileEntries, "SAMPLE_INTERVAL");
        const auto dt = text ? positiveNumber(*text) : std::nullopt;
        if (!dt) throw ReadError("no sample interval");
        if (!interval) interval = dt;
        intervalsDiffer |= *dt != *interval;
        // File information: the first trace's strings whole, of the others what differs.
        const std::string prefix = "Trace " + std::to_string(t + 1) + ": ";
        for (size_t i = 0; i < strings.size(); ++i) {
            const std::string* before = t == 0 ? nullptr : valueOf(firstEntries, entries[i].key);
            if (t > 0 && before && *before == entries[i].value) continue;
            for (const auto& line : strings[i])
                addLine(prefix + line);
        }
        if (t == 0) firstEntries = std::move(entries);
    }
    if (longest == 0) throw ReadError("no samples");

    st.SampleRate = 1.0 / *interval;
    st.TraceCount = int32_t(count);
    st.TraceLength = int32_t(longest);
    st.Sp_Samples = int32_t(longest);
    st.SampleBits = int16_t(sampleBitsOf(traces[0].type));
    st.BitsPerSample = st.SampleBits;
    st.DataStart = int32_t(std::min<uint64_t>(traces[0].data + 1, uint64_t(INT32_MAX)));

    addLine("Traces: " + std::to_string(count) + ", " + describeSampleType(traces[0].type) + ", " +
            (big ? "big-endian" : "little-endian"));
    addLine("Samples per trace: " + std::to_string(longest));
    if (shortest != longest) {
        addLine("Traces of unequal length (" + std::to_string(shortest) + " to " +
                std::to_string(longest) + " samples): the shorter ones are padded with zeros");
    }
    addLine("Sample interval: " + numberText(*interval) + " s" +
            (intervalsDiffer ? " (the first trace's; other traces differ)" : ""));
    st.SourceInfoLines = std::move(lines);

    size_t mostBytes = 0;
    for (const TraceAt& t : traces)
        mostBytes = std::max(mostBytes, size_t(bytesForSamples(t.type, t.samples)));
    std::vector<uint8_t> raw(mostBytes);
    std::vector<float> trace(static_cast<size_t>(longest));
    SamplePeak peak;
    TraceOutput out(ctx, st.TempPath);
    for (int32_t t = 0; t < st.TraceCount; ++t) {
        if (!out.next(t)) break;
        const TraceAt& at = traces[size_t(t)];
        const size_t bytes = size_t(bytesForSamples(at.type, at.samples));
        if (src->read(at.data, raw.data(), bytes) != bytes) throw ReadError("short trace");
        std::fill(trace.begin(), trace.end(), 0.0f);
        decodeSamples(at.type, big, raw.data(), at.samples, trace.data());
        if (!allInteger) peak.take(trace.data(), at.samples);
        out.write(trace);
    }
    out.finish();
    st.FullScalePos = fullScaleFor(allInteger, integerScale, peak);
    st.FullScaleNeg = st.FullScalePos;
}

} // namespace

void ReadSeg2Std(ImportContext& ctx) {
    runStandardRead(ctx, [&] { readSeg2(ctx); });
}

} // namespace kv
