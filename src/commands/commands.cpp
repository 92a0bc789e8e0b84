// Menus, toolbar and status bar for the active view, and the dispatch of clicks.
#include "commands/commands.h"

#include "commands/export.h"
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "commands/transport.h"
#include "conditioning/filter_dialogs.h"
#include "conditioning/level_dialogs.h"
#include "conditioning/span_dialog.h"
#include "conditioning/white_dialog.h"
#include "engine/metrics.h"
#include "generated/version.h"
#include "references/spectrum_refs.h"
#include "state/workbench.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace kv {

namespace {

// The commands each view enables; those listed for another view go grey when this one is
// active. Waterfall and radargram share a row.
const std::initializer_list<const char*> kOscopeMenus = {
    "mnuRR",   "mnuZoomIn",   "mnuZoomOut", "mnuNoZoom", "mnuLC", "mnuGC",
    "mnuBC",   "mnuVertZoom", "mnuFlip",    "mnuMxA",    "mnuMa", "mnuPP",
    "mnuGain", "mnuCur",      "mnuRefO",    "mnuTO"};
const std::initializer_list<const char*> kSpectrumMenus = {
    "mnuRR",   "mnuLC",        "mnuBC",       "mnuGC",       "mnuCurve", "mnuXaxis",
    "mnuYax",  "mnuAutoscale", "mnuAutotune", "mnuGPR",      "mnuLevel", "mnuThd",
    "mnuThdN", "mnuSdr",       "mnuSnd",      "mnuSnr",      "mnuEnob",  "mnuWhite",
    "mnuRef",  "mnuMarkers",   "mnuSpan",     "mnuTextEdit", "mnuBCF"};
const std::initializer_list<const char*> kPhaseMenus = {"mnuRR", "mnuLC",    "mnuGC",
                                                        "mnuBC", "mnuRefPh", "mnuTP"};
const std::initializer_list<const char*> kWaterfallMenus = {"mnuPalettet", "mnuTW"};

/// Where the lists' entries stand, found once: every view's activation sets them all.
struct ViewMenuPlaces {
    std::vector<size_t> oscope = CommandState::menuPlaces(kOscopeMenus);
    std::vector<size_t> spectrum = CommandState::menuPlaces(kSpectrumMenus);
    std::vector<size_t> phase = CommandState::menuPlaces(kPhaseMenus);
    std::vector<size_t> waterfall = CommandState::menuPlaces(kWaterfallMenus);
};

const ViewMenuPlaces& viewMenuPlaces() {
    static const ViewMenuPlaces places;
    return places;
}

enum class Row { None, Oscope, Spectrum, Phase, Waterfall };

Row rowOf(int activeView) {
    switch (activeView) {
    case 1:
        return Row::Oscope;
    case 2:
        return Row::Spectrum;
    case 3:
        return Row::Phase;
    case 4:
    case 5:
        return Row::Waterfall;
    default:
        return Row::None;
    }
}

ViewId waterfallOfSetting(const ProgramState& st) {
    return st.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
}

bool waterfallOpen(const ProgramState& st) {
    return st.BscanShow == 1 ? st.RadargramOpen : st.WaterfallOpen;
}

void setIniColor(std::string& item, uint32_t value) {
    item = std::to_string(value);
}

/// A colour's decimal text as a number; text that is not a number, or one too large, gives 0.
uint32_t iniColorValue(const std::string& text) {
    errno = 0;
    char* end = nullptr;
    const unsigned long v = std::strtoul(text.c_str(), &end, 10);
    if (end == text.c_str() || errno == ERANGE) return 0;
    return static_cast<uint32_t>(v);
}

/// A colour button: the colour dialog with its title; a chosen colour goes into the settings
/// item and the view redraws.
void chooseColor(Workbench& wb, const char* title, std::string& item, ViewId v) {
    auto c = wb.host.pickColor(title, iniColorValue(item));
    if (!c) return;
    setIniColor(item, *c);
    if (viewFlag(wb.st, v)) wb.views.redrawView(wb, v);
}

/// A grid button: the item follows the button's state, then the view redraws.
void setGrid(Workbench& wb, int button, int16_t& item, ViewId v) {
    item = wb.cmd.button(button).down ? 1 : 0;
    if (viewFlag(wb.st, v)) wb.views.redrawView(wb, v);
}

/// A spectrum scale or curve button: the setting changes, panels, ticks and the view follow.
void spectrumSetting(Workbench& wb) {
    StatusBarSet(wb);
    TBButtons_View(wb);
    if (wb.st.SpectrumOpen) wb.views.redrawView(wb, ViewId::Spectrum);
}

/// The O-scope's own commands: toolbar key and menu entry. Both reach the view by the menu
/// entry's name.
struct OscopeCommand {
    const char* key;
    const char* menu;
};
const OscopeCommand kOscopeCommands[] = {
    {"ZoomIn", "mnuZoomIn"}, {"ZoomOut", "mnuZoomOut"}, {"NoZoom", "mnuNoZoom"},
    {"Flip", "mnuFlip"},     {"MaxA", "mnuMxA"},        {"MinA", "mnuMa"},
    {"PtP", "mnuPP"},        {"Cursor", "mnuCur"},
};

/// The six read-out switches: menu entry, toolbar button, flag.
struct MetricSwitch {
    const char* menu;
    int button;
    bool ProgramState::*flag;
};
const MetricSwitch kMetricSwitches[] = {
    {"mnuSnr", 45, &ProgramState::ShowSNR},   {"mnuThd", 41, &ProgramState::ShowTHD},
    {"mnuSnd", 44, &ProgramState::ShowSINAD}, {"mnuSdr", 43, &ProgramState::ShowSFDR},
    {"mnuEnob", 46, &ProgramState::ShowENOB}, {"mnuThdN", 42, &ProgramState::ShowTHDN},
};

/// A metric's switch, on its menu entry's tick: on, the read-outs are counted and shown and the
/// toolbar button goes down; off, only this metric's label goes. AnalysOnFFT stays set once any
/// metric was switched on: the per-trace counting only stops with NoAnalys.
void switchMetric(Workbench& wb, const MetricSwitch& m) {
    ProgramState& st = wb.st;
    const bool wasOn = wb.cmd.menu(m.menu).checked;
    if (!wasOn) {
        st.AnalysOnFFT = true;
        st.*m.flag = true;
        NewValue(st, st.An);
    } else {
        st.*m.flag = false;
    }
    UpdateAn(wb);
    wb.cmd.check(m.menu, !wasOn);
    wb.cmd.button(m.button).down = !wasOn;
}

} // namespace

