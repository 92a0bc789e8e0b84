// SEG-Y of any revision, through the "SEG-Y, all revisions" entry. Where the Seismic and
// Radsys entries take three numbers from fixed places, this one reads the file the way its
// writer meant it: the textual header in EBCDIC or ASCII, the byte order from the binary header
// itself, every sample format up to revision 2, the extended headers, and as many traces as the
// file holds. Each trace of the file becomes one working trace of its own length.
#include "engine/fft.h"
#include "import/standard_readers.h"
#include "import/standard_samples.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace kv {

namespace {

constexpr uint64_t kCardBytes = 80;
constexpr uint64_t kTextBytes = 3200;   // the textual header, and each extended one
constexpr uint64_t kHeaderBytes = 3600; // textual and binary header together
constexpr uint64_t kTraceHeaderBytes = 240;
constexpr size_t kMostTextLines = 400; // ten textual headers' worth in file information

constexpr const char* kNotSupported = "Data format not supported by Kelvorandine!";

/// EBCDIC (code page 037) to ASCII for the printable characters; 0 for everything else.
constexpr std::array<char, 256> ebcdicTable() {
    std::array<char, 256> t{};
    auto run = [&t](int from, const char* chars) {
        for (int i = 0; chars[i]; ++i)
            t[size_t(from + i)] = chars[i];
    };
    run(0x40, " ");
    run(0x4A, "[.<(+|&");
    run(0x5A, "!$*);^-/");
    run(0x6A, "|,%_>?");
    run(0x79, "`:#@'=\"");
    run(0x81, "abcdefghi");
    run(0x91, "jklmnopqr");
    run(0xA1, "~stuvwxyz");
    run(0xBA, "[]");
    run(0xC0, "{ABCDEFGHI");
    run(0xD0, "}JKLMNOPQR");
    run(0xE0, "\\");
    run(0xE2, "STUVWXYZ");
    run(0xF0, "0123456789");
    return t;
}
constexpr std::array<char, 256> kEbcdic = ebcdicTable();

constexpr bool isWordChar(char c) {
    return c == ' ' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// Per byte: how much more it reads as a letter, digit or blank in EBCDIC than in ASCII (-1, 0
/// or 1), and the character it shows as in the decoded text (a blank for anything not
/// printable). Tables, so that the scan of a 3200-byte header is a run of loads rather than a
/// run of comparisons.
struct TextTables {
    std::array<int8_t, 256> ebcdicLead{};
    std::array<char, 256> asciiShown{}, ebcdicShown{};
};
constexpr TextTables textTables() {
    TextTables t;
    auto shown = [](char c) { return c >= 0x20 && c < 0x7F ? c : ' '; };
    for (int b = 0; b < 256; ++b) {
        const char a = char(b), e = kEbcdic[size_t(b)];
        t.ebcdicLead[size_t(b)] = int8_t(int(isWordChar(e)) - int(isWordChar(a)));
        t.asciiShown[size_t(b)] = shown(a);
        t.ebcdicShown[size_t(b)] = shown(e);
    }
    return t;
}
constexpr TextTables kText = textTables();

/// Bytes a header scan takes in at once: one load and one store for eight characters, and only
/// the table look-ups one a byte.
constexpr size_t kWord = 8;

/// True when more of the bytes read as letters, digits and blanks in EBCDIC than in ASCII.
bool looksEbcdic(const uint8_t* text, size_t n) {
    // Plain pointers: a header is scanned for every extended header a file declares.
    const int8_t* lead = kText.ebcdicLead.data();
    int64_t ebcdicAhead = 0;
    size_t i = 0;
    for (; i + kWord <= n; i += kWord) {
        uint64_t word;
        std::memcpy(&word, text + i, kWord);
        for (size_t k = 0; k < kWord; ++k)
            ebcdicAhead += lead[(word >> (8 * k)) & 0xFF];
    }
    for (; i < n; ++i)
        ebcdicAhead += lead[text[i]];
    return ebcdicAhead > 0;
}

/// A textual header as ASCII, into `out`: every character that is not printable becomes a
/// blank. One text is decoded over and over into the room of the last.
void decodeText(const std::vector<uint8_t>& text, std::string& out) {
    const size_t n = text.size();
    const uint8_t* b = text.data();
    const uint8_t* shown = reinterpret_cast<const uint8_t*>(
        (looksEbcdic(b, n) ? kText.ebcdicShown : kText.asciiShown).data());
    out.resize(n);
    char* o = out.data();
    size_t i = 0;
    for (; i + kWord <= n; i += kWord) {
        uint64_t in, decoded = 0;
        std::memcpy(&in, b + i, kWord);
        for (size_t k = 0; k < kWord; ++k)
            decoded |= uint64_t(shown[(in >> (8 * k)) & 0xFF]) << (8 * k);
        std::memcpy(o + i, &decoded, kWord);
    }
    for (; i < n; ++i)
        o[i] = char(shown[b[i]]);
}

/// The 80-character cards of a textual header as lines, without their trailing blanks; blank
/// cards are left out. Lines past `most` would only be dropped again, and are not made.
void appendCards(std::string_view text, std::vector<std::string>& lines, size_t most) {
    for (size_t at = 0; at < text.size() && lines.size() < most; at += kCardBytes) {
        const std::string_view card = text.substr(at, kCardBytes);
        const size_t end = card.find_last_not_of(' ');
        if (end != std::string_view::npos) lines.emplace_back(card.substr(0, end + 1));
    }
}

std::optional<SampleType> typeOfFormat(uint32_t code) {
    using S = SampleType;
    switch (code) {
    case 1:
        return S::IbmFloat;
    case 2:
        return S::Int32;
    case 3:
        return S::Int16;
    case 5:
        return S::Float32;
    case 6:
        return S::Float64;
    case 7:
        return S::Int24;
    case 8:
        return S::Int8;
    case 9:
        return S::Int64;
    case 10:
        return S::UInt32;
    case 11:
        return S::UInt16;
    case 12:
        return S::UInt64;
    case 15:
        return S::UInt24;
    case 16:
        return S::UInt8;
    default:
        return std::nullopt;
    }
}

/// Header numbers in the byte order of the file (offsets 0-based).
struct Fields {
    const ByteSource& src;
    bool big;
    uint64_t u16(uint64_t off) const { return big ? src.u16be(off) : src.u16le(off); }
    int64_t i16(uint64_t off) const { return int16_t(u16(off)); }
    uint64_t u32(uint64_t off) const { return big ? src.u32be(off) : src.u32le(off); }
    uint64_t u64(uint64_t off) const {
        const uint64_t a = u32(off), b = u32(off + 4);
        return big ? (a << 32) | b : (b << 32) | a;
    }
    double f64(uint64_t off) const {
        const uint64_t bits = u64(off);
        double d;
        std::memcpy(&d, &bits, 8);
        return d;
    }
};

/// The byte order: the revision 2 byte-order constant when the file has it, else the order in
/// which the format code is one this reader knows (a code read the other way round is 256 or
/// more, so at most one order can give a known code).
bool bigEndianOf(const ByteSource& src) {
    const uint32_t constant = src.u32be(3296);
    if (constant == 0x01020304u) return true;
    if (constant == 0x04030201u) return false;
    if (typeOfFormat(src.u16be(3224))) return true;
    if (typeOfFormat(src.u16le(3224))) return false;
    throw ReadRefused(kNotSupported, MsgIcon::Information);
}

/// Where the traces begin, after the extended textual headers, whose lines join `lines`.
uint64_t traceStart(const ByteSource& src, const Fields& f, int revision,
                    std::vector<std::string>& lines, int64_t& extended) {
    const uint64_t size = src.size();
    extended = f.i16(3504);
    uint64_t start = kHeaderBytes;
    std::vector<uint8_t> block(kTextBytes);
    std::string text;
    // Reads the extended header at `at`; true when it is the last of a variable count.
    auto readBlock = [&](uint64_t at) {
        if (at + kTextBytes > size) throw ReadError("extended textual header past the end");
        // A fixed count with the file information's lines all taken: nothing in this header
        // is used, and a count in the thousands would only decode text to drop it.
        if (extended > 0 && lines.size() >= kMostTextLines) return false;
        src.read(at, block.data(), block.size());
        decodeText(block, text);
        appendCards(text, lines, kMostTextLines);
        return text.find("((SEG: EndText))") != std::string::npos;
    };
    if (extended > 0) {
        for (int64_t k = 0; k < extended; ++k, start += kTextBytes)
            readBlock(start);
    } else if (extended == -1) {
        // A variable count: the headers run up to the one that holds the end stanza.
        for (int64_t k = 1;; ++k) {
            const bool last = readBlock(start);
            start += kTextBytes;
            if (last) {
                extended = k;
                break;
            }
        }
    } else if (extended < 0) {
        throw ReadError("extended textual header count");
    }
    if (revision >= 2) {
        // Revision 2 may give the first trace's offset outright.
        const uint64_t given = f.u64(3520);
        if (given != 0) {
            if (given < kHeaderBytes || given > size) throw ReadError("first trace offset");
            start = given;
        }
    }
    if (start > size) throw ReadError("headers past the end");
    return start;
}

struct Layout {
    SampleType type = SampleType::Int16;
    uint64_t samples = 0;
    const char* samplesFrom = "";
    uint64_t traceBytes = 0;
    uint64_t traces = 0;
};

/// The sample count: the first of the binary header's counts and the first trace header's
/// that is not 0 and divides what follows the headers into whole traces.
Layout layoutOf(const Fields& f, int revision, SampleType type, uint64_t start,
                uint64_t traceHeaderBytes) {
    struct Candidate {
        uint64_t samples;
        const char* from;
    };
    std::vector<Candidate> candidates;
    if (revision >= 2) candidates.push_back({f.u32(3268), "extended binary header field"});
    candidates.push_back({f.u16(3220), "binary header"});
    candidates.push_back({f.u16(start + 114), "first trace header"});
    const uint64_t body = f.src.size() - start;
    for (const Candidate& c : candidates) {
        if (c.samples == 0 || c.samples > uint64_t(fft::kMaxLength)) continue;
        const uint64_t traceBytes = traceHeaderBytes + bytesForSamples(type, c.samples);
        if (body < traceBytes || body % traceBytes != 0) continue;
        Layout l;
        l.type = type;
        l.samples = c.samples;
        l.samplesFrom = c.from;
        l.traceBytes = traceBytes;
        l.traces = body / traceBytes;
        return l;
    }
    throw ReadError("no sample count fits the file");
}

/// The sample interval in microseconds, from the binary header or else the first trace's.
double intervalOf(const Fields& f, int revision, uint64_t start, const char*& from) {
    if (revision >= 2) {
        const double extended = f.f64(3272);
        if (std::isfinite(extended) && extended > 0) {
            from = "extended binary header field";
            return extended;
        }
    }
    if (const uint64_t binary = f.u16(3216)) {
        from = "binary header";
        return double(binary);
    }
    if (const uint64_t trace = f.u16(start + 116)) {
        from = "first trace header";
        return double(trace);
    }
    throw ReadError("no sample interval");
}

void readSegy(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    const uint64_t size = src->size();
    setSourceLength(st, size);
    if (size < kHeaderBytes) throw ReadError("shorter than the headers");

    const bool big = bigEndianOf(*src);
    const Fields f{*src, big};
    const uint64_t format = f.u16(3224);
    const auto type = typeOfFormat(uint32_t(format));
    if (!type) throw ReadRefused(kNotSupported, MsgIcon::Information);
    const uint64_t revisionField = f.u16(3500);
    const int revision = int(revisionField >= 256 ? revisionField >> 8 : revisionField);

    std::vector<std::string> lines;
    {
        std::vector<uint8_t> bytes(kTextBytes);
        src->read(0, bytes.data(), bytes.size());
        std::string text;
        decodeText(bytes, text);
        appendCards(text, lines, kMostTextLines);
    }
    int64_t extended = 0;
    const uint64_t start = traceStart(*src, f, revision, lines, extended);

    uint64_t traceHeaderBytes = kTraceHeaderBytes;
    if (revision >= 2) {
        const uint64_t more = f.u32(3506);
        if (more > 0xFFFF) throw ReadError("additional trace headers");
        traceHeaderBytes += kTraceHeaderBytes * more;
    }
    const Layout l = layoutOf(f, revision, *type, start, traceHeaderBytes);
    if (l.traces > uint64_t(std::numeric_limits<int32_t>::max())) throw ReadError("traces");
    const char* intervalFrom = "";
    const double interval = intervalOf(f, revision, start, intervalFrom);

    st.SampleRate = 1e6 / interval;
    st.TraceCount = int32_t(l.traces);
    st.TraceLength = int32_t(l.samples);
    st.Sp_Samples = int32_t(l.samples);
    st.SampleBits = int16_t(sampleBitsOf(l.type));
    st.BitsPerSample = st.SampleBits;
    st.DataStart = int32_t(std::min<uint64_t>(start + 1, uint64_t(INT32_MAX)));

    lines.push_back("Revision " + std::to_string(revision) + ", format " + std::to_string(format) +
                    " (" + describeSampleType(l.type) + "), " +
                    (big ? "big-endian" : "little-endian"));
    if (extended > 0) lines.push_back("Extended textual headers: " + std::to_string(extended));
    lines.push_back("Samples per trace: " + std::to_string(l.samples) + " (" + l.samplesFrom + ")");
    lines.push_back("Sample interval: " + numberText(interval) + " us (" + intervalFrom + ")");
    lines.push_back("Traces: " + std::to_string(l.traces));
    st.SourceInfoLines = std::move(lines);

    const size_t sampleBytes = size_t(bytesForSamples(l.type, l.samples));
    std::vector<uint8_t> raw(sampleBytes);
    std::vector<float> trace(size_t(l.samples));
    SamplePeak peak;
    const bool integer = isIntegerType(l.type);
    TraceOutput out(ctx, st.TempPath);
    for (int32_t t = 0; t < st.TraceCount; ++t) {
        if (!out.next(t)) break;
        const uint64_t at = start + uint64_t(t) * l.traceBytes + traceHeaderBytes;
        if (src->read(at, raw.data(), raw.size()) != raw.size()) throw ReadError("short trace");
        decodeSamples(l.type, big, raw.data(), trace.size(), trace.data());
        if (!integer) peak.take(trace.data(), trace.size());
        out.write(trace);
    }
    out.finish();
    st.FullScalePos = fullScaleFor(integer, integerFullScale(l.type), peak);
    st.FullScaleNeg = st.FullScalePos;
}

} // namespace

void ReadSegyStd(ImportContext& ctx) {
    runStandardRead(ctx, [&] { readSegy(ctx); });
}

} // namespace kv
