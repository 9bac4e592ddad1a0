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
end() {
    [ ${#children[@]} -eq 0 ] || kill "${children[@]}" 2>/dev/null || true
    wait 2>/dev/null || true
    rm -rf "$scratch"
}
trap end EXIT

# The server picks a free display and writes its number once it takes connections.
mkfifo "$scratch/display"
Xvfb -displayfd 3 -screen 0 "${screen}x24" -nolisten tcp 3>"$scratch/display" 2>"$scratch/xvfb.log" &
children+=($!)
if ! read -r -t 20 number <"$scratch/display"; then
    cat "$scratch/xvfb.log" >&2
    echo "$0: no virtual screen" >&2
    exit 1
fi
export DISPLAY=":$number" QT_QPA_PLATFORM=xcb
unset WAYLAND_DISPLAY

openbox --sm-disable >"$scratch/openbox.log" 2>&1 &
children+=($!)
for _ in $(seq 200); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    read -r -t 0.05 <> <(:) || true
done
xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id' || {
    echo "$0: the window manager did not start" >&2
    exit 1
}
xcompmgr -n >"$scratch/xcompmgr.log" 2>&1 &
children+=($!)

"$@"
