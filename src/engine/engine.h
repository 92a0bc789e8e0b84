// The spectrum engine as the rest of the workbench calls it: prepare the FFT for the trace
// length, and build the spectrum of the trace on show.
#pragma once

namespace kv {

struct ProgramState;

/// Prepares the transform and windows for Fft_Samples.
void InitFftState(ProgramState& st);
/// Reads the trace at CurrentTracePos from ActiveTracePath and builds its spectrum arrays.
/// Throws ReadError when there is no working file to read.
void FyllSpData(ProgramState& st);
/// Re-dimensions the peak-hold accumulator (0..Sp_Samples / 2, cleared).
void resetPeakHold(ProgramState& st);

} // namespace kv
