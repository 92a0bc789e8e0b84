// The three "all variants" entries in the Import command: where the dialog lists them, that
// picking one runs its reader with the settings around it, that the twelve entries still read
// the same files their own way, and that the channel in the options reaches a re-read.
#include "import/file_filters.h"
#include "import/format_table.h"
#include "import/variant_files.h"
#include "state/settings.h"

#include <gtest/gtest.h>

#include <regex>

using namespace kv;

namespace {

int entryIndex(const ProgramState& st, const char* name) {
    FilterName f;
    EXPECT_TRUE(parseFilterName(name, f)) << name;
    return filterIndexOf(st.Fil, f);
}

/// Two channels of 16-bit PCM with a LIST chunk in front of the samples.
std::vector<uint8_t> listedStereoWav() {
    std::vector<double> left, right;
    for (int i = 0; i < 2048; ++i) {
        left.push_back(i % 100);
        right.push_back(-(i % 50));
    }
    test::RiffBuilder r;
    r.chunk("fmt ", test::fmtChunk(1, 2, 8000, 16));
    r.chunk("LIST", std::vector<uint8_t>(40, 'L'));
    r.chunk("data", test::frames(SampleCoding::S16, {left, right}));
    return r.bytes;
}

} // namespace

TEST(StandardEntries, FollowTheTwelveInEveryDialogOrderUnderTheirOwnNames) {
    const char* texts = "Radar DZT, all variants (*.dzt)|*.dzt|WAV, all variants (*.wav)|*.wav|"
                        "Oscilloscope CSV (*.csv)|*.csv|";
    for (int fil = 1; fil <= 12; ++fil) {
        SCOPED_TRACE(fil);
        EXPECT_TRUE(importFilter(fil).ends_with(texts));
        ProgramState st;
        st.Fil = int16_t(fil);
        // After the twelve (and any entry appended before them), in table order.
        const int dzt = entryIndex(st, "dzt-std");
        EXPECT_GT(dzt, 12);
        EXPECT_EQ(dzt, int(*formatTable().find("DZT-STD")) + 1);
        EXPECT_EQ(entryIndex(st, "WAV-STD"), dzt + 1);
        EXPECT_EQ(entryIndex(st, "CSV-STD"), dzt + 2);
        // A file's extension alone still picks one of the twelve.
        EXPECT_LE(filterIndexForFile(fil, "x.dzt"), 12);
        EXPECT_LE(filterIndexForFile(fil, "x.wav"), 12);
        EXPECT_LE(filterIndexForFile(fil, "x.csv"), 12);
    }
}

TEST(StandardEntries, PickingAnEntryRunsItsReaderAndTheWavEntryKeepsItsOwnRules) {
    test::StdBench b;
    const std::string p = b.put(listedStereoWav(), "listed.wav");
    b.import(p, entryIndex(b.st, "WAV-STD"));
    ASSERT_FALSE(b.st.TempPath.empty()) << b.message();
    EXPECT_TRUE(b.st.IsWavStd);
    EXPECT_FALSE(b.st.IsWav);
    EXPECT_EQ(b.st.YUnitName, "Percent Full Scale");
    EXPECT_EQ(b.st.ActiveTracePath, b.st.TempPath) << "one working file, whatever the channels";
    EXPECT_EQ(b.st.ShowVertical, 2);
    EXPECT_EQ(b.views.log.front(), "load Spectrum");
    auto w = b.working();
    ASSERT_EQ(w.size(), 2048u);
    EXPECT_EQ(w[0], 0.0f);
    EXPECT_EQ(w[99], 99.0f);

    // The WAV entry reads the same file from byte 45: the LIST chunk's bytes become samples.
    b.import(p, entryIndex(b.st, "WAV"));
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_TRUE(b.st.IsWav);
    EXPECT_FALSE(b.st.IsWavStd);
    EXPECT_EQ(b.st.ActiveTracePath, b.st.TempLeftPath);
    EXPECT_EQ(b.working("temp_l.sp")[2], float(int16_t('L' | 'L' << 8)));
}

TEST(StandardEntries, AFileAnEntryCannotReadEndsWithItsMessageAndNoDataSet) {
    for (const char* name : {"DZT-STD", "WAV-STD", "CSV-STD"}) {
        SCOPED_TRACE(name);
        test::StdBench b;
        const std::string ext = std::string(name).substr(0, 3);
        b.import(b.putText("not a recording", "x." + ext), entryIndex(b.st, name));
        EXPECT_TRUE(b.st.TempPath.empty());
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
        EXPECT_NE(b.host.messages[0].text, "File corrupted!") << "it says what is wrong";
        EXPECT_FALSE(b.cmd.enabled("mnuFInf")) << "no data set";
    }
}

TEST(StandardEntries, AReReadAfterTheOptionsChangeTakesTheChannelFromTheSettings) {
    test::StdBench b;
    b.import(b.put(listedStereoWav(), "listed.wav"), entryIndex(b.st, "WAV-STD"));
    ASSERT_EQ(b.working()[1], 1.0f);
    const std::string ini = std::regex_replace(test::readText(b.home.file("SP.ini")),
                                               std::regex("ImportChannel=1"), "ImportChannel=2");
    test::writeText(b.home.file("SP.ini"), ini);
    ChNewDS(b.wb);
    ASSERT_FALSE(b.st.TempPath.empty()) << b.message();
    EXPECT_EQ(b.st.ImportChannel, 2);
    EXPECT_EQ(b.working()[1], -1.0f) << "the right channel";
    EXPECT_TRUE(b.infoHas("Channels : 2, channel 2 shown"));
}
