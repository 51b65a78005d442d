#!/usr/bin/env bash
# End-to-end checks of "tracelab-cli info": exact output lines, messages on
# stderr and exit codes, on run files written here byte by byte.
# Usage: info_test.sh PATH/TO/tracelab-cli
set -u
CLI=${1:?usage: info_test.sh PATH/TO/tracelab-cli}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-cli-test.XXXXXX")
trap 'rm -rf "$WORK"' EXIT
cd "$WORK" || exit 1
failures=0

fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

# --- writing run files -------------------------------------------------
byte() { local h; printf -v h '%02x' $(($1 & 255)); printf "\\x$h"; }
int32() { byte "$1"; byte $(($1 >> 8)); byte $(($1 >> 16)); byte $(($1 >> 24)); }
head() { int32 7576; int32 "$1"; }

# plane FILE TYPE N "h1 ... h8" [GPSAT]: eight planes of a header byte and N
# samples. Vector 3 keeps its GPS marker (bit 0) clear except, when GPSAT is
# given, in the frame before GPSAT; frames GPSAT to GPSAT+6 then hold the
# text of a GPS sentence.
plane() {
    local file=$1 type=$2 n=$3 gps=${5:--100}
    local -a hdr=($4)
    local sentence=",120000,8,5200.1234,N,00100.5678,W,045.0,A*                 "
    {
        head "$type"; int32 "$n"
        for v in 0 1 2 3 4 5 6 7; do
            byte "${hdr[$v]}"
            for ((i = 0; i < n; i++)); do
                if ((i >= gps && i < gps + 7)); then
                    # The sentence reads from the last frame of the block.
                    local c=${sentence:$(((6 - (i - gps)) * 8 + v)):1}
                    printf '%s' "$c"
                elif ((v == 2)); then
                    byte $(((i * 6) & 0xFE | (i == gps - 1 ? 1 : 0)))
                elif ((v == 0)); then
                    byte $(((i * 7) & ~4))   # SV63 reads bit value 4 as its GPS mark
                else
                    byte $((i * 7 + v * 31))
                fi
            done
        done
    } >"$file"
}

stream() {  # stream FILE TYPE LENGTH
    { head "$2"; for ((i = 0; i < $3; i++)); do byte $((i * 37 + 11)); done; } >"$1"
}

# run CASE EXPECTED-RC ARGS...: runs the CLI; stdout in $CASE.out, stderr in
# $CASE.err.
run() {
    local name=$1 rc=$2
    shift 2
    "$CLI" "$@" >"$name.out" 2>"$name.err"
    local got=$?
    [[ $got == "$rc" ]] || fail "$name: exit code $got, expected $rc; stderr: $(cat "$name.err")"
}
expect_out() {  # expect_out CASE LINE...
    local name=$1
    shift
    local expected
    expected=$(printf '%s\n' "$@")
    [[ "$(cat "$name.out")" == "$expected" ]] ||
        fail "$name: stdout was"$'\n'"$(cat "$name.out")"$'\n'"expected"$'\n'"$expected"
}
expect_err() {  # expect_err CASE TEXT: a line of stderr is exactly TEXT
    grep -qxF -- "$2" "$1.err" || fail "$1: stderr lacks \"$2\"; it was: $(cat "$1.err")"
}

# --- files ---------------------------------------------------------------
plane a.b.run 1 100 "1 2 3 4 5 6 7 8"
plane gps.run 1 200 "0 0 0 0 32 0 0 0" 100   # one GPS block: 200 frames, 193 rows
plane meter.run 202 60 "2 0 0 0 0 0 0 9"     # SV63, 2 rows a frame
stream kart.run 200 40
stream empty.run 201 0
{ head 10; int32 0; } >session.run
{ int32 1234; int32 1; } >bad.run
{ head 11; int32 0; } >old.run

# --- cases ----------------------------------------------------------------
run hx40 0 info --config-dir cfg --family hx40 --vehicle kart a.b.run gps.run
expect_out hx40 \
    "run 1 name=a raw=0..99 rows=1..100 length=100 header=1,2,3,4,5,6,7,8" \
    "run 2 name=gps raw=100..299 rows=101..293 length=193 header=0,0,0,0,32,0,0,0"
[[ -s hx40.err ]] && fail "hx40: unexpected stderr: $(cat hx40.err)"
[[ -f cfg/BuildOptions.cfg && -f cfg/Configuration/HX40_Tracelab.cfg ]] ||
    fail "hx40: the configuration root was not created"

