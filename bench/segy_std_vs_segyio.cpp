// Import through the "SEG-Y, all revisions" entry side by side with segyio's C library, in one
// run on one machine: a generated SEG-Y of IBM floats, high byte first (the way most surveys
// are delivered), is read into float traces written to a working file, once by the Import
// command with that entry and once by segyio (read, convert to native floats, write). Each run
// is a child process, so its peak memory is its own; the import must stay within one trace's
// worth of memory beside the program itself.
//
//   bench_segy_std [FILE] [--mb N] [--samples N] [--rounds N]
//
// prints one JSON object: seconds per run for each side, the ratio segyio / ours (above 1 means
// ours is faster), both peak RSS figures, and the trace counts. The default is a 1 GB file.
#include "bench_import.h"
#include "segy_bench.h"

#include <filesystem>
#include <string>

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::string file;
    int mb = 1000, samples = 1500, rounds = 3;
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
    const fs::path home = kv::bench::scratchHome("kv-bench-segy-std-");
    if (file.empty()) {
        file = (home / "bench.sgy").string();
        kv::bench::writeSegy(file, mb, samples, true);
    }
    const std::string h = home.string();
    kv::bench::compareWithSegyio(
        file, rounds, [&] { return long(kv::bench::importOnce(h, file, "SEGY-STD")); },
        [&] { return kv::bench::segyioToFloats(file, h, false); });
    fs::remove_all(home);
    return 0;
}
