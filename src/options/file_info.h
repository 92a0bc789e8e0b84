// The file-information window: what the reader found in the source, one line each, chosen by
// the format that is open. Zon and DAT recordings have no lines of their own, so their window
// stays empty; the entries that read every variant of a format add what their headers said.
#pragma once

#include <string>
#include <vector>

namespace kv {

struct Workbench;
struct ProgramState;

/// The lines the window lists, in order: the builder of each format flag that is set, tested
/// DZT, WAV, SHT, DT1, RD3, SEG-Y, SEG-2, CSV, then a project file, and after them the header
/// lines the readers of every variant keep. Empty when no data set is loaded.
std::vector<std::string> FileInfoLines(const ProgramState& st);

/// What the window shows: its one list.
struct FileInfoFields {
    std::vector<std::string> List;
};

namespace frmFileInfo {
/// Fills the list from the state.
void Form_Load(Workbench& wb, FileInfoFields& f);
} // namespace frmFileInfo

} // namespace kv
