// No file can crash an import, hang it, or make it read outside the file: empty, truncated,
// zero-filled and random files all end in a defined outcome.
#include "commands/open.h"
#include "import/format_table.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <random>

using namespace kv;

namespace {

/// Imports `bytes` under every extension the format table knows, with and without padding to
/// a power of two; the outcome must be a data set whose working file matches its trace count,
/// or no data set.
void importEverywhere(const std::vector<uint8_t>& bytes, const std::string& what) {
    for (const std::string& ext : formatTable().extensions())
        for (const char* padding : {"1", "0"}) {
            SCOPED_TRACE(what + " as ." + ext + ", padding " + padding);
            test::Bench b;
            b.st.SettingsOverrides["gen.padding_int"] = padding;
            b.start();
            const std::string p = b.home.file("in." + ext);
            test::writeFile(p, bytes);
            b.import(p);
            if (!b.st.TempPath.empty()) {
                EXPECT_GE(b.st.TraceCount, 0);
                EXPECT_LE(int64_t(b.st.TraceCount) * b.st.Sp_Samples * 4,
                          int64_t(b.st.WorkingFileLength) + 4);
            }
            for (const auto& m : b.host.messages)
                EXPECT_EQ(m.title, "Kelvorandine®");
        }
}

} // namespace

TEST(BadInput, EmptyZeroFilledAndRandomFilesEndCleanly) {
    importEverywhere({}, "empty");
    importEverywhere(std::vector<uint8_t>(5000, 0), "zeros");
    std::mt19937 rng(1234);
    for (int i = 0; i < 5; ++i) {
        std::vector<uint8_t> r(size_t(100 + 3000 * i));
        for (auto& x : r)
            x = uint8_t(rng());
        importEverywhere(r, "random " + std::to_string(i));
    }
}

TEST(BadInput, TruncatedAndGiantHeaderWavsEndCleanly) {
    std::vector<int> s(3000, 7);
    auto good = test::wavBytes(2, 8000, 16, s);
    for (size_t cut :
         {size_t(0), size_t(3), size_t(22), size_t(40), size_t(44), size_t(45), size_t(1000)}) {
        SCOPED_TRACE(cut);
        test::Bench b;
        b.start();
        const std::string p = b.home.file("cut.wav");
        test::writeFile(p, std::vector<uint8_t>(good.begin(), good.begin() + long(cut)));
        b.import(p);
    }
    // Channels 32767, a negative rate: sizes that would ask for gigabytes or divide by zero.
    for (int16_t channels : {int16_t(0), int16_t(-1), int16_t(32767)}) {
        SCOPED_TRACE(channels);
        auto bytes = good;
        bytes[22] = uint8_t(channels & 0xFF);
        bytes[23] = uint8_t((channels >> 8) & 0xFF);
        bytes[24] = bytes[25] = bytes[26] = bytes[27] = 0xFF;
        test::Bench b;
        b.start();
        const std::string p = b.home.file("giant.wav");
        test::writeFile(p, bytes);
        b.import(p);
        if (channels <= 0) {
            EXPECT_TRUE(b.st.TempPath.empty());
        }
    }
}
