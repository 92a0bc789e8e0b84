// The SEG-Y and SEG-2 entries of all revisions and variants through the Import command: the
// dialog lists them after the twelve, a file name and the entry picked choose the reader, and a
// data set they read comes up like any other; the fixed-rule entries keep their files.
#include "import/file_filters.h"
#include "import/format_table.h"
#include "standard_files.h"

#include <gtest/gtest.h>

using namespace kv;

namespace {

int indexOf(const ProgramState& st, const std::string& name) {
    FilterName f;
    EXPECT_TRUE(parseFilterName(name, f)) << name;
    return filterIndexOf(st.Fil, f);
}

struct Opened : test::Bench {
    Opened() { start(); }
    /// Saves `bytes` as `name` and imports it through the entry `filter` ("" for the one the
    /// name's extension picks).
    void open(const std::vector<uint8_t>& bytes, const std::string& name,
              const std::string& filter) {
        const std::string p = home.file(name);
        test::writeFile(p, bytes);
        import(p, *chosenFilterIndex(st.Fil, p, filter));
    }
    bool loaded() const { return !st.TempPath.empty(); }
};

std::vector<uint8_t> smallSegy() {
    test::SegyLayout s;
    s.format = 1;
    s.traces = {{1, -2, 3, -4, 5, 6, 7}, {8, 9, 10, 11, 12, 13, 14}, {0, 0, 0, 0, 0, 0, 0.5}};
    return test::segyFile(s);
}

std::vector<uint8_t> smallSeg2() {
    test::Seg2Layout s;
    test::Seg2Trace t;
    t.format = 4;
    t.samples = {0.5, 1, -1.5, 2, 3};
    s.traces = {t, t};
    return test::seg2File(s);
}

} // namespace

TEST(StandardEntries, TheDialogListsThemAfterTheTwelve) {
    Opened b;
    for (int fil = 1; fil <= 12; ++fil) {
        b.st.Fil = int16_t(fil);
        EXPECT_EQ(indexOf(b.st, "SEGY-STD"), 13) << fil;
        EXPECT_EQ(indexOf(b.st, "SEG2-STD"), 14) << fil;
        const std::string filter = importFilter(fil);
        EXPECT_NE(
            filter.find("|SEG-Y, all revisions (*.sgy;*.segy)|*.sgy;*.segy|SEG-2, all variants "
                        "(*.sg2;*.seg2;*.dat)|*.sg2;*.seg2;*.dat|"),
            std::string::npos);
    }
}

TEST(StandardEntries, SegyOpensThroughItsEntryAndTheSeismicEntryKeepsItsFiles) {
    for (const char* name : {"line.sgy", "line.segy", "LINE.SEGY"}) {
        SCOPED_TRACE(name);
        Opened b;
        b.open(smallSegy(), name, "SEGY-STD");
        ASSERT_TRUE(b.loaded()) << (b.host.messages.empty() ? "" : b.host.messages[0].text);
        EXPECT_TRUE(b.host.messages.empty());
        EXPECT_TRUE(b.st.IsSegyStd);
        EXPECT_FALSE(b.st.IsSgy);
        EXPECT_EQ(b.st.TraceCount, 3);
        EXPECT_EQ(b.st.Sp_Samples, 7);
        EXPECT_EQ(b.st.Fft_Samples, 7);
        EXPECT_EQ(b.st.SampleRate, 1000.0);
        EXPECT_EQ(b.st.FullScalePos, 14.0f);
        EXPECT_EQ(b.cmd.panel(3), "FFT Bins: 3");
        EXPECT_TRUE(b.st.SpectrumOpen);
        EXPECT_FALSE(b.st.SourceInfoLines.empty());
        EXPECT_EQ(b.working().size(), 21u);
        EXPECT_EQ(b.working()[1], -2.0f);
    }
    // A .segy name chooses the new entry by itself; a .sgy name keeps the Seismic entry, whose
    // fixed rules read the same file otherwise.
    Opened bySegy;
    bySegy.open(smallSegy(), "line.segy", "");
    EXPECT_TRUE(bySegy.st.IsSegyStd);
    Opened seismic;
    seismic.open(smallSegy(), "line.sgy", "");
    EXPECT_TRUE(seismic.st.IsSgy);
    EXPECT_FALSE(seismic.st.IsSegyStd);
    EXPECT_NE(seismic.st.Sp_Samples, 7);
}

