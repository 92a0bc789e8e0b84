// Playback with the O-scope and the Phase view open beside the Spectrum view, each at 800x600:
// traces per second when the Spectrum view's scroll bar moves one step at a time and the other two
// follow, beside the Spectrum view alone and the engine alone, all in one run so that their ratios
// compare like with like. bench/three_views_ratio.py prints the ratios.
#include "bench_common.h"
#include "views/model_view_host.h"
#include "views/oscilloscope/oscope_view.h"
#include "views/phase/phase_view.h"

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
BENCHMARK(BM_SpectrumOnly)->MinTime(2.0);
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

} // namespace

int main(int argc, char** argv) {
    return bench::runBenchmarks(argc, argv);
}