void UpdateAn(Workbench& wb) {
    if (wb.st.SpectrumOpen) wb.views.viewCommand(wb, ViewId::Spectrum, "UpdateAn");
}

void switchMetricsOff(Workbench& wb) {
    wb.st.AnalysOnFFT = false;
    for (const MetricSwitch& m : kMetricSwitches) {
        wb.st.*m.flag = false;
        wb.cmd.button(m.button).down = false;
        wb.cmd.check(m.menu, false);
    }
    wb.cmd.touch();
}

void mnuSnr_Click(Workbench& wb) {
    switchMetric(wb, kMetricSwitches[0]);
}
void mnuThd_Click(Workbench& wb) {
    switchMetric(wb, kMetricSwitches[1]);
}
void mnuSnd_Click(Workbench& wb) {
    switchMetric(wb, kMetricSwitches[2]);
}
void mnuSdr_Click(Workbench& wb) {
    switchMetric(wb, kMetricSwitches[3]);
}
void mnuEnob_Click(Workbench& wb) {
    switchMetric(wb, kMetricSwitches[4]);
}
void mnuThdN_Click(Workbench& wb) {
    switchMetric(wb, kMetricSwitches[5]);
}

void TBButtons_View(Workbench& wb) {
    const ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;

    cmd.check("mnuOlOp", st.SpectrumOpen && st.PhaseOpen && st.OscOpen &&
                             (st.WaterfallOpen || st.RadargramOpen));
    cmd.check("mnuFFT", st.SpectrumOpen);
    cmd.check("mnuTime", st.OscOpen);
    cmd.check("mnuPhase", st.PhaseOpen);
    cmd.check("mnuBscan", waterfallOpen(st));
    for (const char* m : {"mnuEdit", "mnuView", "mnuOpen", "mnuExport", "mnuSw", "mnuPrint",
                          "mnuOimp", "mnuExit", "mnuTT"})
        cmd.enable(m);

    const Row row = rowOf(st.ActiveView);
    if (row == Row::None) {
        cmd.touch();
        return;
    }
    const ViewMenuPlaces& places = viewMenuPlaces();
    const std::vector<size_t>* enabled = nullptr;
    switch (row) {
    case Row::Oscope:
        cmd.viewCaptionLine = "O-scope view";
        cmd.showButtons(21, CommandState::kButtons, false);
        cmd.showButtons(61, 69, true);
        cmd.showButtons(72, 76, true);
        cmd.showButtons(82, 85, true);
        cmd.button(64).down = st.ShowGrid == 1;
        enabled = &places.oscope;
        break;
    case Row::Spectrum:
        cmd.viewCaptionLine = "Spectrum view";
        cmd.showButtons(21, CommandState::kButtons, false);
        cmd.showButtons(2, 56, true);
        cmd.showButtons(35, 38, false);
        cmd.showButtons(40, 40, false);
        cmd.showButtons(49, 51, false);
        cmd.button(24).down = st.FFT_ShowGrid == 1;
        cmd.check("mnuxl", st.DrSet == 1);
        cmd.check("mnuxlog", st.DrSet == 2);
        cmd.check("mnuylin", st.YLinear);
        cmd.check("mnuYlog", !st.YLinear);
        cmd.check("mnuCurvLine", st.AS_Bar != 1);
        cmd.check("mnuCurvBar", st.AS_Bar == 1);
        enabled = &places.spectrum;
        break;
    case Row::Phase:
        cmd.viewCaptionLine = "Phase view";
        cmd.showButtons(20, CommandState::kButtons, false);
        cmd.showButtons(92, 99, true);
        cmd.button(95).down = st.F_ShowGrid == 1;
        enabled = &places.phase;
        break;
    case Row::Waterfall:
        cmd.viewCaptionLine = "Waterfall view";
        cmd.showButtons(21, CommandState::kButtons, false);
        cmd.showButtons(104, 105, true);
        enabled = &places.waterfall;
        break;
    case Row::None:
        break;
    }
    for (const auto* list : {&places.oscope, &places.spectrum, &places.phase, &places.waterfall})
        for (const size_t m : *list)
            cmd.menuAt(m).enabled = false;
    for (const size_t m : *enabled)
        cmd.menuAt(m).enabled = true;
    cmd.touch();
}

