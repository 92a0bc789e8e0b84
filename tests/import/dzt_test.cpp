// GSSI DZT recordings in and out: the fixed header fields, where the scans start, how samples
// are decoded, and the GSSI-compatible export.
#include "import/radar_files.h"
#include "import/variant_files.h"
#include "platform/read_error.h"

#include <gtest/gtest.h>

using namespace kv;
using test::getLe;

namespace kv {
void DztRead(ImportContext& ctx); // the reader's entry, as the format table holds it
}

namespace {

struct DztCase : test::RadarBench {
    std::string put(const std::vector<uint8_t>& bytes, const std::string& name = "x.dzt") {
        return RadarBench::put(bytes, name);
    }
};

std::vector<int> counting(int n) {
    std::vector<int> v;
    for (int i = 0; i < n; ++i)
        v.push_back(i * 7 - 300);
    return v;
}

} // namespace

TEST(DztRead, SixteenBitScansStartOneSampleLateAndEndWithAZero) {
    DztCase b;
    // Six samples a scan: not a power of two, and taken as it is.
    const auto src = counting(6 * 3);
    b.import(b.put(test::dztBytes(6, 16, 10.0f, 50.5f, test::u16Samples(src))));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.st.Sp_Samples, 6);
    EXPECT_EQ(b.st.TraceCount, 3); // (1060 - 1025) / 12 = 2.9
    EXPECT_EQ(b.st.DataStart, 1027);
    EXPECT_EQ(b.st.FullScalePos, 32767.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 32768.0f);
    EXPECT_EQ(b.st.ScansPerSecond, 50.0) << "50.5 rounds half to even";
    EXPECT_EQ(b.st.RangeNs, 10.0f);
    EXPECT_EQ(b.st.YUnitName, "Ampl.(bits)");
    EXPECT_EQ(b.st.SampleRate, 1.0 / double(float(1e-9 * 10.0 / 6))) << "a 32-bit interval";
    auto w = b.working();
    ASSERT_EQ(w.size(), 3u * 6);
    for (size_t k = 0; k < 3; ++k) {
        for (size_t j = 0; j < 5; ++j) {
            const size_t s = 6 * k + j + 1;
            EXPECT_EQ(w[6 * k + j], s < src.size() ? float(src[s]) : -32768.0f) << k << "," << j;
        }
        EXPECT_EQ(w[6 * k + 5], 0.0f) << "the last sample of every trace stays 0";
    }

    // Read down-sampled, a scan takes twice the samples the trace holds: the read runs past
    // the trace and fails as a corrupted file, leaving no data set.
    test::StdBench twice;
    twice.st.NewDS = 2;
    EXPECT_FALSE(twice.read(
        DztRead, twice.put(test::dztBytes(6, 16, 10.0f, 50.5f, test::u16Samples(src)), "x.dzt")));
    EXPECT_EQ(twice.message(), "File corrupted!");
}

TEST(DztRead, EightBitScansStartRightAfterTheHeader) {
    DztCase b;
    std::vector<uint8_t> data;
    for (int i = 0; i < 18; ++i)
        data.push_back(uint8_t(i * 13));
    b.import(b.put(test::dztBytes(4, 8, 4.0f, 10.0f, data)));
    EXPECT_EQ(b.st.TraceCount, 4) << "(1042 - 1025) / 4 = 4.25";
    EXPECT_EQ(b.st.FullScalePos, 128.0f);
    auto w = b.working();
    ASSERT_EQ(w.size(), 16u);
    for (size_t i = 0; i < 16; ++i)
        EXPECT_EQ(w[i], float(int(data[i]) - 128)) << i;
}

TEST(DztRead, OtherDepthsKeepTheLastSampleWidthAndConvertNothing) {
    // 32 bits: nothing sets the sample width, so in a fresh workbench the trace count divides
    // by zero and the open ends quietly; after a 16-bit file its width of 2 stays.
    const auto wide = test::dztBytes(8, 32, 10.0f, 10.0f, std::vector<uint8_t>(8 * 4 * 4, 0x11));
    DztCase b;
    b.import(b.put(wide));
    EXPECT_TRUE(b.st.TempPath.empty());
    EXPECT_TRUE(b.host.messages.empty());
    b.import(b.put(test::dztBytes(8, 16, 10.0f, 10.0f, test::u16Samples(counting(16)))));
    b.import(b.put(wide));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.st.TraceCount, 8);
    auto w = b.working();
    EXPECT_EQ(std::count(w.begin(), w.end(), 0.0f), 64);
}

