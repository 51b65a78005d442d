# What the tracelab-cli tests of the drawing commands share, sourced with the
# test's name and its own arguments: CLI and S (the samples directory) from
# the command line, a WORK directory removed at exit, check NAME COMMAND...
# counting what passed and what failed, and finish to say so and end.
# Usage: source common.sh NAME "$@"
set -u
name=$1
shift
CLI=${1:?usage: ${name}_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
S=${2:?usage: ${name}_test.sh PATH/TO/tracelab-cli SAMPLES_DIR}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-cli-${name}.XXXXXX")
trap 'rm -rf "$WORK"' EXIT
passed=0
failed=0
check() {
    local name=$1
    shift
    if "$@"; then passed=$((passed + 1)); else echo "FAIL: $name" >&2; failed=$((failed + 1)); fi
}
finish() {
    echo "$passed passed, $failed failed"
    [ "$failed" = 0 ]
}
