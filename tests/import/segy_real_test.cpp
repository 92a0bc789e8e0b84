// Real SEG-Y recordings: what each one gives through our rules, and how the working traces
// compare with the samples segyio reads from the same file, where the rules read the samples as
// stored and where they deliberately read them otherwise.
#include "segyio_reference.h"
#include "seismic_files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

using namespace kv;
using test::segyioTraces;

namespace {

constexpr int kSeismic = 5;
constexpr int kRadsys = 6;

std::vector<uint8_t> bytesOf(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

/// Imports real files, or copies of them named real.sgy.
struct RealCase : test::FileCase {
    RealCase() : FileCase("real.sgy", kSeismic) {}
};

/// Copies the binary header's interval (3217) into the field-recording interval (3219) that the
/// low-first Seismic rule reads; these files leave that field 0.
std::vector<uint8_t> withFieldInterval(std::vector<uint8_t> b) {
    b[3218] = b[3216];
    b[3219] = b[3217];
    return b;
}

} // namespace

TEST(SegyRealFiles, EachFileOpensAsTheRulesSay) {
    struct Case {
        const char* file;
        int filter;          // negative: a copy named real.sgy
        const char* message; // "" for none
        int traceCount;      // -1: no data set
        int spSamples;
        double rate;
    };
    const Case cases[] = {
        // High first, 16-bit: the interval of the first trace header; counted twice, the
        // second time with the fitted length: (165060 - 3841) / (128 + 240) = 438.1.
        {"segy/f3.sgy", kSeismic, "", 438, 128, 250.0},
        // Names that do not end in "sgy" choose no reader at all.
        {"segy/example.y_first_trace", kSeismic, "", -1, 0, 0},
        {"segy/1.sgy_first_trace", kSeismic, "", -1, 0, 0},
        // Low first: the field-recording interval at 3219 is 0 in all of these.
        {"segy/f3-lsb.sgy", kSeismic, "File corrupted!", -1, 0, 0},
        {"segy/Format5lsb.sgy", kSeismic, "File corrupted!", -1, 0, 0},
        {"segy/test.sgy", kSeismic, "File corrupted!", -1, 0, 0},
        // High-first IBM floats: the trace headers' interval is 0.
        {"segy/small.sgy", kSeismic, "File corrupted!", -1, 0, 0},
        {"segy/long.sgy", kSeismic, "File corrupted!", -1, 0, 0},
        // High-first format 5 and 32-bit integers are refused.
        {"segy/Format5msb.sgy", kSeismic, "Data format not supported by Kelvorandine!", -1, 0, 0},
        // Radsys: counts from the first trace header, picoseconds, and the count divided by the
        // trace length of the settings: (949120 - 3840) / (1024 + 240) = 747.8.
        {"segy/test.sgy", kRadsys, "", 748, 1024, 2.5e9},
        // The stale trace-header length 462 of the f3 family: (165060 - 3840) / 1264 = 127.5.
        {"segy/f3-lsb.sgy", kRadsys, "", 128, 512, 2.5e8},
        {"segy/small.sgy", kRadsys, "File corrupted!", -1, 0, 0},
        // The two cut-out first traces, copied under a name ending in .sgy.
        {"segy/example.y_first_trace", -kSeismic, "", 1, 512, 500.0},
        {"segy/1.sgy_first_trace", -kSeismic, "Data format not supported by Kelvorandine!", -1, 0,
         0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.file) + (c.filter == kRadsys ? " as Radsys" : " as Seismic"));
        KV_REQUIRE_REAL(path, c.file);
        RealCase b;
        if (c.filter < 0)
            b.open(bytesOf(path), -c.filter);
        else
            b.import(path, c.filter);
        if (*c.message) {
            EXPECT_EQ(b.onlyMessage(), c.message);
        } else {
            EXPECT_TRUE(b.host.messages.empty()) << b.host.messages[0].text;
        }
        if (c.traceCount < 0) {
            EXPECT_FALSE(b.loaded());
            continue;
        }
        ASSERT_TRUE(b.loaded());
        EXPECT_EQ(b.st.TraceCount, c.traceCount);
        EXPECT_EQ(b.st.Sp_Samples, c.spSamples);
        EXPECT_DOUBLE_EQ(b.st.SampleRate, c.rate);
        EXPECT_EQ(b.st.WorkingFileLength, c.traceCount * c.spSamples * 4);
    }
}

