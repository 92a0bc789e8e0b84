// SEG-2 recordings through the SEG-2 and SPRScan ERA entries: the block id and byte order, the
// pointer and descriptor fields, the interval key and its unit, and the strides per format.
#include "import/file_filters.h"
#include "import/seismic_samples.h"
#include "seismic_files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

using namespace kv;

namespace {

constexpr int kSeg2 = 7; // filter positions with the factory Fil 1
constexpr int kSprScan = 8;

struct Sg2Case : test::FileCase {
    Sg2Case() : FileCase("x.sg2", kSprScan) {}
};

test::Seg2File twoTraces(int format) {
    test::Seg2File s;
    s.format = format;
    s.samples = 5;
    s.traces = {{1, -2, 3, -4, 5}, {10, 20, 30, 40, 50}};
    return s;
}

std::vector<uint8_t> bytesOf(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

/// Renames the first "SAMPLE_INTERVAL <value>" of a real file to the key shape the reader
/// finds, with a new value, keeping the string's length.
void patchIntervalKey(std::vector<uint8_t>& b, const std::string& value) {
    const std::string from = "SAMPLE_INTERVAL";
    auto it = std::search(b.begin(), b.end(), from.begin(), from.end());
    ASSERT_NE(it, b.end());
    size_t at = size_t(it - b.begin()), end = at;
    while (b[end] != 0)
        ++end;
    std::string to = "SAMPLE___INTERVAL " + value;
    ASSERT_LE(to.size(), end - at);
    to.resize(end - at, '\0');
    std::memcpy(b.data() + at, to.data(), to.size());
}

} // namespace

TEST(HeaderNumbers, AreUnsignedAndKeptAsSingleFloats) {
    MemoryByteSource src({0xFF, 0xFF, 0x01, 0x00, 0x00, 0x01, 0x12, 0x34});
    EXPECT_EQ(HexToNumber(src, 0, 2, true), 65535.0f) << "no sign enters";
    EXPECT_EQ(HexToNumber(src, 6, 2, true), float(0x3412));
    EXPECT_EQ(HexToNumber(src, 6, 2, false), float(0x1234));
    // 0x01000001 = 16777217 has no single-float form: it reads as 16777216.
    EXPECT_EQ(HexToNumber(src, 2, 4, false), 16777216.0f);
    EXPECT_EQ(HexToNumber(src, 7, 4, false), float(0x34000000)) << "zeros past the end";
}

TEST(Seg2Header, TheEntryDecidesTheIntervalUnit) {
    EXPECT_EQ(SprScanIndex(1), kSprScan);
    EXPECT_EQ(chosenFilterIndex(1, "x.sg2", "SEG2").value(), kSeg2);
    auto layout = twoTraces(2);
    layout.value = " 250";
    Sg2Case spr, seg2;
    spr.open(test::seg2Bytes(layout), kSprScan);
    seg2.open(test::seg2Bytes(layout), kSeg2);
    EXPECT_TRUE(spr.st.IsSprScan);
    EXPECT_FALSE(seg2.st.IsSprScan);
    EXPECT_DOUBLE_EQ(spr.st.SampleRate, 4e9) << "picoseconds";
    EXPECT_DOUBLE_EQ(seg2.st.SampleRate, 1.0 / 250) << "seconds";
    EXPECT_EQ(spr.st.TraceCount, 2);
    EXPECT_EQ(spr.st.TraceLength, 5);
    EXPECT_EQ(spr.st.Sp_Samples, 8);
    EXPECT_EQ(spr.st.SampleBits, 16);
}

TEST(Seg2Header, TheIntervalKeyHasThreeFreeCharactersAndAWholeValue) {
    struct Case {
        std::string key, value;
        double rate; // 0: the open fails with "File corrupted!"
    };
    for (const Case& c :
         {Case{"sample___interval", " 100", 1e10}, Case{"SAMPLE123INTERVAL", "12.5", 1 / 12e-12},
          Case{"SAMPLE123INTERVAL", "13.5", 1 / 14e-12}, Case{"SAMxLxxxxxNxExxxL", "7", 1 / 7e-12},
          Case{"SAMPLE_INTERVAL", " 100", 0}, Case{"SAMPLE___INTERVAL", "0.4", 0},
          Case{"SAMPLE___INTERVAL", "40000", 0},
          // Starts of a key in both cases before the real one.
          Case{"sSssSSsAMPLE___INTERVAL", " 100", 1e10}}) {
        SCOPED_TRACE(c.key + c.value);
        auto layout = twoTraces(1);
        layout.key = c.key;
        layout.value = c.value;
        Sg2Case b;
        b.open(test::seg2Bytes(layout));
        if (c.rate == 0) {
            EXPECT_FALSE(b.loaded());
            ASSERT_EQ(b.host.messages.size(), 1u);
            EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
        } else {
            ASSERT_TRUE(b.loaded());
            EXPECT_DOUBLE_EQ(b.st.SampleRate, c.rate);
        }
    }
}

TEST(Seg2Header, TheBlockIdSetsTheHeaderOrderButSamplesAreAlwaysLowFirst) {
    auto layout = twoTraces(2);
    layout.low = false;
    Sg2Case high;
    high.open(test::seg2Bytes(layout));
    ASSERT_TRUE(high.loaded());
    EXPECT_EQ(high.st.TraceCount, 2);
    auto w = high.working();
    EXPECT_EQ(w[1], -2.0f);
    EXPECT_EQ(w[8 + 4], 50.0f);

    auto bytes = test::seg2Bytes(twoTraces(2));
    bytes[0] = 0x55;
    bytes[1] = 0x55;
    Sg2Case bad;
    bad.open(bytes);
    EXPECT_FALSE(bad.loaded());
    ASSERT_EQ(bad.host.messages.size(), 1u);
    EXPECT_EQ(bad.host.messages[0].text, "File corrupted!");
    EXPECT_EQ(bad.host.messages[0].icon, MsgIcon::Critical);
}

TEST(Seg2Samples, IntegerFormatsUseTheTrueWidthInTheStride) {
    for (int format : {1, 2}) {
        SCOPED_TRACE(format);
        Sg2Case b;
        b.open(test::seg2Bytes(twoTraces(format)));
        ASSERT_TRUE(b.loaded());
        auto w = b.working();
        ASSERT_EQ(w.size(), 16u);
        EXPECT_EQ(w[3], -4.0f);
        EXPECT_EQ(w[5], 0.0f) << "padding";
        EXPECT_EQ(w[8], 10.0f);
        EXPECT_EQ(w[12], 50.0f);
        EXPECT_EQ(b.st.FullScalePos, 50.0f);
        EXPECT_EQ(b.st.FullScaleNeg, 50.0f);
    }
}

TEST(Seg2Samples, FloatFormatsStrideTwiceTheirWidth) {
    for (int format : {4, 5}) {
        SCOPED_TRACE(format);
        auto layout = twoTraces(format);
        layout.traces[0] = {1.5, -2.75, 3, -4, 5.9};
        // The second trace is read from (samples * width + descriptor) bytes further on than
        // it is: here that is inside nothing, so it reads as zeros.
        Sg2Case b;
        b.open(test::seg2Bytes(layout));
        ASSERT_TRUE(b.loaded());
        auto w = b.working();
        ASSERT_EQ(w.size(), 16u);
        EXPECT_EQ(w[0], 1.5f);
        EXPECT_EQ(w[1], -2.75f);
        for (size_t i = 8; i < 16; ++i)
            EXPECT_EQ(w[i], 0.0f);
        EXPECT_EQ(b.st.FullScalePos, 5.0f);
    }
    // The stride is one trace's data too long, so the second trace begins on the third trace's
    // descriptor: block id 4422 with the descriptor size, then the data size and sample count.
    auto layout = twoTraces(4);
    layout.traces = {{1, 1, 1, 1, 1}, {2, 2, 2, 2, 2}, {3, 3, 3, 3, 3}};
    layout.descSize = 20;
    Sg2Case b;
    b.open(test::seg2Bytes(layout));
    auto w = b.working();
    ASSERT_EQ(w.size(), 24u);
    auto bits = [](float x) {
        uint32_t u;
        std::memcpy(&u, &x, 4);
        return u;
    };
    EXPECT_EQ(bits(w[8]), 0x00144422u);
    EXPECT_EQ(bits(w[9]), 20u);
    EXPECT_EQ(bits(w[10]), 5u);
    EXPECT_EQ(bits(w[11]), 4u) << "the format code";
}

TEST(Seg2Samples, OtherFormatsWriteNothingAndSayNothing) {
    Sg2Case b;
    b.open(test::seg2Bytes(twoTraces(3)));
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.TraceCount, 2);
    EXPECT_EQ(b.st.WorkingFileLength, 0);
    EXPECT_TRUE(b.working().empty());
}

