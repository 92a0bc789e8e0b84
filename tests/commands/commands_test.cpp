// The command model per active view (buttons on show, commands enabled, ticks), the status
// texts, and what toolbar keys and menu entries do.
#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kv;

namespace {

std::vector<int> range(int a, int b) {
    std::vector<int> v;
    for (int i = a; i <= b; ++i)
        v.push_back(i);
    return v;
}

std::vector<int> join(std::initializer_list<std::vector<int>> parts) {
    std::vector<int> v;
    for (const auto& p : parts)
        v.insert(v.end(), p.begin(), p.end());
    return v;
}

/// A started workbench with every button showing, as after an open.
struct Loaded : test::Bench {
    Loaded() {
        start();
        st.TempPath = home.file("temp.sp");
        cmd.showButtons(1, 105, true);
    }
    void activate(ViewId v) {
        viewFlag(st, v) = true;
        viewActivated(wb, v);
    }
};

} // namespace

TEST(ViewCommands, EachViewShowsItsOwnButtonSet) {
    Loaded b;
    b.activate(ViewId::Spectrum);
    EXPECT_EQ(b.cmd.visibleButtons(), join({range(1, 34), {39}, range(41, 48), range(52, 56)}));
    EXPECT_EQ(b.cmd.viewCaptionLine, "Spectrum view");

    b.activate(ViewId::Oscope);
    EXPECT_EQ(b.cmd.visibleButtons(),
              join({range(1, 20), range(61, 69), range(72, 76), range(82, 85)}));
    EXPECT_EQ(b.cmd.viewCaptionLine, "O-scope view");

    b.activate(ViewId::Phase); // also hides the spacer 20
    EXPECT_EQ(b.cmd.visibleButtons(), join({range(1, 19), range(92, 99)}));

    b.activate(ViewId::Radargram); // the radargram uses the Waterfall row
    EXPECT_EQ(b.cmd.visibleButtons(), join({range(1, 19), {104, 105}}));
    EXPECT_EQ(b.cmd.viewCaptionLine, "Waterfall view");
}

TEST(ViewCommands, TheActiveViewsCommandsAreEnabledAndTheOthersGreyed) {
    Loaded b;
    b.activate(ViewId::Oscope);
    for (const char* m : {"mnuZoomIn", "mnuFlip", "mnuCur", "mnuRefO", "mnuTO", "mnuLC"})
        EXPECT_TRUE(b.cmd.enabled(m)) << m;
    for (const char* m : {"mnuXaxis", "mnuThd", "mnuRefPh", "mnuPalettet", "mnuSpan"})
        EXPECT_FALSE(b.cmd.enabled(m)) << m;

    b.activate(ViewId::Spectrum);
    for (const char* m : {"mnuXaxis", "mnuYax", "mnuCurve", "mnuThd", "mnuEnob", "mnuBCF",
                          "mnuMarkers", "mnuLC", "mnuRR"})
        EXPECT_TRUE(b.cmd.enabled(m)) << m;
    for (const char* m : {"mnuZoomIn", "mnuFlip", "mnuCur", "mnuTO", "mnuTP", "mnuPalettet"})
        EXPECT_FALSE(b.cmd.enabled(m)) << m;

    b.activate(ViewId::Waterfall);
    EXPECT_TRUE(b.cmd.enabled("mnuPalettet"));
    EXPECT_TRUE(b.cmd.enabled("mnuTW"));
    for (const char* m : {"mnuLC", "mnuRR", "mnuXaxis"})
        EXPECT_FALSE(b.cmd.enabled(m)) << m;
    // The common entries stay on in every view.
    for (const char* m : {"mnuEdit", "mnuView", "mnuOpen", "mnuOimp", "mnuExit", "mnuTT"})
        EXPECT_TRUE(b.cmd.enabled(m)) << m;
}

