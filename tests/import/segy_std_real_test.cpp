// Real SEG-Y recordings through the "SEG-Y, all revisions" reader: each opens, and its working
// traces are the samples segyio reads from it, one for one. long.sgy, whose sample count segyio
// takes as negative (and stops on), is checked against segyio's own sample conversion instead.
#include "import/standard_samples.h"
#include "segyio_reference.h"
#include "standard_files.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <fstream>

using namespace kv;

namespace {

std::vector<uint8_t> bytesOf(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

/// The order segyio must be told: low byte first when only that reading gives a known format.
bool lowFirst(const std::vector<uint8_t>& b) {
    const int high = b[3224] << 8 | b[3225], low = b[3225] << 8 | b[3224];
    return !(high >= 1 && high <= 16) && low >= 1 && low <= 16;
}

float peakOf(const std::vector<std::vector<float>>& traces) {
    float p = 0;
    for (const auto& t : traces)
        for (float v : t)
            p = std::max(p, std::abs(v));
    return p;
}

} // namespace

TEST(SegyStdRealFiles, EveryFileGivesTheSamplesSegyioReads) {
    struct Case {
        const char* file;
        int traces;
        int samples;
        double rate;
        float fullScale; // 0: the largest magnitude of segyio's samples
    };
    const Case cases[] = {
        {"segy/f3.sgy", 414, 75, 250.0, 32767.0f},
        {"segy/f3-lsb.sgy", 414, 75, 250.0, 32767.0f},
        {"segy/Format5msb.sgy", 414, 75, 250.0, 0},
        {"segy/Format5lsb.sgy", 414, 75, 250.0, 0},
        {"segy/small.sgy", 25, 50, 250.0, 0},
        {"segy/test.sgy", 223, 1000, 2500.0, 0},
        {"segy/example.y_first_trace", 1, 500, 500.0, 32767.0f},
        {"segy/1.sgy_first_trace", 1, 8000, 4000.0, 2147483647.0f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        KV_REQUIRE_REAL(path, c.file);
        const auto ref = test::segyioTraces(path, lowFirst(bytesOf(path)));
        ASSERT_EQ(ref.size(), size_t(c.traces));
        test::StdReader r;
        r.run(ReadSegyStd, path);
        ASSERT_TRUE(r.loaded()) << r.onlyMessage();
        EXPECT_TRUE(r.host.messages.empty());
        ASSERT_EQ(r.st.TraceCount, c.traces);
        ASSERT_EQ(r.st.Sp_Samples, c.samples);
        EXPECT_DOUBLE_EQ(r.st.SampleRate, c.rate);
        const auto w = r.working();
        ASSERT_EQ(w.size(), size_t(c.traces) * size_t(c.samples));
        for (size_t t = 0; t < ref.size(); ++t)
            for (size_t i = 0; i < size_t(c.samples); ++i)
                ASSERT_EQ(w[t * size_t(c.samples) + i], ref[t][i]) << t << "/" << i;
        EXPECT_EQ(r.st.FullScalePos, c.fullScale > 0 ? c.fullScale : peakOf(ref));
    }
}

TEST(SegyStdRealFiles, SixtyThousandSamplesThatSegyioCannotCount) {
    KV_REQUIRE_REAL(path, "segy/long.sgy");
    test::StdReader r;
    r.run(ReadSegyStd, path);
    ASSERT_TRUE(r.loaded()) << r.onlyMessage();
    EXPECT_EQ(r.st.TraceCount, 3);
    EXPECT_EQ(r.st.Sp_Samples, 60000);
    EXPECT_EQ(r.st.SampleRate, 1000.0);
    // The trace headers hold nothing; the samples are IBM floats, high byte first. segyio's
    // conversion of the raw words is the reference.
    const auto bytes = bytesOf(path);
    const auto w = r.working();
    ASSERT_EQ(w.size(), 3u * 60000);
    std::vector<char> raw(4 * 60000);
    for (size_t t = 0; t < 3; ++t) {
        const size_t at = 3600 + t * (240 + raw.size()) + 240;
        std::copy(bytes.begin() + std::ptrdiff_t(at),
                  bytes.begin() + std::ptrdiff_t(at + raw.size()), raw.begin());
        segy_to_native(SEGY_IBM_FLOAT_4_BYTE, 60000, raw.data());
        for (size_t i = 0; i < 60000; ++i) {
            float want;
            std::memcpy(&want, raw.data() + 4 * i, 4);
            ASSERT_EQ(w[t * 60000 + i], want) << t << "/" << i;
        }
    }
}

TEST(SegyStdRealFiles, TextualHeadersInEbcdicAndAscii) {
    {
        KV_REQUIRE_REAL(path, "segy/f3.sgy");
        test::StdReader r;
        r.run(ReadSegyStd, path);
        ASSERT_FALSE(r.st.SourceInfoLines.empty());
        EXPECT_EQ(r.st.SourceInfoLines[0].rfind("C 1", 0), 0u) << r.st.SourceInfoLines[0];
        EXPECT_EQ(r.st.SourceInfoLines.end()[-4],
                  "Revision 1, format 3 (2-byte signed integer), big-endian");
    }
    {
        KV_REQUIRE_REAL(path, "segy/test.sgy");
        test::StdReader r;
        r.run(ReadSegyStd, path);
        ASSERT_FALSE(r.st.SourceInfoLines.empty());
        EXPECT_EQ(r.st.SourceInfoLines[0],
                  "A reel identification header consisting of 3600 bytes in 2 parts:");
    }
}

TEST(SegyStdRealFiles, IbmConversionAgreesWithSegyioForEveryNormalisedFloat) {
    // Every exponent that stays inside a float's range, with fractions from the smallest
    // normalised to the largest: the same bits as segyio converts them. (Outside that range
    // segyio gives infinities, NaNs or denormals; ours holds the largest float, or 0.)
    std::vector<uint32_t> words;
    for (uint32_t e = 0x22; e <= 0x60; ++e)
        for (uint32_t f : {0x100000u, 0x100001u, 0x7FFFFFu, 0x800000u, 0xABCDEFu, 0xFFFFFFu})
            for (uint32_t sign : {0u, 0x80000000u})
                words.push_back(sign | e << 24 | f);
    std::vector<char> raw(4 * words.size());
    for (size_t i = 0; i < words.size(); ++i)
        for (size_t k = 0; k < 4; ++k)
            raw[4 * i + k] = char(words[i] >> (24 - 8 * k));
    segy_to_native(SEGY_IBM_FLOAT_4_BYTE, long(words.size()), raw.data());
    for (size_t i = 0; i < words.size(); ++i) {
        float theirs;
        std::memcpy(&theirs, raw.data() + 4 * i, 4);
        ASSERT_EQ(ibmToFloat(words[i]), theirs) << std::hex << words[i];
    }
}
