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

int main(int argc, char** argv) {
    return kv::bench::compareImportWithSegyio(argc, argv, 500, 1000, false, "SEISMIC",
                                              "kv-bench-segy-");
}
