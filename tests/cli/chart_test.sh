#!/usr/bin/env bash
# tracelab-cli chart on the demo road run: the bins the copy gives (every
# sample counted once, percentages that add up to 100, conditions with
# strict bounds), the picture files and the refusals.
# Usage: chart_test.sh PATH/TO/tracelab-cli SAMPLES_DIR
source "$(dirname "$0")/common.sh" chart "$@"
run=$S/demo_hx40_road.run
rows=$(($(wc -l <"$S/demo_hx40_road.truth.csv") - 1))
speed="GPS Speed [kph]"
# Counts over the run's own range: every row of the run in some bin.
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "$speed" --count --copy "$WORK/count.txt" \
    -o "$WORK/c.png" 2>"$WORK/err"
check "exit 0" test $? = 0
check "png" test "$(head -c 8 "$WORK/c.png" | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a
check "heading" bash -c "head -1 '$WORK/count.txt' | grep -q \$'^From\\tTo\\tGPS Speed \\\\[kph\\\\]\\r\$'"
check "ten bins" test "$(wc -l <"$WORK/count.txt")" = 11
check "crlf" bash -c "sed -n 2p '$WORK/count.txt' | od -c | grep -q '\\\\r  \\\\n'"
check "every row counted" test "$(tr -d '\r' <"$WORK/count.txt" | awk -F'\t' 'NR > 1 { s += $3 } END { print s }')" = "$rows"
# The edges: from the lowest to the highest value, ten equal steps.
check "edges rise evenly" bash -c "tr -d '\\r' <'$WORK/count.txt' | awk -F'\\t' 'NR > 1 { w = \$2 - \$1; if (NR == 2) f = w; if (w - f > 1e-3 || f - w > 1e-3 || (NR > 2 && \$1 != p)) bad = 1; p = \$2 } END { exit bad }'"
# Percentages of the samples counted.
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "$speed" --bins 150 --copy "$WORK/pc.txt" 2>/dev/null
check "150 bins become 100" test "$(wc -l <"$WORK/pc.txt")" = 101
check "percent adds up" bash -c "tr -d '\\r' <'$WORK/pc.txt' | awk -F'\\t' 'NR > 1 { s += \$3 } END { exit !(s > 99.999 && s < 100.001) }'"
# Two conditions on time, strict at both ends: 0.01 s to 99.99 s and 100.01
# to 199.99 s, 9999 rows each, all below 300 kph. The legends head the
# columns. SVG through the same drawing.
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "$speed" --min 0 --max 300 --bins 6 --count \
    --if "Time [s]:0:100" --if "Time [s]:100:200" --copy "$WORK/if.txt" -o "$WORK/if.svg" 2>/dev/null
check "conditions exit 0" test $? = 0
check "legends" bash -c "head -1 '$WORK/if.txt' | grep -q 'demo_hx40_road, Time \\[s\\] 0 to 100.demo_hx40_road, Time \\[s\\] 100 to 200'"
check "strict bounds" test "$(tr -d '\r' <"$WORK/if.txt" | awk -F'\t' 'NR > 1 { a += $3; b += $4 } END { print a, b }')" = "9999 9999"
check "typed range" bash -c "sed -n 2p '$WORK/if.txt' | grep -q \$'^0\\t50\\t'"
check "svg" grep -q "<svg" "$WORK/if.svg"
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "$speed" --lines --no-bars -o "$WORK/c.pdf" 2>/dev/null
check "pdf" test "$(head -c 5 "$WORK/c.pdf")" = "%PDF-"
# Refusals: an unknown variable (exit 2), no variable, no run file, a run
# that is not there (exit 1), six charts, a condition without bounds.
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "Warp Speed" --copy "$WORK/x" >/dev/null 2>"$WORK/unknown"
check "unknown variable exit 2" test $? = 2
check "unknown variable named" grep -q 'no variable "Warp Speed"' "$WORK/unknown"
"$CLI" chart --config-dir "$WORK/cfg" "$run" --copy "$WORK/x" >/dev/null 2>&1
check "no variable exit 2" test $? = 2
"$CLI" chart --config-dir "$WORK/cfg" --var "$speed" --copy "$WORK/x" >/dev/null 2>&1
check "no run file exit 2" test $? = 2
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "$speed" --run 3 --copy "$WORK/x" >/dev/null 2>&1
check "missing run exit 1" test $? = 1
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "$speed" --run 1 --run 1 --run 1 --run 1 \
    --run 1 --run 1 --copy "$WORK/x" >/dev/null 2>&1
check "six charts exit 2" test $? = 2
"$CLI" chart --config-dir "$WORK/cfg" "$run" --var "$speed" --if "Time [s]" --copy "$WORK/x" >/dev/null 2>&1
check "bad condition exit 2" test $? = 2
finish
