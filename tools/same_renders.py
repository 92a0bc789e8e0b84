#!/usr/bin/python3
"""Renders the O-scope and the Phase view of a set of recordings with two builds of the
command-line tool and checks that the pictures are the same byte for byte: a change to the way
those views draw must not move a pixel. Each picture is taken at the first trace (the view's
first draw) and at later traces (the old curve erased, the new one drawn), on both frequency
axes for the Phase view.

Usage: same_renders.py OLD_CLI NEW_CLI [RECORDING ...]
Without recordings, the WAV, SEG-Y, DZT, CSV, SEG-2 and DT1 files of ../shared/data/real are
used. Exit status 1 when any picture differs."""
import glob, os, subprocess, sys, tempfile

old_cli, new_cli = sys.argv[1], sys.argv[2]
files = sys.argv[3:]
if not files:
    here = os.path.dirname(os.path.abspath(__file__))
    real = os.path.normpath(os.path.join(here, "..", "..", "shared", "data", "real"))
    for pattern in ("wav/*.wav", "segy/*.sgy", "dzt/*.DZT", "csv/*.csv", "seg2/*.seg2",
                    "dt1/*.DT1"):
        files += sorted(glob.glob(os.path.join(real, pattern)))

cases = [("oscope", "0", "800x600", []), ("oscope", "3", "640x480", []),
         ("oscope", "1", "300x240", ["--set", "TimeWindow.ShowGrid=0"]),
         ("phase", "0", "800x600", []), ("phase", "2", "640x480", []),
         ("phase", "3", "500x400", ["--set", "FFT.DrSet=2"])]

compared = differing = 0
with tempfile.TemporaryDirectory() as tmp:
    for f in files:
        for view, trace, size, extra in cases:
            pictures = []
            for tag, cli in (("old", old_cli), ("new", new_cli)):
                home = os.path.join(tmp, tag + "-home")
                os.makedirs(home, exist_ok=True)
                out = os.path.join(tmp, tag + ".png")
                if os.path.exists(out):
                    os.remove(out)
                args = [cli, "render", f, "--home", home, "--view", view, "--trace", trace,
                        "--size", size, "-o", out] + extra
                subprocess.run(args, capture_output=True)
                pictures.append(open(out, "rb").read() if os.path.exists(out) else None)
            if pictures[0] is None and pictures[1] is None:
                continue  # a trace the recording does not have, both ways
            compared += 1
            if pictures[0] != pictures[1]:
                differing += 1
                print("DIFFERENT:", os.path.basename(f), view, "trace", trace, size, *extra)
print("%d pictures compared, %d different" % (compared, differing))
sys.exit(1 if differing else 0)
