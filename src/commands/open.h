// The Import command: choose a recording, pick its reader, convert it into the working file,
// and bring the views up.
#pragma once

#include <functional>
#include <string>

namespace kv {

struct Workbench;
struct ProgramState;
struct ImportContext;
struct FileChoice;
struct WriteError;
class Host;

/// Where the per-user setting of the last import folder lives (outside SP.ini).
inline constexpr const char* kImportSection = "Import";
inline constexpr const char* kLastFolderKey = "LastFolder";

/// The whole Import command, driven through the host's open dialog. A file that cannot be read
/// ends in the messages and clean-up its format defines, with no data set; only a fault in the
/// program throws.
void mnuOpen_Click(Workbench& wb);
/// The Import command with the dialog's answer already known: a file named on the command line
/// or dropped on the window, opened as if the user had picked it with the entry `filterIndex`.
/// A project file (.kvd) opens as "Open Kelvorandine File" opens it. A path that names no
/// readable file gets a message naming it, and the workbench stays as it was.
void importFile(Workbench& wb, const std::string& path, int filterIndex);
/// Why `path` cannot be opened at all: "No such file: PATH" when nothing is there, "Not a file:
/// PATH" for a folder, "Cannot read file: PATH" when it will not open for reading; empty when
/// it can be read. The message names the file `shownAs` when given (the name as the user typed
/// it), else `path`.
std::string sourceFileProblem(const std::string& path, const std::string& shownAs = {});
/// True when `path` ends in .kvd (any case): the workbench's own project file.
bool isProjectFile(const std::string& path);

/// Runs an open or a re-read. When the file fails the read (see catchInputFailure) the data set
/// is abandoned without a message, or with kOutOfMemoryText when memory ran out; the result is
/// then false. A fault in the program passes through.
/// A working file that cannot be written (WriteError) shows workingFileProblem's message and
/// removes the working files written so far.
bool abandonOnFailure(Workbench& wb, const std::function<void()>& body);
/// The message for a working file that could not be written: it names the folder and why.
std::string workingFileProblem(const WriteError& e);
/// Shows the open dialog with `filter` and `title`, starting in `folder` (empty: wherever the
/// host chooses), and runs `open` on the chosen file under abandonOnFailure. Cancel leaves no
/// data set and shows nothing.
void openFromDialog(Workbench& wb, const std::string& filter, const std::string& title,
                    const std::function<void(const FileChoice&)>& open,
                    const std::string& folder = {});
/// The folder the Import dialog starts in: the one the user last imported from, else the
/// user's home folder.
std::string lastImportFolder(Host& host);
/// Keeps the folder of `path` as the one the next Import dialog starts in.
void rememberImportFolder(Host& host, const std::string& path);

/// What an open does before its file dialog: the open's flags reset (IsProject as given; a
/// project also clears the format flags), and the old data set closed.
void closeBeforeOpen(Workbench& wb, bool project);
/// The data set announced, shared with "Open Kelvorandine File": status panels, caption, the
/// scroll mapping, and the menu entries a data set enables.
void announceDataSet(Workbench& wb);
/// Fails the read when Sp_Samples is no length the spectrum can take: none at all (a header
/// whose trace length no power of two fits), or more than the transform is made for.
void checkTraceLength(const ProgramState& st);
/// The data set shown, shared with "Open Kelvorandine File": the FFT for Sp_Samples, the first
/// spectrum, and the start views brought up and arranged. Throws ReadError when the working
/// file cannot be read or the trace length cannot be taken.
void showDataSet(Workbench& wb);

/// Deletes temp.sp, temp_l.sp, temp_r.sp, test.bmp and span.sp in the working folder.
void deleteWorkingFiles(const ProgramState& st);
/// Sets TempPath, TempLeftPath, TempRightPath to their files in the working folder.
void setWorkingPaths(ProgramState& st);
/// ChNewDS's re-read of the open format (the rows marked for it: WAV, SHT, DAT, CSV, DZT), after
/// which the views read temp.sp unless the format keeps a file per channel. Throws ReadError.
void rereadDataSet(Workbench& wb);

} // namespace kv
