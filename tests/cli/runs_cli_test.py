#!/usr/bin/python3
"""Runs of the command-line tool that share a home keep their working files apart and leave none
behind; a working file that cannot be written ends the import with a message; a killed export
leaves the old file or the whole new one; the recordings are only ever read.
Usage: runs_cli_test.py CLI HOME REAL_DATA"""
import functools, glob, hashlib, json, os, random, resource, shutil, signal, subprocess, sys, tempfile, time

from cli_support import check, finish, run_cli, wav

cli, factory, real = sys.argv[1], sys.argv[2], sys.argv[3]
run = functools.partial(run_cli, cli)


def scratch(home):
    return glob.glob(os.path.join(home, ".kv-run-*"))


def digest(path):
    return hashlib.sha256(open(path, "rb").read()).hexdigest()


def dead_pid():
    p = subprocess.Popen(["true"])
    p.wait()
    return p.pid


with tempfile.TemporaryDirectory() as home, tempfile.TemporaryDirectory() as out:
    shutil.copy(os.path.join(factory, "SP.ini"), home)
    small, big = os.path.join(home, "small.wav"), os.path.join(home, "big.wav")
    wav(small, [(i * 7) % 200 - 100 for i in range(8192)])
    wav(big, [(i * 13) % 20000 - 10000 for i in range(1 << 22)])

    # Each run's working files are its own and go with it.
    code, res, _, _ = run("info", small, "--home", home)
    check(code == 0 and res["loaded"], "info opens")
    check(not res["ActiveTracePath"].startswith(os.path.join(home, "temp")),
          "the working file is not the home's")
    check(scratch(home) == [] and not os.path.exists(os.path.join(home, "temp.sp")),
          "nothing is left in the home")

    # A long convert beside short runs on the same home keeps its own traces.
    solo = os.path.join(out, "solo.sp")
    run("convert", big, "-o", solo, "--home", home)
    side = os.path.join(out, "side.sp")
    long_run = subprocess.Popen([cli, "convert", big, "-o", side, "--home", home],
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    shorts = [run("info", small, "--home", home)[0] for _ in range(6)]
    long_run.communicate()
    check(long_run.returncode == 0 and all(c == 0 for c in shorts), "side by side runs succeed")
    check(digest(side) == digest(solo), "the long run's output holds its own recording")

    # A run killed outright leaves its folder; the next run clears it away.
    stale = os.path.join(home, ".kv-run-%d-abcdef" % dead_pid())
    os.mkdir(stale)
    open(os.path.join(stale, "temp.sp"), "wb").write(bytes(1000))
    run("info", small, "--home", home)
    check(not os.path.exists(stale) and scratch(home) == [], "a dead run's folder is swept")

    # Ended by SIGTERM half-way: the working files go all the same.
    p = subprocess.Popen([cli, "convert", big, "-o", os.path.join(out, "t.kvd"), "--home", home],
                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    deadline = time.time() + 20
    while time.time() < deadline and not glob.glob(os.path.join(home, ".kv-run-*", "temp.sp")):
        time.sleep(0.005)
    p.send_signal(signal.SIGTERM)
    p.wait()
    check(p.returncode == -signal.SIGTERM and scratch(home) == [],
          "a terminated run removes its working files (%s)" % p.returncode)

    # A working file that cannot be written: the import stops with a message naming the folder,
    # no part of the file stays and no data set is left.
    def small_files():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (256 << 10, 256 << 10))

    for sub in (["info", big], ["convert", big, "-o", os.path.join(out, "full.kvd")]):
        p = subprocess.run([cli, *sub, "--home", home], capture_output=True, text=True,
                           preexec_fn=small_files)
        res = json.loads(p.stdout) if p.stdout.startswith("{") else {}
        texts = [m["text"] for m in res.get("messages", [])]
        check(p.returncode == 1 and res.get("loaded") is False, "%s: no data set" % sub[0])
        check(len(texts) == 1 and texts[0].startswith("The working file could not be written in " + home)
              and "File too large" in texts[0], "%s: the message names the folder: %s" % (sub[0], texts))
        check(scratch(home) == [], "%s: the partial working file is gone" % sub[0])
    check(not os.path.exists(os.path.join(out, "full.kvd")), "no output from a failed import")

    # Killed at random moments during a large export: the destination is the old file or the
    # whole new one, never a part.
    dst = os.path.join(out, "line.kvd")
    old = b"an older project file" * 100
    open(dst, "wb").write(old)
    t0 = time.time()
    run("convert", big, "-o", dst, "--home", home)
    full_time = time.time() - t0
    complete = digest(dst)
    check(complete != hashlib.sha256(old).hexdigest(), "the export replaced the old file")
    seen = {"old": 0, "new": 0}
    rng = random.Random(18)
    for k in range(50):
        open(dst, "wb").write(old)
        p = subprocess.Popen([cli, "convert", big, "-o", dst, "--home", home],
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(rng.uniform(0.0, full_time * 1.1))
        p.kill()
        p.wait()
        d = digest(dst)
        if d == hashlib.sha256(old).hexdigest():
            seen["old"] += 1
        elif d == complete:
            seen["new"] += 1
        else:
            check(False, "kill %d left a broken destination" % k)
    halfway = len(glob.glob(os.path.join(out, ".line.kvd.*.part")))
    print("kill loop: %.2f s a run, old %d, new %d, %d during the export" %
          (full_time, seen["old"], seen["new"], halfway))
    check(halfway > 0, "some kills landed while the export was being written")
    run("info", small, "--home", home)
    check(scratch(home) == [], "the killed runs' folders are swept by the next run")

    # The recordings are only read: opened read-only, never locked, renamed or removed, and
    # unchanged after info and convert. A clone with no real recordings beside it skips this,
    # and says so.
    sources = sorted(f for f in glob.glob(os.path.join(real, "**", "*"), recursive=True)
                     if os.path.isfile(f) and not f.endswith(".md"))
    if not os.path.isdir(real):
        print("SKIP the read-only check: no real recordings at %s" % real)
    else:
        check(len(sources) > 10, "real recordings found")
    before = {f: digest(f) for f in sources}
    strace = shutil.which("strace")
    trace = os.path.join(out, "calls.txt")
    for f in sources:
        for sub in (["info", f], ["convert", f, "-o", os.path.join(out, "r.kvd")]):
            cmd = [cli, *sub, "--home", home]
            if strace:
                cmd = [strace, "-f", "-qq", "-o", trace, "-e",
                       "trace=open,openat,creat,truncate,rename,renameat,renameat2,unlink,unlinkat,flock",
                       *cmd]
            if os.path.exists(trace):
                os.remove(trace)
            subprocess.run(cmd, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            if not strace:
                continue
            check(os.path.exists(trace), "the calls were traced")
            if not os.path.exists(trace):
                continue
            for line in open(trace):
                if '"%s"' % f not in line:
                    continue
                call = line.split("(")[0].split()[-1]
                check(call in ("open", "openat") and "O_RDONLY" in line and "O_CREAT" not in line,
                      "only read: %s" % line.strip())
    check(all(digest(f) == h for f, h in before.items()), "every recording is unchanged")
    if not strace:
        print("strace not found: the opens were not watched")

finish()
