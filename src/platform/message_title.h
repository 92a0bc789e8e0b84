// The title every message box of the workbench carries, and the first words of the status bar
// and the main caption when nothing is loaded.
#pragma once

namespace kv {

inline constexpr const char* kMessageTitle = "Kelvorandine®";
inline constexpr const char* kCompanyPanel = "Hallvik Instruments";

} // namespace kv
