// Table recordings: CSV time/value pairs and the .dat/.hdr pair, each read into one trace.
#include "commands/open.h"
#include "import/text_lines.h"
#include "platform/numeric.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <bit>
#include <fstream>
#include <random>
#include <sstream>
#include <string_view>

using namespace kv;

namespace {

struct TableCase : test::Bench {
    TableCase() { start(); }
    void csv(const std::string& text, const std::string& name = "x.csv") {
        const std::string p = home.file(name);
        test::writeText(p, text);
        import(p);
    }
    void dat(const std::string& data, const std::string* header, const std::string& name = "x.dat",
             const std::string& hdrName = "x.hdr") {
        test::writeText(home.file(name), data);
        if (header) test::writeText(home.file(hdrName), *header);
        import(home.file(name));
    }
    void limit(int n) {
        host.setUserSettingValue("Settings", "MaximumLinesToRead", std::to_string(n));
    }
    bool loaded() const { return !st.TempPath.empty(); }
};

/// A title row, then `n` rows "time,value" with time step 0.5 ms and the given values.
std::string pairs(const std::vector<double>& v) {
    std::ostringstream s;
    s << "Time,Volt\n";
    for (size_t i = 0; i < v.size(); ++i)
        s << i * 0.0005 << "," << v[i] << "\n";
    return s.str();
}

std::vector<double> ramp(int n, double scale = 1, double offset = 0) {
    std::vector<double> v;
    for (int i = 0; i < n; ++i)
        v.push_back(offset + scale * i);
    return v;
}

std::string lines(const std::vector<double>& v) {
    std::ostringstream s;
    for (double x : v)
        s << x << "\r\n";
    return s.str();
}

} // namespace

TEST(CsvRows, QuotesCommasAndTrailingCommas) {
    using R = std::vector<std::string>;
    EXPECT_EQ(csvRowFields("1,2"), (R{"1", "2"}));
    EXPECT_EQ(csvRowFields("1,2,"), (R{"1", "2"})) << "a trailing comma adds no column";
    EXPECT_EQ(csvRowFields("1,,2"), (R{"1", "", "2"}));
    EXPECT_EQ(csvRowFields(",,"), (R{"", ""}));
    EXPECT_EQ(csvRowFields("\"a,b\",c"), (R{"a,b", "c"}));
    EXPECT_EQ(csvRowFields("\"a\"\"b\""), (R{"a\"b"}));
    EXPECT_EQ(csvRowFields("\"ab\"cd,e"), (R{"abcd", "e"})) << "a quote then text closes quotes";
    EXPECT_EQ(csvRowFields(""), R{});
    // A row vector used again for the next line keeps nothing of the longer line before it.
    R row;
    for (const char* line : {"\"a long first field, with a comma\",2,3,4", "x,\"y\"", "5,", "",
                             "\"q\",", "7,8,9,10,11", "1"}) {
        csvRowFields(line, row);
        EXPECT_EQ(row, csvRowFields(line)) << line;
    }
}

TEST(CsvCells, ANumberCellReadsAsValReadsIt) {
    // Random cells of every shape a table number may take, and some it may not: the cell's value
    // must be Val's to the last bit, and a cell that is no number must fail.
    std::mt19937 gen(5);
    auto pick = [&](int n) { return int(gen() % unsigned(n)); };
    auto digits = [&](int most) {
        std::string d;
        for (int k = pick(most + 1); k > 0; --k)
            d += char('0' + pick(10));
        return d;
    };
    for (int i = 0; i < 20000; ++i) {
        std::string t = std::string(pick(3) ? "" : pick(2) ? "-" : "+") + digits(pick(4) ? 8 : 30);
        if (pick(2)) t += "." + digits(pick(4) ? 6 : 40);
        if (!pick(3))
            t += std::string(pick(2) ? "e" : "E") +
                 (pick(2)   ? ""
                  : pick(2) ? "-"
                            : "+") +
                 digits(pick(6) ? 3 : 7);
        if (!pick(20)) t = " " + t + "\t";
        double want = 0.0;
        bool number = true;
        try {
            want = cellNumber(t);
        } catch (const std::exception&) {
            number = false;
        }
        if (!number) continue;
        EXPECT_EQ(std::bit_cast<uint64_t>(want), std::bit_cast<uint64_t>(Val(t))) << t;
    }
    EXPECT_EQ(std::bit_cast<uint64_t>(cellNumber("-0.000")), 0u) << "minus zero reads as zero";
    EXPECT_THROW(cellNumber("1.5x"), std::exception);
    EXPECT_THROW(cellNumber("1e"), std::exception);
}

