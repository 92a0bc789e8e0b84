// What every reader is handed and the loop they all share. A reader is one function taking an
// ImportContext; it fills the data-set items of ProgramState, writes the working file trace by
// trace, and keeps no state of its own once it returns. It reports a failed read by throwing
// ReadError.
#pragma once

#include "engine/trace_length.h" // fitTraceLength, thinTrace
#include "platform/byte_source.h"
#include "platform/read_error.h"
#include "platform/trace_store.h"
#include "state/workbench.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace kv {

struct ImportContext {
    Workbench& wb;
    ProgramState& st;
    /// The dialog's file name. A reader's "File corrupted!" handler empties it, which tells the
    /// open command not to finish the open.
    std::string dialogFileName;
    /// True when the data set is being re-read after a settings change (not an Import).
    bool reread = false;
    /// The recording the open step chose; companion headers are found beside it.
    std::string sourcePath;
    /// Opens the source or a companion file for reading (the workbench's opener).
    SourceOpener open;
    /// Lets the views go after a failed read (the data-set lifecycle's clean-up). The open step
    /// fills it; readers sit below the commands and cannot call them by name.
    std::function<void()> cleanSet;

    ImportContext(Workbench& w, const std::string& source);
    std::unique_ptr<ByteSource> openSource() { return open(sourcePath); }
};

using ReaderFn = void (*)(ImportContext&);

/// The trace loop of the reader contract: a progress window with TraceCount as its maximum and
/// a Cancel button, the working file opened for writing, one yield and one Cancel test per
/// trace, traces written one after the other, and WorkingFileLength set at the end.
class TraceOutput {
  public:
    /// Opens `path` (normally TempPath). TraceCount must already be set.
    TraceOutput(ImportContext& ctx, const std::string& path, bool yieldEachTrace = true);
    /// Call at the top of each trace k. False when the user cancelled: leave the loop.
    bool next(int k);
    /// Writes one trace of Sp_Samples floats at the write position and advances it.
    void write(std::span<const float> trace);
    void write(const std::vector<float>& trace) { write(std::span<const float>(trace)); }
    /// Writes at an explicit 1-based position (readers whose layout differs).
    void writeAt(int64_t pos1, const float* data, size_t n) { file_.write(pos1, data, n); }
    /// Sets WorkingFileLength from the file and closes it; the progress window goes away.
    void finish();
    TraceFileWriter& file() { return file_; }
    int64_t writePos() const { return writePos_; }

  private:
    ImportContext& ctx_;
    TraceFileWriter file_;
    std::unique_ptr<Progress> progress_;
    int64_t writePos_ = 1;
    bool yield_;
};

/// A working trace of zeros for a reader's trace loop, made in the room the thread's last such
/// trace left. A header may call for traces of 65536 samples, and an array that long, allocated
/// and cleared on every import, cost more than all the rest of a short file's read. The reader
/// says how far it has set values (`touched`); they are cleared when the trace goes back, however
/// the read ends, so the room holds nothing but zeros between reads. A read started while another
/// holds the room (the host's yield lets the user act) makes a trace of its own, and room beyond
/// the longest trace a file is fitted to is given back to the system.
class LentTrace {
  public:
    explicit LentTrace(size_t n);
    ~LentTrace();
    LentTrace(const LentTrace&) = delete;
    LentTrace& operator=(const LentTrace&) = delete;
    float* data() { return room_.data(); }
    size_t size() const { return n_; }
    /// The trace: its `size()` values.
    std::span<const float> values() const { return {room_.data(), n_}; }
    /// Values from the first up to (not including) `k` may no longer be zero.
    void touched(size_t k) { dirty_ = std::max(dirty_, std::min(k, n_)); }
    /// A trace loop's step: this trace set the values up to `k`, and the rest is to read as
    /// zeros, so what the trace before set beyond `k` is cleared (only that: the values below
    /// `k` were just written).
    void holds(size_t k) {
        k = std::min(k, n_);
        if (held_ > k) std::fill(room_.data() + k, room_.data() + held_, 0.0f);
        held_ = k;
        touched(k);
    }

  private:
    std::vector<float> room_;
    size_t n_;
    size_t dirty_ = 0;
    size_t held_ = 0;
};

/// What a reader's own failure handler does after a failed read: `text` (or, when memory ran
/// out, kOutOfMemoryText) in a critical message box, CleanSet, toolbar button 2 shown, and
/// TempPath emptied.
void reportFailedRead(ImportContext& ctx, Failure how, const char* text);

/// Runs a reader's trace-writing routine under the handler the radar, seismic and scope
/// readers share: when the file fails the read (see catchInputFailure) the dialog's file name
/// is emptied, so the open does not finish, and reportFailedRead shows "File corrupted!".
/// A fault in the program passes through.
void withCorruptedFileHandler(ImportContext& ctx, const std::function<void()>& body);

/// Checked conversions for header arithmetic: a division by zero or a value that does not fit
/// its type fails the read instead of giving a meaningless number.
double checkedDiv(double a, double b);
int32_t checkedInt32(double x); // rounds half to even
int16_t checkedInt16(double x); // rounds half to even
/// Opens the source recording and sets SourceLength from its size (a recording of 2 GiB or more
/// does not fit it and fails the read).
std::unique_ptr<ByteSource> openSourceSized(ImportContext& ctx);
/// Copies the first `n` 16-bit samples into the trace as floats, unscaled. An `n` beyond either
/// array fails as a bad subscript.
void copySamples(const std::vector<int16_t>& raw, std::vector<float>& trace, int64_t n);

/// Index check for the readers' fixed-size work arrays.
inline void checkIndex(size_t i, size_t size) {
    if (i >= size) throw ReadError("Subscript out of range");
}

} // namespace kv
