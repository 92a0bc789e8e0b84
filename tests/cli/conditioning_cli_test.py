#!/usr/bin/python3
"""The conditioning options of the spectrum, metrics and render subcommands on a generated
two-tone recording: each does what its dialog's Apply does, and a figure the dialog refuses
prints the dialog's message and ends with exit 2.
Usage: conditioning_cli_test.py CLI HOME_WITH_SP_INI"""
import functools, math, os, shutil, sys, tempfile

from cli_support import check, finish, run_cli, wav

cli, factory = sys.argv[1], sys.argv[2]
run = functools.partial(run_cli, cli)

with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(factory, "SP.ini"), home)
    src = os.path.join(home, "tones.wav")
    # 8192 Hz: 8 Hz a bin; tones at 512 Hz (bin 64) and 2048 Hz (bin 256).
    wav(src, [round(8000 * math.sin(2 * math.pi * 512 * t / 8192) + 8000 * math.sin(2 * math.pi * 2048 * t / 8192))
              for t in range(4 * 1024)], rate=8192)
    common = ["--home", home, "--set", "FFT.FFT_Window=10"]

    code, out, _, _ = run("spectrum", src, *common, "--fft-filter", "100:1000")
    check(code == 0 and out and out["FftFilterOn"], "the FFT filter is on")
    if out:
        check(abs(out["SpAmp"][64] - 8000) < 80 and out["SpAmp"][256] < 1, "the second tone is filtered out")

    code, _, _, err = run("spectrum", src, *common, "--fft-filter", "abc:1000")
    check(code == 2 and "Enter value for HP" in err, "a refused corner prints the dialog's message, exit 2")
    code, _, _, _ = run("spectrum", src, *common, "--fft-filter", "100")
    check(code == 2, "one figure is a usage error")

    code, out, _, err = run("spectrum", src, *common, "--whiten", "0:600")
    check(code == 0 and out and out["WhiteningOn"], "whitening is on")
    if out:
        check(out["WhiteLowBin"] == 1 and out["WhiteHighBin"] == 75, "the band in elements")
        a = 2 * math.hypot(out["WhiteRe"], out["WhiteIm"])
        check(all(abs(v - a) <= a * 1e-5 for v in out["SpAmp"][0:75]), "the band carries the constant")

    code, out, _, _ = run("spectrum", src, *common, "--span", "512:320", "--columns", "20")
    check(code == 0 and out and out["SpanActive"], "span mode")
    if out:
        check(out["SpanStart"] == 44 and out["SpanEnd"] == 84 and len(out["SpanCol"]) == 14, "the span's bins and columns")
    code, _, _, err = run("spectrum", src, *common, "--span", "4096:100")
    check(code == 2 and "Decrease Center Frequency!" in err, "a centre at MaxFreq is refused")

    code, out, _, _ = run("spectrum", src, *common, "--gain", "6")
    check(code == 0 and out and abs(out["GainFactor"] - 10 ** 0.3) < 1e-9, "the gain factor")
    code, _, _, err = run("spectrum", src, *common, "--gain", "loud")
    check(code == 2 and "Enter value for Gain" in err, "a gain that is not a number is refused")

    code, _, text, _ = run("metrics", src, *common, "--all-traces", "--csv", "--fft-filter", "100:1000")
    rows = text.strip().splitlines()
    check(code == 0 and len(rows) == 5, "a filtered survey, one row a trace")

finish()
