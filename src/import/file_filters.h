// The import dialog's list of file types. The default type (`Fil`) decides the order, and with
// it which list positions mean the Radsys .sgy entry and the SPRScan ERA .sg2 entry.
#pragma once

#include <array>
#include <string>

namespace kv {

enum class FilterName { WAV, SHT, DZT, RD3, SEISMIC, RADSYS, SEG2, DT1, ZON, CSV, DAT, SPRSCAN };

/// "WAV", "SHT" ... as the command line names them.
const char* filterName(FilterName f);
/// Parses a name (case-blind); false when unknown.
bool parseFilterName(const std::string& text, FilterName& out);
/// The dialog text of one entry, e.g. "WAVE Files(*.wav)|*.wav|".
const char* filterText(FilterName f);
/// The twelve entries in the order `Fil` (1..12) gives them. A `Fil` out of range gives 1's.
std::array<FilterName, 12> filterOrder(int fil);
/// The joined filter string for the dialog.
std::string importFilter(int fil);
/// 1-based positions of the Radsys and SPRScan ERA entries in that order.
int RadsysIndex(int fil);
int SprScanIndex(int fil);
/// 1-based position of an entry in the order of `fil`.
int filterIndexOf(int fil, FilterName f);
/// The first entry in the order of `fil` whose extension matches the file name's, or 0.
int filterIndexForFile(int fil, const std::string& fileName);

} // namespace kv
