#!/usr/bin/python3
"""Runs bench_three_views once and prints the playback rate with Spectrum, O-scope and Phase
open beside the Spectrum view alone, and what the two extra views cost per trace against what
the Spectrum view itself costs (its rate minus the engine's).

Usage: three_views_ratio.py BUILD/bench [OTHER_BUILD/bench]
With a second build (an older one, say), both are run one after the other, twice, in one
run of this script, so that their ratios are taken under the same load."""
import json, subprocess, sys


def rates(bench_dir):
    exe = bench_dir.rstrip("/") + "/bench_three_views"
    out = subprocess.run([exe, "--benchmark_format=json"], capture_output=True, text=True,
                         check=True)
    return {b["name"].split("/")[0]: b["items_per_second"]
            for b in json.loads(out.stdout)["benchmarks"]}


def report(title, rate):
    only_spectrum, three, engine = rate["BM_SpectrumOnly"], rate["BM_ThreeViews"], rate["BM_EngineOnly"]
    spectrum_view = 1 / only_spectrum - 1 / engine  # seconds a trace the Spectrum view adds
    extra = 1 / three - 1 / only_spectrum  # seconds a trace the O-scope and Phase views add
    print(title)
    print("Spectrum only, 800x600, N=1024:          %8.0f traces/s" % only_spectrum)
    print("Spectrum + O-scope + Phase, 800x600 each: %8.0f traces/s" % three)
    print("engine only:                             %8.0f traces/s" % engine)
    print("three views / Spectrum only rate:        %8.2f" % (three / only_spectrum))
    print("extra views' cost / Spectrum view's cost: %8.2f (goal < 1)" % (extra / spectrum_view))
    shown = 1 / rate["BM_ThreeViewsShownEveryTrace"] - 1 / only_spectrum
    print("the same, both pictures read every trace: %8.2f (pixels written every trace)"
          % (shown / spectrum_view))
    for name, label in (("BM_SpectrumAndOscope", "O-scope"), ("BM_SpectrumAndPhase", "Phase")):
        own = 1 / rate[name] - 1 / only_spectrum
        print("%-7s alone: its cost / Spectrum view's:   %8.2f" % (label, own / spectrum_view))
    for name, label in (("BM_OscopeDrawOnly", "O-scope"), ("BM_PhaseDrawOnly", "Phase")):
        print("%-7s draw alone:                      %8.1f us" % (label, 1e6 / rate[name]))


dirs = sys.argv[1:3]
runs = [(d, rates(d)) for d in (dirs * 2 if len(dirs) > 1 else dirs)]
for i, (d, rate) in enumerate(runs):
    report("== %s%s" % (d, " (round %d)" % (i // len(dirs) + 1) if len(dirs) > 1 else ""), rate)
