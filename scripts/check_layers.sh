#!/usr/bin/env bash
# Fails when a source file includes a room above its own.
#
# The rooms of src/, from the ground up (src/road/run_road.h says what each
# holds). A file may include its own room and any room below it; rooms on one
# rank may include each other. The simulator stands apart: it includes
# nothing of the program.
#
#   scripts/check_layers.sh [SOURCE_ROOT]
set -euo pipefail
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$root/src"

# room:rank
ranks=(core:0 formats:1 store:2 convert:3 results:4 derived:5 files:6 link:7 views:8 road:9
    platform/render:10 platform/qt:10 views/qt:11 shell:11)

# The room of a path below src/ (a file, or an include's target).
room_of() {
    case "$1" in
        platform/*/* | views/qt/*) echo "${1%/*}" ;;
        *) echo "${1%%/*}" ;;
    esac
}
rank_of() {
    local entry
    for entry in "${ranks[@]}"; do
        if [ "${entry%:*}" = "$1" ]; then
            echo "${entry##*:}"
            return
        fi
    done
    echo -1
}

bad=0
checked=0
while IFS= read -r -d '' f; do
    f=${f#./}
    room=$(room_of "$f")
    includes=$(grep -n -E '^[[:space:]]*#[[:space:]]*include[[:space:]]+"[^"]+"' "$f" |
        sed -E 's/^([0-9]+):.*"([^"]+)".*/\1 \2/' || true)
    if [ "$room" = sim ]; then
        while read -r line inc; do
            [ -z "$line" ] && continue
            case "$inc" in sim/*) ;; *)
                echo "$f:$line: includes \"$inc\": the simulator includes only itself"
                bad=1
                ;;
            esac
        done <<<"$includes"
        continue
    fi
    mine=$(rank_of "$room")
    if [ "$mine" -lt 0 ]; then
        echo "$f: the room '$room' is not in the list of scripts/check_layers.sh"
        bad=1
        continue
    fi
    checked=$((checked + 1))
    while read -r line inc; do
        [ -z "$line" ] && continue
        target=$(room_of "$inc")
        theirs=$(rank_of "$target")
        if [ "$theirs" -lt 0 ]; then
            [ -d "$target" ] || continue  # a header beside the file, or a generated one
            echo "$f:$line: includes \"$inc\" of the room '$target', which is not in the list"
            bad=1
        elif [ "$theirs" -gt "$mine" ]; then
            echo "$f:$line: includes \"$inc\": '$room' may not include '$target', a room above it"
            bad=1
        fi
    done <<<"$includes"
done < <(find . -type f \( -name '*.h' -o -name '*.cpp' \) -print0 | sort -z)

if [ "$bad" -ne 0 ]; then
    echo "layering: includes that point up (see above)"
    exit 1
fi
echo "layering: $checked files, every include points down or across"
