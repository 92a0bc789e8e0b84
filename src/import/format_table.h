// The formats the Import command knows: one row per entry of its file dialog. Everything that
// lists formats walks this table: the dialog's filter string and its order, the names the
// command line takes for --filter, the choice of reader from a file name, the settings the open
// puts around the reader, and the tests' list of extensions.
#pragma once

#include "import/reader.h"

#include <optional>
#include <string>
#include <vector>

namespace kv {

/// One entry of the import dialog.
struct ImportEntry {
    /// The name --filter takes ("WAV", "SEISMIC"); compared without regard to case.
    const char* name = nullptr;
    /// The entry's text in the dialog's filter, with its pattern: "WAVE Files(*.wav)|*.wav|".
    const char* dialogText = nullptr;
    /// The file-name endings that choose this entry's format, upper case and without the dot.
    /// The first one names the format in reports ("SGY").
    std::vector<std::string> extensions = {};
    /// The format flag a matching name sets (the others go False).
    bool ProgramState::*flag = nullptr;
    /// For entries that share an extension and a flag: a flag that is True exactly when the
    /// dialog's entry was this one (the Radsys .sgy, the SPRScan ERA .sg2). nullptr: none.
    bool ProgramState::*chosenFlag = nullptr;
    /// The reader; nullptr for an entry whose reader is not there yet (the open then fails).
    ReaderFn read = nullptr;
    /// Set before the reader when given: the O-scope's vertical scale and StereoFlag.
    std::optional<int16_t> showVerticalBefore = std::nullopt;
    std::optional<int16_t> stereoFlagBefore = std::nullopt;
    /// YUnitName after a reader that did not give up; nullptr: left as it is.
    const char* yUnitAfter = nullptr;
    /// The reader may write one working file per channel (WAV): the channel count then picks
    /// the file the views read and status panel 9 tells which. Every other format leaves the
    /// views on temp.sp with the Bits scale.
    bool perChannelFiles = false;
    /// Read again, with the new down-sampling, when the options change (ChNewDS).
    bool rereadAfterOptions = false;
};

/// The rows in table order, and the dialog order each default type `Fil` gives them.
class FormatTable {
  public:
    /// `dialogOrders[f - 1]` lists, by name and separated by blanks, the entries in the order
    /// the dialog shows them when `Fil` is f. Entries an order does not name follow it in
    /// table order, so a row appended to the table comes last in every dialog.
    FormatTable(std::vector<ImportEntry> rows, const std::vector<std::string>& dialogOrders);

    const std::vector<ImportEntry>& rows() const { return rows_; }
    const ImportEntry& row(size_t i) const { return rows_.at(i); }
    /// Adds an entry after the last one.
    void append(ImportEntry entry);

    /// Row numbers in the dialog order of `fil`; a `fil` without an order of its own takes the
    /// first one's.
    std::vector<size_t> order(int fil) const;
    /// The joined filter string of the dialog.
    std::string dialogFilter(int fil) const;
    /// The row of a --filter name (case-blind), if there is one.
    std::optional<size_t> find(const std::string& name) const;
    /// The 1-based dialog position of `row` in the order of `fil`.
    int filterIndexOf(int fil, size_t row) const;
    /// The row at a 1-based dialog position, if there is one.
    std::optional<size_t> rowAt(int fil, int filterIndex) const;
    /// The first dialog position whose extensions hold the file name's extension, or 0.
    int filterIndexForFile(int fil, const std::string& fileName) const;

    /// Sets the format flag from the end of a file name: the dialog's chosen row when the name
    /// ends in one of its extensions, else the first row in table order whose extension ends
    /// it. A name that ends in none leaves the flags as they were. The chosen-entry flags of
    /// the format's rows follow the dialog's choice.
    void detect(ProgramState& st, const std::string& fileTitle,
                std::optional<size_t> chosen = std::nullopt) const;
    /// The row whose reader runs for the flags as they stand, or nullptr when none is set.
    const ImportEntry* active(const ProgramState& st) const;
    /// Every format flag False.
    void clearFlags(ProgramState& st) const;

    /// The --filter names in table order, separated by blanks.
    std::string names() const;
    /// Every extension once, lower case, in table order.
    std::vector<std::string> extensions() const;

  private:
    /// The rows the dialog order of `fil` names, in its order.
    const std::vector<size_t>& named(int fil) const;
    /// Goes along the dialog order of `fil` (the rows it names, then every other row in table
    /// order) until `visit(row)` returns true.
    template <class Visit> void walkOrder(int fil, Visit visit) const;
    void markChosen(ProgramState& st, std::optional<size_t> chosen) const;
    std::vector<ImportEntry> rows_;
    std::vector<std::vector<size_t>> orders_;
};

/// The workbench's table (import/reader_table.cpp).
const FormatTable& formatTable();

} // namespace kv
