#!/bin/bash
# The sample recorded twice with nobody at the panel (./quondale record, under Wine), then the
# two recordings compared by the native player's diff: the same, and with one call changed by
# hand in the second. The whole transcript against expected/record_diff.txt.
#   record_diff.sh SAMPLE PLAYER WORK EXPECTED
set -u
sample=$1 player=$2 work=$3 expected=$4
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
rm -rf "$work"
mkdir -p "$work/app"
cp "$sample" "$work/app/"
export QUONDALE_BUILT=1
transcript=$work/transcript.txt
: > "$transcript"
history_of() { ls -S "$1"/*.gls | head -n1; }
for run in record "record again"; do
    echo "== $run" >> "$transcript"
    folder=$("$root/quondale" record "$work/app/spinning_cube.exe" --frames 30 --out "$work/recording" -- --frames 1000 2>>"$work/record.log")
    echo "exit $?" >> "$transcript"
    echo "${folder#$work/}: $(grep -c 'glsString("Info", "wglSwapBuffers");' "$(history_of "$folder")") swap notes" >> "$transcript"
done
a=$(history_of "$work/recording") b=$(history_of "$work/recording-2")
echo "== diff of the two" >> "$transcript"
"$player" diff "$a" "$b" --out "$work/same" 2>>"$work/diff.log" | grep -v diff.html >> "$transcript"
echo "exit ${PIPESTATUS[0]}" >> "$transcript"
echo "== diff with frame 5's glTranslatef(-1.7, 0, 0) made (-1.2, 0, 0) in B" >> "$transcript"
awk '/^glsString\("Info", "wglSwapBuffers"\);/ { ++frame }
     frame == 4 && /^glTranslatef\(-1\.7, 0, 0\);/ { sub(/-1\.7/, "-1.2") } { print }' "$b" > "$work/changed.gls"
"$player" diff "$a" "$work/changed.gls" --out "$work/changed" 2>>"$work/diff.log" | grep -v diff.html |
    sed -E 's/[0-9]+ pixels differ/N pixels differ/' >> "$transcript"
echo "exit ${PIPESTATUS[0]}" >> "$transcript"
[ -s "$work/changed/difference-0005.png" ] || echo "no difference-0005.png" >> "$transcript"
if ! diff -u "$expected" "$transcript"; then
    echo "record_diff: see $work/record.log and $work/diff.log"
    exit 1
fi
echo "recorded twice, the same, and the changed call found"
