// Playback with the O-scope and the Phase view open beside the Spectrum view, each at 800x600:
// traces per second when the Spectrum view's scroll bar moves one step at a time and the other two
// follow, beside the Spectrum view alone and the engine alone, all in one run so that their ratios
// compare like with like. bench/three_views_ratio.py prints the ratios.
#include "bench_common.h"
#include "views/model_view_host.h"
#include "views/oscilloscope/oscope_view.h"
#include "views/phase/phase_view.h"

#include <cstdio>
#include <string>
#include <utility>

using namespace kv;

namespace {

constexpr int kTraces = 2048;

/// The Spectrum-only playback benchmark's workbench and recording, so that the rates compare,
/// with the O-scope and the Phase view at 800x600 beside it, their models in a view host
/// without windows.
struct Fixture : bench::PlaybackBench<ModelViewHost> {
    oscope::OscopeView* oscope = nullptr;
    phase::PhaseView* phase = nullptr;

    Fixture() : PlaybackBench("kv-three-", kTraces) {
        views.windowSize = {800, 600};
        views.loadView(wb, ViewId::Oscope);
        views.loadView(wb, ViewId::Phase);
        oscope = views.modelOf<oscope::OscopeView>(ViewId::Oscope);
        phase = views.modelOf<phase::PhaseView>(ViewId::Phase);
    }
    void showOthers(bool oscopeOpen, bool phaseOpen) {
        st.OscOpen = oscopeOpen;
        st.PhaseOpen = phaseOpen;
        st.ActiveView = 2;
    }
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

/// Playback through the Spectrum view's scroll bar with the O-scope and the Phase view open as
/// the arguments say.
void playWith(benchmark::State& state, bool oscopeOpen, bool phaseOpen) {
    Fixture& f = fixture();
    f.showOthers(oscopeOpen, phaseOpen);
    for (auto _ : state)
        f.form.HS_Change(f.next());
    f.showOthers(false, false);
    state.SetItemsProcessed(state.iterations());
}
void BM_SpectrumOnly(benchmark::State& state) {
    playWith(state, false, false);
}
void BM_ThreeViews(benchmark::State& state) {
    playWith(state, true, true);
}
void BM_SpectrumAndOscope(benchmark::State& state) {
    playWith(state, true, false);
}
void BM_SpectrumAndPhase(benchmark::State& state) {
    playWith(state, false, true);
}
/// The same with both pictures looked at after every trace, as if the screen showed every one:
/// their pixels are written each time rather than when the screen next shows them.
void BM_ThreeViewsShownEveryTrace(benchmark::State& state) {
    Fixture& f = fixture();
    f.showOthers(true, true);
    for (auto _ : state) {
        f.form.HS_Change(f.next());
        benchmark::DoNotOptimize(std::as_const(*f.oscope).picGraph().image().constBits());
        benchmark::DoNotOptimize(std::as_const(*f.phase).picF().image().constBits());
    }
    f.showOthers(false, false);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SpectrumOnly)->MinTime(2.0);
BENCHMARK(BM_ThreeViewsShownEveryTrace)->MinTime(1.0);
BENCHMARK(BM_ThreeViews)->MinTime(2.0);
BENCHMARK(BM_SpectrumAndOscope)->MinTime(1.0);
BENCHMARK(BM_SpectrumAndPhase)->MinTime(1.0);

/// The O-scope's and the Phase view's drawing alone, two traces in turn so that every draw
/// erases a real curve.
template <class Draw> void drawOnly(benchmark::State& state, Draw draw) {
    Fixture& f = fixture();
    std::vector<float> trace[2], phase[2];
    for (int i = 0; i < 2; ++i) {
        f.st.TracePos = int16_t(3 + 400 * i);
        setCurrentTracePos(f.st);
        FyllSpData(f.st);
        ensurePhases(f.st);
        trace[i] = f.st.TraceBuf;
        phase[i] = f.st.SpPhase;
    }
    int i = 0;
    for (auto _ : state) {
        f.st.TraceBuf = trace[i];
        f.st.SpPhase = phase[i];
        draw(f);
        i ^= 1;
    }
    state.SetItemsProcessed(state.iterations());
}
void BM_OscopeDrawOnly(benchmark::State& state) {
    drawOnly(state, [](Fixture& f) { f.oscope->Draw(); });
}
void BM_PhaseDrawOnly(benchmark::State& state) {
    drawOnly(state, [](Fixture& f) { f.phase->Draw_s(); });
}
BENCHMARK(BM_OscopeDrawOnly)->MinTime(1.0);
BENCHMARK(BM_PhaseDrawOnly)->MinTime(1.0);

void BM_EngineOnly(benchmark::State& state) {
    bench::engineOnly(state, fixture().st);
}
BENCHMARK(BM_EngineOnly)->MinTime(2.0);

/// The O-scope's and the Phase view's pictures after each of `steps` playback steps with all
/// three views open, folded into one FNV-1a hash a step: a change to how the views draw must
/// leave every line printed the same.
int printPictureHashes(int steps) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int argc = 1;
    char name[] = "bench_three_views";
    char* argv[] = {name, nullptr};
    QGuiApplication app(argc, argv);
    Fixture& f = fixture();
    f.showOthers(true, true);
    uint64_t all = 1469598103934665603ull;
    for (int step = 0; step < steps; ++step) {
        // The second half on the Phase view's log axis, the trace upside down.
        if (step == steps / 2) {
            f.st.DrSet = 2;
            f.st.Flipped = true;
            f.phase->redraw();
        }
        f.form.HS_Change(f.next());
        uint64_t h = 1469598103934665603ull;
        for (const QImage* img : {&std::as_const(*f.oscope).picGraph().image(),
                                  &std::as_const(*f.phase).picF().image()}) {
            for (int y = 0; y < img->height(); ++y) {
                const uchar* row = img->constScanLine(y);
                for (int i = 0; i < img->width() * 4; ++i)
                    h = (h ^ row[i]) * 1099511628211ull;
            }
        }
        all = (all ^ h) * 1099511628211ull;
        std::printf("%d %016llx\n", step, static_cast<unsigned long long>(h));
    }
    std::printf("all %016llx\n", static_cast<unsigned long long>(all));
    return 0;
}

} // namespace

/// With --picture-hashes=N, prints the pictures' hashes over N steps instead of timing.
int main(int argc, char** argv) {
    const std::string flag = "--picture-hashes=";
    for (int i = 1; i < argc; ++i)
        if (std::string(argv[i]).rfind(flag, 0) == 0)
            return printPictureHashes(std::stoi(std::string(argv[i]).substr(flag.size())));
    return bench::runBenchmarks(argc, argv);
}
