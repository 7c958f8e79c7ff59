#!/bin/bash
# ./quondale run and play as a user meets them: one transcript, compared whole with
# expected/quondale_run.txt.    quondale_run.sh BUILD    (build/x86_64 or build/i686)
set -u
export LC_ALL=C
build=$1 root=$(cd "$(dirname "$0")/../.." && pwd) work=$(mktemp -d)
source "$root/tools/display.sh"
trap 'stop_xvfb; rm -rf "$work"' EXIT
bits=$(program_bits "$build/samples/spinning_cube.exe")
ensure_prefix "$bits" && ensure_display || exit 1
use_wine "$bits"
# The sample run from the folder FROM as PROGRAM, Continue pressed: its exit code and the script's words.
run() {
    (cd "$work/$1" && "$root/quondale" run "$2" --frames 2 --save-frame frame.rgb >/dev/null 2>"$work/said") &
    "${wine_command[@]}" "$build/tools/panel_press.exe" continue 60 spinning_cube.exe >/dev/null 2>&1 </dev/null ||
        echo "no halted panel"
    wait $!
    echo "exit $?"
    tee -a "$work/all" <"$work/said" |
        sed -En "s|$root/build/run/([^.]*)\.[A-Za-z0-9]{6}|<a copy of \1>|g; s|$work/||g; /^quondale: building /d; /^quondale: /p"
}
for folder in alone theirs placed; do mkdir "$work/$folder" && cp "$build/samples/spinning_cube.exe" "$work/$folder/"; done
echo "the user's" >"$work/theirs/Quondale.dll"
echo "says quondale" >"$work/theirs/opengl32.dll"
cp "$build/interception/"{quondale,opengl32}.dll "$work/placed/"
{
    run . alone/spinning_cube.exe
    run theirs ./spinning_cube.exe
    run . "$work/theirs/spinning_cube.exe"
    run placed spinning_cube.exe
    for folder in alone theirs placed; do echo "$folder:" $(ls "$work/$folder"); done
    cat "$work/theirs/Quondale.dll" "$work/theirs/opengl32.dll"
    for copy in $(sed -n "s|.*the copy stays in \(.*\): remove it.*|\1|p" "$work/all"); do
        echo "a copy:" $(ls "$copy") && rm -rf "$copy"
    done
    (cd "$work" && QUONDALE_WINEPREFIX=$work/prefix "$root/quondale" play none.gls >/dev/null 2>&1)
    echo "play: exit $?, $(ls -d "$work/prefix" 2>/dev/null | wc -l) Wine prefix made"
} >"$work/transcript"
diff -au "$root/tests/wine/expected/quondale_run.txt" "$work/transcript" && echo "quondale_run: passed"
