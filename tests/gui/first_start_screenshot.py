#!/usr/bin/python3
"""The workbench's first start on a real X display (Xvfb): started on the bundled sample with the
read-outs switched on, its window grabbed to PNG. The picture is not blank, the spectrum's curve
is there, the read-outs add text along the top, and under QT_SCALE_FACTOR=2 the picture has twice
the pixels (drawn for the scale, not stretched afterwards).
Usage: first_start_screenshot.py APP HOME_WITH_SAMPLE"""
import os, shutil, subprocess, sys, tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "cli"))
from cli_support import check, finish, read_png

app, factory = sys.argv[1], sys.argv[2]
if not shutil.which("xvfb-run"):
    print("xvfb-run is not installed: skipped")
    sys.exit(0)

work = tempfile.mkdtemp(prefix="kv_shot_")
home = os.path.join(work, "home")
shutil.copytree(factory, home, ignore=shutil.ignore_patterns("kelvorandine*", "*_test", "temp*.sp"))
sample = os.path.join(home, "samples", "sample_tone.wav")


def shot(name, extra_env=None, press=None):
    out = os.path.join(work, name)
    env = dict(os.environ, XDG_CONFIG_HOME=os.path.join(work, "config"))
    env.pop("QT_QPA_PLATFORM", None)
    env.update(extra_env or {})
    args = ["xvfb-run", "-a", "-s", "-screen 0 1400x1000x24", app, sample, "--home", home,
            "--grab", out]
    if press:
        args += ["--press", press]
    p = subprocess.run(args, env=env, capture_output=True, text=True, timeout=120)
    check(p.returncode == 0 and os.path.isfile(out), "%s: exit %d %s" % (name, p.returncode, p.stderr))
    return read_png(out) if os.path.isfile(out) else (0, 0, [])


def dark_in_top(rows, w, h):
    """Near-black pixels (text) in the upper third of the window, left of its middle."""
    return sum(1 for r in rows[:h // 3] for px in r[:w * 2 // 3] if max(px) < 60)


try:
    w0, h0, plain = shot("plain.png")
    w1, h1, readouts = shot("readouts.png", press="45,41,44,43,46")
    check(w0 > 600 and h0 > 400, "a window of some size: %dx%d" % (w0, h0))
    colours = {px for r in readouts[::7] for px in r[::7]}
    check(len(colours) > 12, "not blank: %d colours" % len(colours))
    green = sum(1 for r in readouts for px in r if px[1] > 200 and px[0] < 80 and px[2] < 80)
    check(green > 100, "the spectrum's green curve is on show (%d pixels)" % green)
    if (w0, h0) == (w1, h1):
        before, after = dark_in_top(plain, w0, h0), dark_in_top(readouts, w1, h1)
        check(after > before + 150, "the read-outs add text along the top (%d -> %d)" % (before, after))

    w2, h2, _ = shot("scaled.png", extra_env={"QT_SCALE_FACTOR": "2"})
    check(w2 >= 2 * w0 - 4 and h2 >= 2 * h0 - 4,
          "at scale 2 the picture has twice the pixels: %dx%d against %dx%d" % (w2, h2, w0, h0))
finally:
    shutil.rmtree(work, ignore_errors=True)
finish()
