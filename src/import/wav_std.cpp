// WAV recordings as audio and measurement programs really write them: the RIFF chunks are
// walked one by one (LIST, fact, bext, JUNK and chunks we do not know are stepped over, odd
// sizes padded), PCM of 8, 16, 24 and 32 bits and IEEE floats of 32 and 64 bits are decoded,
// WAVE_FORMAT_EXTENSIBLE says which of the two it is, and RF64 gives the sizes of files over
// 4 GB. One channel, chosen in the options, is cut into traces of Sp_Samples as the WAV entry
// cuts a recording.
#include "import/standard_reading.h"

#include "platform/numeric.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <limits>

namespace kv {

namespace {

constexpr uint16_t kTagPcm = 1;
constexpr uint16_t kTagFloat = 3;
constexpr uint16_t kTagExtensible = 0xFFFE;
constexpr uint32_t kSizeInDs64 = 0xFFFFFFFF;
/// Chunks walked before the walk gives up looking further; no real file comes near it.
constexpr size_t kMostChunks = 4096;
/// Chunks named one by one in file information; more are counted.
constexpr size_t kChunksNamed = 32;
/// Bytes read at once while a channel is picked out of its frames.
constexpr size_t kReadBlock = size_t(1) << 20;

struct Chunk {
    std::string id;
    uint64_t body = 0; // 0-based offset of the chunk's contents
    uint64_t size = 0;
};

struct WavFacts {
    std::string container; // RIFF, RF64 or BW64
    std::vector<Chunk> chunks;
    bool haveFormat = false, haveData = false;
    uint16_t tag = 0, subTag = 0;
    uint16_t channels = 0;
    uint32_t rate = 0;
    uint16_t bits = 0, validBits = 0;
    uint32_t channelMask = 0;
    SampleCoding coding = SampleCoding::S16;
    uint64_t dataBody = 0, dataSize = 0;
    uint64_t frames = 0;
    int frameBytes = 0;
};

/// A chunk id as text for a message or file information: what is not printable shows as '?'.
std::string printableId(std::string id) {
    for (char& c : id)
        if (!std::isprint(static_cast<unsigned char>(c))) c = '?';
    return id;
}

/// The sizes an RF64 file keeps in its ds64 chunk: that of the data chunk, and a table for
/// any other chunk over 4 GB.
struct Ds64 {
    uint64_t dataSize = 0;
    std::vector<std::pair<std::string, uint64_t>> table;
};

Ds64 readDs64(const ByteSource& src, uint64_t body, uint64_t size) {
    if (size < 28) throw UnreadableFile("The RF64 file's ds64 chunk is too short.");
    Ds64 d;
    d.dataSize = uint64_t(src.u32le(body + 8)) | uint64_t(src.u32le(body + 12)) << 32;
    const uint32_t entries = src.u32le(body + 24);
    if (uint64_t(entries) * 12 > size - 28)
        throw UnreadableFile("The RF64 file's ds64 chunk lists more sizes than it holds.");
    for (uint32_t i = 0; i < entries; ++i) {
        const uint64_t at = body + 28 + 12 * uint64_t(i);
        d.table.emplace_back(src.text(at, 4),
                             uint64_t(src.u32le(at + 4)) | uint64_t(src.u32le(at + 8)) << 32);
    }
    return d;
}

void readFormat(const ByteSource& src, const Chunk& c, WavFacts& w) {
    if (c.size < 16) throw UnreadableFile("The WAV file's format chunk is too short.");
    w.tag = src.u16le(c.body);
    w.channels = src.u16le(c.body + 2);
    w.rate = src.u32le(c.body + 4);
    w.bits = src.u16le(c.body + 14);
    w.validBits = w.bits;
    w.subTag = w.tag;
    if (w.tag == kTagExtensible) {
        if (c.size < 40 || src.u16le(c.body + 16) < 22)
            throw UnreadableFile("The WAV file's extensible format chunk is too short.");
        w.validBits = src.u16le(c.body + 18);
        w.channelMask = src.u32le(c.body + 20);
        // The sub-format GUID begins with the format tag it stands for.
        w.subTag = src.u16le(c.body + 24);
    }
    w.haveFormat = true;
}

std::string formatName(uint16_t tag) {
    if (tag == kTagPcm) return "PCM";
    if (tag == kTagFloat) return "IEEE float";
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%04X", unsigned(tag));
    return std::string("format ") + buf;
}

/// Checks the format and sets the coding, the frame width and the frame count.
void checkFormat(WavFacts& w) {
    if (!w.haveFormat) throw UnreadableFile("The WAV file has no format (fmt) chunk.");
    if (!w.haveData) throw UnreadableFile("The WAV file has no data chunk.");
    bool known = false;
    if (w.subTag == kTagPcm) {
        known = true;
        if (w.bits == 8)
            w.coding = SampleCoding::U8;
        else if (w.bits == 16)
            w.coding = SampleCoding::S16;
        else if (w.bits == 24)
            w.coding = SampleCoding::S24;
        else if (w.bits == 32)
            w.coding = SampleCoding::S32;
        else
            known = false;
    } else if (w.subTag == kTagFloat) {
        known = true;
        if (w.bits == 32)
            w.coding = SampleCoding::F32;
        else if (w.bits == 64)
            w.coding = SampleCoding::F64;
        else
            known = false;
    }
    if (!known)
        throw UnreadableFile("The WAV file holds " + formatName(w.subTag) + " samples of " +
                             std::to_string(w.bits) +
                             " bits; PCM of 8, 16, 24 or 32 bits and IEEE float of 32 or 64 bits "
                             "are read.");
    if (w.channels == 0) throw UnreadableFile("The WAV file's format chunk gives no channels.");
    if (w.channels > INT16_MAX)
        throw UnreadableFile("The WAV file's format chunk gives " + std::to_string(w.channels) +
                             " channels; at most 32767 are read.");
    if (w.rate == 0) throw UnreadableFile("The WAV file's format chunk gives no sample rate.");
    w.frameBytes = int(w.channels) * sampleBytes(w.coding);
    w.frames = w.dataSize / uint64_t(w.frameBytes);
    if (w.dataSize == 0) throw UnreadableFile("The WAV file holds no samples.");
    if (w.frames == 0)
        throw UnreadableFile("The WAV file's data chunk of " + std::to_string(w.dataSize) +
                             " bytes holds no whole frame of " + std::to_string(w.channels) +
                             " channels of " + std::to_string(w.bits) + " bits.");
}

WavFacts walkChunks(const ByteSource& src) {
    const uint64_t size = src.size();
    WavFacts w;
    w.container = src.text(0, 4);
    if (size < 12 || (w.container != "RIFF" && w.container != "RF64" && w.container != "BW64") ||
        src.text(8, 4) != "WAVE")
        throw UnreadableFile("This is not a WAV file: it does not begin with a RIFF WAVE header.");
    const bool rf64 = w.container != "RIFF";
    Ds64 ds64;
    // The RIFF size field is not trusted: many writers leave it wrong, so the walk goes to the
    // end of the file. A last odd-sized chunk may lack its pad byte.
    uint64_t at = 12;
    while (at + 8 <= size && w.chunks.size() < kMostChunks) {
        Chunk c;
        c.id = src.text(at, 4);
        c.body = at + 8;
        c.size = src.u32le(at + 4);
        if (rf64 && w.chunks.empty() && c.id != "ds64")
            throw UnreadableFile("The RF64 file does not begin with its ds64 chunk.");
        if (rf64 && c.size == kSizeInDs64) {
            if (c.id == "data") {
                c.size = ds64.dataSize;
            } else {
                auto e = std::find_if(ds64.table.begin(), ds64.table.end(),
                                      [&](const auto& t) { return t.first == c.id; });
                if (e == ds64.table.end())
                    throw UnreadableFile("The RF64 file's ds64 chunk gives no size for its \"" +
                                         printableId(c.id) + "\" chunk.");
                c.size = e->second;
            }
        }
        if (c.size > size - c.body)
            throw UnreadableFile("The WAV file's \"" + printableId(c.id) + "\" chunk of " +
                                 std::to_string(c.size) + " bytes runs past the end of the file.");
        if (rf64 && w.chunks.empty()) ds64 = readDs64(src, c.body, c.size);
        if (c.id == "fmt " && !w.haveFormat) readFormat(src, c, w);
        if (c.id == "data" && !w.haveData) {
            w.haveData = true;
            w.dataBody = c.body;
            w.dataSize = c.size;
        }
        w.chunks.push_back(c);
        at = c.body + c.size + (c.size & 1);
    }
    checkFormat(w);
    return w;
}

std::vector<std::string> infoLines(const WavFacts& w, int channel, int64_t framesUsed) {
    std::vector<std::string> lines;
    lines.push_back(infoLine("Container", w.container));
    std::string format = formatName(w.subTag) + ", " + std::to_string(w.bits) + " bits";
    if (w.tag == kTagExtensible) {
        char mask[16];
        std::snprintf(mask, sizeof mask, "0x%X", unsigned(w.channelMask));
        format += " (WAVE_FORMAT_EXTENSIBLE, " + std::to_string(w.validBits) +
                  " bits valid, channel mask " + mask + ")";
    }
    lines.push_back(infoLine("Format", format));
    lines.push_back(infoLine("Channels", std::to_string(w.channels) + ", channel " +
                                             std::to_string(channel + 1) + " shown"));
    lines.push_back(infoLine("Sample Rate(Hz)", std::to_string(w.rate)));
    std::string frames = std::to_string(w.frames);
    if (uint64_t(framesUsed) < w.frames)
        frames += ", the first " + std::to_string(framesUsed) + " shown";
    lines.push_back(infoLine("Samples per channel", frames));
    std::string list;
    for (size_t i = 0; i < w.chunks.size() && i < kChunksNamed; ++i)
        list += (i ? ", " : "") + printableId(w.chunks[i].id) + " (" +
                std::to_string(w.chunks[i].size) + ")";
    if (w.chunks.size() > kChunksNamed)
        list += " and " + std::to_string(w.chunks.size() - kChunksNamed) + " more";
    lines.push_back(infoLine("Chunks", list));
    return lines;
}

/// Reads one channel of consecutive frames in blocks of about kReadBlock bytes.
class ChannelReader {
  public:
    ChannelReader(const ByteSource& src, const WavFacts& w, int channel)
        : src_(src), w_(w), offset_(size_t(channel) * size_t(sampleBytes(w.coding))),
          framesPerBlock_(std::max<size_t>(1, kReadBlock / size_t(w.frameBytes))) {}

