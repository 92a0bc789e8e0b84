// The three reference file formats: a saved spectrum (.pns), a saved O-scope trace (.pno) and a
// saved phase curve (.pnp). Each is little-endian with its fields at fixed offsets and the gaps
// between them zero; the values follow the header straight, without an array header. Writing
// gives the exact bytes; reading never trusts a count: a count that is not positive, or whose
// values would run past the end of the file, and values that are not finite numbers make the
// file refused, so that nothing is drawn from garbage.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kv {

class ByteSource;

/// What a reference file reader concluded.
enum class RefRead {
    Ok,
    WrongFormat, // the magic text is missing (spectra only; the others are not marked reliably)
    Invalid,     // a count, a scale or a value that cannot be drawn
};

// ---- Saved spectrum (.pns) ----------------------------------------------------------------------

inline constexpr const char* kPnsMagic = "Kelvor";
inline constexpr uint64_t kPnsDataOffset = 79;

struct PnsFile {
    float MaxFreq = 0;     // highest frequency of the spectrum, Hz
    int32_t FullScale = 0; // FullScalePos, rounded
    float BinStep = 0;     // Hz between two bins
    int32_t Bins = 0;      // the values run 0..Bins
    int16_t Window = 0;    // FFT_Window in force when saved
    double Level = 0;      // the display level offset in force when saved
    std::vector<float> Data;
};

/// The file's bytes: header, then Data as it is (Bins + 1 values are expected).
std::string writePns(const PnsFile& f);
/// Reads the header and, with `withData`, the values 0..Bins.
RefRead readPns(const ByteSource& src, PnsFile& out, bool withData = true);

// ---- Saved O-scope trace (.pno)
// -------------------------------------------------------------------

inline constexpr const char* kPnoMagic = "pno";
inline constexpr uint64_t kPnoDataOffset = 39;

struct PnoFile {
    /// Samples as written (Sp_Samples). The reader keeps only the low 16 bits, as a signed count,
    /// so a trace of more than 32767 samples does not come back.
    int32_t Samples = 0;
    float FullScale = 0; // FullScalePos when saved
    double Span = 0;     // seconds across the O-scope when saved
    std::vector<float> Data;
};

std::string writePno(const PnoFile& f);
RefRead readPno(const ByteSource& src, PnoFile& out);

// ---- Saved phase curve (.pnp)
// ---------------------------------------------------------------------

/// The phase files carry "pnf", not "pnp"; readers accept any first letters, so a wrong file is
/// only caught by its figures.
inline constexpr const char* kPnpMagic = "pnf";
inline constexpr uint64_t kPnpDataOffset = 49;

struct PnpFile {
    float MaxFreq = 0;
    int32_t Bins = 0; // PhaseBins; the degrees run 0..Bins
    float BinStep = 0;
    std::vector<float> Data;
};

std::string writePnp(const PnpFile& f);
RefRead readPnp(const ByteSource& src, PnpFile& out);

} // namespace kv