TEST(DztRead, RealRecordingsFollowTheFixedHeaderRules) {
    KV_REQUIRE_REAL(dir, "dzt");
    DztCase b;
    b.import(dir + "/FILE____032.DZT");
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.st.Sp_Samples, 512);
    EXPECT_EQ(b.st.TraceCount, 1040);
    EXPECT_EQ(b.st.ScansPerSecond, 100.0);
    EXPECT_EQ(b.st.SampleRate, 1.0 / double(float(48e-9 / 512)));
    EXPECT_EQ(b.st.WorkingFileLength, 1040 * 512 * 4);
    // The two 32-bit recordings have no sample width of their own.
    for (const char* f : {"File____001.DZT", "test_gssi.DZT"}) {
        DztCase c;
        c.import(dir + "/" + f);
        EXPECT_TRUE(c.st.TempPath.empty()) << f;
        EXPECT_TRUE(c.host.messages.empty()) << f;
    }
}

TEST(DztWrite, HeaderFieldsAndOverlappingSamplesReadBackInPlace) {
    DztCase b;
    b.import(b.put(test::dztBytes(4, 16, 8.0f, 10.0f,
                                  test::u16Samples({0, 1, -1, 100, -32768, 32767, 5, 0}))));
    const std::string out = b.home.file("out.DZT");
    b.exportTo(out);
    EXPECT_EQ(b.host.dialogTitles.back(), "Export file");
    EXPECT_EQ(b.host.dialogFilters.back(),
              "Kelvorandine File(*.kvd)|*.kvd|GSSI compatible file(*.dzt)|*.dzt|");
    auto o = b.bytesOf(out);
    ASSERT_EQ(o.size(), 1026u + 2 * 8 + 2);
    const std::pair<size_t, int> fields[] = {{0, 255},  {2, 1024}, {4, 4},  {6, 16},
                                             {40, 400}, {46, 600}, {52, 1}, {1024, 0}};
    for (const auto& [off, v] : fields)
        EXPECT_EQ(getLe<int16_t>(o, off), v) << off;
    EXPECT_EQ(getLe<float>(o, 26), float(1e9 * 4 / b.st.SampleRate));
    // Working traces {1, -1, 100, 0}, {32767, 5, 0, 0}; 32767 + 32768 = 65535.
    const uint16_t expect[] = {32769, 32767, 32868, 32768, 65535, 32773, 32768, 32768, 0};
    for (size_t i = 0; i < 9; ++i)
        EXPECT_EQ(getLe<uint16_t>(o, 1026 + 2 * i), expect[i]) << i;
    b.import(out);
    EXPECT_EQ(b.working(), (std::vector<float>{1, -1, 100, 0, 32767, 5, 0, 0}));
}

TEST(DztWrite, ClampsAt65536ScalesOtherFullScalesAndKeepsALongerTargetsTail) {
    DztCase b;
    b.import(b.put(test::dztBytes(4, 16, 8.0f, 10.0f, test::u16Samples({0, 0, 0, 0, 0}))));
    std::vector<uint8_t> traces;
    for (float f : {40000.0f, 32768.0f, 2.5f, 3.5f})
        test::putLe<float>(traces, traces.size(), f);
    test::writeFile(b.st.TempPath, traces);
    b.st.TraceCount = 1;
    const std::string out = b.home.file("clamp.dzt");
    test::writeFile(out, std::vector<uint8_t>(1100, 0xAB));
    b.exportTo(out);
    auto o = b.bytesOf(out);
    ASSERT_EQ(o.size(), 1100u) << "not truncated";
    EXPECT_EQ(o[8], 0xAB) << "bytes between the header fields stay";
    EXPECT_EQ(o[1036], 0xAB);
    const uint16_t expect[] = {0, 0, 32770, 32772, 0}; // 65536 wraps; halves round to even
    for (size_t i = 0; i < 5; ++i)
        EXPECT_EQ(getLe<uint16_t>(o, 1026 + 2 * i), expect[i]) << i;

    b.st.FullScalePos = 128.0f; // (128 + s) * 65536 / 256
    b.exportTo(out);
    EXPECT_EQ(getLe<int32_t>(b.bytesOf(out), 1032), (128 + 3.5) * 256);
}
