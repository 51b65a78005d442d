#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang-14 in build-fuzz and runs each for
# a bounded time on its corpus, with the dictionary of the formats it reads.
# Any crash, leak or sanitizer report fails the script. Per harness it prints
# the inputs tried and the rate.
#
#   FUZZ_SECONDS   seconds for each lean harness (default 45)
#   DEEP_SECONDS   seconds for the deep harness of the whole road (default 90)
#   FUZZ_JOBS      build parallelism
# Extra arguments are handed to every harness.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
SECONDS_PER=${FUZZ_SECONDS:-45}
DEEP=${DEEP_SECONDS:-90}
BUILD=build-fuzz
launcher=()
command -v ccache >/dev/null 2>&1 && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
CC=clang-14 CXX=clang++-14 cmake -S . -B "$BUILD" -G Ninja "${launcher[@]}" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTRACELAB_FUZZ=ON -DTRACELAB_GUI=OFF -DTRACELAB_BENCH=OFF -DTRACELAB_TESTS=OFF >/dev/null
# harness:dictionaries:max_len
plan=(
    "hx40_convert:planes:4104"
    "sv63_convert:planes:4104"
    "stream_convert:stream:8192"
    "raw_files:run_files stream planes:16384"
    "text_fields:text_fields:8192"
    "formula:formula:512"
    "deep_road:run_files stream planes:65536"
)
targets=()
for entry in "${plan[@]}"; do targets+=("fuzz_${entry%%:*}"); done
cmake --build "$BUILD" -j"${FUZZ_JOBS:-$(nproc)}" --target "${targets[@]}"

status=0
total=0
for entry in "${plan[@]}"; do
    IFS=: read -r h dicts maxlen <<<"$entry"
    seconds=$SECONDS_PER
    [ "$h" = deep_road ] && seconds=$DEEP
    corpus=fuzz/corpus/$h
    # New inputs go to a scratch directory so the corpus in the repository
    # stays small; crash files land in build-fuzz/artifacts/<harness>/.
    work=$BUILD/work/$h
    artifacts=$BUILD/artifacts/$h/
    dict=$BUILD/$h.dict
    mkdir -p "$work" "$artifacts"
    : >"$dict"
    for d in $dicts; do cat "fuzz/$d.dict" >>"$dict"; done
    echo "== fuzz_$h for ${seconds}s"
    if ! ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        "$BUILD/bin/fuzz_$h" -max_total_time="$seconds" -max_len="$maxlen" -rss_limit_mb=3072 \
        -timeout=30 -print_final_stats=1 -dict="$dict" -artifact_prefix="$artifacts" "$@" \
        "$work" "$corpus" >"$BUILD/fuzz_$h.log" 2>&1; then
        echo "FAIL: fuzz_$h found a problem; see $BUILD/fuzz_$h.log and $artifacts" >&2
        grep -E "ERROR|SUMMARY|runtime error|Test unit written" "$BUILD/fuzz_$h.log" | head -20 >&2
        status=1
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$BUILD/fuzz_$h.log" | tail -1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$BUILD/fuzz_$h.log" | tail -1)
    cov=$(grep -oE "cov: [0-9]+" "$BUILD/fuzz_$h.log" | tail -1)
    echo "fuzz_$h: inputs tried ${runs:-0} (${rate:-0} a second), $cov"
    total=$((total + ${runs:-0}))
done
echo "fuzzing: $total inputs tried in all"
exit $status
