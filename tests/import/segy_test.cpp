// SEG-Y recordings through the Seismic and Radsys entries: where the three header numbers come
// from, the byte order, the trace count and stride, the samples, and full scale.
#include "import/file_filters.h"
#include "seismic_files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace kv;

namespace {

constexpr int kSeismic = 5; // filter positions with the factory Fil 1
constexpr int kRadsys = 6;

struct SgyCase : test::FileCase {
    SgyCase() : FileCase("x.sgy", kSeismic) {}
};

std::vector<double> ramp(int n, double scale, double offset = 0) {
    std::vector<double> v(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        v[size_t(i)] = offset + scale * i;
    return v;
}

} // namespace

TEST(SegySeismic, TheFilterIndexNotTheContentsChoosesTheEntry) {
    EXPECT_EQ(RadsysIndex(1), kRadsys);
    EXPECT_EQ(chosenFilterIndex(1, "x.sgy", "SEISMIC").value(), kSeismic);
    // The same little-endian float file: the Seismic entry reads floats, Radsys 16-bit words.
    auto bytes = test::segyBytes(true, 5, 250, {ramp(100, 1.5), ramp(100, -2)});
    SgyCase s, r;
    s.open(bytes, kSeismic);
    r.open(bytes, kRadsys);
    EXPECT_FALSE(s.st.IsRadsys);
    EXPECT_TRUE(r.st.IsRadsys);
    EXPECT_EQ(s.working()[3], 4.5f);
    EXPECT_EQ(s.st.SampleRate, 4000.0);
    EXPECT_DOUBLE_EQ(r.st.SampleRate, 1.0 / (250e-12));
}

TEST(SegySeismic, LowFirstFloatsAreReadAsStoredAndTheCountLeavesOutTheSampleWidth) {
    SgyCase b;
    const int n = 1000;
    auto bytes = test::segyBytes(true, 5, 500, {ramp(n, 0.5), ramp(n, -1.0), ramp(n, 0.25)});
    // The binary header's interval at 3217 is not the one read: 3219 is.
    bytes[3216] = 0x39;
    b.open(bytes);
    ASSERT_TRUE(b.loaded());
    EXPECT_EQ(b.st.SampleRate, 2000.0);
    EXPECT_EQ(b.st.TraceLength, n);
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    // (16320 - 3841) / (1000 + 240) = 10.06: ten traces where the file holds three.
    EXPECT_EQ(b.st.TraceCount, 10);
    auto w = b.working();
    ASSERT_EQ(w.size(), 10u * 1024);
    EXPECT_EQ(w[999], 499.5f);
    EXPECT_EQ(w[1000], 0.0f) << "padding";
    EXPECT_EQ(w[1024 + 999], -999.0f);
    EXPECT_EQ(w[2048 + 4], 1.0f);
    for (size_t i = 3 * 1024; i < w.size(); ++i)
        ASSERT_EQ(w[i], 0.0f) << "traces past the end of the file read as zeros";
    // -min 999 is above max 499.5: full scale from the minimum, whole units.
    EXPECT_EQ(b.st.FullScalePos, 999.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 999.0f);
    EXPECT_EQ(b.st.SampleBits, 16);
}

TEST(SegySeismic, FormatOneIsTakenAsIeeeAndSixteenBitWordsAsSigned) {
    SgyCase b;
    // Three samples a trace: twenty traces so that the count formula finds them.
    const std::vector<std::vector<double>> floats(20, {1.75, -3.5, 1e6});
    b.open(test::segyBytes(true, 1, 1000, floats));
    ASSERT_TRUE(b.loaded());
    auto w = b.working();
    EXPECT_EQ(w[0], 1.75f);
    EXPECT_EQ(w[2], 1e6f);
    EXPECT_EQ(b.st.FullScalePos, 32767.0f) << "above 33000 clips";

    SgyCase i16;
    const std::vector<std::vector<double>> words(20, {-32768, 32767, 7});
    i16.open(test::segyBytes(true, 3, 1000, words));
    auto v = i16.working();
    EXPECT_EQ(i16.st.Sp_Samples, 4);
    EXPECT_EQ(v[0], -32768.0f);
    EXPECT_EQ(v[1], 32767.0f);
    EXPECT_EQ(v[3], 0.0f);
    // The minimum's side wins: 32768, which is not above 33000.
    EXPECT_EQ(i16.st.FullScalePos, 32768.0f);
    EXPECT_EQ(i16.st.FullScaleNeg, 32768.0f);
}

TEST(SegySeismic, FullScaleIsTheLargerSideCutTowardZero) {
    struct Case {
        std::vector<double> v;
        float fs;
    };
    for (const Case& c :
         {Case{{0, 0, 0, 0}, 0.0f}, Case{{-7.9, 3.2, 0, 0}, 7.0f}, Case{{-5, 5.9, 0, 0}, 5.0f},
          Case{{33000, 0, 0, 0}, 33000.0f}, Case{{33001, 0, 0, 0}, 32767.0f}}) {
        SCOPED_TRACE(c.fs);
        SgyCase b;
        // Enough traces of one sample each so that the count formula finds the first.
        b.open(test::segyBytes(true, 5, 100, {c.v, c.v}));
        ASSERT_TRUE(b.loaded());
        EXPECT_EQ(b.st.FullScalePos, c.fs);
        EXPECT_EQ(b.st.FullScaleNeg, c.fs);
    }
}

TEST(SegySeismic, HighFirstFilesAreRecognisedByTheFormatCodeAlone) {
    // 256 read low first is 1 high first: a high-first float file.
    SgyCase b;
    const int n = 300;
    auto bytes = test::segyBytes(false, 1, 125, {ramp(n, 2.0), ramp(n, -3.0), ramp(n, 1.0, 7)});
    EXPECT_EQ(bytes[3224], 0);
    EXPECT_EQ(bytes[3225], 1);
    b.open(bytes);
    ASSERT_TRUE(b.loaded());
    // The interval of the first trace header (3717) in microseconds.
    EXPECT_EQ(b.st.SampleRate, 8000.0);
    EXPECT_EQ(b.st.Sp_Samples, 512);
    // The float reader counts again with the true width: (3600 + 3 * 1440 - 3840) / 1440.
    EXPECT_EQ(b.st.TraceCount, 3);
    auto w = b.working();
    ASSERT_EQ(w.size(), 3u * 512);
    EXPECT_EQ(w[5], 10.0f);
    EXPECT_EQ(w[512 + 299], -897.0f);
    EXPECT_EQ(w[1024 + 1], 8.0f);
    EXPECT_EQ(w[299 + 1], 0.0f);
    EXPECT_EQ(b.st.FullScalePos, 897.0f);
}

TEST(SegySeismic, HighFirstWordsBorrowTheirHighByteFromTheNextSample) {
    SgyCase b;
    // Samples 0x0102, 0x0304, 0x0506 ... high byte first.
    std::vector<double> t;
    for (int i = 0; i < 400; ++i)
        t.push_back(((2 * i + 1) & 0x7F) * 256 + ((2 * i + 2) & 0xFF));
    auto bytes = test::segyBytes(false, 3, 200, {t, t, t});
    b.open(bytes);
    ASSERT_TRUE(b.loaded());
    EXPECT_EQ(b.st.SampleRate, 5000.0);
    EXPECT_EQ(b.st.Sp_Samples, 512);
    // Counted with the fitted length: (3600 + 3 * 1040 - 3841) / (512 + 240) = 3.83.
    EXPECT_EQ(b.st.TraceCount, 4);
    auto w = b.working();
    // Value 0 is the low byte 02 of sample 0 with the high byte 03 of sample 1.
    EXPECT_EQ(w[0], float(0x0302));
    EXPECT_EQ(w[1], float(0x0504));
    // The last sample of a trace borrows the first byte of the next trace header (0 here).
    EXPECT_EQ(w[399], float(t[399]) - std::floor(t[399] / 256) * 256);
    EXPECT_EQ(w[512], float(0x0302)) << "each trace starts one byte after its first sample";
}

TEST(SegySeismic, HighFirstWordsTakeFullScaleFromTheMaximumOnly) {
    SgyCase b;
    // Read one byte on, 01 00 gives 0x0100 = 256 and E0 00 gives 0xE000 = -8192.
    std::vector<double> t(400, 0.0);
    t[10] = 0x0100;
    t[20] = -0x2000;
    b.open(test::segyBytes(false, 3, 100, {t, t, t}));
    ASSERT_TRUE(b.loaded());
    auto w = b.working();
    float mx = 0, mn = 0;
    for (float x : w)
        mx = std::max(mx, x), mn = std::min(mn, x);
    ASSERT_EQ(mx, 256.0f);
    ASSERT_EQ(mn, -8192.0f) << "the minimum is the larger side";
    EXPECT_EQ(b.st.FullScalePos, 256.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 256.0f);
}

TEST(SegySeismic, UnsupportedFormatsAreReportedAndLeaveNoDataSet) {
    struct Case {
        bool low;
        int format;
    };
    for (const Case& c : {Case{true, 2}, Case{true, 8}, Case{false, 5}, Case{false, 2}}) {
        SCOPED_TRACE(c.format);
        SgyCase b;
        b.open(test::segyBytes(c.low, c.format, 100, {ramp(100, 1), ramp(100, 1)}));
        EXPECT_FALSE(b.loaded());
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].text, "Data format not supported by Kelvorandine!");
        EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
        EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Information);
    }
}

