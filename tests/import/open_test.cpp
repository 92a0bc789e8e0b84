// The Import command: the dialog, the choice of reader, what a cancelled or failed open leaves,
// and which views come up.
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "import/file_filters.h"
#include "import/format_table.h"
#include "platform/files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;

namespace {

std::string sineWav(const test::Bench& b, const std::string& name, int samples) {
    std::vector<int> s(static_cast<size_t>(samples));
    for (int i = 0; i < samples; ++i)
        s[size_t(i)] = int(std::lround(1000 * std::sin(i * 0.1)));
    const std::string path = b.home.file(name);
    test::writeFile(path, test::wavBytes(1, 8000, 16, s));
    return path;
}

} // namespace

TEST(ImportDialog, ListsTheTwelveTypesInTheOrderTheDefaultTypeGives) {
    // Expected positions of the Radsys and SPRScan ERA entries for Fil 1..12.
    const int radsys[12] = {6, 6, 4, 4, 4, 1, 6, 5, 5, 5, 5, 6};
    const int sprscan[12] = {8, 8, 6, 6, 6, 6, 2, 7, 7, 7, 7, 1};
    for (int fil = 1; fil <= 12; ++fil) {
        EXPECT_EQ(RadsysIndex(fil), radsys[fil - 1]) << fil;
        EXPECT_EQ(SprScanIndex(fil), sprscan[fil - 1]) << fil;
    }
    EXPECT_EQ(importFilter(6).rfind("Radsys files(*.sgy)|*.sgy|Malå files(*.rd3)|*.rd3|", 0), 0u);

    test::Bench b;
    b.start();
    b.host.queueCancel();
    mnuOpen_Click(b.wb);
    ASSERT_EQ(b.host.dialogTitles.size(), 1u);
    EXPECT_EQ(b.host.dialogTitles[0], "Import data files");
    EXPECT_EQ(b.host.dialogFilters[0].rfind("WAVE Files(*.wav)|*.wav|Wavestar® Files", 0), 0u);
}

TEST(ImportDialog, CancellingLeavesNoDataSetEvenWhenOneWasOpen) {
    test::Bench b;
    b.start();
    b.import(sineWav(b, "a.wav", 4096));
    ASSERT_FALSE(b.st.TempPath.empty());
    ASSERT_TRUE(b.st.SpectrumOpen);

    b.host.queueCancel();
    mnuOpen_Click(b.wb);
    EXPECT_TRUE(b.st.TempPath.empty());
    EXPECT_FALSE(b.st.SpectrumOpen);
    EXPECT_EQ(b.cmd.visibleButtons(), (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(b.host.messages.empty()) << "a cancelled dialog shows nothing";
}

TEST(ImportDialog, ASuccessfulOpenSetsCaptionPanelsCommandsAndTheSpectrum) {
    test::Bench b;
    b.start();
    b.import(sineWav(b, "tone.wav", 8192));
    EXPECT_EQ(b.cmd.caption, "Kelvorandine   tone.wav");
    EXPECT_EQ(b.cmd.panel(3), "FFT Bins: 512");
    EXPECT_EQ(b.cmd.panel(9), "Mono");
    for (const char* m : {"mnuFInf", "mnuFFT", "mnuTime", "mnuPhase", "mnuBscan", "mnuExport"})
        EXPECT_TRUE(b.cmd.enabled(m)) << m;
    // The Spectrum view comes up active: its own button set, 1 to 56 without the spacers.
    EXPECT_EQ(b.cmd.visibleButtons().size(), 48u);
    EXPECT_EQ(b.cmd.viewCaptionLine, "Spectrum view");
    EXPECT_EQ(b.views.log, (std::vector<std::string>{"load Spectrum", "firstDraw Spectrum",
                                                     "maximise Spectrum"}));
    EXPECT_EQ(b.st.ScaleBits, 32767.0f);
    EXPECT_TRUE(b.st.NewDataSet);
    EXPECT_EQ(b.st.YUnitName, "Percent Full Scale");
    EXPECT_EQ(b.st.ActiveTracePath, b.home.file("temp.sp"));
    EXPECT_EQ(b.working()[1], std::lround(1000 * std::sin(0.1)));
}

TEST(ImportDialog, StartFlagsDecideWhichViewsComeUpAndHowTheyAreArranged) {
    test::Bench b;
    b.st.SettingsOverrides["gen.stsp"] = "0";
    b.st.SettingsOverrides["gen.stos"] = "1";
    b.st.SettingsOverrides["gen.stph"] = "1";
    b.start();
    b.import(sineWav(b, "a.wav", 4096));
    EXPECT_EQ(b.views.log, (std::vector<std::string>{"load O-scope", "load Phase", "arrange 1"}));

    test::Bench n;
    for (const char* k : {"gen.stsp", "gen.stos", "gen.stph", "gen.stwat"})
        n.st.SettingsOverrides[k] = "0";
    n.st.SettingsOverrides["gen.bscanshow"] = "1";
    n.start();
    n.import(sineWav(n, "a.wav", 4096));
    EXPECT_EQ(n.views.log, (std::vector<std::string>{"maximise Spectrum", "load Spectrum"}));

    test::Bench w;
    w.st.SettingsOverrides["gen.stsp"] = "0";
    w.st.SettingsOverrides["gen.stwat"] = "1";
    w.st.SettingsOverrides["gen.bscanshow"] = "1";
    w.start();
    w.import(sineWav(w, "a.wav", 4096));
    EXPECT_EQ(w.views.log, (std::vector<std::string>{"load Radargram", "maximise Radargram"}));
}

TEST(ImportDialog, AverageModeShrinksAverValToASmallTraceCount) {
    test::Bench b;
    b.st.SettingsOverrides["fft.modefft"] = "4";
    b.start();
    b.import(sineWav(b, "a.wav", 6 * 1024));
    EXPECT_EQ(b.st.TraceCount, 6);
    EXPECT_EQ(b.st.AverVal, 6);
}

TEST(FormatChoice, TheLastCharactersOfTheNamePickTheReader) {
    ProgramState st;
    formatTable().detect(st, "survey.DzT");
    EXPECT_TRUE(st.IsDzt);
    formatTable().detect(st, "line.dt1");
    EXPECT_TRUE(st.IsDt1);
    EXPECT_FALSE(st.IsDzt);
    formatTable().detect(st, "noextDT");
    EXPECT_TRUE(st.IsDt) << "a name without a dot ending in DT is a Zon file";
    formatTable().detect(st, "readme.txt");
    EXPECT_TRUE(st.IsDt) << "an unknown name leaves the previous format";
    formatTable().detect(st, "a.sg2");
    EXPECT_TRUE(st.IsSg2);
    EXPECT_FALSE(st.IsDt);
}

TEST(FormatChoice, AnUnknownExtensionRunsThePreviousReader) {
    test::Bench b;
    b.start();
    b.import(sineWav(b, "first.wav", 4096));
    ASSERT_TRUE(b.st.IsWav);
    const std::string other = b.home.file("second.bin");
    std::vector<int> s(2048, 5);
    test::writeFile(other, test::wavBytes(1, 8000, 16, s));
    b.import(other);
    EXPECT_TRUE(b.st.IsWav);
    EXPECT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.st.TraceCount, 2);
    EXPECT_EQ(b.working()[0], 5.0f);
}

TEST(FormatChoice, TheFilterIndexChoosesBetweenSeismicAndRadsys) {
    test::Bench b;
    b.st.SettingsOverrides["gen.fil"] = "6";
    b.start();
    test::writeText(b.home.file("x.sgy"), std::string(4000, '\0'));
    b.import(b.home.file("x.sgy"), 1);
    EXPECT_TRUE(b.st.IsSgy);
    EXPECT_TRUE(b.st.IsRadsys) << "with Fil 6 the first entry is Radsys";
    b.import(b.home.file("x.sgy"), 3);
    EXPECT_FALSE(b.st.IsRadsys);
}

TEST(Reread, ChNewDSReadsTheSameFileAgainWithTheNewSettings) {
    test::Bench b;
    b.start();
    b.import(sineWav(b, "a.wav", 8192));
    ASSERT_EQ(b.st.TraceCount, 8);
    b.views.log.clear();
    b.st.SettingsOverrides["gen.newds"] = "2";
    ChNewDS(b.wb);
    EXPECT_EQ(b.st.NewDS, 2);
    EXPECT_EQ(b.st.TraceCount, 4);
    EXPECT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.views.log,
              (std::vector<std::string>{"unload Spectrum", "load Spectrum", "firstDraw Spectrum"}));
}

