// The core builds without Qt: it is what the command-line tool and the benchmarks link, and it
// must run where there is no display.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

namespace fs = std::filesystem;

TEST(Layers, NothingInTheCoreFoldersIncludesQt) {
    fs::path root = fs::path(__FILE__).parent_path().parent_path().parent_path() / "src";
    ASSERT_TRUE(fs::exists(root)) << root;
    const std::regex qtInclude(R"(#\s*include\s*[<"](Q[A-Za-z]+|Qt[A-Za-z]*/))");
    int files = 0;
    for (const char* folder :
         {"core", "import", "engine", "conditioning", "references", "options", "platform"}) {
        if (!fs::exists(root / folder)) continue;
        for (const auto& e : fs::recursive_directory_iterator(root / folder)) {
            if (!e.is_regular_file()) continue;
            std::ifstream f(e.path());
            std::string line;
            int n = 0;
            while (std::getline(f, line)) {
                ++n;
                EXPECT_FALSE(std::regex_search(line, qtInclude)) << e.path() << ":" << n;
            }
            ++files;
        }
    }
    EXPECT_GT(files, 10);
}
