// The "SEG-Y, all revisions" reader on generated files: every sample format in both byte
// orders, IBM floats at their edges, the textual headers, where the sample count and interval
// come from, and the files it must refuse.
#include "import/standard_samples.h"
#include "standard_files.h"

#include <gtest/gtest.h>

#include <cfloat>

using namespace kv;
using test::SegyLayout;

namespace {

/// Three traces of five samples that each format holds exactly, its extremes among them.
std::vector<std::vector<double>> samplesFor(int format) {
    switch (format) {
    case 8:
        return {{-128, 127, 0, -1, 5}, {1, 2, 3, 4, 5}, {-5, -4, -3, -2, -1}};
    case 16:
        return {{0, 255, 1, 128, 7}, {1, 2, 3, 4, 5}, {250, 9, 0, 0, 1}};
    case 3:
        return {{-32768, 32767, 0, -1, 5}, {1, 2, 3, 4, 5}, {-5, -4, -3, -2, -1}};
    case 11:
        return {{0, 65535, 1, 32768, 7}, {1, 2, 3, 4, 5}, {60000, 9, 0, 0, 1}};
    case 7:
        return {{-8388608, 8388607, 0, -1, 5}, {1, 2, 3, 4, 5}, {-5, -4, -3, -2, -1}};
    case 15:
        return {{0, 16777215, 1, 8388608, 7}, {1, 2, 3, 4, 5}, {9, 9, 0, 0, 1}};
    case 2:
    case 9:
        return {{-2147483648.0, 2147483520.0, 0, -1, 5}, {1, 2, 3, 4, 5}, {-5, -4, -3, -2, -1}};
    case 10:
    case 12:
        return {{0, 4294967040.0, 1, 2147483648.0, 7}, {1, 2, 3, 4, 5}, {9, 9, 0, 0, 1}};
    default: // the floats
        return {{1.5, -118.625, 0, 0.0009765625, 4096}, {0.25, 2, 3, 4, 5}, {-5000.5, 0, 3, 2, 1}};
    }
}

double fullScaleOf(int format) {
    switch (format) {
    case 8:
        return 127;
    case 16:
        return 255;
    case 3:
        return 32767;
    case 11:
        return 65535;
    case 7:
        return 8388607;
    case 15:
        return 16777215;
    case 2:
        return 2147483647.0;
    case 10:
        return 4294967295.0;
    case 9:
        return 9223372036854775807.0;
    case 12:
        return 18446744073709551615.0;
    default:
        return 5000.5; // the largest magnitude among the float samples above
    }
}

} // namespace

TEST(SegyStd, EverySampleFormatInBothByteOrders) {
    for (int format : {1, 2, 3, 5, 6, 7, 8, 9, 10, 11, 12, 15, 16}) {
        for (bool big : {true, false}) {
            SCOPED_TRACE("format " + std::to_string(format) + (big ? " big" : " little"));
            SegyLayout s;
            s.big = big;
            s.format = format;
            s.interval = 2000;
            s.traces = samplesFor(format);
            test::StdReader r;
            r.segy(test::segyFile(s));
            ASSERT_TRUE(r.loaded()) << r.onlyMessage();
            EXPECT_TRUE(r.host.messages.empty());
            EXPECT_EQ(r.st.TraceCount, 3);
            EXPECT_EQ(r.st.Sp_Samples, 5);
            EXPECT_EQ(r.st.TraceLength, 5);
            EXPECT_EQ(r.st.SampleRate, 500.0);
            EXPECT_EQ(r.st.WorkingFileLength, 3 * 5 * 4);
            for (size_t t = 0; t < 3; ++t) {
                const auto w = r.trace(t);
                ASSERT_EQ(w.size(), 5u);
                for (size_t i = 0; i < 5; ++i)
                    EXPECT_EQ(w[i], float(s.traces[t][i])) << "trace " << t << " sample " << i;
            }
            EXPECT_EQ(r.st.FullScalePos, float(fullScaleOf(format)));
            EXPECT_EQ(r.st.FullScaleNeg, r.st.FullScalePos);
        }
    }
}

