// SEG-Y import speed side by side with segyio's C library, in one run on one machine: a
// generated little-endian IEEE-float SEG-Y is read into float traces written to a working file,
// once by the Seismic entry of our reader and once by segyio (read, convert to native floats,
// write). Each run is a child process, so its peak memory is its own.
//
//   bench_segy [FILE] [--mb N] [--samples N] [--rounds N]
//
// prints one JSON object: seconds per run for each side, the ratio segyio / ours (above 1 means
// ours is faster), both peak RSS figures, and the trace counts.
#include "bench_import.h"

#include <segyio/segy.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace kv;

namespace {

/// Writes a SEG-Y of about `mb` megabytes: `samples` IEEE floats a trace, low byte first,
/// format 5, interval 1000 microseconds in both binary-header interval fields.
void writeSegy(const std::string& path, int mb, int samples) {
    std::ofstream f(path, std::ios::binary);
    std::vector<char> header(3600, 0);
    auto put16 = [&](std::vector<char>& b, size_t off, int v) {
        b[off] = char(v & 0xFF);
        b[off + 1] = char((v >> 8) & 0xFF);
    };
    put16(header, 3216, 1000);
    put16(header, 3218, 1000);
    put16(header, 3220, samples);
    put16(header, 3224, 5);
    f.write(header.data(), long(header.size()));
    const size_t traceBytes = 240 + 4 * size_t(samples);
    const size_t traces = size_t(mb) * 1000000 / traceBytes;
    std::vector<char> trace(traceBytes, 0);
    put16(trace, 114, samples);
    put16(trace, 116, 1000);
    for (size_t t = 0; t < traces; ++t) {
        for (int i = 0; i < samples; ++i) {
            const float v = float((i * 31 + int(t)) % 2001 - 1000) * 0.25f;
            std::memcpy(&trace[240 + 4 * size_t(i)], &v, 4);
        }
        f.write(trace.data(), long(trace.size()));
    }
}

long ours(const std::string& file, const std::string& home) {
    return kv::bench::importOnce(home, file, "SEISMIC");
}

long theirs(const std::string& file, const std::string& home) {
    segy_file* fp = segy_open(file.c_str(), "rb");
    if (!fp) return -1;
    segy_mmap(fp); // segyio's fastest read path; it falls back to stdio when mapping fails
    segy_set_format(fp, SEGY_LSB);
    std::vector<char> bin(static_cast<size_t>(segy_binheader_size()));
    segy_binheader(fp, bin.data());
    const int format = segy_format(bin.data());
    const int samples = segy_samples(bin.data());
    segy_set_format(fp, format | SEGY_LSB);
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

/// Runs one side in a child process: wall time, the child's peak RSS, and its trace count.
Run inChild(bool useOurs, const std::string& file, const std::string& home) {
    int pipeFd[2];
    if (pipe(pipeFd) != 0) return {};
    const auto t0 = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        close(pipeFd[0]);
        const long n = useOurs ? ours(file, home) : theirs(file, home);
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

} // namespace

int main(int argc, char** argv) {
    std::string file;
    int mb = 500, samples = 1000, rounds = 3;
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
    const fs::path home = kv::bench::scratchHome("kv-bench-segy-");
    const bool generated = file.empty();
    if (generated) {
        file = (home / "bench.sgy").string();
        writeSegy(file, mb, samples);
    }
    // Warm the page cache once so that neither side pays for the first read from disk.
    inChild(false, file, home.string());
    std::vector<Run> a, b;
    for (int r = 0; r < rounds; ++r) {
        a.push_back(inChild(true, file, home.string()));
        b.push_back(inChild(false, file, home.string()));
    }
    auto median = [](std::vector<Run> v) {
        std::sort(v.begin(), v.end(),
                  [](const Run& x, const Run& y) { return x.seconds < y.seconds; });
        return v[v.size() / 2];
    };
    const Run mo = median(a), mt = median(b);
    std::printf("{\"file_bytes\": %lld, \"ours_seconds\": %.3f, \"segyio_seconds\": %.3f, "
                "\"ratio_segyio_over_ours\": %.3f, \"ours_peak_rss_kb\": %ld, "
                "\"segyio_peak_rss_kb\": %ld, \"ours_traces\": %ld, \"segyio_traces\": %ld}\n",
                static_cast<long long>(fs::file_size(file)), mo.seconds, mt.seconds,
                mt.seconds / mo.seconds, mo.peakKb, mt.peakKb, mo.traces, mt.traces);
    fs::remove_all(home);
    return 0;
}
