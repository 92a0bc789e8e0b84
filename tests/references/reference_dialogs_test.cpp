// The reference dialogs over a real import: Set writes the fixed file and reads it back, a
// reference survives in its file, Load fits or cuts a reference of another band, bad files give
// their messages and no curve, Delete and Info, and the Reference keys.
#include "commands/commands.h"
#include "engine/display_map.h"
#include "platform/byte_source.h"
#include "platform/files.h"
#include "references/reference_files.h"
#include "references/spectrum_refs.h"
#include "references/time_phase_refs.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

using namespace kv;

namespace {

/// 4 traces of 256 samples at 8 kHz of a 1 kHz sine: 128 bins of 31.25 Hz up to 4 kHz.
struct Refs : ::testing::Test {
    test::Bench b;
    RefFields f;
    float top = 0, step = 0; // the live band's top and step

    void SetUp() override {
        std::vector<int> s;
        for (int i = 0; i < 4 * 256; ++i)
            s.push_back(int(std::lround(16000 * std::sin(2 * M_PI * 1000.0 * i / 8000))));
        test::writeFile(b.home.file("sine.wav"), test::wavBytes(1, 8000, 16, s));
        b.st.SettingsOverrides["gen.sp_samples"] = "256";
        b.start();
        b.import(b.home.file("sine.wav"));
        ASSERT_FALSE(b.st.TempPath.empty());
        ASSERT_NEAR(b.st.MaxFreq, 4000.0f, 0.01);
        ASSERT_NEAR(b.st.BinWidth, 31.25f, 1e-4);
        top = b.st.MaxFreq;
        step = b.st.BinWidth;
        dlgRef::Form_Load(b.wb, f);
    }
    std::string fixed(int n) const { return fixedRefPath(b.st, n, "pns"); }
    /// A spectrum file of `bins` bins of `step` Hz up to `maxFreq`, every value `v`.
    std::string foreign(float maxFreq, float step, int32_t bins, float v = 100.0f) {
        PnsFile p;
        p.MaxFreq = maxFreq;
        p.BinStep = step;
        p.Bins = bins;
        p.FullScale = 32767;
        p.Window = b.st.FFT_Window;
        p.Data.assign(size_t(bins) + 1, v);
        const std::string path = b.home.file("other.pns");
        test::writeText(path, writePns(p));
        return path;
    }
    void load(const std::string& path, int line = 1) {
        dlgRef::optLine_Click(b.wb, f, int16_t(line));
        b.host.queueFile(path, 1);
        dlgRef::cmdLoad_Click(b.wb, f);
    }
};

} // namespace

TEST_F(Refs, SetWritesTheSpectrumOnShowAndReadsItBack) {
    dlgRef::cmdSet_Click(b.wb, f);
    ASSERT_TRUE(fileExists(fixed(1)));
    EXPECT_EQ(test::readText(fixed(1)), spectrumRefBytes(b.st));
    EXPECT_EQ(fileSize(fixed(1)), 79 + 4 * 129);
    EXPECT_TRUE(f.Check1);
    EXPECT_TRUE(b.st.RefOn1 && b.st.RefValid1 && b.st.RefShown);
    EXPECT_TRUE(b.cmd.checked("mnuRef"));
    ASSERT_EQ(b.st.RefData1.size(), 129u);
    for (size_t i = 0; i < 129; ++i)
        ASSERT_EQ(b.st.RefData1[i], b.st.SpAmp[i]) << i;
    EXPECT_EQ(b.st.RefFitMode, 1);
    // In dB the curve is the live spectrum's: the peak bin reads the live peak level.
    EXPECT_NEAR(b.st.RefShow1[size_t(b.st.PeakBin)], b.st.PeakDb, 1e-3);

    // Set again over a longer file leaves no tail behind.
    test::writeText(fixed(1), std::string(5000, 'x'));
    dlgRef::cmdSet_Click(b.wb, f);
    EXPECT_EQ(fileSize(fixed(1)), 79 + 4 * 129);
}

TEST_F(Refs, AReferenceSurvivesInItsFileAndSaveCopiesItExactly) {
    b.host.queueFile(b.home.file("copy.pns"), 1);
    dlgRef::cmdSave_Click(b.wb, f);
    EXPECT_EQ(b.host.dialogTitles.back(), "Save Kelvorandine Reference data files");
    EXPECT_EQ(test::readText(b.home.file("copy.pns")), test::readText(fixed(1)));
    const std::vector<float> saved = b.st.RefData1;

    // A restart: the state goes, the file stays; the dialog finds it and a tick brings it back.
    b.st.RefOn1 = b.st.RefValid1 = b.st.RefShown = false;
    b.st.RefData1.clear();
    RefFields again;
    dlgRef::Form_Load(b.wb, again);
    EXPECT_TRUE(b.st.RefValid1);
    EXPECT_FALSE(again.Check1);
    again.Check1 = true;
    EXPECT_TRUE(dlgRef::Check_Click(b.wb, again, 1));
    EXPECT_TRUE(again.Check1);
    EXPECT_EQ(b.st.RefData1, saved);
    EXPECT_TRUE(b.host.messages.empty());
}

