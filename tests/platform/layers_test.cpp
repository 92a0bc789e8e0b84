// The folders of src/ form layers: a file includes only from its own folder or from folders
// below it, and the folders below the views build without Qt, since the command-line tool and
// the benchmarks link them where there is no display. docs/architecture.md draws the same
// order; the last test keeps the two in step.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

namespace {

// Lowest first. Folders on one floor are siblings and include neither each other.
const std::vector<std::vector<std::string>> kFloors = {
    {"platform"}, {"state"},   {"engine"}, {"conditioning"}, {"import"},     {"references"},
    {"commands"}, {"options"}, {"views"},  {"output"},       {"app", "cli"},
};
// Everything below this floor is plain C++.
const size_t kFirstQtFloor = 8; // views

// The source folder as the build names it, so that the test finds it from any working folder
// (a compiler cache may turn the file's own path into one relative to the build folder).
fs::path repoRoot() {
    return KV_SOURCE_DIR;
}

std::map<std::string, size_t> floorOf() {
    std::map<std::string, size_t> m;
    for (size_t i = 0; i < kFloors.size(); ++i)
        for (const auto& f : kFloors[i])
            m[f] = i;
    return m;
}

template <class Fn> int forEachLine(const fs::path& folder, Fn fn) {
    int files = 0;
    for (const auto& e : fs::recursive_directory_iterator(folder)) {
        if (!e.is_regular_file()) continue;
        std::ifstream f(e.path());
        std::string line;
        int n = 0;
        while (std::getline(f, line))
            fn(e.path(), ++n, line);
        ++files;
    }
    return files;
}

} // namespace

TEST(Layers, EveryFolderOfSrcHasAFloor) {
    const auto floors = floorOf();
    for (const auto& e : fs::directory_iterator(repoRoot() / "src")) {
        if (!e.is_directory()) continue;
        EXPECT_TRUE(floors.count(e.path().filename().string()))
            << e.path().filename() << " is in no floor of the layer order";
    }
}

TEST(Layers, NoIncludeGoesUpOrSideways) {
    const auto floors = floorOf();
    const std::regex include(R"(^\s*#\s*include\s*"([A-Za-z_]+)/)");
    const fs::path src = repoRoot() / "src";
    int files = 0;
    for (const auto& [folder, floor] : floors) {
        if (!fs::exists(src / folder)) continue;
        files += forEachLine(src / folder, [&, folder = folder, floor = floor](
                                               const fs::path& p, int n, const std::string& line) {
            std::smatch m;
            if (!std::regex_search(line, m, include)) return;
            const std::string target = m[1];
            auto it = floors.find(target);
            if (it == floors.end() || target == folder) return;
            EXPECT_LT(it->second, floor)
                << p << ":" << n << " includes " << target << ", which is not below " << folder;
        });
    }
    EXPECT_GT(files, 50);
}

TEST(Layers, NothingBelowTheViewsIncludesQt) {
    const auto floors = floorOf();
    const std::regex qtInclude(R"(#\s*include\s*[<"](Q[A-Za-z]+|Qt[A-Za-z]*/))");
    const fs::path src = repoRoot() / "src";
    int files = 0;
    for (const auto& [folder, floor] : floors) {
        if (floor >= kFirstQtFloor || !fs::exists(src / folder)) continue;
        files += forEachLine(src / folder, [&](const fs::path& p, int n, const std::string& line) {
            EXPECT_FALSE(std::regex_search(line, qtInclude)) << p << ":" << n;
        });
    }
    EXPECT_GT(files, 10);
}

TEST(Layers, TheArchitectureNotesGiveTheSameOrder) {
    std::string order;
    for (const auto& floor : kFloors) {
        if (!order.empty()) order += " < ";
        for (size_t i = 0; i < floor.size(); ++i)
            order += (i ? ", " : "") + floor[i];
    }
    std::ifstream f(repoRoot() / "docs" / "architecture.md");
    ASSERT_TRUE(f) << "docs/architecture.md is missing";
    std::stringstream text;
    text << f.rdbuf();
    EXPECT_NE(text.str().find(order), std::string::npos)
        << "docs/architecture.md should state the layer order as: " << order;
}
