#!/bin/sh
# Runs every fuzz target for SECONDS each, or for RUNS executions each (or, given both, until the
# first of them), and prints, per target, the executions, the rate, the edges covered and the
# findings.
# Usage: fuzz/campaign.sh SECONDS [BUILD_DIR]
#        fuzz/campaign.sh --runs RUNS [SECONDS] [BUILD_DIR]
#   cmake --preset fuzz && cmake --build --preset fuzz && fuzz/campaign.sh 60
# TARGETS="wav kvd" picks some of the targets (by the name after fuzz_); all of them otherwise.
# Each target's corpus starts from its committed seeds (fuzz/corpus/TARGET) and the real
# recordings beside the repository (../shared/data/real) of its format, copied in at run time;
# nothing of those is committed. Corpora and findings are kept in BUILD_DIR/campaign.
set -eu
usage="usage: fuzz/campaign.sh SECONDS [BUILD_DIR] | --runs RUNS [SECONDS] [BUILD_DIR]"
runs=-1
secs=0
if [ "${1:-}" = "--runs" ]; then
    runs=${2:?$usage}
    shift 2
fi
case ${1:-} in
'' | *[!0-9]*) [ "$runs" != -1 ] || { echo "$usage" >&2; exit 2; } ;;
*) secs=$1; shift ;;
esac
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/.." && pwd)
build=$(cd "${1:-$root/build-fuzz}" && pwd)
real=$root/../shared/data/real
work=$build/campaign
mkdir -p "$work"

# Real recordings of one format: the files under $real whose names end in one of the extensions
# (any case). Formats with a companion header get it after a "\n--\n", as the harness splits.
seed_real() { # corpus ext...
    corpus=$1
    shift
    [ -d "$real" ] || return 0
    for ext in "$@"; do
        find "$real" -type f -iname "*.$ext" | while read -r f; do
            base=${f%.*}
            companion=""
            case $ext in
            rd3) companion=$(ls "$base".rad "$base".RAD 2>/dev/null | head -n 1) ;;
            DT1 | dt1) companion=$(ls "$base".HD "$base".hd 2>/dev/null | head -n 1) ;;
            esac
            name=$corpus/real-$(basename "$f")
            if [ -n "$companion" ]; then
                { cat "$f"; printf '\n--\n'; cat "$companion"; } >"$name"
            else
                cp "$f" "$name"
            fi
        done
    done
}

# Small generated seeds for the formats no real recording stands for.
seed_generated() { # corpus target
    case $2 in
    sht) printf 'Waveform Tabular Document\r\nTEKTRONIX\r\nCh1 1 V 1 ms\r\nSamples 8\r\n%s' \
        '0000111122223333444455556666777' >"$1/gen.SHT" ;;
    kvd) /usr/bin/python3 -c 'import struct,sys
h=bytearray(59); struct.pack_into("<hh",h,0,8,13); h[4:17]=b"Kelvorandine\xae"
struct.pack_into("<i",h,19,8); struct.pack_into("<i",h,29,2); struct.pack_into("<h",h,39,16)
struct.pack_into("<d",h,41,1000.0); struct.pack_into("<f",h,49,32767.0)
sys.stdout.buffer.write(bytes(h)+struct.pack("<17f",*range(17)))' >"$1/gen.kvd" ;;
    zon) /usr/bin/python3 -c 'import sys; sys.stdout.buffer.write(bytes(range(256))*8)' >"$1/gen.dt" ;;
    esac
}

# Allocation stacks are not recorded: unwinding on every allocation was a tenth of a target's
# time, and a finding is run again on its own (with ASAN_OPTIONS unset) to see where its memory
# came from. A given ASAN_OPTIONS is used as it stands.
export ASAN_OPTIONS="${ASAN_OPTIONS-malloc_context_size=0}"

printf '%-10s %12s %10s %8s %9s\n' target executions exec/s edges findings
for bin in "$build"/fuzz/fuzz_*; do
    [ -x "$bin" ] || continue
    t=${bin##*/fuzz_}
    case " ${TARGETS:-$t} " in *" $t "*) ;; *) continue ;; esac
    corpus=$work/$t
    mkdir -p "$corpus"
    [ -d "$here/corpus/$t" ] && cp "$here/corpus/$t"/* "$corpus"/ 2>/dev/null || true
    case $t in
    wav | wav_std) seed_real "$corpus" wav ;;
    dzt | dzt_std) seed_real "$corpus" dzt ;;
    rd3) seed_real "$corpus" rd3 ;;
    dt1) seed_real "$corpus" DT1 ;;
    seismic | radsys | segy_std) seed_real "$corpus" sgy ;;
    seg2 | sprscan | seg2_std) seed_real "$corpus" seg2 sg2 ;;
    csv | csv_std) seed_real "$corpus" csv ;;
    dat) seed_real "$corpus" dat ;;
    esac
    seed_generated "$corpus" "$t"
    log=$work/$t.log
    # Findings of this run only: a kept one from an earlier run is not counted again.
    stamp=$work/.started-$t
    : >"$stamp"
    "$bin" -runs="$runs" -max_total_time="$secs" -max_len=65536 -reload=0 -timeout=60 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$work/finding-$t-" "$corpus" >"$log" 2>&1 || true
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -n 1)
    edges=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | cut -d' ' -f2)
    found=$(find "$work" -maxdepth 1 -name "finding-$t-*" -newer "$stamp" | wc -l)
    printf '%-10s %12s %10s %8s %9s\n' "$t" "${execs:-?}" "${rate:-?}" "${edges:-?}" "$found"
done
