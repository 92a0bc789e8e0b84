// The Import command and the re-read after a settings change.
#include "commands/open.h"

#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "import/file_filters.h"
#include "import/readers.h"
#include "platform/files.h"
#include "state/workbench.h"

namespace kv {

namespace {

struct DialogCancelled {};

/// A reader's context as the open step hands it over: the source, the workbench's opener, and
/// the clean-up a reader's failure handler runs.
ImportContext importContext(Workbench& wb, const std::string& source, int filterIndex) {
    ImportContext ctx(wb, source, filterIndex);
    ctx.cleanSet = [&wb] { CleanSet(wb); };
    return ctx;
}

/// Runs the reader of the flag that is set, with the settings the open command puts around it.
/// Returns false when the open must stop here without a message (the scope reader gave up).
bool runReader(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    const FormatRow* row = activeFormat(st);
    if (!row) throw ReadError("no format");
    if (st.IsWav) {
        st.StereoFlag = 1;
        if (!WavCheck(ctx))
            ctx.wb.host.message(ctx.reread ? "Corrupted file!" : "File corrupted!", kMessageTitle,
                                MsgIcon::Critical);
        ReadWav(ctx);
        st.YUnitName = row->yUnitAfter;
        if (st.Channels > 1) {
            ctx.wb.cmd.panel(9) = "Stereo/left ch.";
            st.ActiveTracePath = st.TempLeftPath;
        } else {
            ctx.wb.cmd.panel(9) = "Mono";
            st.ActiveTracePath = st.TempPath;
        }
        return true;
    }
    if (row->showVerticalBefore) st.ShowVertical = row->showVerticalBefore;
    if (row->stereoOff) st.StereoFlag = 0;
    if (st.IsSgy) st.IsRadsys = ctx.filterIndex == RadsysIndex(st.Fil);
    if (st.IsSg2) st.IsSprScan = ctx.filterIndex == SprScanIndex(st.Fil);
    if (!row->read) throw ReadError("no reader for this format");
    row->read(ctx);
    // The scope reader clears its own flag when it gives up, so ask the row, not the flag.
    if (row->flag == &ProgramState::IsSht && st.ImportFailed) return false;
    if (row->yUnitAfter) st.YUnitName = row->yUnitAfter;
    return true;
}

ViewId waterfallOf(const ProgramState& st) {
    return st.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
}

void bringUpViews(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    if (st.StSp == 1) {
        wb.views.loadView(wb, ViewId::Spectrum);
        cmd.showButtons(2, CommandState::kButtons, true);
        wb.views.spectrumFirstDraw(wb);
        st.ScaleBits = st.FullScalePos;
    }
    if (st.StOs == 1) wb.views.loadView(wb, ViewId::Oscope);
    if (st.StPh == 1) wb.views.loadView(wb, ViewId::Phase);
    if (st.StWat == 1) wb.views.loadView(wb, waterfallOf(st));

    const int set = (st.StSp == 1) + (st.StOs == 1) + (st.StPh == 1) + (st.StWat == 1);
    if (set == 1) {
        if (st.StSp == 1) wb.views.maximiseView(wb, ViewId::Spectrum);
        if (st.StOs == 1) wb.views.maximiseView(wb, ViewId::Oscope);
        if (st.StPh == 1) wb.views.maximiseView(wb, ViewId::Phase);
        if (st.StWat == 1) wb.views.maximiseView(wb, waterfallOf(st));
    } else if (set == 0) {
        wb.views.maximiseView(wb, ViewId::Spectrum);
    } else {
        wb.views.arrange(wb, 1);
    }
}

/// Steps 5 to 15 of the open, after the dialog gave a file.
void openChosenFile(Workbench& wb, const FileChoice& choice) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    st.SourcePath = choice.path;
    st.SourcePathKeep = choice.path;
    deleteWorkingFiles(st);
    setWorkingPaths(st);
    st.SourceDisplayPath = choice.path;
    st.SourceInfoLines.clear();
    st.FileTitle = choice.title;
    detectFormat(st, st.FileTitle);

