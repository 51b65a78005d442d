#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job on a bundled demo run.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
cmake -S . -B build -G Ninja
cmake --build build -j"$(nproc)"
# A private configuration root keeps the demo away from your own settings.
build/bin/tracelab-cli info --config-dir build/demo-config --family hx40 samples/demo_hx40_kart.run
