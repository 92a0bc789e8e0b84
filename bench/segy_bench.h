// What the SEG-Y benchmarks share: a generated SEG-Y of a given size, segyio's C library
// reading its traces into floats written to a file (the peer every SEG-Y import is timed
// against), and running each side in a child process so that its peak memory is its own.
#pragma once

#include "bench_import.h"

#include <segyio/segy.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace kv::bench {

/// The bits of an IBM float for `v` (fraction cut, not rounded).
inline uint32_t ibmBits(float v) {
    if (v == 0) return 0;
    const uint32_t sign = v < 0 ? 0x80000000u : 0;
    double m = v < 0 ? -double(v) : double(v);
    int e = 64;
    while (m >= 1) {
        m /= 16;
        ++e;
    }
    while (m < 1.0 / 16) {
        m *= 16;
        --e;
    }
    return sign | (uint32_t(e) << 24) | uint32_t(m * 16777216.0);
}

/// Writes a SEG-Y of about `mb` megabytes, `samples` samples a trace, interval 1000
/// microseconds. `ibm`: IBM floats high byte first (format 1), the way most surveys are
/// delivered; otherwise IEEE floats low byte first (format 5), with the interval also in the
/// field-recording interval that the Seismic entry reads.
inline void writeSegy(const std::string& path, int mb, int samples, bool ibm = false) {
    std::ofstream f(path, std::ios::binary);
    auto put16 = [ibm](std::vector<char>& b, size_t off, int v) {
        b[off + (ibm ? 1 : 0)] = char(v & 0xFF);
        b[off + (ibm ? 0 : 1)] = char((v >> 8) & 0xFF);
    };
    std::vector<char> header(3600, 0);
    put16(header, 3216, 1000);
    put16(header, 3218, 1000);
    put16(header, 3220, samples);
    put16(header, 3224, ibm ? 1 : 5);
    f.write(header.data(), long(header.size()));
    const size_t traceBytes = 240 + 4 * size_t(samples);
    const size_t traces = size_t(mb) * 1000000 / traceBytes;
    std::vector<char> trace(traceBytes, 0);
    put16(trace, 114, samples);
    put16(trace, 116, 1000);
    for (size_t t = 0; t < traces; ++t) {
        for (int i = 0; i < samples; ++i) {
            const float v = float((i * 31 + int(t)) % 2001 - 1000) * 0.25f;
            uint32_t bits;
            if (ibm) {
                const uint32_t b = ibmBits(v);
                bits = (b >> 24) | ((b >> 8) & 0xFF00) | ((b << 8) & 0xFF0000) | (b << 24);
            } else {
                std::memcpy(&bits, &v, 4);
            }
            std::memcpy(&trace[240 + 4 * size_t(i)], &bits, 4);
        }
        f.write(trace.data(), long(trace.size()));
    }
}

/// segyio reading every trace of `file` into native floats, written one after the other to
/// `home`/segyio.sp; the trace count, or -1 when segyio cannot open the file.
inline long segyioToFloats(const std::string& file, const std::string& home, bool lsb) {
    segy_file* fp = segy_open(file.c_str(), "rb");
    if (!fp) return -1;
    segy_mmap(fp); // segyio's fastest read path; it falls back to stdio when mapping fails
    if (lsb) segy_set_format(fp, SEGY_LSB);
    std::vector<char> bin(static_cast<size_t>(segy_binheader_size()));
    segy_binheader(fp, bin.data());
    const int format = segy_format(bin.data());
    const int samples = segy_samples(bin.data());
    segy_set_format(fp, format | (lsb ? SEGY_LSB : SEGY_MSB));
    const long trace0 = segy_trace0(bin.data());
    const int bsize = segy_trsize(format, samples);
    int traces = 0;
    segy_traces(fp, &traces, trace0, bsize);
    std::vector<float> buf(static_cast<size_t>(samples));
    FILE* out = std::fopen((home + "/segyio.sp").c_str(), "wb");
    for (int t = 0; t < traces; ++t) {
        segy_readtrace(fp, t, buf.data(), trace0, bsize);
        segy_to_native(format, samples, buf.data());
        std::fwrite(buf.data(), 4, buf.size(), out);
    }
    std::fclose(out);
    segy_close(fp);
    return traces;
}

