#!/usr/bin/env bash
# End-to-end checks of "tracelab-cli laps" on the bundled demo runs: the line
# format, laps whose sectors add up to them, the ideal lap as the best
# sectors added up, lap times close to the
# simulation's, the usage errors, and "export --auto-sectors" carrying time
# slip.
# Usage: laps_test.sh PATH/TO/tracelab-cli SAMPLES_DIR
set -u
CLI=${1:?usage: laps_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
SAMPLES=${2:?usage: laps_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-laps-test.XXXXXX")
trap 'rm -rf "$WORK"' EXIT
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

for entry in "sv63 demo_sv63_kart" "sw63 demo_sw63_oval" "mq7 demo_mq7_kart"; do
    set -- $entry
    family=$1 stem=$SAMPLES/$2
    out=$("$CLI" laps --config-dir "$WORK/cfg-$family" --family "$family" --auto-sectors 3 \
        "$stem.run" 2>"$WORK/err")
    status=$?
    [ $status -eq 0 ] || fail "$family: exit $status: $(cat "$WORK/err")"
    echo "$out"
    # Every line is a lap with three sectors, or the run's fastest lap.
    bad=$(echo "$out" | grep -v -E '^run 1 lap [0-9]+ time=[0-9]+\.[0-9]{2}( s[1-3]=[0-9]+\.[0-9]{2})*$' |
        grep -v -E '^run 1 fastest lap [0-9]+ time=[0-9]+\.[0-9]{2}$' |
        grep -v -E '^run 1 ideal lap time=[0-9]+\.[0-9]{2}$')
    [ -z "$bad" ] || fail "$family: unexpected lines: $bad"
    laps=$(echo "$out" | grep -c ' lap [0-9]* time=')
    [ "$laps" -ge 2 ] || fail "$family: $laps complete laps"
    # The sectors of a lap add up to it; the fastest line names the least.
    echo "$out" | awk -v fam="$family" '
        / lap [0-9]+ time=/ && !/fastest/ {
            split($0, f, " "); t = substr(f[5], 6); sum = 0; n = 0
            for (i = 6; i <= length(f); i++) { split(f[i], kv, "="); sum += kv[2]; n++ }
            if (n == 3 && (sum - t > 0.015 || t - sum > 0.015)) { print fam ": sectors " sum " lap " t; bad = 1 }
            if (best == "" || t < best) { best = t; lap = f[4] }
        }
        / lap [0-9]+ time=/ && !/fastest/ {
            for (i = 6; i <= length(f); i++) {
                split(f[i], kv, "="); if (!(kv[1] in low) || kv[2] < low[kv[1]]) low[kv[1]] = kv[2]
            }
        }
        /fastest/ { split($0, f, " "); if (f[5] != lap) { print fam ": fastest " f[5] " not " lap; bad = 1 } }
        /ideal lap/ { ideal = substr($5, 6) }
        END {
            # The ideal lap: the least time of each sector over the laps,
            # added up (each rounded to 0.01 s here), no slower than the
            # fastest lap.
            sum = 0; for (k in low) sum += low[k]
            if (ideal == "") { print fam ": no ideal lap"; bad = 1 }
            else if (ideal - sum > 0.025 || sum - ideal > 0.025) { print fam ": ideal " ideal " sectors " sum; bad = 1 }
            else if (ideal > best + 0.005) { print fam ": ideal " ideal " slower than " best; bad = 1 }
            exit bad
        }' || fail "$family: sector sums, fastest or ideal lap"
    # The simulation's laps, line to line, against ours, marker to marker:
    # the same laps within the change of pace between two places on the lap.
    truth=$(grep '^line' "$stem.laps.csv" | cut -d, -f7 | tail -n +2 | sort -n | head -1)
    ours=$(echo "$out" | sed -n 's/^run 1 fastest lap [0-9]* time=//p')
    awk -v a="$truth" -v b="$ours" 'BEGIN { d = a - b; if (d < 0) d = -d; exit !(d < 1.0) }' ||
        fail "$family: fastest lap $ours against the simulation's $truth"
done

# Usage errors.
"$CLI" laps --config-dir "$WORK/cfg-u" --family sv63 >/dev/null 2>&1
[ $? -eq 2 ] || fail "laps without a file must exit 2"
"$CLI" laps --config-dir "$WORK/cfg-u" --family sv63 --auto-sectors x "$SAMPLES/demo_sv63_kart.run" \
    >/dev/null 2>&1
[ $? -eq 2 ] || fail "--auto-sectors x must exit 2"

# The export carries the time slip of the placed sectors.
"$CLI" export --config-dir "$WORK/cfg-e" --family sw63 --all-vars --auto-sectors 3 \
    "$SAMPLES/demo_sw63_oval.run" -o "$WORK/slip.csv" 2>"$WORK/err" || fail "export: $(cat "$WORK/err")"
col=$(sed -n 2p "$WORK/slip.csv" | tr ',' '\n' | grep -n -x 'Time Slip \[s\]' | cut -d: -f1)
if [ -z "$col" ]; then
    fail "export has no Time Slip column"
else
    nonzero=$(tail -n +3 "$WORK/slip.csv" | cut -d, -f"$col" | awk '$1 != 0 && $1 != "" { n++ } END { print n + 0 }')
    [ "$nonzero" -gt 100 ] || fail "time slip is zero almost everywhere ($nonzero rows)"
fi

if [ $failures -ne 0 ]; then
    echo "$failures failure(s)" >&2
    exit 1
fi
echo "laps: all checks passed"
