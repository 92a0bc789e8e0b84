#!/usr/bin/env bash
# Installs every Debian package the workbench needs to build, run and test.
# Safe to run again: when everything is present it only checks and returns.
set -euo pipefail

PACKAGES=(
  build-essential cmake pkg-config ninja-build clang-format
  qt6-base-dev qt6-base-dev-tools libgl-dev libqt6svg6
  libfftw3-dev libsimpleini-dev libicu-dev libcli11-dev nlohmann-json3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  libsegyio-dev python3-segyio python3-numpy
  xvfb xauth
  poppler-utils
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
