// The options dialog over a workbench without windows: each page's settings reach the state and
// SP.ini through OK, Cancel leaves both as they were, a new sample count reads the recording
// again, and the palette page picks and adds palette files.
#include "import/radar_files.h"
#include "options/palette.h"
#include "options/settings_dialog.h"
#include "platform/files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>

namespace kv {
namespace {

/// The value of `key` in `section` of the INI text at `path` ("" when absent).
std::string iniValue(const std::string& path, const std::string& section, const std::string& key) {
    std::istringstream in(test::readText(path));
    std::string line, current;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() > 2 && line.front() == '[') current = line.substr(1, line.size() - 2);
        const auto eq = line.find('=');
        if (current == section && eq != std::string::npos && line.substr(0, eq) == key)
            return line.substr(eq + 1);
    }
    return "";
}

struct Options : ::testing::Test {
    test::Bench b;
    SettingsFields f;
    std::string ini() const { return b.home.file("SP.ini"); }

    void SetUp() override { b.start(); }
    /// A mono recording of `samples` 16-bit samples at 8 kHz, imported.
    void importWav(int samples) {
        std::vector<int> s(static_cast<size_t>(samples));
        for (size_t i = 0; i < s.size(); ++i)
            s[i] = int((i * 91) % 4000) - 2000;
        const std::string p = b.home.file("rec.wav");
        test::writeFile(p, test::wavBytes(1, 8000, 16, s));
        b.import(p);
        ASSERT_FALSE(b.st.TempPath.empty());
    }
    void load() { dlgSettings::Form_Load(b.wb, f); }
    bool ok() { return dlgSettings::Command3_Click(b.wb, f); }
};

struct PageCase {
    const char* what;
    std::function<void(SettingsFields&)> set;
    const char* section;
    const char* key;
    const char* saved;
    std::function<bool(const ProgramState&)> state;
};

