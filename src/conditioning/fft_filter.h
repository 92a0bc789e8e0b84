// The GPR band read-out and the FFT filter. The read-out measures where the trace on show falls
// 10 dB under its peak and proposes corners; it changes nothing. The FFT filter is a band-pass in
// the frequency domain with sine-tapered skirts that shapes every transform while it is on.
#pragma once

#include <cstdint>
#include <string>

namespace kv {

struct ProgramState;

/// The -10 dB points round the peak of the spectrum on show: GprHighHz from the first bin at or
/// under PeakDb - 10 going up from PeakBin, GprLowHz going down to bin 1; a side with no such bin
/// gives 0 Hz (the axis offset alone).
void GPRFilter(ProgramState& st);

/// The bins where the spectrum on show first falls to `limitDb` (dB of full scale) or under it:
/// `high` going up from PeakBin to the last bin, `low` going down from PeakBin to bin 1; 0 for a
/// side with no such bin. The GPR read-out searches 10 dB under the peak, the Spectrum view's
/// bandwidth mark at its own level.
struct BandEdgeBins {
    int32_t low = 0, high = 0;
};
BandEdgeBins bandEdgeBins(const ProgramState& st, double limitDb);

/// One figure of the band read-out: in Hz, kHz above 10^3 or MHz above 10^6, as "###.#" and
/// its unit.
struct BandFigure {
    std::string number;
    std::string unit;
};
BandFigure bandFigure(double hz);

/// The filter's band from its corners in Hz (a high-pass corner of 0 or below is one bin; a
/// low-pass corner above MaxFreq is held there): stop edges, bins and taper steps. False when a
/// taper has no width (its corner and stop edge fall in the same bin) or a figure is out of every
/// range: the band cannot be made, and the caller leaves the filter off.
bool setBoxFilterBand(ProgramState& st, double hpHz, double lpHz);

/// Shapes one transform in place, re[1..n] and im[1..n] (element k taken as frequency
/// k * BoxBinWidth): everything outside the stop edges goes to 0, over all n elements with no
/// mirror, and the two skirts are multiplied by their sine tapers.
void BoxFilterTransform(const ProgramState& st, float* re, float* im, int32_t n);

} // namespace kv
