// The cost of one trace of playback: FyllSpData (read, window, transform, amplitudes, dB, peak
// search, fold into plot columns, phases) against a bare FFTW transform of the same length on the
// same data, run side by side so that bench/engine_vs_fftw.py can report the ratios.
#include "engine/engine.h"
#include "engine/trace_blocks.h"
#include "state/program_state.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace kv;

namespace {

constexpr int kTraces = 8;

/// The working data: kTraces traces of n samples, a tone with a harmonic in noise.
std::vector<float> traces(int32_t n) {
    std::vector<float> v(size_t(n) * kTraces);
    uint32_t seed = 12345;
    for (size_t t = 0; t < v.size(); ++t) {
        seed = seed * 1664525u + 1013904223u;
        const double noise = (double(seed >> 8) / double(1 << 24) - 0.5) * 20.0;
        v[t] =
            float(8000 * std::sin(0.0917 * double(t)) + 80 * std::sin(0.1834 * double(t)) + noise);
    }
    return v;
}

std::string workingFile(int32_t n) {
    const fs::path p = fs::temp_directory_path() /
                       ("kv-engine-bench-" + std::to_string(::getpid()) + "-" + std::to_string(n));
    const auto v = traces(n);
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(v.data()), std::streamsize(v.size() * 4));
    return p.string();
}

void BM_BareComplexFftw(benchmark::State& state) {
    const int32_t n = int32_t(state.range(0));
    const auto data = traces(n);
    auto* in = fftwf_alloc_complex(size_t(n));
    auto* out = fftwf_alloc_complex(size_t(n));
    fftwf_plan p = fftwf_plan_dft_1d(n, in, out, FFTW_FORWARD, FFTW_ESTIMATE);
    int k = 0;
    for (auto _ : state) {
        const float* x = data.data() + size_t(k) * size_t(n);
        for (int32_t i = 0; i < n; ++i) {
            in[i][0] = x[i];
            in[i][1] = 0.0f;
        }
        fftwf_execute(p);
        benchmark::DoNotOptimize(out[1][0]);
        k = (k + 1) % kTraces;
    }
    fftwf_destroy_plan(p);
    fftwf_free(in);
    fftwf_free(out);
}

void BM_BareRealFftw(benchmark::State& state) {
    const int32_t n = int32_t(state.range(0));
    const auto data = traces(n);
    float* in = fftwf_alloc_real(size_t(n));
    auto* out = fftwf_alloc_complex(size_t(n / 2 + 1));
    fftwf_plan p = fftwf_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
    int k = 0;
    for (auto _ : state) {
        std::copy_n(data.data() + size_t(k) * size_t(n), n, in);
        fftwf_execute(p);
        benchmark::DoNotOptimize(out[1][0]);
        k = (k + 1) % kTraces;
    }
    fftwf_destroy_plan(p);
    fftwf_free(in);
    fftwf_free(out);
}

void BM_FyllSpData(benchmark::State& state) {
    const int32_t n = int32_t(state.range(0));
    ProgramState st;
    st.TempPath = st.ActiveTracePath = workingFile(n);
    st.Sp_Samples = st.Fft_Samples = n;
    st.SampleRate = 48000.0;
    st.FullScalePos = 32767.0f;
    st.FFT_Window = int16_t(state.range(1));
    SetWindowName(st);
    st.TraceBuf.assign(size_t(n) + 1, 0.0f);
    st.TraceBufR.assign(size_t(n) + 1, 0.0f);
    st.PlotColumns = 500;
    st.ViewLaidOut = true;
    InitFftState(st);
    // Playback reads the working file a block of traces at a time, as surveys and rebuilds do.
    TraceBlockScope blocks;
    int k = 0;
    for (auto _ : state) {
        st.CurrentTracePos = 1 + n * 4 * k;
        FyllSpData(st);
        benchmark::DoNotOptimize(st.ColVal.data());
        k = (k + 1) % kTraces;
    }
    fs::remove(st.TempPath);
}

void lengths(benchmark::internal::Benchmark* b) {
    for (int n : {1024, 4096, 65536})
        b->Arg(n);
}

void lengthsAndWindows(benchmark::internal::Benchmark* b) {
    for (int n : {1024, 4096, 65536})
        for (int w : {10, 7})
            b->Args({n, w});
}

} // namespace

BENCHMARK(BM_BareComplexFftw)->Apply(lengths);
BENCHMARK(BM_BareRealFftw)->Apply(lengths);
BENCHMARK(BM_FyllSpData)->Apply(lengthsAndWindows);

BENCHMARK_MAIN();