TEST(TextLines, LinesEndAtLineFeedsCarriageReturnsOrBothAlsoAcrossTheReadChunks) {
    // Lines split by a plain rule: "\r\n", "\r" or "\n" ends a line, and the text's end ends
    // the last one unless a line end stood just before it.
    auto expected = [](const std::string& text) {
        std::vector<std::string> lines;
        std::string line;
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '\r' && text[i] != '\n') {
                line.push_back(text[i]);
                continue;
            }
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            lines.push_back(std::move(line));
            line.clear();
        }
        if (!text.empty() && text.back() != '\r' && text.back() != '\n') lines.push_back(line);
        return lines;
    };
    // Read as copies, then, after going back to the start, as views: a reader that stopped
    // anywhere (here after a third of the lines) starts over at the first line. A source held
    // in memory is read in place, any other in chunks: both give the same lines.
    struct Chunked : ByteSource {
        explicit Chunked(const ByteSource& from) : from(from) {}
        uint64_t size() const override { return from.size(); }
        size_t read(uint64_t offset, void* dst, size_t n) const override {
            return from.read(offset, dst, n);
        }
        const ByteSource& from;
    };
    auto readLines = [](const ByteSource& src) {
        LineReader reader(src);
        std::vector<std::string> lines;
        for (std::string line; reader.next(line);)
            lines.push_back(line);
        reader.restart();
        std::string_view view;
        for (size_t n = 0; n < lines.size() / 3; ++n)
            reader.next(view);
        reader.restart();
        std::vector<std::string> viewed;
        while (reader.next(view))
            viewed.emplace_back(view);
        EXPECT_EQ(viewed, lines) << "read again as views";
        return lines;
    };
    auto read = [&](const std::string& text) {
        const MemoryByteSource memory(std::vector<uint8_t>(text.begin(), text.end()));
        const Chunked chunked(memory);
        const auto lines = readLines(memory);
        EXPECT_EQ(readLines(chunked), lines) << "read in chunks";
        return lines;
    };
    for (const std::string text : {"", "\n", "a", "a\n", "a\r", "a\r\r\nb", "\r\n\r\n", "a\n\rb"})
        EXPECT_EQ(read(text), expected(text)) << testing::PrintToString(text);
    // Random texts long enough to cross the 64 KiB read chunks, line ends of every kind and
    // lines of every length among them, a carriage return and its line feed split by a chunk
    // end included.
    std::mt19937 rng(7);
    for (int round = 0; round < 6; ++round) {
        std::string text;
        const size_t size = 65536 * 2 + rng() % 4000;
        while (text.size() < size) {
            const unsigned r = rng() % 100;
            text += r < 8    ? "\r"
                    : r < 16 ? "\n"
                    : r < 24 ? "\r\n"
                    : r < 26 ? std::string(rng() % 90000, 'x')
                             : "ab,1";
        }
        if (round == 0) text.replace(65535, 2, "\r\n");
        EXPECT_EQ(read(text), expected(text)) << "round " << round;
    }
}

TEST(CsvRead, TheTitleRowIsSkippedAndTheRateComesFromRowsSixAndFive) {
    TableCase b;
    std::string text = "Time,Volt\n0,1\n0.1,2\n0.2,3\n0.5,4\n0.75,5\n0.8,-6\n";
    b.csv(text);
    ASSERT_TRUE(b.loaded());
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 4.0) << "1 / (0.75 - 0.5)";
    EXPECT_EQ(b.st.TraceCount, 1);
    // 1000 lines by default: 998 points, padded to 1024, the empty slots read as 0.
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    auto w = b.working();
    ASSERT_EQ(w.size(), 1024u);
    EXPECT_EQ(w[0], 1.0f);
    EXPECT_EQ(w[5], -6.0f);
    EXPECT_EQ(w[6], 0.0f);
    EXPECT_EQ(b.st.WorkingFileLength, 4096);
}

TEST(CsvRead, TheLineLimitComesFromTheUserSettingAndLaterRowsAreNeverRead) {
    TableCase b;
    b.limit(12);
    // 11 data rows fit with the title; what follows the 12th line, even text, is not read.
    std::string text = pairs(ramp(11, 2)) + "not,a number\n";
    b.csv(text);
    ASSERT_TRUE(b.loaded());
    // 12 - 2 = 10 points: padded to 16, copied 0..9.
    EXPECT_EQ(b.st.Sp_Samples, 16);
    auto w = b.working();
    ASSERT_EQ(w.size(), 16u);
    EXPECT_EQ(w[9], 18.0f);
    EXPECT_EQ(w[10], 0.0f) << "the last two slots are left out";

    TableCase t;
    t.limit(12);
    t.st.PadWithZero = false;
    t.csv(text);
    EXPECT_EQ(t.st.Sp_Samples, 8);
    EXPECT_EQ(t.working().size(), 8u);
}

