// The Fourier transform behind every spectrum, phase plot and filter: complex transforms of any
// length on split real/imaginary float arrays, with the scaling the rest of the engine expects.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kv::fft {

/// Largest length the transforms accept. Beyond it a length is refused rather than planned.
inline constexpr int32_t kMaxLength = 1 << 24;

/// The factor of every forward transform, 1/n.
inline float forwardScale(int32_t n) {
    return float(1.0 / double(n));
}

/// Forward transform of `n` points held in `re[0..n-1]` and `im[0..n-1]`, in place:
///   X[k] = (1/n) * sum over t of x[t] * e^(-2*pi*i*t*k/n),
/// so a sine of amplitude A on a bin gives |X[k]| = A/2 on each of its two mirror bins.
/// Any length from 1 to kMaxLength; throws std::invalid_argument otherwise.
void forward(float* re, float* im, int32_t n);

/// The same transform for an input whose imaginary part is all zero (a trace as read), which
/// im[0..n-1] need not hold: it is written, not read.
void forwardReal(float* re, float* im, int32_t n);

/// The thread's aligned input buffer for a real transform of `n` points (1..kMaxLength), with
/// room for one float before it: p[-1] may be written. A trace read as N+1 floats into p - 1
/// lands with its elements 1..N where the transform wants them, so forwardRealInput takes it
/// without a copy. Valid until the next call on the same thread.
float* realInput(int32_t n);

/// forwardReal of the n points in the buffer realInput(n) gave, into re[0..n-1], im[0..n-1].
/// Without `mirror` only the lower half, elements 0..n/2, is written: the upper half is the
/// conjugate of the lower, and a run that reads no element above n/2 need not pay for it.
void forwardRealInput(const float* in, float* re, float* im, int32_t n, bool mirror);

/// The real-input transform of the n points at `in` (as forwardRealInput takes them) into
/// out[0..n+1] as the transform writes it: bins 0..n/2, real and imaginary parts interleaved,
/// not yet multiplied by forwardScale(n). `out` is aligned as takesAsInput asks.
void forwardRealPacked(const float* in, float* out, int32_t n);

/// True when `p` is aligned as the buffer realInput gives, so that forwardRealInput may take the
/// n points at p as they stand (same plan, same results).
bool takesAsInput(const float* p);

/// Inverse transform without a factor: x[t] = sum over k of X[k] * e^(+2*pi*i*t*k/n), so that
/// forward then inverse gives the input back at its own scale.
void inverse(float* re, float* im, int32_t n);

/// Makes and caches the plans of length `n` now, so that the first trace does not pay for them.
/// Power-of-two lengths keep their plans for the life of the process; once 64 lengths are
/// cached, the others are dropped and made again when next asked for.
void prepare(int32_t n);

/// How many lengths have plans cached now.
size_t cachedLengths();

} // namespace kv::fft
