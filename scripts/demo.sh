#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job on a bundled demo run.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
cmake -S . -B build -G Ninja
cmake --build build -j"$(nproc)"
# A private configuration root keeps the demo away from your own settings.
# The demo converts the bundled HX40 run of a car on a road circuit (see
# samples/README.md) with the whole processing and writes its CSV export.
build/bin/tracelab-cli info --config-dir build/demo-config --family hx40 --vehicle car \
    samples/demo_hx40_road.run
build/bin/tracelab-cli export --config-dir build/demo-config --family hx40 --vehicle car \
    samples/demo_hx40_road.run -o build/demo.csv
echo "Wrote the processed export of samples/demo_hx40_road.run to $(pwd)/build/demo.csv" \
    "($(wc -l <build/demo.csv) lines)"
