// The waterfalls at work: rows per second through traceChanged with an 800-wide picture 200 and
// 2,000 pixels tall (the move must not cost more with the height), playback with the frequency
// waterfall open beside the Spectrum view against the Spectrum view alone at 800x600, and the
// radargram's rebuild of 2,000 rows of 512 samples from the working file with whitening on.
#include "bench_common.h"
#include "engine/spectrum.h"
#include "views/model_view_host.h"
#include "views/radargram/radargram_view.h"
#include "views/waterfall/waterfall_base.h"
#include "views/waterfall/waterfall_view.h"

#include <cmath>
#include <memory>

using namespace kv;

namespace {

constexpr int kTraces = 2048;

struct Fixture : bench::PlaybackBench<ModelViewHost> {
    Fixture() : PlaybackBench("kv-waterfall-", kTraces) {
        views.windowSize = {800, 600};
        st.BscanShow = 0;
        views.loadView(wb, ViewId::Waterfall);
        st.ActiveView = 2;
    }
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

/// The window height whose picture is `rows` tall.
int windowFor(int rows) {
    return rows + waterfall::kPicTop + waterfall::kBottomMargin;
}

/// One row after another for the same trace's columns: the row made, the picture moved.
void BM_WaterfallRows(benchmark::State& state) {
    Fixture& f = fixture();
    waterfall::WaterfallView v(f.wb);
    v.load(800 + waterfall::kPicLeft + waterfall::kRightMargin, windowFor(int(state.range(0))));
    f.st.PlayRew = false;
    for (auto _ : state)
        v.traceChanged();
    state.SetItemsProcessed(state.iterations());
    state.counters["height"] = v.ViewHeight();
}
BENCHMARK(BM_WaterfallRows)->Arg(200)->Arg(2000)->MinTime(1.0);

/// Playback through the Spectrum view's scroll bar, the waterfall open or not.
void playWith(benchmark::State& state, bool waterfallOpen) {
    Fixture& f = fixture();
    f.st.WaterfallOpen = waterfallOpen;
    f.st.ActiveView = 2;
    for (auto _ : state)
        f.form.HS_Change(f.next());
    f.st.WaterfallOpen = false;
    state.SetItemsProcessed(state.iterations());
}
void BM_SpectrumOnly(benchmark::State& state) {
    playWith(state, false);
}
void BM_SpectrumAndWaterfall(benchmark::State& state) {
    playWith(state, true);
}
BENCHMARK(BM_SpectrumOnly)->MinTime(2.0);
BENCHMARK(BM_SpectrumAndWaterfall)->MinTime(2.0);

/// 2,000 traces of 512 samples in a working file of their own, shown as 2,000 rows of a
/// radargram, made again from the file with whitening on.
void BM_RadargramRebuild(benchmark::State& state) {
    Fixture& f = fixture();
    ProgramState& st = f.st;
    const ProgramState keep = st;
    constexpr int kRows = 2000, kSamples = 512;
    const std::string path = f.home + "/rebuild.sp";
    {
        std::vector<float> x(size_t(kRows) * kSamples);
        for (size_t i = 0; i < x.size(); ++i)
            x[i] = float(8000 * std::sin(0.0917 * double(i)) + 500 * std::sin(0.9 * double(i)));
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(x.data()), std::streamsize(x.size() * 4));
    }
    st.ActiveTracePath = path;
    st.FirstTracePos = 1;
    st.Sp_Samples = st.Fft_Samples = kSamples;
    st.TraceBuf.assign(kSamples + 1, 0.0f);
    InitFftState(st);
    radargram::RadargramView r(f.wb);
    r.load(800 + waterfall::kPicLeft + waterfall::kRightMargin, windowFor(kRows));
    st.PlayRew = false;
    for (int k = 0; k < kRows; ++k)
        r.ScrallBScan();
    st.TracePos = kRows;
    st.WhiteningOn = true;
    st.WhiteLowBin = 20;
    st.WhiteHighBin = 60;
    st.WhiteRe = 1.0f;
    st.WhiteIm = 0.0f;
    for (auto _ : state)
        r.RebuildFromFile();
    state.SetItemsProcessed(state.iterations() * r.WfRowsOnShow());
    state.counters["rows"] = r.WfRowsOnShow();
    st = keep;
    InitFftState(st);
}
BENCHMARK(BM_RadargramRebuild)->MinTime(2.0)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return bench::runBenchmarks(argc, argv);
}
