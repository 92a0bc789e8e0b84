#!/usr/bin/python3
"""A survey of signal metrics over a whole recording (`kelvorandine-cli metrics --all-traces
--csv`: import, then per trace read, window, transform, amplitudes, dB, peak, fold and the six
read-outs) against numpy doing only read + FFT + magnitude over the same file, in the same run.
Both are timed as whole processes, best of three, on a warm file cache; numpy's compute alone is
reported too.

Usage: metrics_vs_numpy.py BUILD_DIR/bin [--traces 10000]"""
import os, shutil, struct, subprocess, sys, tempfile, time

bindir = sys.argv[1]
traces = int(sys.argv[sys.argv.index("--traces") + 1]) if "--traces" in sys.argv else 10000
n = 1024
cli = os.path.join(bindir, "kelvorandine-cli")

NUMPY = r"""
import sys, time, numpy as np
t = time.perf_counter()
x = np.fromfile(sys.argv[1], dtype="<i2", offset=44).astype(np.float32)
x = x[: (len(x) // %d) * %d].reshape(-1, %d)
mag = np.abs(np.fft.rfft(x, axis=1))
print(time.perf_counter() - t, mag.shape[0])
""" % (n, n, n)


def best(cmd, runs=3):
    """The fastest of `runs` runs, and every run's output."""
    times, outs = [], []
    for _ in range(runs):
        t = time.perf_counter()
        outs.append(subprocess.run(cmd, check=True, capture_output=True, text=True).stdout)
        times.append(time.perf_counter() - t)
    return min(times), outs


with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(bindir, "SP.ini"), home)
    path = os.path.join(home, "survey.wav")
    import math, random
    random.seed(1)
    one = [int(8000 * math.sin(2 * math.pi * 37 * t / n) + 80 * math.sin(2 * math.pi * 74 * t / n)) for t in range(n)]
    body = b"".join(struct.pack("<%dh" % n, *[s + random.randint(-20, 20) for s in one]) for _ in range(64))
    data = (body * (traces // 64 + 1))[: traces * n * 2]
    hdr = b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack(
        "<IHHIIHH", 16, 1, 1, 48000, 96000, 2, 16) + b"data" + struct.pack("<I", len(data))
    open(path, "wb").write(hdr + data)
    subprocess.run(["cat", path], check=True, stdout=subprocess.DEVNULL)  # warm the cache

    ours, csvs = best([cli, "metrics", path, "--all-traces", "--csv", "--home", home])
    rows = csvs[-1].count("\n") - 1
    theirs, outs = best(["/usr/bin/python3", "-c", NUMPY, path])
    # numpy's fastest compute, not the last run's: a slow last run would flatter us.
    compute = min(float(out.split()[0]) for out in outs)
    print("%d traces of %d samples: kelvorandine-cli metrics --all-traces %.3f s (%d rows), "
          "numpy read+FFT+magnitude %.3f s as a process (%.3f s of it compute)"
          % (traces, n, ours, rows, theirs, compute))
    print("ratio numpy/ours: %.2f (process), %.2f (numpy compute only); above 1 means faster than numpy"
          % (theirs / ours, compute / ours))
