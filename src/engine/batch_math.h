// The per-bin arithmetic of a spectrum, done for a whole trace at a time: amplitudes, decibels
// and phases. Playback computes these for every bin of every trace, so they are written to run
// many bins per instruction. Each agrees with the one-value definition it stands for (Atan2,
// Log10 in spectrum.h) to within a few units in the last place of the f32 it stores, and takes
// the same branches for zeros, tiny values and signs.
#pragma once

#include <cstdint>

namespace kv::batch {

/// amp[j] = 2 * sqrt(re[j]^2 + im[j]^2) / gain, formed in double and stored as f32 (exact).
void amplitudes(const float* re, const float* im, float* amp, int32_t n, float gain);

/// disp[j] = 20 * Log10(amp[j] / fullScale): an amplitude of exactly 0 gives -10 * fullScale.
void decibels(const float* amp, float* disp, int32_t n, float fullScale);

/// deg[j] = Atan2(im[j], re[j]) / pi * 180, with `pi` the workbench's own constant.
void phaseDegrees(const float* re, const float* im, float* deg, int32_t n, double pi);

} // namespace kv::batch
