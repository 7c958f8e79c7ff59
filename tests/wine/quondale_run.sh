#!/bin/bash
# ./quondale run and play as a user meets them, told as one transcript that is compared whole with
# expected/quondale_run.txt: a program named from where the user stands, DLLs of the debugger's
# names that the user keeps beside a program, this build's DLLs already there, and play where no
# Wine prefix exists.
#   quondale_run.sh BUILD    BUILD is build/x86_64, with the sample and panel_press
set -u
build=$1
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
source "$root/tools/display.sh"
ensure_prefix || exit 1
work=$(mktemp -d)
trap 'stop_xvfb; rm -rf "$work"' EXIT
ensure_display || exit 1

# A run of the sample through ./quondale run from a folder, Continue pressed at its first halt:
# its exit code and the script's own messages.
run() {
    (cd "$1" && "$root/quondale" run "$2" --frames 2 --save-frame frame.rgb >/dev/null 2>"$work/messages") &
    local runner=$!
    "$wine_binary" "$build/tools/panel_press.exe" continue 60 spinning_cube.exe >/dev/null 2>&1 </dev/null ||
        echo "no halted panel"
    wait "$runner"
    echo "exit $?"
    cat "$work/messages" >> "$work/all_messages"
    grep '^quondale: ' "$work/messages" |
        sed -E "s|$root/build/run/([^.]*)\.[A-Za-z0-9]{6}|<scratch>/\1.XXXXXX|g; s|$work/|<work>/|g"
}

# Names and bytes of a folder's files.
digest() {
    (cd "$1" && find . -type f | sort | xargs -r md5sum)
}

{
    echo "== the program alone in its folder, named from the folder above"
    mkdir "$work/alone"
    cp "$build/samples/spinning_cube.exe" "$work/alone/"
    run "$work" alone/spinning_cube.exe
    echo "left:" $(ls "$work/alone")

    echo "== a quondale.dll and an opengl32.dll of the user's beside it, run twice"
    mkdir "$work/theirs"
    cp "$build/samples/spinning_cube.exe" "$work/theirs/"
    echo "the user's own" > "$work/theirs/quondale.dll"
    echo "says quondale but is not" > "$work/theirs/OpenGL32.dll"
    before=$(digest "$work/theirs")
    : > "$work/all_messages"
    run "$work/theirs" spinning_cube.exe
    run / "$work/theirs/spinning_cube.exe"
    [ "$(digest "$work/theirs")" = "$before" ] && echo "their folder as it was"
    copies=$(sed -n "s|.*the copy stays in $root/build/run/\([^:]*\):.*|\1|p" "$work/all_messages" | sort -u)
    echo "$(wc -w <<<"$copies") copies kept, with:"
    for copy in $copies; do
        ls "$root/build/run/$copy"
        rm -rf "${root:?}/build/run/$copy"
    done

    echo "== this build's DLLs beside the program already"
    mkdir "$work/placed"
    cp "$build/samples/spinning_cube.exe" "$build/interception/quondale.dll" "$build/interception/opengl32.dll" \
        "$work/placed/"
    run "$work/placed" ./spinning_cube.exe
    echo "left:" $(ls "$work/placed")

    echo "== play where no Wine prefix is"
    (cd "$work" && QUONDALE_WINEPREFIX=$work/prefix "$root/quondale" play none.gls >/dev/null 2>"$work/messages")
    echo "exit $?"
    # The script's own words, not the player's.
    grep -E '^quondale: (building|creating)' "$work/messages" | sed "s|$work/|<work>/|g"
    [ -e "$work/prefix" ] && echo "a prefix was made"
} > "$work/transcript"

if diff -u "$root/tests/wine/expected/quondale_run.txt" "$work/transcript"; then
    echo "quondale_run: passed"
else
    echo "quondale_run: the transcript differs from the expected one (above)"
    exit 1
fi
