// "WAV, all variants": the chunk walk, every sample coding, the channel the options choose,
// RF64, and the real files whose extra chunks or sample width the fixed-layout entry misreads.
#include "import/variant_files.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;
using test::RiffBuilder;

namespace {

std::vector<double> wave(int n, double amplitude, double phase = 0.0) {
    std::vector<double> v;
    for (int i = 0; i < n; ++i)
        v.push_back(std::round(amplitude * std::sin(0.05 * i + phase)));
    return v;
}

std::vector<float> asFloats(const std::vector<double>& v, size_t n) {
    std::vector<float> f(n, 0.0f);
    for (size_t i = 0; i < n && i < v.size(); ++i)
        f[i] = float(v[i]);
    return f;
}

} // namespace

TEST(WavStd, EveryCodingReadsItsSamplesAndFullScale) {
    struct Case {
        const char* what;
        uint16_t tag, bits;
        bool extensible;
        SampleCoding coding;
        double amplitude;
        float fullScale; // 0: the largest absolute sample
    };
    const Case cases[] = {
        {"PCM 8", 1, 8, false, SampleCoding::U8, 120, 127},
        {"PCM 16", 1, 16, false, SampleCoding::S16, 30000, 32767},
        {"PCM 24", 1, 24, false, SampleCoding::S24, 8000000, 8388607},
        {"PCM 32", 1, 32, false, SampleCoding::S32, 2000000000, 2147483647.0f},
        {"float 32", 3, 32, false, SampleCoding::F32, 0.75, 0},
        {"float 64", 3, 64, false, SampleCoding::F64, 1234.5, 0},
        {"extensible PCM 24", 1, 24, true, SampleCoding::S24, -7000000, 8388607},
        {"extensible float 32", 3, 32, true, SampleCoding::F32, 3.0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // Floats keep their fractions.
        std::vector<double> v = wave(3000, c.amplitude);
        if (c.fullScale == 0)
            for (double& x : v)
                x = c.amplitude * std::sin(0.05 * (&x - v.data()));
        RiffBuilder r;
        r.chunk("fmt ", test::fmtChunk(c.tag, 1, 22050, c.bits, c.extensible));
        r.chunk("data", test::frames(c.coding, {v}));
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadWavStd, b.put(r.bytes, "c.wav"))) << b.message();
        EXPECT_EQ(b.st.Sp_Samples, 1024);
        EXPECT_EQ(b.st.TraceCount, 3) << "3000 / 1024 = 2.9";
        EXPECT_EQ(b.st.SampleRate, 22050.0);
        EXPECT_EQ(b.st.BitsPerSample, c.bits);
        const auto w = b.working();
        ASSERT_EQ(w.size(), 3u * 1024);
        EXPECT_EQ(w, asFloats(v, w.size())) << "the tail past the recording is 0";
        float largest = 0;
        for (double x : v)
            largest = std::max(largest, float(std::fabs(x)));
        EXPECT_EQ(b.st.FullScalePos, c.fullScale == 0 ? largest : c.fullScale);
        EXPECT_GT(b.st.FullScaleNeg, 0.0f);
        EXPECT_EQ(b.infoHas("WAVE_FORMAT_EXTENSIBLE"), c.extensible);
    }
}

TEST(WavStd, ChunksBeforeAndAfterTheDataAreSteppedOverWithTheirPadBytes) {
    const std::vector<double> v = {1, -2, 3, -4, 5, -6, 7, -8};
    RiffBuilder r;
    r.chunk("JUNK", std::vector<uint8_t>(27, 0xAA)); // odd: one pad byte follows
    r.chunk("fmt ", test::fmtChunk(1, 1, 8000, 16));
    r.chunk("LIST", std::vector<uint8_t>(13, 0x55));
    r.chunk("fact", {8, 0, 0, 0});
    r.chunk("data", test::frames(SampleCoding::S16, {v}));
    r.chunk("bext", std::vector<uint8_t>(9, 0x77));
    test::StdBench b;
    ASSERT_TRUE(b.read(ReadWavStd, b.put(r.bytes, "chunks.wav"))) << b.message();
    EXPECT_EQ(b.st.Sp_Samples, 8) << "a short recording is one trace of the power of two it holds";
    EXPECT_EQ(b.working(), asFloats(v, 8)) << "the chunk behind the data is not read as samples";
    EXPECT_TRUE(
        b.infoHas("Chunks : JUNK (27), fmt  (16), LIST (13), fact (4), data (16), bext (9)"));
    EXPECT_TRUE(b.infoHas("Format : PCM, 16 bits"));
}

