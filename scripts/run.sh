#!/usr/bin/env bash
# Installs what is missing, builds the workbench and starts it on the bundled sample recording.
# Extra arguments go to the workbench (a file of your own, --filter NAME, --home DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default -j"$(nproc)" --target kelvorandine kelvorandine-cli kv_home
if [ $# -eq 0 ]; then set -- build/bin/samples/sample_tone.wav; fi
exec build/bin/kelvorandine "$@"
