#!/usr/bin/python3
"""The "all variants" entries from the command line: --filter picks them, --set Gen.ImportChannel
chooses the channel, FileInfo shows the header facts, and a file they cannot read ends with its
message and exit 1. Usage: standard_cli_test.py CLI HOME REAL_DATA_DIR"""
import functools, os, shutil, struct, sys, tempfile

from cli_support import check, finish, run_cli

cli, factory, real = sys.argv[1], sys.argv[2], sys.argv[3]
run = functools.partial(run_cli, cli)


def stereo_with_list(path):
    """16-bit stereo, a LIST chunk before the samples: left counts up, right counts down."""
    frames = b"".join(struct.pack("<hh", i % 100, -(i % 50)) for i in range(2048))
    fmt = struct.pack("<HHIIHH", 1, 2, 8000, 32000, 4, 16)
    body = b"WAVE" + b"fmt " + struct.pack("<I", 16) + fmt + b"LIST" + struct.pack("<I", 9) + b"INFOxxxxx\0"
    body += b"data" + struct.pack("<I", len(frames)) + frames
    open(path, "wb").write(b"RIFF" + struct.pack("<I", len(body)) + body)


def first_floats(path, n):
    return struct.unpack("<%df" % n, open(path, "rb").read(4 * n))


with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(factory, "SP.ini"), home)
    src = os.path.join(home, "listed.wav")
    stereo_with_list(src)
    out_sp = os.path.join(home, "out.sp")

    code, out, _, _ = run("convert", src, "-o", out_sp, "--home", home, "--filter", "wav-std")
    check(code == 0, "WAV-STD reads a WAV with a LIST chunk")
    check(first_floats(out_sp, 3) == (0.0, 1.0, 2.0), "the first channel by default")
    code, out, _, _ = run("info", src, "--home", home, "--filter", "WAV-STD")
    check(out and "Chunks : fmt  (16), LIST (9), data (8192)" in out["FileInfo"], "FileInfo lists the chunks")
    check(out and out["ActiveTracePath"].endswith("temp.sp"), "one working file")

    before = open(os.path.join(home, "SP.ini")).read()
    code, out, _, _ = run("convert", src, "-o", out_sp, "--home", home, "--filter", "WAV-STD",
                          "--set", "Gen.ImportChannel=2")
    check(code == 0 and first_floats(out_sp, 3) == (0.0, -1.0, -2.0), "--set Gen.ImportChannel=2 picks the right channel")
    check(open(os.path.join(home, "SP.ini")).read() == before, "--set leaves SP.ini alone")

    code, out, _, _ = run("info", src, "--home", home, "--filter", "WAV-STD", "--set", "Gen.ImportChannel=3")
    check(code == 1, "a channel the file lacks ends with no data set")
    check(out and out["messages"] and out["messages"][0]["text"] ==
          "Channel 3 is chosen in the options, but the file has only 2 channels.", "and says so")

    cut = os.path.join(home, "cut.wav")
    open(cut, "wb").write(open(src, "rb").read()[:-100])
    code, out, _, _ = run("info", cut, "--home", home, "--filter", "WAV-STD")
    check(code == 1 and out and out["FileInfo"] == [], "a data chunk past the end: no data set, no header lines")
    check(out and out["messages"][0]["text"] ==
          "The WAV file's \"data\" chunk of 8192 bytes runs past the end of the file.", "the chunk is named")

    if os.path.isdir(real):
        code, out, _, _ = run("info", os.path.join(real, "dzt", "test_gssi.DZT"), "--home", home, "--filter", "DZT-STD")
        check(code == 0 and out["TraceCount"] == 345 and out["Sp_Samples"] == 2048, "DZT-STD: the 128 KiB header")
        check(out and "Antenna : 5106" in out["FileInfo"], "DZT-STD: the antenna in FileInfo")
        code, out, _, _ = run("info", os.path.join(real, "csv", "DS2072A-7.csv"), "--home", home, "--filter", "CSV-STD")
        check(code == 0 and out["TraceLength"] == 1400 and abs(out["SampleRate"] - 200e3) < 1e-6,
              "CSV-STD: the increment below its label")
        code, out, _, _ = run("info", os.path.join(real, "csv", "DS2072A-7.csv"), "--home", home)
        check(code == 1, "the CSV entry still reads the same export its own way")

finish()
