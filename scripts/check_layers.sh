#!/usr/bin/env bash
# Fails when a source file includes a room above its own.
#
# The rooms of src/, from the ground up (see src/road/run_road.h for what
# each holds). A file may include its own room and any room below it. The
# simulator stands apart: it includes nothing of the program.
#
#   scripts/check_layers.sh [SOURCE_ROOT]
set -euo pipefail
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$root/src"

rooms=(core formats store convert results derived files link views road platform/render platform/qt views/qt shell)
rank_of() {
    local room=$1 i
    for i in "${!rooms[@]}"; do
        if [ "${rooms[$i]}" = "$room" ]; then
            # Widgets of the views stand beside the shell's.
            # The Gui surfaces stand beside the widgets' platform; the views'
            # widgets beside the shell.
            [ "$room" = platform/render ] && { echo 11; return; }
            [ "$room" = platform/qt ] && { echo 11; return; }
            [ "$room" = views/qt ] && { echo 13; return; }
            [ "$room" = shell ] && { echo 13; return; }
            echo "$i"
            return
        fi
    done
    echo -1
}
room_of_file() {
    local f=$1
    case "$f" in
        platform/qt/* | platform/render/*) echo "${f%/*}" ;;
        views/qt/*) echo views/qt ;;
        *) echo "${f%%/*}" ;;
    esac
}
room_of_include() {
    local inc=$1
    case "$inc" in
        platform/qt/* | platform/render/*) echo "${inc%/*}" ;;
        views/qt/*) echo views/qt ;;
        *) echo "${inc%%/*}" ;;
    esac
}

bad=0
checked=0
while IFS= read -r -d '' f; do
    f=${f#./}
    room=$(room_of_file "$f")
    if [ "$room" = sim ]; then
        if grep -n -E '^[[:space:]]*#[[:space:]]*include[[:space:]]+"' "$f" | grep -v -E '"sim/' >/dev/null; then
            grep -n -E '^[[:space:]]*#[[:space:]]*include[[:space:]]+"' "$f" | grep -v -E '"sim/' |
                sed "s|^|$f:|; s|\$|   (the simulator includes only itself)|"
            bad=1
        fi
        continue
    fi
    mine=$(rank_of "$room")
    if [ "$mine" -lt 0 ]; then
        echo "$f: the room '$room' is not in the list of scripts/check_layers.sh"
        bad=1
        continue
    fi
    checked=$((checked + 1))
    while IFS=: read -r line inc; do
        target=$(room_of_include "$inc")
        theirs=$(rank_of "$target")
        if [ "$theirs" -lt 0 ]; then
            [ -d "$target" ] || continue  # a header beside the file, or a generated one
            echo "$f:$line: includes \"$inc\" of the room '$target', which is not in the list"
            bad=1
        elif [ "$theirs" -gt "$mine" ]; then
            echo "$f:$line: includes \"$inc\": '$room' may not include '$target', a room above it"
            bad=1
        fi
    done < <(sed -n -E 's/^[[:space:]]*#[[:space:]]*include[[:space:]]+"([^"]+)".*/\1/p' "$f" |
        nl -ba -w1 -s: | sed 's/\t//' |
        while IFS=: read -r n inc; do
            l=$(grep -n -F "\"$inc\"" "$f" | head -1 | cut -d: -f1)
            echo "$l:$inc"
        done)
done < <(find . -type f \( -name '*.h' -o -name '*.cpp' \) -print0 | sort -z)

if [ "$bad" -ne 0 ]; then
    echo "layering: includes that point up (see above)"
    exit 1
fi
echo "layering: $checked files, every include points down or across"
