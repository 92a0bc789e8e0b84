// Files the user asked for are replaced whole or not at all; a run's scratch folder goes with
// it; the home folder's lock keeps a second holder out and is taken over from a dead one.
#include "platform/files.h"
#include "platform/work_folder.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace kv;
namespace fs = std::filesystem;

namespace {

/// Names in `folder` other than those of `keep`.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder))
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// The id of a process that has ended.
int deadPid() {
    const pid_t p = ::fork();
    if (p == 0) ::_exit(0);
    int status = 0;
    ::waitpid(p, &status, 0);
    return int(p);
}

} // namespace

TEST(ReplacingFiles, TheDestinationIsOldUntilCommitAndWholeAfter) {
    test::TempHome home(false);
    const std::string dst = home.file("out.kvd");
    test::writeText(dst, "old and longer");
    ::chmod(dst.c_str(), 0640);
    {
        ReplacingFile f(dst);
        ASSERT_FALSE(f.path().empty());
        EXPECT_EQ(folderOf(f.path()), home.path()) << "beside the destination";
        test::writeText(f.path(), "new");
        EXPECT_EQ(test::readText(dst), "old and longer");
        ASSERT_TRUE(f.commit());
    }
    EXPECT_EQ(test::readText(dst), "new");
    struct stat s;
    ASSERT_EQ(::stat(dst.c_str(), &s), 0);
    EXPECT_EQ(s.st_mode & 0777, 0640u) << "the permissions of the file it replaced";
    EXPECT_EQ(namesIn(home.path()), std::vector<std::string>{"out.kvd"});

    // Not committed: the scratch file goes, the destination stays.
    {
        ReplacingFile f(dst);
        test::writeText(f.path(), "half");
    }
    EXPECT_EQ(test::readText(dst), "new");
    EXPECT_EQ(namesIn(home.path()), std::vector<std::string>{"out.kvd"});
}

TEST(ReplacingFiles, StartingFromTheOldFileKeepsWhatIsNotOverwritten) {
    test::TempHome home(false);
    const std::string dst = home.file("x.dzt");
    test::writeText(dst, "abcdefgh");
    ReplacingFile f(dst, true);
    EXPECT_EQ(test::readText(f.path()), "abcdefgh");
    ReplacingFile fresh(home.file("none.dzt"), true);
    EXPECT_EQ(test::readText(fresh.path()), "") << "no old file: it starts empty";
    ReplacingFile twice(dst);
    EXPECT_NE(twice.path(), f.path()) << "two replacements never share a scratch file";
}

TEST(ReplacingFiles, AFolderThatCannotTakeTheFileFailsAndLeavesNothing) {
    test::TempHome home(false);
    ReplacingFile f(home.file("no/such/folder/out.kvd"));
    EXPECT_TRUE(f.path().empty());
    EXPECT_FALSE(f.commit());
    // The rename fails when the destination is a folder: the scratch file goes.
    fs::create_directory(home.file("taken"));
    ReplacingFile g(home.file("taken"));
    test::writeText(g.path(), "x");
    EXPECT_FALSE(g.commit());
    EXPECT_EQ(namesIn(home.path()), std::vector<std::string>{"taken"});
}

TEST(ScratchFolders, GoWithTheirRunAndThoseOfDeadRunsAreSwept) {
    test::TempHome home(false);
    std::string made;
    {
        ScratchFolder s;
        ASSERT_TRUE(s.make(home.path()));
        made = s.path();
        test::writeText(joinPath(made, "temp.sp"), "data");
        EXPECT_NE(fileTitleOf(made).find(std::to_string(::getpid())), std::string::npos);
    }
    EXPECT_FALSE(fs::exists(made));

    const std::string dead = home.file(".kv-run-" + std::to_string(deadPid()) + "-abcdef");
    const std::string alive = home.file(".kv-run-1-abcdef"); // init runs for ever
    for (const auto& d : {dead, alive}) {
        fs::create_directory(d);
        test::writeText(joinPath(d, "temp.sp"), "data");
    }
    fs::create_directory(home.file("kv-run-notours"));
    ScratchFolder mine;
    ASSERT_TRUE(mine.make(home.path()));
    sweepScratchFolders(home.path());
    EXPECT_FALSE(fs::exists(dead));
    EXPECT_TRUE(fs::exists(alive));
    EXPECT_TRUE(fs::exists(mine.path()));
    EXPECT_TRUE(fs::exists(home.file("kv-run-notours")));
}

TEST(HomeLocks, ASecondHolderIsToldWhoHasItAndAStaleFileIsTakenOver) {
    test::TempHome home(false);
    const std::string file = home.file(HomeLock::kFileName);
    {
        HomeLock first, second;
        ASSERT_EQ(first.acquire(home.path()), 0);
        EXPECT_EQ(test::readText(file), std::to_string(::getpid()) + "\n");
        EXPECT_EQ(second.acquire(home.path()), ::getpid());
        EXPECT_FALSE(second.held());
        first.release();
        EXPECT_FALSE(fs::exists(file));
        EXPECT_EQ(second.acquire(home.path()), 0);
    }
    EXPECT_FALSE(fs::exists(file)) << "released when its holder goes";

    // Left by a workbench that was killed: its process id, but nobody holds the file.
    test::writeText(file, std::to_string(deadPid()) + "\n");
    HomeLock next;
    EXPECT_EQ(next.acquire(home.path()), 0);
    EXPECT_EQ(test::readText(file), std::to_string(::getpid()) + "\n");

    HomeLock none;
    EXPECT_EQ(none.acquire(home.file("no/such/folder")), -1);
}
