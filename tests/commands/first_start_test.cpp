// What a new user meets in the first minute, without windows: a file named on the command line
// or dropped (a name that leads nowhere, a project file), the Import dialog's list and the
// folder it starts in, the guide and the About box, the scroll bar's tip, and where the home
// folder goes when the program's own folder cannot be written.
#include "commands/commands.h"
#include "commands/export.h"
#include "commands/open.h"
#include "commands/transport.h"
#include "import/file_filters.h"
#include "import/format_table.h"
#include "platform/home_folder.h"
#include "support/test_home.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

using namespace kv;
using namespace kv::test;

namespace {

std::vector<int> tone(int n) {
    std::vector<int> s(size_t(n), 0);
    for (int i = 0; i < n; ++i)
        s[size_t(i)] = int(std::lround(8000 * std::sin(2 * 3.14159265358979 * 64 * i / 1024)));
    return s;
}

/// A started bench with a small WAV on disk.
struct Started : Bench {
    Started() {
        start();
        writeFile(wav, wavBytes(1, 8000, 16, tone(4096)));
    }
    std::string wav = home.file("line.wav");
};

} // namespace

TEST(CommandLineFile, ANameThatLeadsNowhereIsNamedAndTheDataSetOnShowStays) {
    Started b;
    importFile(b.wb, b.wav, 1);
    ASSERT_FALSE(b.st.TempPath.empty());
    const std::string missing = b.home.file("nowhere/line2.wav");
    importFile(b.wb, missing, 1);
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "No such file: " + missing);
    EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
    EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    EXPECT_FALSE(b.st.TempPath.empty()) << "the data set on show is kept";
    EXPECT_EQ(b.st.FileTitle, "line.wav");

    importFile(b.wb, b.home.path(), 1);
    EXPECT_EQ(b.host.messages.back().text, "Not a file: " + b.home.path());
    EXPECT_EQ(sourceFileProblem(b.wav), "");
    EXPECT_EQ(sourceFileProblem("/no/such.wav", "such.wav"), "No such file: such.wav");
}

TEST(CommandLineFile, AProjectFileOpensAsOpenKelvorandineFileDoes) {
    Started b;
    importFile(b.wb, b.wav, 1);
    const std::string kvd = b.home.file("Line.KVD");
    ProjectWrite(b.wb, kvd);
    const int traces = b.st.TraceCount;

    Started c;
    importFile(c.wb, kvd, 1);
    EXPECT_TRUE(c.host.messages.empty());
    EXPECT_TRUE(c.st.IsProject);
    EXPECT_EQ(c.st.TraceCount, traces);
    EXPECT_EQ(c.st.FileTitle, "Line.KVD");
    EXPECT_FALSE(c.st.TempPath.empty());
    EXPECT_TRUE(c.host.dialogTitles.empty()) << "no dialog: the name is known";
}

TEST(ImportDialog, ListsAllSupportedFilesLastWithoutMovingAnyEntry) {
    for (int fil = 1; fil <= 12; ++fil) {
        SCOPED_TRACE(fil);
        const std::string all = importDialogFilter(fil);
        EXPECT_EQ(all.rfind(importFilter(fil), 0), 0u) << "the entries first, as they were";
        const std::string tail = all.substr(importFilter(fil).size());
        EXPECT_EQ(tail.rfind("All supported files|*.wav;*.sht;*.dzt;*.rd3;*.sgy;*.sg2;", 0), 0u)
            << tail;
        EXPECT_NE(tail.find(";*.segy;"), std::string::npos);
        EXPECT_EQ(tail.back(), '|');
        EXPECT_EQ(formatTable().rowAt(fil, RadsysIndex(fil)), formatTable().find("RADSYS"));
    }
}

TEST(ImportDialog, AllSupportedFilesLeavesTheReaderToTheExtension) {
    const int allIndex = int(formatTable().rows().size()) + 1;
    struct Case {
        const char* title;
        const char* row;
    };
    for (const Case& c : {Case{"a.wav", "WAV"}, Case{"a.SGY", "SEISMIC"},
                          Case{"a.segy", "SEGY-STD"}, Case{"a.sg2", "SEG2"},
                          Case{"a.seg2", "SEG2-STD"}, Case{"a.dt", "ZON"}, Case{"a.dat", "DAT"}}) {
        SCOPED_TRACE(c.title);
        ProgramState st;
        formatTable().detect(st, c.title, formatTable().rowAt(1, allIndex));
        ASSERT_NE(formatTable().active(st), nullptr);
        EXPECT_STREQ(formatTable().active(st)->name, c.row);
        EXPECT_FALSE(st.IsRadsys);
        EXPECT_FALSE(st.IsSprScan);
    }
}