TEST(WavStd, FourChannelsGiveTheOneTheOptionsChoose) {
    std::vector<std::vector<double>> ch;
    for (int c = 0; c < 4; ++c)
        ch.push_back(wave(2048, 1000.0 * (c + 1), c));
    RiffBuilder r;
    r.chunk("fmt ", test::fmtChunk(1, 4, 48000, 16));
    r.chunk("data", test::frames(SampleCoding::S16, ch));
    for (int channel = 1; channel <= 4; ++channel) {
        SCOPED_TRACE(channel);
        test::StdBench b;
        b.st.ImportChannel = int16_t(channel);
        ASSERT_TRUE(b.read(ReadWavStd, b.put(r.bytes, "four.wav"))) << b.message();
        EXPECT_EQ(b.st.Channels, 4);
        EXPECT_EQ(b.st.StereoFlag, 0);
        EXPECT_EQ(b.st.TraceCount, 2);
        EXPECT_EQ(b.working(), asFloats(ch[size_t(channel - 1)], 2048));
        EXPECT_TRUE(b.infoHas("Channels : 4, channel " + std::to_string(channel) + " shown"));
    }
    test::StdBench b;
    b.st.ImportChannel = 5;
    EXPECT_FALSE(b.read(ReadWavStd, b.put(r.bytes, "four.wav")));
    EXPECT_EQ(b.message(), "Channel 5 is chosen in the options, but the file has only 4 channels.");
}

TEST(WavStd, RF64TakesTheDataSizeFromItsDs64Chunk) {
    const std::vector<double> v = wave(1024, 20000);
    const auto data = test::frames(SampleCoding::S16, {v});
    std::vector<uint8_t> ds64;
    test::appendLe<uint64_t>(ds64, 0);                     // RIFF size
    test::appendLe<uint64_t>(ds64, uint64_t(data.size())); // data size
    test::appendLe<uint64_t>(ds64, 1024);                  // sample count
    test::appendLe<uint32_t>(ds64, 0);                     // no table
    RiffBuilder r("RF64");
    r.chunk("ds64", ds64);
    r.chunk("fmt ", test::fmtChunk(1, 1, 44100, 16));
    r.chunk("data", data);
    // The 32-bit size of the data says "look in ds64".
    std::fill(r.bytes.end() - long(data.size()) - 4, r.bytes.end() - long(data.size()), 0xFF);
    test::StdBench b;
    ASSERT_TRUE(b.read(ReadWavStd, b.put(r.bytes, "big.wav"))) << b.message();
    EXPECT_EQ(b.working(), asFloats(v, 1024));
    EXPECT_TRUE(b.infoHas("Container : RF64"));
}

TEST(WavStd, DownSamplingThinsEachTraceOfNewDSTimesSpSamples) {
    std::vector<double> v;
    for (int i = 0; i < 16; ++i)
        v.push_back(i);
    RiffBuilder r;
    r.chunk("fmt ", test::fmtChunk(1, 1, 1000, 16));
    r.chunk("data", test::frames(SampleCoding::S16, {v}));
    test::StdBench b;
    b.st.Sp_Samples = 4;
    b.st.NewDS = 2;
    b.st.DownsampleMode = 1;
    ASSERT_TRUE(b.read(ReadWavStd, b.put(r.bytes, "ds.wav"))) << b.message();
    EXPECT_EQ(b.st.TraceCount, 2);
    EXPECT_EQ(b.working(), (std::vector<float>{0, 2, 4, 6, 8, 10, 12, 14}));
}

TEST(WavStd, RealFilesWithExtraChunksReadTheirTrueSamples) {
    KV_REQUIRE_REAL(dir, "wav");
    struct Real {
        const char* name;
        size_t dataAt; // where the samples begin, as found in the file
        int channels, bits;
        int frames;
        int spSamples, traces;
    };
    const Real files[] = {
        {"pluck-pcm8.wav", 142, 2, 8, 3307, 1024, 3},
        {"pluck-pcm16.wav", 142, 2, 16, 3307, 1024, 3},
        {"pcmwaveformat-16bit-44100Hz-mono-extra.wav", 78, 1, 16, 4, 4, 1},
        {"waveformatex-16bit-44100Hz-stereo.wav", 46, 2, 16, 4, 4, 1},
        {"waveformatex-8bit-11025Hz-mono.wav", 46, 1, 8, 4, 4, 1},
        {"pop.wav", 68, 1, 16, 100, 64, 1},
        {"nonstandard-01.wav", 802, 2, 24, 1, 2, 1},
        {"3cssan.near.8.1.RNON.wav", 44, 1, 8, 2599, 1024, 3},
    };
    for (const Real& f : files) {
        SCOPED_TRACE(f.name);
        const std::string bytes = test::readText(dir + "/" + f.name);
        for (int channel = 1; channel <= f.channels; ++channel) {
            test::StdBench b;
            b.st.ImportChannel = int16_t(channel);
            ASSERT_TRUE(b.read(ReadWavStd, dir + "/" + f.name)) << b.message();
            EXPECT_EQ(b.st.Sp_Samples, f.spSamples);
            EXPECT_EQ(b.st.TraceCount, f.traces);
            EXPECT_EQ(b.st.DataStart, int32_t(f.dataAt) + 1);
            const auto w = b.working();
            ASSERT_EQ(w.size(), size_t(f.spSamples * f.traces));
            const int width = f.bits / 8;
            for (size_t i = 0; i < w.size(); ++i) {
                float expect = 0.0f;
                if (int(i) < f.frames) {
                    const size_t at =
                        f.dataAt + (i * size_t(f.channels) + size_t(channel - 1)) * size_t(width);
                    const auto* p = reinterpret_cast<const uint8_t*>(bytes.data()) + at;
                    if (f.bits == 8) expect = float(int(p[0]) - 128);
                    if (f.bits == 16) expect = float(int16_t(p[0] | p[1] << 8));
                    if (f.bits == 24)
                        expect = float(int32_t(p[0] << 8 | p[1] << 16 | p[2] << 24) >> 8);
                }
                ASSERT_EQ(w[i], expect) << "sample " << i << ", channel " << channel;
            }
        }
    }
    test::StdBench b;
    ASSERT_TRUE(b.read(ReadWavStd, dir + "/nonstandard-01.wav"));
    EXPECT_TRUE(b.infoHas("Chunks : JUNK (92), bext (602), fmt  (40), minf (16), data (6)"));
    EXPECT_EQ(b.st.FullScalePos, 8388607.0f);
    EXPECT_FALSE(b.read(ReadWavStd, dir + "/test1_empty.wav"));
    EXPECT_EQ(b.message(), "The WAV file holds no samples.");
}

