#!/usr/bin/python3
"""kelvorandine-cli reference and render --ref1/--ref2 end to end: the three reference files of
the bundled sample at their offsets, the kind taken from the output's extension, the saved
spectrum and O-scope trace drawn over the live ones in their reference colours, and usage errors
for a kind the tool does not know or a reference of another view's kind.
Usage: reference_cli_test.py CLI HOME_WITH_SAMPLE"""
import os, shutil, struct, sys, tempfile

from cli_support import check, finish, read_png, run_cli

cli, factory = sys.argv[1], sys.argv[2]
sample = os.path.join(factory, "samples", "sample_tone.wav")

with tempfile.TemporaryDirectory() as home:
    for item in ("SP.ini", "pal"):
        src = os.path.join(factory, item)
        (shutil.copytree if os.path.isdir(src) else shutil.copy)(src, os.path.join(home, item))
    os.makedirs(os.path.join(home, "ref"))
    pns, pno, pnp = (os.path.join(home, "a." + e) for e in ("pns", "pno", "pnp"))

    code, j, _, err = run_cli(cli, "reference", sample, "--trace", "2", "-o", pns, "--home", home)
    check(code == 0, "reference exits 0: %d %s" % (code, err))
    check(j["kind"] == "spectrum" and j["TracePos"] == 2, "a .pns output is a spectrum")
    data = open(pns, "rb").read()
    bins = struct.unpack_from("<i", data, 39)[0]
    check(data[:6] == b"Kelvor" and bins == 512, "magic and bins (Sp_Samples / 2): %d" % bins)
    check(len(data) == 79 + 4 * (bins + 1), "header and bins + 1 magnitudes")
    step = struct.unpack_from("<f", data, 26)[0]
    mags = struct.unpack_from("<%df" % (bins + 1), data, 79)
    peak = max(range(bins + 1), key=lambda i: mags[i])
    check(abs(peak * step - 4687.5) < 2 * step, "the magnitudes peak at the tone: %g" % (peak * step))
    check(data[6:11] == b"\0" * 5, "the gaps are zero")

    code, j, _, err = run_cli(cli, "reference", sample, "-o", pno, "--home", home)
    check(code == 0 and j["kind"] == "time", "a .pno output is an O-scope trace: %s" % err)
    data = open(pno, "rb").read()
    check(data[:3] == b"pno" and struct.unpack_from("<i", data, 9)[0] == 1024, "pno header")
    check(len(data) == 39 + 4 * 1025, "samples + 1 values")
    code, j, _, err = run_cli(cli, "reference", sample, "--kind", "phase", "-o", pnp, "--home", home)
    check(code == 0 and open(pnp, "rb").read()[:3] == b"pnf", "phase file: %s" % err)
    check(os.listdir(os.path.join(home, "ref")) == [], "the home's reference files are untouched")

    code, _, _, _ = run_cli(cli, "reference", sample, "--kind", "nope", "-o", pns, "--home", home)
    check(code == 2, "an unknown kind is a usage error: %d" % code)
    code, _, _, _ = run_cli(cli, "reference", sample, "-o", os.path.join(home, "x.txt"),
                            "--home", home)
    check(code == 2, "no kind and no reference extension is a usage error: %d" % code)

    def red_pixels(view, *refs):
        out = os.path.join(home, view + ".png")
        args = ["render", sample, "--view", view, "--size", "640x400", "-o", out, "--home", home]
        for n, r in enumerate(refs, 1):
            args += ["--ref%d" % n, r]
        code, j, _, err = run_cli(cli, *args)
        check(code == 0, "render %s exits 0: %d %s" % (view, code, err))
        w, h, rows = read_png(out)
        return sum(1 for r in rows for px in r if px == (255, 0, 0)), j

    plain, _ = red_pixels("spectrum")
    over, j = red_pixels("spectrum", pns)
    check(j["RefOn"] == [True, False], "line 1 is on")
    check(plain == 0 and over > 300, "the saved spectrum in Line1Color: %d, %d" % (plain, over))
    plain, _ = red_pixels("oscope")
    over, _ = red_pixels("oscope", pno)
    check(over > plain + 300, "the saved trace in Osc1Color: %d, %d" % (plain, over))

    code, _, _, _ = run_cli(cli, "render", sample, "--view", "spectrum", "--ref1", pno, "-o",
                            os.path.join(home, "x.png"), "--home", home)
    check(code == 2, "a reference of another view's kind is a usage error: %d" % code)

finish()
