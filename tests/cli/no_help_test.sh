#!/usr/bin/env bash
# tracelab-cli installed without the help pages beside it still starts: a
# program without windows has no help window to open.
# Usage: no_help_test.sh PATH/TO/tracelab-cli SAMPLES_DIR
set -u
CLI=${1:?usage: no_help_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
SAMPLES=${2:?usage: no_help_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-cli-nohelp.XXXXXX")
trap 'rm -rf "$WORK"' EXIT
share=$(cd "$(dirname "$CLI")/../share/tracelab" && pwd) || exit 1
mkdir -p "$WORK/prefix/bin" "$WORK/prefix/share"
cp "$CLI" "$WORK/prefix/bin/"
cp -r "$share" "$WORK/prefix/share/tracelab"
rm -rf "$WORK/prefix/share/tracelab/help"
out=$("$WORK/prefix/bin/tracelab-cli" info --config-dir "$WORK/config" --family hx40 \
    --vehicle car "$SAMPLES/demo_hx40_road.run" 2>"$WORK/err")
status=$?
if [ $status -ne 0 ] || ! grep -q '^run 1 name=demo_hx40_road ' <<<"$out"; then
    echo "FAIL: tracelab-cli without help pages: status $status" >&2
    cat "$WORK/err" >&2
    echo "1 failed" >&2
    exit 1
fi
echo "1 passed, 0 failed"
