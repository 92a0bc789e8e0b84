// What the playback benchmarks share: the engine-only loop they measure beside their views, and
// a main that runs them offscreen.
#pragma once

#include "core/lifecycle.h"
#include "core/program_state.h"
#include "engine/engine.h"

#include <QGuiApplication>
#include <benchmark/benchmark.h>

namespace kv::bench {

/// The spectrum of one trace after another, no view: what every view's rate is compared with.
inline void engineOnly(benchmark::State& state, ProgramState& st) {
    int pos = 0;
    for (auto _ : state) {
        st.TracePos = int16_t(pos);
        setCurrentTracePos(st);
        FyllSpData(st);
        pos = pos >= st.LastTrace ? 0 : pos + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

/// Runs the registered benchmarks with an offscreen GUI application (views draw text).
inline int runBenchmarks(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace kv::bench