TEST(Seg2Samples, FullScaleFromTheLargerSideClipsFrom33000) {
    for (double big : {32999.9, 33000.0, -33000.0}) {
        SCOPED_TRACE(big);
        auto layout = twoTraces(5);
        layout.traces[0][2] = big;
        Sg2Case b;
        b.open(test::seg2Bytes(layout));
        EXPECT_EQ(b.st.FullScalePos, big == 32999.9 ? 32999.0f : 32767.0f);
    }
}

TEST(Seg2RealFiles, RealIntervalKeysDoNotHaveTheShapeTheReaderLooksFor) {
    for (const char* file :
         {"seg2/20180307_031245000.0.seg2", "seg2/20130107_103041000.CET.3c.cont.0.seg2"}) {
        for (int filter : {kSeg2, kSprScan}) {
            SCOPED_TRACE(std::string(file) + " " + std::to_string(filter));
            KV_REQUIRE_REAL(path, file);
            // Named .seg2, the last three letters are "EG2": the fixed-rule reader is not
            // chosen. The name is one of the SEG-2 entry of all variants, which reads it.
            Sg2Case asIs;
            asIs.import(path, filter);
            EXPECT_FALSE(asIs.st.IsSg2);
            EXPECT_TRUE(asIs.st.IsSeg2Std);
            EXPECT_TRUE(asIs.host.messages.empty());
            // As .sg2, "SAMPLE_INTERVAL" is not found and the interval is 0.
            Sg2Case b;
            b.open(bytesOf(path), filter);
            EXPECT_FALSE(b.loaded());
            ASSERT_EQ(b.host.messages.size(), 1u);
            EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
        }
    }
}

