// Comma-separated tables (.csv) of time and value pairs, such as oscilloscope exports, read
// into one trace. The first row is a title row; several pairs on one row become consecutive
// points. How many lines are read is a per-user setting.
#include "import/reader.h"
#include "import/text_lines.h"

#include "platform/numeric.h"

#include <algorithm>

namespace kv {

void csvRowFields(const std::string& line, std::vector<std::string>& row) {
    size_t count = 0;
    auto next = [&]() -> std::string& {
        if (count == row.size()) row.emplace_back();
        std::string& field = row[count++];
        field.clear();
        return field;
    };
    if (line.find('"') == std::string::npos) {
        // No quotes: the fields are the runs between commas.
        size_t from = 0;
        for (size_t comma; (comma = line.find(',', from)) != std::string::npos; from = comma + 1)
            next().assign(line, from, comma - from);
        if (from < line.size()) next().assign(line, from);
        row.resize(count);
        return;
    }
    std::string* field = &next();
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted) {
            if (c == '"') {
                if (i + 1 < line.size() && line[i + 1] == '"') {
                    field->push_back('"');
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                field->push_back(c);
            }
        } else if (c == ',') {
            field = &next();
        } else if (c == '"') {
            quoted = true;
        } else {
            field->push_back(c);
        }
    }
    // The field being built is kept only when it holds something.
    row.resize(field->empty() ? count - 1 : count);
}

std::vector<std::string> csvRowFields(const std::string& line) {
    std::vector<std::string> row;
    csvRowFields(line, row);
    return row;
}

void ReadCsv(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    if (src->size() > uint64_t(INT32_MAX)) throw ReadError("Overflow");
    st.SourceLength = static_cast<int32_t>(src->size());
    const int32_t limit =
        checkedInt32(Val(ctx.wb.host.userSetting("Settings", "MaximumLinesToRead", "1000")));
    // Two lists of that many texts: a limit in the tens of millions is more than memory holds.
    checkedCount(limit);

    // Columns 1, 3, 5 ... of every row go to the times and 2, 4, 6 ... to the values, in
    // order; both lists hold CsvLineLimit + 1 texts, and a row that does not fit fails the read.
    // Only the texts read are kept; the slots past them are empty cells.
    const size_t slots = size_t(limit) + 1;
    std::vector<std::string> times, values;
    auto take = [&](const std::vector<std::string>& row) {
        for (size_t c = 0; c < row.size(); ++c) {
            std::vector<std::string>& list = c % 2 == 0 ? times : values;
            checkIndex(list.size(), slots);
            list.push_back(row[c]);
        }
    };
    static const std::string empty;
    auto cell = [&](const std::vector<std::string>& list, size_t i) -> const std::string& {
        return i < list.size() ? list[i] : empty;
    };
    LineReader lines(*src);
    std::string line;
    std::vector<std::string> row;
    int32_t count = 0;
    while (lines.next(line)) {
        csvRowFields(line, row);
        take(row);
        if (++count == limit) {
            take({"Stopped at " + std::to_string(limit)});
            break;
        }
    }

    // Row 1 (slot 0) is the title row; the last two slots are left out of the points.
    const int32_t points = limit - 2;
    std::vector<double> raw(slots, 0.0);
    // Every cell up to the limit is checked, read or not; an empty one is 0.
    const size_t filled = std::min(std::max(times.size(), values.size()), size_t(limit));
    for (size_t i = 1; i < filled; ++i) {
        cellNumber(cell(times, i));
        raw[i - 1] = cellNumber(cell(values, i));
    }
    std::vector<double> val = raw;
    if (st.NewDS > 1) {
        val = thinPoints(st, std::vector<double>(raw.begin(), raw.begin() + (limit - 1)));
        val.resize(slots, 0.0);
    }
    fitToPointCount(st, double(points) / st.NewDS);

    // The rate comes from the 6th and 5th rows, not the first two.
    checkIndex(5, slots);
    st.SampleRate = checkedDiv(1.0, cellNumber(cell(times, 5)) - cellNumber(cell(times, 4)));

    std::vector<float> trace(checkedCount(std::max(st.Sp_Samples, 0)), 0.0f);
    float csvMax = -10.0f, csvMin = -10.0f;
    const int64_t last = st.PadWithZero ? int64_t(checkedInt32(double(points) / st.NewDS - 1))
                                        : int64_t(st.Sp_Samples) - 1;
    for (int64_t i = 0; i <= last; ++i) {
        checkIndex(size_t(i), val.size());
        checkIndex(size_t(i), trace.size());
        const float v = float(val[size_t(i)]);
        if (v > csvMax) csvMax = v;
        if (v < csvMin) csvMin = v;
        trace[size_t(i)] = v;
    }
    writeSingleTrace(st, trace);
    // Not rounded, unlike the binary readers.
    setUnroundedFullScale(st, csvMax, csvMin, st.ScaleBits);
}

} // namespace kv
