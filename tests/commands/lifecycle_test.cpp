// Start, the trace-position mapping, closing and cleaning up, and exit.
#include "commands/lifecycle.h"
#include "platform/files.h"
#include "platform/work_folder.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <unistd.h>

using namespace kv;

TEST(Start, ShowsThreeButtonsLeavesAnEmptyWorkingFileAndNoDataSet) {
    test::Bench b;
    b.start();
    EXPECT_EQ(b.cmd.visibleButtons(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(b.cmd.panel(1), "Hallvik Instruments");
    EXPECT_TRUE(b.st.TempPath.empty());
    EXPECT_TRUE(fileExists(b.home.file("temp.sp")));
    EXPECT_EQ(fileSize(b.home.file("temp.sp")), 0);
    for (const char* m : {"mnuFFT", "mnuTime", "mnuPhase", "mnuBscan", "mnuExport"})
        EXPECT_FALSE(b.cmd.enabled(m)) << m;
    EXPECT_EQ(b.st.Pi, 3.14159265358979);
    EXPECT_EQ(std::bit_cast<uint64_t>(b.st.Pi), 0x400921FB54442D11ull);
    EXPECT_TRUE(b.views.log.empty()) << "nothing opens by itself";
}

TEST(TracePositions, SmallCountsStepOneTraceAtATime) {
    ProgramState st;
    st.Sp_Samples = 512;
    st.TraceCount = 100;
    st.TracePos = 7;
    BigFile(st);
    EXPECT_EQ(st.LastTrace, 99);
    EXPECT_EQ(st.TraceStep, 1);
    EXPECT_EQ(st.TracePos, 0);
    EXPECT_EQ(st.ScrollStride, 2048);
}

TEST(TracePositions, LargeCountsTakeTheLargestDivisorUpToTen) {
    ProgramState st;
    st.Sp_Samples = 256;
    st.TraceCount = 40000;
    BigFile(st);
    EXPECT_EQ(st.TraceStep, 10);
    EXPECT_EQ(st.LastTrace, 3999);
    st.TraceCount = 65536;
    BigFile(st);
    EXPECT_EQ(st.TraceStep, 8) << "the loop does not stop at the first divisor";
    EXPECT_EQ(st.LastTrace, 8191);
    // A prime count: nothing divides, both keep their old values.
    st.TraceCount = 32771;
    BigFile(st);
    EXPECT_EQ(st.TraceStep, 8);
    EXPECT_EQ(st.LastTrace, 8191);
    EXPECT_EQ(st.ScrollStride, 8 * 256 * 4);
}

TEST(TracePositions, AverageModeGroupsAndRoundsHalfToEven) {
    ProgramState st;
    st.Sp_Samples = 1024;
    st.ModeFFT = 4;
    st.AverVal = 10;
    st.TraceCount = 100;
    BigFile(st);
    EXPECT_EQ(st.LastTrace, 9) << "99 / 10 - 1 = 8.9";
    EXPECT_EQ(st.TraceStep, 10);
    st.TraceCount = 26; // 25 / 10 - 1 = 1.5 -> 2
    BigFile(st);
    EXPECT_EQ(st.LastTrace, 2);
}

TEST(TracePositions, PlacesPast2GBAndPast4GBAreExact) {
    ProgramState st;
    st.Sp_Samples = 65536;
    st.ModeFFT = 4;
    st.AverVal = 10000; // a stride of 2.6 GB
    st.TraceCount = 100;
    BigFile(st);
    EXPECT_EQ(st.ScrollStride, int64_t(10000) * 65536 * 4);
    st.ModeFFT = 1;
    st.TraceCount = 30000;
    BigFile(st);
    st.TracePos = 20000; // 20000 traces of 256 KiB
    setCurrentTracePos(st);
    EXPECT_EQ(st.CurrentTracePos, 1 + int64_t(20000) * 65536 * 4) << "not wrapped, not held";
    st.TracePos = 10;
    setCurrentTracePos(st);
    EXPECT_EQ(st.CurrentTracePos, 1 + 10 * 65536 * 4);
}

TEST(TracePositions, OneTraceKeepsStepAndStride) {
    ProgramState st;
    st.TraceStep = 3;
    st.ScrollStride = 99;
    st.LastTrace = 5;
    st.TraceCount = 1;
    BigFile(st);
    EXPECT_EQ(st.LastTrace, 0);
    EXPECT_EQ(st.TraceStep, 3);
    EXPECT_EQ(st.ScrollStride, 99);
}

TEST(DataSetLife, ClosingTheLastViewGoesBackToThreeButtons) {
    test::Bench b;
    b.start();
    b.views.loadView(b.wb, ViewId::Spectrum);
    b.views.loadView(b.wb, ViewId::Oscope);
    b.st.TempPath = b.home.file("temp.sp");
    b.cmd.showButtons(1, 105, true);
    b.cmd.enable("mnuFInf");

    b.views.unloadView(b.wb, ViewId::Spectrum);
    EXPECT_FALSE(b.st.TempPath.empty()) << "a view is still open";
    EXPECT_GT(b.cmd.visibleButtons().size(), 3u);
    EXPECT_FALSE(b.cmd.enabled("mnuFInf")) << "disabled in every case";

    b.views.unloadView(b.wb, ViewId::Oscope);
    EXPECT_TRUE(b.st.TempPath.empty());
    EXPECT_EQ(b.cmd.visibleButtons(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(b.cmd.caption, "Kelvorandine ");
}

TEST(DataSetLife, CloseDataSetUnloadsTheWaterfallTheSettingPointsTo) {
    test::Bench b;
    b.start();
    b.st.BscanShow = 1;
    b.views.loadView(b.wb, ViewId::Radargram);
    b.views.loadView(b.wb, ViewId::Phase);
    b.cmd.panel(5) = "x";
    b.cmd.button(54).down = true;
    CloseDataSet(b.wb);
    EXPECT_FALSE(b.st.RadargramOpen);
    EXPECT_FALSE(b.st.PhaseOpen);
    EXPECT_TRUE(b.cmd.panel(5).empty());
    EXPECT_FALSE(b.cmd.button(54).down);
}

TEST(DataSetLife, AnalysisAndMarkersClearTheirCommands) {
    test::Bench b;
    b.start();
    b.st.AnalysOnFFT = b.st.ShowTHD = true;
    b.cmd.button(41).down = true;
    b.cmd.check("mnuThd");
    NoAnalys(b.wb);
    EXPECT_FALSE(b.st.ShowTHD);
    EXPECT_FALSE(b.cmd.button(41).down);
    EXPECT_FALSE(b.cmd.checked("mnuThd"));
    EXPECT_FALSE(b.cmd.enabled("mnuThd"));

    b.st.MarkerMode = true;
    b.st.MarkerCount = 4;
    b.cmd.button(55).down = true;
    NoMarkers(b.wb);
    EXPECT_EQ(b.st.MarkerCount, 0);
    EXPECT_FALSE(b.cmd.button(55).down);
}

TEST(Exit, DeletesTempSpButLeavesTheStereoWorkingFiles) {
    test::Bench b;
    b.start();
    for (const char* f : {"temp.sp", "temp_l.sp", "temp_r.sp", "print.bmp"})
        test::writeText(b.home.file(f), "x");
    MDIForm_Unload(b.wb);
    EXPECT_FALSE(fileExists(b.home.file("temp.sp")));
    EXPECT_FALSE(fileExists(b.home.file("print.bmp")));
    EXPECT_TRUE(fileExists(b.home.file("temp_l.sp")));
    EXPECT_TRUE(fileExists(b.home.file("temp_r.sp")));
}

TEST(Start, ASecondWorkbenchOnOneHomeIsToldAndTheFirstKeepsIt) {
    test::Bench first, second;
    second.st.AppPath = first.st.AppPath;
    HomeLock firstLock, secondLock;
    ASSERT_TRUE(claimHome(first.wb, firstLock));
    EXPECT_TRUE(first.host.messages.empty());
    EXPECT_FALSE(claimHome(second.wb, secondLock));
    ASSERT_EQ(second.host.messages.size(), 1u);
    EXPECT_EQ(second.host.messages[0].text,
              "Another Kelvorandine workbench (process " + std::to_string(::getpid()) +
                  ") is using the home folder " + first.st.AppPath +
                  ". Close it first, or start this one with another home folder (--home).");
    EXPECT_EQ(second.host.messages[0].icon, MsgIcon::Critical);
    firstLock.release();
    EXPECT_TRUE(claimHome(second.wb, secondLock)) << "free again once the first one closes";
}

TEST(Start, WorkingFilesGoToTheRunsOwnFolderWhenItHasOne) {
    test::Bench b;
    const std::string own = b.home.file("own");
    std::filesystem::create_directory(own);
    b.st.WorkPath = own;
    b.start();
    EXPECT_TRUE(fileExists(joinPath(own, "temp.sp")));
    EXPECT_FALSE(fileExists(b.home.file("temp.sp")));
}
