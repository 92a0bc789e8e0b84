#!/usr/bin/python3
"""The command-line tool end to end: info and convert on generated recordings, exit codes,
messages and the --set and --filter options. Usage: cli_test.py CLI HOME_WITH_SAMPLE"""
import functools, os, shutil, struct, subprocess, sys, tempfile

from cli_support import check, finish, run_cli, wav

cli, factory = sys.argv[1], sys.argv[2]
run = functools.partial(run_cli, cli)


with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(factory, "SP.ini"), home)
    src = os.path.join(home, "tone.wav")
    wav(src, [i % 100 for i in range(4096)])

    code, out, _, _ = run("info", src, "--home", home)
    check(code == 0, "info exits 0 on a good file")
    check(out and out["TraceCount"] == 4 and out["Sp_Samples"] == 1024, "info trace facts")
    check(out and out["SampleRate"] == 8000 and out["FullScalePos"] == 32767, "info rate and scale")
    check(out and out["messages"] == [], "no messages")
    check(out and out["views"][:2] == ["load Spectrum", "firstDraw Spectrum"], "views requested")

    code, out, _, _ = run("info", src, "--home", home, "--set", "Gen.Sp_Samples=2048")
    check(code == 0 and out["TraceCount"] == 2 and out["Sp_Samples"] == 2048, "--set overrides SP.ini")
    check("Sp_Samples=1024" in open(os.path.join(home, "SP.ini")).read(), "--set leaves SP.ini alone")

    dst = os.path.join(home, "out.sp")
    code, out, _, _ = run("convert", src, "-o", dst, "--home", home)
    check(code == 0 and os.path.getsize(dst) == 4 * 1024 * 4, "convert writes the working traces")
    floats = struct.unpack("<4f", open(dst, "rb").read(16))
    check(floats == (0.0, 1.0, 2.0, 3.0), "converted samples")

    bad = os.path.join(home, "bad.wav")
    open(bad, "wb").write(b"JUNK" + bytes(100))
    code, out, _, _ = run("info", bad, "--home", home)
    check(code == 1, "a file without usable channels ends with no data set")
    check(out and out["messages"] == [{"text": "File corrupted!", "title": "Kelvorandine\u00ae", "icon": "critical"}],
          "the message is reported")

    code, _, _, _ = run("convert", src, "-o", os.path.join(home, "x.png"), "--home", home)
    check(code == 2, "an output type convert cannot write is a usage error")

    # A relative file name is relative to where the tool was started, not to its home folder.
    p = subprocess.run([cli, "info", os.path.join(os.path.basename(home), "tone.wav"), "--home", home],
                       capture_output=True, text=True, cwd=os.path.dirname(home))
    check(p.returncode == 0, "a relative file name opens")

    os.environ["KELVORANDINE_HOME"] = home
    code, out, _, _ = run("info", src)
    check(code == 0 and out["loaded"], "KELVORANDINE_HOME sets the home folder")

finish()
