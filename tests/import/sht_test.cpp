// Wavestar .SHT files: the marker searches, the scales found in the text block, and the record
// read as one trace in volts.
#include "seismic_files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace kv;

namespace {

/// A tabular document: `text` then the record as little-endian floats.
std::vector<uint8_t> shtBytes(const std::string& text, const std::vector<float>& record) {
    std::vector<uint8_t> b(text.begin(), text.end());
    for (float f : record) {
        uint32_t u;
        std::memcpy(&u, &f, 4);
        for (int i = 0; i < 4; ++i)
            b.push_back(uint8_t(u >> (8 * i)));
    }
    return b;
}

std::string block(const std::string& scales, int samples) {
    return "Waveform Tabular Document\r\nTEKTRONIX TDS 210\r\n" + scales + "\r\nSamples " +
           std::to_string(samples) + "\r\n";
}

std::vector<float> wave(int n) {
    std::vector<float> v;
    for (int i = 0; i < n; ++i)
        v.push_back(float(i % 7) * 0.25f - 0.5f);
    return v;
}

struct ShtCase : test::FileCase {
    ShtCase() : FileCase("scope.SHT", 1) {}
};

} // namespace

TEST(ShtRead, TheRecordIsOneTraceWithTheScalesOfTheBlock) {
    ShtCase b;
    b.st.FullScalePos = 123.0f; // left by an earlier data set
    b.open(shtBytes(block("Ch1 2.00 V 500 us", 1000), wave(1000)));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_TRUE(b.st.IsSht);
    EXPECT_EQ(b.st.TekChannels, 1);
    EXPECT_EQ(b.st.TekVoltDiv, 2.0f);
    EXPECT_EQ(b.st.ShtVoltDiv, 2.0f) << "the O-scope labels its divisions with it";
    EXPECT_EQ(b.st.Reference, 16.0f);
    EXPECT_EQ(b.st.FullScalePos, 20.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 123.0f) << "the old positive full scale";
    // 1000 samples over ten divisions of 500 us, the time per division kept as a 32-bit float.
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 1.0 / (double(500e-6f) * 10 / 1000));
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    EXPECT_EQ(b.st.TraceCount, 1);
    EXPECT_EQ(b.st.TraceLength, 1000);
    EXPECT_EQ(b.st.BitsPerSample, 8);
    EXPECT_EQ(b.st.YUnitName, "Volt");
    EXPECT_EQ(b.st.ShowVertical, 2);
    auto w = b.working();
    // The working trace is written with one element more than Sp_Samples.
    ASSERT_EQ(w.size(), 1025u);
    EXPECT_EQ(b.st.WorkingFileLength, 1025 * 4);
    const auto v = wave(1000);
    for (size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(w[i], v[i]);
    EXPECT_EQ(w[1000], 0.0f);
}

TEST(ShtRead, UnitsMayBeJoinedToTheNumberAndSecondsAreSecondsWithoutPadding) {
    ShtCase b;
    b.st.PadWithZero = false;
    b.open(shtBytes(block("Ch1,0.5V\tCh2\t0.001sec", 600), wave(600)));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.st.TekChannels, 2);
    EXPECT_EQ(b.st.TekVoltDiv, 0.5f);
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 1.0 / (double(0.001f) * 10 / 600));
    EXPECT_EQ(b.st.Sp_Samples, 512);
    auto w = b.working();
    ASSERT_EQ(w.size(), 513u);
    EXPECT_EQ(w[511], wave(600)[511]);
    EXPECT_EQ(w[512], 0.0f);
}

TEST(ShtRead, MarkersMissingFromTheFirst2000BytesStopTheOpen) {
    struct Case {
        std::vector<uint8_t> bytes;
        const char* message;
    };
    const std::string far(2000, ' ');
    const std::vector<Case> cases = {
        {shtBytes(far + block("Ch1 1 V 1 s", 8), wave(8)),
         "This is not a Waveform Tabular Document!"},
        {shtBytes("Waveform Tabular Docket\r\nTEKTRONIX\r\nSamples 8\r\n", wave(8)),
         "This is not a Waveform Tabular Document!"},
        {shtBytes("Waveform Tabular Document\r\nTektronix\r\nSamples 8\r\n", wave(8)),
         "File is corrupted!"},
        {shtBytes("TEKTRONIX\r\nWaveform Tabular Document\r\nSamples 8\r\n", wave(8)),
         "File is corrupted!"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        ShtCase b;
        b.open(c.bytes);
        EXPECT_EQ(b.onlyMessage(), c.message);
        EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
        EXPECT_TRUE(b.st.ImportFailed);
        EXPECT_FALSE(b.st.IsSht);
        EXPECT_FALSE(b.cmd.enabled("mnuFFT")) << "the open stopped";
    }
}

TEST(ShtRead, ABlockWithoutTimeScaleOrSampleLineIsCorrupted) {
    for (const std::string& text :
         {block("Ch1 1 V", 8), std::string("Waveform Tabular Document TEKTRONIX Ch1 1 V 1 s"),
          block("Ch1 1 V", 666666666)}) {
        ShtCase b;
        b.open(shtBytes(text, wave(8)));
        EXPECT_EQ(b.onlyMessage(), "File corrupted!");
        EXPECT_TRUE(b.st.TempPath.empty());
        EXPECT_LE(b.st.Sp_Samples, 1 << 24);
    }
}

TEST(ShtRead, TooLongARecordIsRefused) {
    for (int n : {70000, 65001, 200000000}) {
        ShtCase b;
        b.open(shtBytes(block("Ch1 1 V 1 s", n), {}));
        EXPECT_EQ(b.onlyMessage(), "Too many samples/trace!");
        EXPECT_TRUE(b.working().empty()) << "nothing is written";
        if (n == 200000000) {
            EXPECT_EQ(b.st.Sp_Samples, 1024) << "a length no buffer can hold is not kept";
            EXPECT_TRUE(b.st.TempPath.empty());
        }
    }
}
