#!/usr/bin/env bash
# End-to-end checks of "tracelab-cli export" and "export-raw" on the bundled
# demo runs of every family: row counts against the load's own count, the
# shape of every line, the sample step, the stages, the variable selection,
# and the exit codes of refusals and usage errors.
# Usage: export_test.sh PATH/TO/tracelab-cli
set -u
CLI=$(realpath "${1:?usage: export_test.sh PATH/TO/tracelab-cli}")
SAMPLES=$(cd "$(dirname "$0")/../../samples" && pwd)
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-export-test.XXXXXX")
trap 'rm -rf "$WORK"' EXIT
cd "$WORK" || exit 1
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

# run CASE EXPECTED-RC ARGS...: stdout in $CASE.out, stderr in $CASE.err.
run() {
    local name=$1 rc=$2
    shift 2
    "$CLI" "$@" >"$name.out" 2>"$name.err"
    local got=$?
    [[ $got == "$rc" ]] || fail "$name: exit code $got, expected $rc; stderr: $(cat "$name.err")"
}
lines() { wc -l <"$1" | tr -d ' '; }
# Fields of line N (commas), counting the empty one after the last comma out.
fields() { sed -n "${2}p" "$1" | tr -d '\r' | awk -F, '{print NF - 1}'; }

for item in hx40:car:demo_hx40_road mq7:kart:demo_mq7_kart sv63:kart:demo_sv63_kart \
    sw63:bike:demo_sw63_oval; do
    IFS=: read -r fam veh name <<<"$item"
    common=(--config-dir "cfg-$fam" --family "$fam" --vehicle "$veh")
    run "info-$fam" 0 info "${common[@]}" "$SAMPLES/$name.run"
    rows=$(sed -n 's/.* rows=\([0-9]*\)\.\.\([0-9]*\) .*/\1 \2/p' "info-$fam.out")
    read -r first last <<<"$rows"
    [[ -n $first && $last -gt 1000 ]] || fail "$fam: info gave no rows: $(cat "info-$fam.out")"

    run "conv-$fam" 0 export "${common[@]}" --stage convert "$SAMPLES/$name.run" -o "$fam.csv"
    [[ $(lines "$fam.csv") == $((last - first + 1 + 2)) ]] ||
        fail "$fam: $(lines "$fam.csv") lines, expected $((last - first + 3))"
    head -1 "$fam.csv" | grep -q '^Data Output From Velquor Data Logging System ' ||
        fail "$fam: title line: $(head -1 "$fam.csv")"
    # Every line but the title ends in ",\r"; every row has a field per name.
    bad=$(tail -n +2 "$fam.csv" | grep -cv $',\r$')
    [[ $bad == 0 ]] || fail "$fam: $bad lines do not end in a comma and CR LF"
    names=$(fields "$fam.csv" 2)
    odd=$(tail -n +3 "$fam.csv" | tr -d '\r' | awk -F, -v n="$names" 'NF - 1 != n' | wc -l)
    [[ $odd == 0 ]] || fail "$fam: $odd rows without $names fields"
    sed -n 2p "$fam.csv" | grep -q '^Time \[s\],Accel Longitudinal \[g\],' ||
        fail "$fam: header $(sed -n 2p "$fam.csv")"
    # The time column counts hundredths from 0, in the plain number form.
    [[ $(sed -n 3p "$fam.csv" | cut -d, -f1) == " 0 " ]] || fail "$fam: first time"
    [[ $(sed -n 103p "$fam.csv" | cut -d, -f1) == " 1 " ]] || fail "$fam: time of row 100"

    # The whole processing: the same rows, the same columns.
    run "all-$fam" 0 export "${common[@]}" --stage all "$SAMPLES/$name.run" -o "$fam-all.csv"
    [[ $(lines "$fam-all.csv") == $(lines "$fam.csv") ]] || fail "$fam: stage all row count"
    [[ $(sed -n 2p "$fam-all.csv") == "$(sed -n 2p "$fam.csv")" ]] || fail "$fam: stage all header"
    # Distance is a derived channel: nothing before the pipeline, the lap
    # length and more after it.
    col=$(sed -n 2p "$fam.csv" | tr ',' '\n' | grep -n '^Distance \[m\]$' | cut -d: -f1)
    if [[ -z $col ]]; then
        fail "$fam: no Distance [m] column"
    else
        [[ $(tail -1 "$fam.csv" | cut -d, -f"$col") == " 0 " ]] ||
            fail "$fam: stage convert computed a distance: $(tail -1 "$fam.csv" | cut -d, -f"$col")"
        d=$(tail -1 "$fam-all.csv" | cut -d, -f"$col")
        awk -v d="$d" 'BEGIN { exit !(d + 0 > 1000) }' || fail "$fam: stage all distance $d m"
    fi
    # The same input gives the same bytes.
    run "again-$fam" 0 export "${common[@]}" --stage convert "$SAMPLES/$name.run" -o "$fam-2.csv"
    cmp -s <(tail -n +2 "$fam.csv") <(tail -n +2 "$fam-2.csv") || fail "$fam: not repeatable"

    # Every available variable: more columns, rows unchanged.
    run "allvars-$fam" 0 export --config-dir "cfgall-$fam" --family "$fam" --vehicle "$veh" \
        --all-vars --step 0.1 "$SAMPLES/$name.run" -o "$fam-vars.csv"
    [[ $(fields "$fam-vars.csv" 2) -gt $names ]] ||
        fail "$fam: --all-vars gave $(fields "$fam-vars.csv" 2) columns, default $names"
    [[ $(lines "$fam-vars.csv") == $(((last - first) / 10 + 1 + 2)) ]] ||
        fail "$fam: --step 0.1 gave $(lines "$fam-vars.csv") lines"
    [[ $(sed -n 4p "$fam-vars.csv" | cut -d, -f1) == " .1 " ]] || fail "$fam: step 0.1 times"
