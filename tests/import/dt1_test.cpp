// Sensors & Software .DT1 recordings with their .HD headers: the key scans, the trace headers
// skipped, full scale from the extremes.
#include "commands/open.h"
#include "import/radar_files.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;
using namespace kv::test;

namespace {

struct Dt1Case : test::RadarBench {
    std::string put(const std::vector<uint8_t>& dt1, const std::string& hd,
                    const std::string& dt1Name = "line.DT1",
                    const std::string& hdName = "line.HD") {
        test::writeFile(home.file(dt1Name), dt1);
        test::writeText(home.file(hdName), hd);
        return home.file(dt1Name);
    }
};

} // namespace

TEST(Dt1Read, KeysInAnyCaseAndTraceHeadersSkipped) {
    Dt1Case b;
    const std::vector<std::vector<int>> traces = {
        {1, 2, 3, 4, 5, 1000}, {-2000, 7, 8, 9, 10, 11}, {0, 0, 0, 0, 0, -1}};
    std::string hd = hdText("    3", "6", "12.000");
    for (char& c : hd)
        c = char(std::tolower(c));
    b.import(b.put(dt1Bytes(traces), hd, "line.dt1"));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.HdPath, b.home.file("line.HD"));
    EXPECT_EQ(b.st.TraceCount, 3) << "six characters with blanks in front";
    EXPECT_EQ(b.st.Dt1Samples, 6);
    EXPECT_EQ(b.st.TimeWindowNs, 12.0);
    EXPECT_EQ(b.st.SampleRate, 1.0 / double(float(12e-9 / 6)));
    EXPECT_EQ(b.st.Sp_Samples, 8);
    EXPECT_EQ(b.st.FullScalePos, 2000.0f) << "the larger extreme, both ways";
    EXPECT_EQ(b.st.FullScaleNeg, 2000.0f);
    auto w = b.working();
    ASSERT_EQ(w.size(), 3u * 8);
    for (size_t k = 0; k < 3; ++k) {
        for (size_t i = 0; i < 6; ++i)
            EXPECT_EQ(w[8 * k + i], float(traces[k][i])) << k << "," << i;
        EXPECT_EQ(w[8 * k + 6], 0.0f);
        EXPECT_EQ(w[8 * k + 7], 0.0f);
    }
}

TEST(Dt1Read, AFileCutInsideASampleEndsInZerosFromDiskAndFromMemory) {
    // The header promises three traces; the file ends one byte into the second trace's third
    // sample, which keeps its low byte (0x30 of -2000) and reads a zero for the other.
    const std::vector<std::vector<int>> traces = {{1, 2, 3, 4, 5, 1000}, {-7, 7, -2000, 9, 10, 11}};
    std::vector<uint8_t> dt1 = dt1Bytes(traces);
    dt1.resize(dt1.size() - 7);
    for (bool memory : {false, true}) {
        SCOPED_TRACE(memory ? "in memory" : "on disk");
        Dt1Case b;
        if (memory) b.wb.openSource = test::memoryOpener();
        b.import(b.put(dt1Bytes({{-900, 900, 900, 900, 900, 900}}), hdText("1", "6", "12")));
        ASSERT_FALSE(b.st.TempPath.empty());
        b.import(b.put(dt1, hdText("3", "6", "12")));
        ASSERT_FALSE(b.st.TempPath.empty());
        EXPECT_TRUE(b.host.messages.empty());
        const auto w = b.working();
        ASSERT_EQ(w.size(), 3u * 8);
        const std::vector<float> expected = {1, 2, 3, 4, 5, 1000, 0, 0, -7, 7, 0x30, 0,
                                             0, 0, 0, 0, 0, 0,    0, 0, 0,  0, 0,    0};
        EXPECT_EQ(w, expected);
        EXPECT_EQ(b.st.Dt1Max, 1000.0f);
        EXPECT_EQ(b.st.Dt1Min, -7.0f);
    }
}

TEST(Dt1Read, AHeaderTooLongForTheSixteenBitScanIsACorruptedFile) {
    for (size_t extra : {size_t(0), size_t(1)}) {
        SCOPED_TRACE(extra);
        Dt1Case b;
        std::string hd = hdText("1", "4", "4");
        hd.resize(32777 + extra, ' '); // the scan runs to the length less 10
        b.import(b.put(dt1Bytes({{1, 2, 3, 4}}), hd));
        EXPECT_EQ(b.st.TempPath.empty(), extra == 1);
        EXPECT_EQ(b.host.messages.size(), extra);
    }
}

TEST(Dt1Read, AMissingKeyOrHeaderReadsFromTheWrongPlaceAndFails) {
    for (const std::string& hd :
         {std::string(),
          std::string("NUMBER OF TRACES   = 2 \r\r\nTOTAL TIME WINDOW = 4 \r\r\n")}) {
        Dt1Case b;
        const std::string p = hd.empty() ? b.put(dt1Bytes({{1, 2}}), "", "a.DT1", "other.HD")
                                         : b.put(dt1Bytes({{1, 2}}), hd);
        b.import(p);
        EXPECT_TRUE(b.st.TempPath.empty());
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
    }
}

TEST(Dt1Read, RealRecordingsGiveTheirHeaderValues) {
    KV_REQUIRE_REAL(dir, "dt1");
    struct Expect {
        const char* file;
        int traces, points;
        double window;
    };
    for (const auto& c :
         {Expect{"XLINE00", 164, 1900, 760}, Expect{"XLINE00_ComOffs", 531, 1500, 1200},
          Expect{"cmp", 51, 500, 400}, Expect{"yyline3", 391, 500, 400}}) {
        SCOPED_TRACE(c.file);
        Dt1Case b;
        b.import(dir + "/" + c.file + ".DT1");
        ASSERT_FALSE(b.st.TempPath.empty());
        EXPECT_TRUE(b.host.messages.empty());
        EXPECT_EQ(b.st.TraceCount, c.traces);
        EXPECT_EQ(b.st.Dt1Samples, c.points);
        EXPECT_EQ(b.st.TimeWindowNs, c.window);
        EXPECT_EQ(b.st.SampleRate, 1.0 / double(float(1e-9 * c.window / c.points)));
        const int sp = c.points > 1024 ? 2048 : 512;
        EXPECT_EQ(b.st.Sp_Samples, sp);
        EXPECT_EQ(b.st.WorkingFileLength, c.traces * sp * 4);
        // Full scale is the largest magnitude in the samples, found here independently.
        const std::string raw = test::readText(dir + "/" + c.file + ".DT1");
        int peak = 0;
        for (int t = 0; t < c.traces; ++t)
            for (int i = 0; i < c.points; ++i) {
                const size_t off = size_t(t) * (128 + 2 * size_t(c.points)) + 128 + 2 * size_t(i);
                int16_t s;
                std::memcpy(&s, raw.data() + off, 2);
                peak = std::max(peak, std::abs(int(s)));
            }
        EXPECT_EQ(b.st.FullScalePos, float(peak));
        auto w = b.working();
        int16_t first;
        std::memcpy(&first, raw.data() + 128, 2);
        EXPECT_EQ(w[0], float(first));
    }
}
