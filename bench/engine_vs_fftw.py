#!/usr/bin/python3
"""One trace of playback (FyllSpData: read, window, transform, amplitudes, dB, peak search, fold
into columns, phases) against a bare FFTW transform of the same length on the same data, all in
one run of bench_engine. Prints the ratio of CPU times per length and window (1.0 = as fast as
the bare transform). Each benchmark runs --repetitions times (default 3) and the fastest run of
each counts, and the repetitions of all benchmarks run interleaved in random order, so that a
burst of other work on the machine weighs on neither side.

Usage: engine_vs_fftw.py BUILD_DIR/bench [--min-time 0.5] [--repetitions 3]"""
import json, os, subprocess, sys

bindir = sys.argv[1]
min_time = sys.argv[sys.argv.index("--min-time") + 1] if "--min-time" in sys.argv else "0.5"
reps = sys.argv[sys.argv.index("--repetitions") + 1] if "--repetitions" in sys.argv else "3"
out = subprocess.run([os.path.join(bindir, "bench_engine"), "--benchmark_format=json",
                      "--benchmark_min_time=" + min_time, "--benchmark_repetitions=" + reps,
                      "--benchmark_enable_random_interleaving=true"],
                     check=True, capture_output=True, text=True).stdout
times = {}
for b in json.loads(out)["benchmarks"]:
    if b.get("run_type", "iteration") != "iteration":
        continue
    name = b.get("run_name", b["name"])
    times[name] = min(times.get(name, float("inf")), b["cpu_time"])
window_name = {"10": "Uniform", "7": "Hann"}
result = {}
for n in (1024, 4096, 65536):
    c2c, r2c = times["BM_BareComplexFftw/%d" % n], times["BM_BareRealFftw/%d" % n]
    for w in ("10", "7"):
        ours = times["BM_FyllSpData/%d/%s" % (n, w)]
        result["%d/%s" % (n, window_name[w])] = {"FyllSpData_ns": ours, "complex_fftw_ns": c2c,
                                                  "real_fftw_ns": r2c, "ratio_complex": ours / c2c,
                                                  "ratio_real": ours / r2c}
        print("N=%-6d %-8s FyllSpData+GenDraw %9.0f ns  complex FFTW %9.0f ns (x%.2f)  real FFTW %9.0f ns (x%.2f)"
              % (n, window_name[w], ours, c2c, ours / c2c, r2c, ours / r2c))
print(json.dumps(result))
