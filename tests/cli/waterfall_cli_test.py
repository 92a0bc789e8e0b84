#!/usr/bin/python3
"""kelvorandine-cli waterfall and render --view waterfall|radargram on the factory sample."""
import json, os, subprocess, sys, tempfile

cli, home = sys.argv[1], sys.argv[2]
sample = os.path.join(home, "samples", "sample_tone.wav")


def run(*args, code=0):
    p = subprocess.run([cli, *args, "--home", home], capture_output=True, text=True)
    assert p.returncode == code, (args, p.returncode, p.stderr)
    return p.stdout


rows = [r.split(",") for r in run("waterfall", sample, "--count", "3", "--columns", "8",
                                  "--csv").splitlines()]
assert [r[0] for r in rows] == ["0", "1", "2"], rows
assert all(len(r) == len(rows[0]) > 2 for r in rows)
# The strongest column of the tone reads near 0 dB and the indices follow the levels.
assert max(float(x) for x in rows[0][1:]) > -10
ind = [r.split(",") for r in run("waterfall", sample, "--count", "2", "--columns", "8", "--csv",
                                 "--indices").splitlines()]
assert all(0 <= int(x) <= 255 for r in ind for x in r[1:])
# Shifted by one: pixel x is column x + 1, so the row is one shorter than the columns.
assert len(ind[0]) - 1 == (len(rows[0]) - 2) // 4 * 4, (ind[0], rows[0])
samples = run("waterfall", sample, "--count", "1", "--time", "--csv").splitlines()
assert len(samples) == 1 and len(samples[0].split(",")) > 100

with tempfile.TemporaryDirectory() as d:
    out = os.path.join(d, "survey.png")
    j = json.loads(run("waterfall", sample, "-o", out))
    assert j["written"] and os.path.getsize(out) > 0 and j["rows"] == j["TraceCount"], j
    for view in ("waterfall", "radargram"):
        pic = os.path.join(d, view + ".png")
        assert json.loads(run("render", sample, "--view", view, "-o", pic))["written"]
    # Neither or both of --csv and -o: a usage error.
    run("waterfall", sample, code=2)
print("ok")
