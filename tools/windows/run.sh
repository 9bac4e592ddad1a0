#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# run.sh FOLDERS PROGRAM [ARGUMENT...]: runs a program of the cross build under Wine. It finds its DLLs in FOLDERS, divided by
# colons, and Qt's plug-ins in the first of them. Qt's tests tell nothing on the standard output there, but into a file.
set -euo pipefail

folders=$1
program=$2
shift 2
# Wine hands over what begins with QT_ under this name only.
export WINEQT_PLUGIN_PATH=Z:${folders%%:*} WINEPATH=Z:${folders//:/;Z:}

# What Wine starts besides, and leaves running, must not hold this program's output open: all goes through files.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
touch "$scratch/log"
[[ $(basename "$program") != tst_* ]] || set -- "$@" -o "Z:$scratch/log,txt"
result=0
wine "$program" "$@" </dev/null >"$scratch/output" 2>"$scratch/errors" || result=$?
cat "$scratch/output" "$scratch/log"
cat "$scratch/errors" >&2
exit $result
