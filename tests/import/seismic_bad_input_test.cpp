// Damaged seismic, scope and table files: every reader, fed a valid file cut short, an empty
// file, zeros or noise, ends either with a data set whose working file matches its facts or
// with no data set, and never reads outside the file.
#include "seismic_files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <random>

using namespace kv;

namespace {

struct ReaderCase {
    const char* name;
    const char* ext;
    int filter; // with the factory Fil 1
    std::vector<uint8_t> (*good)();
};

std::vector<uint8_t> goodSegy() {
    std::vector<std::vector<double>> t(6, std::vector<double>(300, 1.5));
    return test::segyBytes(true, 5, 250, t);
}
std::vector<uint8_t> goodSegyHigh() {
    std::vector<std::vector<double>> t(6, std::vector<double>(300, -7));
    return test::segyBytes(false, 3, 250, t);
}
std::vector<uint8_t> goodSeg2() {
    test::Seg2File s;
    s.format = 4;
    s.samples = 64;
    s.traces = std::vector<std::vector<double>>(3, std::vector<double>(64, 2.5));
    return test::seg2Bytes(s);
}
std::vector<uint8_t> text(const std::string& s) {
    return {s.begin(), s.end()};
}
std::vector<uint8_t> goodCsv() {
    std::string s = "Time,Volt\n";
    for (int i = 0; i < 50; ++i)
        s += std::to_string(i) + ",\"" + std::to_string(i % 5) + "\",\n";
    return text(s);
}
std::vector<uint8_t> goodDat() {
    std::string s;
    for (int i = 0; i < 40; ++i)
        s += std::to_string(i * 0.5) + "\n";
    return text(s);
}
std::vector<uint8_t> goodSht() {
    auto b = text("Waveform Tabular Document\r\nTEKTRONIX\r\nCh1 1 V 100 us\r\nSamples 64\r\n");
    b.resize(b.size() + 256, 0x3F);
    return b;
}

const ReaderCase kReaders[] = {
    {"Seismic", "sgy", 5, goodSegy}, {"SeismicHighFirst", "sgy", 5, goodSegyHigh},
    {"Radsys", "sgy", 6, goodSegy},  {"Seg2", "sg2", 7, goodSeg2},
    {"SprScan", "sg2", 8, goodSeg2}, {"Csv", "csv", 11, goodCsv},
    {"DatHdr", "dat", 12, goodDat},  {"Sht", "SHT", 2, goodSht},
};

class DamagedFile : public ::testing::TestWithParam<ReaderCase> {
  protected:
    /// Imports `bytes`, with padding to a power of two or without; true when a data set came
    /// of it.
    bool importBytes(const std::vector<uint8_t>& bytes, const std::string& what,
                     bool padding = true) {
        SCOPED_TRACE(what + (padding ? "" : ", no padding"));
        const ReaderCase& r = GetParam();
        test::Bench b;
        b.st.SettingsOverrides["gen.padding_int"] = padding ? "1" : "0";
        b.start();
        const std::string p = b.home.file(std::string("in.") + r.ext);
        test::writeFile(p, bytes);
        if (std::string(r.ext) == "dat") test::writeText(b.home.file("in.hdr"), "40\n0.01\n");
        b.import(p, r.filter);
        for (const auto& m : b.host.messages)
            EXPECT_EQ(m.title, "Kelvorandine®");
        if (b.st.TempPath.empty()) return false;
        EXPECT_GE(b.st.TraceCount, 0);
        const auto w = b.working();
        // The working file never holds more than the facts say (the scope reader writes one
        // element more than a trace).
        EXPECT_LE(w.size(), size_t(std::max(b.st.TraceCount, 1)) * size_t(b.st.Sp_Samples) + 1);
        EXPECT_EQ(int64_t(w.size()) * 4, b.st.WorkingFileLength);
        return true;
    }
};

} // namespace

TEST_P(DamagedFile, EndsInADefinedOutcome) {
    const auto good = GetParam().good();
    ASSERT_TRUE(importBytes(good, "intact"));
    for (size_t cut : {size_t(0), size_t(1), size_t(2), size_t(20), size_t(40), size_t(3224),
                       size_t(3600), size_t(3841), good.size() / 2, good.size() - 1}) {
        if (cut > good.size()) continue;
        for (bool padding : {true, false})
            importBytes(std::vector<uint8_t>(good.begin(), good.begin() + long(cut)),
                        "cut at " + std::to_string(cut), padding);
    }
    importBytes(std::vector<uint8_t>(good.size(), 0), "zeros");
    importBytes(std::vector<uint8_t>(good.size(), 0xFF), "all ones");
    std::mt19937 rng(99);
    for (int i = 0; i < 4; ++i) {
        auto noisy = good;
        for (int k = 0; k < 40; ++k)
            noisy[rng() % noisy.size()] = uint8_t(rng());
        importBytes(noisy, "good with noise " + std::to_string(i));
        importBytes(noisy, "good with noise " + std::to_string(i), false);
        std::vector<uint8_t> random(200 + 2000 * size_t(i));
        for (auto& x : random)
            x = uint8_t(rng());
        importBytes(random, "random " + std::to_string(i));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryReader, DamagedFile, ::testing::ValuesIn(kReaders),
                         [](const auto& info) { return std::string(info.param.name); });
