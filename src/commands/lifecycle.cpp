// Start, data-set life and exit.
#include "commands/lifecycle.h"

#include "commands/open.h"
#include "conditioning/conditioning_hooks.h"
#include "engine/engine.h"
#include "platform/files.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "platform/read_error.h"
#include "platform/trace_store.h"
#include "platform/work_folder.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <vector>

namespace kv {

void applyStartConstants(ProgramState& st) {
    st.Pi = 3.14159265358979;
    st.ToolbarButtonCount = 105;
    st.WaterfallZoom = 1;
    st.AutotuneLevel = 10;
    st.DownsampleMode = 0;
    st.GprFilterOn = st.FftFilterOn = st.WhiteningOn = st.AutotuneOn = st.LevelOn = false;
    st.GainOn = false;
    st.GainFactor = 1.0;
    st.PosiblValue = 3.0f;
}

void MDIForm_Load(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    if (!st.AppPath.empty()) {
        std::error_code ec;
        std::filesystem::current_path(st.AppPath, ec);
    }
    applyStartConstants(st);
    installConditioning(st);
    cmd.panel(1) = kCompanyPanel;
    for (const char* m : {"mnuFFT", "mnuTime", "mnuPhase", "mnuBscan", "mnuExport"})
        cmd.enable(m, false);
    cmd.showButtons(4, CommandState::kButtons, false);
    st.TempPath.clear();
    touchFile(joinPath(workingFolder(st), "temp.sp"));
    st.DrSet = 1;
    st.AnalysOnFFT = false;
    st.ShowTHD = st.ShowTHDN = st.ShowSFDR = st.ShowSINAD = st.ShowSNR = st.ShowENOB = false;
    ReadINI(wb);
    cmd.panel(7) = SetWindowName(st); // WindowGain scales every spectrum from the first one on
    st.SpectrumOpen = st.OscOpen = st.PhaseOpen = st.WaterfallOpen = st.RadargramOpen = false;
    st.ExtraViewOpen = false;
    st.PosiblValue = 3.0f;
    cmd.touch();
}

void MDIForm_Unload(Workbench& wb) {
    removeFileQuietly(joinPath(workingFolder(wb.st), "temp.sp"));
    removeFileQuietly(joinPath(wb.st.AppPath, "print.bmp"));
    NoMarkers(wb);
}

bool claimHome(Workbench& wb, HomeLock& lock) {
    const int holder = lock.acquire(wb.st.AppPath);
    if (holder == 0 || holder == -1) return true;
    std::string who = "Another Kelvorandine workbench";
    if (holder > 0) who += " (process " + std::to_string(holder) + ")";
    wb.host.message(who + " is using the home folder " + wb.st.AppPath +
                        ". Close it first, or start this one with another home folder (--home).",
                    kMessageTitle, MsgIcon::Critical);
    return false;
}

void BigFile(ProgramState& st) {
    if (st.TraceCount == 1) {
        st.LastTrace = 0;
        return;
    }
    if (st.TraceCount < 32768) {
        st.LastTrace = toInt16(double(st.TraceCount) - 1);
        st.TraceStep = 1;
    } else {
        // A 16-bit scroll bar cannot hold the count: step through the file d traces at a time,
        // with the largest d from 2 to 10 that divides the count exactly.
        for (int d = 2; d <= 10; ++d) {
            if (st.TraceCount % d == 0) {
                st.TraceStep = d;
                st.LastTrace = toInt16(double(st.TraceCount) / d - 1);
            }
        }
    }
    if (st.ModeFFT == 4) {
        st.LastTrace = toInt16(double(st.LastTrace) / st.AverVal - 1);
        st.TraceStep = st.AverVal;
    }
    st.TracePos = 0;
    st.ScrollStride = int64_t(st.TraceStep) * st.Sp_Samples * 4;
}

void setCurrentTracePos(ProgramState& st) {
    st.CurrentTracePos = st.FirstTracePos + st.ScrollStride * st.TracePos;
}

bool anyViewOpen(const ProgramState& st) {
    return st.SpectrumOpen || st.PhaseOpen || st.OscOpen || st.WaterfallOpen || st.RadargramOpen ||
           st.ExtraViewOpen;
}

void viewUnloaded(Workbench& wb, ViewId v) {
    viewFlag(wb.st, v) = false;
    CleanSet(wb);
}

namespace {

ViewId waterfallOfSetting(const ProgramState& st) {
    return st.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
}

} // namespace

void CloseDataSet(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    st.TempPath.clear();
    st.GainItemCount = 0;
    wb.views.unloadView(wb, ViewId::Spectrum);
    wb.views.unloadView(wb, ViewId::Phase);
    wb.views.unloadView(wb, ViewId::Oscope);
    wb.views.unloadView(wb, waterfallOfSetting(st));
    for (const char* m : {"mnuPrint", "mnuSw", "mnuFFT", "mnuTime", "mnuPhase", "mnuBscan",
                          "mnuExport", "mnuTO", "mnuTP", "mnuTW"})
        cmd.enable(m, false);
    for (int p = 2; p <= 8; ++p)
        cmd.panel(p).clear();
    st.RefShown = false;
    st.RefOn1 = st.RefOn2 = false;
    cmd.check("mnuRef", false);
    st.GprFilterOn = st.FftFilterOn = st.WhiteningOn = false;
    st.LevelOn = false;
    cmd.enable("mnuRef", false);
    cmd.button(54).down = false;
    cmd.touch();
}

void CleanSet(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    cmd.caption = "Kelvorandine ";
    st.FftFilterOn = false;
    cmd.check("mnuBCF", false);
    cmd.button(48).down = false;
    if (!anyViewOpen(st)) {
        st.TempPath.clear();
        for (int p = 2; p <= 9; ++p)
            cmd.panel(p).clear();
        cmd.panel(1) = kCompanyPanel;
        cmd.showButtons(4, CommandState::kButtons, false);
        cmd.enable("mnuFInf", false);
        cmd.check("mnuOlOp", false);
    }
    // Found by name once: CleanSet runs on every open and close, twice on an open that fails.
    static const std::vector<size_t> disabled = CommandState::menuPlaces(
        {"mnuSpan", "mnuPrint", "mnuSw",   "mnuCur",    "mnuEdit", "mnuFInf", "mnuGPR",  "mnuLevel",
         "mnuThd",  "mnuThdN",  "mnuSdr",  "mnuSnd",    "mnuSnr",  "mnuEnob", "mnuFlip", "mnuMxA",
         "mnuMa",   "mnuPP",    "mnuView", "mnuExport", "mnuRefO", "mnuRefPh"});
    static const std::vector<size_t> unchecked = CommandState::menuPlaces(
        {"mnuGPR", "mnuLevel", "mnuThd", "mnuThdN", "mnuSdr", "mnuSnd", "mnuSnr", "mnuEnob",
         "mnuFlip", "mnuMxA", "mnuMa", "mnuPP", "mnuRefO", "mnuRefPh"});
    for (const size_t m : disabled)
        cmd.menuAt(m).enabled = false;
    for (int b : {72, 74, 75, 76})
        cmd.button(b).down = false;
    for (const size_t m : unchecked)
        cmd.menuAt(m).checked = false;
    cmd.touch();
}

void abandonDataSet(Workbench& wb) {
    CleanSet(wb);
    wb.cmd.showButtons(1, 3, true);
    wb.st.TempPath.clear();
    wb.cmd.touch();
}

void NoMarkers(Workbench& wb) {
    wb.st.MarkerMode = false;
    wb.st.MarkerCount = 0;
    wb.cmd.button(55).down = false;
    wb.cmd.check("mnuMarkers", false);
    wb.cmd.touch();
    // The markers and their table are the Spectrum view's.
    if (wb.st.SpectrumOpen) wb.views.viewCommand(wb, ViewId::Spectrum, "NoMarkers");
}

void NoAnalys(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    st.AnalysOnFFT = false;
    for (int b : {41, 42, 43, 44, 45, 46, 47, 48, 33, 32})
        cmd.button(b).down = false;
    st.ShowTHD = st.ShowTHDN = st.ShowSFDR = st.ShowSINAD = st.ShowSNR = st.ShowENOB = false;
    for (const char* m : {"mnuLevel", "mnuThd", "mnuThdN", "mnuSdr", "mnuSnr", "mnuSnd", "mnuEnob",
                          "mnuAutotune", "mnuWhite"}) {
        cmd.enable(m, false);
        cmd.check(m, false);
    }
    cmd.touch();
}

const char* modeText(int modeFFT) {
    switch (modeFFT) {
    case 2:
        return "Stacked mode";
    case 3:
        return "Peak-hold mode";
    case 4:
        return "Average mode";
    default:
        return "Single Trace mode";
    }
}

void InitStatusPanels(Workbench& wb) {
    const ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    cmd.panel(1) = kCompanyPanel;
    // The bin count goes into panels 3 and 4; the X scale then takes 4 over.
    cmd.panel(3) = cmd.panel(4) = "FFT Bins: " + std::to_string(st.Sp_Samples / 2);
    cmd.panel(4) = st.DrSet == 2 ? "X-scale: logaritm " : "X-scale: linear ";
    cmd.panel(5) = st.YLinear ? "Y-scale: linear" : "Y-scale: dB";
    cmd.panel(8) = modeText(st.ModeFFT);
    cmd.panel(6) = "Peak:  ";
    cmd.touch();
}

void ReloadForms(Workbench& wb) {
    ProgramState& st = wb.st;
    st.TraceBuf.assign(checkedCount(st.Sp_Samples) + 1, 0.0f);
    st.TraceBufR.assign(st.TraceBuf.size(), 0.0f);
    FyllSpData(st);
    resetPeakHold(st);
    if (st.SpectrumOpen) {
        if (st.TracePos > st.LastTrace) st.TracePos = st.LastTrace;
        wb.views.redrawView(wb, ViewId::Spectrum);
    }
    if (st.BscanShow == 0 && st.WaterfallOpen) wb.views.redrawView(wb, ViewId::Waterfall);
    if (st.BscanShow == 1 && st.RadargramOpen) wb.views.redrawView(wb, ViewId::Radargram);
    if (st.OscOpen) wb.views.redrawView(wb, ViewId::Oscope);
    if (st.PhaseOpen) wb.views.redrawView(wb, ViewId::Phase);
}

void ChNewDS(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    st.CurrentTracePos = st.FirstTracePos;
    st.ImportFailed = false;
    st.SpanActive = false;
    for (ViewId v : {ViewId::Spectrum, ViewId::Oscope, ViewId::Phase})
        wb.views.unloadView(wb, v);
    if (st.BscanShow == 0 && st.WaterfallOpen) wb.views.unloadView(wb, ViewId::Waterfall);
    if (st.BscanShow == 1 && st.RadargramOpen) wb.views.unloadView(wb, ViewId::Radargram);
    st.TracePos = 0;
    ReadINI(wb);
    st.SourcePath = st.SourcePathKeep;
    deleteWorkingFiles(st);
    setWorkingPaths(st);
    // A re-read that fails leaves no data set rather than a half-written one.
    if (!abandonOnFailure(wb, [&] { rereadDataSet(wb); })) return;
    cmd.caption = "Kelvorandine   " + st.FileTitle;
    cmd.panel(3) = "FFT Bins: " + std::to_string(st.Sp_Samples / 2);
    BigFile(st);
    cmd.enable("mnuFInf");
    cmd.enable("mnuPrint");
    cmd.enable("mnuSw");
    cmd.showButtons(2, 3, true);
    st.Fft_Samples = st.Sp_Samples;
    InitFftState(st);
    const bool read = abandonOnFailure(wb, [&] {
        checkTraceLength(st);
        FyllSpData(st);
    });
    if (!read) return;
    wb.views.loadView(wb, ViewId::Spectrum);
    cmd.showButtons(2, CommandState::kButtons, true);
    wb.views.spectrumFirstDraw(wb);
    cmd.touch();
}

} // namespace kv