void StatusBarSet(Workbench& wb) {
    const ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    switch (rowOf(st.ActiveView)) {
    case Row::Oscope:
        cmd.panel(5) = "Time Range: " + cmd.timeRangeText;
        cmd.panel(4) = st.ShowVertical == 2 ? "Y-scale: bits" : "Y-scale: volt";
        cmd.panel(8) = st.TimeWindowed == 1 ? "Windowed" : "Not Windowed";
        cmd.panel(9) = cmd.button(72).down ? "Waveform flipped." : "";
        break;
    case Row::Spectrum:
        cmd.panel(3) = "FFT Bins: " + std::to_string(st.Sp_Samples / 2);
        cmd.panel(4) = st.DrSet == 2 ? "X-scale: logaritm " : "X-scale: linear ";
        cmd.panel(5) = st.YLinear ? "Y-scale: linear" : "Y-scale: dB";
        cmd.panel(8) = modeText(st.ModeFFT);
        break;
    case Row::Phase:
        cmd.panel(5) = "Y-scale: degrees";
        cmd.panel(4) = "X-scale: frequency";
        break;
    case Row::Waterfall:
        cmd.panel(4) = "X-scale: frequency";
        cmd.panel(5) = "Y-scale: traces.";
        cmd.panel(8) = modeText(st.ModeFFT);
        break;
    case Row::None:
        break;
    }
    cmd.touch();
}