TEST_F(Options, EveryPageChangesItsIniKeyAndTheState) {
    const std::vector<PageCase> cases = {
        {"default file type", [](auto& f) { f.cmbFile = 4; }, "Gen", "Fil", "5",
         [](auto& s) { return s.Fil == 5; }},
        {"start-up views",
         [](auto& f) {
             f.chStartUp = {false, true, true, true};
         },
         "Gen", "StOs", "1",
         [](auto& s) { return s.StSp == 0 && s.StOs == 1 && s.StPh == 1 && s.StWat == 1; }},
        {"padding", [](auto& f) { f.cmbPadding = 1; }, "Gen", "Padding_Int", "0",
         [](auto& s) { return s.Padding_Int == 0 && !s.PadWithZero; }},
        {"window", [](auto& f) { f.cmbWindow = 6; }, "FFT", "FFT_Window", "7",
         [](auto& s) { return s.FFT_Window == 7; }},
        {"display mode", [](auto& f) { f.cmbViewMode = 2; }, "FFT", "ModeFFT", "3",
         [](auto& s) { return s.ModeFFT == 3; }},
        {"X scale", [](auto& f) { f.XSc = 1; }, "FFT", "DrSet", "2",
         [](auto& s) { return s.DrSet == 2; }},
        {"Y scale", [](auto& f) { f.YSc = 0; }, "FFT", "YScale", "1",
         [](auto& s) { return s.YLinear && s.YScale == 1; }},
        {"plot range", [](auto& f) { f.cmbPlotRange = "-80"; }, "FFT", "PlotRange", "80",
         [](auto& s) { return s.PlotRange == 80; }},
        {"dB offset", [](auto& f) { f.cmbOffset_Log = "-20"; }, "FFT", "Offset_Log", "-20",
         [](auto& s) { return s.Offset_Log == -20; }},
        {"dBc", [](auto& f) { f.optdBFS = false; }, "FFT", "dBFS", "0",
         [](auto& s) { return !s.dBFS_On; }},
        {"THD as %", [](auto& f) { f.cmbTHD = 1; }, "AnFFT", "THDdB", "0",
         [](auto& s) { return s.THDdB == 0; }},
        {"bar graph", [](auto& f) { f.opLG = 1; }, "FFT", "As_Bar", "1",
         [](auto& s) { return s.AS_Bar == 1; }},
        {"spectrum grid", [](auto& f) { f.CH = false; }, "FFT", "FFT_ShowGrid", "0",
         [](auto& s) { return s.FFT_ShowGrid == 0; }},
        {"line colour", [](auto& f) { f.FFT_LineColor = "255"; }, "FFT", "FFT_LineColor", "255",
         [](auto& s) { return s.FFT_LineColor == "255"; }},
        {"average block", [](auto& f) { f.cmbAvBlock = "4"; }, "FFT", "AverVal", "4",
         [](auto& s) { return s.AverVal == 4; }},
        {"dB bandwidth", [](auto& f) { f.cmbBred = "10"; }, "AnFFT", "Bred", "10",
         [](auto& s) { return s.Bred == 10; }},
        {"O-scope reference", [](auto& f) { f.txtReference = "3.5"; }, "TimeWindow", "Reference",
         "3.5", [](auto& s) { return s.Reference == 3.5f; }},
        {"volts per division", [](auto& f) { f.txtRefTime = "0.25"; }, "TimeWindow", "RefDel",
         "0.25", [](auto& s) { return s.RefDel == 0.25f; }},
        {"vertical scale", [](auto& f) { f.cmbShowVertical = 0; }, "TimeWindow", "ShowVertical",
         "1", [](auto& s) { return s.ShowVertical == 1; }},
        {"O-scope grid", [](auto& f) { f.CH_t = false; }, "TimeWindow", "ShowGrid", "0",
         [](auto& s) { return s.ShowGrid == 0; }},
        {"windowed O-scope", [](auto& f) { f.Combo1 = 1; }, "TimeWindow", "TimeWindowed", "1",
         [](auto& s) { return s.TimeWindowed == 1; }},
        {"O-scope background", [](auto& f) { f.Time_BackColor = "42"; }, "TimeWindow",
         "Time_BackColor", "42", [](auto& s) { return s.Time_BackColor == "42"; }},
        {"phase grid", [](auto& f) { f.chFasa = false; }, "Fasa", "F_ShowGrid", "0",
         [](auto& s) { return s.F_ShowGrid == 0; }},
        {"phase grid colour", [](auto& f) { f.F_GridColor = "7"; }, "Fasa", "F_GridColor", "7",
         [](auto& s) { return s.F_GridColor == "7"; }},
        {"waterfall kind", [](auto& f) { f.optTime = true; }, "Gen", "BscanShow", "1",
         [](auto& s) { return s.BscanShow == 1; }},
        {"down-sampling", [](auto& f) { f.chDS = true; }, "Gen", "NewDS", "1",
         [](auto& s) { return s.DownsampleEnabled == 1; }},
    };
    for (const auto& c : cases) {
        test::Bench fresh;
        fresh.start();
        SettingsFields fields;
        dlgSettings::Form_Load(fresh.wb, fields);
        c.set(fields);
        EXPECT_FALSE(dlgSettings::Command3_Click(fresh.wb, fields)) << c.what;
        EXPECT_EQ(iniValue(fresh.home.file("SP.ini"), c.section, c.key), c.saved) << c.what;
        EXPECT_TRUE(c.state(fresh.st)) << c.what;
        EXPECT_TRUE(fresh.host.messages.empty()) << c.what;
    }
}

TEST_F(Options, CancellingChangesNothingInTheStateOrTheFile) {
    importWav(8 * 1024);
    const std::string before = test::readText(ini());
    const auto old = SettingsSnapshot::of(b.st);
    load();
    f.cmbFFT = "2048";
    dlgSettings::cmbFFT_Click(b.wb, f);
    EXPECT_EQ(b.st.Sp_Samples, 2048) << "the dialog works on the live state";
    EXPECT_EQ(b.st.TraceCount, 2) << "counted with the divisor of 8, halved";
    f.chDS = true;
    dlgSettings::chDS_Click(b.wb, f);
    f.cmbDS_Step = "4";
    dlgSettings::cmbDS_Step_Click(b.wb, f);
    EXPECT_EQ(b.st.NewDS, 4);
    f.cmbWindow = 2;
    f.FFT_BackColor = "1234";
    dlgSettings::Command1_Click(b.wb, f);
    EXPECT_EQ(test::readText(ini()), before);
    const auto now = SettingsSnapshot::of(b.st);
    EXPECT_EQ(now.Sp_Samples, old.Sp_Samples);
    EXPECT_EQ(now.TraceCount, 8);
    EXPECT_EQ(now.NewDS, 1);
    EXPECT_EQ(now.FFT_Window, old.FFT_Window);
    EXPECT_EQ(now.FFT_BackColor, old.FFT_BackColor);
    EXPECT_EQ(b.st.FftRe.size(), old.Sp_Samples + 1u) << "the FFT is back at the old length";
}

