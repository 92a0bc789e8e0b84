// The list of formats the Import command knows, in one place.
#include "import/readers.h"

#include "platform/files.h"

namespace kv {

const std::vector<FormatRow>& formatTable() {
    static const std::vector<FormatRow> rows = {
        {&ProgramState::IsWav, "WAV", 0, false, "Percent Full Scale", ReadWav, true},
        {&ProgramState::IsSht, "SHT", 1, true, "Volt", ReadSht, true},
        {&ProgramState::IsDzt, "DZT", 2, true, "Ampl.(bits)", DztRead, true},
        {&ProgramState::IsRd3, "RD3", 2, false, nullptr, ReadRd3, false},
        {&ProgramState::IsSgy, "SGY", 2, false, nullptr, ReadSgy, false},
        {&ProgramState::IsSg2, "SG2", 2, false, nullptr, ReadSg2, false},
        {&ProgramState::IsDt1, "DT1", 2, false, nullptr, ReadDt1, false},
        {&ProgramState::IsDt, "DT", 2, false, nullptr, ReadZon, false},
        {&ProgramState::IsCsv, "CSV", 1, false, nullptr, ReadCsv, true},
        {&ProgramState::IsDat, "DAT", 1, false, nullptr, ReadDat, true},
    };
    return rows;
}

void clearFormatFlags(ProgramState& st) {
    for (const auto& row : formatTable())
        st.*row.flag = false;
}

void detectFormat(ProgramState& st, const std::string& fileTitle) {
    std::string up = upperAscii(fileTitle);
    auto endsWith = [&](const std::string& tail) {
        return up.size() >= tail.size() &&
               up.compare(up.size() - tail.size(), tail.size(), tail) == 0;
    };
    // The tests run in this order and the last match wins; only a name without a dot can
    // match two of them.
    for (const auto& row : formatTable()) {
        if (endsWith(row.name)) {
            clearFormatFlags(st);
            st.*row.flag = true;
        }
    }
}

const FormatRow* activeFormat(const ProgramState& st) {
    for (const auto& row : formatTable())
        if (st.*row.flag) return &row;
    return nullptr;
}

} // namespace kv
