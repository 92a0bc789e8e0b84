// The ten FFT windows the user picks in the options (FFT_Window 1 to 10), their amplitude
// corrections, their names, and the routines that taper a trace before its transform.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kv {

struct ProgramState;

inline constexpr int16_t kUniformWindow = 10;

/// Name in the options list ("Blackman" ... "Uniform"); "" outside 1..10.
const char* windowOptionName(int window);
/// Name in the status bar ("Blackman" ... "Flat top", "Gaussian" ...); "" outside 1..10.
const char* windowStatusName(int window);
/// The table's amplitude correction (0.42, 0.5 ... 1.0): a rounded figure, not the true mean of
/// the curve. 0 outside 1..10.
float windowGainOf(int window);

/// Sets WindowGain from FFT_Window and returns the status-bar name for panel 7. Outside 1..10
/// WindowGain stays as it was and the name is "".
std::string SetWindowName(ProgramState& st);

/// w(i) of window `window` for i = 1..n (i counted from 1, deliberately one sample late), as the
/// product with a sample uses it: double, with each constant-times-cosine term rounded to f32.
/// Windows outside 1..9 (Uniform and unknown numbers) give 1.
double windowValue(int window, int32_t i, int32_t n);

/// Multiplies x[0..n-1] by w(1..n), each product rounded to f32. Uniform and numbers outside
/// 1..10 leave the samples as they are. The curve is computed once per (window, n) and kept, so a
/// change of window or length is seen at the very next call.
void applyWindowTo(int window, float* x, int32_t n);
/// The same from x into y (which may be x); a window that does not taper copies.
void windowInto(int window, const float* x, float* y, int32_t n);

/// True when the O-scope's trace is the one read, not the tapered one: a tapering window with
/// TimeWindowed 0.
bool timeTraceIsRaw(const ProgramState& st);

/// True when the window does not taper (Uniform): the O-scope's trace and the transform's
/// input are then the trace as read.
bool timeTraceIsInput(const ProgramState& st);

/// Windows FftRe[1..N] (N = Fft_Samples) and fills TraceBuf[0..N-1] with what the O-scope
/// shows: the raw trace while TimeWindowed is 0, the tapered one while it is 1; with Uniform
/// the trace in either case.
void ApplyWindow(ProgramState& st);
/// ApplyWindow on a trace held outside FftRe: windows x[0..N-1] and fills TraceBuf the same way.
void ApplyWindowAt(ProgramState& st, float* x);
/// The same on BackRe, filling TraceBufR.
void ApplyWindowBack(ProgramState& st);
/// Windows the waterfall's own buffer, elements 1..Fft_Samples, in place; Uniform does nothing.
void ApplyWindowWf(const ProgramState& st, std::vector<float>& buf);
/// The radargram's trace trace[0..Sp_Samples-1]: the window is applied to a private copy, which
/// comes back into `trace` only while TimeWindowed is 1; Uniform does nothing.
void ApplyWindowRg(const ProgramState& st, float* trace);

} // namespace kv