TEST_F(Refs, AWiderReferenceIsCutAndANarrowerOneCoversItsShare) {
    load(foreign(2 * top, step, 256));
    EXPECT_EQ(b.host.dialogTitles.back(), "Open Kelvorandine Reference data files");
    EXPECT_EQ(b.host.dialogFilters.back(), "Kelvorandine Files(*.pns)|*.pns|");
    ASSERT_TRUE(b.st.RefOn1);
    EXPECT_EQ(b.st.RefFitMode, 2);
    EXPECT_EQ(b.st.RefCount1, 129); // round(4000 / 31.25 + 1)

    // Half the band: the fold gives it half the columns of the plot.
    load(foreign(top / 2, step, 64), 2);
    ASSERT_TRUE(b.st.RefOn2);
    EXPECT_EQ(b.st.RefFitMode, 2); // left as it was
    b.st.PlotColumns = 100;
    b.st.RefSelect = 0;
    GenDraw_Ref(b.st);
    EXPECT_EQ(b.st.RefColCount2, 31); // 64 bins, 2 a column: 32 columns of a budget of 50
    EXPECT_EQ(b.st.RefColCount1, 63); // 129 bins, 2 a column: 64 columns of the whole 100

    // A finer step than the live one drops the bins below the lowest live frequency.
    load(foreign(top, step / 2, 256), 1);
    EXPECT_EQ(b.st.RefFitMode, 1);
    EXPECT_EQ(b.st.RefShow1.size(), 257u);
    EXPECT_EQ(b.st.RefShow1[254], b.st.RefShow1[0]); // shifted by the two dropped bins
    EXPECT_EQ(b.st.RefShow1[255], 0.0f);
}

TEST_F(Refs, SilentBinsReadZeroDecibelsAndLinearCopiesTheMagnitudes) {
    load(foreign(top, step, 128, 0.0f));
    ASSERT_TRUE(b.st.RefOn1);
    for (float v : b.st.RefShow1)
        ASSERT_EQ(v, 0.0f);
    load(foreign(top, step, 128, 32767.0f));
    EXPECT_FLOAT_EQ(b.st.RefShow1[5], 0.0f); // full scale is 0 dB
    b.st.YLinear = true;
    ReferenseAktivate(b.st);
    EXPECT_EQ(b.st.RefShow1[5], 32767.0f);
}

TEST_F(Refs, BadFilesGiveTheirMessageAndNoCurve) {
    const auto lastMessage = [&] { return b.host.messages.back().text; };
    test::writeText(b.home.file("x.pns"), "RIFF not a reference at all");
    load(b.home.file("x.pns"));
    EXPECT_EQ(lastMessage(), "Wrong File Format!");
    EXPECT_EQ(b.host.messages.back().icon, MsgIcon::Critical);
    EXPECT_EQ(b.host.messages.back().title, "Kelvorandine®");
    EXPECT_FALSE(b.st.RefOn1);

    load(foreign(20, 10, 2)); // its top lies below the live step
    EXPECT_EQ(lastMessage(), "Out of range!");
    load(foreign(2 * top, top, 2)); // its step is not below the live top
    EXPECT_EQ(lastMessage(), "Out of range!");
    EXPECT_FALSE(b.st.RefOn1 || b.st.RefValid1 || f.Check1);

    std::string truncated = test::readText(foreign(top, step, 128));
    test::writeText(b.home.file("t.pns"), truncated.substr(0, 200));
    load(b.home.file("t.pns"));
    EXPECT_EQ(lastMessage(), "Out of range!");
    EXPECT_FALSE(b.st.RefOn1);
    EXPECT_FALSE(b.cmd.checked("mnuRef"));

    // A tick on a line without a usable file.
    f.Check2 = true;
    f.Check1 = true;
    dlgRef::Check_Click(b.wb, f, 2);
    EXPECT_EQ(lastMessage(), "Reference file does not exist or is invalid");
    EXPECT_EQ(b.host.messages.back().icon, MsgIcon::Information);
    EXPECT_FALSE(f.Check2 || b.st.RefOn2);
}