TEST(SegySeismic, BrokenHeadersEndInFileCorrupted) {
    // A zero interval divides by zero; a format code above 32767 read low first overflows.
    auto zeroInterval = test::segyBytes(true, 5, 0, {ramp(10, 1)});
    auto hugeFormat = test::segyBytes(true, 5, 100, {ramp(10, 1)});
    hugeFormat[3224] = 0x00;
    hugeFormat[3225] = 0x80;
    for (const auto& bytes : {zeroInterval, hugeFormat}) {
        SgyCase b;
        b.open(bytes);
        EXPECT_FALSE(b.loaded());
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
        EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    }
}

TEST(SegySeismic, AHeaderOnlyFileHasNoTraces) {
    SgyCase b;
    auto bytes = test::segyBytes(true, 5, 100, {}, 64);
    bytes.resize(3840);
    b.open(bytes);
    EXPECT_EQ(b.st.TraceCount, 0);
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.WorkingFileLength, 0);
}

TEST(SegySeismic, TracesWithoutSamplesAndWithoutPaddingLeaveNoDataSet) {
    // No power of two fits a length of 0, so the trace length stays 0: nothing to transform.
    SgyCase b;
    b.st.PadWithZero = false;
    b.open(test::segyBytes(true, 5, 100, {ramp(8, 1), ramp(8, 1)}, 0));
    EXPECT_FALSE(b.loaded());
    EXPECT_TRUE(b.host.messages.empty());
}

