# Shared by tools/wine-run and ./quondale: find the Wine binaries and the prefix, and make sure an
# X server answers on $DISPLAY, starting a private Xvfb when none does.

quondale_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$quondale_root/tools/wine32.sh"

# Debian's wine64 package has no /usr/bin/wine; the loader lives under /usr/lib/wine.
find_wine() {
    local candidate
    for candidate in "${QUONDALE_WINE:-}" /usr/lib/wine/wine64 "$(command -v wine64 2>/dev/null)" \
                     "$(command -v wine 2>/dev/null)"; do
        if [ -n "$candidate" ] && [ -x "$candidate" ]; then
            wine_binary=$candidate
            wineserver_binary=$(dirname "$candidate")/wineserver
            [ -x "$wineserver_binary" ] || wineserver_binary=$(command -v wineserver 2>/dev/null || true)
            return 0
        fi
    done
    echo "quondale: no Wine found (run ./quondale setup)" >&2
    return 1
}

# wine_command for programs of 32 or 64 bits: the host's Wine for 64-bit programs, the 32-bit
# Wine's (tools/wine32.sh) for 32-bit ones; wait_wineserver waits up to 20 s for its server to end.
use_wine() {
    wine_bits=$1
    if [ "$wine_bits" = 32 ]; then
        wine_command=(wine32_exec wine)
    else
        wine_command=("$wine_binary")
    fi
}

wait_wineserver() {
    if [ "${wine_bits:-64}" = 32 ]; then
        wine32_exec timeout 20 wineserver -w
    else
        timeout 20 "$wineserver_binary" -w
    fi
}

# 32 for a 32-bit Windows program, 64 otherwise.
program_bits() {
    if wine32_is_32bit "$1"; then echo 32; else echo 64; fi
}

# The prefix belongs to the build folder so that a fresh checkout never touches ~/.wine.
export WINEPREFIX="${QUONDALE_WINEPREFIX:-$quondale_root/build/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEARCH=win64

# The one place that says which opengl32.dll a program gets: with "debugger" the copy beside it
# (the forwarder to quondale.dll) before Wine's own, with "system" Wine's. No Mono or Gecko.
wine_overrides() {
    case "${1:-debugger}" in
        system) echo "mscoree,mshtml=;opengl32=b" ;;
        *) echo "mscoree,mshtml=;opengl32=n,b" ;;
    esac
}

# A shell command line under the Wine of 32 or 64 bits, in which "wine" and "wineserver" are its.
wine_shell() {
    if [ "$1" = 32 ]; then
        wine32_exec sh -c "$2"
    else
        W=$wine_binary S=$wineserver_binary sh -c 'wine() { "$W" "$@"; }; wineserver() { "$S" "$@"; }; '"$2"
    fi
}

# Creates the prefix of 64 (the default) or 32 bits once; a lock keeps parallel test runs from
# booting it twice. The checks start their application on a desktop named "quondale", which Wine
# draws as one window of this size with the frames and titles of the windows inside it.
ensure_prefix() {
    local bits=${1:-64} prefix=$WINEPREFIX what="Wine prefix"
    if [ "$bits" = 32 ]; then
        wine32_tree_ready || { echo "quondale: no 32-bit Wine here (run ./quondale setup)" >&2; return 1; }
        prefix=$wine32_prefix what="32-bit Wine prefix"
    else
        find_wine || return 1
    fi
    local desktop='"quondale"="1280x1024"'
    [ -f "$prefix/system.reg" ] && grep -q "$desktop" "$prefix/user.reg" 2>/dev/null && return 0
    mkdir -p "$(dirname "$prefix")"
    (
        flock 9
        if [ ! -f "$prefix/system.reg" ]; then
            echo "quondale: creating the $what $prefix" >&2
            # No Mono or Gecko: their installers would ask questions.
            WINEDEBUG=-all WINEDLLOVERRIDES=$(wine_overrides system) DISPLAY= \
                wine_shell "$bits" 'wine wineboot -i; wineserver -w' </dev/null >/dev/null 2>&1
        fi
        grep -q "$desktop" "$prefix/user.reg" 2>/dev/null ||
            WINEDEBUG=-all DISPLAY= wine_shell "$bits" \
                "wine reg add 'HKCU\\Software\\Wine\\Explorer\\Desktops' /v quondale /d 1280x1024 /f; wineserver -w" \
                </dev/null >/dev/null 2>&1
    ) 9>"$prefix.lock"
    grep -q "$desktop" "$prefix/user.reg" 2>/dev/null || { echo "quondale: wineboot failed for $prefix" >&2; return 1; }
}

# A process and everything it started: the 32-bit Wine's program is a grandchild of nsenter.
kill_tree() {
    local child
    for child in $(pgrep -P "$1"); do
        kill_tree "$child"
    done
    kill -9 "$1" 2>/dev/null
}

display_answers() {
    [ -n "${DISPLAY:-}" ] && command -v xdpyinfo >/dev/null && xdpyinfo >/dev/null 2>&1
}

xvfb_pid=

# Starts Xvfb on a display number that it picks itself (-displayfd), so parallel runs never collide.
start_xvfb() {
    local number_file
    command -v Xvfb >/dev/null || { echo "quondale: Xvfb is not installed (run ./quondale setup)" >&2; return 1; }
    number_file=$(mktemp)
    Xvfb -displayfd 9 -screen 0 1280x1024x24 -nolisten tcp 9>"$number_file" >/dev/null 2>&1 &
    xvfb_pid=$!
    local tries
    for tries in $(seq 100); do
        [ -s "$number_file" ] && break
        kill -0 "$xvfb_pid" 2>/dev/null || break
        sleep 0.05
    done
    if [ ! -s "$number_file" ]; then
        rm -f "$number_file"
        echo "quondale: Xvfb did not start" >&2
        xvfb_pid=
        return 1
    fi
    export DISPLAY=":$(head -n1 "$number_file")"
    rm -f "$number_file"
}

stop_xvfb() {
    if [ -n "$xvfb_pid" ]; then
        kill "$xvfb_pid" 2>/dev/null
        wait "$xvfb_pid" 2>/dev/null
        xvfb_pid=
    fi
}

ensure_display() {
    display_answers || start_xvfb
}

