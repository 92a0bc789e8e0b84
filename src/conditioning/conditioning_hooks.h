// The signal conditioning as the spectrum builder sees it: the FFT filter on every transform,
// auto-span after the peak search, whitening at the end of each spectrum, and the gain on the
// time trace, each while its switch in the program state is on.
#pragma once

#include <cstdint>
#include <vector>

namespace kv {

struct ProgramState;

/// Plugs the conditioning into the spectrum builder of this program state (at start-up).
void installConditioning(ProgramState& st);

/// The gain as the radargram applies it to its rows: GainFactor rounded to a whole number while
/// the gain is on (a fractional gain is lost there), else 1.
int16_t radargramGain(const ProgramState& st);

/// The radargram's rebuild of one trace held windowed in re[1..n] (n = Fft_Samples): while
/// whitening or the FFT filter is on, the forward transform, then the whitening's band and an
/// inverse transform into trace[0..n-1], then the filter's band and an inverse transform into
/// trace[0..n-1]. With neither on, `trace` is left as the caller filled it.
void conditionRadargramTrace(const ProgramState& st, std::vector<float>& re, std::vector<float>& im,
                             std::vector<float>& trace);

} // namespace kv