TEST(SegySeismic, WithoutPaddingOnlySpSamplesAreCopied) {
    SgyCase b;
    b.st.PadWithZero = false;
    b.open(test::segyBytes(true, 5, 100, {ramp(700, 1), ramp(700, -1)}));
    ASSERT_TRUE(b.loaded());
    EXPECT_EQ(b.st.Sp_Samples, 512);
    auto w = b.working();
    EXPECT_EQ(w[511], 511.0f);
    EXPECT_EQ(w[513], -1.0f) << "the next trace starts where the stride says";
    EXPECT_EQ(b.st.FullScalePos, 511.0f) << "only copied values count";
}

TEST(SegySeismic, AFileCutInsideASampleEndsInZerosFromDiskAndFromMemory) {
    // 512 four-byte samples a trace; the file ends two bytes into the second trace's eleventh
    // sample. The count leaves the sample width out, so a third trace lies wholly past the end.
    const int n = 512;
    auto bytes = test::segyBytes(true, 5, 100, {ramp(n, 1.25, 1), ramp(n, -1.1, -1.05)});
    const size_t second = 3600 + 240 + 4 * n + 240; // 0-based, the second trace's samples
    bytes.resize(second + 10 * 4 + 2);
    // The cut sample keeps its two low bytes; the two it lacks read as zeros.
    const uint32_t cutBits = uint32_t(bytes[second + 40]) | uint32_t(bytes[second + 41]) << 8;
    float cut;
    std::memcpy(&cut, &cutBits, 4);
    ASSERT_NE(cut, 0.0f);
    for (bool memory : {false, true}) {
        SCOPED_TRACE(memory ? "in memory" : "on disk");
        SgyCase b;
        if (memory) b.wb.openSource = test::memoryOpener();
        b.open(test::segyBytes(true, 5, 100, {ramp(n, 3, 100), ramp(n, 3, 100)}));
        ASSERT_TRUE(b.loaded());
        b.open(bytes);
        ASSERT_TRUE(b.loaded());
        ASSERT_EQ(b.st.Sp_Samples, n);
        ASSERT_EQ(b.st.TraceCount, 3);
        const auto w = b.working();
        ASSERT_EQ(w.size(), 3u * n);
        for (int i = 0; i < n; ++i)
            ASSERT_EQ(w[size_t(i)], float(1 + 1.25 * i)) << i;
        for (int i = 0; i < 10; ++i)
            ASSERT_EQ(w[size_t(n + i)], float(-1.05 - 1.1 * i)) << i;
        EXPECT_EQ(w[size_t(n + 10)], cut);
        EXPECT_TRUE(std::all_of(w.begin() + n + 11, w.end(), [](float v) { return v == 0.0f; }));
        EXPECT_EQ(b.st.FullScalePos, float(std::trunc(1 + 1.25 * (n - 1))));
    }
}

