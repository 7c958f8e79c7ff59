#!/bin/bash
# The checks' Wine desktop held open for a run of checks (tools/desktop_keeper.cpp).
#   desktop_keeper.sh start KEEPER.exe    starts it and waits until its window stands
#   desktop_keeper.sh stop KEEPER.exe     ends it
set -u
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/display.sh"
keeper=$2
pid_file=$keeper.pid ready=$keeper.ready
if [ "$1" = stop ]; then
    [ -s "$pid_file" ] && kill_tree "$(cat "$pid_file")"
    rm -f "$pid_file" "$ready"
    exit 0
fi
# Without a display shared by the checks, each check has its own and nothing needs holding.
display_answers || exit 0
rm -f "$ready"
setsid "$quondale_root/tools/wine-run" "$keeper" "Z:${ready//\//\\}" </dev/null >/dev/null 2>&1 &
echo $! > "$pid_file"
for tries in $(seq 600); do
    [ -e "$ready" ] && exit 0
    sleep 0.1
done
echo "desktop_keeper: the keeper's window did not come up"
exit 1
