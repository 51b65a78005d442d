#!/usr/bin/env bash
# Installs the Debian bookworm packages Tracelab builds and tests with.
# Safe to run again: packages already present are left alone.
set -euo pipefail
packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev qt6-serialport-dev qt6-svg-dev libgl-dev
  libmuparser-dev libgtest-dev libgmock-dev libbenchmark-dev
  clang-14 libclang-rt-14-dev
  xvfb xauth socat fonts-dseg fonts-liberation2
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  if [ "$(id -u)" -ne 0 ]; then SUDO=sudo; else SUDO=; fi
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${missing[@]}"
fi
