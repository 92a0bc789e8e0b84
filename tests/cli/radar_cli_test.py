#!/usr/bin/python3
"""The command-line tool on radar recordings: info for each radar format, and convert through
the project and GSSI-compatible writers, read back again. Usage: radar_cli_test.py CLI HOME REAL_DIR"""
import functools, os, shutil, struct, sys, tempfile

from cli_support import check, finish, run_cli

cli, factory, real = sys.argv[1], sys.argv[2], sys.argv[3]
run = functools.partial(run_cli, cli)


def dzt(path, samples, traces):
    hdr = bytearray(1024)
    struct.pack_into("<hhhh", hdr, 0, 255, 1024, samples, 16)
    struct.pack_into("<f", hdr, 10, 25.0)
    struct.pack_into("<f", hdr, 26, 20.0)
    struct.pack_into("<h", hdr, 52, 1)
    data = struct.pack("<%dH" % (samples * traces), *[32768 + (i % 50) - 25 for i in range(samples * traces)])
    open(path, "wb").write(bytes(hdr) + data)


def floats(path):
    b = open(path, "rb").read()
    return struct.unpack("<%df" % (len(b) // 4), b[: len(b) // 4 * 4])


with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(factory, "SP.ini"), home)
    src = os.path.join(home, "line.dzt")
    dzt(src, 64, 10)
    code, out, _, _ = run("info", src, "--home", home)
    check(code == 0 and out["format"] == "DZT", "info on a DZT")
    check(out and out["TraceCount"] == 10 and out["Sp_Samples"] == 64, "DZT trace facts")
    check(out and out["RangeNs"] == 20.0 and out["ScansPerSecond"] == 25, "DZT header values")

    sp = os.path.join(home, "line.sp")
    run("convert", src, "-o", sp, "--home", home)
    original = floats(sp)

    kvd = os.path.join(home, "line.kvd")
    code, out, _, _ = run("convert", src, "-o", kvd, "--home", home)
    check(code == 0 and out["written"], "convert to .kvd")
    check(os.path.getsize(kvd) == 59 + 10 * 64 * 4 + 4, "project file size")
    code, out, _, _ = run("info", kvd, "--home", home)
    check(code == 0 and out["IsProject"] and out["TraceCount"] == 10, "a .kvd opens as a project")
    back = os.path.join(home, "back.sp")
    run("convert", kvd, "-o", back, "--home", home)
    check(floats(back)[: len(original)] == original, "project traces read back unchanged")

    out_dzt = os.path.join(home, "again.dzt")
    code, out, _, _ = run("convert", src, "-o", out_dzt, "--home", home)
    check(code == 0 and out["written"], "convert to .dzt")
    check(os.path.getsize(out_dzt) == 1026 + 2 * 64 * 10 + 2, "exported DZT size")
    code, out, _, _ = run("info", out_dzt, "--home", home)
    check(code == 0 and out["TraceCount"] == 10 and out["Sp_Samples"] == 64, "exported DZT reads back")

    # The real recordings, where they are present.
    for rel, want_code, traces in [("rd3/ten_col.rd3", 0, 10), ("dzt/test_gssi.DZT", 1, None)]:
        path = os.path.join(real, rel)
        if os.path.exists(path):
            code, out, _, _ = run("info", path, "--home", home)
            check(code == want_code and (traces is None or out["TraceCount"] == traces), rel)

finish()
