// The spectrum of the trace on show: read it from the working file, window and transform it, and
// leave the amplitude and phase arrays, the values as drawn and the peak figures that every view
// and read-out uses. Single Trace, Stacked, Peak-hold and Average all pass through here.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kv {

struct ProgramState;

/// Decimal logarithm as every spectrum figure uses it: exactly 0 gives -FullScalePos / 2, so
/// that 20 * Log10 of silence is -10 * FullScalePos dB, far under any plot but a number; any other
/// x gives ln(x) / ln(10).
double Log10(double x, float FullScalePos);

/// Angle of (x, y) in radians with the workbench's own branches: both parts below 1e-7 give 0,
/// x alone below 1e-7 gives +-1.5707963267949 (minus when y <= 0), and the left half-plane adds
/// or subtracts 3.14159265358979.
double Atan2(double y, double x);

/// Prepares the spectrum arrays for Fft_Samples and SampleRate: BinWidth, Sp_Bins, MaxFreq,
/// AmpCapacity, and cleared SpAmp, SpPhase, PeakHoldAcc (and BackAmp while PlayRew). Every
/// InitFftState forgets the held peaks.
void InitFftState(ProgramState& st);

/// Builds the spectrum of the trace at CurrentTracePos (a negative position means the first
/// trace): reads N+1 floats (element 0 unused), windows, transforms, forms SpAmp, runs
/// CreatedBArray and then SpPhase, so a Single Trace display folds the phase of the trace before.
/// The phases are owed, not taken: see ensurePhases.
/// Average mode goes to FyllSpAverage. Throws ReadError when there is no working file.
void FyllSpData(ProgramState& st);

/// Average mode: AverVal+1 traces from TraceStep*TracePos on, summed in time and divided by
/// AverVal, then one transform. CurrentTracePos ends on the last trace of the group.
void FyllSpAverage(ProgramState& st);

/// Peak-hold fold, SpDisp in the display unit, the peak figures (PeakBin, PeakAmp, PeakFreq,
/// PeakDb, FloorDbRel), then auto-span, whitening and the fold into plot columns.
void CreatedBArray(ProgramState& st);

/// Forms the decibels the builder left owing (SpDisp[0..bins-1] of the last spectrum), exactly as
/// it would have formed them at once. Everything that reads SpDisp calls this first, and so does
/// everything that writes SpAmp but the builder itself; when nothing is owed it costs a flag test.
void settleDecibels(ProgramState& st);

/// Forgets the held peaks: PeakHoldAcc becomes 0..PeakHoldBins, cleared.
void resetPeakHold(ProgramState& st);

/// Takes the phases the builder left owing (SpPhase[1..N/2] of the last spectrum, and the
/// phase of each plot column folded since), exactly as the builder would have taken them at
/// once. Everything that reads SpPhase or ColPhase calls this first; when nothing is owed it
/// costs a flag test.
void ensurePhases(ProgramState& st);

/// FftRe/FftIm are about to be overwritten: phases still owed from them keep a copy of what they
/// need. The builder does this itself; others that write the transform arrays call it first.
void releaseTransform(ProgramState& st);

/// The fold has put column c's phase at bins[c] (c = 0..count-1): a column whose bin is owed
/// keeps that bin's transform element, to be turned into degrees by ensurePhases. Called by the
/// fold once per pass, after ColPhase has been written from SpPhase.
void oweColumnPhases(ProgramState& st, const int32_t* bins, size_t count);

} // namespace kv