TEST(ViewCommands, TicksAndDownButtonsFollowTheSettings) {
    Loaded b;
    b.st.DrSet = 2;
    b.st.YLinear = true;
    b.st.AS_Bar = 1;
    b.st.FFT_ShowGrid = 0;
    b.activate(ViewId::Spectrum);
    EXPECT_TRUE(b.cmd.checked("mnuxlog"));
    EXPECT_FALSE(b.cmd.checked("mnuxl"));
    EXPECT_TRUE(b.cmd.checked("mnuylin"));
    EXPECT_FALSE(b.cmd.checked("mnuYlog"));
    EXPECT_TRUE(b.cmd.checked("mnuCurvBar"));
    EXPECT_FALSE(b.cmd.button(24).down);
    EXPECT_TRUE(b.cmd.checked("mnuFFT"));
    EXPECT_FALSE(b.cmd.checked("mnuOlOp"));

    b.st.ShowGrid = 1;
    b.st.BscanShow = 1;
    b.activate(ViewId::Phase);
    b.activate(ViewId::Radargram);
    b.activate(ViewId::Oscope);
    EXPECT_TRUE(b.cmd.button(64).down);
    EXPECT_TRUE(b.cmd.checked("mnuBscan")) << "the radargram is the waterfall BscanShow names";
    EXPECT_TRUE(b.cmd.checked("mnuOlOp")) << "all views are open";
}

TEST(StatusTexts, EachViewWritesItsPanels) {
    Loaded b;
    b.st.ModeFFT = 3;
    b.activate(ViewId::Spectrum);
    EXPECT_EQ(b.cmd.panel(3), "FFT Bins: 512");
    EXPECT_EQ(b.cmd.panel(4), "X-scale: linear ");
    EXPECT_EQ(b.cmd.panel(5), "Y-scale: dB");
    EXPECT_EQ(b.cmd.panel(8), "Peak-hold mode");
    b.st.DrSet = 2;
    b.st.YLinear = true;
    StatusBarSet(b.wb);
    EXPECT_EQ(b.cmd.panel(4), "X-scale: logaritm ");
    EXPECT_EQ(b.cmd.panel(5), "Y-scale: linear");

    b.cmd.timeRangeText = "21.33 ms";
    b.st.ShowVertical = 1;
    b.st.TimeWindowed = 0;
    b.cmd.button(72).down = true;
    b.activate(ViewId::Oscope);
    EXPECT_EQ(b.cmd.panel(5), "Time Range: 21.33 ms");
    EXPECT_EQ(b.cmd.panel(4), "Y-scale: volt");
    EXPECT_EQ(b.cmd.panel(8), "Not Windowed");
    EXPECT_EQ(b.cmd.panel(9), "Waveform flipped.");

    b.activate(ViewId::Phase);
    EXPECT_EQ(b.cmd.panel(5), "Y-scale: degrees");
    EXPECT_EQ(b.cmd.panel(4), "X-scale: frequency");

    b.st.ModeFFT = 4;
    b.activate(ViewId::Waterfall);
    EXPECT_EQ(b.cmd.panel(5), "Y-scale: traces.");
    EXPECT_EQ(b.cmd.panel(8), "Average mode");

    InitStatusPanels(b.wb);
    EXPECT_EQ(b.cmd.panel(1), "Hallvik Instruments");
    EXPECT_EQ(b.cmd.panel(6), "Peak:  ");
}

TEST(ToolbarKeys, ScaleAndCurveButtonsChangeTheSettingPanelsTicksAndRedraw) {
    Loaded b;
    b.activate(ViewId::Spectrum);
    pressButton(b.wb, 28); // x log
    EXPECT_EQ(b.st.DrSet, 2);
    EXPECT_EQ(b.cmd.panel(4), "X-scale: logaritm ");
    EXPECT_TRUE(b.cmd.checked("mnuxlog"));
    pressButton(b.wb, 29); // y lin
    EXPECT_TRUE(b.st.YLinear);
    EXPECT_EQ(b.st.YScale, 1);
    EXPECT_EQ(b.cmd.panel(5), "Y-scale: linear");
    EXPECT_TRUE(menuCommand(b.wb, "mnuCurvBar"));
    EXPECT_EQ(b.st.AS_Bar, 1);
    EXPECT_TRUE(b.cmd.checked("mnuCurvBar"));
    EXPECT_EQ(std::count(b.views.log.begin(), b.views.log.end(), "redraw Spectrum"), 3);
}

