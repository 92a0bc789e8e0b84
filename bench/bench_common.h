// What the playback benchmarks share: a workbench with a long recording imported and the
// Spectrum view laid out at 800x600, the engine-only loop they measure beside their views, and
// a main that runs them offscreen.
#pragma once

#include "bench_wav.h"
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "engine/engine.h"
#include "platform/scripted_host.h"
#include "state/program_state.h"
#include "state/settings.h"
#include "state/workbench.h"
#include "views/spectrum/spectrum_form.h"

#include <QGuiApplication>
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace kv::bench {

/// The wandering-tone recording of `traces` x 1024 samples imported into a fresh home, with the
/// Spectrum view at 800x600; `Views` stands for the windows the benchmark keeps.
template <class Views> struct PlaybackBench {
    std::string home;
    ProgramState st;
    CommandState cmd;
    ScriptedHost host;
    Views views;
    Workbench wb{st, cmd, host, views};
    spectrum::SpectrumForm form{wb};

    PlaybackBench(const std::string& name, int traces) {
        namespace fs = std::filesystem;
        home = (fs::temp_directory_path() / (name + std::to_string(::getpid()))).string();
        fs::create_directories(home);
        std::ofstream(home + "/SP.ini") << factorySettingsText();
        writeWanderingTone(home + "/play.wav", traces, 1024);
        st.AppPath = home;
        MDIForm_Load(wb);
        host.queueFile(home + "/play.wav", 1);
        mnuOpen_Click(wb);
        const QSize plot = spectrum::plotSizeFor({800, 600});
        form.view().setPlotSize(plot.width(), plot.height());
        form.firstDraw();
    }
    ~PlaybackBench() { std::filesystem::remove_all(home); }
    /// The next scroll position, round to the start after the last.
    int next() {
        const int v = form.HS().Value + 1;
        return v > form.HS().Max ? 0 : v;
    }
};

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
