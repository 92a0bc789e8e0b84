// The import dialog's list of file types, as the open command, the command line and the
// workbench's own command line ask for it. The default type (`Fil`) decides the order, and with
// it which list positions mean the Radsys .sgy entry and the SPRScan ERA .sg2 entry. All of it
// comes from the format table.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace kv {

/// An entry of the import dialog as --filter names it: its row in the format table.
struct FilterName {
    size_t row = 0;
    bool operator==(const FilterName&) const = default;
};

/// Parses a name such as "WAV" or "seismic" (case-blind); false when unknown.
bool parseFilterName(const std::string& text, FilterName& out);
/// The joined filter string of the entries, in the order of `fil`.
std::string importFilter(int fil);
/// The text of the entry that lists every file any entry reads: "All supported files".
inline constexpr const char* kAllSupportedText = "All supported files";
/// The import dialog's whole filter: the entries in the order of `fil`, then "All supported
/// files" after all of them, so that it moves none of their positions. Picked, it leaves the
/// reader to the file's extension (the first entry in table order that reads it).
std::string importDialogFilter(int fil);
/// 1-based positions of the Radsys and SPRScan ERA entries in that order.
int RadsysIndex(int fil);
int SprScanIndex(int fil);
/// 1-based position of an entry in the order of `fil`.
int filterIndexOf(int fil, FilterName f);
/// The first entry in the order of `fil` whose extension matches the file name's, or 0.
int filterIndexForFile(int fil, const std::string& fileName);
/// The dialog position a user picks for `fileName`: the entry named `filter` when one is given,
/// else the first whose extension matches, else the first. Nothing when `filter` names no entry.
std::optional<int> chosenFilterIndex(int fil, const std::string& fileName,
                                     const std::string& filter);

} // namespace kv
