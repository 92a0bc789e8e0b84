// What the readers of the "all variants" entries share: the radar DZT, WAV and oscilloscope CSV
// readers that take a file as instruments really write it, beside the entries that keep their
// fixed-layout rules. A file such a reader cannot take ends with one message that says why, and
// with no data set; samples are decoded by one set of rules; and the traces are written through
// the same loop, thinned by the down-sampling settings.
#pragma once

#include "import/reader.h"
#include "import/standard_readers.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kv {

// The entry points, one per reader file.
void ReadDztStd(ImportContext& ctx); // dzt_std.cpp: "Radar DZT, all variants (*.dzt)"
void ReadWavStd(ImportContext& ctx); // wav_std.cpp: "WAV, all variants (*.wav)"
void ReadCsvStd(ImportContext& ctx); // csv_std.cpp: "Oscilloscope CSV (*.csv)"

/// The most source samples one trace may take before thinning (16 M): a longer trace asked for
/// by the settings or a file is refused rather than tried.
inline constexpr int64_t kLongestRawTrace = int64_t(1) << 24;

/// A file the reader cannot take; what() is the sentence the user is shown, with the critical
/// icon. The entry points run their readers under runStandardRead (standard_readers.h), which
/// the seismic entries share: the message, no header lines, no data set.
struct UnreadableFile : ReadRefused {
    explicit UnreadableFile(const std::string& why) : ReadRefused(why, MsgIcon::Critical) {}
};

/// The channel the options choose (ImportChannel, 1-based), as a 0-based index into a source
/// with `channels` channels. A choice the file does not have fails the read.
int chosenChannel(const ProgramState& st, int channels);

/// How one sample is stored. The unsigned codings are centred on zero by subtracting half
/// their range, so silence reads as 0 whatever the coding.
enum class SampleCoding { U8, S16, U16, S24, S32, F32, F64 };

/// Bytes one sample of `c` takes.
int sampleBytes(SampleCoding c);
/// `n` little-endian samples, `stride` bytes apart from `p` on, as floats into `out`; the
/// unsigned codings centred.
void decodeSamples(const uint8_t* p, size_t stride, size_t n, SampleCoding c, float* out);
/// True for the codings whose samples are IEEE floats.
inline bool isFloatCoding(SampleCoding c) {
    return c == SampleCoding::F32 || c == SampleCoding::F64;
}

/// Full scale of an integer coding of `bits` bits: FullScalePos 2^(bits-1) - 1, FullScaleNeg
/// 2^(bits-1).
void setIntegerFullScale(ProgramState& st, int bits);
/// Full scale of float samples: the largest absolute sample on both sides, 1 when all are 0.
void setFloatFullScale(ProgramState& st, double largestAbs);

/// Writes TraceCount traces of Sp_Samples floats to TempPath under the reader contract
/// (progress, one yield and one Cancel test per trace). `fill(k, raw)` puts the `rawPerTrace`
/// source samples of trace k into `raw` (zeroed beforehand); they are thinned by NewDS as
/// DownsampleMode says, and a trace shorter than Sp_Samples is padded with zeros.
void writeThinnedTraces(ImportContext& ctx, int64_t rawPerTrace,
                        const std::function<void(int32_t k, std::vector<float>& raw)>& fill);

/// "label : value", the form of every file-information line.
std::string infoLine(const std::string& label, const std::string& value);

} // namespace kv
