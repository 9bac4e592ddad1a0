#!/bin/sh
# SPDX-License-Identifier: MIT
#
# update-translations.sh [--check]
# Brings resources/i18n/mover_en_US.ts up to the texts of the program. With --check it changes nothing and fails when
# there is something to bring up. Source locations are left out, so that moved lines are no change.
set -eu

cd "$(dirname "$0")/.."
catalogue=resources/i18n/mover_en_US.ts
lupdate=${LUPDATE:-lupdate}

sources=
for folder in app device shell axis models settings console workbench widgets; do
    [ -d "$folder" ] && sources="$sources $folder"
done

# lupdate reads the catalogue for the translations that exist and writes the new state of it.
update() {
    # shellcheck disable=SC2086 # a list of folders
    "$lupdate" -silent -locations none -no-ui-lines -source-language zh_CN -target-language en_US \
        -extensions cpp,h,ui $sources -ts "$1"
}

case "${1:-}" in
--check)
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    cp "$catalogue" "$scratch/mover_en_US.ts"
    update "$scratch/mover_en_US.ts"
    if ! diff -u "$catalogue" "$scratch/mover_en_US.ts"; then
        echo "$catalogue is behind the program: run tools/update-translations.sh and translate what is new." >&2
        exit 1
    fi
    ;;
"") update "$catalogue" ;;
*)
    echo "usage: $0 [--check]" >&2
    exit 2
    ;;
esac
