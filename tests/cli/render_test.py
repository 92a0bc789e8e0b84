#!/usr/bin/python3
"""kelvorandine-cli render end to end: the Spectrum view of the bundled sample as a PNG of the
asked size, with the curve in the factory green, the trace chosen by --trace, and exit 1 when
nothing could be opened. Usage: render_test.py CLI HOME_WITH_SAMPLE"""
import json, os, shutil, struct, subprocess, sys, tempfile, zlib

from cli_support import check, failures
from render_test_png import read_png

cli, factory = sys.argv[1], sys.argv[2]
sample = os.path.join(factory, "samples", "sample_1khz.wav")


with tempfile.TemporaryDirectory() as home:
    for item in ("SP.ini", "pal"):
        src = os.path.join(factory, item)
        (shutil.copytree if os.path.isdir(src) else shutil.copy)(src, os.path.join(home, item))
    out = os.path.join(home, "spectrum.png")
    p = subprocess.run([cli, "render", sample, "--view", "spectrum", "--size", "640x400",
                        "--trace", "7", "-o", out, "--home", home], capture_output=True, text=True)
    check(p.returncode == 0, "render exits 0: %d %s" % (p.returncode, p.stderr))
    j = json.loads(p.stdout)
    check(j["TracePos"] == 7, "--trace sets the scroll position")
    check(abs(j["PeakFreq"] - 984.375) < 1e-3, "the peak of the 1 kHz tone")
    w, h, rows = read_png(out)
    check((w, h) == (640, 400), "the picture has the asked size")
    green = sum(1 for r in rows for px in r if px == (0, 255, 0))
    check(green > 300, "the curve is drawn in the factory green (%d pixels)" % green)
    check(rows[0][0] != (0, 255, 0) and rows[h - 1][w - 1] != (0, 255, 0),
          "the corners are frame, not plot")

    p = subprocess.run([cli, "render", os.path.join(home, "missing.wav"), "--view", "spectrum",
                        "-o", out, "--home", home], capture_output=True, text=True)
    check(p.returncode == 1, "a file that cannot be opened ends with exit 1")

sys.exit(1 if failures else 0)
