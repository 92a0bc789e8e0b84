#!/usr/bin/python3
"""kelvorandine-cli render end to end: the Spectrum view of the bundled sample as a PNG of the
asked size, with the curve in the factory green, the trace chosen by --trace, and exit 1 when
nothing could be opened; the same view as BMP, JPEG and a one-page PDF print-out, and an output
name the command cannot write as a usage error. Usage: render_test.py CLI HOME_WITH_SAMPLE"""
import json, os, shutil, struct, subprocess, sys, tempfile, zlib

from cli_support import check, failures, read_png

cli, factory = sys.argv[1], sys.argv[2]
sample = os.path.join(factory, "samples", "sample_tone.wav")


with tempfile.TemporaryDirectory() as home:
    for item in ("SP.ini", "pal"):
        src = os.path.join(factory, item)
        (shutil.copytree if os.path.isdir(src) else shutil.copy)(src, os.path.join(home, item))
    out = os.path.join(home, "spectrum.png")
    p = subprocess.run([cli, "render", sample, "--view", "spectrum", "--size", "640x400",
                        "--trace", "7", "-o", out, "--home", home], capture_output=True, text=True)
    check(p.returncode == 0, "render exits 0: %d %s" % (p.returncode, p.stderr))
    j = json.loads(p.stdout)
    check(j["TracePos"] == 7, "--trace sets the scroll position")
    check(abs(j["PeakFreq"] - 4687.5) < 1e-3, "the peak of the tone on bin 100")
    w, h, rows = read_png(out)
    check((w, h) == (640, 400), "the picture has the asked size")
    green = sum(1 for r in rows for px in r if px == (0, 255, 0))
    check(green > 300, "the curve is drawn in the factory green (%d pixels)" % green)
    check(rows[0][0] != (0, 255, 0) and rows[h - 1][w - 1] != (0, 255, 0),
          "the corners are frame, not plot")

    # The picture-export path: a BMP of the same pixels, a JPEG of the same size; the hand-over
    # file does not stay behind.
    def render(name, *extra):
        target = os.path.join(home, name)
        r = subprocess.run([cli, "render", sample, "--view", "spectrum", "--size", "640x400",
                            "--trace", "7", "-o", target, "--home", home] + list(extra),
                           capture_output=True, text=True)
        return r, target

    p, bmp = render("spectrum.bmp")
    check(p.returncode == 0 and json.loads(p.stdout)["written"], "render writes a BMP")
    data = open(bmp, "rb").read()
    bw, bh = struct.unpack("<ii", data[18:26])
    check(data[:2] == b"BM" and (bw, abs(bh)) == (640, 400), "the BMP has the asked size")
    offset = struct.unpack("<I", data[10:14])[0]
    depth = struct.unpack("<H", data[28:30])[0] // 8
    row = (640 * depth + 3) // 4 * 4
    y = 200  # a row through the plot; BMP rows run bottom up when the height is positive
    line = data[offset + (399 - y if bh > 0 else y) * row:][:640 * depth]
    bmp_row = [(line[x * depth + 2], line[x * depth + 1], line[x * depth]) for x in range(640)]
    check(bmp_row == rows[y], "the BMP holds the PNG's pixels")
    check(not os.path.exists(os.path.join(home, "print.bmp")), "print.bmp is removed afterwards")

    p, jpg = render("spectrum.jpg")
    data = open(jpg, "rb").read()
    check(p.returncode == 0 and data[:2] == b"\xff\xd8", "render writes a JPEG")
    sof = data.find(b"\xff\xc0")
    check(sof > 0 and struct.unpack(">HH", data[sof + 5:sof + 9]) == (400, 640),
          "the JPEG has the asked size")

    p, pdf = render("spectrum.pdf")
    data = open(pdf, "rb").read()
    check(p.returncode == 0 and data[:5] == b"%PDF-", "render prints to a PDF")
    check(b"/Count 1" in data, "the PDF's page tree counts one page")

    p, _ = render("spectrum.gif")
    check(p.returncode == 2, "an output the command cannot write is a usage error")

    p = subprocess.run([cli, "render", os.path.join(home, "missing.wav"), "--view", "spectrum",
                        "-o", out, "--home", home], capture_output=True, text=True)
    check(p.returncode == 1, "a file that cannot be opened ends with exit 1")

sys.exit(1 if failures else 0)