TEST(StandardEntries, Seg2OpensThroughItsEntryUnderEachOfItsNames) {
    for (const char* name : {"shot.sg2", "shot.seg2", "shot.dat"}) {
        SCOPED_TRACE(name);
        Opened b;
        b.open(smallSeg2(), name, "SEG2-STD");
        ASSERT_TRUE(b.loaded()) << (b.host.messages.empty() ? "" : b.host.messages[0].text);
        EXPECT_TRUE(b.st.IsSeg2Std);
        EXPECT_FALSE(b.st.IsSg2 || b.st.IsDat);
        EXPECT_EQ(b.st.TraceCount, 2);
        EXPECT_EQ(b.st.Sp_Samples, 5);
        EXPECT_EQ(b.st.FullScalePos, 3.0f);
    }
    // Without the entry picked, .dat stays with the DAT reader and .sg2 with SEG-2.
    Opened dat;
    dat.open(smallSeg2(), "shot.dat", "");
    EXPECT_TRUE(dat.st.IsDat);
    Opened sg2;
    sg2.open(smallSeg2(), "shot.sg2", "");
    EXPECT_TRUE(sg2.st.IsSg2);
    Opened seg2;
    seg2.open(smallSeg2(), "shot.seg2", "");
    EXPECT_TRUE(seg2.st.IsSeg2Std);
}

TEST(StandardEntries, ADamagedFileEndsTheOpenWithItsMessageAndNoDataSet) {
    auto segy = smallSegy();
    segy.resize(segy.size() - 5);
    Opened a;
    a.open(segy, "cut.segy", "SEGY-STD");
    EXPECT_FALSE(a.loaded());
    ASSERT_EQ(a.host.messages.size(), 1u);
    EXPECT_EQ(a.host.messages[0].text, "File corrupted!");
    EXPECT_TRUE(a.st.SourceInfoLines.empty());
    EXPECT_FALSE(a.st.SpectrumOpen);

    auto seg2 = smallSeg2();
    seg2[6] = 9; // nine traces, four pointers
    Opened b;
    b.open(seg2, "cut.seg2", "SEG2-STD");
    EXPECT_FALSE(b.loaded());
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
}

TEST(StandardEntries, ATraceOfOneSampleComesUpToo) {
    test::SegyLayout s;
    s.traces = {{2.5}, {-1}};
    Opened b;
    b.open(test::segyFile(s), "one.segy", "SEGY-STD");
    ASSERT_TRUE(b.loaded());
    EXPECT_EQ(b.st.Sp_Samples, 1);
    EXPECT_EQ(b.st.TraceCount, 2);
}

TEST(StandardEntries, TheSampleWidthIsTheSourcesOrSixteenNeverTheLastImports) {
    Opened b;
    test::SegyLayout s;
    s.format = 5; // IEEE floats: 32 bits
    s.traces = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    b.open(test::segyFile(s), "floats.sgy", "SEGY-STD");
    ASSERT_TRUE(b.loaded());
    EXPECT_EQ(b.st.SampleBits, 32);
    // A CSV column has no width of its own.
    std::string csv = "Time,Volt\n";
    for (int i = 0; i < 16; ++i)
        csv += "0.00" + std::to_string(i) + "," + std::to_string(i - 5) + ",\n";
    b.open(std::vector<uint8_t>(csv.begin(), csv.end()), "column.csv", "");
    ASSERT_TRUE(b.loaded());
    EXPECT_EQ(b.st.SampleBits, 16);
}
