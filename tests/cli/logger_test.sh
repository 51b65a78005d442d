#!/usr/bin/env bash
# End-to-end checks of "tracelab-cli logger" against tracelab-logger-emu on a
# pseudo-terminal serving the demo road run: info, list, download compared
# byte for byte with what the emulator served, under each fault of the line
# and the logger; every fault ends with the exact bytes or with the
# program's message, exit status 1 and no file.
# Usage: logger_test.sh PATH/TO/tracelab-cli PATH/TO/tracelab-logger-emu SAMPLES_DIR
set -u
CLI=$(realpath "${1:?usage}")
EMU=$(realpath "${2:?usage}")
SAMPLES=$(realpath "${3:?usage}")
RUN=$SAMPLES/demo_hx40_road.run
FAMILY=hx40
BYTES=241504
WORK=$(mktemp -d "${TMPDIR:-/tmp}/tracelab-logger-test.XXXXXX")
EMU_PID=
trap '[ -n "$EMU_PID" ] && kill "$EMU_PID" 2>/dev/null; rm -rf "$WORK"' EXIT
cd "$WORK" || exit 1
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

# start_emu ARGS...: the emulator in the background; DEV is its device.
start_emu() {
    [ -n "$EMU_PID" ] && kill "$EMU_PID" 2>/dev/null && wait "$EMU_PID" 2>/dev/null
    rm -f emu.out
    "$EMU" "$RUN" "$@" >emu.out 2>emu.err &
    EMU_PID=$!
    for _ in $(seq 100); do
        [ -s emu.out ] && break
        sleep 0.05
    done
    DEV=$(head -n 1 emu.out | sed -n 's/^device //p')
    [ -n "$DEV" ] || fail "emulator printed no device ($*)"
}

logger() { "$CLI" logger --config-dir "$WORK/cfg" --family "$FAMILY" --port "$DEV" "$@"; }

# same_as_served FILE: the saved run holds the served header, then the empty
# sample at the run's first raw index, then every served sample.
same_as_served() {
    python3 - "$RUN" "$1" <<'PY'
import struct, sys
a = open(sys.argv[1], 'rb').read(); b = open(sys.argv[2], 'rb').read()
n = struct.unpack('<i', a[8:12])[0]; m = struct.unpack('<i', b[8:12])[0]
ok = b[:8] == a[:8] and m == n + 1 and len(b) == 12 + 8 * (m + 1)
for v in range(8):
    pa = a[12 + v * (n + 1):12 + (v + 1) * (n + 1)]
    pb = b[12 + v * (m + 1):12 + (v + 1) * (m + 1)]
    ok = ok and pb[0] == pa[0] and pb[1] == 0 and pb[2:] == pa[1:]
sys.exit(0 if ok else 1)
PY
}

# download_case NAME EMU-ARGS...: exact bytes, or exit 1 with a message and
# no file.
download_case() {
    local name=$1
    shift
    start_emu --baud 0 "$@"
    rm -rf out && mkdir out
    local start=$SECONDS
    logger download 1 -o out >dl.out 2>dl.err
    local rc=$?
    if [ $((SECONDS - start)) -gt 60 ]; then fail "$name: took $((SECONDS - start)) s"; fi
    if [ $rc -eq 0 ]; then
        local file
        file=$(sed -n 's/.* file=//p' dl.out)
        grep -q "^downloaded run 1 bytes=$BYTES packet=[0-9]* file=" dl.out || fail "$name: $(cat dl.out)"
        same_as_served "$file" || fail "$name: the saved run differs from the served one"
    else
        [ $rc -eq 1 ] || fail "$name: exit $rc"
        [ -s dl.err ] || fail "$name: no message"
        [ -z "$(ls out)" ] || fail "$name: a file stayed: $(ls out)"
    fi
    echo "$name: exit $rc $(head -c 200 dl.err)"
}

start_emu --baud 0
out=$(logger info) || fail "info exit $?"
[[ $out == "logger family=2 serial=4711 "* ]] || fail "info: $out"
out=$(logger list) || fail "list exit $?"
[ "$out" = "$(printf 'run 1 bytes=30188 number=0 end=30188 type=0 time=-\nruns 1')" ] || fail "list: $out"

# The directory at the true line rate, its bytes coming one by one.
start_emu
out=$(logger list) || fail "list at 115200 exit $?"
[ "$out" = "$(printf 'run 1 bytes=30188 number=0 end=30188 type=0 time=-\nruns 1')" ] ||
    fail "list at 115200: $out"
# A family without this link is refused before anything is sent.
"$CLI" logger --config-dir "$WORK/cfg" --family mq7 --port "$DEV" list >/dev/null 2>err.txt
[ $? -eq 2 ] || fail "mq7 is a usage error"
grep -q "HX40 loggers and SV63 meters" err.txt || fail "mq7: $(cat err.txt)"

download_case clean
download_case bit-errors --bit-errors 1e-5
download_case stall --stall 2@50000
download_case old-firmware --old-firmware
download_case die-after --die-after 3
# Five empty transfers end the run without a message of the program's own.
grep -q "run 1 was not downloaded" dl.err || fail "die-after: $(cat dl.err)"
download_case quit-mid-download --quit-after 4
download_case wrong-family --family-byte 3
grep -q "incorrect version of firmware" dl.err || fail "wrong-family: $(cat dl.err)"

download_case dropped-bytes --drop 1e-5 --seed 5
download_case doubled-bytes --dup 1e-5 --seed 5

# The SV63 meter: its wake sequence, its slower answers and its own pauses.
RUN=$SAMPLES/demo_sv63_kart.run
FAMILY=sv63
BYTES=85184
download_case sv63-clean
download_case sv63-bit-errors --bit-errors 1e-5
RUN=$SAMPLES/demo_hx40_road.run
FAMILY=hx40

start_emu --baud 0
out=$(logger erase --yes) || fail "erase exit $?"
[ "$out" = erased ] || fail "erase: $out"
logger erase >/dev/null 2>&1
[ $? -eq 2 ] || fail "erase without --yes is a usage error"
logger download x >/dev/null 2>&1
[ $? -eq 2 ] || fail "download x is a usage error"
logger download 2 -o out >/dev/null 2>&1
[ $? -eq 1 ] || fail "a run the logger does not hold"

exit $((failures > 0))
