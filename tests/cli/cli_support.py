"""What the command-line end-to-end scripts share: a check that records failures, running the
tool and reading its JSON, writing a 16-bit PCM WAV, and the exit status."""
import json, struct, subprocess, sys

failures = []


def check(cond, what):
    if not cond:
        failures.append(what)
        print("FAIL:", what)


def run_cli(cli, *args):
    """Exit code, the parsed JSON report (None when stdout holds none), stdout and stderr."""
    p = subprocess.run([cli, *args], capture_output=True, text=True)
    out = json.loads(p.stdout) if p.stdout.strip().startswith("{") else None
    return p.returncode, out, p.stdout, p.stderr


def wav(path, samples, channels=1, rate=8000):
    data = struct.pack("<%dh" % len(samples), *samples)
    hdr = b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack(
        "<IHHIIHH", 16, 1, channels, rate, rate * channels * 2, channels * 2, 16) + b"data" + struct.pack("<I", len(data))
    open(path, "wb").write(hdr + data)


def finish():
    print("%d failure(s)" % len(failures))
    sys.exit(1 if failures else 0)