TEST_F(Options, ANewSampleCountReadsTheRecordingAgain) {
    importWav(8 * 1024);
    ASSERT_EQ(b.st.TraceCount, 8);
    load();
    f.cmbFFT = "2048";
    dlgSettings::cmbFFT_Click(b.wb, f);
    EXPECT_EQ(f.cmbBins, "1024");
    b.views.log.clear();
    EXPECT_FALSE(ok());
    EXPECT_EQ(iniValue(ini(), "Gen", "Sp_Samples"), "2048");
    EXPECT_EQ(b.st.Sp_Samples, 2048);
    EXPECT_EQ(b.st.TraceCount, 4) << "read again: every trace of the file, not half of them";
    EXPECT_EQ(b.working().size(), 8u * 1024u);
    EXPECT_EQ(b.st.LastTrace, 3);
    EXPECT_NE(std::find(b.views.log.begin(), b.views.log.end(), "unload Spectrum"),
              b.views.log.end());
    EXPECT_NE(std::find(b.views.log.begin(), b.views.log.end(), "firstDraw Spectrum"),
              b.views.log.end());
}

TEST_F(Options, ANewSampleCountWithoutAReReadLaysTheOpenRadargramOutAgain) {
    // A radar line is not read again: the views stay and are reloaded in place.
    std::vector<int> values(512 * 8);
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = int(i % 512) * 50 - 12800;
    test::writeFile(b.home.file("line.rd3"), test::i16Samples(values));
    test::writeText(b.home.file("line.rad"), test::radText("512", "100.0"));
    for (int kind : {1, 0}) {
        b.import(b.home.file("line.rd3"));
        ASSERT_EQ(b.st.Sp_Samples, 512);
        b.st.BscanShow = int16_t(kind);
        b.wb.views.loadView(b.wb, kind == 1 ? ViewId::Radargram : ViewId::Waterfall);
        load();
        f.cmbFFT = "256";
        dlgSettings::cmbFFT_Click(b.wb, f);
        b.views.log.clear();
        EXPECT_FALSE(ok());
        EXPECT_EQ(b.st.Sp_Samples, 256);
        const auto& log = b.views.log;
        const auto redraw = std::find(log.begin(), log.end(), "redraw Radargram");
        const auto update = std::find(log.begin(), log.end(), "command Radargram UpdateSamp");
        if (kind == 1) {
            ASSERT_NE(update, log.end());
            EXPECT_LT(redraw, update) << "after the reload, at the new length";
            EXPECT_EQ(std::count(log.begin(), log.end(), "command Radargram UpdateSamp"), 1);
        } else {
            EXPECT_EQ(update, log.end()) << "the frequency waterfall has no rows to rebuild";
        }
        // The same length again rebuilds nothing.
        load();
        b.views.log.clear();
        ok();
        EXPECT_EQ(std::find(b.views.log.begin(), b.views.log.end(), "command Radargram UpdateSamp"),
                  b.views.log.end());
        b.wb.views.unloadView(b.wb, kind == 1 ? ViewId::Radargram : ViewId::Waterfall);
    }
}

TEST_F(Options, TheReadoutsFollowTheSamplesAndTheStep) {
    importWav(8 * 1024);
    load();
    EXPECT_EQ(f.lblSamplRate, "8.00 kHz");
    EXPECT_EQ(f.lblFFT_Res, "15.63 Hz") << "8000 / 512 bins";
    EXPECT_EQ(f.lblMaxFr, "4.00 kHz");
    f.cmbBins = "2048";
    dlgSettings::cmbBins_Click(b.wb, f);
    EXPECT_EQ(f.cmbFFT, "4096");
    EXPECT_EQ(f.lblFFT_Res, "3.91 Hz");
    EXPECT_EQ(frequencyText(2.5e6), "2.50 MHz");
}

