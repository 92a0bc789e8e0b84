#!/usr/bin/python3
"""The spectrum and metrics subcommands end to end on generated WAV recordings: peak figures,
the fold into columns, the read-outs of a tone with a known harmonic, and the survey CSV.
Usage: engine_cli_test.py CLI HOME_WITH_SP_INI"""
import csv, functools, io, math, os, shutil, sys, tempfile

from cli_support import check, finish, run_cli, wav

cli, factory = sys.argv[1], sys.argv[2]
run = functools.partial(run_cli, cli)


def tone(n, parts):
    """n samples of sines (amplitude, cycles per 1024 samples), rounded to 16 bits."""
    return [round(sum(a * math.sin(2 * math.pi * c * t / 1024) for a, c in parts)) for t in range(n)]


with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(factory, "SP.ini"), home)
    src = os.path.join(home, "tone.wav")
    wav(src, tone(8 * 1024, [(10000, 64), (100, 128)]), rate=48000)

    code, out, _, _ = run("spectrum", src, "--home", home, "--trace", "2", "--columns", "100")
    check(code == 0, "spectrum exits 0")
    if out:
        check(out["BinWidth"] == 46.875 and out["MaxFreq"] == 24000, "bin width and band")
        check(out["PeakBin"] == 64 and out["PeakFreq"] == 3000, "the tone's bin and frequency")
        check(abs(out["PeakAmp"] - 10000) < 2, "a sine on a bin reads its amplitude")
        check(abs(out["PeakDb"] - 20 * math.log10(out["PeakAmp"] / 32767)) < 1e-4, "PeakDb in dB of full scale")
        check(len(out["SpAmp"]) == 512 and len(out["SpPhase"]) == 513, "bins 0..N/2-1, phases 0..N/2")
        check(abs(out["SpAmp"][128] - 100) < 2, "the harmonic")
        # The trace is read from its second sample: the sine's phase is one step of its bin on.
        check(abs(out["SpPhase"][65] - (360 * 64 / 1024 - 90)) < 0.01, "the tone's phase, one index above its bin")
        check(out["BinsPerColumn"] == 6 and out["ColumnCount"] == 84 and len(out["ColVal"]) == 85,
              "512 bins over 100 columns fold 6 a column")
        check(max(out["ColVal"]) == out["PeakDb"], "the fold keeps the peak")
        check(out["CurrentTracePos"] == 1 + 2 * 1024 * 4, "--trace is the scroll position")

    code, out, _, _ = run("spectrum", src, "--home", home, "--set", "FFT.FFT_Window=7")
    check(code == 0 and out and out["WindowGain"] == 0.5, "the window and its gain come from the settings")
    check(out and abs(out["PeakAmp"] - 10000) < 20, "Hann reads the amplitude within its gain's error")

    code, out, _, _ = run("metrics", src, "--home", home, "--set", "AnFFT.THDdB=1")
    check(code == 0, "metrics exits 0")
    if out:
        check(abs(out["THD_val"] + 40) < 0.1, "a harmonic 40 dB down reads THD -40 dB")
        check(out["captions"][1] == "THD: %sdB  " % format(round(out["THD_val"], 2), "g"), "THD caption")
        check(out["captions"][3].startswith("SFDR: -"), "SFDR is shown negated")

    code, _, text, err = run("metrics", src, "--home", home, "--all-traces", "--csv")
    rows = list(csv.reader(io.StringIO(text)))
    check(code == 0, "the survey exits 0")
    check(rows and rows[0] == ["trace", "PeakFreq", "PeakDb", "SNR_dB", "THD_val", "THDN_val", "SFDR_dB",
                               "SINAD_dB", "ENOB_bits"], "survey header")
    check(len(rows) == 1 + 8, "one row per scroll position")
    check(all(r[1] == "3000" for r in rows[1:8]), "every full trace peaks at the tone")
    check(all(all(math.isfinite(float(x)) for x in r) for r in rows[1:]), "no NaN or infinity in the survey")

    for args in (["metrics", src, "--all-traces"], ["metrics", src, "--csv"],
                 ["metrics", src, "--trace", "1", "--all-traces", "--csv"],
                 ["spectrum", src, "--columns", "0"], ["spectrum", src, "--trace", "8"]):
        code, _, _, _ = run(*args, "--home", home)
        check(code == 2, "usage error: " + " ".join(args[2:]))

    silent = os.path.join(home, "silent.wav")
    wav(silent, [0] * 2048, rate=48000)
    code, out, _, _ = run("metrics", silent, "--home", home)
    check(code == 0 and out and all(c.find("NaN") < 0 for c in out["captions"]), "silence reads without NaN")

finish()
