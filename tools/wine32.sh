# Shared by tools/wine-run and ./quondale: the 32-bit Wine, for 32-bit programs.
#
# Debian 12's wine32 cannot be installed beside wine64 here, and this kernel may run no 32-bit
# x86 code at all. So 32-bit Wine lives in an i386 root file system of Debian stable, built once per
# machine outside the checkout, and runs in user, mount and PID namespaces of its own. Where the
# kernel cannot run i386 code, a binfmt_misc entry of the namespace's own sends it to a static
# qemu-i386 (namespaced binfmt_misc: Linux 6.7 and later). The host sees neither the mounts nor the
# entry, and every process dies with the namespace.
#
# Programs that run at the same time share one namespace, and so one wineserver, as the 64-bit
# checks share theirs; the namespace ends when nothing has run in it for a while.

wine32_cache=${QUONDALE_WINE32_CACHE:-/var/cache/quondale}
wine32_tree=$wine32_cache/i386-stable
wine32_qemu=$wine32_cache/qemu/usr/bin/qemu-i386
wine32_prefix=${QUONDALE_WINEPREFIX32:-$quondale_root/build/wineprefix32}
# Inside the tree, 32-bit Wine is /usr/bin/wine; the paths shared with the host keep their names.
wine32_packages=wine,wine32,libgl1,libglx-mesa0,libgl1-mesa-dri,libxrender1,libxrandr2,libxi6,libxcursor1,libxinerama1,libxcomposite1,libxxf86vm1,libxfixes3
# Bumped when the tree's contents change, so that an older tree is built again.
wine32_tree_version=1

wine32_say() { echo "quondale: $*" >&2; }

# PE machine field of a file: 014c for a 32-bit x86 program.
wine32_is_32bit() {
    local header machine
    header=$(od -An -tu4 -j60 -N4 "$1" 2>/dev/null | tr -d ' ')
    [ -n "$header" ] || return 1
    machine=$(od -An -tx2 -j$((header + 4)) -N2 "$1" 2>/dev/null | tr -d ' ')
    [ "$machine" = 014c ]
}

wine32_tree_ready() {
    [ "$(cat "$wine32_tree/.quondale-tree" 2>/dev/null)" = "$wine32_tree_version" ]
}

# Whether this kernel runs i386 code by itself (then qemu is not needed). QUONDALE_WINE32_QEMU=1
# emulates all the same, as on a kernel without it.
wine32_native() {
    [ "${QUONDALE_WINE32_QEMU:-0}" != 1 ] && [ -x "$wine32_tree/usr/bin/true" ] && "$wine32_tree/usr/bin/true" 2>/dev/null
}

# Starts "$@" in the background as root of a new user namespace whose ids are the host's, with
# new mount and PID namespaces; wine32_spawned is unshare's PID. Real root is needed to map every id.
wine32_spawn() {
    # Not the caller's lock: the namespace may outlive it.
    unshare --user --mount --propagation slave --pid --fork --mount-proc --kill-child \
        bash -c 'while [ "$(id -u)" != 0 ]; do sleep 0.02; done; exec "$@"' wine32 "$@" 9>&- &
    wine32_spawned=$!
    local tries
    for tries in $(seq 250); do
        [ "$(readlink "/proc/$wine32_spawned/ns/user" 2>/dev/null)" != "$(readlink /proc/self/ns/user)" ] && break
        sleep 0.02
    done
    if ! { echo "0 0 4294967295" > "/proc/$wine32_spawned/uid_map" &&
           echo "0 0 4294967295" > "/proc/$wine32_spawned/gid_map"; } 2>/dev/null; then
        kill -9 "$wine32_spawned" 2>/dev/null
        wine32_say "cannot make a user namespace for the 32-bit Wine (needs root)"
        return 1
    fi
}

# Inside the namespace: i386 code to qemu, unless the kernel runs it.
wine32_register_qemu() {
    [ "${1:-}" != always ] && wine32_native && return 0
    mount -t binfmt_misc binfmt_misc /proc/sys/fs/binfmt_misc 2>/dev/null &&
    printf '%s' ':qemu-i386:M::\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00:\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff:'"$wine32_qemu"':F' \
        > /proc/sys/fs/binfmt_misc/register 2>/dev/null || {
        wine32_say "this kernel gives a user namespace no binfmt_misc of its own (Linux 6.7 or later needed)"
        return 1
    }
}

