// A fresh home folder per test (factory SP.ini inside), a workbench over a scripted host, and
// writers for small exact recordings.
#pragma once

#include "commands/recording_view_host.h"
#include "platform/scripted_host.h"
#include "state/command_state.h"
#include "state/program_state.h"
#include "state/view_host.h"
#include "state/workbench.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kv::test {

/// A temporary folder, removed when the object goes.
class TempHome {
  public:
    /// With `withSettings`, the factory SP.ini is written into it.
    explicit TempHome(bool withSettings = true);
    ~TempHome();
    TempHome(const TempHome&) = delete;
    TempHome& operator=(const TempHome&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

/// A workbench started in a fresh home, as the desktop would start it. Its views are recorded,
/// or, with `viewHost`, passed to that host (the views' models, for instance).
struct Bench {
    explicit Bench(bool withSettings = true, ViewHost* viewHost = nullptr);
    TempHome home;
    ProgramState st;
    CommandState cmd;
    ScriptedHost host;
    RecordingViewHost views;
    Workbench wb;
    /// Runs the start sequence (constants, settings).
    void start();
    /// Imports `path` as the Import command would, with the given 1-based filter index.
    void import(const std::string& path, int filterIndex = 1);
    /// Floats of the working file `name` in the home folder.
    std::vector<float> working(const std::string& name = "temp.sp") const;
};

void writeFile(const std::string& path, const std::vector<uint8_t>& bytes);
void writeText(const std::string& path, const std::string& text);
std::string readText(const std::string& path);
/// Opens every file as a memory source holding its bytes, as the fuzz targets open their input:
/// a reader then takes the bytes where they lie rather than reading them into a buffer.
SourceOpener memoryOpener();

/// A canonical 44-byte-header WAV with the given samples (interleaved for several channels).
std::vector<uint8_t> wavBytes(int channels, int sampleRate, int bits,
                              const std::vector<int>& samples);

/// Samples of a 1 kHz sine at 8 kHz, amplitude 16000, over a floor of noise (so that the
/// spectrum's curve crosses every column): `count` 16-bit values.
std::vector<int> noisySine(int count);

/// Path of a file under ../shared/data/real, or "" when that folder is absent.
std::string realData(const std::string& relative);

} // namespace kv::test

/// Skips the test with a clear message when the real recordings are not next to the project.
#define KV_REQUIRE_REAL(var, rel)                                                                  \
    const std::string var = ::kv::test::realData(rel);                                             \
    if (var.empty()) GTEST_SKIP() << "real recordings not found (../shared/data/real): " << rel
