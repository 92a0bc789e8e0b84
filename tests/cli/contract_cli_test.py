#!/usr/bin/python3
"""What info and metrics report: every item the import fills, the metrics' powers, the sample
width that picks the metrics' band, and a refused file that leaves no data set.
Usage: contract_cli_test.py CLI HOME"""
import functools, math, os, shutil, struct, sys, tempfile

from cli_support import check, finish, run_cli, wav

cli, factory = sys.argv[1], sys.argv[2]
run = functools.partial(run_cli, cli)

# A tone on bin 40 of 1024 and a spur on bin 95: 15 bins off the second harmonic, inside a
# harmonic band 20 bins wide, outside one 10 bins wide.
N = 1024
tone = [round(100 * math.sin(2 * math.pi * 40 * n / N) + 20 * math.sin(2 * math.pi * 95 * n / N))
        for n in range(4 * N)]


def wav8(path, samples, rate=8000):
    data = bytes(v + 128 for v in samples)
    hdr = b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack(
        "<IHHIIHH", 16, 1, 1, rate, rate, 1, 8) + b"data" + struct.pack("<I", len(data))
    open(path, "wb").write(hdr + data)


def dzt8(path, samples, traces):
    h = bytearray(1024)
    struct.pack_into("<hhhh", h, 0, 255, 1024, samples, 8)
    struct.pack_into("<f", h, 10, 50.0)
    struct.pack_into("<f", h, 26, 40.0)
    struct.pack_into("<h", h, 52, 1)
    open(path, "wb").write(bytes(h) + bytes((t + s) % 256 for t in range(traces) for s in range(samples)))


with tempfile.TemporaryDirectory() as home:
    shutil.copy(os.path.join(factory, "SP.ini"), home)
    w8, w16, d8 = (os.path.join(home, n) for n in ("tone8.wav", "tone16.wav", "line8.dzt"))
    wav8(w8, tone)
    wav(w16, tone)
    dzt8(d8, 128, 6)

    reader_items = ["SourceLength", "SampleRate", "TraceCount", "BitsPerSample", "BytesPerSample",
                    "Channels", "StereoFlag", "TraceLength", "Sp_Samples", "Fft_Samples",
                    "FullScalePos", "FullScaleNeg", "WorkingFileLength", "DataStart", "ReadPos",
                    "NewDS", "SampleBits", "RangeNs", "ScansPerSecond"]
    code, out, _, _ = run("info", w8, "--home", home)
    check(code == 0 and all(k in out for k in reader_items),
          "info reports every item the import fills: missing %s" %
          [k for k in reader_items if out and k not in out])
    check(out["Fft_Samples"] == out["Sp_Samples"] == 1024, "Fft_Samples follows the trace length")
    check(out["SampleBits"] == 8 and out["BitsPerSample"] == 8, "an 8-bit WAV has 8-bit samples")
    check(out["WorkingFileLength"] == 4 * 1024 * 4 and out["DataStart"] == 45, "reader figures")

    code, out, _, _ = run("info", d8, "--home", home)
    check(code == 0 and out["SampleBits"] == 8, "an 8-bit DZT has 8-bit samples")
    code, out, _, _ = run("info", w16, "--home", home)
    check(code == 0 and out["SampleBits"] == 16, "a 16-bit WAV has 16-bit samples")

    powers = {}
    for name, path in (("8", w8), ("16", w16)):
        code, out, _, _ = run("metrics", path, "--home", home)
        check(code == 0 and all(k in out for k in ("FundPower", "HarmPower", "NoisePower")),
              "metrics reports the three powers")
        powers[name] = out
        f, hp, npow = out["FundPower"], out["HarmPower"], out["NoisePower"]
        check(abs(out["SNR_dB"] - 20 * math.log10(f / math.sqrt(npow))) < 1e-6,
              "the SNR is the powers' ratio (%s-bit)" % name)
        check(abs(out["SINAD_dB"] - 20 * math.log10(f / math.sqrt(npow + hp))) < 1e-6,
              "the SINAD is the powers' ratio (%s-bit)" % name)
    # The spur is a fifth of the tone: in the harmonics' band for 16 bits, not for 8.
    r8 = powers["8"]["HarmPower"] / powers["8"]["FundPower"] ** 2
    r16 = powers["16"]["HarmPower"] / powers["16"]["FundPower"] ** 2
    check(r16 > 0.02 and r8 < 0.002, "the 8-bit source takes the narrow band (%g, %g)" % (r8, r16))

    # A Tektronix file the reader refuses: its message, and no data set.
    sht = os.path.join(home, "scope.SHT")
    open(sht, "wb").write(b"Nothing to see here\r\n" + bytes(3000))
    code, out, _, _ = run("info", sht, "--home", home)
    check(code == 1 and out and out["loaded"] is False, "info of a refused file exits 1")
    check(out and [m["text"] for m in out["messages"]] == ["This is not a Waveform Tabular Document!"],
          "the refusal's message is reported")
    code, out, _, _ = run("convert", sht, "-o", os.path.join(home, "x.kvd"), "--home", home)
    check(code == 1 and not os.path.exists(os.path.join(home, "x.kvd")), "convert of it exits 1")
    code, _, _, _ = run("metrics", sht, "--home", home)
    check(code == 1, "metrics of it exits 1")

finish()