# Inside the namespace: the tree's mounts. The checkout and /tmp (X's socket, the checks' files)
# keep their host paths inside the tree; wine32_exec adds the folders it runs in and those named
# in QUONDALE_WINE32_SHARE (separated by colons).
wine32_mount_tree() {
    mount --rbind /dev "$wine32_tree/dev" &&
    mount -t proc proc "$wine32_tree/proc" &&
    mount --rbind /tmp "$wine32_tree/tmp" || return 1
    mkdir -p "$wine32_tree$quondale_root" && mount --bind "$quondale_root" "$wine32_tree$quondale_root"
}

# The namespace's first process: sets it up, says it is ready on stdout, and ends (and with it the
# namespace) once nothing else has run in it for ten seconds.
wine32_holder() {
    ulimit -c 0
    wine32_register_qemu && wine32_mount_tree || exit 1
    echo ready
    local idle=0 pids
    while [ "$idle" -lt 20 ]; do
        sleep 0.5
        pids=(/proc/[0-9]*)
        if [ "${#pids[@]}" -le 1 ]; then idle=$((idle + 1)); else idle=0; fi
    done
}

wine32_holder_file() { echo "$wine32_prefix.holder"; }

# The PID (host's view) of the running namespace's first process, if one serves this prefix.
wine32_holder_pid() {
    local pid
    pid=$(cat "$(wine32_holder_file)" 2>/dev/null) || return 1
    [ -n "$pid" ] && tr '\0' ' ' 2>/dev/null <"/proc/$pid/cmdline" | grep -q wine32_holder && echo "$pid"
}

# Starts the namespace for a run of 32-bit programs; they join it by wine32_exec.
wine32_start() {
    wine32_holder_pid >/dev/null && return 0
    wine32_tree_ready || { wine32_say "no 32-bit Wine tree (run ./quondale setup)"; return 1; }
    local said ready= tries
    said=$(mktemp) || return 1
    mkdir -p "$(dirname "$wine32_prefix")"
    wine32_spawn bash -c "source '$quondale_root/tools/display.sh'; wine32_holder" >"$said" 2>&1 </dev/null || {
        rm -f "$said"
        return 1
    }
    for tries in $(seq 600); do
        ready=$(cat "$said")
        [[ "$ready" == *ready ]] && break
        kill -0 "$wine32_spawned" 2>/dev/null || break
        sleep 0.05
    done
    # The namespace's first process is unshare's one child.
    local holder
    holder=$(pgrep -P "$wine32_spawned" | head -n1)
    if [[ "$ready" != *ready ]] || [ -z "$holder" ]; then
        kill "$wine32_spawned" 2>/dev/null
        wine32_say "the 32-bit Wine's namespace did not start: $(cat "$said")"
        rm -f "$said"
        return 1
    fi
    rm -f "$said"
    echo "$holder" > "$(wine32_holder_file)"
}

# Ends the namespace: its first process takes every other with it.
wine32_stop() {
    local pid
    pid=$(wine32_holder_pid) && kill -9 "$pid" 2>/dev/null
    rm -f "$(wine32_holder_file)"
}

wine32_enter() {
    local pid=$1
    shift
    nsenter --target "$pid" --user --mount --pid chroot "$wine32_tree" \
        /usr/bin/env -C "$PWD" PATH=/usr/bin:/bin WINEPREFIX="$wine32_prefix" WINEARCH=win32 "$@"
}

# Runs "$@" (a program of the tree, found by its PATH) inside the namespace, in the current folder,
# with the caller's environment and the 32-bit prefix. Programs that run at the same time share one
# namespace; the first starts it.
wine32_exec() {
    local pid shares=()
    IFS=: read -ra shares <<<"${QUONDALE_WINE32_SHARE:-}"
    pid=$({ flock 9; wine32_start && wine32_holder_pid && wine32_share "$PWD" "${shares[@]}"; } \
          9>"$wine32_prefix.holder.lock") || return 125
    wine32_enter "$pid" "$@"
}

