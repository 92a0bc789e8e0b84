// The per-bin arithmetic of a spectrum, done for a whole trace at a time: amplitudes, decibels
// and phases. Playback computes these for every bin of every trace, so they are written to run
// many bins per instruction. Each agrees with the one-value definition it stands for (Atan2,
// Log10 in spectrum.h) to within a few units in the last place of the f32 it stores, and takes
// the same branches for zeros, tiny values and signs.
#pragma once

#include <cstdint>

namespace kv::batch {

/// amp[j] = 2 * sqrt(re[j]^2 + im[j]^2) / gain, within two ulps of the figure formed in double;
/// bins whose squares leave the single range, and odd gains, are formed in double.
void amplitudes(const float* re, const float* im, float* amp, int32_t n, float gain);

/// disp[j] = 20 * Log10(amp[j] / fullScale): an amplitude of exactly 0 gives -10 * fullScale.
void decibels(const float* amp, float* disp, int32_t n, float fullScale);

/// deg[j] = Atan2(im[j], re[j]) / pi * 180, with `pi` the workbench's own constant.
void phaseDegrees(const float* re, const float* im, float* deg, int32_t n, double pi);

/// y[i] = f32(w[i] * x[i]), the product formed in double: a window applied to a trace. y may
/// be x.
void windowProducts(const double* w, const float* x, float* y, int32_t n);

/// The same for a window whose every value is a float: y[i] = w[i] * x[i] in single precision.
/// The double product of two floats is exact, so this is that product rounded once, the same
/// bits as above. y may be x.
void windowProductsSingle(const float* w, const float* x, float* y, int32_t n);

/// True when every bins[c] (c < count) lies in lo..hi.
bool allWithin(const int32_t* bins, int32_t count, int32_t lo, int32_t hi);

/// outRe[c] = re[bins[c]], outIm[c] = im[bins[c]] for c < count.
void gatherPairs(const float* re, const float* im, const int32_t* bins, int32_t count, float* outRe,
                 float* outIm);

/// The same from a real-input transform's packed output, element k being bin k - 1:
/// outRe[c] = packed[2 bins[c] - 2] * scale, outIm[c] = packed[2 bins[c] - 1] * scale.
void gatherPackedPairs(const float* packed, float scale, const int32_t* bins, int32_t count,
                       float* outRe, float* outIm);

/// The spectrum of a real input as a real-input transform leaves it (bins 0..n/2, real and
/// imaginary parts interleaved) into split arrays re[0..n-1], im[0..n-1], times `scale`, the
/// upper half filled in as the conjugate mirror of the lower.
void unpackRealSpectrum(const float* packed, float* re, float* im, int32_t n, float scale);

/// The same for the lower half alone: re[0..n/2], im[0..n/2] (no more than n elements).
void unpackRealSpectrumLowerHalf(const float* packed, float* re, float* im, int32_t n, float scale);

/// The last i in 0..n-1 with a[i] > limit, or -1 (values that are not numbers never are).
int32_t lastAbove(const float* a, int32_t n, float limit);

/// The sums of eight neighbourhoods side by side: sum[k] = a[k-h] + a[k-h+1] + ... + a[k+h]
/// for k = 0..7, each added in that order in single precision from 0, as a running sum over one
/// neighbourhood would. a[-h..7+h] must be readable.
void neighbourhoodSums8(const float* a, int32_t h, float* sum);

/// Where a running search meets the extreme of a[0..n-1] last or first; -1 when no value
/// counts. Values that are not numbers never count, nor do the infinities that start each search
/// (a[i] > -infinity for a maximum of firsts, a[i] < +infinity for the minimum). lastMaxAt: the
/// last of the largest. firstMaxAbove: the first of the largest among the i with disp[i] > above.
/// firstMinAt: the first of the smallest.
int32_t lastMaxAt(const float* a, int32_t n);
int32_t firstMaxAbove(const float* a, const float* disp, float above, int32_t n);
int32_t firstMinAt(const float* a, int32_t n);

/// Where packedAmplitudes found the extremes of the amplitudes it formed.
struct AmplitudeExtremes {
    int32_t firstMax = -1; ///< firstMaxAbove(amp + maxFrom, amp + maxFrom, -inf, ...) + maxFrom
    int32_t firstMin = -1; ///< firstMinAt(amp, bins)
};

/// amplitudes(re, im, amp, bins, gain) of the spectrum a real-input transform left in `packed`
/// (re[k] = packed[2k] * scale, im[k] = packed[2k+1] * scale; bins no more than it holds),
/// and the two searches named above over amp[0..bins-1], in one pass over the transform's
/// output; maxFrom is 0 or more. A search with nothing to search gives -1.
AmplitudeExtremes packedAmplitudes(const float* packed, float* amp, int32_t bins, int32_t maxFrom,
                                   float scale, float gain);

/// The fold of disp into `count` columns of b bins each: val[c] is the largest of column c and
/// bin[c] where it stands, of equal values the last, as a running `v <= x` search from the
/// column's first bin finds them. A column whose first bin is not a number keeps that value and
/// gets bin -1: such a search never moves, and its place is the one of the column before.
void foldColumns(const float* disp, int32_t count, int32_t b, float* val, int32_t* bin);

/// The same fold over disp[j] = decibels of amp[j] against fullScale (as decibels() forms them),
/// forming the decibels of only the bins that can hold a column's largest: the same val and
/// bin, bit for bit, as decibels() followed by foldColumns, for any fullScale. Meant for
/// columns of 16 bins or more, where that saves most of the decibels.
void foldDecibelColumns(const float* amp, int32_t count, int32_t b, float fullScale, float* val,
                        int32_t* bin);

/// The same fold for columns of two bins, with the column's log position and phase taken from
/// logs[bin] and ph[bin] on the way. True when a column's first bin was not a number: that
/// column's bin is -1 and its position and phase are left for the caller to carry over.
bool foldPairs(const float* disp, const float* ph, const float* logs, int32_t count, float* val,
               int32_t* bin, float* logX, float* phase);

} // namespace kv::batch