TEST_F(Refs, DeleteInfoColourAndClearingBothLines) {
    dlgRef::cmdSet_Click(b.wb, f);
    dlgRef::cmdInfo_Click(b.wb, f);
    EXPECT_EQ(b.host.messages.back().text, "Bins: 128 MaxFreq.: 4000");

    dlgRef::colorChosen(b.wb, f, dlgRefC::OKButton_Click(2));
    EXPECT_EQ(b.st.Line1Color, std::to_string(0x0FF726));
    EXPECT_NE(test::readText(b.home.file("SP.ini")).find("Line1Color=1046310"), std::string::npos);
    dlgRef::colorChosen(b.wb, f, dlgRefC::OKButton_Click(-1)); // Cancel
    EXPECT_EQ(b.st.Line1Color, std::to_string(0x0FF726));

    dlgRef::cmdDelete_Click(b.wb, f);
    EXPECT_FALSE(fileExists(fixed(1)));
    EXPECT_FALSE(b.st.RefOn1 || b.st.RefShown || f.Check1);
    EXPECT_FALSE(b.cmd.checked("mnuRef")); // the only line on show went

    dlgRef::cmdSet_Click(b.wb, f);
    f.Check1 = f.Check2 = false;
    EXPECT_FALSE(dlgRef::Check_Click(b.wb, f, 1)); // both clear: the dialog closes
    EXPECT_FALSE(b.st.RefShown);
}

TEST_F(Refs, TheReferenceKeysAreRefusedWhileAFilterIsOn) {
    for (const char* key : {"Reference", "Reference_O", "Ref_P"})
        TB_event9(b.wb, key);
    EXPECT_EQ(b.views.dialogsShown, (std::vector<std::string>{"dlgRef", "TimeRef", "PhasaRef"}));
    b.st.FftFilterOn = true;
    b.wb.cmd.enable("mnuRef");
    menuCommand(b.wb, "mnuRef");
    EXPECT_EQ(b.views.dialogsShown.size(), 3u);
    EXPECT_EQ(b.host.messages.back().text, "Illegal operation with aktive filters.");
    EXPECT_TRUE(b.cmd.menu("mnuRef").available);
    EXPECT_TRUE(b.cmd.button(53).available);
}

TEST_F(Refs, TimeAndPhaseLinesAreSetLoadedAndTicked) {
    b.st.ViewTimeSpan = 0.032;
    b.st.ScaleBits = 1000;
    TimeRefFields t;
    TimeRef::Form_Load(b.wb, t);
    TimeRef::cmdSet_Click(b.wb, t);
    const std::string pno = fixedRefPath(b.st, 1, "pno");
    EXPECT_EQ(test::readText(pno), timeRefBytes(b.st));
    EXPECT_EQ(b.st.TimeRef1Samples, 256);
    EXPECT_EQ(b.st.TimeRef1Scale, 1000.0f); // the scale on show, not the file's
    EXPECT_TRUE(b.st.TimeRef1On && b.st.TimeRefOn && t.Check1);
    EXPECT_TRUE(b.cmd.checked("mnuRefO"));

    t.Check2 = true; // no file behind line 2: the dialog stays
    EXPECT_TRUE(TimeRef::OKButton_Click(b.wb, t));
    EXPECT_EQ(b.host.messages.back().text, "Reference file does not exist or is invalid");
    t.Check2 = false;
    EXPECT_FALSE(TimeRef::OKButton_Click(b.wb, t));

    // A damaged file loaded over line 2 leaves it off.
    test::writeText(b.home.file("bad.pno"), "pno");
    TimeRef::optLine_Click(b.wb, t, 2);
    b.host.queueFile(b.home.file("bad.pno"), 1);
    TimeRef::cmdLoad_Click(b.wb, t);
    EXPECT_FALSE(b.st.TimeRef2Valid || b.st.TimeRef2On);

    TimeRefFields p;
    PhasaRef::Form_Load(b.wb, p);
    PhasaRef::cmdSet_Click(b.wb, p);
    EXPECT_EQ(test::readText(fixedRefPath(b.st, 1, "pnp")), phaseRefBytes(b.st));
    EXPECT_EQ(b.st.PhaseRef1Samples, b.st.PhaseBins);
    EXPECT_TRUE(b.st.PhaseRef1On && b.st.PhaseRefOn);
    PhasaRef::cmdDelete_Click(b.wb, p);
    EXPECT_FALSE(fileExists(fixedRefPath(b.st, 1, "pnp")));
    EXPECT_FALSE(b.st.PhaseRefOn || b.cmd.checked("mnuRefPh"));
}