# Makes host folders visible at their own paths inside the tree of the running namespace.
wine32_share() {
    local pid folder
    pid=$(wine32_holder_pid) || return 1
    for folder in "$@"; do
        [ -n "$folder" ] && folder=$(realpath "$folder") || continue
        # The tree has its own system folders; a folder that holds the tree cannot be laid over it.
        case "$wine32_tree/" in "${folder%/}/"*) continue ;; esac
        case "$folder" in /usr | /usr/* | /etc | /etc/* | /bin | /lib | /lib32 | /lib64 | /sbin) continue ;; esac
        nsenter --target "$pid" --user --mount sh -c '
            [ "$(stat -c %d:%i "$2" 2>/dev/null)" = "$(stat -c %d:%i "$1$2" 2>/dev/null)" ] && exit 0
            mkdir -p "$1$2" && mount --bind "$2" "$1$2"' share "$wine32_tree" "$folder" || return 1
    done
}

# A file system mounted at FOLDER (a host path the tree shares) for the 32-bit Wine alone: the
# host's mounts do not reach into the namespace. wine32_view tells where the host reads it.
wine32_mount() {
    local folder=$1 pid
    shift
    pid=$({ flock 9; wine32_start && wine32_holder_pid; } 9>"$wine32_prefix.holder.lock") || return 1
    nsenter --target "$pid" --user --mount mount "$@" "$wine32_tree$folder"
}

wine32_view() {
    local pid
    pid=$(wine32_holder_pid) && echo "/proc/$pid/root$wine32_tree$1"
}

# Debian 13's static qemu-i386 (package qemu-user), fetched with an apt state of its own: nothing
# of Debian 13 is installed on the host, and the host's package sources stay as they are.
wine32_fetch_qemu() {
    [ -x "$wine32_qemu" ] && return 0
    local apt=$wine32_cache/apt-stable
    mkdir -p "$apt/state/lists/partial" "$apt/cache/archives/partial" "$apt/debs" || return 1
    echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] http://deb.debian.org/debian stable main" \
        > "$apt/sources.list"
    local options=(-o "Dir::State=$apt/state" -o "Dir::Cache=$apt/cache" -o "Dir::Etc::SourceList=$apt/sources.list"
                   -o Dir::Etc::SourceParts=/nonexistent -o Dir::State::status=/dev/null
                   -o APT::Architecture=amd64 -o APT::Architectures=amd64 -o APT::Sandbox::User=root)
    wine32_say "fetching Debian stable's qemu-user"
    apt-get "${options[@]}" update -qq </dev/null >/dev/null &&
        (cd "$apt/debs" && rm -f qemu-user_*.deb && apt-get "${options[@]}" download -qq qemu-user </dev/null) || {
        wine32_say "could not fetch qemu-user"
        return 1
    }
    rm -rf "$wine32_cache/qemu" && dpkg-deb -x "$apt/debs"/qemu-user_*.deb "$wine32_cache/qemu" &&
        [ -x "$wine32_qemu" ] && rm -f "$apt/debs"/qemu-user_*.deb
}

# The tree itself, built once per machine. A tree that is not complete is built again from nothing.
wine32_build_tree() {
    wine32_tree_ready && return 0
    command -v mmdebstrap >/dev/null || { wine32_say "mmdebstrap is not installed"; return 1; }
    mkdir -p "$wine32_cache" || return 1
    # The tree's package scripts run under qemu; once the tree is there, a kernel that runs i386
    # code runs it without.
    wine32_fetch_qemu || return 1
    local new=$wine32_tree.new log=$wine32_cache/i386-stable.log started=$SECONDS
    rm -rf "$new"
    wine32_say "building the 32-bit Wine tree in $wine32_tree (once per machine: about 250 MB to fetch, a few minutes)"
    wine32_spawn bash -c "source '$quondale_root/tools/display.sh'; wine32_make_tree '$new'" >"$log" 2>&1 </dev/null &&
        wait "$wine32_spawned" &
    local builder=$!
    # One progress line: mmdebstrap's phase.
    while kill -0 "$builder" 2>/dev/null; do
        printf '\rquondale: 32-bit Wine tree: %-60.60s' "$(grep -a '^I: ' "$log" 2>/dev/null | tail -n1 | cut -c4-)" >&2
        sleep 2
    done
    wait "$builder"
    local status=$?
    printf '\n' >&2
    # /usr/bin/wine is a link through the tree's own /etc/alternatives.
    if [ "$status" != 0 ] || [ ! -L "$new/usr/bin/wine" ] || [ ! -d "$new/usr/lib/wine" ]; then
        wine32_say "building the 32-bit Wine tree failed; see $log"
        return 1
    fi
    rm -rf "$wine32_tree" && mv "$new" "$wine32_tree" && echo "$wine32_tree_version" > "$wine32_tree/.quondale-tree"
    wine32_say "32-bit Wine tree ready in $((SECONDS - started)) s"
}

# Inside a namespace: the tree from Debian stable's main archive.
wine32_make_tree() {
    ulimit -c 0
    if [ -x "$wine32_qemu" ]; then
        wine32_register_qemu always || exit 1
    fi
    mmdebstrap --mode=root --arch=i386 --variant=apt --include="$wine32_packages" \
        stable "$1" http://deb.debian.org/debian
}
