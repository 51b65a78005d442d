#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
#   scripts/test.sh                      the normal build in ./build
#   scripts/test.sh --sanitize           ASan + UBSan build of the engine and tools in ./build-asan
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  args=(-DCMAKE_BUILD_TYPE=Debug -DTRACELAB_SANITIZE=ON -DTRACELAB_GUI=OFF -DTRACELAB_BENCH=OFF)
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
else
  dir=build
  args=()
fi
cmake -S . -B "$dir" -G Ninja "${args[@]}" ${TRACELAB_CMAKE_ARGS:-}
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" --timeout 900