    ImportContext ctx = importContext(wb, choice.path, choice.filterIndex);
    if (!runReader(ctx)) return;

    if (!st.IsWav) {
        st.ShowVertical = 2;
        st.ActiveTracePath = st.TempPath;
    }
    if (st.ImportCancelled) {
        CloseDataSet(wb);
        return;
    }
    if (!ctx.dialogFileName.empty()) {
        st.FirstTracePos = 1;
        announceDataSet(wb);
        cmd.showButtons(1, 3, true);
    }
    showDataSet(wb);
}

} // namespace

void announceDataSet(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    InitStatusPanels(wb);
    cmd.caption = "Kelvorandine   " + st.FileTitle;
    cmd.panel(3) = "FFT Bins: " + std::to_string(st.Sp_Samples / 2);
    BigFile(st);
    for (const char* m : {"mnuFInf", "mnuPrint", "mnuSw", "mnuFFT", "mnuTime", "mnuPhase",
                          "mnuBscan", "mnuOlOp", "mnuExport"})
        cmd.enable(m);
}

void showDataSet(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    st.Fft_Samples = st.Sp_Samples;
    cmd.panel(3) = "FFT Bins: " + std::to_string(st.Sp_Samples / 2);
    InitFftState(st);
    if (st.ModeFFT == 4 && st.TraceCount <= st.AverVal) st.AverVal = int16_t(st.TraceCount);
    st.TraceBuf.assign(size_t(st.Sp_Samples) + 1, 0.0f);
    st.TraceBufR.assign(size_t(st.Sp_Samples) + 1, 0.0f);
    st.CurrentTracePos = st.FirstTracePos;
    FyllSpData(st);
    st.NewDataSet = true;
    bringUpViews(wb);
    cmd.touch();
}

void deleteWorkingFiles(const ProgramState& st) {
    for (const char* name : {"temp.sp", "temp_l.sp", "temp_r.sp", "test.bmp", "span.sp"})
        KillWorkingFile(joinPath(st.AppPath, name));
}

void setWorkingPaths(ProgramState& st) {
    st.TempPath = joinPath(st.AppPath, "temp.sp");
    st.TempLeftPath = joinPath(st.AppPath, "temp_l.sp");
    st.TempRightPath = joinPath(st.AppPath, "temp_r.sp");
}

void closeBeforeOpen(Workbench& wb, bool project) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    st.IsProject = project;
    if (project) clearFormatFlags(st);
    st.ImportFailed = false;
    st.SpanActive = false;
    st.CurrentTracePos = 1;
    st.FirstTracePos = 1;
    st.NewDS = 1;
    st.ImportCancelled = false;
    if (!anyViewOpen(st)) {
        st.TempPath.clear();
        cmd.enable("mnuPrint", false);
        cmd.enable("mnuSw", false);
    }
    CloseDataSet(wb);
}

/// The Import command; `given` answers the file dialog without showing it.
static void importChosenFile(Workbench& wb, const FileChoice* given) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    closeBeforeOpen(wb, false);
    try {
        FileChoice choice =
            given ? *given : wb.host.openFile(importFilter(st.Fil), "Import data files", 1);
        if (choice.cancelled) throw DialogCancelled{};
        openChosenFile(wb, choice);
    } catch (...) {
        // Cancel, or a reader that failed without a handler of its own: no message, no data.
        abandonDataSet(wb);
    }
    cmd.touch();
}

void mnuOpen_Click(Workbench& wb) {
    importChosenFile(wb, nullptr);
}

void importFile(Workbench& wb, const std::string& path, int filterIndex) {
    FileChoice choice;
    choice.cancelled = false;
    choice.path = path;
    choice.title = fileTitleOf(path);
    choice.filterIndex = filterIndex;
    importChosenFile(wb, &choice);
}

void rereadDataSet(Workbench& wb) {
    ProgramState& st = wb.st;
    const FormatRow* row = activeFormat(st);
    if (!row || !row->rereadAfterOptions) return;
    ImportContext ctx = importContext(wb, st.SourcePath, 1);
    ctx.reread = true;
    runReader(ctx);
}

} // namespace kv
