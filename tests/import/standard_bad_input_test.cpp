// No file can crash, hang or mislead the "all variants" readers: empty, zero-filled, random,
// truncated and damaged files either give a data set whose working file matches its trace
// count, or one message and no data set.
#include "import/variant_files.h"

#include <gtest/gtest.h>

#include <random>

using namespace kv;

namespace {

struct Reader {
    ReaderFn read;
    const char* ext;
};
const Reader kReaders[] = {{ReadDztStd, "dzt"}, {ReadWavStd, "wav"}, {ReadCsvStd, "csv"}};

void endsCleanly(const Reader& r, const std::vector<uint8_t>& bytes, const std::string& what) {
    SCOPED_TRACE(what + " as ." + r.ext);
    test::StdBench b;
    const bool loaded = b.read(r.read, b.put(bytes, std::string("in.") + r.ext));
    if (loaded) {
        EXPECT_TRUE(b.host.messages.empty());
        EXPECT_GE(b.st.TraceCount, 1);
        EXPECT_EQ(int64_t(b.st.WorkingFileLength), int64_t(b.st.TraceCount) * b.st.Sp_Samples * 4);
        EXPECT_GT(b.st.FullScalePos, 0.0f);
        EXPECT_GT(b.st.SampleRate, 0.0);
    } else {
        ASSERT_EQ(b.host.messages.size(), 1u);
        EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
        EXPECT_FALSE(b.host.messages[0].text.empty());
        EXPECT_TRUE(b.st.TempPath.empty());
        EXPECT_TRUE(b.st.SourceInfoLines.empty());
    }
}

/// A small good file of each kind.
std::vector<uint8_t> goodFile(const std::string& ext) {
    if (ext == "dzt") {
        test::DztLayout s;
        s.bits = 32;
        s.scans = {{{0, 0, 5, -5}, {1, 0, 7, -7}}, {{0, 0, 9, -9}, {1, 0, 3, -3}}};
        return test::dztFile(s);
    }
    if (ext == "wav") {
        test::RiffBuilder r;
        r.chunk("LIST", std::vector<uint8_t>(11, 'x'));
        r.chunk("fmt ", test::fmtChunk(3, 2, 8000, 32, true));
        r.chunk("data", test::frames(SampleCoding::F32, {{0.5, -0.25, 1, 2}, {3, 4, 5, 6}}));
        return r.bytes;
    }
    const std::string text = "\"Sampling Frequency (Hz)=\",1000\nTime,CH1,CH2\n0,1,2\n0.001,3,4\n"
                             "0.002,5,6\n";
    return {text.begin(), text.end()};
}

} // namespace

TEST(StdBadInput, EmptyZeroFilledAndRandomFilesEndCleanly) {
    std::mt19937 rng(99);
    for (const Reader& r : kReaders) {
        endsCleanly(r, {}, "empty");
        endsCleanly(r, std::vector<uint8_t>(5000, 0), "zeros");
        for (int i = 0; i < 4; ++i) {
            std::vector<uint8_t> bytes(size_t(50 + 2000 * i));
            for (auto& x : bytes)
                x = uint8_t(rng());
            endsCleanly(r, bytes, "random " + std::to_string(i));
        }
    }
}

TEST(StdBadInput, TruncatedAndDamagedFilesEndCleanly) {
    std::mt19937 rng(7);
    for (const Reader& r : kReaders) {
        const auto good = goodFile(r.ext);
        endsCleanly(r, good, "whole");
        for (size_t cut = 0; cut < good.size(); cut += 1 + good.size() / 23)
            endsCleanly(r, std::vector<uint8_t>(good.begin(), good.begin() + long(cut)),
                        "cut at " + std::to_string(cut));
        // Single bytes set to extremes where the headers are.
        for (int i = 0; i < 60; ++i) {
            auto bytes = good;
            const size_t at = rng() % std::min<size_t>(bytes.size(), r.ext[0] == 'd' ? 128 : 96);
            bytes[at] = (i % 2) ? 0xFF : uint8_t(rng());
            endsCleanly(r, bytes, "byte " + std::to_string(at) + " damaged");
        }
    }
}

TEST(StdBadInput, AHeaderPromisingMillionsOfSamplesIsRefusedBeforeAnythingIsWritten) {
    // A WAV whose trace length in the settings would ask for more than a trace can take.
    test::StdBench b;
    b.st.Sp_Samples = 1 << 24;
    b.st.NewDS = 4;
    EXPECT_FALSE(b.read(ReadWavStd, b.put(goodFile("wav"), "huge.wav")));
    EXPECT_EQ(b.message(), "The samples per trace in the settings (16777216) cannot cut a "
                           "recording.");
}