    /// Frames [first, first + n) of the channel into out[0..n), stopping at the last frame.
    void read(uint64_t first, uint64_t n, float* out) {
        const uint64_t end = std::min(first + n, w_.frames);
        for (uint64_t f = first; f < end;) {
            const size_t count = size_t(std::min<uint64_t>(framesPerBlock_, end - f));
            block_.resize(count * size_t(w_.frameBytes));
            src_.read(w_.dataBody + f * uint64_t(w_.frameBytes), block_.data(), block_.size());
            decodeSamples(block_.data() + offset_, size_t(w_.frameBytes), count, w_.coding,
                          out + (f - first));
            f += count;
        }
    }
    size_t framesPerBlock() const { return framesPerBlock_; }

  private:
    const ByteSource& src_;
    const WavFacts& w_;
    size_t offset_;
    size_t framesPerBlock_;
    std::vector<uint8_t> block_;
};

void readWav(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    setSourceLength(st, src->size());
    const WavFacts w = walkChunks(*src);
    const int channel = chosenChannel(st, w.channels);

    // Traces as the WAV entry cuts them: NewDS * Sp_Samples samples each, the count rounded to
    // the nearest whole trace; a recording shorter than half a trace becomes one trace of the
    // largest power of two it holds (two samples at the least, zero-padded).
    const int64_t ds = std::max<int>(st.NewDS, 1);
    if (st.Sp_Samples < 1 || st.Sp_Samples * ds > kLongestRawTrace)
        throw UnreadableFile("The samples per trace in the settings (" +
                             std::to_string(st.Sp_Samples) + ") cannot cut a recording.");
    int64_t rawPerTrace = ds * st.Sp_Samples;
    const double traces = roundHalfEven(double(w.frames) / double(rawPerTrace));
    if (traces > double(INT32_MAX))
        throw UnreadableFile("The WAV file holds more traces than can be shown.");
    st.TraceCount = int32_t(traces);
    if (st.TraceCount == 0) {
        st.Sp_Samples = 2;
        for (int k = 16; k >= 1; --k)
            if ((int64_t(1) << k) * ds <= int64_t(w.frames)) {
                st.Sp_Samples = 1 << k;
                break;
            }
        st.TraceCount = 1;
        rawPerTrace = ds * st.Sp_Samples;
    }
    const int64_t framesUsed =
        std::min<int64_t>(int64_t(w.frames), rawPerTrace * int64_t(st.TraceCount));

    st.Channels = int16_t(w.channels);
    st.StereoFlag = 0;
    st.BitsPerSample = int16_t(w.bits);
    st.SampleBits = st.BitsPerSample;
    st.BytesPerSample = sampleBytes(w.coding);
    st.SampleRate = double(w.rate);
    st.ScansPerSecond = 0;
    st.TraceLength = int32_t(rawPerTrace);
    st.DataStart = int32_t(std::min<uint64_t>(w.dataBody + 1, INT32_MAX));
    st.ReadPos = st.DataStart;

    ChannelReader reader(*src, w, channel);
    if (isFloatCoding(w.coding)) {
        // A first pass finds the largest sample of what will be shown; it also refuses values
        // no trace can hold before anything is written.
        float largest = 0.0f;
        std::vector<float> block(reader.framesPerBlock());
        for (int64_t f = 0; f < framesUsed; f += int64_t(block.size())) {
            const size_t n = size_t(std::min<int64_t>(int64_t(block.size()), framesUsed - f));
            reader.read(uint64_t(f), n, block.data());
            for (size_t i = 0; i < n; ++i) {
                if (!std::isfinite(block[i]))
                    throw UnreadableFile("The WAV file holds a sample that is not a finite "
                                         "number within the range of 32-bit floats.");
                largest = std::max(largest, std::fabs(block[i]));
            }
        }
        setFloatFullScale(st, largest);
    } else {
        setIntegerFullScale(st, w.bits);
    }
    st.SourceInfoLines = infoLines(w, channel, framesUsed);

    writeThinnedTraces(ctx, rawPerTrace, [&](int32_t k, std::vector<float>& raw) {
        reader.read(uint64_t(k) * uint64_t(rawPerTrace), raw.size(), raw.data());
    });
}

} // namespace

void ReadWavStd(ImportContext& ctx) {
    runStandardRead(ctx, [&] { readWav(ctx); });
}

} // namespace kv