TEST(ToolbarKeys, ColourAndGridButtonsSetTheirItems) {
    Loaded b;
    b.activate(ViewId::Spectrum);
    b.host.queueColor(0x00FF8000u);
    pressButton(b.wb, 21);
    EXPECT_EQ(b.st.FFT_LineColor, std::to_string(0x00FF8000u));
    b.host.queueColor(std::nullopt); // the dialog cancelled: nothing changes
    const std::string before = b.st.FFT_BackColor;
    pressButton(b.wb, 22);
    EXPECT_EQ(b.st.FFT_BackColor, before);

    ASSERT_TRUE(b.cmd.button(24).down);
    pressButton(b.wb, 24); // a toggle: up now
    EXPECT_FALSE(b.cmd.button(24).down);
    EXPECT_EQ(b.st.FFT_ShowGrid, 0);
    pressButton(b.wb, 24);
    EXPECT_EQ(b.st.FFT_ShowGrid, 1);

    // The View menu's colour entries serve the active view.
    b.host.queueColor(255u);
    menuCommand(b.wb, "mnuGC");
    EXPECT_EQ(b.st.FFT_GridColor, "255");
}

TEST(ToolbarKeys, HiddenOrNotYetBuiltCommandsDoNothing) {
    Loaded b;
    b.activate(ViewId::Spectrum);
    ASSERT_FALSE(b.cmd.button(64).visible);
    const int16_t grid = b.st.ShowGrid;
    b.cmd.button(64).available = true;
    pressButton(b.wb, 64); // the O-scope's grid button is not on show
    EXPECT_EQ(b.st.ShowGrid, grid);
    EXPECT_FALSE(b.cmd.button(64).down);

    EXPECT_FALSE(b.cmd.menu("mnuDM").available) << "marker editing is not part of this build";
    b.views.log.clear();
    menuCommand(b.wb, "mnuDM");
    EXPECT_TRUE(b.views.log.empty());

    b.cmd.enable("mnuxlog", false);
    menuCommand(b.wb, "mnuxlog");
    EXPECT_EQ(b.st.DrSet, 1);
    EXPECT_FALSE(menuCommand(b.wb, "mnuExit")) << "left to the shell";
}

TEST(ToolbarKeys, OptionsInformationPicturesAndPrintingAskTheViewHost) {
    Loaded b;
    b.activate(ViewId::Spectrum);
    b.views.log.clear();
    for (const char* m : {"mnuOp", "mnuFInf", "mnuSw", "mnuPrint"})
        menuCommand(b.wb, m);
    for (int n : {3, 4, 5, 7})
        pressButton(b.wb, n);
    EXPECT_EQ(b.views.log,
              (std::vector<std::string>{"dialog dlgSettings modal", "dialog frmFileInfo modeless",
                                        "picture mnuSw", "dialog dlgPrinter modal",
                                        "dialog dlgSettings modal", "dialog frmFileInfo modeless",
                                        "picture mnuSw", "picture QuickPrint"}));
}

TEST(ToolbarKeys, TheWaterfallsPaletteAndTextAskForTheirDialogs) {
    Loaded b;
    for (ViewId v : {ViewId::Waterfall, ViewId::Radargram}) {
        b.activate(v);
        b.views.log.clear();
        for (const char* m : {"mnuPalettet", "mnuTW"})
            menuCommand(b.wb, m);
        for (int n : {104, 105})
            pressButton(b.wb, n);
        EXPECT_EQ(b.views.log,
                  (std::vector<std::string>{"dialog dlgPal modal", "dialog dlgText modeless",
                                            "dialog dlgPal modal", "dialog dlgText modeless"}));
    }
    // From another view both are grey and ask for nothing.
    b.activate(ViewId::Spectrum);
    b.views.log.clear();
    menuCommand(b.wb, "mnuPalettet");
    pressButton(b.wb, 105);
    EXPECT_TRUE(b.views.log.empty());
}

TEST(ViewWindows, AViewButtonLoadsAndArrangesOrBringsForward) {
    Loaded b;
    b.views.log.clear();
    TB_event9(b.wb, "Spectrum");
    EXPECT_EQ(b.views.log, (std::vector<std::string>{"load Spectrum", "arrange 1"}));
    b.views.log.clear();
    TB_event9(b.wb, "Spectrum");
    EXPECT_EQ(b.views.log, (std::vector<std::string>{"load Spectrum"})) << "brought forward";

    b.views.log.clear();
    b.st.BscanShow = 1;
    TB_event9(b.wb, "All open");
    EXPECT_EQ(b.views.log, (std::vector<std::string>{"load O-scope", "load Phase", "load Radargram",
                                                     "arrange 1"}));
    EXPECT_TRUE(b.cmd.checked("mnuOlOp"));

    b.views.log.clear();
    for (const char* m : {"mnuCasc", "mnuHor", "mnuVert"})
        menuCommand(b.wb, m);
    EXPECT_EQ(b.views.log, (std::vector<std::string>{"arrange 0", "arrange 1", "arrange 2"}));
}

