// What the table readers (CSV, DAT/HDR) share: lines of a text recording read one at a time,
// CSV rows split into fields, numbers read from table cells, a trace length fitted to a point count
// that need not be whole, and thinning of the points by the down-sampling settings.
#pragma once

#include "import/reader.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kv {

/// Reads a text source line by line. A line ends at CR, LF or CR LF; the end is not part of it.
class LineReader {
  public:
    explicit LineReader(const ByteSource& src) : src_(src) {}
    /// The next line, or false at the end of the source.
    bool next(std::string& line);
    /// The same without a copy: the view lasts until the next call. A line that lies within one
    /// read chunk (nearly every one) is seen where it was read; only one that crosses a chunk's
    /// end is put together first.
    bool next(std::string_view& line);
    /// Goes back to the first line. A source that fits one chunk is not read again.
    void restart();

  private:
    bool fill();
    const ByteSource& src_;
    std::vector<char> buf_;
    const char* data_ = nullptr; // the chunk: buf_, or the whole of a source held in memory
    size_t at_ = 0, len_ = 0;
    size_t lf_ = SIZE_MAX; // the chunk's next line feed at or after at_; len_ when it has none
    uint64_t offset_ = 0;
    std::string joined_; // a line that crosses a chunk's end
};

/// A cell's text as a number, strictly: blanks around it are allowed, anything else that is not
/// part of a number fails the read. An empty cell is 0.
double cellNumber(const std::string& text);

/// Fits Sp_Samples to `n` points: with PadWithZero the smallest 2^k (k = 1..16) at or above n,
/// otherwise the largest at or below n. When none fits, Sp_Samples stays.
void fitToPointCount(ProgramState& st, double n);

/// Writes the one trace of a single-trace recording at position 1 of TempPath: TraceCount 1,
/// WorkingFileLength from the file.
void writeSingleTrace(ProgramState& st, const std::vector<float>& trace);

/// Full scale of a table recording, not rounded: the maximum when it is the larger side (the
/// negative full scale keeps the value it had), else minus the minimum on both sides. `follower`
/// (ScaleBits or Reference) takes the positive full scale too.
void setUnroundedFullScale(ProgramState& st, float max, float min, float& follower);

/// One CSV row split into fields: commas outside quotes end a field; a quote opens quotes, a
/// doubled quote inside them is one quote, and a quote followed by anything else closes them.
/// A trailing empty field is not kept.
std::vector<std::string> csvRowFields(const std::string& line);
/// The same into `row`, whose strings keep their room from one row to the next.
void csvRowFields(const std::string& line, std::vector<std::string>& row);

/// Thins `raw` by NewDS: DownsampleMode 0 takes the mean of each NewDS values, 1 every NewDS-th
/// value. With NewDS 1 the values come back unchanged.
std::vector<double> thinPoints(const ProgramState& st, const std::vector<double>& raw);

} // namespace kv