TEST(SegyStd, IbmFloatsAtTheirEdges) {
    struct Case {
        uint32_t bits;
        float want;
    };
    const Case cases[] = {
        {0x00000000, 0.0f},
        {0x80000000, 0.0f}, // negative zero
        {0x41100000, 1.0f},
        {0xC276A000, -118.625f}, // the textbook example
        {0x40800000, 0.5f},
        {0x3F200000, 1.0f / 128},
        {0x41000001, 0x1p-20f},        // not normalised: the value still holds exactly
        {0x00100000, 0.0f},            // the smallest normal IBM float is far below a float's
        {0x21200000, 0.0f},            // 2^-127: below the smallest normal float
        {0x21400000, FLT_MIN},         // 2^-126: the smallest normal float
        {0x22100000, 0x1p-124f},       // near the bottom of a float's range, still exact
        {0x60FFFFFF, 0x1.fffffep127f}, // the largest float exactly
        {0x7FFFFFFF, FLT_MAX},         // the largest IBM float: beyond a float, held at its top
        {0xFFFFFFFF, -FLT_MAX},
        {0x61100000, FLT_MAX}, // 2^128
    };
    for (const Case& c : cases)
        EXPECT_EQ(ibmToFloat(c.bits), c.want) << std::hex << c.bits;

    // The same patterns from a file, high byte first as SEG-Y writes them.
    SegyLayout s;
    s.format = 1;
    s.traces = {{0, 0, 0, 0}};
    auto bytes = test::segyFile(s);
    const uint32_t inFile[] = {0x7FFFFFFF, 0xC276A000, 0x00100000, 0x41100000};
    for (size_t i = 0; i < 4; ++i)
        for (size_t k = 0; k < 4; ++k)
            bytes[3840 + 4 * i + k] = uint8_t(inFile[i] >> (24 - 8 * k));
    test::StdReader r;
    r.segy(bytes);
    ASSERT_TRUE(r.loaded());
    EXPECT_EQ(r.trace(0), (std::vector<float>{FLT_MAX, -118.625f, 0.0f, 1.0f}));
    EXPECT_EQ(r.st.FullScalePos, FLT_MAX);
}

TEST(SegyStd, TextualHeadersReachFileInformation) {
    for (bool ebcdic : {true, false}) {
        SCOPED_TRACE(ebcdic ? "EBCDIC" : "ASCII");
        SegyLayout s;
        s.ebcdic = ebcdic;
        s.cards = {"C 1 CLIENT ACME (NORTH) 50% DONE", "", "C 3 END"};
        s.extended = {"((SEG: Extra ver 1.0))"};
        s.traces = {{1, 2}, {3, 4}};
        test::StdReader r;
        r.segy(test::segyFile(s));
        ASSERT_TRUE(r.loaded());
        const auto& lines = r.st.SourceInfoLines;
        ASSERT_GE(lines.size(), 3u);
        EXPECT_EQ(lines[0], "C 1 CLIENT ACME (NORTH) 50% DONE");
        EXPECT_EQ(lines[1], "C 3 END") << "a blank card is left out";
        EXPECT_EQ(lines[2], "((SEG: Extra ver 1.0))");
        EXPECT_EQ(lines[3], "Revision 1, format 5 (4-byte IEEE float), big-endian");
        EXPECT_EQ(lines[4], "Extended textual headers: 1");
        EXPECT_EQ(lines[5], "Samples per trace: 2 (binary header)");
        EXPECT_EQ(lines[6], "Sample interval: 1000 us (binary header)");
        EXPECT_EQ(lines[7], "Traces: 2");
        // The traces start after the extended header.
        EXPECT_EQ(r.trace(1), (std::vector<float>{3, 4}));
    }
}

TEST(SegyStd, AVariableCountOfExtendedHeadersEndsAtTheStanza) {
    SegyLayout s;
    s.revision = 2;
    s.big = false;
    s.variableExtended = true;
    s.extended = {"first", "second ((SEG: EndText))"};
    s.traces = {{7, 8, 9}};
    test::StdReader r;
    r.segy(test::segyFile(s));
    ASSERT_TRUE(r.loaded()) << r.onlyMessage();
    EXPECT_EQ(r.trace(0), (std::vector<float>{7, 8, 9}));
    EXPECT_NE(std::find(r.st.SourceInfoLines.begin(), r.st.SourceInfoLines.end(),
                        "Extended textual headers: 2"),
              r.st.SourceInfoLines.end());
}

TEST(SegyStd, WhereTheSampleCountAndIntervalComeFrom) {
    {
        // 60000 samples: a count only an unsigned reading gives; the trace headers say 0.
        SegyLayout s;
        s.format = 8;
        s.traces = {std::vector<double>(60000, 3.0)};
        s.traces[0][59999] = -7;
        s.traceSamples = 0;
        test::StdReader r;
        r.segy(test::segyFile(s));
        ASSERT_TRUE(r.loaded());
        EXPECT_EQ(r.st.Sp_Samples, 60000);
        EXPECT_EQ(r.trace(0)[59999], -7.0f);
    }
    {
        // A stale trace-header count does not win over the binary header's.
        SegyLayout s;
        s.traces = {{1, 2, 3}, {4, 5, 6}};
        s.traceSamples = 462;
        test::StdReader r;
        r.segy(test::segyFile(s));
        ASSERT_TRUE(r.loaded());
        EXPECT_EQ(r.st.Sp_Samples, 3);
        EXPECT_EQ(r.st.TraceCount, 2);
    }
    {
        // A binary count of 0, or one that does not divide the file into traces: the first
        // trace header's; an interval of 0 in the binary header: the first trace header's.
        for (int binary : {0, 4}) {
            SegyLayout s;
            s.traces = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
            s.binarySamples = binary;
            auto bytes = test::segyFile(s);
            bytes[3216] = bytes[3217] = 0;
            test::StdReader r;
            r.segy(bytes);
            ASSERT_TRUE(r.loaded()) << binary;
            EXPECT_EQ(r.st.Sp_Samples, 3);
            EXPECT_EQ(r.st.TraceCount, 3);
            EXPECT_EQ(r.st.SampleRate, 1000.0);
            EXPECT_EQ(r.st.SourceInfoLines.end()[-3], "Samples per trace: 3 (first trace header)");
            EXPECT_EQ(r.st.SourceInfoLines.end()[-2],
                      "Sample interval: 1000 us (first trace header)");
        }
    }
    {
        // Revision 2: the extended count and the extended interval (a double) override.
        SegyLayout s;
        s.revision = 2;
        s.traces = {{1, 2, 3, 4, 5}};
        s.binarySamples = 9;
        auto bytes = test::segyFile(s);
        test::Bytes img{bytes};
        img.put(3268, 5, 4, true);
        img.put(3272, std::bit_cast<uint64_t>(62.5), 8, true);
        test::StdReader r;
        r.segy(img.b);
        ASSERT_TRUE(r.loaded());
        EXPECT_EQ(r.st.Sp_Samples, 5);
        EXPECT_EQ(r.st.SampleRate, 16000.0);
    }
}

