#!/usr/bin/python3
"""Import throughput against `cat FILE > /dev/null` on the same file in the same run, and the
import's peak memory for two file sizes (it should not grow with the file).

Usage: import_vs_cat.py BUILD_BIN_DIR [--mb 200]"""
import json, os, subprocess, sys, tempfile, time

bindir = sys.argv[1]
mb = int(sys.argv[sys.argv.index("--mb") + 1]) if "--mb" in sys.argv else 200
tool = os.path.join(bindir, "bench_import")


def best(cmd, n=3, shell=False):
    times = []
    for _ in range(n):
        t = time.perf_counter()
        subprocess.run(cmd, shell=shell, check=True, stdout=subprocess.DEVNULL)
        times.append(time.perf_counter() - t)
    return min(times)


def once(path):
    out = subprocess.run([tool, "--once", path], check=True, capture_output=True, text=True).stdout
    return json.loads(out)


with tempfile.TemporaryDirectory() as d:
    results = {}
    for size in (mb // 4, mb):
        path = os.path.join(d, "big_%d.wav" % size)
        subprocess.run([tool, "--make-wav", path, str(size * 1024 * 1024 // 2)], check=True)
        subprocess.run("cat %s > /dev/null" % path, shell=True, check=True)  # warm the cache
        cat = best("cat %s > /dev/null" % path, shell=True)
        runs = [once(path) for _ in range(3)]
        imp = min(r["seconds"] for r in runs)
        results[size] = {"cat_s": cat, "import_s": imp, "ratio": cat / imp,
                         "peak_rss_kb": max(r["peak_rss_kb"] for r in runs)}
        print("%4d MB WAV: cat %.3f s, import %.3f s, throughput ratio %.2f, peak RSS %d kB"
              % (size, cat, imp, cat / imp, results[size]["peak_rss_kb"]))
        os.remove(path)
    print(json.dumps(results))
