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
#include "segy_bench.h"

#include <filesystem>
#include <string>

namespace fs = std::filesystem;

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
    if (file.empty()) {
        file = (home / "bench.sgy").string();
        kv::bench::writeSegy(file, mb, samples);
    }
    const std::string h = home.string();
    kv::bench::compareWithSegyio(
        file, rounds, [&] { return long(kv::bench::importOnce(h, file, "SEISMIC")); },
        [&] { return kv::bench::segyioToFloats(file, h, true); });
    fs::remove_all(home);
    return 0;
}