done

# A sample time below 0.01: the file is there and empty, as the program leaves it.
run step0 0 export --config-dir cfg-hx40 --family hx40 --step 0.005 \
    "$SAMPLES/demo_hx40_road.run" -o empty.csv
[[ -f empty.csv && ! -s empty.csv ]] || fail "step 0.005: file not empty"

# Raw exports: a line per plane sample, a line per stream byte.
run raw-hx40 0 export-raw --config-dir cfg-hx40 --family hx40 "$SAMPLES/demo_hx40_road.run" \
    -o raw-hx40.csv
raw=$(sed -n 's/.* raw=\([0-9]*\)\.\.\([0-9]*\) .*/\1 \2/p' info-hx40.out)
read -r r0 r1 <<<"$raw"
[[ $(lines raw-hx40.csv) == $((r1 - r0 + 1 + 2)) ]] || fail "raw hx40: $(lines raw-hx40.csv) lines"
[[ $(sed -n 2p raw-hx40.csv) == $'Run Name: demo_hx40_road\r' ]] || fail "raw hx40: run name"
tail -n +3 raw-hx40.csv | grep -qv '^\([0-9]\{1,3\},\)\{8\}'$'\r''$' && fail "raw hx40: line shape"
run raw-mq7 0 export-raw --config-dir cfg-mq7 --family mq7 "$SAMPLES/demo_mq7_kart.run" \
    -o raw-mq7.csv
tail -n +3 raw-mq7.csv | grep -qv '^[0-9]* -> [0-9]* : [0-9A-F]*'$'\r''$' && fail "raw mq7: line shape"
read -r b0 b1 <<<"$(sed -n 's/.* raw=\([0-9]*\)\.\.\([0-9]*\) .*/\1 \2/p' info-mq7.out)"
[[ $(lines raw-mq7.csv) == $((b1 - b0 + 1 + 2)) ]] || fail "raw mq7: $(lines raw-mq7.csv) lines"

# Refusals and usage errors.
echo "not a run" >junk.run
run refused 1 export --config-dir cfg-hx40 --family hx40 junk.run -o junk.csv
[[ -e junk.csv ]] && fail "a refused file still wrote an export"
run norun 1 export --config-dir cfg-hx40 --family hx40 --run 2 "$SAMPLES/demo_hx40_road.run" \
    -o n.csv
grep -q "there is no run 2" norun.err || fail "--run 2: $(cat norun.err)"
run no-output 2 export --family hx40 "$SAMPLES/demo_hx40_road.run"
run bad-stage 2 export --family hx40 --stage derived "$SAMPLES/demo_hx40_road.run" -o x.csv
run bad-run 2 export --family hx40 --run 0 "$SAMPLES/demo_hx40_road.run" -o x.csv
run no-file 2 export-raw --family hx40 -o x.csv
run help 0 export --help
grep -q "export \[--config-dir DIR\]" help.out || fail "export --help: $(cat help.out)"
mkdir locked && chmod 555 locked
if [[ $(id -u) != 0 ]]; then
    run unwritable 1 export --config-dir cfg-hx40 --family hx40 "$SAMPLES/demo_hx40_road.run" \
        -o locked/x.csv
fi

if ((failures)); then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "all export checks passed"
