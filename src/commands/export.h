// Writing the data set out again: the Export command with its two writers (the native .kvd
// project file and a GSSI-compatible .dzt), and the "Open Kelvorandine File" command that
// reads a project file back.
#pragma once

#include <string>

namespace kv {

struct Workbench;

/// The save dialog filter of the Export command.
inline constexpr const char* kExportFilter =
    "Kelvorandine File(*.kvd)|*.kvd|GSSI compatible file(*.dzt)|*.dzt|";
/// The dialog's options: overwrite prompt, read-only box hidden, path must exist.
inline constexpr int kExportDialogFlags = 2054;
inline constexpr const char* kProjectFilter = "Kelvorandine File(*.kvd)|*.kvd|";

/// The Export command (menu "Export to ..", toolbar "Export"): asks for a target and runs the
/// writer its extension names. Cancel or a failed read or write simply ends the command.
void ExportFile(Workbench& wb);

/// Writes TempPath as a GSSI-compatible 16-bit file. The target is not truncated, and every
/// failure is passed over statement by statement: the writer never fails. The bytes go to a
/// file beside the target, renamed over it once all were written; true when that happened,
/// false when the target was left as it was.
bool DztWrite(Workbench& wb, const std::string& target);

/// Writes TempPath with the project header. The target is not truncated. Throws ReadError when
/// the target cannot be written.
void ProjectWrite(Workbench& wb, const std::string& target);

/// "Open Kelvorandine File": reads a project file into temp.sp and brings the views up as an
/// Import does. Never throws; a failure ends with no data set and no message.
void mnuOimp_Click(Workbench& wb);
/// The same, for a file already chosen (the command-line tool); `title` is the file name.
void openProjectFile(Workbench& wb, const std::string& path, const std::string& title);

} // namespace kv
