// The import dialog's file types and their order, taken from the format table.
#include "import/file_filters.h"

#include "import/format_table.h"

namespace kv {

bool parseFilterName(const std::string& text, FilterName& out) {
    const std::optional<size_t> row = formatTable().find(text);
    if (row) out.row = *row;
    return row.has_value();
}

std::string importFilter(int fil) {
    return formatTable().dialogFilter(fil);
}

std::string importDialogFilter(int fil) {
    // The table never changes, so one setting always gives the same text: the last one made is
    // kept for the next open.
    thread_local int lastFil = 0;
    thread_local std::string last;
    if (last.empty() || fil != lastFil) {
        std::string patterns;
        for (const std::string& ext : formatTable().extensions())
            patterns += (patterns.empty() ? "*." : ";*.") + ext;
        last = importFilter(fil) + kAllSupportedText + "|" + patterns + "|";
        lastFil = fil;
    }
    return last;
}

int filterIndexOf(int fil, FilterName f) {
    return formatTable().filterIndexOf(fil, f.row);
}

int RadsysIndex(int fil) {
    return formatTable().filterIndexOf(fil, formatTable().find("RADSYS").value());
}

int SprScanIndex(int fil) {
    return formatTable().filterIndexOf(fil, formatTable().find("SPRSCAN").value());
}

int filterIndexForFile(int fil, const std::string& fileName) {
    return formatTable().filterIndexForFile(fil, fileName);
}

std::optional<int> chosenFilterIndex(int fil, const std::string& fileName,
                                     const std::string& filter) {
    int index = 0;
    if (!filter.empty()) {
        FilterName f;
        if (!parseFilterName(filter, f)) return std::nullopt;
        index = filterIndexOf(fil, f);
    } else {
        index = filterIndexForFile(fil, fileName);
    }
    return index < 1 ? 1 : index;
}

} // namespace kv
