#!/usr/bin/python3
"""kelvorandine-cli as a new user meets it: the bundled sample's read-outs, names relative to the
folder the tool was started from, and a clear message with the contract's exit code for a name
that leads nowhere."""
import os, shutil, subprocess, sys, tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from cli_support import check, finish, run_cli

cli, factory = sys.argv[1], sys.argv[2]
sample = os.path.join(factory, "samples", "sample_tone.wav")

work = tempfile.mkdtemp(prefix="kv_first_")
home = os.path.join(work, "home")
user = os.path.join(work, "user")
os.makedirs(user)
shutil.copytree(factory, home, ignore=shutil.ignore_patterns("kelvorandine*", "temp*.sp"))
shutil.copy(sample, os.path.join(user, "tone.wav"))


def run_in(folder, *args):
    p = subprocess.run([cli, *args], capture_output=True, text=True, cwd=folder)
    return p.returncode, p.stdout, p.stderr


try:
    # The sample under the factory settings: a coherent tone, textbook figures.
    code, j, out, err = run_cli(cli, "metrics", sample, "--home", home)
    check(code == 0 and j is not None, "metrics of the sample: " + err)
    if j:
        check(abs(j["PeakFreq"] - 4687.5) < 1e-6, "the tone sits on bin 100: %s" % j["PeakFreq"])
        check(abs(j["THD_val"] + 49.6) < 0.2, "THD about -49.6 dB: %s" % j["THD_val"])
        check(abs(j["SNR_dB"] - 82) < 1.5, "SNR about 82 dB: %s" % j["SNR_dB"])
        check(abs(j["SINAD_dB"] - 49.6) < 0.2, "SINAD about 49.6 dB: %s" % j["SINAD_dB"])
        check(abs(j["SFDR_dB"] - 50) < 0.3, "SFDR about 50 dB: %s" % j["SFDR_dB"])
        check(abs(j["ENOB_bits"] - 7.95) < 0.05, "ENOB about 7.95 bits: %s" % j["ENOB_bits"])
    # A tapered window's skirt counts as noise: the same tone under Hann reads a low SNR.
    code, j, out, err = run_cli(cli, "metrics", sample, "--home", home, "--set", "FFT.FFT_Window=7")
    check(code == 0 and j and abs(j["SNR_dB"] - 7) < 1.5, "SNR under Hann about 7 dB")

    # --set takes one value, so the FILE after it stays the FILE.
    code, j, out, err = run_cli(cli, "info", "--home", home, "--set", "Gen.Sp_Samples=2048", sample)
    check(code == 0 and j and j["Sp_Samples"] == 2048, "--set before FILE: %d %s" % (code, err))
    code, j, out, err = run_cli(cli, "info", "--set", "Gen.Sp_Samples=512", "--set",
                                "FFT.FFT_Window=7", sample, "--home", home)
    check(code == 0 and j and j["Sp_Samples"] == 512, "two --set before FILE")

    # Names are the user's: relative to where the tool runs, not to the home folder.
    code, out, err = run_in(user, "info", "tone.wav", "--home", home)
    check(code == 0, "a relative input name: " + err)
    code, out, err = run_in(user, "convert", "tone.wav", "-o", "tone.kvd", "--home", home)
    check(code == 0 and os.path.isfile(os.path.join(user, "tone.kvd")), "convert -o rel lands here")
    check(not os.path.exists(os.path.join(home, "tone.kvd")), "nothing lands in the home folder")
    code, out, err = run_in(user, "info", "tone.kvd", "--home", home)
    check(code == 0 and '"IsProject": true' in out, "a .kvd opens as a project file")
    if "render" in subprocess.run([cli, "--help"], capture_output=True, text=True).stdout:
        code, out, err = run_in(user, "render", "tone.wav", "--view", "spectrum", "-o", "s.png",
                                "--home", home)
        check(code == 0 and os.path.isfile(os.path.join(user, "s.png")), "render -o rel: " + err)
        # A position past the last trace is a usage error, said plainly.
        code, out, err = run_in(user, "render", "tone.wav", "--view", "spectrum", "--trace", "48",
                                "-o", "t.png", "--home", home)
        check(code == 2 and "--trace must lie between 0 and 47" in err, "render --trace 48: %d %s"
              % (code, err))
        check(not os.path.exists(os.path.join(user, "t.png")), "no picture for a bad --trace")

    # A missing output folder is a usage error before anything is opened.
    code, out, err = run_in(user, "convert", "tone.wav", "-o", "nowhere/tone.kvd", "--home", home)
    check(code == 2 and "No such folder for the output: " + os.path.join(user, "nowhere") in err,
          "missing output folder: %d %s" % (code, err))

    # A missing input names itself and ends with no data set.
    code, out, err = run_in(user, "info", "missing.wav", "--home", home)
    check(code == 1 and "No such file: missing.wav" in err, "missing input: %d %s" % (code, err))
    check('"text": "No such file: missing.wav"' in out, "the message is in the report")
    check("File corrupted!" not in err, "a missing file is not called corrupted")
    code, out, err = run_in(user, "info", user, "--home", home)
    check(code == 1 and "Not a file: " in err, "a folder as FILE: %d %s" % (code, err))
finally:
    shutil.rmtree(work, ignore_errors=True)
finish()