TEST(WavStd, FilesThatCannotBeReadSayWhyAndLeaveNoDataSet) {
    const auto fmt16 = test::fmtChunk(1, 1, 8000, 16);
    const auto data = test::frames(SampleCoding::S16, {wave(100, 1000)});
    struct Case {
        const char* what;
        std::vector<uint8_t> bytes;
        const char* message;
    };
    std::vector<Case> cases;
    cases.push_back(
        {"empty", {}, "This is not a WAV file: it does not begin with a RIFF WAVE header."});
    {
        RiffBuilder r;
        r.chunk("fmt ", fmt16).chunk("data", data);
        r.bytes.resize(r.bytes.size() - 10);
        cases.push_back({"data past the end", r.bytes,
                         "The WAV file's \"data\" chunk of 200 bytes runs past the end of the "
                         "file."});
    }
    {
        RiffBuilder r;
        r.chunk("LIST", std::vector<uint8_t>(20, 1)).chunk("fmt ", fmt16).chunk("data", data);
        r.bytes[16] = 0xF0; // the LIST chunk now claims 0x100F0 bytes
        r.bytes[18] = 0x01;
        cases.push_back({"chunk past the end", r.bytes,
                         "The WAV file's \"LIST\" chunk of 65776 bytes runs past the end of the "
                         "file."});
    }
    cases.push_back({"no format", RiffBuilder().chunk("data", data).bytes,
                     "The WAV file has no format (fmt) chunk."});
    cases.push_back(
        {"no data", RiffBuilder().chunk("fmt ", fmt16).bytes, "The WAV file has no data chunk."});
    cases.push_back(
        {"12 bits",
         RiffBuilder().chunk("fmt ", test::fmtChunk(1, 1, 8000, 12)).chunk("data", data).bytes,
         "The WAV file holds PCM samples of 12 bits; PCM of 8, 16, 24 or 32 bits and "
         "IEEE float of 32 or 64 bits are read."});
    cases.push_back(
        {"compressed",
         RiffBuilder().chunk("fmt ", test::fmtChunk(0x55, 1, 8000, 16)).chunk("data", data).bytes,
         "The WAV file holds format 0x0055 samples of 16 bits; PCM of 8, 16, 24 or 32 "
         "bits and IEEE float of 32 or 64 bits are read."});
    cases.push_back(
        {"no channels",
         RiffBuilder().chunk("fmt ", test::fmtChunk(1, 0, 8000, 16)).chunk("data", data).bytes,
         "The WAV file's format chunk gives no channels."});
    cases.push_back(
        {"more channels than the data holds",
         RiffBuilder().chunk("fmt ", test::fmtChunk(1, 200, 8000, 16)).chunk("data", data).bytes,
         "The WAV file's data chunk of 200 bytes holds no whole frame of 200 channels "
         "of 16 bits."});
    cases.push_back(
        {"no rate",
         RiffBuilder().chunk("fmt ", test::fmtChunk(1, 1, 0, 16)).chunk("data", data).bytes,
         "The WAV file's format chunk gives no sample rate."});
    {
        std::vector<uint8_t> nan;
        test::appendLe<float>(nan, 0.5f);
        test::appendLe<float>(nan, std::nanf(""));
        cases.push_back(
            {"not a number",
             RiffBuilder().chunk("fmt ", test::fmtChunk(3, 1, 8000, 32)).chunk("data", nan).bytes,
             "The WAV file holds a sample that is not a finite number within the range "
             "of 32-bit floats."});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        test::StdBench b;
        EXPECT_FALSE(b.read(ReadWavStd, b.put(c.bytes, "bad.wav")));
        EXPECT_EQ(b.message(), c.message);
        EXPECT_TRUE(b.st.TempPath.empty());
    }
}
