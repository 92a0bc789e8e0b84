// GSSI DZT recordings in and out: the fixed header fields, where the scans start, how samples
// are decoded, and the GSSI-compatible export.
#include "core/lifecycle.h"
#include "import/export.h"
#include "import/open.h"
#include "import/radar_files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace kv;
using test::getLe;

namespace {

struct DztCase : test::RadarBench {
    std::string put(const std::vector<uint8_t>& bytes, const std::string& name = "x.dzt") {
        return RadarBench::put(bytes, name);
    }
};

std::vector<int> counting(int n, int from = 0) {
    std::vector<int> v;
    for (int i = 0; i < n; ++i)
        v.push_back(from + i * 7 - 300);
    return v;
}

} // namespace

TEST(DztRead, SixteenBitScansStartOneSampleLateAndEndWithAZero) {
    DztCase b;
    const auto src = counting(8 * 3);
    b.import(b.put(test::dztBytes(8, 16, 10.0f, 50.5f, test::u16Samples(src))));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.Sp_Samples, 8);
    EXPECT_EQ(b.st.TraceCount, 3); // (1024 + 48 - 1025) / 16 = 2.94
    EXPECT_EQ(b.st.BitsPerSample, 16);
    EXPECT_EQ(b.st.DataStart, 1027);
    EXPECT_EQ(b.st.FullScalePos, 32767.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 32768.0f);
    EXPECT_EQ(b.st.ScansPerSecond, 50.0) << "50.5 rounds half to even";
    EXPECT_EQ(b.st.RangeNs, 10.0f);
    EXPECT_EQ(b.st.Channels, 1);
    EXPECT_EQ(b.st.YUnitName, "Ampl.(bits)");
    EXPECT_EQ(b.st.ShowVertical, 2);
    const float interval = float(1e-9 * 10.0 / 8);
    EXPECT_EQ(b.st.SampleRate, 1.0 / double(interval)) << "the interval is a 32-bit float";
    auto w = b.working();
    ASSERT_EQ(w.size(), 3u * 8);
    for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 7; ++j) {
            const size_t s = size_t(8 * k + j + 1);
            EXPECT_EQ(w[size_t(8 * k + j)], s < src.size() ? float(src[s]) : -32768.0f)
                << k << "," << j;
        }
        EXPECT_EQ(w[size_t(8 * k + 7)], 0.0f) << "the last sample of every trace stays 0";
    }
}

TEST(DztRead, EightBitScansStartRightAfterTheHeader) {
    DztCase b;
    std::vector<uint8_t> data;
    for (int i = 0; i < 20; ++i)
        data.push_back(uint8_t(i * 13));
    // (1044 - 1025) / 4 = 4.75 traces of 4 bytes, rounded to 5; the fifth reads zeros past the end.
    b.import(b.put(test::dztBytes(4, 8, 4.0f, 10.0f, data)));
    EXPECT_EQ(b.st.TraceCount, 5);
    EXPECT_EQ(b.st.DataStart, 1025);
    EXPECT_EQ(b.st.FullScalePos, 128.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 128.0f);
    auto w = b.working();
    ASSERT_EQ(w.size(), 20u);
    for (size_t i = 0; i < 20; ++i)
        EXPECT_EQ(w[i], float(int(data[i]) - 128)) << i;
}

TEST(DztRead, TheScanLengthIsTakenAsItStands) {
    DztCase b;
    b.import(b.put(test::dztBytes(300, 16, 30.0f, 20.0f, test::u16Samples(counting(600)))));
    EXPECT_EQ(b.st.Sp_Samples, 300);
    EXPECT_EQ(b.st.TraceCount, 2);
    EXPECT_EQ(b.cmd.panel(3), "FFT Bins: 150");
    EXPECT_EQ(b.working().size(), 600u);
}

