// A long playback with every view open, offscreen: 20,000 traces through the Spectrum, O-scope,
// Phase, Waterfall and Radargram windows, repainted as they go. The heap in use after the
// last trace must be what it was after the first thousand: anything a view, a window or the
// engine keeps per trace shows up here long before a user's evening of playback would.
#include "app/main_window.h"
#include "gui_fixture.h"

#include <QApplication>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <malloc.h>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define KV_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KV_ASAN 1
#endif
#endif
#ifdef KV_ASAN
// The sanitizer's runtime keeps its own count of the bytes handed out and not yet freed.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

using namespace kv;

namespace {

constexpr int kTraces = 20000;
constexpr int kSamples = 256;

/// Bytes the program has allocated and not freed. Under AddressSanitizer the allocator is its
/// own, and so is the count.
int64_t heapInUse() {
#ifdef KV_ASAN
    return int64_t(__sanitizer_get_current_allocated_bytes());
#else
    return int64_t(mallinfo2().uordblks);
#endif
}

/// A tone whose pitch and level move from trace to trace over a little noise, so that every
/// view draws something new each time.
std::vector<int> wanderingTone() {
    std::vector<int> s(size_t(kTraces) * kSamples);
    uint32_t seed = 7;
    for (size_t i = 0; i < s.size(); ++i) {
        const size_t trace = i / kSamples;
        const double f = 0.05 + 0.2 * (trace % 97) / 97.0;
        seed = seed * 1664525u + 1013904223u;
        const double noise = double(seed >> 20) - 2048.0;
        s[i] = int(std::lround((4000 + 80 * (trace % 113)) * std::sin(f * double(i)) + noise));
    }
    return s;
}

class Soak : public test::GuiTest {};

} // namespace

TEST_F(Soak, TwentyThousandTracesWithEveryViewOpenKeepTheHeapFlat) {
    // Short traces keep the run quick; the settings file says how long a trace is.
    std::string ini = test::readText(home.file("SP.ini"));
    const size_t at = ini.find("Sp_Samples=1024");
    ASSERT_NE(at, std::string::npos);
    ini.replace(at, 15, "Sp_Samples=" + std::to_string(kSamples));
    test::writeText(home.file("SP.ini"), ini);
    const std::string wav = home.file("long.wav");
    test::writeFile(wav, test::wavBytes(1, 48000, 16, wanderingTone()));

    ScriptedHost host;
    MainWindow w(home.path(), &host);
    w.resize(800, 600);
    w.show();
    w.importFile(wav);
    ProgramState& st = w.state();
    ASSERT_EQ(st.Sp_Samples, kSamples);
    ASSERT_EQ(st.LastTrace, kTraces - 1);
    w.menuAction("mnuOlOp")->trigger(); // Spectrum, O-scope and Phase
    st.BscanShow = 0;
    w.menuAction("mnuBscan")->trigger();
    st.BscanShow = 1;
    w.menuAction("mnuBscan")->trigger();
    QApplication::processEvents();
    ASSERT_TRUE(st.SpectrumOpen && st.OscOpen && st.PhaseOpen && st.WaterfallOpen &&
                st.RadargramOpen);

    int64_t early = -1;
    int shown = 0;
    host.onYield([&] {
        // The models follow every trace; the windows repaint every tenth, as a screen would
        // show a fast playback.
        if (++shown % 10 == 0) QApplication::processEvents();
        if (shown == 1000) early = heapInUse();
    });
    w.toolAction(12)->trigger(); // Fwd, to the last trace
    host.onYield(nullptr);
    const int64_t late = heapInUse();

    EXPECT_EQ(st.TracePos, kTraces - 1);
    ASSERT_GE(shown, kTraces - 1);
    ASSERT_GT(early, 0);
    // A leak of eight bytes a trace adds up to more than this over 19,000 traces; what Qt keeps
    // on the way is a few kilobytes.
    EXPECT_LT(late - early, 128 * 1024)
        << "heap after 1000 traces: " << early << ", after " << shown << ": " << late;
}