TEST_F(Options, AnAverageLongerThanTheRecordingIsRefusedAndTheDialogStays) {
    importWav(8 * 1024);
    const std::string before = test::readText(ini());
    load();
    f.cmbViewMode = 3;
    f.cmbAvBlock = "100";
    EXPECT_TRUE(ok());
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "Change Averege value!");
    EXPECT_EQ(test::readText(ini()), before);
}

TEST_F(Options, BitsShowAQuarterOfFullScaleAndVoltPutsFiveVolts) {
    importWav(8 * 1024);
    load();
    f.cmbShowVertical = 1;
    dlgSettings::cmbShowVertical_Click(b.wb, f);
    EXPECT_EQ(f.txtRefTime, "8191") << "32767 / 4, whole part";
    EXPECT_FALSE(f.txtReferenceEnabled);
    f.cmbShowVertical = 0;
    dlgSettings::cmbShowVertical_Click(b.wb, f);
    EXPECT_EQ(f.txtReference, "5");
    EXPECT_EQ(f.txtRefTime, "0.625");
}

TEST_F(Options, AZoomedWaterfallTurnsSpanOnAndOneToOneTurnsItOff) {
    importWav(8 * 1024);
    load();
    f.cmbWView = 2;
    ok();
    EXPECT_EQ(b.st.WaterfallZoom, 4);
    EXPECT_TRUE(b.st.SpanActive);
    EXPECT_FLOAT_EQ(b.st.SpanHighFreq, b.st.MaxFreq / 4);
    load();
    f.cmbWView = 0;
    ok();
    EXPECT_FALSE(b.st.SpanActive);
}

TEST_F(Options, AnOpenWaterfallBecomesTheOtherKindWithTheSetting) {
    importWav(8 * 1024);
    b.wb.views.loadView(b.wb, ViewId::Waterfall);
    load();
    f.optTime = true;
    b.views.log.clear();
    ok();
    EXPECT_TRUE(b.st.RadargramOpen);
    EXPECT_FALSE(b.st.WaterfallOpen);
    EXPECT_TRUE(b.st.SpectrumOpen);
    EXPECT_FALSE(b.st.TempPath.empty());
    ASSERT_GE(b.views.log.size(), 2u);
    EXPECT_EQ(b.views.log[0], "load Radargram");
    EXPECT_EQ(b.views.log[1], "unload Waterfall");
}

TEST_F(Options, ThePalettePagePicksASlotAndAddsAPaletteFile) {
    load();
    EXPECT_EQ(f.palSlots[0], "1_grey.pal");
    dlgSettings::imgPal_Click(b.wb, f, 3);
    EXPECT_EQ(f.palPath, joinPath(paletteFolder(b.st), "3_viridis.pal"));

    // A palette from elsewhere is copied into the folder and takes the chosen slot.
    std::string bytes(24 + 4 * 256, '\0');
    bytes[24 + 4 * 255] = char(0xFF);
    test::writeText(b.home.file("mine.pal"), bytes);
    b.host.queueFile(b.home.file("mine.pal"), 1);
    dlgSettings::imgPal_Click(b.wb, f, 5);
    dlgSettings::Command5_Click(b.wb, f);
    ASSERT_EQ(b.host.dialogTitles.back(), "Palettes");
    EXPECT_TRUE(fileExists(joinPath(paletteFolder(b.st), "mine.pal")));
    EXPECT_EQ(f.palSlots[4], "mine.pal");
    EXPECT_FALSE(ok());
    EXPECT_EQ(b.st.PalAd, "mine.pal");
    EXPECT_EQ(b.st.IndP, 5);
    EXPECT_EQ(iniValue(ini(), "BScan", "pal_5"), "mine.pal");
    EXPECT_EQ(iniValue(ini(), "BScan", "PalAd"), "mine.pal");
    EXPECT_EQ(iniValue(ini(), "BScan", "IndP"), "5");
    EXPECT_EQ(readPalette(joinPath(paletteFolder(b.st), "mine.pal")).table[255] & 0xFFFFFFu,
              0xFF0000u);
}

} // namespace
} // namespace kv