TEST(DztRead, OtherDepthsKeepTheLastSampleWidthAndConvertNothing) {
    // 32 bits per sample: nothing sets the sample width, so in a fresh workbench the trace
    // count divides by zero and the open ends quietly with no data set.
    const auto wide = test::dztBytes(8, 32, 10.0f, 10.0f, std::vector<uint8_t>(8 * 4 * 4, 0x11));
    {
        DztCase b;
        b.import(b.put(wide));
        EXPECT_TRUE(b.st.TempPath.empty());
        EXPECT_TRUE(b.host.messages.empty());
    }
    // After a 16-bit file the width of 2 stays: twice the traces, all zero.
    DztCase b;
    b.import(b.put(test::dztBytes(8, 16, 10.0f, 10.0f, test::u16Samples(counting(16)))));
    b.import(b.put(wide, "wide.dzt"));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.st.TraceCount, 8);
    EXPECT_EQ(b.st.DataStart, 1027);
    auto w = b.working();
    ASSERT_EQ(w.size(), 64u);
    EXPECT_EQ(std::count(w.begin(), w.end(), 0.0f), 64);
}

TEST(DztRead, DownSamplingOverrunsTheTraceAndReportsACorruptedFile) {
    DztCase b;
    const std::string p =
        b.put(test::dztBytes(8, 16, 10.0f, 10.0f, test::u16Samples(counting(64))));
    b.import(p);
    ASSERT_FALSE(b.st.TempPath.empty());
    b.st.SettingsOverrides["gen.newds"] = "2";
    b.st.SourcePathKeep = p;
    ChNewDS(b.wb);
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
    EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    EXPECT_TRUE(b.st.TempPath.empty());
}

TEST(DztRead, RealRecordingsFollowTheFixedHeaderRules) {
    KV_REQUIRE_REAL(dir, "dzt");
    {
        // Its samples start at byte 1024 like ours and are unsigned; the trace count is what
        // the file length gives.
        DztCase b;
        b.import(dir + "/FILE____032.DZT");
        ASSERT_FALSE(b.st.TempPath.empty());
        EXPECT_TRUE(b.host.messages.empty());
        EXPECT_EQ(b.st.Sp_Samples, 512);
        EXPECT_EQ(b.st.TraceCount, 1040);
        EXPECT_EQ(b.st.ScansPerSecond, 100.0);
        EXPECT_EQ(b.st.RangeNs, 48.0f);
        EXPECT_EQ(b.st.SampleRate, 1.0 / double(float(48e-9 / 512)));
        EXPECT_EQ(b.st.FullScalePos, 32767.0f);
        EXPECT_EQ(b.st.WorkingFileLength, 1040 * 512 * 4);
        auto w = b.working();
        double sum = 0;
        for (size_t i = 0; i < 512 * 100; ++i)
            sum += w[i];
        EXPECT_LT(std::abs(sum / (512 * 100)), 200.0) << "centred on 32768";
    }
    // The two 32-bit recordings have no sample width of their own.
    for (const char* f : {"File____001.DZT", "test_gssi.DZT"}) {
        SCOPED_TRACE(f);
        DztCase b;
        b.import(dir + "/" + f);
        EXPECT_TRUE(b.st.TempPath.empty());
        EXPECT_TRUE(b.host.messages.empty());
        EXPECT_EQ(b.st.BitsPerSample, 32);
    }
}

