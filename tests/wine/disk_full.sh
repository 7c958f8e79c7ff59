#!/bin/bash
# The sample under the debugger with its history on a disk that fills up: the history stops
# growing with one warning, and the program draws all its frames and ends by itself.
#   disk_full.sh FOLDER    FOLDER holds the sample, panel_press and the debugger's two DLLs
set -u
folder=$1
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/display.sh"
disk=$(mktemp -d)
bits=$(program_bits "$folder/spinning_cube.exe")
ensure_prefix "$bits" || exit 1
use_wine "$bits"
# A small disk of its own needs root; without it the check cannot be made here. The 32-bit Wine
# gets it in its own namespace, where the host reads it through wine32_view.
seen=$disk
if [ "$bits" = 32 ]; then
    wine32_mount "$disk" -t tmpfs -o size=64k tmpfs 2>/dev/null && seen=$(wine32_view "$disk")
else
    mount -t tmpfs -o size=64k tmpfs "$disk" 2>/dev/null
fi || {
    echo "disk_full: cannot mount a small disk here (not root?)"
    rmdir "$disk"
    exit 77
}
finish() {
    [ "$bits" = 32 ] || umount "$disk"
    rmdir "$disk"
    stop_xvfb
}
trap finish EXIT
ensure_display || exit 1
WINEDLLOVERRIDES=$(wine_overrides debugger)
export WINEDLLOVERRIDES
export QUONDALE_FATAL_TO_STDERR=1

cd "$folder" || exit 1
"${wine_command[@]}" cmd /c "set TEMP=Z:${disk//\//\\}&& spinning_cube.exe --frames 60" >"$disk.out" 2>"$disk.err" &
program=$!
"${wine_command[@]}" panel_press.exe continue 60 spinning_cube.exe >/dev/null </dev/null
timeout 120 tail --pid="$program" -f /dev/null
wait "$program"
status=$?

failed=0
fail() {
    echo "disk_full: $*"
    failed=1
}
[ "$status" = 0 ] || fail "the sample ended with $status"
grep -q '^spinning_cube: 60 frames' "$disk.out" || fail "the sample did not draw its 60 frames: $(cat "$disk.out")"
warnings=$(grep -c 'The history file cannot grow (is the disk full?): its lines stop here, and the program goes on.' "$disk.err")
[ "$warnings" = 1 ] || fail "$warnings warnings instead of one; standard error: $(cat "$disk.err")"
history=$(ls "$seen"/QUONDALE_*/history/*.gls 2>/dev/null | grep -v '/0\.gls$' | head -n1)
[ -s "$history" ] || fail "no context history on the small disk"
rm -f "$disk.out" "$disk.err"
[ "$failed" = 0 ] && echo "disk_full: passed"
exit "$failed"
