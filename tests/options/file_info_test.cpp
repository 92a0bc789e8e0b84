// The file-information window's lines for each format, on recordings generated here: the line
// texts and their order per format flag, the empty list after a Zon or DAT import, and what the
// readers of every variant add.
#include "import/radar_files.h"
#include "import/seismic_files.h"
#include "options/file_info.h"
#include "platform/numeric.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kv {
namespace {

using Lines = std::vector<std::string>;

struct InfoCase : test::RadarBench {
    Lines lines() {
        FileInfoFields f;
        frmFileInfo::Form_Load(wb, f);
        return f.List;
    }
    void importBytes(const std::vector<uint8_t>& bytes, const std::string& name, int filter = 0) {
        const std::string p = put(bytes, name);
        importAt(p, filter);
    }
    void importText(const std::string& text, const std::string& name) {
        test::writeText(home.file(name), text);
        importAt(home.file(name), 0);
    }
    void importAt(const std::string& p, int filter) {
        import(p, filter > 0 ? filter : 1);
        ASSERT_FALSE(st.TempPath.empty()) << p << " did not open";
    }
};

std::vector<int> ramp(int n) {
    std::vector<int> v;
    for (int i = 0; i < n; ++i)
        v.push_back(i * 37 % 2000 - 1000);
    return v;
}

std::vector<double> dramp(int n) {
    std::vector<double> v;
    for (int i = 0; i < n; ++i)
        v.push_back(i % 17 - 8);
    return v;
}

TEST(FileInfo, AWavShowsItsFactsAndWhetherItIsMonoOrStereoButNotFourChannels) {
    InfoCase mono;
    mono.importBytes(test::wavBytes(1, 8000, 16, ramp(4096)), "mono.wav");
    EXPECT_EQ(mono.lines(), (Lines{"Samples/trace : 1024", "Bits per data word : 16",
                                   "Sample Rate(Hz) : 8000", "Amount of scans : 4", "Mono File"}));

    InfoCase stereo;
    stereo.importBytes(test::wavBytes(2, 44100, 16, ramp(4096)), "stereo.wav");
    ASSERT_EQ(stereo.lines().size(), 5u);
    EXPECT_EQ(stereo.lines()[2], "Sample Rate(Hz) : 44100");
    EXPECT_EQ(stereo.lines()[4], "Stereo File");

    InfoCase four;
    four.importBytes(test::wavBytes(4, 8000, 16, ramp(8192)), "four.wav");
    const Lines l = four.lines();
    ASSERT_EQ(l.size(), 4u) << "four channels are neither mono nor stereo";
    EXPECT_EQ(l.back().rfind("Amount of scans : ", 0), 0u);
}

TEST(FileInfo, RadarFormatsShowScansRangeAndTimeWindow) {
    InfoCase dzt;
    dzt.importBytes(test::dztBytes(512, 16, 50.0f, 64.0f, test::u16Samples(ramp(512 * 3))),
                    "line.dzt");
    EXPECT_EQ(dzt.lines(),
              (Lines{"Samples/scan : 512", "Bits per data word : 16", "Scans/second : 64",
                     "Range(ns) : 50", "Sample Rate(Hz) : " + shortestText(dzt.st.SampleRate),
                     "Amount of scans : " + std::to_string(dzt.st.TraceCount)}));

    InfoCase rd3;
    test::writeFile(rd3.home.file("line.rd3"), test::i16Samples(ramp(8 * 5)));
    test::writeText(rd3.home.file("line.rad"), test::radText("8", "16.000000"));
    rd3.importAt(rd3.home.file("line.rd3"), 0);
    EXPECT_EQ(rd3.lines(), (Lines{"Samples/trace : 8", "Sample Rate(Hz) : 500000000",
                                  "Total Time Window (ns): 16.00", "Number of traces : 5"}));

    InfoCase dt1;
    test::writeText(dt1.home.file("line.HD"), test::hdText("    3", "6", "12.000"));
    dt1.importBytes(test::dt1Bytes({ramp(6), ramp(6), ramp(6)}), "line.DT1");
    const Lines l = dt1.lines();
    ASSERT_EQ(l.size(), 4u);
    EXPECT_EQ(l[0], "Points/trace : 6");
    EXPECT_EQ(l[2], "Total Time Window (ns): 12.00");
    EXPECT_EQ(l[3], "Number of traces : 3");
}

TEST(FileInfo, SeismicFormatsShowTheSamplesOfADataBlock) {
    InfoCase sgy;
    sgy.importBytes(test::segyBytes(true, 5, 250, {dramp(100), dramp(100)}), "x.sgy", 5);
    EXPECT_EQ(sgy.lines(), (Lines{"Number of samples in Data Block : 100", "Sample Rate(Hz) : 4000",
                                  "Number of traces : " + std::to_string(sgy.st.TraceCount)}));

    InfoCase sg2;
    test::Seg2File s;
    s.samples = 5;
    s.traces = {{1, -2, 3, -4, 5}, {10, 20, 30, 40, 50}};
    sg2.importBytes(test::seg2Bytes(s), "x.sg2", 7);
    const Lines l = sg2.lines();
    ASSERT_EQ(l.size(), 3u);
    EXPECT_EQ(l[0], "Number of samples in Data Block : 5");
    EXPECT_EQ(l[2], "Number of traces : 2");
}

TEST(FileInfo, ACsvShowsItsSweepInSeconds) {
    InfoCase b;
    std::ostringstream s;
    s << "Time,Volt\n";
    for (int i = 0; i < 600; ++i)
        s << i * 0.0005 << "," << (i % 7) << "\n";
    b.importText(s.str(), "x.csv");
    EXPECT_EQ(
        b.lines(),
        (Lines{"Samples/sweep : " + std::to_string(b.st.TraceLength), "Sample Rate(Hz) : 2000",
               "Total Time Window (s): " + formatPicture(b.st.TraceLength / 2000.0, "##0.00"),
               "Number of traces : 1"}));
}

TEST(FileInfo, ZonAndDatRecordingsLeaveTheListEmpty) {
    InfoCase zon;
    zon.importBytes(test::zonBytes(99, 4, "v1.0 x.y 50.0000E-09 ", {0x52, 0, 0, 0},
                                   {{1, 2, 3, 4}, {5, 6, 7, 8}}),
                    "line.dt");
    EXPECT_TRUE(zon.lines().empty());

    InfoCase dat;
    test::writeText(dat.home.file("x.hdr"), "1000\r\n0.001\r\n");
    std::ostringstream s;
    for (int i = 0; i < 1000; ++i)
        s << i << "\r\n";
    dat.importText(s.str(), "x.dat");
    EXPECT_TRUE(dat.lines().empty());
}

TEST(FileInfo, AProjectFileShowsItsOwnLinesOnlyAndNothingShowsWithoutADataSet) {
    InfoCase b;
    EXPECT_TRUE(b.lines().empty()) << "nothing loaded";
    b.importBytes(test::wavBytes(1, 8000, 16, ramp(4096)), "mono.wav");
    b.exportTo(b.home.file("saved.kvd"));
    b.openProject(b.home.file("saved.kvd"));
    ASSERT_TRUE(b.st.IsProject);
    EXPECT_EQ(b.lines(),
              (Lines{"Samples/trace : 1024", "Sample Rate(Hz) : 8000", "Amount of scans : 4"}));
}

TEST(FileInfo, TheHeaderLinesOfTheReadersOfEveryVariantFollow) {
    ProgramState st;
    st.TempPath = "temp.sp";
    st.IsSegyStd = true;
    st.SourceInfoLines = {"C 1 SURVEY", "Revision 1"};
    EXPECT_EQ(FileInfoLines(st), st.SourceInfoLines);
    st.IsProject = true;
    st.Sp_Samples = 8;
    st.SampleRate = 2.5;
    st.TraceCount = 3;
    EXPECT_EQ(FileInfoLines(st), (Lines{"Samples/trace : 8", "Sample Rate(Hz) : 2.5",
                                        "Amount of scans : 3", "C 1 SURVEY", "Revision 1"}));
}

} // namespace
} // namespace kv
