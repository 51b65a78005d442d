#!/usr/bin/env bash
# tracelab-cli without --family and --vehicle: the family comes from the run
# files, a mix is refused; a missing file and a directory are named as such.
# Usage: family_test.sh PATH/TO/tracelab-cli SAMPLES_DIR
set -u
CLI=${1:?usage: family_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
S=${2:?usage: family_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-cli-family.XXXXXX")
trap 'rm -rf "$WORK"' EXIT
passed=0
failed=0
check() {  # check NAME CONDITION...
    local name=$1
    shift
    if "$@"; then passed=$((passed + 1)); else echo "FAIL: $name" >&2; failed=$((failed + 1)); fi
}
run() {  # run NAME ARGS...: status, stdout, stderr of one call on a fresh configuration
    local name=$1
    shift
    "$CLI" info --config-dir "$WORK/cfg-$name" "$@" >"$WORK/$name.out" 2>"$WORK/$name.err"
    echo $? >"$WORK/$name.rc"
}
rc() { cat "$WORK/$1.rc"; }

# Each family's demo loads without saying which family it is.
for demo in demo_hx40_road demo_mq7_kart demo_sv63_kart demo_sw63_oval; do
    run "$demo" "$S/$demo.run"
    check "$demo loads by its own family" test "$(rc "$demo")" = 0
    check "$demo run line" grep -q "^run 1 name=$demo " "$WORK/$demo.out"
    check "$demo no message" test ! -s "$WORK/$demo.err"
done
# Two runs of one family.
run two "$S/demo_sv63_kart.run" "$S/demo_sv63_kart.run"
check "two runs of one family" grep -q "^run 2 name=demo_sv63_kart " "$WORK/two.out"
# A mix is refused before anything loads.
run mix "$S/demo_mq7_kart.run" "$S/demo_hx40_road.run"
check "mix exits 1" test "$(rc mix)" = 1
check "mix names both" grep -q "different families.*demo_mq7_kart.run is mq7.*demo_hx40_road.run is hx40" "$WORK/mix.err"
check "mix loads nothing" test ! -s "$WORK/mix.out"
# --family still wins: an SV63 build reads an HX40 file (backward compatible).
"$CLI" info --config-dir "$WORK/cfg-forced" --family mq7 "$S/demo_hx40_road.run" >"$WORK/forced.out" 2>"$WORK/forced.err"
check "--family wins over the file" grep -q "HX40" "$WORK/forced.err"
# Missing files and directories.
run missing "$WORK/nothere.run"
check "missing exits 1" test "$(rc missing)" = 1
check "missing is named" grep -q "nothere.run: no such file" "$WORK/missing.err"
check "missing is not called unrecognised" bash -c "! grep -q 'not a recognised' '$WORK/missing.err'"
run folder "$S"
check "directory exits 1" test "$(rc folder)" = 1
check "directory is named" grep -q "is a directory, not a run file" "$WORK/folder.err"
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
