// "Oscilloscope CSV": where the numbers begin, where the sample interval comes from, separators,
// decimal commas and quotes, the channel the options choose, and the real scope exports.
#include "import/variant_files.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;

TEST(CsvStd, RealScopeExportsOpenWithTheirSampleRateAndCount) {
    KV_REQUIRE_REAL(dir, "csv");
    struct Real {
        const char* name;
        double rate;     // Hz
        double relative; // allowed relative error: times printed with few digits
        int samples, spSamples;
        float first, firstCh2;
    };
    const Real files[] = {
        {"DS1102E-B.csv", 50e6, 1e-6, 600, 1024, 4.4f, 0},
        // Times printed to 8 decimals: 1023 steps over 0.01024 s.
        {"DS1102D-A.csv", 1e5, 1e-3, 1024, 1024, 8.08f, 8.40f},
        {"DS2072A-7.csv", 200e3, 1e-12, 1400, 2048, 0.016f, 0},
        {"DS1052E.csv", 500e6, 1e-12, 8192, 8192, 1.72f, 9.92f},
    };
    for (const Real& f : files) {
        SCOPED_TRACE(f.name);
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadCsvStd, dir + "/" + f.name)) << b.message();
        EXPECT_NEAR(b.st.SampleRate, f.rate, f.rate * f.relative);
        EXPECT_EQ(b.st.TraceLength, f.samples);
        EXPECT_EQ(b.st.TraceCount, 1);
        EXPECT_EQ(b.st.Sp_Samples, f.spSamples);
        const auto w = b.working();
        ASSERT_EQ(w.size(), size_t(f.spSamples));
        EXPECT_EQ(w[0], f.first);
        if (f.samples < f.spSamples) {
            EXPECT_EQ(w[size_t(f.samples)], 0.0f) << "padded";
        }
        EXPECT_GT(b.st.FullScalePos, 0.0f);
        if (f.firstCh2 != 0) {
            test::StdBench two;
            two.st.ImportChannel = 2;
            ASSERT_TRUE(two.read(ReadCsvStd, dir + "/" + f.name)) << two.message();
            EXPECT_EQ(two.working()[0], f.firstCh2);
            EXPECT_EQ(two.st.Channels, 2);
        }
    }
    test::StdBench b;
    ASSERT_TRUE(b.read(ReadCsvStd, dir + "/DS1052E.csv"));
    EXPECT_TRUE(b.infoHas("Row 4 : \"Sampling Frequency (Hz)=\",500000000,"));
    EXPECT_TRUE(b.infoHas("First row of numbers : 17"));
    EXPECT_TRUE(b.infoHas("Sample interval (s) : 2E-09, from the preamble"));
    EXPECT_EQ(b.st.FullScalePos, 4.6f) << "the largest absolute sample of channel 1";
}

TEST(CsvStd, SeparatorsDecimalCommasAndQuotesAreRead) {
    struct Case {
        const char* what;
        const char* text;
    };
    const Case cases[] = {
        {"commas, trailing separators", "Time,CH1,\nSecond,Volt,\n0,0.5,\n0.001,-1.25,\n"
                                        "0.002,2,\n0.003,0,\n"},
        {"semicolons and decimal commas", "Zeit;Kanal 1\n(s);(V)\n0;0,5\n0,001;-1,25\n0,002;2\n"
                                          "0,003;0\n"},
        {"tabs, CR LF", "Time\tCH1\r\n0\t0.5\r\n1e-3\t-1.25\r\n2e-3\t2\r\n3e-3\t0\r\n"},
        {"quoted cells", "\"Time (ms)\",\"CH \"\"A\"\"\"\n\"0\",\"0.5\"\n\"1\",\"-1.25\"\n"
                         "\"2\",\"2\"\n\"3\",\"0\"\n"},
        {"blanks around cells, empty cells at the ends", "  Time ,  CH1  ,  \n 0 , 0.5 \n"
                                                         "0.001,  -1.25  ,\n 0.002 ,2, , \n"
                                                         "\"0.003\" , 0 ,, \n"},
        {"decimal commas in quotes", "\xEF\xBB\xBFTime,CH1\n\"0\",\"0,5\"\n\"0,001\",\"-1,25\"\n"
                                     "\"0,002\",\"2\"\n\"0,003\",\"0\"\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadCsvStd, b.putText(c.text, "s.csv"))) << b.message();
        EXPECT_NEAR(b.st.SampleRate, 1000.0, 1e-9);
        EXPECT_EQ(b.working(), (std::vector<float>{0.5f, -1.25f, 2.0f, 0.0f}));
        EXPECT_EQ(b.st.FullScalePos, 2.0f);
        EXPECT_EQ(b.st.FullScaleNeg, 2.0f);
    }
}

TEST(CsvStd, TheIntervalComesFromThePreambleBeforeTheTimeColumn) {
    // An increment below its label, a rate beside its label, and a lone column of values.
    const char* below = "X,CH1,Start,Increment,\nSequence,Volt,-1e-3,2.5e-4,\n0,1\n1,2\n2,3\n";
    const char* beside = "\"Sample Rate\",4000\nTime,CH1\n0,1\n9,2\n99,3\n";
    const char* lone = "Sample interval:;0,00025\nVolt\n1\n2\n3\n";
    for (const char* text : {below, beside, lone}) {
        SCOPED_TRACE(text);
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadCsvStd, b.putText(text, "i.csv"))) << b.message();
        EXPECT_DOUBLE_EQ(b.st.SampleRate, 4000.0);
        EXPECT_EQ(b.working(), (std::vector<float>{1, 2, 3, 0}));
        EXPECT_TRUE(b.infoHas("from the preamble"));
    }
}

