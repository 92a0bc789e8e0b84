// Whitening: over a band chosen by the user, every element of every trace's transform is
// replaced by one complex value, the strongest found in that band over the whole data set, and
// the trace is transformed back. The scan is made once per Apply; each trace then pays one more
// forward and one inverse transform.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace kv {

struct ProgramState;

/// The band from the figures in Hz: BoxBinWidth for this data set, WhiteLowHz (0 or below is one
/// bin) and WhiteHighHz (held at MaxFreq).
void setWhiteBand(ProgramState& st, double lowHz, double highHz);

/// Called with each trace number (1-based) as the scan passes it; returning false stops the scan.
using ScanProgress = std::function<bool(int32_t trace)>;

/// Scans every trace of the data set (read, window, forward transform) for the largest positive
/// real part among the band's elements, WhiteLowBin to WhiteHighBin, and the imaginary part that
/// stands with it. Sets WhiteLowBin, WhiteHighBin, WhiteRe and (only when some real part was
/// above 0) WhiteIm. A scan stopped by `progress` changes nothing and returns false.
bool ScanWhiteBand(ProgramState& st, const ScanProgress& progress = {});

/// Whitening of one trace held in re[1..n] (n = Fft_Samples, windowed, in time): forward
/// transform, the band replaced by (WhiteRe, WhiteIm), the amplitudes of all n elements into
/// `amp` when given, inverse transform, and re[1..n] into time[0..n-1] when given.
void ApplyWhite(const ProgramState& st, std::vector<float>& re, std::vector<float>& im,
                std::vector<float>* amp, std::vector<float>* time);

/// Only the band's replacement on a transform re[1..n], im[1..n], for callers that make the
/// transforms themselves (the radargram's rebuild).
void whiteSubstitute(const ProgramState& st, float* re, float* im, int32_t n);

/// After each spectrum while whitening is on: the trace on show is read again (the mean of its
/// group in Average mode; the radargram's trace while playing backwards), windowed and whitened
/// into SpAmp and TraceBuf; while playing backwards the waterfall's second trace too, into
/// BackAmp or TraceBufR.
void FyllWhite(ProgramState& st);

} // namespace kv
