#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# with-desktop.sh [--screen WIDTHxHEIGHT] COMMAND [ARGUMENT...]
# Runs the command on a desktop of its own (virtual screen, window manager, compositor) and exits with its code.
set -euo pipefail

screen=1920x1200
if [ "${1:-}" = --screen ]; then
    screen=$2
    shift 2
fi
[ $# -gt 0 ] || {
    echo "usage: $0 [--screen WIDTHxHEIGHT] COMMAND [ARGUMENT...]" >&2
    exit 2
}

children=()
scratch=$(mktemp -d)
end_children() {
    [ ${#children[@]} -eq 0 ] || kill "${children[@]}" 2>/dev/null || true
    wait 2>/dev/null || true
    children=()
}
end() {
    end_children
    rm -rf "$scratch"
}
trap end EXIT

# The server picks a free display and writes its number once it takes connections.
start_screen() {
    local number
    mkfifo "$scratch/display"
    Xvfb -displayfd 3 -screen 0 "${screen}x24" -dpi 96 -nolisten tcp 3>"$scratch/display" 2>"$scratch/xvfb.log" &
    children+=($!)
    read -r -t 20 number <"$scratch/display" || return 1
    rm "$scratch/display"
    export DISPLAY=":$number"
}
# It says that it has come up: before, it is to be seen already but forgets windows that want to be shown.
start_window_manager() {
    mkfifo "$scratch/ready"
    openbox --sm-disable --startup "sh -c 'echo ready >$scratch/ready'" >"$scratch/openbox.log" 2>&1 &
    children+=($!)
    read -r -t 20 _ <>"$scratch/ready" || return 1
    rm "$scratch/ready"
}

# A server that ends at this moment can take the socket of a new one with the same number away: then once more.
for attempt in 1 2 3; do
    start_screen && start_window_manager && break
    if [ "$attempt" = 3 ]; then
        cat "$scratch"/*.log >&2
        echo "$0: no desktop" >&2
        exit 1
    fi
    end_children
    rm -f "$scratch/display" "$scratch/ready"
done
export QT_QPA_PLATFORM=xcb
unset WAYLAND_DISPLAY
xcompmgr -n >"$scratch/xcompmgr.log" 2>&1 &
children+=($!)

"$@"