TEST(CsvRead, SeveralPairsOnARowBecomeConsecutivePoints) {
    TableCase b;
    b.limit(20);
    b.csv("Time,Volt\n0,1,1,2\n2,3,3,4\n4,5,5,6\n");
    ASSERT_TRUE(b.loaded());
    // Times 0 1 2 3 4 5 after the title: slots 5 and 4 are 4 and 3.
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 1.0);
    EXPECT_EQ(b.st.Sp_Samples, 32);
    auto w = b.working();
    ASSERT_EQ(w.size(), 32u);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(w[size_t(i)], float(i + 1));
    EXPECT_EQ(w[6], 0.0f);
}

TEST(CsvRead, ATextCellOrEqualTimesEndTheOpenWithoutAMessage) {
    for (const std::string& text :
         {std::string("Time,Volt\nSecond,Volt\n0,1\n1,2\n2,3\n3,4\n4,5\n"),
          std::string("Time,Volt\n0,1\n1,2\n2,3\n3,4\n3,5\n")}) {
        TableCase b;
        b.csv(text);
        EXPECT_FALSE(b.loaded());
        EXPECT_TRUE(b.host.messages.empty());
    }
    // More cells than the lists hold.
    TableCase b;
    b.limit(6);
    b.csv("t,v,t,v,t,v,t,v\n0,1,1,2,2,3,3,4\n");
    EXPECT_FALSE(b.loaded());
}

TEST(CsvRead, FullScaleIsNotRoundedAndBothExtremesStartAtMinusTen) {
    struct Case {
        std::vector<double> v;
        float pos, neg;
    };
    // The minimum only moves below -10, so small signals get full scale 10 from it.
    for (const Case& c :
         {Case{{0.5, -0.25, 0.125, 0, 0}, 10.0f, 10.0f}, Case{{12.5, -3, 0, 0, 0}, 12.5f, -1.0f},
          Case{{2, -20.5, 0, 0, 0}, 20.5f, 20.5f}}) {
        SCOPED_TRACE(c.pos);
        TableCase b;
        b.st.FullScaleNeg = -1.0f; // what an earlier data set left
        b.csv(pairs(c.v));
        ASSERT_TRUE(b.loaded());
        EXPECT_EQ(b.st.FullScalePos, c.pos);
        EXPECT_EQ(b.st.FullScaleNeg, c.neg);
        EXPECT_EQ(b.st.ScaleBits, c.pos);
    }
}

TEST(CsvRead, ARereadThinsThePointsByTheDownsampleSettings) {
    for (int mode : {0, 1}) {
        SCOPED_TRACE(mode);
        TableCase b;
        b.limit(22);
        b.csv(pairs(ramp(21, 1, 1)));
        ASSERT_TRUE(b.loaded());
        b.st.NewDS = 2;
        b.st.DownsampleMode = int16_t(mode);
        rereadDataSet(b.wb);
        // 20 points / 2 = 10: padded to 16, copied 0..9.
        EXPECT_EQ(b.st.Sp_Samples, 16);
        auto w = b.working();
        EXPECT_EQ(w[0], mode == 0 ? 1.5f : 1.0f);
        EXPECT_EQ(w[9], mode == 0 ? 19.5f : 19.0f);
        EXPECT_EQ(w[10], 0.0f);
    }
}

TEST(CsvRealFiles, OscilloscopeExportsWithAUnitsRowDoNotOpen) {
    for (const char* file :
         {"csv/DS1102E-B.csv", "csv/DS1102D-A.csv", "csv/DS2072A-7.csv", "csv/DS1052E.csv"}) {
        SCOPED_TRACE(file);
        KV_REQUIRE_REAL(path, file);
        TableCase b;
        b.import(path);
        EXPECT_FALSE(b.loaded());
        EXPECT_TRUE(b.host.messages.empty());
    }
    // Without its units row ("Second,Volt,") the first export opens: 600 points, 2e-8 s apart.
    KV_REQUIRE_REAL(path, "csv/DS1102E-B.csv");
    std::ifstream f(path);
    std::string rest((std::istreambuf_iterator<char>(f)), {});
    const size_t a = rest.find('\n'), c = rest.find('\n', a + 1);
    rest = rest.substr(0, a + 1) + rest.substr(c + 1);
    TableCase b;
    b.csv(rest);
    ASSERT_TRUE(b.loaded());
    EXPECT_NEAR(b.st.SampleRate, 5e7, 1e3) << "times printed to 8 digits";
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    auto w = b.working();
    std::istringstream in(rest);
    std::string line;
    std::getline(in, line);
    std::getline(in, line);
    EXPECT_EQ(w[0], float(std::stod(line.substr(line.find(',') + 1))));
    EXPECT_EQ(w[600], 0.0f);
    EXPECT_NE(w[599], 0.0f);
}