TEST(MetricSwitches, MenuAndButtonToggleTogetherAndOnlyTheSwitchedLabelGoes) {
    test::Bench b;
    b.start();
    // 1 kHz at 8 kHz with a 2nd harmonic 40 dB down: bin 128 of 1024, harmonic at 256.
    std::vector<int> s;
    for (int i = 0; i < 4 * 1024; ++i)
        s.push_back(int(std::lround(10000 * std::sin(2 * M_PI * 128 * i / 1024.0) +
                                    100 * std::sin(2 * M_PI * 256 * i / 1024.0))));
    const std::string wav = b.home.file("h2.wav");
    test::writeFile(wav, test::wavBytes(1, 8000, 16, s));
    b.import(wav);
    ASSERT_TRUE(b.st.SpectrumOpen);
    viewActivated(b.wb, ViewId::Spectrum);
    b.st.THDdB = 1;

    ASSERT_TRUE(menuCommand(b.wb, "mnuThd"));
    EXPECT_TRUE(b.st.ShowTHD && b.st.AnalysOnFFT);
    EXPECT_TRUE(b.cmd.menu("mnuThd").checked);
    EXPECT_TRUE(b.cmd.button(41).down);
    EXPECT_EQ(b.st.An[1].rfind("THD: -40", 0), 0u) << b.st.An[1];
    EXPECT_EQ(b.views.log.back(), "command Spectrum UpdateAn");

    pressButton(b.wb, 45); // SNR from the toolbar: the button went down with the press
    EXPECT_TRUE(b.st.ShowSNR);
    EXPECT_TRUE(b.cmd.menu("mnuSnr").checked);
    EXPECT_TRUE(b.cmd.button(45).down);
    EXPECT_EQ(b.st.An[0].rfind("SNR: ", 0), 0u);

    pressButton(b.wb, 41); // THD off again from the toolbar
    EXPECT_FALSE(b.st.ShowTHD);
    EXPECT_FALSE(b.cmd.menu("mnuThd").checked);
    EXPECT_FALSE(b.cmd.button(41).down);
    EXPECT_TRUE(b.st.ShowSNR);
    EXPECT_TRUE(b.st.AnalysOnFFT) << "counting goes on while any switch was used";

    NoAnalys(b.wb);
    EXPECT_FALSE(b.st.ShowSNR || b.st.AnalysOnFFT || b.cmd.button(45).down);
}

TEST(HelpAbout, TheAboutBoxComesFromTheCoreThroughTheHost) {
    Loaded b;
    EXPECT_TRUE(menuCommand(b.wb, "mnuAbout"));
    ASSERT_EQ(b.host.aboutBoxes.size(), 1u);
    EXPECT_EQ(b.host.aboutBoxes[0].title, "Kelvorandine®");
    EXPECT_EQ(b.host.aboutBoxes[0].text.rfind("Kelvorandine workbench ", 0), 0u);
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_FALSE(menuCommand(b.wb, "mnuExit")); // left to the shell, which closes the window
}

TEST(ImportWithoutDialog, AGivenFileOpensAsIfPickedAndAskNothing) {
    test::Bench b;
    b.start();
    const std::string path = b.home.file("given.wav");
    std::vector<int> samples(4096);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = int(8000 * std::sin(0.05 * double(i)));
    test::writeFile(path, test::wavBytes(1, 8000, 16, samples));
    importFile(b.wb, path, 1);
    EXPECT_TRUE(b.host.dialogTitles.empty()); // no file dialog was shown
    EXPECT_EQ(b.st.FileTitle, "given.wav");
    EXPECT_GT(b.st.TraceCount, 0);
    EXPECT_TRUE(b.st.SpectrumOpen);
}
