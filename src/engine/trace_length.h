// How long a trace is and how a source is thinned before it reaches the working file. These
// decide the number of bins and the frequency of each bin, so every reader follows the same
// rules and the spectrum engine can rely on them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kv {

struct ProgramState;

/// Fits Sp_Samples to a source trace length that is not a power of two: with PadWithZero the
/// smallest power of two not below it (2^1 upward to 2^16), otherwise the largest not above it
/// (2^16 down to 2^1). When none fits, Sp_Samples stays.
void fitTraceLength(ProgramState& st, int64_t traceLength);

/// How the `ds` neighbours of a thinned source become one sample.
enum class ThinMode : int16_t { Average = 0, Decimate = 1 };

/// Thins `n` samples by `ds` into `out` (cleared first): for i = 0, ds, 2*ds ... while i is not
/// above n - ds, one output per step, the mean of samples i .. i+ds-1 (summed in double) or
/// sample i. A tail shorter than `ds` is dropped; `ds` of 1 or less copies the samples.
void thinTrace(const float* in, size_t n, int ds, ThinMode mode, std::vector<float>& out);

} // namespace kv
