// The cost of the FFT filter per trace: FyllSpData with its fold into plot columns (GenDraw),
// with the filter off and on, and a bare complex transform of the same length as the floor. The
// filter adds an inverse and a second forward transform; its goal is at most 2.5 times the
// plain trace. Run: build/bench/bench_conditioning (the ratio is printed at the end).
#include "conditioning/conditioning_hooks.h"
#include "conditioning/fft_filter.h"
#include "engine/engine.h"
#include "engine/fft.h"
#include "state/program_state.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace kv;

namespace {

constexpr int32_t kN = 1024;
constexpr int kTraces = 64;

struct Working {
    std::string path;
    Working() {
        path =
            (fs::temp_directory_path() / ("kv-cond-bench-" + std::to_string(::getpid()))).string();
        std::vector<float> v(size_t(kN) * kTraces);
        for (size_t t = 0; t < v.size(); ++t)
            v[t] = float(8000 * std::sin(0.0917 * double(t)) + 3000 * std::sin(0.61 * double(t)));
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(v.data()), std::streamsize(v.size() * 4));
    }
    ~Working() { fs::remove(path); }
};

Working& working() {
    static Working w;
    return w;
}

void setUp(ProgramState& st, bool filter) {
    st.TempPath = st.ActiveTracePath = working().path;
    st.Sp_Samples = st.Fft_Samples = kN;
    st.SampleRate = 8192.0;
    st.FullScalePos = 32767.0f;
    st.FFT_Window = 7;
    st.WindowGain = 0.5f;
    st.TraceCount = kTraces;
    st.PlotColumns = 400;
    st.TraceBuf.assign(kN + 1, 0.0f);
    InitFftState(st);
    installConditioning(st);
    if (filter) {
        setBoxFilterBand(st, 200.0, 1500.0);
        st.FftFilterOn = true;
    }
}

void perTrace(benchmark::State& state, bool filter) {
    ProgramState st;
    setUp(st, filter);
    int k = 0;
    for (auto _ : state) {
        st.CurrentTracePos = 1 + k * kN * 4;
        FyllSpData(st);
        benchmark::DoNotOptimize(st.ColVal.data());
        k = (k + 1) % kTraces;
    }
}

void BM_TraceFilterOff(benchmark::State& state) {
    perTrace(state, false);
}
void BM_TraceFilterOn(benchmark::State& state) {
    perTrace(state, true);
}
void BM_BareTransform(benchmark::State& state) {
    std::vector<float> re(kN), im(kN);
    for (auto _ : state) {
        for (int32_t i = 0; i < kN; ++i) {
            re[size_t(i)] = float(i % 17);
            im[size_t(i)] = 0.0f;
        }
        fft::forward(re.data(), im.data(), kN);
        benchmark::DoNotOptimize(re.data());
    }
}
BENCHMARK(BM_BareTransform);
BENCHMARK(BM_TraceFilterOff);
BENCHMARK(BM_TraceFilterOn);

/// Keeps the per-iteration times so that the ratio can be printed after the run.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    std::map<std::string, double> ns;
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs)
            ns[r.benchmark_name()] = r.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter rep;
    benchmark::RunSpecifiedBenchmarks(&rep);
    const double off = rep.ns["BM_TraceFilterOff"], on = rep.ns["BM_TraceFilterOn"];
    if (off > 0)
        std::printf("FFT filter per trace: %.2fx the plain trace (goal at most 2.5x), bare "
                    "transform %.2fx\n",
                    on / off, rep.ns["BM_BareTransform"] / off);
    return 0;
}