TEST(CsvStd, ThreeChannelsGiveTheOneTheOptionsChoose) {
    std::string text = "Time (us),A,B,C\n";
    for (int i = 0; i < 8; ++i)
        text += std::to_string(i * 2) + "," + std::to_string(i) + "," + std::to_string(-i) + "," +
                std::to_string(10 * i) + "\n";
    for (int channel = 1; channel <= 3; ++channel) {
        SCOPED_TRACE(channel);
        test::StdBench b;
        b.st.ImportChannel = int16_t(channel);
        ASSERT_TRUE(b.read(ReadCsvStd, b.putText(text, "three.csv"))) << b.message();
        EXPECT_DOUBLE_EQ(b.st.SampleRate, 500e3) << "2 us a sample";
        const float scale[] = {1, -1, 10};
        const auto w = b.working();
        ASSERT_EQ(w.size(), 8u);
        for (size_t i = 0; i < 8; ++i)
            EXPECT_EQ(w[i], scale[channel - 1] * float(i));
    }
}

TEST(CsvStd, TablesThatCannotBeReadSayWhyAndLeaveNoDataSet) {
    struct Case {
        const char* what;
        std::string text;
        std::string message;
    };
    const Case cases[] = {
        {"ragged rows", "Time,CH1,CH2\n0,1,2\n1,2\n2,3,4\n",
         "Row 3 of the CSV file has 2 values where the rows above have 3."},
        {"text in a number column", "Time,CH1\n0,1\n1,high\n2,3\n",
         "Row 3, column 2 of the CSV file holds \"high\" where a number belongs."},
        {"not a number", "Time,CH1\n0,1\n1,nan\n",
         "Row 3, column 2 of the CSV file holds \"nan\" "
         "where a number belongs."},
        {"numbers after an empty row", "Time,CH1\n0,1\n,\n2,3\n",
         "Row 4 of the CSV file follows an empty row inside the numbers."},
        {"no numbers", "just,some\ntext,here\n", "The CSV file holds no rows of numbers."},
        {"empty", "", "The CSV file holds no rows of numbers."},
        {"a counting column and no increment", "Sequence,CH1\n0,1\n1,2\n",
         "The CSV file gives no sample interval: its first column counts samples and its "
         "preamble has no increment."},
        {"a time column that does not rise", "Time,CH1\n5,1\n5,2\n",
         "The CSV file gives no sample interval: its preamble has no increment and its time "
         "column does not rise."},
        {"one column and no increment", "Volt\n1\n2\n",
         "The CSV file gives no sample interval: it has one column and no increment in its "
         "preamble."},
        {"a channel the file lacks", "Time,CH1\n0,1\n1,2\n",
         "Channel 2 is chosen in the options, but the file has only 1 channel."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        test::StdBench b;
        if (c.message.rfind("Channel 2", 0) == 0) b.st.ImportChannel = 2;
        EXPECT_FALSE(b.read(ReadCsvStd, b.putText(c.text, "bad.csv")));
        EXPECT_EQ(b.message(), c.message);
        EXPECT_TRUE(b.st.TempPath.empty());
    }
}

TEST(CsvStd, AReadAfterAFailedOneOrInsideAnotherGivesWhatItGivesAlone) {
    // The reader's buffers are handed from one read on the thread to the next: neither a read
    // that stopped on a bad row nor one made while another waits in a yield (as the desktop's
    // event loop may start one) may find anything of the other in them.
    struct Result {
        bool ok = false;
        std::string message;
        std::vector<std::string> info;
        double rate = 0;
        std::vector<float> samples;
        bool operator==(const Result&) const = default;
    };
    auto read = [](test::StdBench& b, const std::string& text) {
        Result r;
        r.ok = b.read(ReadCsvStd, b.putText(text, "scope.csv"));
        r.message = b.message();
        r.info = b.st.SourceInfoLines;
        r.rate = b.st.SampleRate;
        if (r.ok) r.samples = b.working();
        return r;
    };
    std::string longer = "Model,DS1102E\nX Increment,2e-06\n";
    for (int i = 0; i < 50; ++i)
        longer += "Note " + std::to_string(i) + ",some words of the preamble\n";
    longer += "Sequence,CH1,CH2\n";
    for (int i = 0; i < 300; ++i)
        longer += std::to_string(i) + "," + std::to_string(i % 7) + "," + std::to_string(-i) + "\n";
    const std::string shorter = "Time (ms);CH1\n0;1,5\n1;-2\n2;3\n3;0,25\n";
    const std::string failing = longer + "300,1,high\n";

    test::StdBench longerAlone, shorterAlone;
    const Result wantLonger = read(longerAlone, longer);
    const Result wantShorter = read(shorterAlone, shorter);
    ASSERT_TRUE(wantLonger.ok) << wantLonger.message;
    ASSERT_TRUE(wantShorter.ok) << wantShorter.message;

    test::StdBench failed, after;
    EXPECT_FALSE(read(failed, failing).ok);
    EXPECT_EQ(read(after, shorter), wantShorter);

    test::StdBench outer, inner;
    Result insideResult;
    bool inside = false;
    outer.host.onYield([&] {
        if (inside) return;
        inside = true;
        insideResult = read(inner, shorter);
    });
    EXPECT_EQ(read(outer, longer), wantLonger);
    ASSERT_TRUE(inside) << "the outer read yields while it writes its trace";
    EXPECT_EQ(insideResult, wantShorter);
}