void viewActivated(Workbench& wb, ViewId v) {
    wb.st.ActiveView = static_cast<int16_t>(v);
    TBButtons_View(wb);
    StatusBarSet(wb);
}

void showView(Workbench& wb, ViewId v) {
    if (viewFlag(wb.st, v)) {
        wb.views.loadView(wb, v); // brings it forward
        return;
    }
    wb.views.loadView(wb, v);
    wb.views.arrange(wb, 1);
}

void openAllViews(Workbench& wb) {
    ProgramState& st = wb.st;
    for (ViewId v : {ViewId::Spectrum, ViewId::Oscope, ViewId::Phase, waterfallOfSetting(st)})
        if (!viewFlag(st, v)) wb.views.loadView(wb, v);
    wb.views.arrange(wb, 1);
    wb.cmd.check("mnuOlOp");
    wb.cmd.touch();
}

void TB_event9(Workbench& wb, const std::string& key) {
    ProgramState& st = wb.st;
    // Each block is separate, in the toolbar's order, as the keys were always compared.
    if (key == "Import") mnuOpen_Click(wb);
    if (key == "Open") mnuOimp_Click(wb);
    if (key == "Export") ExportFile(wb);
    if (key == "First") transportFirst(wb);
    if (key == "Rew") transportRew(wb);
    if (key == "Pause") transportPause(wb);
    if (key == "Fwd") transportFwd(wb);
    if (key == "End") transportEnd(wb);
    if (key == "Spectrum") showView(wb, ViewId::Spectrum);
    if (key == "O-scope") showView(wb, ViewId::Oscope);
    if (key == "Phase") showView(wb, ViewId::Phase);
    if (key == "Waterfall") showView(wb, waterfallOfSetting(st));
    if (key == "All open") openAllViews(wb);
    if (key == "FFT_LineColor") chooseColor(wb, "Line Color", st.FFT_LineColor, ViewId::Spectrum);
    if (key == "FFT_BackColor")
        chooseColor(wb, "Background Color", st.FFT_BackColor, ViewId::Spectrum);
    if (key == "FFT_GridColor") chooseColor(wb, "Grid Color", st.FFT_GridColor, ViewId::Spectrum);
    if (key == "FFT_ShowGrid") setGrid(wb, 24, st.FFT_ShowGrid, ViewId::Spectrum);
    if (key == "FFT_AsLine") {
        st.AS_Bar = 0;
        spectrumSetting(wb);
    }
    if (key == "FFT_AsBar") {
        st.AS_Bar = 1;
        spectrumSetting(wb);
    }
    if (key == "FFT_x_lin") {
        st.DrSet = 1;
        spectrumSetting(wb);
    }
    if (key == "FFT_x_log") {
        st.DrSet = 2;
        spectrumSetting(wb);
    }
    if (key == "FFT_y_lin") {
        st.YLinear = true;
        st.YScale = 1;
        spectrumSetting(wb);
    }
    if (key == "FFT_y_log") {
        st.YLinear = false;
        st.YScale = 2;
        spectrumSetting(wb);
    }
    if (key == "LC_O") chooseColor(wb, "Line Color", st.Time_LineColor, ViewId::Oscope);
    if (key == "BC_O") chooseColor(wb, "Background Color", st.Time_BackColor, ViewId::Oscope);
    if (key == "GC_O") chooseColor(wb, "Grid Color", st.Time_GridColor, ViewId::Oscope);
    if (key == "SG_O") setGrid(wb, 64, st.ShowGrid, ViewId::Oscope);
    // The O-scope's own commands go to the view, by the name of their menu entry.
    for (const auto& c : kOscopeCommands)
        if (key == c.key && st.OscOpen) wb.views.viewCommand(wb, ViewId::Oscope, c.menu);
    if (key == "LC_P") chooseColor(wb, "Line Color", st.F_LineColor, ViewId::Phase);
    if (key == "BC_P") chooseColor(wb, "Background Color", st.F_BackColor, ViewId::Phase);
    if (key == "GC_P") chooseColor(wb, "Grid Color", st.F_GridColor, ViewId::Phase);
    if (key == "SG_P") setGrid(wb, 95, st.F_ShowGrid, ViewId::Phase);
    if (key == "THD") mnuThd_Click(wb);
    if (key == "THD+N") mnuThdN_Click(wb);
    if (key == "SFDR") mnuSdr_Click(wb);
    if (key == "SINAD") mnuSnd_Click(wb);
    if (key == "SNR") mnuSnr_Click(wb);
    if (key == "ENOB") mnuEnob_Click(wb);
    // Signal conditioning.
    if (key == "Autoscale") mnuAutoscale_Click(wb);
    if (key == "Autotune") mnuAutotune_Click(wb);
    if (key == "Span") mnuSpan_Click(wb);
    if (key == "GPR Filter") mnuGPR_Click(wb);
    if (key == "Whitening") mnuWhite_Click(wb);
    if (key == "FFT Filter") mnuBCF_Click(wb);
    if (key == "Level") mnuLevel_Click(wb);
    if (key == "VertZoom") mnuVertZoom_Click(wb);
    if (key == "Gain") mnuGain_Click(wb);
    if (key == "Markers") mnuMarkers_Click(wb);
    // The text dialog works on the active view.
    if (key == "Text" || key == "Text_O" || key == "T_P" || key == "T_W")
        wb.views.showDialog(wb, "dlgText", false);
    // The palette chooser serves the open waterfall, whichever kind it is.
    if (key == "Palette") wb.views.showDialog(wb, "dlgPal", true);
    if (key == "Reference") openReferenceDialog(wb, "dlgRef");
    if (key == "Reference_O") openReferenceDialog(wb, "TimeRef");
    if (key == "Ref_P") openReferenceDialog(wb, "PhasaRef");
    // Options, file information, pictures and printing: their forms and their work lie above
    // the core.
    if (key == "Options") wb.views.showDialog(wb, "dlgSettings", true);
    if (key == "Info") wb.views.showDialog(wb, "frmFileInfo", false);
    if (key == "Save as") wb.views.pictureCommand(wb, "mnuSw");
    if (key == "Print") wb.views.pictureCommand(wb, "QuickPrint");
    wb.cmd.touch();
}

