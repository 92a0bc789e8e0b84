// Wavestar "Waveform Tabular Document" files (.SHT) saved from Tektronix oscilloscopes: a text
// block naming the channel and the scales, then the record as 32-bit floats, read as one trace
// in volts. The block is found by its marker texts, not by a fixed layout:
//
//   Waveform Tabular Document        the tag, within the first 2000 bytes
//   TEKTRONIX ...                    the maker
//   Ch1  2.00 V  500 us              channel entries and scale cells: a number with its unit
//                                    cell beside it (or joined to it): V volts per division,
//                                    s / sec seconds and us microseconds per division
//   Samples 2500                     ends the block; the record length; the floats follow the
//                                    end of this line
#include "import/reader.h"

#include "import/text_lines.h"
#include "platform/message_title.h"
#include "platform/numeric.h"

#include <cctype>
#include <cstring>

namespace kv {

namespace {

constexpr uint64_t kSearchSpan = 2000;

/// The 0-based offset of the first `word` at or after `from` within the searched span, found by
/// its first letter and then compared whole; -1 when none.
int64_t findMarker(const std::string& head, size_t from, const std::string& word) {
    for (size_t i = from; i < head.size(); ++i) {
        if (head[i] != word[0]) continue;
        if (i + 1 < head.size() && head[i + 1] != word[1]) continue;
        if (head.compare(i, word.size(), word) == 0) return int64_t(i);
    }
    return -1;
}

struct TekFields {
    int16_t channels = 0;
    float voltDiv = 0.0f;
    float timeDiv = 0.0f;
};

bool isNumberStart(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) || c == '.' || c == '-' || c == '+';
}

/// The length of the number at the start of `cell` (digits, sign, point, exponent).
size_t numberLength(const std::string& cell) {
    size_t i = 0;
    while (i < cell.size()) {
        const char c = cell[i];
        const bool expo = (c == 'e' || c == 'E') && i + 1 < cell.size() &&
                          (std::isdigit(static_cast<unsigned char>(cell[i + 1])) ||
                           cell[i + 1] == '-' || cell[i + 1] == '+');
        if (!isNumberStart(c) && !expo) break;
        i += expo ? 2 : 1;
    }
    return i;
}

/// Reads the block's cells: "Ch" entries count the channels, and a number followed by a unit
/// (in the next cell or joined to it) is a scale: v volts, s / sec seconds, us microseconds.
TekFields TekParse(const std::string& block) {
    std::vector<std::string> cells;
    std::string cell;
    for (char c : block) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ',' || c == ';' || c == '\0') {
            if (!cell.empty()) cells.push_back(std::move(cell));
            cell.clear();
        } else {
            cell.push_back(c);
        }
    }
    if (!cell.empty()) cells.push_back(std::move(cell));

    TekFields f;
    for (size_t k = 0; k < cells.size(); ++k) {
        const std::string& c = cells[k];
        if (c.size() >= 2 && c[0] == 'C' && c[1] == 'h') {
            ++f.channels;
            continue;
        }
        if (!isNumberStart(c[0])) continue;
        const size_t n = numberLength(c);
        if (n == 0) continue;
        std::string unit = c.substr(n);
        if (unit.empty() && k + 1 < cells.size()) unit = cells[k + 1];
        if (unit.empty()) continue;
        const double value = Val(c.substr(0, n));
        const char u0 = char(std::tolower(static_cast<unsigned char>(unit[0])));
        const char u1 =
            unit.size() > 1 ? char(std::tolower(static_cast<unsigned char>(unit[1]))) : 0;
        if (u0 == 'v') {
            f.voltDiv = f32(value);
        } else if (u0 == 'u' && u1 == 's') {
            f.timeDiv = f32(value * 1e-6);
        } else if (u0 == 's' &&
                   (u1 == 0 || (u1 == 'e' && unit.size() > 2 &&
                                std::tolower(static_cast<unsigned char>(unit[2])) == 'c'))) {
            f.timeDiv = f32(value);
        }
    }
    return f;
}

/// Gives up the open with a message and no further one.
void giveUp(ImportContext& ctx, const char* text) {
    ctx.wb.host.message(text, kMessageTitle, MsgIcon::Critical);
    ctx.st.IsSht = false;
    ctx.st.ImportFailed = true;
}

