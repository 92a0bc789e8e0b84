// The Export command: one save dialog offering the project file and the GSSI-compatible file,
// and the writer its extension names.
#include "commands/export.h"

#include "platform/files.h"
#include "platform/read_error.h"
#include "state/workbench.h"

namespace kv {

void ExportFile(Workbench& wb) {
    // The dialog's options (kExportDialogFlags) are the host's: it asks before overwriting.
    const FileChoice choice = wb.host.saveFile(kExportFilter, "Export file", 1, "");
    if (choice.cancelled) return;
    const std::string title = upperAscii(choice.title);
    const std::string ext = title.size() >= 3 ? title.substr(title.size() - 3) : title;
    // A target that cannot be written, a working file that cannot be read, or too little memory
    // simply ends the command.
    catchInputFailure([&] {
        if (ext == "DZT") DztWrite(wb, choice.path);
        if (ext == "KVD") ProjectWrite(wb, choice.path);
    });
}

} // namespace kv
