#!/usr/bin/env bash
# tracelab-cli map on the demo road run: the picture files (PNG, SVG, PDF),
# a PNG that holds the track's colours and not just white, and the refusals
# of an unknown variable and of a run that is not loaded.
# Usage: map_test.sh PATH/TO/tracelab-cli SAMPLES_DIR
source "$(dirname "$0")/common.sh" map "$@"
run=$S/demo_hx40_road.run
"$CLI" map --config-dir "$WORK/cfg" "$run" --var "GPS Speed [kph]" --laps -o "$WORK/m.png" \
    2>"$WORK/err"
check "exit 0" test $? = 0
check "png" test "$(head -c 8 "$WORK/m.png" | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a
# Not blank: the picture holds many colours (the path coloured by speed),
# told by how far it compresses against a white picture of the same size.
"$CLI" map --config-dir "$WORK/cfg" "$run" --runs 1 --size 400x300 -o "$WORK/small.png" 2>/dev/null
check "small png" test -s "$WORK/small.png"
check "not blank" test "$(stat -c %s "$WORK/m.png")" -gt 8000
"$CLI" map --config-dir "$WORK/cfg" "$run" -o "$WORK/m.svg" 2>/dev/null
check "svg" grep -q "<svg" "$WORK/m.svg"
check "svg has lines" test "$(grep -c "<path\|<polyline" "$WORK/m.svg")" -gt 0
"$CLI" map --config-dir "$WORK/cfg" "$run" -o "$WORK/m.pdf" 2>/dev/null
check "pdf" test "$(head -c 5 "$WORK/m.pdf")" = "%PDF-"
# Refusals: an unknown variable (exit 2, named), a run not loaded (exit 1),
# a bad run list and no output (exit 2).
"$CLI" map --config-dir "$WORK/cfg" "$run" --var "Warp Speed" -o "$WORK/x.png" 2>"$WORK/unknown"
check "unknown variable exit 2" test $? = 2
check "unknown variable named" grep -q 'no variable "Warp Speed"' "$WORK/unknown"
check "nothing written" test ! -e "$WORK/x.png"
"$CLI" map --config-dir "$WORK/cfg" "$run" --runs 1,3 -o "$WORK/x.png" 2>"$WORK/missing"
check "missing run exit 1" test $? = 1
check "missing run named" grep -q 'there is no run 3' "$WORK/missing"
"$CLI" map --config-dir "$WORK/cfg" "$run" --runs 1,x -o "$WORK/x.png" >/dev/null 2>&1
check "bad run list exit 2" test $? = 2
"$CLI" map --config-dir "$WORK/cfg" "$run" >/dev/null 2>&1
check "no output exit 2" test $? = 2
finish
