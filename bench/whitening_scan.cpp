// The whitening scan over a working file, timed: `bench_whitening_scan FILE TRACES` prints the
// seconds of the scan and the constant it found. bench/whitening_vs_numpy.py runs it beside numpy
// doing the same work (read, window, forward transform, the band's largest real part).
#include "conditioning/whitening.h"
#include "engine/engine.h"
#include "state/program_state.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

using namespace kv;

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: bench_whitening_scan FILE TRACES\n");
        return 2;
    }
    ProgramState st;
    st.TempPath = st.ActiveTracePath = argv[1];
    st.Sp_Samples = st.Fft_Samples = 1024;
    st.SampleRate = 8192.0;
    st.FFT_Window = 7; // Hann
    st.TraceCount = std::atoi(argv[2]);
    InitFftState(st);
    setWhiteBand(st, 500.0, 1500.0);
    int32_t seen = 0;
    const auto t0 = std::chrono::steady_clock::now();
    ScanWhiteBand(st, [&](int32_t t) {
        seen = t;
        return true;
    });
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::printf("%.6f %d %.6g %.6g\n", s, seen, double(st.WhiteRe), double(st.WhiteIm));
    return 0;
}