void pressButton(Workbench& wb, int number) {
    if (number < 1 || number > CommandState::kButtons) return;
    ToolButton& b = wb.cmd.button(number);
    if (b.key.empty() || !b.visible || !b.enabled || !b.available) return;
    if (b.toggle) b.down = !b.down;
    // Copy: a command may rebuild the toolbar state while it runs.
    const std::string key(b.key);
    TB_event9(wb, key);
}

void mnuMarkers_Click(Workbench& wb) {
    ProgramState& st = wb.st;
    if (wb.cmd.checked("mnuMarkers")) {
        ExitMarkerModue(wb);
        return;
    }
    if (!st.SpectrumOpen) return;
    st.MarkerMode = true;
    wb.cmd.check("mnuMarkers");
    wb.cmd.button(55).down = true;
    wb.cmd.enable("mnMM", false);
    wb.cmd.touch();
    wb.views.viewCommand(wb, ViewId::Spectrum, "MarkerModeOn");
    wb.views.showDialog(wb, "dlgMarkers", false);
}

void ExitMarkerModue(Workbench& wb) {
    wb.st.MarkerMode = false;
    wb.cmd.check("mnuMarkers", false);
    wb.cmd.button(55).down = false;
    wb.cmd.enable("mnMM", wb.st.MarkerCount < 20);
    wb.cmd.touch();
    if (wb.st.SpectrumOpen) wb.views.viewCommand(wb, ViewId::Spectrum, "ExitMarkerModue");
}

void mnuAbout_Click(Workbench& wb) {
    wb.host.about(kMessageTitle,
                  std::string("Kelvorandine workbench ") + kVersion +
                      "\n\nSpectrum, oscilloscope, phase and waterfall views of "
                      "geophysical and instrument recordings." +
                      "\n\nHome folder (settings and working files): " + wb.st.AppPath);
}