namespace {

/// An opener whose every open fails with `E`, as a byte source that ran out of memory or a
/// fault in the program would.
template <class E> SourceOpener failingOpener() {
    return [](const std::string&) -> std::unique_ptr<ByteSource> { throw E("fails"); };
}

struct NoMemory : std::bad_alloc {
    explicit NoMemory(const char*) {}
};

} // namespace

TEST(OpenFailures, RunningOutOfMemoryShowsItsOwnMessageAndLeavesNoDataSet) {
    // The WAV reader has no handler of its own; the radar reader's handler covers its header.
    for (const char* name : {"a.wav", "a.rd3"}) {
        SCOPED_TRACE(name);
        test::Bench b;
        b.start();
        b.import(sineWav(b, "first.wav", 4096));
        ASSERT_FALSE(b.st.TempPath.empty());
        b.wb.openSource = failingOpener<NoMemory>();
        test::writeText(b.home.file(name), "x");
        b.import(b.home.file(name));
        EXPECT_TRUE(b.st.TempPath.empty());
        EXPECT_FALSE(b.st.SpectrumOpen);
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].text, "Not enough memory to read this file.");
        EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
        EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    }
    // The re-read after a settings change ends the same way.
    test::Bench b;
    b.start();
    b.import(sineWav(b, "a.wav", 8192));
    b.wb.openSource = failingOpener<NoMemory>();
    ChNewDS(b.wb);
    EXPECT_TRUE(b.st.TempPath.empty());
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "Not enough memory to read this file.");
}

TEST(OpenFailures, AFaultInTheProgramIsNotTakenForABadFile) {
    for (const char* name : {"a.wav", "a.rd3", "a.sgy"}) {
        SCOPED_TRACE(name);
        test::Bench b;
        b.start();
        b.wb.openSource = failingOpener<std::logic_error>();
        test::writeText(b.home.file(name), "x");
        EXPECT_THROW(b.import(b.home.file(name)), std::logic_error);
        EXPECT_TRUE(b.host.messages.empty()) << "not \"File corrupted!\"";
    }
    test::Bench b;
    b.start();
    b.import(sineWav(b, "a.wav", 8192));
    b.wb.openSource = failingOpener<std::out_of_range>();
    EXPECT_THROW(ChNewDS(b.wb), std::out_of_range);
}
