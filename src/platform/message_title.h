// The title every message box of the workbench carries, the first words of the status bar and
// the main caption when nothing is loaded, and the message for a read that ran out of memory.
#pragma once

namespace kv {

inline constexpr const char* kMessageTitle = "Kelvorandine®";
inline constexpr const char* kCompanyPanel = "Hallvik Instruments";
/// Shown, with the critical icon, when reading a file ran out of memory.
inline constexpr const char* kOutOfMemoryText = "Not enough memory to read this file.";

} // namespace kv
