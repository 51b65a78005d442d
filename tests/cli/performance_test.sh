#!/usr/bin/env bash
# End-to-end checks of "tracelab-cli performance" on the bundled demo runs:
# the two grids as their copy puts them (tabs, CR LF, square, headed every
# 10 kph), the 0 to 100 km/h cell against the simulation's truth, the
# summary of the shipped template, the options and the usage errors.
# Usage: performance_test.sh PATH/TO/tracelab-cli SAMPLES_DIR
set -u
CLI=${1:?usage: performance_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
SAMPLES=${2:?usage: performance_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-performance-test.XXXXXX")
trap 'rm -rf "$WORK"' EXIT
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

for entry in "sv63 demo_sv63_kart" "sw63 demo_sw63_oval"; do
    set -- $entry
    family=$1 stem=$SAMPLES/$2
    "$CLI" performance --config-dir "$WORK/cfg-$family" --family "$family" "$stem.run" \
        >"$WORK/$family.out" 2>"$WORK/err"
    status=$?
    [ $status -eq 0 ] || fail "$family: exit $status: $(cat "$WORK/err")"
    # Every line is closed by CR LF.
    lf=$(grep -c $'\r$' "$WORK/$family.out")
    all=$(wc -l <"$WORK/$family.out")
    [ "$lf" -eq "$all" ] || fail "$family: $((all - lf)) lines without CR LF"
    tr -d '\r' <"$WORK/$family.out" >"$WORK/$family.txt"
    # The two grids: headings, then square tables headed 0 kph, 10 kph, ...
    awk -F'\t' -v fam="$family" '
        /^Acceleration (times|distances) from / { grid++; row = 0; next }
        grid && NF > 1 {
            if (row == 0) { n = NF; for (i = 2; i <= NF; i++) if ($i != (i - 2) * 10 " kph") bad = 1 }
            else {
                if (NF != n || $1 != (row - 1) * 10 " kph" || $(row + 1) != "==") bad = 1
                for (i = 2; i <= NF; i++) if ($i != "==" && $i != "na" && $i !~ /^[0-9]+\.[0-9][0-9]$/) bad = 1
            }
            row++; rows[grid] = row
        }
        END { if (grid != 2 || rows[1] != n || rows[2] != n || bad) { print fam ": grids " grid " rows " rows[1] "/" rows[2] " cols " n; exit 1 } }
    ' "$WORK/$family.txt" || fail "$family: the grids' layout"
    # 0 to 100 km/h against the truth: from the launch (the acceleration
    # stepping past 0.2 g) to the first row at 100 km/h or more.
    truth=$(awk -F, 'NR > 1 && !t0 && $9 >= 0.2 && $8 <= 5 { t0 = $1; d0 = $3 }
        NR > 1 && t0 && $8 >= 100 { printf "%.2f %.2f", $1 - t0, $3 - d0; exit }' "$stem.truth.csv")
    ours=$(awk -F'\t' '/^Acceleration times/ { g = 1 } /^Acceleration distances/ { g = 2 }
        $1 == "100 kph" { c[g] = $2 } END { print c[1], c[2] }' "$WORK/$family.txt")
    awk -v a="$truth" -v b="$ours" 'BEGIN { split(a, t, " "); split(b, o, " ")
        dt = t[1] - o[1]; dd = t[2] - o[2]; if (dt < 0) dt = -dt; if (dd < 0) dd = -dd
        exit !(dt <= 0.05 && dd <= 1.0) }' || fail "$family: 0 to 100 km/h $ours against the truth $truth"
    # The shipped template's summary carries the same cell.
    grep -q "^From 0 to 100:    ${ours% *} s    ${ours#* }\$" "$WORK/$family.txt" ||
        fail "$family: the summary has no 0 to 100 line for $ours"
done

# --mph heads the grids in mph; --assembled is never slower than the passes.
"$CLI" performance --config-dir "$WORK/cfg-m" --family sw63 --mph "$SAMPLES/demo_sw63_oval.run" \
    2>/dev/null | grep -q $'^\t0 mph\t10 mph' || fail "--mph does not head the grid in mph"
"$CLI" performance --config-dir "$WORK/cfg-a" --family sw63 --assembled --start 0 --end 60 \
    "$SAMPLES/demo_sw63_oval.run" >"$WORK/asm.out" 2>"$WORK/err" || fail "--assembled: $(cat "$WORK/err")"
grep -q '^Acceleration times from demo_sw63_oval' "$WORK/asm.out" || fail "--assembled printed no grid"

# Usage and refusals.
"$CLI" performance --config-dir "$WORK/cfg-u" --family sv63 >/dev/null 2>&1
[ $? -eq 2 ] || fail "performance without a file must exit 2"
"$CLI" performance --config-dir "$WORK/cfg-u" --family sv63 --run 0 "$SAMPLES/demo_sv63_kart.run" >/dev/null 2>&1
[ $? -eq 2 ] || fail "--run 0 must exit 2"
"$CLI" performance --config-dir "$WORK/cfg-u" --family sv63 --start x "$SAMPLES/demo_sv63_kart.run" >/dev/null 2>&1
[ $? -eq 2 ] || fail "--start x must exit 2"
"$CLI" performance --config-dir "$WORK/cfg-u" --family sv63 --run 2 "$SAMPLES/demo_sv63_kart.run" >/dev/null 2>&1
[ $? -eq 1 ] || fail "a run not loaded must exit 1"
"$CLI" performance --config-dir "$WORK/cfg-u" --family sv63 --start 20 --end 10 \
    "$SAMPLES/demo_sv63_kart.run" >/dev/null 2>"$WORK/err"
[ $? -eq 1 ] || fail "an end before the start must exit 1"
grep -q "The end time must be greater than the start time" "$WORK/err" || fail "no message for the end time"

if [ $failures -ne 0 ]; then
    echo "$failures failure(s)" >&2
    exit 1
fi
echo "performance: all checks passed"
