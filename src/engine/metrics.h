// The six quality read-outs above the spectrum (SNR, THD, THD+N, SFDR, SINAD, ENOB), taken from
// the amplitude spectrum on show with its peak as the fundamental, and the caption each label
// shows.
#pragma once

#include <array>
#include <string>

namespace kv {

struct ProgramState;

/// Labels An(0) to An(5): SNR, THD, SINAD, SFDR, ENOB, THD+N.
using AnalysisCaptions = std::array<std::string, 6>;

/// Fills NoiseList, HarmList, FundPower, HarmPower, NoisePower, SpurAmp, SpurRatio from SpAmp,
/// PeakBin and PeakHoldBins, then the results of the metrics that are on (SINAD always). A result
/// whose arithmetic fails (a division by zero, the logarithm of a negative ratio) keeps its
/// previous value, so no NaN or infinity ever reaches a read-out.
void CountAnalys(ProgramState& st);

/// One result each, from the powers; each keeps its old value when its arithmetic fails.
void CountSNR(ProgramState& st);
void CountTHD(ProgramState& st);
void CountTHDN(ProgramState& st);
void CountSINAD(ProgramState& st);
void CountSFDR(ProgramState& st);
void CountENOB(ProgramState& st);

/// CountAnalys, then the caption of each metric that is on, e.g. "SNR: 62.5dB  ", "THD: 1%  ",
/// "SFDR: -60dB  ": the value through the picture "###0.00" in its shortest text. Captions of
/// metrics that are off are left as they were.
void NewValue(ProgramState& st, AnalysisCaptions& An);

/// The caption of label `index` (0..5) for the present results.
std::string analysisCaption(const ProgramState& st, int index);

/// UpdateAn's order: which of An(0) to An(5) show, by ShowSnr, ShowThd, ShowSinad, ShowSfdr,
/// ShowEnob, ShowThdN.
std::array<bool, 6> analysisLabelsShown(const ProgramState& st);

/// UpdateAn's layout of the labels An(0) to An(6) along the top of the plot: from `left` (the
/// plot's Left), each visible label at the next x, and x moves on by its width and 3. Hidden
/// labels get -1.
std::array<int, 7> analysisLabelLefts(int left, const std::array<bool, 7>& visible,
                                      const std::array<int, 7>& widths);

} // namespace kv