TEST(SegyRealFiles, LowFirstSamplesAgreeWithSegyioWhereTheRulesReadThemAsStored) {
    // IEEE floats (format 5) and 16-bit integers (format 3), low byte first, with the
    // field-recording interval filled in so that the header step passes.
    for (const char* file : {"segy/Format5lsb.sgy", "segy/test.sgy", "segy/f3-lsb.sgy"}) {
        SCOPED_TRACE(file);
        KV_REQUIRE_REAL(path, file);
        const auto ref = segyioTraces(path, true);
        ASSERT_FALSE(ref.empty());
        RealCase b;
        b.open(withFieldInterval(bytesOf(path)), kSeismic);
        ASSERT_TRUE(b.loaded());
        const auto w = b.working();
        const size_t sp = size_t(b.st.Sp_Samples);
        const size_t ns = ref[0].size();
        // The count leaves out the sample width, so it is above the file's trace count and
        // every surplus trace is zero.
        ASSERT_GT(size_t(b.st.TraceCount), ref.size());
        ASSERT_EQ(w.size(), size_t(b.st.TraceCount) * sp);
        float peak = 0;
        for (size_t t = 0; t < size_t(b.st.TraceCount); ++t) {
            for (size_t i = 0; i < sp; ++i) {
                const float want = t < ref.size() && i < ns ? ref[t][i] : 0.0f;
                ASSERT_EQ(w[t * sp + i], want) << "trace " << t << " sample " << i;
                peak = std::max(peak, std::abs(want));
            }
        }
        EXPECT_EQ(b.st.FullScalePos, peak > 33000 ? 32767.0f : float(int(peak)));
    }
}

TEST(SegyRealFiles, HighFirstWordsDifferFromSegyioByTheBorrowedByte) {
    KV_REQUIRE_REAL(path, "segy/f3.sgy");
    const auto ref = segyioTraces(path, false);
    ASSERT_EQ(ref.size(), 414u);
    RealCase b;
    b.import(path, kSeismic);
    ASSERT_TRUE(b.loaded());
    const auto w = b.working();
    const size_t sp = size_t(b.st.Sp_Samples), ns = ref[0].size();
    size_t differ = 0;
    for (size_t t = 0; t < ref.size(); ++t) {
        for (size_t i = 0; i + 1 < ns; ++i) {
            // Low byte from sample i's second byte (its own low byte), high byte from the first
            // byte of sample i + 1 (the next sample's high byte).
            const auto lo = uint16_t(int16_t(ref[t][i])) & 0xFF;
            const auto hi = uint16_t(int16_t(ref[t][i + 1])) & 0xFF00;
            ASSERT_EQ(w[t * sp + i], float(int16_t(uint16_t(hi | lo)))) << t << "/" << i;
            differ += w[t * sp + i] != ref[t][i];
        }
    }
    EXPECT_GT(differ, ref.size() * (ns - 1) / 2) << "most samples differ from the stored ones";
    for (size_t i = 414 * sp; i < w.size(); ++i)
        ASSERT_EQ(w[i], 0.0f);
}

TEST(SegyRealFiles, IbmFloatsAreReadAsIeeeBitPatterns) {
    // small.sgy holds IBM floats high first; with an interval in its first trace header it
    // opens, and every working sample is the same 32 bits taken as an IEEE float.
    KV_REQUIRE_REAL(path, "segy/small.sgy");
    const auto ref = segyioTraces(path, false);
    ASSERT_EQ(ref.size(), 25u);
    auto bytes = bytesOf(path);
    bytes[3716] = 0x0F; // 4000 microseconds, high first, at 3717
    bytes[3717] = 0xA0;
    RealCase b;
    b.open(bytes, kSeismic);
    ASSERT_TRUE(b.loaded());
    EXPECT_EQ(b.st.SampleRate, 250.0);
    // The float reader counts with the true width: (14600 - 3840) / (50 * 4 + 240) = 24.45.
    ASSERT_EQ(b.st.TraceCount, 24);
    const auto w = b.working();
    const size_t sp = size_t(b.st.Sp_Samples);
    for (size_t t = 0; t < 24; ++t) {
        for (size_t i = 0; i < 50; ++i) {
            const size_t at = 3600 + t * 440 + 240 + 4 * i;
            const uint32_t bits = (uint32_t(bytes[at]) << 24) | (uint32_t(bytes[at + 1]) << 16) |
                                  (uint32_t(bytes[at + 2]) << 8) | bytes[at + 3];
            float ieee;
            std::memcpy(&ieee, &bits, 4);
            ASSERT_EQ(w[t * sp + i], ieee);
            if (ref[t][i] != 0.0f) {
                ASSERT_NE(w[t * sp + i], ref[t][i]);
            }
        }
    }
}
