#!/usr/bin/python3
"""Runs bench_playback once and prints the Spectrum playback rate beside the engine-only rate,
and the share of a trace's time that drawing takes. Usage: playback_ratio.py BUILD/bench"""
import json, subprocess, sys

exe = sys.argv[1].rstrip("/") + "/bench_playback"
out = subprocess.run([exe, "--benchmark_format=json"], capture_output=True, text=True, check=True)
rate = {b["name"].split("/")[0]: b["items_per_second"] for b in json.loads(out.stdout)["benchmarks"]}
play, engine, draw = (rate["BM_PlaybackThroughScrollNu"], rate["BM_EngineOnly"],
                      rate["BM_DrawOnly"])
print("playback through ScrollNu, 800x600, N=1024: %8.0f traces/s (goal 2000)" % play)
print("engine only:                                %8.0f traces/s" % engine)
print("drawing only:                               %8.0f traces/s" % draw)
print("playback / engine rate:                     %8.2f" % (play / engine))
print("drawing share of a trace's time:            %8.2f (goal <= 0.5)" % (play / draw))