TEST(DztWrite, WritesTheHeaderFieldsAndOverlappingSamples) {
    DztCase b;
    // Values chosen to hit the clamp: 32767 + 32768 = 65535, and 40000 + 32768 is clamped to
    // 65536, whose low half is 0.
    std::vector<int> src = {0, 1, -1, 100, -32768, 32767, 5, 0};
    b.import(b.put(test::dztBytes(4, 16, 8.0f, 10.0f, test::u16Samples(src))));
    ASSERT_EQ(b.st.TraceCount, 2);
    const std::string out = b.home.file("out.DZT");
    b.exportTo(out);
    ASSERT_EQ(b.host.dialogTitles.back(), "Export file");
    EXPECT_EQ(b.host.dialogFilters.back(),
              "Kelvorandine File(*.kvd)|*.kvd|GSSI compatible file(*.dzt)|*.dzt|");
    auto o = b.bytesOf(out);
    ASSERT_EQ(o.size(), 1026u + 2 * 8 + 2);
    EXPECT_EQ(getLe<int16_t>(o, 0), 255);
    EXPECT_EQ(getLe<int16_t>(o, 2), 1024);
    EXPECT_EQ(getLe<int16_t>(o, 4), 4);
    EXPECT_EQ(getLe<int16_t>(o, 6), 16);
    EXPECT_EQ(getLe<float>(o, 26), float(1e9 * 4 / b.st.SampleRate));
    EXPECT_EQ(getLe<int16_t>(o, 40), 400);
    EXPECT_EQ(getLe<int16_t>(o, 46), 600);
    EXPECT_EQ(getLe<int16_t>(o, 52), 1);
    EXPECT_EQ(o[1024], 0);
    EXPECT_EQ(o[1025], 0);
    // Working traces: {1, -1, 100, 0}, {32767, 5, 0, 0}.
    const std::vector<uint16_t> expect = {32769, 32767, 32868, 32768, 65535, 32773, 32768, 32768};
    for (size_t i = 0; i < expect.size(); ++i)
        EXPECT_EQ(getLe<uint16_t>(o, 1026 + 2 * i), expect[i]) << i;
    EXPECT_EQ(getLe<uint16_t>(o, 1026 + 16), 0) << "upper half of the last sample";

    // Read back: every sample in place, the last of each trace 0 again.
    b.import(out);
    ASSERT_EQ(b.st.TraceCount, 2);
    auto w = b.working();
    EXPECT_EQ(w, (std::vector<float>{1, -1, 100, 0, 32767, 5, 0, 0}));
}

TEST(DztWrite, ClampsAt65536AndScalesOtherFullScales) {
    DztCase b;
    b.import(b.put(test::dztBytes(4, 16, 8.0f, 10.0f, test::u16Samples({0, 0, 0, 0, 0}))));
    // Put values past full scale into the working file by hand.
    test::writeFile(b.st.TempPath, [] {
        std::vector<uint8_t> v;
        for (float f : {40000.0f, 32768.0f, 2.5f, 3.5f})
            test::putLe<float>(v, v.size(), f);
        return v;
    }());
    b.st.TraceCount = 1;
    const std::string out = b.home.file("clamp.dzt");
    b.exportTo(out);
    auto o = b.bytesOf(out);
    EXPECT_EQ(getLe<uint16_t>(o, 1026), 0) << "65536 wraps to 0 in 16 bits";
    EXPECT_EQ(getLe<uint16_t>(o, 1028), 0) << "32768 + 32768 is 65536 too";
    EXPECT_EQ(getLe<uint16_t>(o, 1030), 32770) << "32770.5 rounds to even";
    EXPECT_EQ(getLe<uint16_t>(o, 1032), 32772) << "32771.5 rounds to even";
    EXPECT_EQ(getLe<uint16_t>(o, 1034), 0);

    // Another full scale: (128 + s) * 65536 / 256.
    b.st.FullScalePos = 128.0f;
    b.exportTo(out);
    o = b.bytesOf(out);
    EXPECT_EQ(getLe<int32_t>(o, 1032), (128 + 3.5) * 256) << "the last value keeps all 4 bytes";
}

TEST(DztWrite, AnExistingLongerTargetKeepsItsTail) {
    DztCase b;
    b.import(b.put(test::dztBytes(4, 16, 8.0f, 10.0f, test::u16Samples(counting(8)))));
    const std::string out = b.home.file("old.dzt");
    test::writeFile(out, std::vector<uint8_t>(3000, 0xAB));
    b.exportTo(out);
    auto o = b.bytesOf(out);
    ASSERT_EQ(o.size(), 3000u);
    EXPECT_EQ(o[8], 0xAB) << "bytes between the header fields stay as they were";
    EXPECT_EQ(o[1026 + 18], 0xAB);
    EXPECT_EQ(o[2999], 0xAB);
}
