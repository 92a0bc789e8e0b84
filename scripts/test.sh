#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite.
# Pass --asan to build and test under AddressSanitizer + UndefinedBehaviorSanitizer instead.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=default
[ "${1:-}" = "--asan" ] && preset=asan
bash scripts/setup.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -j"$(nproc)"
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp"
ctest --preset "$preset" -j"$(nproc)" --timeout 900