struct Run {
    double seconds = 0;
    long peakKb = 0;
    long traces = 0;
};

/// Runs `side` in a child process: wall time, the child's peak RSS, and the count it returns.
inline Run inChild(const std::function<long()>& side) {
    int pipeFd[2];
    if (pipe(pipeFd) != 0) return {};
    const auto t0 = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        close(pipeFd[0]);
        const long n = side();
        if (write(pipeFd[1], &n, sizeof n) != sizeof n) _exit(2);
        _exit(0);
    }
    close(pipeFd[1]);
    Run r;
    if (read(pipeFd[0], &r.traces, sizeof r.traces) != sizeof r.traces) r.traces = -1;
    close(pipeFd[0]);
    int status = 0;
    rusage ru{};
    wait4(pid, &status, 0, &ru);
    r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    r.peakKb = ru.ru_maxrss;
    return r;
}

/// The run of median time.
inline Run median(std::vector<Run> v) {
    std::sort(v.begin(), v.end(), [](const Run& x, const Run& y) { return x.seconds < y.seconds; });
    return v[v.size() / 2];
}

/// Times `ours` against `theirs` over `rounds` alternating runs after one warm-up of the page
/// cache, and prints one JSON object: median seconds of each side, the ratio segyio / ours
/// (above 1 means ours is faster), both peak RSS figures and both trace counts.
inline void compareWithSegyio(const std::string& file, int rounds,
                              const std::function<long()>& ours,
                              const std::function<long()>& theirs) {
    inChild(theirs);
    std::vector<Run> a, b;
    for (int r = 0; r < rounds; ++r) {
        a.push_back(inChild(ours));
        b.push_back(inChild(theirs));
    }
    const Run mo = median(a), mt = median(b);
    std::ifstream f(file, std::ios::binary | std::ios::ate);
    std::printf("{\"file_bytes\": %lld, \"ours_seconds\": %.3f, \"segyio_seconds\": %.3f, "
                "\"ratio_segyio_over_ours\": %.3f, \"ours_peak_rss_kb\": %ld, "
                "\"segyio_peak_rss_kb\": %ld, \"ours_traces\": %ld, \"segyio_traces\": %ld}\n",
                static_cast<long long>(f.tellg()), mo.seconds, mt.seconds, mt.seconds / mo.seconds,
                mo.peakKb, mt.peakKb, mo.traces, mt.traces);
}

/// The side-by-side program's whole run: [FILE] [--mb N] [--samples N] [--rounds N], a generated
/// file when none is given, our `filter` entry against segyio reading the same traces into
/// floats, and the scratch folder removed.
inline int compareImportWithSegyio(int argc, char** argv, int mb, int samples, bool ibm,
                                   const char* filter, const char* scratchTag) {
    std::string file;
    int rounds = 3;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--mb" && i + 1 < argc)
            mb = std::atoi(argv[++i]);
        else if (a == "--samples" && i + 1 < argc)
            samples = std::atoi(argv[++i]);
        else if (a == "--rounds" && i + 1 < argc)
            rounds = std::atoi(argv[++i]);
        else
            file = a;
    }
    const std::filesystem::path home = scratchHome(scratchTag);
    if (file.empty()) {
        file = (home / "bench.sgy").string();
        writeSegy(file, mb, samples, ibm);
    }
    const std::string h = home.string();
    compareWithSegyio(
        file, rounds, [&] { return long(importOnce(h, file, filter)); },
        [&] { return segyioToFloats(file, h, !ibm); });
    std::filesystem::remove_all(home);
    return 0;
}

} // namespace kv::bench
