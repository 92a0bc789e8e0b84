// The Import command and the re-read after a settings change.
#include "commands/open.h"

#include "commands/export.h"
#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "engine/fft.h"
#include "import/file_filters.h"
#include "import/format_table.h"
#include "platform/files.h"
#include "platform/message_title.h"
#include "platform/read_error.h"
#include "platform/trace_store.h"
#include "state/workbench.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace kv {

namespace {

/// A reader's context as the open step hands it over: the source, the workbench's opener, and
/// the clean-up a reader's failure handler runs.
ImportContext importContext(Workbench& wb, const std::string& source) {
    ImportContext ctx(wb, source);
    ctx.cleanSet = [&wb] { CleanSet(wb); };
    return ctx;
}

/// Runs the reader of the entry the format flags name, with the settings its row puts around
/// it. Returns the row, or nullptr when the open must stop here without a message (a reader
/// that gave up through ImportFailed has told the user why).
const ImportEntry* runReader(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    const ImportEntry* row = formatTable().active(st);
    if (!row) throw ReadError("no format");
    if (row->showVerticalBefore) st.ShowVertical = *row->showVerticalBefore;
    if (row->stereoFlagBefore) st.StereoFlag = *row->stereoFlagBefore;
    if (!row->read) throw ReadError("no reader for this format");
    // The metrics' band follows the source's sample width: a reader that knows it sets it, the
    // others leave 16, whatever the last import said.
    st.SampleBits = 16;
    row->read(ctx);
    if (st.ImportFailed) return nullptr;
    if (row->yUnitAfter) st.YUnitName = row->yUnitAfter;
    if (row->perChannelFiles) {
        const bool stereo = st.Channels > 1;
        ctx.wb.cmd.panel(9) = stereo ? "Stereo/left ch." : "Mono";
        st.ActiveTracePath = stereo ? st.TempLeftPath : st.TempPath;
    }
    return row;
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

/// The open after the dialog gave a file: the working files, the format, the reader, and the
/// data set shown.
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
    formatTable().detect(st, st.FileTitle, formatTable().rowAt(st.Fil, choice.filterIndex));

    ImportContext ctx = importContext(wb, choice.path);
    const ImportEntry* row = runReader(ctx);
    if (!row) {
        // The reader refused the file and said why: the open stops with no data set.
        st.TempPath.clear();
        return;
    }

    // Every source without per-channel files ends with the Bits scale, whatever its row set
    // before the reader.
    if (!row->perChannelFiles) {
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

void checkTraceLength(const ProgramState& st) {
    if (st.Sp_Samples < 1 || st.Sp_Samples > fft::kMaxLength)
        throw ReadError("no trace length the spectrum can take");
}

void showDataSet(Workbench& wb) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    checkTraceLength(st);
    st.Fft_Samples = st.Sp_Samples;
    cmd.panel(3) = "FFT Bins: " + std::to_string(st.Sp_Samples / 2);
    InitFftState(st);
    if (st.ModeFFT == 4 && st.TraceCount <= st.AverVal) st.AverVal = int16_t(st.TraceCount);
    st.TraceBuf.assign(size_t(st.Sp_Samples) + 1, 0.0f);
    st.TraceBufR.assign(st.TraceBuf.size(), 0.0f);
    st.CurrentTracePos = st.FirstTracePos;
    FyllSpData(st);
    st.NewDataSet = true;
    bringUpViews(wb);
    cmd.touch();
}

void deleteWorkingFiles(const ProgramState& st) {
    // One name's room for all five: every open deletes them.
    std::string path;
    for (const char* name : {"temp.sp", "temp_l.sp", "temp_r.sp", "test.bmp", "span.sp"}) {
        joinPathInto(path, workingFolder(st), name);
        KillWorkingFile(path);
    }
}

void setWorkingPaths(ProgramState& st) {
    // Written into the paths' own room: the names are the same on every open.
    joinPathInto(st.TempPath, workingFolder(st), "temp.sp");
    joinPathInto(st.TempLeftPath, workingFolder(st), "temp_l.sp");
    joinPathInto(st.TempRightPath, workingFolder(st), "temp_r.sp");
}

void closeBeforeOpen(Workbench& wb, bool project) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    st.IsProject = project;
    if (project) formatTable().clearFlags(st);
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

std::string workingFileProblem(const WriteError& e) {
    const std::string folder = folderOf(e.path);
    return "The working file could not be written in " + (folder.empty() ? "." : folder) + ": " +
           std::strerror(e.error) + ". The import was stopped.";
}

bool abandonOnFailure(Workbench& wb, const std::function<void()>& body) {
    Failure how = Failure::None;
    try {
        how = catchInputFailure(body);
    } catch (const WriteError& e) {
        // The disk is full or the folder cannot be written: say where, and leave no part of a
        // working file taking the room.
        wb.host.message(workingFileProblem(e), kMessageTitle, MsgIcon::Critical);
        deleteWorkingFiles(wb.st);
        abandonDataSet(wb);
        return false;
    }
    if (how == Failure::None) return true;
    // A failed read has no message of its own here; memory that ran out has.
    if (how == Failure::Memory) wb.host.message(kOutOfMemoryText, kMessageTitle, MsgIcon::Critical);
    abandonDataSet(wb);
    return false;
}

/// Opens what the dialog gave; a cancelled dialog leaves no data set and shows nothing (the old
/// data set is gone already).
static void openChoice(Workbench& wb, const FileChoice& choice,
                       const std::function<void(const FileChoice&)>& open) {
    if (choice.cancelled)
        abandonDataSet(wb);
    else
        abandonOnFailure(wb, [&] { open(choice); });
    wb.cmd.touch();
}

void openFromDialog(Workbench& wb, const std::string& filter, const std::string& title,
                    const std::function<void(const FileChoice&)>& open, const std::string& folder) {
    openChoice(wb, wb.host.openFile(filter, title, 1, folder), open);
}

std::string lastImportFolder(Host& host) {
    std::string folder = host.userSetting(kImportSection, kLastFolderKey, "");
    if (folder.empty()) {
        // Never imported yet: the user's own folder, not the program's.
        const char* home = std::getenv("HOME");
        folder = home ? home : "";
    }
    return folder;
}

void mnuOpen_Click(Workbench& wb) {
    closeBeforeOpen(wb, false);
    openFromDialog(
        wb, importDialogFilter(wb.st.Fil), "Import data files",
        [&](const FileChoice& choice) {
            rememberImportFolder(wb.host, choice.path);
            openChosenFile(wb, choice);
        },
        lastImportFolder(wb.host));
}

void rememberImportFolder(Host& host, const std::string& path) {
    const std::string folder = folderOf(path);
    if (!folder.empty()) host.setUserSetting(kImportSection, kLastFolderKey, folder);
}

std::string sourceFileProblem(const std::string& path, const std::string& shownAs) {
    const std::string& name = shownAs.empty() ? path : shownAs;
    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (!std::filesystem::exists(status)) return "No such file: " + name;
    if (std::filesystem::is_directory(status)) return "Not a file: " + name;
    if (!std::ifstream(path, std::ios::binary)) return "Cannot read file: " + name;
    return {};
}

bool isProjectFile(const std::string& path) {
    return upperAscii(fileTitleOf(path)).ends_with(".KVD");
}

void importFile(Workbench& wb, const std::string& path, int filterIndex) {
    // Checked before anything closes: a mistyped name must not cost the user the data set on
    // show, and must say which name it was.
    if (const std::string problem = sourceFileProblem(path); !problem.empty()) {
        wb.host.message(problem, kMessageTitle, MsgIcon::Critical);
        return;
    }
    rememberImportFolder(wb.host, path);
    if (isProjectFile(path)) {
        closeBeforeOpen(wb, true);
        FileChoice choice;
        choice.cancelled = false;
        choice.path = path;
        choice.title = fileTitleOf(path);
        openChoice(wb, choice, [&](const FileChoice& c) { openProjectFile(wb, c.path, c.title); });
        return;
    }
    FileChoice choice;
    choice.cancelled = false;
    choice.path = path;
    choice.title = fileTitleOf(path);
    choice.filterIndex = filterIndex;
    closeBeforeOpen(wb, false);
    openChoice(wb, choice, [&](const FileChoice& c) { openChosenFile(wb, c); });
}

void rereadDataSet(Workbench& wb) {
    ProgramState& st = wb.st;
    const ImportEntry* row = formatTable().active(st);
    if (row && row->rereadAfterOptions) {
        ImportContext ctx = importContext(wb, st.SourcePath);
        ctx.reread = true;
        row = runReader(ctx);
    }
    if (!row || !row->perChannelFiles) st.ActiveTracePath = st.TempPath;
}

} // namespace kv
