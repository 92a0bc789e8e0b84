// Oscilloscope captures exported as CSV, as the instruments write them: a preamble of settings
// and a row of column names (and perhaps one of units) come first, and the numbers begin where
// every cell of a row is a number. The first of several columns is the time or the sample
// number, the others are channels; the options choose which channel is shown. The sample
// interval comes from the preamble (an increment, an interval or a sampling frequency) or else
// from the time column. Cells may be quoted; fields may be separated by commas, semicolons or
// tabs, and a decimal comma is read as a point. One capture is one trace.
#include "import/standard_reading.h"
#include "import/text_lines.h"

#include "platform/numeric.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace kv {

namespace {

/// Rows looked at for the separator before the reading starts.
constexpr int kRowsForSeparator = 64;
/// Preamble rows allowed before the numbers must have begun.
constexpr size_t kLongestPreamble = 1000;
/// Preamble rows shown in file information, and the characters shown of each.
constexpr size_t kPreambleRowsShown = 40;
constexpr size_t kPreambleWidthShown = 120;
/// The longest trace the workbench makes.
constexpr int64_t kLongestTrace = 65536;

std::string lower(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// The fuzz build traces every comparison of integers in our code, and a row is scanned here
// once per cell of a long table: the scans below find their characters with memchr and step
// with pointers, whose comparisons are not traced, leaving the traced ones to the comparisons
// that decide something about the cell.

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/// The first `c` in [p, end), or end.
const char* findIn(const char* p, const char* end, char c) {
    const void* at = p == end ? nullptr : std::memchr(p, c, size_t(end - p));
    return at ? static_cast<const char*>(at) : end;
}

/// [b, e) without the blanks around it.
std::string_view withoutBlanks(const char* b, const char* e) {
    while (b != e && isBlank(*b))
        ++b;
    while (e != b && isBlank(e[-1]))
        --e;
    return std::string_view(b, size_t(e - b));
}

/// Counts the separators that stand outside quotes; the first of ';' and tab that occurs in
/// the opening rows wins, else the comma.
char detectSeparator(LineReader& lines) {
    std::string_view line;
    bool tab = false;
    for (int n = 0; n < kRowsForSeparator && lines.next(line); ++n) {
        if (line.find('"') == std::string_view::npos) {
            // No quotes (nearly every row): every separator in it counts.
            if (line.find(';') != std::string_view::npos) return ';';
            if (line.find('\t') != std::string_view::npos) tab = true;
            continue;
        }
        // The runs between quotes, every other one outside them.
        const char* const end = line.data() + line.size();
        bool quoted = false;
        for (const char* p = line.data();;) {
            const char* quote = findIn(p, end, '"');
            if (!quoted) {
                if (findIn(p, quote, ';') != quote) return ';';
                if (findIn(p, quote, '\t') != quote) tab = true;
            }
            if (quote == end) break;
            quoted = !quoted;
            p = quote + 1;
        }
    }
    return tab ? '\t' : ',';
}

/// Rows split at a separator outside quotes. Quotes are removed (a doubled quote inside quotes
/// is one quote), cells are trimmed of blanks, and empty cells at the end of the row are
/// dropped: many instruments end every row with a separator. A row of nothing but separators
/// is empty.
class RowSplitter {
  public:
    explicit RowSplitter(char sep) : sep_(sep) {}

    /// The cells of `line`: views of the line, or for a row with quotes of the splitter's own
    /// text. They last until the next row is split (and the line as long as they are used).
    const std::vector<std::string_view>& split(std::string_view line) {
        cells_.clear();
        if (line.find('"') == std::string_view::npos) {
            // No quotes (nearly every row): the cells are the runs between separators.
            const char* const end = line.data() + line.size();
            for (const char* from = line.data();;) {
                const char* to = findIn(from, end, sep_);
                cells_.push_back(withoutBlanks(from, to));
                if (to == end) break;
                from = to + 1;
            }
        } else {
            // The cells' texts go one after another into one buffer, copied in runs up to the
            // next quote (or, outside quotes, separator), and become views of it once it has
            // stopped growing.
            unquoted_.clear();
            ends_.clear();
            const char* const end = line.data() + line.size();
            const char* sep = findIn(line.data(), end, sep_); // the first at or after p
            bool quoted = false;
            for (const char* p = line.data(); p != end;) {
                const char* quote = findIn(p, end, '"');
                if (quoted) {
                    unquoted_.append(p, quote);
                    if (quote == end) break;
                    if (quote + 1 != end && quote[1] == '"') {
                        unquoted_.push_back('"');
                        p = quote + 2;
                    } else {
                        quoted = false;
                        p = quote + 1;
                    }
                    continue;
                }
                if (sep < p) sep = findIn(p, end, sep_);
                const char* stop = std::min(quote, sep);
                unquoted_.append(p, stop);
                if (stop == end) break;
                if (stop == quote)
                    quoted = true;
                else
                    ends_.push_back(unquoted_.size());
                p = stop + 1;
            }
            ends_.push_back(unquoted_.size());
            size_t from = 0;
            for (const size_t to : ends_) {
                cells_.push_back(withoutBlanks(unquoted_.data() + from, unquoted_.data() + to));
                from = to;
            }
        }
        while (!cells_.empty() && cells_.back().empty())
            cells_.pop_back();
        return cells_;
    }

  private:
    char sep_;
    std::vector<std::string_view> cells_;
    std::string unquoted_;
    std::vector<size_t> ends_; // where each cell of a quoted row ends in unquoted_
};

/// A cell as a number: an optional sign, digits with a decimal point or comma, an optional
/// exponent, nothing else. Texts such as "inf" or "NaN" are not numbers here.
std::optional<double> cellValue(std::string_view cell) {
    const char* b = cell.data();
    const char* e = b + cell.size();
    // Read in place; only a decimal comma is rewritten, in a buffer that keeps its room.
    if (b != e && !std::memchr(b, '.', cell.size()) && std::count(b, e, ',') == 1) {
        thread_local std::string pointed;
        pointed = cell;
        std::replace(pointed.begin(), pointed.end(), ',', '.');
        b = pointed.data();
        e = b + pointed.size();
    }
    if (b != e && *b == '+') ++b;
    const char* digits = b != e && *b == '-' ? b + 1 : b;
    if (digits == e) return std::nullopt;
    if (!std::isdigit(static_cast<unsigned char>(*digits)) && *digits != '.') return std::nullopt;
    double v = 0.0;
    const auto r = std::from_chars(b, e, v);
    if (r.ec != std::errc() || r.ptr != e || !std::isfinite(v)) return std::nullopt;
    return v;
}

bool allNumbers(const std::vector<std::string_view>& cells) {
    return !cells.empty() &&
           std::all_of(cells.begin(), cells.end(), [](std::string_view c) { return cellValue(c); });
}

/// Rows of cells kept in one text: a preamble of many rows and cells costs a few growing
/// buffers, not an allocation a cell.
class CellRows {
  public:
    void add(std::span<const std::string_view> cells) {
        first_.push_back(ends_.size());
        for (const std::string_view cell : cells) {
            text_.append(cell);
            ends_.push_back(text_.size());
        }
    }
    /// No rows; the buffers keep their room.
    void clear() {
        text_.clear();
        ends_.clear();
        first_.clear();
    }
    /// Bytes the buffers hold room for.
    size_t room() const {
        return text_.capacity() + (ends_.capacity() + first_.capacity()) * sizeof(size_t);
    }
    size_t rows() const { return first_.size(); }
    size_t width(size_t r) const {
        return (r + 1 < first_.size() ? first_[r + 1] : ends_.size()) - first_[r];
    }
    std::string_view cell(size_t r, size_t i) const {
        const size_t k = first_[r] + i;
        const size_t from = k == 0 ? 0 : ends_[k - 1];
        return std::string_view(text_).substr(from, ends_[k] - from);
    }

  private:
    std::string text_;
    std::vector<size_t> ends_;  // where each cell ends in text_
    std::vector<size_t> first_; // each row's first cell
};

/// The sample interval a preamble gives: a cell naming an increment, an interval or a sampling
/// period, or a sampling frequency or rate, with its number to the right of it or below it.
std::optional<double> preambleInterval(const CellRows& rows) {
    // Cells are lowered as std::tolower lowers them, looked up in a table made at the first
    // cell that needs it: the locale does not change during a read.
    std::array<char, 256> lowered{};
    bool tabled = false;
    std::string label;
    for (size_t r = 0; r < rows.rows(); ++r) {
        const size_t width = rows.width(r);
        for (size_t i = 0; i < width; ++i) {
            const std::string_view cell = rows.cell(r, i);
            // The shortest of the names below, "interval", has eight letters.
            if (cell.size() < 8) continue;
            if (!tabled) {
                for (int b = 0; b < 256; ++b)
                    lowered[size_t(b)] = char(std::tolower(b));
                tabled = true;
            }
            label.resize(cell.size());
            std::transform(cell.begin(), cell.end(), label.begin(),
                           [&](char c) { return lowered[static_cast<unsigned char>(c)]; });
            // Every name holds "in" or "sampl": a cell with neither (most of them) is passed
            // over at two searches.
            if (label.find("in") == std::string::npos && label.find("sampl") == std::string::npos)
                continue;
            const bool interval = label.find("increment") != std::string::npos ||
                                  label.find("interval") != std::string::npos ||
                                  label.find("sampling period") != std::string::npos ||
                                  label.find("sample period") != std::string::npos;
            const bool rate = label.find("sampling frequency") != std::string::npos ||
                              label.find("sample frequency") != std::string::npos ||
                              label.find("sampling rate") != std::string::npos ||
                              label.find("sample rate") != std::string::npos;
            if (!interval && !rate) continue;
            std::optional<double> v;
            if (i + 1 < width) v = cellValue(rows.cell(r, i + 1));
            if (!v && r + 1 < rows.rows() && i < rows.width(r + 1))
                v = cellValue(rows.cell(r + 1, i));
            if (v && *v > 0.0) return interval ? *v : 1.0 / *v;
        }
    }
    return std::nullopt;
}

/// The column headings of the first column in the last two preamble rows (names, units).
std::vector<std::string> firstColumnHeadings(const CellRows& rows) {
    std::vector<std::string> out;
    for (size_t r = rows.rows(); r-- > 0 && out.size() < 2;)
        if (rows.width(r) > 0) out.push_back(lower(rows.cell(r, 0)));
    return out;
}

/// Seconds per unit of a time heading such as "Time (s)", "Second", "(ms)" or "us"; 1 when the
/// heading names no unit.
double timeUnit(const std::vector<std::string>& headings) {
    for (const std::string& h : headings) {
        std::string u = h;
        const size_t open = h.find('('), close = h.find(')');
        if (open != std::string::npos && close != std::string::npos && close > open)
            u = h.substr(open + 1, close - open - 1);
        u = std::string(withoutBlanks(u.data(), u.data() + u.size()));
        if (u == "ms") return 1e-3;
        if (u == "us" || u == "\xC2\xB5s" || u == "\xCE\xBCs") return 1e-6;
        if (u == "ns") return 1e-9;
        if (u == "ps") return 1e-12;
    }
    return 1.0;
}

bool countsSamples(const std::vector<std::string>& headings) {
    for (const std::string& h : headings)
        if (h == "sequence" || h == "index" || h == "no" || h == "no." || h == "#" || h == "n")
            return true;
    return false;
}

std::string quoted(std::string_view cell) {
    return "\"" + (cell.size() > 40 ? std::string(cell.substr(0, 40)) + "..." : std::string(cell)) +
           "\"";
}

/// What one pass over the file finds.
struct Capture {
    CellRows preamble;       // the rows before the numbers
    CellRows shown;          // the first of them as written, one cell each, as far as shown
    size_t firstDataRow = 0; // 1-based
    size_t width = 0;        // cells per data row
    int channels = 0;
    int channel = 0;  // 0-based, among the channels
    int64_t rows = 0; // data rows
    double firstX = 0.0, lastX = 0.0;
    std::vector<float> values; // the channel's first samples, as many as a trace can take
};

/// Room a thread keeps for the next read's capture.
constexpr size_t kKeptRoom = size_t(1) << 20;

/// A capture whose buffers come from the last read on the thread and go back to the next when
/// this read is over, however it ends: a run of reads (a fuzz target's above all) grows them
/// once, not on every read, and the allocator hands out no fresh pages to fault in. A read
/// started while another is under way on the thread (the host's yield lets the user act) finds
/// none to take and grows its own. Buffers grown past kKeptRoom are given back to the system.
class LentCapture {
  public:
    LentCapture() {
        // Only the buffers are taken, emptied: the rest starts as a new capture's does.
        Capture& kept = spare();
        c_.preamble = std::move(kept.preamble);
        c_.shown = std::move(kept.shown);
        c_.values = std::move(kept.values);
        c_.preamble.clear();
        c_.shown.clear();
        c_.values.clear();
    }
    ~LentCapture() {
        if (c_.preamble.room() + c_.shown.room() + c_.values.capacity() * sizeof(float) <=
            kKeptRoom)
            spare() = std::move(c_);
    }
    LentCapture(const LentCapture&) = delete;
    LentCapture& operator=(const LentCapture&) = delete;
    Capture& get() { return c_; }

  private:
    static Capture& spare() {
        thread_local Capture kept;
        return kept;
    }
    Capture c_;
};

void readCapture(ImportContext& ctx, const ByteSource& src, size_t keep, Capture& c) {
    LineReader lines(src);
    RowSplitter rows(detectSeparator(lines));
    lines.restart();
    std::string_view line;
    size_t rowNo = 0;
    bool inData = false, ended = false;
    size_t column = 0;
    while (lines.next(line)) {
        ++rowNo;
        if (rowNo == 1 && line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
        const std::vector<std::string_view>& cells = rows.split(line);
        if (!inData) {
            if (!allNumbers(cells)) {
                if (c.preamble.rows() >= kLongestPreamble)
                    throw UnreadableFile("The CSV file holds no rows of numbers in its first " +
                                         std::to_string(kLongestPreamble) + " rows.");
                c.preamble.add(cells);
                if (c.shown.rows() < kPreambleRowsShown) {
                    const std::string_view text = line.substr(0, kPreambleWidthShown);
                    c.shown.add({&text, 1});
                }
                continue;
            }
            inData = true;
            c.firstDataRow = rowNo;
            c.width = cells.size();
            c.channels = c.width >= 2 ? int(c.width - 1) : 1;
            c.channel = chosenChannel(ctx.st, c.channels);
            column = c.width >= 2 ? size_t(c.channel) + 1 : 0;
        }
        if (cells.empty()) {
            ended = true;
            continue;
        }
        if (ended)
            throw UnreadableFile("Row " + std::to_string(rowNo) +
                                 " of the CSV file follows an empty row inside the numbers.");
        if (cells.size() != c.width)
            throw UnreadableFile("Row " + std::to_string(rowNo) + " of the CSV file has " +
                                 std::to_string(cells.size()) +
                                 " values where the rows above have " + std::to_string(c.width) +
                                 ".");
        double x = 0.0, v = 0.0;
        const auto shown = cells.begin() + std::ptrdiff_t(column);
        for (auto cell = cells.begin(); cell != cells.end(); ++cell) {
            const std::optional<double> n = cellValue(*cell);
            if (!n)
                throw UnreadableFile("Row " + std::to_string(rowNo) + ", column " +
                                     std::to_string(cell - cells.begin() + 1) +
                                     " of the CSV file holds " + quoted(*cell) +
                                     " where a number belongs.");
            if (cell == cells.begin()) x = *n;
            if (cell == shown) v = *n;
        }
        if (c.rows == 0) c.firstX = x;
        c.lastX = x;
        if (c.values.size() < keep) c.values.push_back(float(v));
        ++c.rows;
    }
    if (!inData) throw UnreadableFile("The CSV file holds no rows of numbers.");
}

void readCsv(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    setSourceLength(st, src->size());
    const int64_t ds = std::max<int>(st.NewDS, 1);
    const size_t keep = size_t(std::min(kLongestTrace * ds, kLongestRawTrace));
    LentCapture lent;
    Capture& c = lent.get();
    readCapture(ctx, *src, keep, c);

    const std::vector<std::string> headings = firstColumnHeadings(c.preamble);
    double interval = 0.0;
    std::string intervalFrom;
    if (const auto given = preambleInterval(c.preamble)) {
        interval = *given;
        intervalFrom = "from the preamble";
    } else if (c.width < 2) {
        throw UnreadableFile("The CSV file gives no sample interval: it has one column and no "
                             "increment in its preamble.");
    } else if (countsSamples(headings)) {
        throw UnreadableFile("The CSV file gives no sample interval: its first column counts "
                             "samples and its preamble has no increment.");
    } else if (c.rows >= 2 && c.lastX > c.firstX) {
        interval = (c.lastX - c.firstX) / double(c.rows - 1) * timeUnit(headings);
        intervalFrom = "from the time column";
    } else {
        throw UnreadableFile("The CSV file gives no sample interval: its preamble has no "
                             "increment and its time column does not rise.");
    }
    if (!(interval > 0.0) || !std::isfinite(1.0 / interval))
        throw UnreadableFile("The CSV file's sample interval cannot give a sample rate.");

    const int64_t points = c.rows / ds;
    if (points < 1)
        throw UnreadableFile("The CSV file's " + std::to_string(c.rows) +
                             " samples cannot be thinned by " + std::to_string(ds) + ".");
    if (points < 2)
        st.Sp_Samples = 2;
    else if (points > kLongestTrace)
        st.Sp_Samples = int32_t(kLongestTrace);
    else
        fitTraceLength(st, points);
    const int64_t rawPerTrace = int64_t(st.Sp_Samples) * ds;
    if (rawPerTrace > kLongestRawTrace)
        throw UnreadableFile("The down-sampling in the settings asks for more samples a trace "
                             "than can be read at once.");
    const size_t used = std::min(c.values.size(), size_t(rawPerTrace));

    st.TraceCount = 1;
    st.TraceLength = int32_t(std::min<int64_t>(c.rows, INT32_MAX));
    st.Channels = int16_t(std::min(c.channels, int(INT16_MAX)));
    st.StereoFlag = 0;
    st.BitsPerSample = 0;
    st.SampleRate = 1.0 / interval;
    st.ScansPerSecond = 0;
    double largest = 0.0;
    for (size_t i = 0; i < used; ++i)
        largest = std::max(largest, std::fabs(double(c.values[i])));
    setFloatFullScale(st, largest);

    std::vector<std::string>& info = st.SourceInfoLines;
    info.clear();
    for (size_t i = 0; i < c.shown.rows(); ++i)
        info.push_back(infoLine("Row " + std::to_string(i + 1), std::string(c.shown.cell(i, 0))));
    if (c.preamble.rows() > kPreambleRowsShown)
        info.push_back(infoLine("Preamble", std::to_string(c.preamble.rows()) + " rows"));
    info.push_back(infoLine("First row of numbers", std::to_string(c.firstDataRow)));
    info.push_back(infoLine("Channels", std::to_string(c.channels) + ", channel " +
                                            std::to_string(c.channel + 1) + " shown"));
    std::string samples = std::to_string(c.rows);
    if (int64_t(used) < c.rows) samples += ", the first " + std::to_string(used) + " shown";
    info.push_back(infoLine("Samples", samples));
    info.push_back(infoLine("Sample interval (s)", shortestText(interval) + ", " + intervalFrom));

    writeThinnedTraces(ctx, rawPerTrace, [&](int32_t, std::vector<float>& raw) {
        std::copy_n(c.values.begin(), std::min(used, raw.size()), raw.begin());
    });
}

} // namespace

void ReadCsvStd(ImportContext& ctx) {
    runStandardRead(ctx, [&] { readCsv(ctx); });
}

} // namespace kv
