// The native project file: what Export writes, and what "Open Kelvorandine File" makes of it.
#include "commands/commands.h"
#include "commands/export.h"
#include "commands/open.h"
#include "import/radar_files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace kv;
using test::getLe;

namespace {

struct KvdCase : test::RadarBench {
    /// A 16-bit mono WAV of `traces` traces of 1024 samples, sample i = i % 1000 - 500.
    void importWav(int traces) {
        std::vector<int> s;
        for (int i = 0; i < traces * 1024; ++i)
            s.push_back(i % 1000 - 500);
        import(put(test::wavBytes(1, 8000, 16, s), "src.wav"));
    }
};

} // namespace

TEST(ProjectWrite, HeaderAtFixedPlacesAndOneSpareFloatAtTheEnd) {
    KvdCase b;
    b.importWav(3);
    const std::string out = b.home.file("p.KVD");
    b.exportTo(out);
    auto o = b.bytesOf(out);
    ASSERT_EQ(o.size(), 59u + 3 * 1024 * 4 + 4);
    EXPECT_EQ(getLe<int32_t>(o, 0), 8 + (13 << 16));
    EXPECT_EQ(std::string(o.begin() + 4, o.begin() + 17), "Kelvorandine\xAE");
    EXPECT_EQ(getLe<int32_t>(o, 19), 1024);
    EXPECT_EQ(getLe<int32_t>(o, 29), 3);
    EXPECT_EQ(getLe<int16_t>(o, 39), 16);
    EXPECT_EQ(getLe<double>(o, 41), 8000.0);
    EXPECT_EQ(getLe<float>(o, 49), 32767.0f);
    for (size_t i : {size_t(17), size_t(18), size_t(23), size_t(28), size_t(58)})
        EXPECT_EQ(o[i], 0) << i;
    auto w = b.working();
    for (size_t i = 0; i < w.size(); ++i)
        ASSERT_EQ(getLe<float>(o, 59 + 4 * i), w[i]) << i;
    EXPECT_EQ(getLe<float>(o, 59 + 4 * w.size()), 0.0f);
}

TEST(ProjectRead, TracesComeBackWithOneByteMoreAndTheRestUnchanged) {
    KvdCase b;
    b.importWav(3);
    const auto traces = b.working();
    const std::string out = b.home.file("p.kvd");
    b.exportTo(out);

    // A different recording in between: what the project file does not hold stays from it.
    b.import(b.put(test::wavBytes(2, 11025, 8, std::vector<int>(4 * 1024, 3)), "st.wav"));
    const int32_t workingLength = b.st.WorkingFileLength;
    b.st.StSp = 0; // the window buttons show all the same
    b.st.StOs = 1;
    const int yieldsBefore = b.host.yields;
    b.openProject(out);
    ASSERT_FALSE(b.st.TempPath.empty());
    EXPECT_EQ(b.host.dialogTitles.back(), "Open Kelvorandine File");
    EXPECT_EQ(b.host.dialogFilters.back(), "Kelvorandine File(*.kvd)|*.kvd|");
    EXPECT_TRUE(b.st.IsProject);
    EXPECT_FALSE(b.st.IsWav);
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    EXPECT_EQ(b.st.TraceCount, 3);
    EXPECT_EQ(b.st.SourceLength, 3 * 1024 * 4);
    EXPECT_EQ(b.st.FullScalePos, 32767.0f);
    EXPECT_EQ(b.st.ScaleBits, 32767.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 128.0f) << "not saved: the 8-bit import's value stays";
    EXPECT_EQ(b.st.Channels, 2);
    EXPECT_EQ(b.st.StereoFlag, 1);
    EXPECT_EQ(b.st.WorkingFileLength, workingLength);
    EXPECT_EQ(b.cmd.caption, "Kelvorandine   p.kvd");
    EXPECT_EQ(b.cmd.panel(3), "FFT Bins: 512");
    EXPECT_TRUE(b.cmd.button(50).visible);
    EXPECT_TRUE(b.st.OscOpen);
    EXPECT_EQ(b.host.yields, yieldsBefore) << "the copy neither yields nor offers Cancel";

    const std::string t = test::readText(b.st.TempPath);
    ASSERT_EQ(t.size(), 3u * 1024 * 4 + 1);
    EXPECT_EQ(b.working(), traces);
    EXPECT_EQ(t.back(), 0) << "the first byte of the spare float";
}

