// The "SEG-2, all variants" reader: every data format in both byte orders, traces of unequal
// length, the descriptor strings in file information, the files it must refuse, and the real
// recordings against their published values.
#include "standard_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

using namespace kv;
using test::Seg2Layout;
using test::Seg2Trace;

namespace {

Seg2Trace traceOf(int format, std::vector<double> samples) {
    Seg2Trace t;
    t.format = format;
    t.samples = std::move(samples);
    return t;
}

bool hasLine(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

/// The numbers of a gzipped text file, row after row.
std::vector<double> gzNumbers(const std::string& path) {
    std::vector<double> out;
    FILE* p = ::popen(("gzip -dc '" + path + "'").c_str(), "r");
    if (!p) return out;
    double v;
    while (std::fscanf(p, "%lf", &v) == 1)
        out.push_back(v);
    ::pclose(p);
    return out;
}

} // namespace

TEST(Seg2Std, EveryDataFormatInBothByteOrders) {
    struct Case {
        int format;
        std::vector<double> a, b;
        float fullScale;
    };
    const Case cases[] = {
        {1, {-32768, 32767, 0, -1, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}, 32767.0f},
        {2,
         {-2147483648.0, 2147483520.0, 0, -1, 5, 6, 7, 8},
         {1, 2, 3, 4, 5, 6, 7, 8},
         2147483647.0f},
        // 20-bit packed: mantissas with exponents, negatives in one's complement.
        {3,
         {-32767, 32767, 65536, -65536, 1 << 29, -3, 0, 1},
         {1, 2, 3, 4, -5, -6, -7, 8},
         float(1 << 29)},
        {4, {1.5, -118.625, 0, 1e-3f, 4096, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, -9000.25}, 9000.25f},
        {5, {1.5, -118.625, 0, 0.25, 4096, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, -9000.25}, 9000.25f},
    };
    for (const Case& c : cases) {
        for (bool big : {false, true}) {
            SCOPED_TRACE("format " + std::to_string(c.format) + (big ? " big" : " little"));
            Seg2Layout s;
            s.big = big;
            s.traces = {traceOf(c.format, c.a), traceOf(c.format, c.b)};
            test::StdReader r;
            r.seg2(test::seg2File(s));
            ASSERT_TRUE(r.loaded()) << r.onlyMessage();
            EXPECT_TRUE(r.host.messages.empty());
            EXPECT_EQ(r.st.TraceCount, 2);
            EXPECT_EQ(r.st.Sp_Samples, 8);
            EXPECT_DOUBLE_EQ(r.st.SampleRate, 1000.0);
            for (size_t t = 0; t < 2; ++t) {
                const auto& want = t == 0 ? c.a : c.b;
                const auto w = r.trace(t);
                ASSERT_EQ(w.size(), 8u);
                for (size_t i = 0; i < 8; ++i)
                    EXPECT_EQ(w[i], float(want[i])) << "trace " << t << " sample " << i;
            }
            EXPECT_EQ(r.st.FullScalePos, c.fullScale);
            EXPECT_EQ(r.st.FullScaleNeg, c.fullScale);
        }
    }
}

TEST(Seg2Std, ShorterTracesArePaddedToTheLongestAndSaidSo) {
    Seg2Layout s;
    s.traces = {traceOf(1, {1, 2, 3}), traceOf(4, {0.5, -0.75, 1, 2, 3}), traceOf(1, {})};
    s.traces[1].padding = 12; // a descriptor longer than its strings
    test::StdReader r;
    r.seg2(test::seg2File(s));
    ASSERT_TRUE(r.loaded()) << r.onlyMessage();
    EXPECT_EQ(r.st.TraceCount, 3);
    EXPECT_EQ(r.st.Sp_Samples, 5);
    EXPECT_EQ(r.trace(0), (std::vector<float>{1, 2, 3, 0, 0}));
    EXPECT_EQ(r.trace(1), (std::vector<float>{0.5f, -0.75f, 1, 2, 3}));
    EXPECT_EQ(r.trace(2), (std::vector<float>(5, 0.0f)));
    EXPECT_TRUE(hasLine(r.st.SourceInfoLines, "Traces of unequal length (0 to 5 samples): the "
                                              "shorter ones are padded with zeros"));
    // Integer and float traces together: the full scale is the largest magnitude.
    EXPECT_EQ(r.st.FullScalePos, 3.0f);
}

TEST(Seg2Std, DescriptorStringsReachFileInformation) {
    Seg2Layout s;
    s.big = true;
    s.traces = {traceOf(2, {1, 2}), traceOf(2, {3, 4})};
    s.traces[0].strings = {"SAMPLE_INTERVAL 0.000125", "DESCALING_FACTOR 0.5", "CHANNEL_NUMBER 1"};
    s.traces[1].strings = {"SAMPLE_INTERVAL 0.000125", "DESCALING_FACTOR 0.5", "CHANNEL_NUMBER 2"};
    test::StdReader r;
    r.seg2(test::seg2File(s));
    ASSERT_TRUE(r.loaded()) << r.onlyMessage();
    EXPECT_EQ(r.st.SampleRate, 8000.0);
    const std::vector<std::string> want = {
        "COMPANY TEST",
        "NOTE first",
        "second",
        "Trace 1: SAMPLE_INTERVAL 0.000125",
        "Trace 1: DESCALING_FACTOR 0.5",
        "Trace 1: CHANNEL_NUMBER 1",
        "Trace 2: CHANNEL_NUMBER 2",
        "Traces: 2, 4-byte signed integer, big-endian",
        "Samples per trace: 2",
        "Sample interval: 0.000125 s",
    };
    EXPECT_EQ(r.st.SourceInfoLines, want);

    // An interval only in the file descriptor serves every trace.
    s.fileStrings = {"SAMPLE_INTERVAL 0.002"};
    s.traces[0].strings = s.traces[1].strings = {"DESCALING_FACTOR 1"};
    test::StdReader shared;
    shared.seg2(test::seg2File(s));
    ASSERT_TRUE(shared.loaded()) << shared.onlyMessage();
    EXPECT_EQ(shared.st.SampleRate, 500.0);
}

TEST(Seg2Std, FilesThatDoNotHoldWhatTheirHeadersPromise) {
    Seg2Layout s;
    s.traces = {traceOf(2, {1, 2, 3, 4}), traceOf(2, {5, 6, 7, 8})};
    const auto bytes = test::seg2File(s);
    const size_t second = bytes[36] | bytes[37] << 8; // the second trace pointer, low first
    auto with = [&](size_t off, std::vector<uint8_t> patch) {
        auto b = bytes;
        std::copy(patch.begin(), patch.end(), b.begin() + std::ptrdiff_t(off));
        return b;
    };
    const std::string corrupted = "File corrupted!";
    struct Case {
        const char* what;
        std::vector<uint8_t> file;
        std::string message;
    };
    const Case cases[] = {
        {"the last trace cut short", {bytes.begin(), bytes.end() - 1}, corrupted},
        {"not a SEG-2 block id", with(0, {0x55, 0x3B}), corrupted},
        {"no traces", with(6, {0, 0}), corrupted},
        {"more traces than pointers", with(6, {3, 0}), corrupted},
        {"a trace pointer past the end", with(36, {0xFF, 0xFF, 0xFF, 0x0F}), corrupted},
        {"a trace pointer into the header", with(36, {4, 0, 0, 0}), corrupted},
        {"a wrong descriptor id", with(second, {0x22, 0x45}), corrupted},
        {"a sample count past the end", with(second + 8, {0, 0, 1, 0}), corrupted},
        {"an absurd sample count", with(second + 8, {0xFF, 0xFF, 0xFF, 0xFF}), corrupted},
        {"every trace empty", with(second + 8, {0, 0, 0, 0}) /* patched again below */, corrupted},
        {"an unknown data format", with(second + 12, {6}),
         "Data format not supported by Kelvorandine!"},
        {"a descriptor shorter than its fixed part", with(second + 2, {8, 0}), corrupted},
        {"a string terminator of length 3", with(8, {3}), corrupted},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        auto file = c.file;
        if (std::string(c.what) == "every trace empty") {
            const size_t first = file[32] | file[33] << 8;
            std::fill_n(file.begin() + std::ptrdiff_t(first + 8), 4, 0);
        }
        test::StdReader r;
        r.seg2(file);
        EXPECT_FALSE(r.loaded());
        EXPECT_TRUE(r.st.TempPath.empty());
        EXPECT_EQ(r.onlyMessage(), c.message);
    }
    // A sample interval that is missing, zero or not a number.
    for (const char* interval : {"", "SAMPLE_INTERVAL 0", "SAMPLE_INTERVAL fast"}) {
        SCOPED_TRACE(interval);
        Seg2Layout bad = s;
        bad.traces[1].strings = {interval};
        test::StdReader r;
        r.seg2(test::seg2File(bad));
        EXPECT_FALSE(r.loaded());
        EXPECT_EQ(r.onlyMessage(), corrupted);
    }
}

TEST(Seg2StdRealFiles, PublishedValuesAreTheSamplesTimesTheDescalingFactor) {
    struct Case {
        const char* file;
        const char* values;
        int traces;
        int samples;
        double rate;
        std::vector<double> factors; // per trace; the published values are in these units
        float fullScale;             // 0: the largest magnitude
    };
    const Case cases[] = {
        // Three int32 components in micrometres per second: raw x factor x 1000.
        {"seg2/20130107_103041000.CET.3c.cont.0.seg2",
         "seg2/20130107_103041000.CET.3c.cont.0.DAT.gz",
         3,
         2000,
         1000.0,
         {2.17378e-05 * 1e3, 2.19941e-05 * 1e3, 0},
         2147483647.0f},
        // One trace of 20-bit packed samples.
        {"seg2/20180307_031245000.0.seg2",
         "seg2/20180307_031245000.0.DAT.gz",
         1,
         2048,
         8000.0,
         {0.001199},
         0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        KV_REQUIRE_REAL(path, c.file);
        KV_REQUIRE_REAL(published, c.values);
        test::StdReader r;
        r.run(ReadSeg2Std, path);
        ASSERT_TRUE(r.loaded()) << r.onlyMessage();
        ASSERT_EQ(r.st.TraceCount, c.traces);
        ASSERT_EQ(r.st.Sp_Samples, c.samples);
        EXPECT_DOUBLE_EQ(r.st.SampleRate, c.rate);
        const auto values = gzNumbers(published);
        ASSERT_EQ(values.size(), size_t(c.traces) * size_t(c.samples));
        const auto w = r.working();
        float peak = 0;
        // The published file holds one column per trace.
        for (size_t t = 0; t < size_t(c.traces); ++t) {
            // The third component's factor is read from its own descriptor.
            double factor = c.factors[t];
            if (factor == 0) {
                const std::string key = "Trace " + std::to_string(t + 1) + ": DESCALING_FACTOR ";
                for (const auto& line : r.st.SourceInfoLines)
                    if (line.rfind(key, 0) == 0) factor = std::stod(line.substr(key.size())) * 1e3;
                ASSERT_NE(factor, 0);
            }
            for (size_t i = 0; i < size_t(c.samples); ++i) {
                const float raw = w[t * size_t(c.samples) + i];
                ASSERT_EQ(raw, std::round(raw)) << "whole counts";
                const double want = values[i * size_t(c.traces) + t];
                ASSERT_NEAR(raw * factor, want, 1e-7 + 1e-7 * std::abs(want)) << t << "/" << i;
                peak = std::max(peak, std::abs(raw));
            }
        }
        EXPECT_EQ(r.st.FullScalePos, c.fullScale > 0 ? c.fullScale : peak);
    }
}

TEST(Seg2StdRealFiles, DescriptorsOfDifferentSizesAndFloatSamples) {
    KV_REQUIRE_REAL(path, "seg2/10.dat");
    test::StdReader r;
    r.run(ReadSeg2Std, path);
    ASSERT_TRUE(r.loaded()) << r.onlyMessage();
    EXPECT_EQ(r.st.TraceCount, 24);
    EXPECT_EQ(r.st.Sp_Samples, 1500);
    EXPECT_DOUBLE_EQ(r.st.SampleRate, 1000.0);
    const auto& lines = r.st.SourceInfoLines;
    EXPECT_TRUE(hasLine(lines, "COMPANY Geometrics"));
    EXPECT_TRUE(hasLine(lines, "Trace 1: DELAY -0.500"));
    EXPECT_TRUE(hasLine(lines, "Trace 1: DESCALING_FACTOR 2.697400E-003"));
    EXPECT_TRUE(hasLine(lines, "Trace 24: CHANNEL_NUMBER 24"));
    EXPECT_TRUE(hasLine(lines, "Traces: 24, 4-byte IEEE float, little-endian"));
    // Trace 10, the first with a 476-byte descriptor, as its pointer and descriptor place it.
    std::ifstream f(path, std::ios::binary);
    const std::vector<uint8_t> b{std::istreambuf_iterator<char>(f), {}};
    auto u32 = [&](size_t at) {
        return uint32_t(b[at] | b[at + 1] << 8 | b[at + 2] << 16 | uint32_t(b[at + 3]) << 24);
    };
    const size_t desc = u32(32 + 4 * 9);
    ASSERT_EQ(b[desc + 2] | b[desc + 3] << 8, 476);
    const auto w = r.trace(9);
    float peak = 0;
    for (size_t i = 0; i < 1500; ++i) {
        float v;
        const uint32_t bits = u32(desc + 476 + 4 * i);
        std::memcpy(&v, &bits, 4);
        ASSERT_EQ(w[i], v) << i;
    }
    for (float v : r.working())
        peak = std::max(peak, std::abs(v));
    EXPECT_EQ(r.st.FullScalePos, peak);
}