TEST(SegyStd, TheByteOrderComesFromTheFile) {
    // Revision 2's constant decides even where the format code would not (an unknown code
    // then is not supported).
    SegyLayout s;
    s.big = false;
    s.revision = 2;
    s.traces = {{1, 2}};
    test::StdReader r;
    r.segy(test::segyFile(s));
    ASSERT_TRUE(r.loaded());
    EXPECT_NE(r.st.SourceInfoLines.end()[-4].find("little-endian"), std::string::npos);

    auto bytes = test::segyFile(s);
    bytes[3224] = 4; // format 4 (fixed point with gain) is obsolete
    test::StdReader refused;
    refused.segy(bytes);
    EXPECT_FALSE(refused.loaded());
    EXPECT_EQ(refused.onlyMessage(), "Data format not supported by Kelvorandine!");
}

TEST(SegyStd, FilesThatDoNotHoldWhatTheirHeadersPromise) {
    SegyLayout good;
    good.traces = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    const auto bytes = test::segyFile(good);
    // Two big-endian bytes at each offset; 3600 + 114 and 3856 + 114 are the trace headers'
    // sample counts, + 116 their intervals.
    using Patch = std::vector<std::pair<size_t, int>>;
    auto with = [&](const Patch& patch) {
        auto b = bytes;
        for (const auto& [off, v] : patch) {
            b[off] = uint8_t(v >> 8);
            b[off + 1] = uint8_t(v);
        }
        return b;
    };
    const std::string corrupted = "File corrupted!";
    const std::string notSupported = "Data format not supported by Kelvorandine!";
    struct Case {
        const char* what;
        std::vector<uint8_t> file;
        std::string message;
    };
    const Case cases[] = {
        {"cut in the middle of a trace", {bytes.begin(), bytes.end() - 3}, corrupted},
        {"shorter than its headers", {bytes.begin(), bytes.begin() + 3599}, corrupted},
        {"empty", {}, corrupted},
        {"no traces", {bytes.begin(), bytes.begin() + 3600}, corrupted},
        {"sample count 0 everywhere", with({{3220, 0}, {3714, 0}, {3970, 0}}), corrupted},
        {"absurd sample counts", with({{3220, 65535}, {3714, 60001}}), corrupted},
        {"unknown format code", with({{3224, 13}}), notSupported},
        {"format code 0", with({{3224, 0}}), notSupported},
        {"interval 0 everywhere", with({{3216, 0}, {3716, 0}, {3972, 0}}), corrupted},
        {"extended headers past the end", with({{3504, 0x7FFF}}), corrupted},
        {"negative extended header count", with({{3504, 0xFFFE}}), corrupted},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        test::StdReader r;
        r.segy(c.file);
        EXPECT_FALSE(r.loaded());
        EXPECT_TRUE(r.st.TempPath.empty());
        EXPECT_EQ(r.onlyMessage(), c.message);
        EXPECT_TRUE(r.cmd.button(2).visible);
        EXPECT_TRUE(r.st.SourceInfoLines.empty());
    }
}

TEST(SegyStd, FloatFullScaleIsTheLargestMagnitudeAndNeverZero) {
    SegyLayout s;
    s.traces = {{0.5, -3.25, 1}, {2, 0, -1}};
    test::StdReader r;
    r.segy(test::segyFile(s));
    EXPECT_EQ(r.st.FullScalePos, 3.25f);

    s.traces = {{0, 0, 0}};
    test::StdReader zero;
    zero.segy(test::segyFile(s));
    ASSERT_TRUE(zero.loaded());
    EXPECT_EQ(zero.st.FullScalePos, 1.0f);
}

TEST(SegyStd, CancelStopsAtTheTraceItWasPressedAt) {
    SegyLayout s;
    s.traces.assign(20, {1, 2, 3});
    test::StdReader r;
    r.host.cancelProgressAt(5);
    r.segy(test::segyFile(s));
    EXPECT_TRUE(r.st.ImportCancelled);
    EXPECT_EQ(r.host.lastProgressMax, 20);
    EXPECT_LT(r.working().size(), 20u * 3);
}