# SV63: every frame strictly inside the margins (60 - 6 frames) gives as
# many rows as its first header byte says: 2 for meter.run, 1 for a.b.run.
run sv63 0 info --config-dir cfg --family sv63 meter.run a.b.run
expect_out sv63 \
    "run 1 name=meter raw=0..59 rows=1..108 length=108 header=2,0,0,0,0,0,0,9" \
    "run 2 name=a raw=60..159 rows=109..202 length=94 header=1,2,3,4,5,6,7,8"
expect_err sv63 "This file is from an old version of the software and is supported for backward compatibility with the beta test version of the SV63 software, to ensure future compatibility please save the run from this version of the software"

# Stream runs: the rows come from the stream scan; the raw stretch is one
# longer than the file's bytes.
run mq7 0 info --config-dir cfg --family mq7 kart.run
mapfile -t lines <mq7.out
[[ ${#lines[@]} == 1 && ${lines[0]} == "run 1 name=kart raw=0..40 rows="*" length="*" header=0,0,0,0,0,0,0,0" ]] ||
    fail "mq7: $(cat mq7.out)"
run sw63 0 info --config-dir cfg --family sw63 empty.run
[[ $(cat sw63.out) == "run 1 name=empty raw=0..0 rows="* ]] || fail "sw63: $(cat sw63.out)"

# Without --family the family comes from the run file, whatever
# BuildOptions.cfg says (it stays the fallback for files of no known type).
mkdir -p own && printf '0\r\n3\r\n0\r\n0\r\n' >own/BuildOptions.cfg
run buildoptions 0 info --config-dir own gps.run
expect_out buildoptions "run 1 name=gps raw=0..199 rows=1..193 length=193 header=0,0,0,0,32,0,0,0"
printf '1\r\n0\r\n0\r\n0\r\n' >own/BuildOptions.cfg
run fromfile 0 info --config-dir own gps.run
expect_out fromfile "run 1 name=gps raw=0..199 rows=1..193 length=193 header=0,0,0,0,32,0,0,0"
# A family given on the command line wins and refuses the other family's run.
run wrongfamily 1 info --config-dir own --family mq7 gps.run
expect_out wrongfamily ""
expect_err wrongfamily "This version of the Tracelab software and the Run file are incompatible. This version of Tracelab if for the MQ7, but the run is from a HX40. Loading will be terminated."

# Refused files leave their message and a non-zero exit; the others load.
run refused 1 info --config-dir cfg --family hx40 bad.run session.run a.b.run old.run
expect_out refused "run 1 name=a raw=0..99 rows=1..100 length=100 header=1,2,3,4,5,6,7,8"
expect_err refused "bad is not a recognised run file"
expect_err refused "old.run cannot be loaded, possibly because it is from an old version of the software. To load a run from a different version of the software, ensure it is saved as a raw data file without any analysis."
grep -q "session file. Session files are not yet supported" refused.err ||
    fail "refused: no session message: $(cat refused.err)"

# One file at a time is refused once RunCount + 1 reaches 10, so nine runs
# load this way (the tenth only comes with a multiple selection).
files=()
for k in 1 2 3 4 5 6 7 8 9 10; do cp a.b.run "r$k.run"; files+=("r$k.run"); done
run capacity 1 info --config-dir cfg --family hx40 "${files[@]}"
[[ $(wc -l <capacity.out) == 9 ]] || fail "capacity: $(cat capacity.out)"
grep -qx "run 9 name=r9 raw=800..899 rows=801..900 length=100 header=1,2,3,4,5,6,7,8" capacity.out ||
    fail "capacity: run 9 line missing: $(cat capacity.out)"
expect_err capacity "tracelab-cli info: r10.run was not loaded"
expect_err capacity "You cannot load all these runs, it would exceed the maximum number of runs allowed"

# Usage errors.
run noargs 2
run nofile 2 info --config-dir cfg
run unknown 2 info --colour red a.b.run
run badfamily 2 info --family hx41 a.b.run
run badvehicle 2 info --vehicle truck a.b.run
run badcommand 2 frobnicate
run help 0 --help
grep -q "tracelab-cli info \[--config-dir DIR\]" help.out || fail "help: $(cat help.out)"
run infohelp 0 info --help
grep -q "Usage" infohelp.out || fail "info --help: $(cat infohelp.out)"

if ((failures > 0)); then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "all tracelab-cli info checks passed"
