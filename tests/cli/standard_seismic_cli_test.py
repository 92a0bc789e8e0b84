#!/usr/bin/python3
"""The command-line tool on SEG-Y and SEG-2 through the entries of all revisions and variants:
info with --filter SEGY-STD / SEG2-STD, the header lines as FileInfo, convert to a working file,
a damaged file, and the real recordings where they are present.
Usage: standard_seismic_cli_test.py CLI HOME REAL_DIR"""
import functools, os, shutil, struct, sys, tempfile

from cli_support import check, finish, run_cli

cli, factory, real = sys.argv[1], sys.argv[2], sys.argv[3]
run = functools.partial(run_cli, cli)


def ibm(v):
    if v == 0:
        return 0
    sign, m, e = (0x80000000 if v < 0 else 0), abs(v), 64
    while m >= 1:
        m, e = m / 16, e + 1
    while m < 1 / 16:
        m, e = m * 16, e - 1
    return sign | e << 24 | int(m * 16777216)


def segy(path, traces, ns):
    """Big-endian IBM floats, an EBCDIC textual header of two cards."""
    text = b"".join(c.ljust(80).encode("cp037") for c in ["C 1 SURVEY NORTH", "C 2 LINE 12"])
    b = bytearray(text.ljust(3200, "\x40".encode("latin1"))) + bytearray(400)
    struct.pack_into(">HxxHxxH", b, 3216, 500, ns, 1)
    for t in range(traces):
        b += bytes(240) + b"".join(struct.pack(">I", ibm(float(i - t))) for i in range(ns))
    open(path, "wb").write(bytes(b))


def seg2(path, traces, ns):
    """Little-endian int16 traces with a descriptor string each."""
    out = bytearray(32 + 4 * traces)
    struct.pack_into("<HHHHBxxBB", out, 0, 0x3A55, 1, 4 * traces, traces, 1, 1, 10)
    out += struct.pack("<H", 0)
    for t in range(traces):
        struct.pack_into("<I", out, 32 + 4 * t, len(out))
        s = b"SAMPLE_INTERVAL 0.0005\0"
        block = 32 + 2 + len(s) + 2
        out += struct.pack("<HHIIB", 0x4422, block, 2 * ns, ns, 1) + bytes(19)
        out += struct.pack("<H", 2 + len(s)) + s + struct.pack("<H", 0)
        out += struct.pack("<%dh" % ns, *[i * (t + 1) for i in range(ns)])
    open(path, "wb").write(bytes(out))


def floats(path):
    b = open(path, "rb").read()
    return struct.unpack("<%df" % (len(b) // 4), b)


with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(factory, "SP.ini"), home)

    src = os.path.join(home, "line.sgy")
    segy(src, 4, 50)
    code, out, _, _ = run("info", src, "--filter", "SEGY-STD", "--home", home)
    check(code == 0 and out and out["format"] == "SEGY", "info through SEGY-STD")
    check(out and out["TraceCount"] == 4 and out["Sp_Samples"] == 50, "SEG-Y traces, one per file trace")
    check(out and out["SampleRate"] == 2000.0, "SEG-Y interval from the binary header")
    check(out and out["FileInfo"][:2] == ["C 1 SURVEY NORTH", "C 2 LINE 12"], "textual header as FileInfo")
    sp = os.path.join(home, "line.sp")
    code, out, _, _ = run("convert", src, "--filter", "SEGY-STD", "-o", sp, "--home", home)
    w = floats(sp)
    check(code == 0 and len(w) == 200 and w[50:53] == (-1.0, 0.0, 1.0), "converted SEG-Y traces")
    code, out, _, _ = run("info", src, "--home", home)
    check(out and out["format"] == "SGY", "without the filter a .sgy keeps the Seismic entry")

    shot = os.path.join(home, "shot.dat")
    seg2(shot, 3, 40)
    code, out, _, _ = run("info", shot, "--filter", "seg2-std", "--home", home)
    check(code == 0 and out and out["format"] == "SEG2", "info through SEG2-STD, a .dat name")
    check(out and out["TraceCount"] == 3 and out["Sp_Samples"] == 40 and out["SampleRate"] == 2000.0, "SEG-2 facts")
    check(out and "Trace 1: SAMPLE_INTERVAL 0.0005" in out["FileInfo"], "descriptor strings as FileInfo")
    check(out and out["FullScalePos"] == 32767, "int16 full scale")

    cut = os.path.join(home, "cut.segy")
    open(cut, "wb").write(open(src, "rb").read()[:-7])
    code, out, _, err = run("info", cut, "--home", home)
    check(code != 0 and out and not out["loaded"] and "File corrupted!" in err, "a damaged .segy fails cleanly")

    # The real recordings, where they are present.
    for rel, flt, traces, samples in [("segy/long.sgy", "SEGY-STD", 3, 60000),
                                      ("segy/f3-lsb.sgy", "SEGY-STD", 414, 75),
                                      ("seg2/10.dat", "SEG2-STD", 24, 1500),
                                      ("seg2/20180307_031245000.0.seg2", "SEG2-STD", 1, 2048)]:
        path = os.path.join(real, rel)
        if os.path.exists(path):
            code, out, _, _ = run("info", path, "--filter", flt, "--home", home)
            check(code == 0 and out["TraceCount"] == traces and out["Sp_Samples"] == samples, rel)

finish()
