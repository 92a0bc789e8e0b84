#!/usr/bin/python3
"""Import throughput against `cat FILE > /dev/null` on the same file in the same run, and the
import's peak memory for two file sizes (it should not grow with the file).

Usage: import_vs_cat.py BUILD_BIN_DIR [--mb 200] [--format wav|dzt]

The DZT recording is 16-bit scans of 512 samples; its working file holds 32-bit floats, so the
import writes twice the bytes that cat reads."""
import json, os, subprocess, sys, tempfile, time

bindir = sys.argv[1]
mb = int(sys.argv[sys.argv.index("--mb") + 1]) if "--mb" in sys.argv else 200
fmt = sys.argv[sys.argv.index("--format") + 1] if "--format" in sys.argv else "wav"
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
        path = os.path.join(d, "big_%d.%s" % (size, fmt))
        if fmt == "dzt":
            subprocess.run([tool, "--make-dzt", path, str(size * 1024)], check=True)  # 1 KiB scans
        else:
            subprocess.run([tool, "--make-wav", path, str(size * 1024 * 1024 // 2)], check=True)
        subprocess.run("cat %s > /dev/null" % path, shell=True, check=True)  # warm the cache
        cat = best("cat %s > /dev/null" % path, shell=True)
        runs = [once(path) for _ in range(3)]
        imp = min(r["seconds"] for r in runs)
        results[size] = {"cat_s": cat, "import_s": imp, "ratio": cat / imp,
                         "peak_rss_kb": max(r["peak_rss_kb"] for r in runs)}
        print("%4d MB %s: cat %.3f s, import %.3f s, throughput ratio %.2f, peak RSS %d kB"
              % (size, fmt.upper(), cat, imp, cat / imp, results[size]["peak_rss_kb"]))
        os.remove(path)
    print(json.dumps(results))
