// Import speed and memory. Two ways to run it:
//   bench_import                      Google Benchmark over a generated 32 MB WAV and DZT, through
//                                     the fixed-layout entries and those of every variant
//   bench_import --once FILE [FILTER] imports FILE once in a scratch home and prints
//                                     {"seconds": s, "peak_rss_kb": k, "traces": n} for the
//                                     side-by-side scripts
//   bench_import --make-wav FILE N    writes a 16-bit mono WAV of N samples
//   bench_import --make-dzt FILE N    writes a 16-bit DZT of N scans of 512 samples
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "import/file_filters.h"
#include "platform/files.h"
#include "platform/scripted_host.h"
#include "state/settings.h"
#include "state/workbench.h"

#include "bench_import.h"
#include "bench_wav.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <vector>

namespace fs = std::filesystem;
using namespace kv;
using kv::bench::importOnce;
using kv::bench::scratchHome;

namespace {

void writeWav(const std::string& path, size_t samples) {
    std::ofstream f(path, std::ios::binary);
    bench::writeWavHeader(f, samples);
    std::vector<int16_t> block(1 << 16);
    for (size_t i = 0; i < block.size(); ++i)
        block[i] = int16_t(i * 37);
    for (size_t done = 0; done < samples; done += block.size())
        f.write(reinterpret_cast<const char*>(block.data()),
                std::streamsize(std::min(block.size(), samples - done) * 2));
}

/// A 16-bit GSSI-style radar file: 1024-byte header, `scans` scans of 512 unsigned samples.
void writeDzt(const std::string& path, size_t scans) {
    std::ofstream f(path, std::ios::binary);
    std::vector<char> header(1024, 0);
    auto put16 = [&](size_t off, int16_t v) { std::memcpy(&header[off], &v, 2); };
    auto putF = [&](size_t off, float v) { std::memcpy(&header[off], &v, 4); };
    put16(0, 255);
    put16(2, 1024);
    put16(4, 512);
    put16(6, 16);
    putF(10, 64.0f);
    putF(26, 50.0f);
    put16(52, 1);
    f.write(header.data(), std::streamsize(header.size()));
    std::vector<uint16_t> block(512 * 64);
    for (size_t i = 0; i < block.size(); ++i)
        block[i] = uint16_t(32768 + int(i * 37 % 20000) - 10000);
    for (size_t done = 0; done < scans; done += 64)
        f.write(reinterpret_cast<const char*>(block.data()),
                std::streamsize(std::min<size_t>(64, scans - done) * 512 * 2));
}

void BM_DztImport(benchmark::State& state) {
    const std::string home = scratchHome();
    const std::string file = home + "/bench.dzt";
    const size_t scans = 32768; // 32 MB
    writeDzt(file, scans);
    for (auto _ : state)
        benchmark::DoNotOptimize(importOnce(home, file, ""));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(scans * 1024));
    fs::remove_all(home);
}
BENCHMARK(BM_DztImport)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_WavImport(benchmark::State& state) {
    const std::string home = scratchHome();
    const std::string file = home + "/bench.wav";
    const size_t samples = size_t(16) << 20; // 32 MB
    writeWav(file, samples);
    for (auto _ : state)
        benchmark::DoNotOptimize(importOnce(home, file, ""));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(samples * 2));
    fs::remove_all(home);
}
BENCHMARK(BM_WavImport)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// The same recordings through the entries that read every variant: the chunk walk, the channel
// picked out of each frame and the thinning step should cost little beside the fixed layouts.
void BM_WavStdImport(benchmark::State& state) {
    const std::string home = scratchHome();
    const std::string file = home + "/bench.wav";
    const size_t samples = size_t(16) << 20; // 32 MB
    writeWav(file, samples);
    for (auto _ : state)
        benchmark::DoNotOptimize(importOnce(home, file, "WAV-STD"));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(samples * 2));
    fs::remove_all(home);
}
BENCHMARK(BM_WavStdImport)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_DztStdImport(benchmark::State& state) {
    const std::string home = scratchHome();
    const std::string file = home + "/bench.dzt";
    const size_t scans = 32768; // 32 MB
    writeDzt(file, scans);
    for (auto _ : state)
        benchmark::DoNotOptimize(importOnce(home, file, "DZT-STD"));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(scans * 1024));
    fs::remove_all(home);
}
BENCHMARK(BM_DztStdImport)->Unit(benchmark::kMillisecond)->MinTime(2.0);

} // namespace

int main(int argc, char** argv) {
    if (argc >= 3 && std::strcmp(argv[1], "--once") == 0) {
        const std::string home = scratchHome();
        auto t0 = std::chrono::steady_clock::now();
        int traces = importOnce(home, argv[2], argc >= 4 ? argv[3] : "");
        double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        rusage ru{};
        getrusage(RUSAGE_SELF, &ru);
        std::printf("{\"seconds\": %.6f, \"peak_rss_kb\": %ld, \"traces\": %d}\n", s, ru.ru_maxrss,
                    traces);
        fs::remove_all(home);
        return traces < 0 ? 1 : 0;
    }
    if (argc >= 3 && std::strcmp(argv[1], "--make-dzt") == 0) {
        writeDzt(argv[2], size_t(std::stoull(argc >= 4 ? argv[3] : "102400")));
        return 0;
    }
    if (argc >= 3 && std::strcmp(argv[1], "--make-wav") == 0) {
        writeWav(argv[2], size_t(std::stoull(argc >= 4 ? argv[3] : "104857600")));
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
