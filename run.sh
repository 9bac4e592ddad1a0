#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# run.sh [ARGUMENT...]     installs what is missing, builds the program and starts it; the arguments go to the program
# run.sh --emulator grbl   starts it on an emulated Grbl board, for anyone without one; further arguments as above
# run.sh --board PORT      has an emulated Grbl board answer at PORT, a path, until Ctrl+C: to be set up in the program
# run.sh --tour DIRECTORY  drives the program through everything it can do and saves pictures of every window
set -euo pipefail
started_in=$PWD # what the arguments name lies relative to this folder
cd "$(dirname "$0")"
root=$PWD
# shellcheck source=tools/setup.sh
. tools/setup.sh

tour() {
    install_missing "${build_packages[@]}" "${desktop_packages[@]}"
    build release tour
    exec tools/tour/run.sh build/release/tour/tour "$1"
}

if [ "${1:-}" = --tour ]; then
    [ $# -eq 2 ] || die "usage: run.sh --tour DIRECTORY"
    pictures=$(cd "$started_in" && mkdir -p -- "$2" && realpath -- "$2")
    tour "$pictures"
fi

board=(
    build/release/controllers/emulator/grblEmulator
    --set "1=255" --set "22=1" --set "23=7" --set "24=300" --set "25=1800" --set "26=25"
    --set "110=1800" --set "111=1800" --set "112=1800" --set "120=500" --set "121=500" --set "122=500"
)
if [ "${1:-}" = --board ]; then
    [ $# -eq 2 ] || die "usage: run.sh --board PORT"
    port=$(cd "$started_in" && realpath --no-symlinks -- "$2")
    install_missing "${build_packages[@]}"
    build release grblEmulator
    say "An emulated board answers at $port until Ctrl+C"
    exec "${board[@]}" --link "$port"
fi

# A board without a board: the emulated one at a port of its own, and the library for such boards in place of the others.
# What is kept for it goes with it.
if [ "${1:-}" = --emulator ]; then
    [ "${2:-}" = grbl ] || die "usage: run.sh --emulator grbl [ARGUMENT...]"
    shift 2
    install_missing "${build_packages[@]}"
    build release mover grblEmulator
    folder=$(mktemp -d)
    sleep infinity | "${board[@]}" --link "$folder/board" >/dev/null &
    emulator=$!
    trap 'kill "$emulator" 2>/dev/null; pkill -P $$ sleep 2>/dev/null; rm -rf "$folder"' EXIT
    axes=
    for letter in X Y Z; do
        axes+="${axes:+, }{\"letter\": \"$letter\", \"stage\": {\"modelName\": \"Emulated $letter\", \"pulseOneCircle\": 250,
            \"dispOneCircle\": 1, \"maxSpeed\": 25, \"maxAcc\": 50, \"minPos\": 0, \"maxPos\": 200}}"
    done
    printf '{"controllers": [{"id": 2001, "kind": "grbl", "port": "%s/board", "axes": [%s]}]}\n' "$folder" "$axes" \
        >"$folder/controllers.json"
    export MOVER_CONTROLLERS=$folder/controllers.json MOVER_LIBRARY=$root/build/release/mover/grbl/libmoverLibrary.so
    say "Starting, with an emulated board: home it, twice, before the first move"
    cd "$started_in"
    "$root/build/release/mover/mover" "$@"
    exit
fi

asks_only=
for argument in "$@"; do
    case $argument in -h | --help | -v | --version) asks_only=1 ;; esac
done
if [ -z "$asks_only" ] && [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}${QT_QPA_PLATFORM:-}" ]; then
    say "No display: taking the tour instead, pictures go to build/tour"
    mkdir -p build/tour
    tour "$root/build/tour"
fi

install_missing "${build_packages[@]}"
build release mover
say "Starting"
cd "$started_in"
exec "$root/build/release/mover/mover" "$@"
