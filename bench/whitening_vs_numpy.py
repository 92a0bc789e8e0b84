#!/usr/bin/python3
"""The whitening scan (read, window, forward transform, the band's largest positive real part,
trace after trace) over a generated 20,000-trace working file of 1024 samples, against numpy
doing the same work on the same file in the same run. Both are timed inside the process on a
warm file cache, best of three; the figure is traces per second. Goal: at least 2x numpy.

Usage: whitening_vs_numpy.py BUILD_DIR [--traces 20000]"""
import os, subprocess, sys, tempfile

build = sys.argv[1]
traces = int(sys.argv[sys.argv.index("--traces") + 1]) if "--traces" in sys.argv else 20000
n = 1024
scan = os.path.join(build, "bench", "bench_whitening_scan")

NUMPY = r"""
import sys, time, numpy as np
n, lo, hi = 1024, int(sys.argv[2]), int(sys.argv[3])
t = time.perf_counter()
x = np.fromfile(sys.argv[1], dtype="<f4")
# Each trace's N elements start one float after the trace, as the scan reads them.
x = np.append(x, np.float32(0))
idx = np.arange(len(x) // n - (1 if len(x) % n == 0 else 0))
rows = np.lib.stride_tricks.as_strided(x[1:], shape=(len(idx), n), strides=(4 * n, 4))
spec = np.fft.fft(rows * np.hanning(n).astype(np.float32), axis=1) / n
band = spec[:, lo - 1 : hi].real
k = np.unravel_index(np.argmax(band), band.shape)
print(time.perf_counter() - t, band[k], spec[k[0], lo - 1 + k[1]].imag)
"""

with tempfile.TemporaryDirectory() as tmp:
    path = os.path.join(tmp, "temp.sp")
    subprocess.run(["/usr/bin/python3", "-c",
                    "import numpy as np, sys; t = np.arange(%d * %d, dtype=np.float64); "
                    "(8000 * np.sin(0.0917 * t) * (1 + (t // %d) %% 7) + 500 * np.sin(0.9 * t))"
                    ".astype('<f4').tofile(sys.argv[1])" % (traces, n, n), path], check=True)
    ours, theirs = [], []
    for _ in range(3):
        out = subprocess.run([scan, path, str(traces)], check=True, capture_output=True,
                             text=True).stdout.split()
        ours.append(float(out[0]))
        # 500 Hz to 1500 Hz at 8 Hz a bin: elements 62 to 188 (rounded halves to even).
        out2 = subprocess.run(["/usr/bin/python3", "-c", NUMPY, path, "62", "188"], check=True,
                              capture_output=True, text=True).stdout.split()
        theirs.append(float(out2[0]))
    a, b = traces / min(ours), traces / min(theirs)
    print("whitening scan: %.0f traces/s, numpy %.0f traces/s, ratio %.2fx (goal at least 2x)"
          % (a, b, a / b))
