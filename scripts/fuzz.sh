#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang-14 in build-fuzz and runs each for
# a bounded time on its corpus. Any crash, leak or sanitizer report fails the
# script. FUZZ_SECONDS (default 60) is the time per harness; FUZZ_JOBS the
# build parallelism; extra arguments are handed to every harness.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
SECONDS_PER=${FUZZ_SECONDS:-60}
BUILD=build-fuzz
CC=clang-14 CXX=clang++-14 cmake -S . -B "$BUILD" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTRACELAB_FUZZ=ON -DTRACELAB_GUI=OFF -DTRACELAB_BENCH=OFF -DTRACELAB_TESTS=OFF >/dev/null
harnesses=(raw_loaders hx40_convert sv63_convert stream_convert)
cmake --build "$BUILD" -j"${FUZZ_JOBS:-$(nproc)}" --target "${harnesses[@]/#/fuzz_}"

status=0
for h in "${harnesses[@]}"; do
    corpus=fuzz/corpus/$h
    # New inputs go to a scratch directory so the corpus in the repository
    # stays small; crash files land in build-fuzz/artifacts/<harness>/.
    work=$BUILD/work/$h
    artifacts=$BUILD/artifacts/$h/
    mkdir -p "$work" "$artifacts"
    echo "== fuzz_$h for ${SECONDS_PER}s"
    if ! ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        "$BUILD/bin/fuzz_$h" -max_total_time="$SECONDS_PER" -max_len=65536 -rss_limit_mb=3072 \
        -timeout=30 -print_final_stats=1 -artifact_prefix="$artifacts" "$@" "$work" "$corpus" \
        >"$BUILD/fuzz_$h.log" 2>&1; then
        echo "FAIL: fuzz_$h found a problem; see $BUILD/fuzz_$h.log and $artifacts" >&2
        grep -E "ERROR|SUMMARY|runtime error|Test unit written" "$BUILD/fuzz_$h.log" | head -20 >&2
        status=1
    else
        grep -E "stat::number_of_executed_units|cov:" "$BUILD/fuzz_$h.log" | tail -2
    fi
done
exit $status
