// Reading a working file a block of traces at a time. A run that walks through the traces of a
// working file (a survey over every trace, a rebuild of a picture's rows, a benchmark's
// playback) would otherwise pay for one call into the system per trace, which at short traces
// costs more than the trace's whole transform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kv {

/// While one of these lives, readWorkingTrace on the same thread serves short traces from a
/// block read ahead (or behind, for a walk backwards) in one call. The block is read again
/// after any working file changed through the store (a writer, a deletion); nothing else is
/// checked against the disk between two traces of the same block. Scopes may nest; the
/// outermost one holds the block.
class TraceBlockScope {
  public:
    explicit TraceBlockScope(size_t blockBytes = size_t(1) << 18);
    ~TraceBlockScope();
    TraceBlockScope(const TraceBlockScope&) = delete;
    TraceBlockScope& operator=(const TraceBlockScope&) = delete;

  private:
    bool outermost_;
};

/// Reads `n` floats from the 1-based byte position `pos1` of the working file `path`, exactly
/// as readTrace does (zeros past the end, ReadError without a file or position), through the
/// thread's block when a TraceBlockScope is open and the trace is short beside the block.
void readWorkingTrace(const std::string& path, int64_t pos1, float* out, size_t n);

/// The same for n + 1 floats of which the first goes to `head` and the others to out[0..n-1].
/// A long trace is read straight into `out`: its head alone does not fill a block.
void readWorkingTraceWithHead(const std::string& path, int64_t pos1, float* head, float* out,
                              size_t n);

} // namespace kv
