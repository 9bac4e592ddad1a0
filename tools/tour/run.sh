#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# run.sh TOUR DIRECTORY [PASS...]: takes the tour in both languages at 1x and 2x, or those passes (zh, en, zh@2x, en@1.5x,
# en@1366x768 on a screen of that size, …); pictures go to DIRECTORY/<pass>.
set -euo pipefail
tour=$(realpath "$1")
directory=$(realpath "$2")
desktop=$(dirname "$(realpath "$0")")/../with-desktop.sh

passes=("${@:3}")
[ ${#passes[@]} -gt 0 ] || passes=(zh en zh@2x en@2x)

for name in "${passes[@]}"; do
    language=${name%@*}
    scale=1
    screen=
    case $name in
        *@*x) scale=${name#*@} scale=${scale%x} ;;
        *@*) screen=${name#*@} ;;
    esac
    [ -n "$screen" ] || screen=$(awk -v scale="$scale" 'BEGIN { print 1920 * scale "x" 1200 * scale }')
    mkdir -p "$directory/$name"
    rm -f "$directory/$name"/*.png
    printf -- '-- %s\n' "$name"
    QT_SCALE_FACTOR=$scale "$desktop" --screen "$screen" "$tour" --language "$language" "$directory/$name"
done
printf 'Pictures are in %s\n' "$directory"
