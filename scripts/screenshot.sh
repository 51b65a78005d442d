#!/bin/sh
# Takes a picture of tracelab just after its start, on a throw-away
# configuration root, and prints the path of the picture.
#
#   scripts/screenshot.sh [BUILD_DIR] [OUTPUT.png] [tokens...]
#
# The program grabs its own windows (--screenshot), so no screen-capture tool
# is needed. Under Xvfb (xvfb-run) when it is installed, else offscreen.
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
out=${2:-$build/tracelab-start.png}
[ $# -ge 2 ] && shift 2 || shift $#
tracelab=$build/bin/tracelab
if [ ! -x "$tracelab" ]; then
    echo "no $tracelab: build first (cmake --build $build)" >&2
    exit 1
fi
config=$(mktemp -d)
trap 'rm -rf "$config"' EXIT
if command -v xvfb-run >/dev/null 2>&1; then
    xvfb-run -a -s "-screen 0 1280x900x24" "$tracelab" --config-dir "$config" --screenshot "$out" "$@"
else
    QT_QPA_PLATFORM=offscreen "$tracelab" --config-dir "$config" --screenshot "$out" "$@"
fi
echo "$out"
