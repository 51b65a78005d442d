#!/bin/sh
# Takes a picture of tracelab with a demo run loaded and the run manager
# open, on a throw-away configuration root, and prints the path of the
# picture.
#
#   scripts/screenshot.sh [OUTPUT.png]
#   scripts/screenshot.sh BUILD_DIR [OUTPUT.png] [tokens...]
#
# Builds the program first when BUILD_DIR (default: build) has none. With
# tokens after the output, the program starts with those in place of the
# demo run ("<hx40> <car> <f:samples/demo_hx40_road.run>").
#
# The program grabs its own windows (--screenshot), so no screen-capture tool
# is needed. Under Xvfb (xvfb-run) when it is installed, else offscreen.
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=$here/build
out=
case "${1:-}" in
    *.png) out=$1; shift ;;
    "") ;;
    *) build=$1; shift; out=${1:-}; [ $# -ge 1 ] && shift ;;
esac
[ -n "$out" ] || out=$build/tracelab-screenshot.png
case "$out" in /*) ;; *) out=$(pwd)/$out ;; esac
tracelab=$build/bin/tracelab
if [ ! -x "$tracelab" ]; then
    [ -f "$build/build.ninja" ] || [ -f "$build/Makefile" ] ||
        cmake -S "$here" -B "$build" -DTRACELAB_BENCH=OFF >/dev/null
    cmake --build "$build" --target tracelab >/dev/null
fi
if [ $# -eq 0 ]; then
    set -- "<hx40>" "<car>" "<f:$here/samples/demo_hx40_road.run>" --run-manager
fi
config=$(mktemp -d)
trap 'rm -rf "$config"' EXIT
if command -v xvfb-run >/dev/null 2>&1; then
    xvfb-run -a -s "-screen 0 1280x900x24" "$tracelab" --config-dir "$config" --screenshot "$out" "$@"
else
    QT_QPA_PLATFORM=offscreen "$tracelab" --config-dir "$config" --screenshot "$out" "$@"
fi
echo "$out"
