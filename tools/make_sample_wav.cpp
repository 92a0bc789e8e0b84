// make_sample_wav: writes the bundled sample recording.
//
//   make_sample_wav OUT.wav
//
// Output: canonical 44-byte-header RIFF WAVE, 16-bit PCM, mono, 48 kHz,
// 48 traces of 1024 samples (49152 frames, about 1 s). Content: a tone at
// -6 dBFS (peak) on exactly 100 cycles per 1024 samples (4687.5 Hz) with its
// 2nd harmonic at -50 dBc and its 3rd at -60 dBc, plus white Gaussian noise
// with an RMS of -90 dB relative to full scale.
//
// The tone is coherently sampled for the factory trace length: every trace
// of 1024 samples holds a whole number of its cycles and of its harmonics'
// cycles, so under the Uniform window each sits on one bin (100, 200, 300)
// and the analyser read-outs show the recording's real distortion and noise
// rather than leakage. Bin 100 also keeps the harmonic bands (a bin's
// neighbours up to 21 away) well clear of the fundamental.
//
// The noise comes from std::mt19937 with a fixed seed shaped by a sum of
// twelve uniforms; both are pure integer/IEEE arithmetic, so every run
// writes the same bytes.
//
// Exit status: 0 written, 1 cannot write, 2 bad arguments.
//
// Standard library only; builds with g++ -std=c++20 -Wall -Wextra -Werror.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <random>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr std::uint32_t kSampleRate = 48000;
constexpr std::uint32_t kTraceLength = 1024; // the factory Sp_Samples
constexpr std::uint32_t kTraces = 48;
constexpr std::uint32_t kFrames = kTraces * kTraceLength;
constexpr std::uint16_t kChannels = 1;
constexpr std::uint16_t kBitsPerSample = 16;
constexpr std::uint32_t kToneBin = 100; // cycles per trace: 4687.5 Hz at 48 kHz
static_assert(3 * kToneBin < kTraceLength / 2, "the 3rd harmonic must stay below Nyquist");

constexpr double kFullScale = 32767.0;
constexpr double kToneDbfs = -6.0;
constexpr double kSecondDbc = -50.0;
constexpr double kThirdDbc = -60.0;
constexpr double kNoiseDbfs = -90.0;
constexpr std::uint32_t kNoiseSeed = 20240601u;

double db_to_ratio(double db) {
    return std::pow(10.0, db / 20.0);
}

// sin() at the 1024 phases a bin-centred tone of a 1024-sample trace can
// take; indexing with an integer phase keeps the argument exact for every
// sample and harmonic.
std::array<double, kTraceLength> sine_table() {
    std::array<double, kTraceLength> t{};
    for (std::uint32_t k = 0; k < kTraceLength; ++k)
        t[k] = std::sin(2.0 * std::numbers::pi * static_cast<double>(k) / kTraceLength);
    return t;
}

// Unit-variance Gaussian approximation: the sum of twelve U(0,1) minus 6.
class NoiseSource {
  public:
    explicit NoiseSource(std::uint32_t seed) : gen_(seed) {}
    double next() {
        double sum = 0.0;
        for (int i = 0; i < 12; ++i)
            sum += (static_cast<double>(gen_()) + 0.5) / 4294967296.0;
        return sum - 6.0;
    }

  private:
    std::mt19937 gen_;
};

void put_u16(std::vector<unsigned char>& out, std::uint16_t v) {
    out.push_back(static_cast<unsigned char>(v & 0xFFu));
    out.push_back(static_cast<unsigned char>((v >> 8) & 0xFFu));
}

void put_u32(std::vector<unsigned char>& out, std::uint32_t v) {
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<unsigned char>((v >> shift) & 0xFFu));
}

void put_tag(std::vector<unsigned char>& out, const char (&tag)[5]) {
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<unsigned char>(tag[i]));
}

std::vector<unsigned char> build_wave() {
    constexpr std::uint16_t block_align = kChannels * (kBitsPerSample / 8);
    constexpr std::uint32_t byte_rate = kSampleRate * block_align;
    constexpr std::uint32_t data_bytes = kFrames * block_align;

    std::vector<unsigned char> out;
    out.reserve(44 + data_bytes);
    put_tag(out, "RIFF");
    put_u32(out, 36 + data_bytes);
    put_tag(out, "WAVE");
    put_tag(out, "fmt ");
    put_u32(out, 16);
    put_u16(out, 1); // PCM
    put_u16(out, kChannels);
    put_u32(out, kSampleRate);
    put_u32(out, byte_rate);
    put_u16(out, block_align);
    put_u16(out, kBitsPerSample);
    put_tag(out, "data");
    put_u32(out, data_bytes);

    const auto sine = sine_table();
    const double a1 = kFullScale * db_to_ratio(kToneDbfs);
    const double a2 = a1 * db_to_ratio(kSecondDbc);
    const double a3 = a1 * db_to_ratio(kThirdDbc);
    // An RMS of -90 dB relative to full scale.
    const double noise_rms = kFullScale * db_to_ratio(kNoiseDbfs);
    NoiseSource noise(kNoiseSeed);

    for (std::uint32_t n = 0; n < kFrames; ++n) {
        const std::uint32_t phase = n * kToneBin;
        const double x = a1 * sine[phase % kTraceLength] + a2 * sine[(2 * phase) % kTraceLength] +
                         a3 * sine[(3 * phase) % kTraceLength] + noise_rms * noise.next();
        const double clamped = std::clamp(std::round(x), -32768.0, 32767.0);
        const auto s = static_cast<std::int16_t>(clamped);
        put_u16(out, static_cast<std::uint16_t>(s));
    }
    return out;
}

enum class WriteResult { Ok, OpenFailed, WriteFailed };

WriteResult write_file(const std::string& path, const std::vector<unsigned char>& bytes) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    if (!f) return WriteResult::OpenFailed;
    f.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
    f.close();
    return f ? WriteResult::Ok : WriteResult::WriteFailed;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '\0') {
        std::fprintf(stderr, "usage: make_sample_wav OUT.wav\n");
        return 2;
    }
    const std::string path = argv[1];
    const WriteResult r = write_file(path, build_wave());
    if (r != WriteResult::Ok) {
        std::fprintf(stderr, "make_sample_wav: cannot write %s\n", path.c_str());
        // A regular file we truncated but could not fill is removed rather than
        // left half-written; anything else (a device, a pipe) is left alone.
        std::error_code ec;
        if (r == WriteResult::WriteFailed && std::filesystem::is_regular_file(path, ec))
            std::filesystem::remove(path, ec);
        return 1;
    }
    return 0;
}
