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

int main(int argc, char** argv) {
    return kv::bench::compareImportWithSegyio(argc, argv, 1000, 1500, true, "SEGY-STD",
                                              "kv-bench-segy-std-");
}