void TekSamples(ImportContext& ctx, const ByteSource& src, int32_t count, int32_t previousLength) {
    ProgramState& st = ctx.st;
    if (st.Sp_Samples > 65000) {
        ctx.wb.host.message("Too many samples/trace!", kMessageTitle, MsgIcon::Critical);
        // A length beyond what the views' trace buffers can hold fails the open as out of
        // memory, and the trace length the settings had stays.
        if (st.Sp_Samples > kLargestArray) {
            st.Sp_Samples = previousLength;
            throw ReadError("Out of memory");
        }
        return;
    }
    st.BitsPerSample = 8;
    st.ScansPerSecond = 0;
    st.ReadPos = st.DataStart;

    // The record, little-endian floats. The size is bounded by the check above: a record that
    // large would have given Sp_Samples above 65000.
    std::vector<uint8_t> bytes(size_t(count) * 4);
    if (!bytes.empty()) src.read(uint64_t(st.ReadPos - 1), bytes.data(), bytes.size());
    std::vector<float> raw(static_cast<size_t>(count));
    for (size_t i = 0; i < raw.size(); ++i) {
        const uint8_t* p = bytes.data() + 4 * i;
        const uint32_t u =
            uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
        std::memcpy(&raw[i], &u, 4);
    }
    if (st.NewDS > 1) {
        std::vector<float> down(raw.size(), 0.0f);
        size_t i = 0;
        for (size_t start = 0; start + size_t(st.NewDS) <= raw.size(); start += size_t(st.NewDS)) {
            if (st.DownsampleMode == 0) {
                float sum = 0.0f;
                for (int m = 0; m < st.NewDS; ++m)
                    sum += raw[start + size_t(m)];
                down[i++] = sum / float(st.NewDS);
            } else {
                down[i++] = raw[start];
            }
        }
        raw.swap(down);
    }
    // The working trace has one element more than Sp_Samples, and all of it is written.
    std::vector<float> trace(size_t(st.Sp_Samples) + 1, 0.0f);
    const int64_t copy =
        st.PadWithZero ? int64_t(checkedInt32(double(count) / st.NewDS)) : int64_t(st.Sp_Samples);
    for (int64_t i = 0; i < copy; ++i) {
        checkIndex(size_t(i), trace.size());
        checkIndex(size_t(i), raw.size());
        trace[size_t(i)] = raw[size_t(i)];
    }
    writeSingleTrace(st, trace);
    st.BytesPerSample = 1;
}

} // namespace

void ReadSht(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    auto src = ctx.openSource();
    if (src->size() > uint64_t(INT32_MAX)) throw ReadError("Overflow");
    st.SourceLength = static_cast<int32_t>(src->size());
    const std::string head = src->text(0, size_t(std::min<uint64_t>(kSearchSpan, src->size())));

    const int64_t start = findMarker(head, 0, "Waveform Tabular Document");
    if (start < 0) return giveUp(ctx, "This is not a Waveform Tabular Document!");
    const int64_t maker = findMarker(head, size_t(start), "TEKTRONIX");
    if (maker < 0) return giveUp(ctx, "File is corrupted!");

    int32_t count = 0;
    bool parsed = false;
    const int32_t previousLength = st.Sp_Samples;
    withCorruptedFileHandler(ctx, [&] {
        const int64_t end = findMarker(head, size_t(maker), "Sample");
        if (end < 0) throw ReadError("no sample marker");
        const TekFields f = TekParse(head.substr(size_t(start), size_t(end - start)));
        // The record length stands after the word on the marker's line; the floats follow the
        // end of that line.
        size_t p = size_t(end);
        while (p < head.size() && std::isalpha(static_cast<unsigned char>(head[p])))
            ++p;
        const size_t eol = head.find('\n', p);
        const std::string lengthText =
            head.substr(p, (eol == std::string::npos ? head.size() : eol) - p);
        size_t q = 0;
        while (q < lengthText.size() && (lengthText[q] == ':' || lengthText[q] == '='))
            ++q;
        count = checkedInt32(Val(lengthText.substr(q)));
        if (count < 0) throw ReadError("Subscript out of range");
        st.DataStart = checkedInt32(double(eol == std::string::npos ? head.size() : eol + 1) + 1);

        st.TekChannels = f.channels;
        st.TekVoltDiv = f.voltDiv;
        // The O-scope labels its divisions with the file's own volts per division.
        st.ShtVoltDiv = f.voltDiv;
        st.Reference = f.voltDiv * 8;
        st.FullScaleNeg = st.FullScalePos;
        st.FullScalePos = 20.0f;
        st.ImportFailed = false;
        st.Sp_Samples = count;
        // The record spans ten divisions.
        const double interval = checkedDiv(double(f.timeDiv) * 10, count);
        st.SampleRate = checkedDiv(1.0, interval);
        fitTraceLength(st, count);
        st.TraceLength = count;
        parsed = true;
    });
    // A parse that failed after taking the record length leaves no length no buffer can hold.
    if (!parsed && st.Sp_Samples > kLargestArray) st.Sp_Samples = previousLength;
    if (parsed) TekSamples(ctx, *src, count, previousLength);
}

} // namespace kv