TEST(DatRead, TheHeaderGivesTheCountAndTheIntervalAndTheTraceIsFitted) {
    const std::string hdr = "1000\r\n0.001\r\n";
    TableCase b;
    b.dat(lines(ramp(1000, 1, 1)), &hdr);
    ASSERT_TRUE(b.loaded());
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 1000.0);
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    EXPECT_EQ(b.st.TraceCount, 1);
    EXPECT_EQ(b.st.SampleBits, 16);
    auto w = b.working();
    ASSERT_EQ(w.size(), 1024u);
    EXPECT_EQ(w[999], 1000.0f);
    EXPECT_EQ(w[1000], 0.0f);
    EXPECT_EQ(b.st.FullScalePos, 1000.0f);
    EXPECT_EQ(b.st.Reference, 1000.0f);

    TableCase t;
    t.st.PadWithZero = false;
    t.dat(lines(ramp(1000, 1, 1)), &hdr);
    EXPECT_EQ(t.st.Sp_Samples, 512);
    auto v = t.working();
    ASSERT_EQ(v.size(), 512u);
    EXPECT_EQ(v[511], 512.0f);
    EXPECT_EQ(t.st.FullScalePos, 512.0f) << "only copied lines count";
}

TEST(DatRead, TheHeaderIsFoundWhateverTheCaseOfItsName) {
    const std::string hdr = "8\n0.5\n";
    TableCase b;
    b.dat(lines(ramp(8)), &hdr, "Rec.DAT", "REC.HDR");
    ASSERT_TRUE(b.loaded());
    EXPECT_DOUBLE_EQ(b.st.SampleRate, 2.0);
    EXPECT_EQ(b.st.Sp_Samples, 8);
}

TEST(DatRead, AMissingHeaderOrAZeroIntervalSaysHeaderNotFound) {
    const std::string zero = "8\n0\n", oneLine = "8\n";
    for (const std::string* hdr : {static_cast<const std::string*>(nullptr), &zero, &oneLine}) {
        TableCase b;
        b.dat(lines(ramp(8)), hdr);
        EXPECT_FALSE(b.loaded());
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].text, "Header Not Found!");
        EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    }
}

TEST(DatRead, ACountBeyondTheTraceEndsTheOpenWithoutAMessage) {
    // 1e35 cannot be a loop bound; 100000 points do not fit any trace length.
    for (const std::string hdr : {"1e35\n1\n", "100000\n1\n"}) {
        TableCase b;
        b.dat(lines(ramp(8)), &hdr);
        EXPECT_FALSE(b.loaded());
        EXPECT_TRUE(b.host.messages.empty());
    }
}

TEST(DatRead, FullScaleWithTheMaximumFromMinusTenAndTheMinimumFromZero) {
    struct Case {
        std::vector<double> v;
        float pos, neg;
    };
    for (const Case& c :
         {Case{{-1, -5, -2, -3}, 5.0f, 5.0f}, Case{{-20, -30, -25, -21}, 30.0f, 30.0f},
          Case{{3, -2.5, 1, 0}, 3.0f, -1.0f}}) {
        SCOPED_TRACE(c.pos);
        const std::string hdr = "4\n1\n";
        TableCase b;
        b.st.FullScaleNeg = -1.0f;
        b.dat(lines(c.v), &hdr);
        ASSERT_TRUE(b.loaded());
        EXPECT_EQ(b.st.FullScalePos, c.pos);
        EXPECT_EQ(b.st.FullScaleNeg, c.neg);
        EXPECT_EQ(b.st.Reference, c.pos);
    }
}

TEST(DatRead, ARereadThinsTheLines) {
    for (int mode : {0, 1}) {
        SCOPED_TRACE(mode);
        const std::string hdr = "12\n1\n";
        TableCase b;
        b.dat(lines({1, 2, 4, 8, 16, 32, 3, 5, 7, 9, 11, 13}), &hdr);
        ASSERT_TRUE(b.loaded());
        b.st.NewDS = 3;
        b.st.DownsampleMode = int16_t(mode);
        rereadDataSet(b.wb);
        EXPECT_EQ(b.st.Sp_Samples, 4);
        auto w = b.working();
        ASSERT_EQ(w.size(), 4u);
        if (mode == 0) {
            EXPECT_EQ(w[0], float(7.0 / 3.0)) << "the mean goes through its text";
            EXPECT_EQ(w[3], 11.0f);
        } else {
            EXPECT_EQ(w[1], 8.0f);
            EXPECT_EQ(w[3], 9.0f);
        }
    }
}

TEST(DatRealFiles, ASeg2RecordingNamedDatHasNoHeader) {
    KV_REQUIRE_REAL(path, "seg2/10.dat");
    TableCase b;
    b.import(path);
    EXPECT_FALSE(b.loaded());
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "Header Not Found!");
}