bool menuCommand(Workbench& wb, const std::string& name) {
    CommandState& cmd = wb.cmd;
    if (!cmd.hasMenu(name)) return false;
    const MenuEntry& e = cmd.menu(name);
    if (!e.enabled || !e.available) return true;
    const ProgramState& st = wb.st;

    // Entries that do what a toolbar key does.
    struct Alias {
        std::string_view menu;
        const char* key;
    };
    static const Alias kAliases[] = {
        {"mnuOpen", "Import"},       {"mnuOimp", "Open"},      {"mnuExport", "Export"},
        {"mnuFFT", "Spectrum"},      {"mnuTime", "O-scope"},   {"mnuPhase", "Phase"},
        {"mnuBscan", "Waterfall"},   {"mnuOlOp", "All open"},  {"mnuCurvLine", "FFT_AsLine"},
        {"mnuCurvBar", "FFT_AsBar"}, {"mnuxl", "FFT_x_lin"},   {"mnuxlog", "FFT_x_log"},
        {"mnuylin", "FFT_y_lin"},    {"mnuYlog", "FFT_y_log"}, {"mnuAutoscale", "Autoscale"},
        {"mnuAutotune", "Autotune"}, {"mnuSpan", "Span"},      {"mnuGPR", "GPR Filter"},
        {"mnuWhite", "Whitening"},   {"mnuBCF", "FFT Filter"}, {"mnuLevel", "Level"},
        {"mnuVertZoom", "VertZoom"}, {"mnuEYS", "VertZoom"},   {"mnuGain", "Gain"},
        {"mnuylin", "FFT_y_lin"},    {"mnuYlog", "FFT_y_log"}, {"mnuRef", "Reference"},
        {"mnuRefO", "Reference_O"},  {"mnuRefPh", "Ref_P"},    {"mnuMarkers", "Markers"},
        {"mnuTextEdit", "Text"},     {"mnuTO", "Text_O"},      {"mnuTP", "T_P"},
    };
    for (const auto& c : kOscopeCommands)
        if (name == c.menu) {
            TB_event9(wb, c.key);
            return true;
        }
    for (const auto& a : kAliases)
        if (a.menu == name) {
            TB_event9(wb, a.key);
            return true;
        }

    // The colour entries serve the active view.
    const bool o = st.ActiveView == 1, s = st.ActiveView == 2, p = st.ActiveView == 3;
    if (name == "mnuLC") TB_event9(wb, o ? "LC_O" : s ? "FFT_LineColor" : p ? "LC_P" : "");
    if (name == "mnuBC") TB_event9(wb, o ? "BC_O" : s ? "FFT_BackColor" : p ? "BC_P" : "");
    if (name == "mnuGC") TB_event9(wb, o ? "GC_O" : s ? "FFT_GridColor" : p ? "GC_P" : "");
    if (name == "mnuThd") mnuThd_Click(wb);
    if (name == "mnuThdN") mnuThdN_Click(wb);
    if (name == "mnuSdr") mnuSdr_Click(wb);
    if (name == "mnuSnd") mnuSnd_Click(wb);
    if (name == "mnuSnr") mnuSnr_Click(wb);
    if (name == "mnuEnob") mnuEnob_Click(wb);
    if (name == "mnuAbout") mnuAbout_Click(wb);
    if (name == "mnuGSH") wb.host.showHelp();
    // The markers' pop-ups.
    if (name == "mnMM" && !st.MarkerMode) mnuMarkers_Click(wb);
    if (name == "mnuPopUp") ExitMarkerModue(wb);
    if (name == "mnuExM") NoMarkers(wb);
    if (name == "mnuTW") TB_event9(wb, "T_W");
    if (name == "mnuPalettet") TB_event9(wb, "Palette");
    if (name == "mnuOp") TB_event9(wb, "Options");
    if (name == "mnuFInf") TB_event9(wb, "Info");
    if (name == "mnuSw") TB_event9(wb, "Save as");
    if (name == "mnuPrint") wb.views.showDialog(wb, "dlgPrinter", true);
    if (name == "mnuCasc") wb.views.arrange(wb, 0);
    if (name == "mnuHor") wb.views.arrange(wb, 1);
    if (name == "mnuVert") wb.views.arrange(wb, 2);
    return name != "mnuExit";
}

} // namespace kv
