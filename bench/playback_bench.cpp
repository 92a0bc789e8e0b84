// Playback speed of the Spectrum view: traces per second when the scroll bar moves one step at a
// time through a recording (ScrollNu: trace read, spectrum, fold, drawing into an 800x600
// window's plot), beside the engine alone on the same traces and the drawing alone, all in one
// run so that their ratios compare like with like. bench/playback_ratio.py prints the ratios.
#include "core/lifecycle.h"
#include "core/settings.h"
#include "core/workbench.h"
#include "engine/engine.h"
#include "import/open.h"
#include "platform/scripted_host.h"
#include "views/spectrum/spectrum_form.h"

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
constexpr int kSamples = 1024;

/// A tone whose pitch and level wander from trace to trace over noise, so that every trace
/// draws a different curve.
void writeWav(const std::string& path) {
    const uint32_t n = uint32_t(kTraces) * kSamples;
    std::ofstream f(path, std::ios::binary);
    bench::writeWavHeader(f, n);
    uint32_t seed = 1;
    std::vector<int16_t> buf(n);
    for (uint32_t i = 0; i < n; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const double t = i / 48000.0;
        const double f0 = 1000.0 + 800.0 * std::sin(t * 0.7);
        const double noise = (double(seed >> 16) / 65536.0 - 0.5) * 600.0;
        buf[i] = int16_t(12000.0 * std::sin(2 * M_PI * f0 * t) + noise);
    }
    f.write(reinterpret_cast<const char*>(buf.data()), std::streamsize(buf.size() * 2));
}

/// One workbench with the recording imported and the Spectrum view laid out at 800x600.
struct Playback {
    std::string home;
    ProgramState st;
    CommandState cmd;
    ScriptedHost host;
    RecordingViewHost views;
    Workbench wb{st, cmd, host, views};
    spectrum::SpectrumForm form{wb};

    Playback() {
        home = (fs::temp_directory_path() / ("kv-play-" + std::to_string(::getpid()))).string();
        fs::create_directories(home);
        std::ofstream(home + "/SP.ini") << factorySettingsText();
        writeWav(home + "/play.wav");
        st.AppPath = home;
        MDIForm_Load(wb);
        host.queueFile(home + "/play.wav", 1);
        mnuOpen_Click(wb);
        const QSize plot = spectrum::plotSizeFor({800, 600});
        form.view().setPlotSize(plot.width(), plot.height());
        form.firstDraw();
    }
    ~Playback() { fs::remove_all(home); }
    int next() {
        const int v = form.HS().Value + 1;
        return v > form.HS().Max ? 0 : v;
    }
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
    Playback& p = playback();
    int pos = 0;
    for (auto _ : state) {
        p.st.TracePos = int16_t(pos);
        setCurrentTracePos(p.st);
        FyllSpData(p.st);
        pos = pos >= p.st.LastTrace ? 0 : pos + 1;
    }
    state.SetItemsProcessed(state.iterations());
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
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
