// The spectrum of the trace on show: read it from the working file, window and transform it, and
// leave the amplitude and phase arrays, the values as drawn and the peak figures that every view
// and read-out uses. Single Trace, Stacked, Peak-hold and Average all pass through here.
#pragma once

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
/// Average mode goes to FyllSpAverage. Throws ReadError when there is no working file.
void FyllSpData(ProgramState& st);

/// Average mode: AverVal+1 traces from TraceStep*TracePos on, summed in time and divided by
/// AverVal, then one transform. CurrentTracePos ends on the last trace of the group.
void FyllSpAverage(ProgramState& st);

/// Peak-hold fold, SpDisp in the display unit, the peak figures (PeakBin, PeakAmp, PeakFreq,
/// PeakDb, FloorDbRel), then auto-span, whitening and the fold into plot columns.
void CreatedBArray(ProgramState& st);

/// Forgets the held peaks: PeakHoldAcc becomes 0..PeakHoldBins, cleared.
void resetPeakHold(ProgramState& st);

/// While one of these lives, FyllSpData and FyllSpAverage on the same thread take no phases:
/// SpPhase keeps what it held, and so does the phase of each folded column. For runs that read
/// neither, such as the command-line survey of read-outs, which would otherwise spend a large
/// part of each trace on angles nobody looks at. Everything else comes out as without it.
/// Scopes may nest.
class PhaseSkipScope {
  public:
    PhaseSkipScope();
    ~PhaseSkipScope();
    PhaseSkipScope(const PhaseSkipScope&) = delete;
    PhaseSkipScope& operator=(const PhaseSkipScope&) = delete;
};

} // namespace kv