TEST(Seg2RealFiles, WithAKeyOfTheRightShapeTracesFollowTheDescriptorStride) {
    // Three int32 traces of 2000 samples, descriptors of 1056 bytes: the stride rule meets the
    // file's own trace pointers.
    KV_REQUIRE_REAL(path, "seg2/20130107_103041000.CET.3c.cont.0.seg2");
    auto bytes = bytesOf(path);
    patchIntervalKey(bytes, "1000");
    Sg2Case b;
    b.open(bytes, kSprScan);
    ASSERT_TRUE(b.loaded());
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 1e9);
    ASSERT_EQ(b.st.TraceCount, 3);
    ASSERT_EQ(b.st.Sp_Samples, 2048);
    auto u32 = [&](size_t off) {
        return uint32_t(bytes[off]) | uint32_t(bytes[off + 1]) << 8 |
               uint32_t(bytes[off + 2]) << 16 | uint32_t(bytes[off + 3]) << 24;
    };
    auto w = b.working();
    for (size_t t = 0; t < 3; ++t) {
        const size_t desc = u32(32 + 4 * t);
        const size_t data = desc + (bytes[desc + 2] | bytes[desc + 3] << 8);
        for (size_t i = 0; i < 2000; ++i)
            ASSERT_EQ(w[t * 2048 + i], float(int32_t(u32(data + 4 * i)))) << t << "/" << i;
    }

    // 24 float traces of 1500 samples: only the first is where the file has it.
    KV_REQUIRE_REAL(masw, "seg2/10.dat");
    auto floats = bytesOf(masw);
    patchIntervalKey(floats, "1");
    Sg2Case f;
    f.open(floats, kSprScan);
    ASSERT_TRUE(f.loaded());
    ASSERT_EQ(f.st.TraceCount, 24);
    auto v = f.working();
    auto f32At = [&](size_t off) {
        uint32_t u = uint32_t(floats[off]) | uint32_t(floats[off + 1]) << 8 |
                     uint32_t(floats[off + 2]) << 16 | uint32_t(floats[off + 3]) << 24;
        float x;
        std::memcpy(&x, &u, 4);
        return x;
    };
    auto ptr = [&](size_t t) {
        return size_t(floats[32 + 4 * t]) | size_t(floats[33 + 4 * t]) << 8 |
               size_t(floats[34 + 4 * t]) << 16 | size_t(floats[35 + 4 * t]) << 24;
    };
    const size_t data0 = ptr(0) + (floats[ptr(0) + 2] | floats[ptr(0) + 3] << 8);
    const size_t stride = 1500 * 8 + (data0 - ptr(0));
    for (size_t t = 0; t < 24; ++t) {
        const size_t at = data0 + t * stride;
        for (size_t i = 0; i < 1500; i += 97) {
            const float want = at + 4 * i + 4 <= floats.size() ? f32At(at + 4 * i) : 0.0f;
            ASSERT_EQ(v[t * 2048 + i], want) << t << "/" << i;
        }
    }
    EXPECT_NE(ptr(1), data0 + stride - (data0 - ptr(0))) << "trace 1 is not where it is read";
}
