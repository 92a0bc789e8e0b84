// The Import command: choose a recording, pick its reader, convert it into the working file,
// and bring the views up.
#pragma once

#include <string>

namespace kv {

struct Workbench;
struct ProgramState;
struct ImportContext;
struct FileChoice;

/// The whole Import command, driven through the host's open dialog. Never throws: every
/// failure ends in the messages and clean-up the formats define, with no data set.
void mnuOpen_Click(Workbench& wb);
/// The Import command with the dialog's answer already known: a file named on the command line
/// or dropped on the window, opened as if the user had picked it with the entry `filterIndex`.
void importFile(Workbench& wb, const std::string& path, int filterIndex);

/// The first steps of an open, before the file dialog: the open's flags reset (IsProject as
/// given; a project also clears the format flags), and the old data set closed.
void closeBeforeOpen(Workbench& wb, bool project);
/// Step 12 of an open, shared with "Open Kelvorandine File": status panels, caption, the
/// scroll mapping, and the menu entries a data set enables.
void announceDataSet(Workbench& wb);
/// Steps 13 to 15 of an open, shared with "Open Kelvorandine File": the FFT for Sp_Samples, the
/// first spectrum, and the start views brought up and arranged. Throws when the working file
/// cannot be read.
void showDataSet(Workbench& wb);

/// Deletes temp.sp, temp_l.sp, temp_r.sp, test.bmp and span.sp in the home folder.
void deleteWorkingFiles(const ProgramState& st);
/// Sets TempPath, TempLeftPath, TempRightPath to their files in the home folder.
void setWorkingPaths(ProgramState& st);
/// ChNewDS's re-read of the open format (WAV, SHT, DAT, CSV, DZT only). Throws ReadError.
void rereadDataSet(Workbench& wb);

} // namespace kv
