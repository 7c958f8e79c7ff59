#!/bin/bash
# Takes a picture of the control window under the X display: runs panel_screenshot.exe, waits
# until it is halted with the panel up, saves the whole screen as a PNG and lets it quit.
#   panel_screenshot.sh PROGRAM.exe OUTPUT.png
set -u
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/display.sh"
program=$1
output=$2
folder=$(dirname "$program")

ensure_prefix || exit 1
trap stop_xvfb EXIT
ensure_display || exit 1
export WINEDLLOVERRIDES="mscoree,mshtml=;opengl32=n,b"

cd "$folder" || exit 1
rm -f panel_screenshot.ready panel_screenshot.taken
# A virtual desktop of its own, so that Wine draws the frames and titles itself: Xvfb has no
# window manager to do it.
"$wine_binary" explorer /desktop=quondale_panel,800x600 "$(basename "$program")" &
app=$!
for tries in $(seq 600); do
    [ -e panel_screenshot.ready ] && break
    kill -0 "$app" 2>/dev/null || break
    sleep 0.05
done
if [ ! -e panel_screenshot.ready ]; then
    echo "FAIL: the program never showed its halted panel" >&2
    kill "$app" 2>/dev/null
    exit 1
fi
mkdir -p "$(dirname "$output")"
import -display "$DISPLAY" -window root "$output"
shot=$?
touch panel_screenshot.taken
wait "$app"
status=$?
rm -f panel_screenshot.ready panel_screenshot.taken
[ -n "$xvfb_pid" ] && timeout 20 "$wineserver_binary" -w
if [ "$shot" != 0 ] || [ ! -s "$output" ]; then
    echo "FAIL: no picture in $output" >&2
    exit 1
fi
# A blank screen has a colour or two; the panel has its frame, text and buttons.
colours=$(convert "$output" -format %k info:)
if [ "$colours" -lt 8 ]; then
    echo "FAIL: $output has only $colours colours" >&2
    exit 1
fi
if [ "$status" != 0 ]; then
    echo "FAIL: the program ended with $status after Quit" >&2
    exit 1
fi
echo "panel picture: $output"
