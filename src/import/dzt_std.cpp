// Ground-penetrating-radar recordings in the DZT layout, as the instruments write them: the
// header says where the scans start, how wide a sample is (8 and 16 bits unsigned, 32 bits
// signed) and how many channels take turns scan by scan. One channel, chosen in the options,
// becomes the working file, one scan a trace. The first two samples of every scan are the
// instrument's bookkeeping (scan number, marker); they stay in the trace as they were read, and
// file information says so.
#include "import/standard_reading.h"

#include "platform/numeric.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace kv {

namespace {

constexpr uint64_t kHeaderBlock = 1024;

struct DztHeader {
    uint16_t dataField = 0; // rh_data as the file has it
    uint16_t samples = 0;   // per scan
    uint16_t bits = 0;
    uint16_t channels = 0;
    float scansPerSecond = 0.0f;
    float scansPerMetre = 0.0f;
    float rangeNs = 0.0f;
    float positionNs = 0.0f;
    std::string antenna;
    std::string name;
    SampleCoding coding = SampleCoding::U16;
    uint64_t dataStart = 0; // 0-based byte offset of the first scan
    uint64_t scans = 0;     // complete scans of every channel
};

/// A fixed-width text field: up to its first NUL, blanks for what is not printable, trimmed.
std::string fieldText(const ByteSource& src, uint64_t off, size_t n) {
    std::string s = src.text(off, n);
    s.resize(std::min(s.size(), s.find('\0')));
    for (char& c : s)
        if (!std::isprint(static_cast<unsigned char>(c))) c = ' ';
    const size_t b = s.find_first_not_of(' ');
    if (b == std::string::npos) return {};
    return s.substr(b, s.find_last_not_of(' ') - b + 1);
}

std::string plural(uint64_t n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

DztHeader readHeader(const ByteSource& src) {
    const uint64_t size = src.size();
    if (size < kHeaderBlock)
        throw UnreadableFile("This is not a radar DZT file: it is shorter than the 1024-byte "
                             "header.");
    DztHeader h;
    h.dataField = src.u16le(2);
    h.samples = src.u16le(4);
    h.bits = src.u16le(6);
    h.scansPerSecond = src.f32le(10);
    h.scansPerMetre = src.f32le(14);
    h.positionNs = src.f32le(22);
    h.rangeNs = src.f32le(26);
    h.channels = src.u16le(52);
    h.antenna = fieldText(src, 98, 14);
    h.name = fieldText(src, 114, 12);

    switch (h.bits) {
    case 8:
        h.coding = SampleCoding::U8;
        break;
    case 16:
        h.coding = SampleCoding::U16;
        break;
    case 32:
        h.coding = SampleCoding::S32;
        break;
    default:
        throw UnreadableFile("The DZT header gives " + std::to_string(h.bits) +
                             " bits per sample; 8, 16 and 32 bits are read.");
    }
    if (h.samples == 0) throw UnreadableFile("The DZT header gives no samples per scan.");
    if (h.channels == 0) throw UnreadableFile("The DZT header gives no channels.");
    if (!(h.rangeNs > 0.0f) || !std::isfinite(h.rangeNs))
        throw UnreadableFile("The DZT header gives no time range, so the sample rate is unknown.");

    // Below 1024 the field counts header blocks of 1024 bytes (large headers say 128 for
    // 128 KiB); from 1024 on it is the byte offset itself. Every channel has a header block of
    // its own, so the scans never start before the last of them, and a field of 0 means just
    // those blocks.
    const uint64_t perChannel = kHeaderBlock * h.channels;
    if (h.dataField == 0)
        h.dataStart = perChannel;
    else if (h.dataField < kHeaderBlock)
        h.dataStart = uint64_t(h.dataField) * kHeaderBlock;
    else
        h.dataStart = std::max<uint64_t>(h.dataField, perChannel);
    if (h.dataStart >= size)
        throw UnreadableFile("The DZT header puts the scans at byte " +
                             std::to_string(h.dataStart) + ", but the file ends at byte " +
                             std::to_string(size) + ".");

    const uint64_t scanBytes = uint64_t(h.samples) * uint64_t(sampleBytes(h.coding));
    h.scans = (size - h.dataStart) / (scanBytes * h.channels);
    if (h.scans == 0)
        throw UnreadableFile("The DZT file holds no complete scan: its header promises " +
                             plural(h.channels, "channel", "channels") + " of " +
                             plural(h.samples, "sample", "samples") + " of " +
                             std::to_string(h.bits) + " bits, " +
                             std::to_string(scanBytes * h.channels) + " bytes a scan, and " +
                             std::to_string(size - h.dataStart) + " bytes follow the header.");
    if (h.scans > uint64_t(INT32_MAX))
        throw UnreadableFile("The DZT file holds more scans than can be shown.");
    return h;
}

std::vector<std::string> infoLines(const DztHeader& h, int channel) {
    std::vector<std::string> lines;
    if (!h.antenna.empty()) lines.push_back(infoLine("Antenna", h.antenna));
    lines.push_back(infoLine("Range (ns)", shortestText(h.rangeNs)));
    lines.push_back(infoLine("Position (ns)", shortestText(h.positionNs)));
    lines.push_back(infoLine("Channels", std::to_string(h.channels) + ", channel " +
                                             std::to_string(channel + 1) + " shown"));
    lines.push_back(infoLine("Samples/scan", std::to_string(h.samples)));
    lines.push_back(infoLine("Bits per sample",
                             h.bits == 32 ? "32, signed"
                                          : std::to_string(h.bits) + ", unsigned, centred on " +
                                                std::to_string(1 << (h.bits - 1))));
    lines.push_back(infoLine("Scans/second", shortestText(h.scansPerSecond)));
    lines.push_back(infoLine("Scans/metre", shortestText(h.scansPerMetre)));
    lines.push_back(infoLine("Scans", std::to_string(h.scans)));
    lines.push_back(infoLine("Scans start at byte", std::to_string(h.dataStart)));
    lines.push_back(infoLine("Samples 1 and 2 of each scan",
                             "bookkeeping words (scan number, marker), kept as read"));
    if (!h.name.empty()) lines.push_back(infoLine("Name in header", h.name));
    return lines;
}

void readDzt(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    setSourceLength(st, src->size());
    const DztHeader h = readHeader(*src);
    const int channel = chosenChannel(st, h.channels);
    const int ds = std::max<int>(st.NewDS, 1);
    if (h.samples / ds < 1)
        throw UnreadableFile("Scans of " + std::to_string(h.samples) +
                             " samples cannot be thinned by " + std::to_string(ds) + ".");

    st.BitsPerSample = int16_t(h.bits);
    st.SampleBits = st.BitsPerSample;
    st.BytesPerSample = sampleBytes(h.coding);
    st.Channels = int16_t(std::min<int>(h.channels, INT16_MAX));
    st.StereoFlag = 0;
    st.RangeNs = h.rangeNs;
    st.ScansPerSecond = double(h.scansPerSecond);
    st.TraceLength = h.samples;
    st.Sp_Samples = h.samples / ds;
    st.TraceCount = int32_t(h.scans);
    st.SampleRate = double(h.samples) / (1e-9 * double(h.rangeNs));
    st.DataStart = int32_t(std::min<uint64_t>(h.dataStart + 1, INT32_MAX));
    st.ReadPos = st.DataStart;
    setIntegerFullScale(st, h.bits);
    st.SourceInfoLines = infoLines(h, channel);

    const size_t scanBytes = size_t(h.samples) * size_t(st.BytesPerSample);
    std::vector<uint8_t> bytes(scanBytes);
    writeThinnedTraces(ctx, h.samples, [&](int32_t k, std::vector<float>& raw) {
        // Scans of all channels take turns: scan k of every channel, then scan k + 1.
        const uint64_t at =
            h.dataStart + (uint64_t(k) * h.channels + uint64_t(channel)) * scanBytes;
        src->read(at, bytes.data(), bytes.size());
        decodeSamples(bytes.data(), size_t(st.BytesPerSample), raw.size(), h.coding, raw.data());
    });
}

} // namespace

void ReadDztStd(ImportContext& ctx) {
    runStandardRead(ctx, [&] { readDzt(ctx); });
}

} // namespace kv
