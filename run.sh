#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# run.sh [ARGUMENT...]     installs what is missing, builds the program and starts it; the arguments go to the program
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
