// The import dialog's entries and what is derived from them: filter strings, dialog positions,
// --filter names and the format a file name chooses.
#include "import/format_table.h"

#include "platform/files.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace kv {

namespace {

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

bool hasExtension(const ImportEntry& e, const std::string& upperExt) {
    return std::find(e.extensions.begin(), e.extensions.end(), upperExt) != e.extensions.end();
}

bool nameEndsInExtension(const ImportEntry& e, const std::string& upperName) {
    return std::any_of(e.extensions.begin(), e.extensions.end(),
                       [&](const std::string& x) { return endsWith(upperName, x); });
}

} // namespace

FormatTable::FormatTable(std::vector<ImportEntry> rows,
                         const std::vector<std::string>& dialogOrders)
    : rows_(std::move(rows)) {
    for (const std::string& text : dialogOrders) {
        std::vector<size_t> order;
        std::istringstream names(text);
        for (std::string name; names >> name;) {
            const std::optional<size_t> row = find(name);
            if (!row || std::find(order.begin(), order.end(), *row) != order.end())
                throw std::logic_error("dialog order names an unknown or repeated entry: " + name);
            order.push_back(*row);
        }
        orders_.push_back(std::move(order));
    }
}

void FormatTable::append(ImportEntry entry) {
    rows_.push_back(std::move(entry));
}

const std::vector<size_t>& FormatTable::named(int fil) const {
    static const std::vector<size_t> none;
    if (fil >= 1 && size_t(fil) <= orders_.size()) return orders_[size_t(fil - 1)];
    return orders_.empty() ? none : orders_.front();
}

template <class Visit> void FormatTable::walkOrder(int fil, Visit visit) const {
    const std::vector<size_t>& first = named(fil);
    for (size_t row : first)
        if (visit(row)) return;
    for (size_t i = 0; i < rows_.size(); ++i)
        if (std::find(first.begin(), first.end(), i) == first.end() && visit(i)) return;
}

std::vector<size_t> FormatTable::order(int fil) const {
    std::vector<size_t> out;
    walkOrder(fil, [&](size_t row) {
        out.push_back(row);
        return false;
    });
    return out;
}

std::string FormatTable::dialogFilter(int fil) const {
    std::string s;
    for (size_t i : order(fil))
        s += rows_[i].dialogText;
    return s;
}

std::optional<size_t> FormatTable::find(const std::string& name) const {
    for (size_t i = 0; i < rows_.size(); ++i)
        if (equalsNoCase(name, rows_[i].name)) return i;
    return std::nullopt;
}

int FormatTable::filterIndexOf(int fil, size_t row) const {
    const std::vector<size_t> o = order(fil);
    const auto at = std::find(o.begin(), o.end(), row);
    return at == o.end() ? 0 : int(at - o.begin()) + 1;
}

std::optional<size_t> FormatTable::rowAt(int fil, int filterIndex) const {
    // Counted along the order without making it: every open asks for its entry.
    std::optional<size_t> found;
    if (filterIndex < 1) return found;
    size_t k = size_t(filterIndex - 1);
    walkOrder(fil, [&](size_t row) {
        if (k-- > 0) return false;
        found = row;
        return true;
    });
    return found;
}

int FormatTable::filterIndexForFile(int fil, const std::string& fileName) const {
    const std::string title = fileTitleOf(fileName);
    const auto dot = title.find_last_of('.');
    if (dot == std::string::npos) return 0;
    const std::string ext = upperAscii(title.substr(dot + 1));
    const std::vector<size_t> o = order(fil);
    for (size_t k = 0; k < o.size(); ++k)
        if (hasExtension(rows_[o[k]], ext)) return int(k) + 1;
    return 0;
}

void FormatTable::detect(ProgramState& st, const std::string& fileTitle,
                         std::optional<size_t> chosen) const {
    const std::string up = upperAscii(fileTitle);
    const ImportEntry* match = nullptr;
    if (chosen && *chosen < rows_.size() && nameEndsInExtension(rows_[*chosen], up))
        match = &rows_[*chosen];
    for (size_t i = 0; i < rows_.size() && !match; ++i)
        if (nameEndsInExtension(rows_[i], up)) match = &rows_[i];
    if (match) {
        clearFlags(st);
        st.*match->flag = true;
    }
    markChosen(st, chosen);
}

void FormatTable::markChosen(ProgramState& st, std::optional<size_t> chosen) const {
    for (size_t i = 0; i < rows_.size(); ++i) {
        const ImportEntry& e = rows_[i];
        if (e.chosenFlag && st.*e.flag) st.*e.chosenFlag = chosen == i;
    }
}

const ImportEntry* FormatTable::active(const ProgramState& st) const {
    const ImportEntry* plain = nullptr;
    const ImportEntry* any = nullptr;
    for (const ImportEntry& e : rows_) {
        if (!(st.*e.flag)) continue;
        if (e.chosenFlag && st.*e.chosenFlag) return &e;
        if (!e.chosenFlag && !plain) plain = &e;
        if (!any) any = &e;
    }
    return plain ? plain : any;
}

void FormatTable::clearFlags(ProgramState& st) const {
    for (const ImportEntry& e : rows_)
        st.*e.flag = false;
}

std::string FormatTable::names() const {
    std::string s;
    for (const ImportEntry& e : rows_)
        s += (s.empty() ? "" : " ") + std::string(e.name);
    return s;
}

std::vector<std::string> FormatTable::extensions() const {
    std::vector<std::string> out;
    for (const ImportEntry& e : rows_)
        for (const std::string& x : e.extensions) {
            std::string lower = x;
            for (char& c : lower)
                c = char(std::tolower(static_cast<unsigned char>(c)));
            if (std::find(out.begin(), out.end(), lower) == out.end()) out.push_back(lower);
        }
    return out;
}

} // namespace kv
