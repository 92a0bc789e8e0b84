// No radar recording or project file can crash an open, hang it or make it read outside the
// file: each format, fed empty, truncated, zero-filled and random files (and the same for its
// companion header), ends with a consistent data set or with no data set.
#include "commands/open.h"
#include "import/radar_files.h"

#include <gtest/gtest.h>

#include <random>

using namespace kv;
using namespace kv::test;

namespace {

/// A recording and, for the formats that have one, its companion header.
struct Sample {
    std::string name, companionName;
    std::vector<uint8_t> bytes, companion;
};

Sample goodSample(const std::string& format) {
    std::vector<int> ramp;
    for (int i = 0; i < 64; ++i)
        ramp.push_back(i * 11 - 300);
    if (format == "dzt") return {"in.dzt", "", dztBytes(16, 16, 8.0f, 10.0f, u16Samples(ramp)), {}};
    if (format == "rd3") {
        const std::string rad = radText("16", "32.0");
        return {"in.rd3", "in.rad", i16Samples(ramp), {rad.begin(), rad.end()}};
    }
    if (format == "dt1") {
        const std::string hd = hdText("4", "16", "32.0");
        std::vector<std::vector<int>> t(4, std::vector<int>(ramp.begin(), ramp.begin() + 16));
        return {"in.DT1", "in.HD", dt1Bytes(t), {hd.begin(), hd.end()}};
    }
    if (format == "zon")
        return {"in.dt", "", zonBytes(120, 16, "a.b.50.0000E-09 ", {0x52, 0, 0, 0}, {ramp}), {}};
    // A project file of 4 traces of 16 floats.
    std::vector<uint8_t> k(59, 0);
    putLe<int32_t>(k, 19, 16);
    putLe<int32_t>(k, 29, 4);
    putLe<double>(k, 41, 1000.0);
    for (int v : ramp)
        putLe<float>(k, k.size(), float(v));
    return {"in.kvd", "", k, {}};
}

enum class Damage { Empty, CutInHeader, CutInData, Zeros, Random, CompanionCut, CompanionRandom };

std::vector<uint8_t> damage(std::vector<uint8_t> b, Damage d, bool companion, std::mt19937& rng) {
    const bool onThis = companion == (d == Damage::CompanionCut || d == Damage::CompanionRandom);
    if (!onThis) return b;
    switch (d) {
    case Damage::Empty:
        return {};
    case Damage::CutInHeader:
        b.resize(std::min<size_t>(b.size(), 40));
        return b;
    case Damage::CutInData:
    case Damage::CompanionCut:
        b.resize(b.size() * 2 / 3);
        return b;
    case Damage::Zeros:
        return std::vector<uint8_t>(b.size(), 0);
    case Damage::Random:
    case Damage::CompanionRandom:
        for (auto& x : b)
            x = uint8_t(rng());
        return b;
    }
    return b;
}

struct BadRadar : ::testing::TestWithParam<std::tuple<std::string, Damage>> {};

std::string caseName(const ::testing::TestParamInfo<BadRadar::ParamType>& info) {
    static const char* names[] = {"Empty",  "CutInHeader",  "CutInData",      "ZeroFilled",
                                  "Random", "CompanionCut", "CompanionRandom"};
    return std::get<0>(info.param) + "_" + names[int(std::get<1>(info.param))];
}

} // namespace

TEST_P(BadRadar, EndsWithAConsistentDataSetOrNone) {
    const auto& [format, d] = GetParam();
    Sample s = goodSample(format);
    for (unsigned seed = 1; seed <= (d == Damage::Random || d == Damage::CompanionRandom ? 8 : 1);
         ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        test::Bench b;
        b.start();
        writeFile(b.home.file(s.name), damage(s.bytes, d, false, rng));
        if (!s.companionName.empty())
            writeFile(b.home.file(s.companionName), damage(s.companion, d, true, rng));
        b.host.queueFile(b.home.file(s.name), 1);
        if (format == "kvd")
            mnuOimp_Click(b.wb);
        else
            mnuOpen_Click(b.wb);
        for (const auto& m : b.host.messages) {
            EXPECT_EQ(m.text, "File corrupted!");
            EXPECT_EQ(m.title, "Kelvorandine®");
        }
        if (d == Damage::Empty) {
            // Only Zon finds its header in the recording itself and reports it missing; an
            // empty DZT or project fails its header arithmetic without a word, and an empty
            // RD3 or DT1 beside a good header opens with zero or all-zero traces.
            EXPECT_EQ(b.st.TempPath.empty(), format != "rd3" && format != "dt1");
            EXPECT_EQ(b.host.messages.size(), format == "zon" ? 1u : 0u);
        }
        if (b.st.TempPath.empty()) {
            EXPECT_FALSE(b.st.SpectrumOpen);
            continue;
        }
        EXPECT_TRUE(b.host.messages.empty()) << "a message means no data set";
        // A DZT shorter than its header gives a negative count: no traces at all.
        const int64_t traces = std::max<int64_t>(int64_t(b.st.TraceCount) * b.st.Sp_Samples * 4, 0);
        const int64_t size = int64_t(test::readText(b.st.TempPath).size());
        EXPECT_GE(size, traces) << "every trace is in the working file";
        EXPECT_LE(size, traces + 4);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryRadarFormat, BadRadar,
                         ::testing::Combine(::testing::Values("dzt", "rd3", "dt1", "zon", "kvd"),
                                            ::testing::Values(Damage::Empty, Damage::CutInHeader,
                                                              Damage::CutInData, Damage::Zeros,
                                                              Damage::Random)),
                         caseName);
INSTANTIATE_TEST_SUITE_P(CompanionHeaders, BadRadar,
                         ::testing::Combine(::testing::Values("rd3", "dt1"),
                                            ::testing::Values(Damage::CompanionCut,
                                                              Damage::CompanionRandom)),
                         caseName);
