// Playback speed of the Spectrum view: traces per second when the scroll bar moves one step at a
// time through a recording (ScrollNu: trace read, spectrum, fold, drawing into an 800x600
// window's plot), beside the engine alone on the same traces and the drawing alone, all in one
// run so that their ratios compare like with like. bench/playback_ratio.py prints the ratios.
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "commands/recording_view_host.h"
#include "engine/engine.h"
#include "platform/scripted_host.h"
#include "state/settings.h"
#include "state/workbench.h"
#include "views/spectrum/spectrum_form.h"

#include "bench_common.h"
#include "bench_wav.h"
#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace kv;

namespace {

constexpr int kTraces = 2048;

/// One workbench with the recording imported and the Spectrum view laid out at 800x600.
struct Playback : bench::PlaybackBench<RecordingViewHost> {
    Playback() : PlaybackBench("kv-play-", kTraces) {}
};

Playback& playback() {
    static Playback p;
    return p;
}

void BM_PlaybackThroughScrollNu(benchmark::State& state) {
    Playback& p = playback();
    for (auto _ : state)
        p.form.HS_Change(p.next());
    state.SetItemsProcessed(state.iterations());
    state.counters["TraceCount"] = p.st.TraceCount;
}
BENCHMARK(BM_PlaybackThroughScrollNu)->MinTime(2.0);

void BM_EngineOnly(benchmark::State& state) {
    bench::engineOnly(state, playback().st);
}
BENCHMARK(BM_EngineOnly)->MinTime(2.0);

void BM_DrawOnly(benchmark::State& state) {
    Playback& p = playback();
    // Two different traces drawn in turn, so that every draw erases a real curve.
    p.st.TracePos = 3;
    setCurrentTracePos(p.st);
    FyllSpData(p.st);
    const std::vector<float> a = p.st.ColVal, ax = p.st.ColLogX;
    p.st.TracePos = 400;
    setCurrentTracePos(p.st);
    FyllSpData(p.st);
    spectrum::SpectrumFeed fa = spectrum::feedFrom(p.st), fb = fa;
    fa.ColVal = a;
    fa.ColLogX = ax;
    bool flip = false;
    for (auto _ : state) {
        p.form.view().Draw_s(p.st, flip ? fa : fb);
        flip = !flip;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DrawOnly)->MinTime(2.0);

} // namespace

int main(int argc, char** argv) {
    return bench::runBenchmarks(argc, argv);
}
