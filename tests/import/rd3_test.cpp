// Malå .rd3 recordings with their .rad headers: the key scan, the fixed trace-length place,
// finding the header, fitting the trace length and counting traces.
#include "commands/open.h"
#include "import/radar_files.h"

#include <gtest/gtest.h>

using namespace kv;
using namespace kv::test;

namespace {

struct Rd3Case : test::RadarBench {
    /// Writes NAME.rd3 (or whatever `rd3Name` says) with `values`, and `rad` beside it.
    std::string put(const std::vector<int>& values, const std::string& rad,
                    const std::string& rd3Name = "line.rd3",
                    const std::string& radName = "line.rad") {
        test::writeFile(home.file(rd3Name), test::i16Samples(values));
        if (!radName.empty()) test::writeText(home.file(radName), rad);
        return home.file(rd3Name);
    }
};

std::vector<int> ramp(int n) {
    std::vector<int> v;
    for (int i = 0; i < n; ++i)
        v.push_back(i * 3 - 1000);
    return v;
}

} // namespace

TEST(Rd3Read, TracesAreTheSamplesAsTheyStandWithTheHeadersTwoValues) {
    Rd3Case b;
    b.import(b.put(ramp(8 * 5), radText("8", "16.000000")));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.RadSamplesText, "8\r\nFR");
    EXPECT_EQ(b.st.RadTimeWindowText, "16.000000\r");
    EXPECT_EQ(b.st.TraceLength, 8);
    EXPECT_EQ(b.st.Sp_Samples, 8);
    EXPECT_EQ(b.st.TimeWindowNs, 16.0);
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 8 / 16e-9);
    EXPECT_EQ(b.st.Rd3Stride, 16);
    EXPECT_EQ(b.st.TraceCount, 5);
    EXPECT_EQ(b.st.FullScalePos, 32767.0f);
    auto w = b.working();
    auto src = ramp(40);
    EXPECT_EQ(w, std::vector<float>(src.begin(), src.end()));
}

TEST(Rd3Read, TheHeaderIsFoundWhateverTheCaseOfEitherName) {
    {
        Rd3Case b;
        b.import(b.put(ramp(16), radText("8", "8"), "UP.RD3", "UP.rad"));
        EXPECT_EQ(b.st.RadPath, b.home.file("UP.rad"));
        EXPECT_EQ(b.st.TraceCount, 2);
    }
    Rd3Case b;
    b.import(b.put(ramp(16), radText("8", "8"), "x.rd3.rd3", "X.RAD.RAD"));
    EXPECT_EQ(b.st.RadPath, b.home.file("X.RAD.RAD")) << "every .rd3 in the name is replaced";
    EXPECT_EQ(b.st.TraceCount, 2);
}

TEST(Rd3Read, OnlyThreeLettersOfTheTimeWindowKeyAreTested) {
    Rd3Case b;
    // "TEN WIDE W" has T, W and W where TIMEWINDOW has them, and comes first.
    b.import(b.put(ramp(16), radText("8", "16", "TEN WIDE W:32.0\r\n")));
    EXPECT_EQ(b.st.TimeWindowNs, 32.0);
    // Lower-case letters do not match, so the real key is found.
    b.import(b.put(ramp(16), radText("8", "16", "ten wide w:32.0\r\n")));
    EXPECT_EQ(b.st.TimeWindowNs, 16.0);
    // A long header is scanned 64 KiB at a time: the key's T at byte 65533, 65536 (its W's in
    // the next stretch) and 65537.
    for (size_t pad : {65501u, 65504u, 65505u}) {
        b.import(b.put(ramp(16), radText("8", "16", std::string(pad, 'x') + "\r\n")));
        EXPECT_EQ(b.st.TimeWindowNs, 16.0) << pad;
    }
}

TEST(Rd3Read, TraceLengthIsFittedAndTheCountRoundsToNearest) {
    {
        Rd3Case b; // pad with zeros: 500 samples in a 512-sample trace
        b.import(b.put(ramp(500 * 2 + 300), radText("500", "100")));
        EXPECT_EQ(b.st.Sp_Samples, 512);
        EXPECT_EQ(b.st.TraceCount, 3) << "2.6 traces";
        auto w = b.working();
        ASSERT_EQ(w.size(), 3u * 512);
        EXPECT_EQ(w[499], float(499 * 3 - 1000));
        for (int i = 500; i < 512; ++i)
            EXPECT_EQ(w[size_t(i)], 0.0f);
        EXPECT_EQ(w[512], float(500 * 3 - 1000));
        EXPECT_EQ(w[2 * 512 + 299], float(1299 * 3 - 1000)) << "the partial last trace";
        EXPECT_EQ(w[2 * 512 + 300], 0.0f);
    }
    Rd3Case b; // no padding: the first 256 of 500
    b.st.PadWithZero = false;
    b.import(b.put(ramp(500 * 2), radText("500", "100")));
    EXPECT_EQ(b.st.Sp_Samples, 256);
    auto w = b.working();
    ASSERT_EQ(w.size(), 2u * 256);
    EXPECT_EQ(w[256], float(500 * 3 - 1000));
}

TEST(Rd3Read, AMissingHeaderOrKeyIsACorruptedFile) {
    for (const std::string& rad : {std::string(), std::string("SAMPLES:8\r\nSTACKS:4\r\n")}) {
        Rd3Case b;
        b.import(b.put(ramp(16), rad, "line.rd3", rad.empty() ? "" : "line.rad"));
        EXPECT_TRUE(b.st.TempPath.empty());
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
        EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
        EXPECT_FALSE(b.st.SpectrumOpen);
    }
}

TEST(Rd3Read, TheRealRecordingOpensWithItsHeaderValues) {
    KV_REQUIRE_REAL(rd3, "rd3/ten_col.rd3");
    Rd3Case b;
    b.import(rd3);
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.TraceLength, 512);
    EXPECT_EQ(b.st.Sp_Samples, 512);
    EXPECT_EQ(b.st.TraceCount, 10);
    EXPECT_EQ(b.st.TimeWindowNs, 422.061312);
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 512 / (1e-9 * 422.061312));
    EXPECT_EQ(b.st.WorkingFileLength, 10 * 512 * 4);
}
