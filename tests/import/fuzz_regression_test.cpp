// Every input kept under fuzz/corpus goes through its reader target's import path again: the
// committed seeds, and the inputs that once crashed a target (crash-*), kept there once the
// fault was fixed. A fault that comes back fails here, without a fuzzer.
#include "reader_input.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace kv {
namespace {

namespace fs = std::filesystem;

std::vector<uint8_t> bytesOf(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(FuzzRegression, EveryKeptInputImportsOrIsRefusedWithoutAFault) {
    const fs::path corpus = fs::path(KV_SOURCE_DIR) / "fuzz" / "corpus";
    int replayed = 0;
    for (const auto& dir : fs::directory_iterator(corpus)) {
        const std::string name = dir.path().filename().string();
        if (name == "reference") continue; // the reference files' target reads no recording
        const fuzz::ReaderTarget* target = fuzz::readerTarget(name);
        ASSERT_NE(target, nullptr) << "fuzz/corpus/" << name << " belongs to no reader target";
        fuzz::ReaderRun run(*target);
        for (const auto& file : fs::directory_iterator(dir)) {
            SCOPED_TRACE(file.path().string());
            const std::vector<uint8_t> input = bytesOf(file.path());
            run.run(input.data(), input.size());
            ++replayed;
            // An import either leaves a data set the spectrum can take or none at all.
            if (!run.st.TempPath.empty() && !run.st.ImportCancelled) {
                EXPECT_GE(run.st.Sp_Samples, 1);
                EXPECT_EQ(run.st.TraceBuf.size(), size_t(run.st.Sp_Samples) + 1);
            }
        }
    }
    useMemoryTraceStore(0);
    EXPECT_GT(replayed, 0);
}

} // namespace
} // namespace kv