TEST(ProjectRead, OverwritesTheOldWorkingFileInPlaceAndZeroFillsAShortFile) {
    KvdCase b;
    b.importWav(1);
    const std::string out = b.home.file("one.kvd");
    b.exportTo(out);
    // Cut the project short in its trace, and leave a longer temp.sp behind.
    auto o = b.bytesOf(out);
    o.resize(59 + 100 * 4);
    b.put(o, "one.kvd");
    const std::string temp = b.home.file("temp.sp");
    b.importWav(4);
    ASSERT_EQ(test::readText(temp).size(), 4u * 1024 * 4);
    b.openProject(out);
    ASSERT_FALSE(b.st.TempPath.empty());
    auto w = b.working();
    ASSERT_EQ(w.size(), 4u * 1024) << "the tail of the longer file stays";
    EXPECT_EQ(w[99], 99.0f - 500);
    EXPECT_EQ(w[100], 0.0f) << "missing bytes read as zero";
    EXPECT_EQ(w[1023], 0.0f);
    EXPECT_EQ(w[1025], 1025.0f - 1000 - 500) << "from the earlier recording";
}

TEST(ProjectRead, CancelOrAnImpossibleHeaderEndsWithNoDataSetAndNoMessage) {
    KvdCase b;
    b.importWav(1);
    b.host.queueCancel();
    mnuOimp_Click(b.wb);
    EXPECT_TRUE(b.st.TempPath.empty());
    EXPECT_FALSE(b.st.SpectrumOpen);

    std::vector<uint8_t> h(59, 0);
    test::putLe<int32_t>(h, 19, 1 << 20);
    test::putLe<int32_t>(h, 29, 1 << 12); // 16 GiB of traces: does not fit the source length
    b.openProject(b.put(h, "huge.kvd"));
    EXPECT_TRUE(b.st.TempPath.empty());
    for (int32_t sp : {(1 << 24) + 1, 0}) { // a trace too long to hold, or none at all
        test::putLe<int32_t>(h, 19, sp);
        test::putLe<int32_t>(h, 29, 0);
        b.openProject(b.put(h, "long.kvd"));
        EXPECT_TRUE(b.st.TempPath.empty()) << sp;
    }
    EXPECT_TRUE(b.host.messages.empty());
}

TEST(ProjectWrite, ExportsTempSpEvenForAStereoRecordingAndOnlyKnownExtensions) {
    KvdCase b;
    std::vector<int> s(2 * 2048, 100);
    b.import(b.put(test::wavBytes(2, 8000, 16, s), "st.wav"));
    b.exportTo(b.home.file("st.kvd"));
    auto o = b.bytesOf(b.home.file("st.kvd"));
    ASSERT_EQ(o.size(), 59u + 2 * 1024 * 4 + 4);
    EXPECT_EQ(getLe<float>(o, 59), 0.0f) << "temp.sp is empty: the left channel is elsewhere";
    b.exportTo(b.home.file("x.txt"));
    EXPECT_FALSE(std::filesystem::exists(b.home.file("x.txt")));
}

TEST(ProjectCommands, MenuExportAndToolbarOpenRoundTripTheDataSet) {
    KvdCase b;
    b.importWav(2);
    const auto traces = b.working();
    const std::string out = b.home.file("cmd.kvd");
    b.host.queueFile(out, 1);
    ASSERT_TRUE(menuCommand(b.wb, "mnuExport"));
    ASSERT_TRUE(std::filesystem::exists(out));

    b.host.queueFile(out, 1);
    pressButton(b.wb, 2); // "Open"
    EXPECT_TRUE(b.st.IsProject);
    EXPECT_EQ(b.st.TraceCount, 2);
    EXPECT_EQ(b.working(), traces);
}
