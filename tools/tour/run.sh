#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# run.sh TOUR DIRECTORY: takes the tour in both languages at 1x and 2x; pictures go to DIRECTORY/<language>[@2x].
set -euo pipefail
tour=$(realpath "$1")
directory=$(realpath "$2")
desktop=$(dirname "$(realpath "$0")")/../with-desktop.sh

for pass in zh:1:1920x1200 en:1:1920x1200 zh:2:3840x2400 en:2:3840x2400; do
    IFS=: read -r language scale screen <<<"$pass"
    name=$language
    [ "$scale" = 1 ] || name="$language@${scale}x"
    mkdir -p "$directory/$name"
    rm -f "$directory/$name"/*.png
    printf -- '-- %s\n' "$name"
    QT_SCALE_FACTOR=$scale "$desktop" --screen "$screen" "$tour" --language "$language" "$directory/$name"
done
printf 'Pictures are in %s\n' "$directory"
