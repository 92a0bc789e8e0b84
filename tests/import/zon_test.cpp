// Zon .dt recordings: a header found by byte signatures, the time window as mantissa and
// exponent text, and traces with gaps between them.
#include "commands/open.h"
#include "import/radar_files.h"

#include <gtest/gtest.h>

using namespace kv;
using namespace kv::test;

namespace {

struct ZonCase : test::RadarBench {
    std::string put(const std::vector<uint8_t>& bytes) { return RadarBench::put(bytes, "line.dt"); }
};

const std::vector<std::vector<int>> kTraces = {{1, 2, 3, -4}, {5, 6, 7, 8}, {-9, 10, 11, 12}};

} // namespace

TEST(ZonRead, SignaturesLeadToTheTraceLengthTimeWindowAndTraces) {
    ZonCase b;
    b.import(b.put(zonBytes(99, 4, "v1.0 x.y 50.0000E-09 ", {0x52, 0, 0, 0}, kTraces)));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.ZonSamples, 4);
    EXPECT_EQ(b.st.TraceLength, 4);
    EXPECT_DOUBLE_EQ(b.st.TimeWindowNs, 50e-9) << "in seconds";
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 4 / 50e-9);
    const int dataPos = 99 + 35 + 21 + 2 + 4 + 1;
    EXPECT_EQ(b.st.ZonDataPos, dataPos);
    EXPECT_EQ(b.st.FullScalePos, 32767.0f);
    // 3 traces of 8 bytes and 2 gaps: (length - data position) / 8 = 31 / 8 rounds to 4, and
    // the gaps push the last traces past the end.
    EXPECT_EQ(b.st.TraceCount, 4);
    EXPECT_EQ(b.st.Sp_Samples, 4);
    auto w = b.working();
    ASSERT_EQ(w.size(), 16u);
    EXPECT_EQ(w, (std::vector<float>{1, 2, 3, -4, 5, 6, 7, 8, -9, 10, 11, 12, 0, 0, 0, 0}));
}

TEST(ZonRead, AnyOfTheFourMarksStartsTheTraces) {
    for (uint8_t second : {uint8_t(0x37), uint8_t(0x38), uint8_t(0x39)}) {
        ZonCase b;
        b.import(b.put(zonBytes(150, 4, "a.b.12.5000E+01 ", {0x52, second, 0, 0}, kTraces)));
        ASSERT_FALSE(b.st.TempPath.empty());
        EXPECT_DOUBLE_EQ(b.st.TimeWindowNs, 125.0);
        EXPECT_EQ(b.working()[4], 5.0f);
    }
}

TEST(ZonRead, AMarkWithLettersInItsHexTextNeverMatches) {
    ZonCase b;
    // 0x5A and 0x3A are not among the marks: no data position, and the first trace's position
    // is no position at all.
    b.import(b.put(zonBytes(99, 4, "a.b.12.5000E+01 ", {0x5A, 0x3A, 0, 0}, kTraces)));
    EXPECT_EQ(b.st.ZonDataPos, 0);
    EXPECT_TRUE(b.st.TempPath.empty());
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
}

TEST(ZonRead, TheExponentSignIsTakenFromTheByteAtItsMarker) {
    ZonCase b;
    // No "E" within reach of the mantissa: the exponent is read behind p + 35, and a minus
    // there negates it.
    b.import(
        b.put(zonBytes(99, 4, "-01 a.b.25.0000xxxxxxxxxxxxxxxxxxxxxxx", {0x52, 0, 0, 0}, kTraces)));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_DOUBLE_EQ(b.st.TimeWindowNs, 2.5);
}

TEST(ZonRead, ASignatureBeforePosition100IsNotSeen) {
    ZonCase b;
    auto bytes = zonBytes(98, 4, "v1.0 x.y 50.0000E-09 ", {0x52, 0, 0, 0}, kTraces);
    b.import(b.put(bytes));
    EXPECT_TRUE(b.st.TempPath.empty());
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
}