TEST(SegyRadsys, CountsComeFromTheFirstTraceHeaderInPicoseconds) {
    SgyCase b;
    auto bytes = test::segyBytes(true, 5, 400, {}, 0);
    // Format code 5 would be refused by the Seismic entry; Radsys always reads 16-bit words.
    const int n = 256;
    test::ByteImage img{bytes};
    for (int t = 0; t < 4; ++t) {
        const size_t pos = 3601 + size_t(t) * (240 + 2 * n);
        img.put16(pos + 114, n);
        img.put16(pos + 116, 400);
        for (int i = 0; i < n; ++i)
            img.put16(pos + 240 + size_t(2 * i), t * 1000 + i - 100);
    }
    b.open(img.b, kRadsys);
    ASSERT_TRUE(b.loaded());
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 2.5e9);
    EXPECT_EQ(b.st.Sp_Samples, 256);
    EXPECT_EQ(b.st.TraceLength, 256);
    // The count divides by the trace length the settings had (1024), not the file's:
    // (3600 + 4 * 752 - 3840) / 1264 = 2.19.
    EXPECT_EQ(b.st.TraceCount, 2);
    auto w = b.working();
    ASSERT_EQ(w.size(), 2u * 256);
    EXPECT_EQ(w[0], -100.0f);
    EXPECT_EQ(w[256 + 255], 1155.0f);
    EXPECT_EQ(b.st.FullScalePos, 1155.0f);
}

TEST(SegyRadsys, TheMinimumOfAnEarlierRadsysImportIsKept) {
    SgyCase b;
    auto radsys = [](double low) {
        test::ByteImage img{test::segyBytes(true, 3, 100, {}, 0)};
        for (int t = 0; t < 8; ++t) {
            const size_t pos = 3601 + size_t(t) * (240 + 2 * 16);
            img.put16(pos + 114, 16);
            img.put16(pos + 116, 100);
            img.put16(pos + 240, int(low));
            img.put16(pos + 242, 50);
        }
        return img.b;
    };
    b.open(radsys(-5000), kRadsys);
    EXPECT_EQ(b.st.FullScalePos, 5000.0f);
    b.open(radsys(10), kRadsys);
    EXPECT_EQ(b.st.FullScalePos, 5000.0f) << "the old minimum still counts";
    EXPECT_EQ(b.st.SgyMin, -5000.0f);
    b.open(test::segyBytes(true, 3, 100, {{10, 50}, {10, 50}}), kSeismic);
    EXPECT_EQ(b.st.SgyMin, 0.0f) << "the Seismic entry starts afresh";
    b.open(radsys(10), kRadsys);
    EXPECT_EQ(b.st.FullScalePos, 50.0f);
}
