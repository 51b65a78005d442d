#!/usr/bin/env bash
# tracelab-cli graph on the demo kart run: the axes the graph works out (the
# ranges rounded to an even span, the tick counts of the picture's size, the
# points of the fast plot), the copy text, the picture files and the refusals.
# Usage: graph_test.sh PATH/TO/tracelab-cli SAMPLES_DIR
source "$(dirname "$0")/common.sh" graph "$@"
run=$S/demo_mq7_kart.run
"$CLI" graph --config-dir "$WORK/cfg" "$run" --y "GPS Speed [kph]" --y "Engine Speed [rpm]" \
    --x "Distance [km]" --axes --copy "$WORK/copy.txt" -o "$WORK/g.png" >"$WORK/axes" 2>"$WORK/err"
check "exit 0" test $? = 0
# 3.39 km of distance: a span of 4 from 0; 115 kph: 200 from 0; the engine
# 1250 to 6900 rpm: a span of 6000 about 4200. 1600 x 900 pixels make 24000
# by 13500 twips: 21 ticks both ways. 16398 rows at 2000 points: every 9th
# row from the second, 1821 points.
check "slot 0" grep -qx "slot 0 run=1 x=0..4 xticks=21 y=0..200 yticks=21 points=1821" "$WORK/axes"
check "slot 1" grep -qx "slot 1 run=1 x=0..4 xticks=21 y=1200..7200 yticks=21 points=1821" "$WORK/axes"
check "two lines" test "$(wc -l <"$WORK/axes")" = 2
check "png" test "$(head -c 8 "$WORK/g.png" | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a
# The copy: a heading row of the five slots' titles, then pairs per slot,
# CR LF rows; rows 2 to 2000 of the points.
check "copy heading" bash -c "head -1 '$WORK/copy.txt' | grep -q \$'^demo_mq7_kart, Distance \\\\[km\\\\]\\tGPS Speed \\\\[kph\\\\]\\t'"
check "copy rows" test "$(wc -l <"$WORK/copy.txt")" = 1999
check "copy crlf" bash -c "head -1 '$WORK/copy.txt' | od -c | grep -q '\\\\r  \\\\n'"
# A small picture has 11 ticks; SVG and PDF through the same drawing.
"$CLI" graph --config-dir "$WORK/cfg" "$run" --y "GPS Speed [kph]" --size 800x500 --axes \
    -o "$WORK/g.svg" >"$WORK/small" 2>/dev/null
check "small ticks" grep -q "xticks=11 y=.* yticks=11 " "$WORK/small"
check "svg" grep -q "<svg" "$WORK/g.svg"
"$CLI" graph --config-dir "$WORK/cfg" "$run" --y "GPS Speed [kph]" -o "$WORK/g.pdf" 2>/dev/null
check "pdf" test "$(head -c 5 "$WORK/g.pdf")" = "%PDF-"
# Typed limits on every slot; a condition; all points.
"$CLI" graph --config-dir "$WORK/cfg" "$run" --y "GPS Speed [kph]" --ymin 20 --ymax 90 \
    --points all --if "GPS Speed [kph]:50:60" --axes >"$WORK/limits" 2>/dev/null
check "typed limits" grep -q " y=20..90 " "$WORK/limits"
# Refusals: an unknown variable (exit 2), no run file, a run that is not there.
"$CLI" graph --config-dir "$WORK/cfg" "$run" --y "Warp Speed" --axes >/dev/null 2>"$WORK/unknown"
check "unknown variable exit 2" test $? = 2
check "unknown variable named" grep -q 'no variable "Warp Speed"' "$WORK/unknown"
"$CLI" graph --config-dir "$WORK/cfg" --y "GPS Speed [kph]" --axes >/dev/null 2>&1
check "no run file exit 2" test $? = 2
"$CLI" graph --config-dir "$WORK/cfg" "$run" --y "GPS Speed [kph]" --run 3 --axes >/dev/null 2>&1
check "missing run exit 1" test $? = 1
finish