TEST(ImportDialog, StartsWhereTheUserLastImportedFromNotInTheProgramFolder) {
    Started b;
    b.host.queueCancel();
    menuCommand(b.wb, "mnuOpen");
    ASSERT_EQ(b.host.dialogFolders.size(), 1u);
    const char* userHome = std::getenv("HOME");
    EXPECT_EQ(b.host.dialogFolders[0], userHome ? userHome : "");
    EXPECT_NE(b.host.dialogFolders[0], b.home.path());
    EXPECT_EQ(b.host.dialogFilters[0], importDialogFilter(b.st.Fil));

    const std::string survey = b.home.file("survey");
    std::filesystem::create_directories(survey);
    writeFile(survey + "/l1.wav", wavBytes(1, 8000, 16, tone(2048)));
    b.host.queueFile(survey + "/l1.wav", 1);
    menuCommand(b.wb, "mnuOpen");
    EXPECT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.host.userSetting(kImportSection, kLastFolderKey, ""), survey);
    b.host.queueCancel();
    menuCommand(b.wb, "mnuOpen");
    EXPECT_EQ(b.host.dialogFolders.back(), survey);

    // A file given by name counts as an import from its folder too; a cancelled dialog does not.
    importFile(b.wb, b.wav, 1);
    b.host.queueCancel();
    menuCommand(b.wb, "mnuOpen");
    b.host.queueCancel();
    menuCommand(b.wb, "mnuOpen");
    EXPECT_EQ(b.host.dialogFolders.back(), b.home.path());
}

TEST(HelpMenu, TheGuideAndTheAboutBoxThatSaysWhereTheHomeIs) {
    Started b;
    EXPECT_TRUE(b.cmd.menu("mnuGSH").available);
    menuCommand(b.wb, "mnuGSH");
    EXPECT_EQ(b.host.helpShown, 1);
    menuCommand(b.wb, "mnuAbout");
    ASSERT_EQ(b.host.aboutBoxes.size(), 1u);
    const std::string& text = b.host.aboutBoxes[0].text;
    EXPECT_NE(text.find("\n\nHome folder (settings and working files): " + b.home.path()),
              std::string::npos)
        << text;
}

TEST(ScrollBarTip, NamesTheTraceOnShowCountedThroughTheWholeDataSet) {
    ProgramState st;
    st.TraceCount = 48;
    st.TraceStep = 1;
    EXPECT_EQ(traceTipText(st, 0), "Trace 1 of 48");
    EXPECT_EQ(traceTipText(st, 47), "Trace 48 of 48");
    // A large survey moves several traces a position.
    st.TraceCount = 65536;
    st.TraceStep = 8;
    EXPECT_EQ(traceTipText(st, 2), "Trace 17 of 65536");
    EXPECT_EQ(traceTipText(st, 8191), "Trace 65529 of 65536");
}

TEST(HomeFolder, AProgramFolderThatCannotBeWrittenMovesTheHomeToTheUsersDataFolder) {
    TempHome program; // holds the factory SP.ini
    std::filesystem::create_directories(program.file("pal"));
    writeText(program.file("pal/1_grey.pal"), "grey");
    std::filesystem::create_directories(program.file("samples"));
    writeText(program.file("samples/s.wav"), "s");
    TempHome user(false);
    const std::string data = user.file("share/kelvorandine");

    EXPECT_EQ(defaultHomeFolder(program.path(), true, data), program.path());
    EXPECT_FALSE(std::filesystem::exists(data));

    EXPECT_EQ(defaultHomeFolder(program.path(), false, data), data);
    EXPECT_EQ(readText(data + "/SP.ini"), readText(program.file("SP.ini")));
    EXPECT_EQ(readText(data + "/pal/1_grey.pal"), "grey");
    EXPECT_EQ(readText(data + "/samples/s.wav"), "s");
    EXPECT_TRUE(std::filesystem::is_directory(data + "/ref"));

    // The user's own settings survive the next start.
    writeText(data + "/SP.ini", "[Gen]\nSp_Samples=2048\n");
    EXPECT_EQ(defaultHomeFolder(program.path(), false, data), data);
    EXPECT_EQ(readText(data + "/SP.ini"), "[Gen]\nSp_Samples=2048\n");

    EXPECT_TRUE(folderWritable(program.path()));
    EXPECT_FALSE(folderWritable(program.file("no/such/folder")));
    EXPECT_EQ(defaultHomeFolder(program.path(), false, ""), program.path());
}
