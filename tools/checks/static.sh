#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# static.sh [--short] [FILE...]: clazy (level 1) and clang-tidy with the tree's .clang-tidy over the program, the motion
# libraries and the tools; any finding is an error. With files, only over those; with --short by clazy alone, which takes
# an eighth of the time. Not over the tests, which may copy a list and keep a text in a constant.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${build_packages[@]}" "${static_packages[@]}"
tools=(clazy clang-tidy)
if [ "${1:-}" = --short ]; then
    tools=(clazy)
    shift
fi
build release mover tour bench # forms and meta objects are generated

say "Static checks"
# Each source once, also where two libraries are made of it, and none that is generated.
mkdir -p build/static
python3 - "$@" <<'EOF'
import json, os, sys
own = {}
for entry in json.load(open("build/release/compile_commands.json")):
    name = os.path.relpath(entry["file"])
    if name.endswith(".cpp") and not name.startswith(("build/", "tests/")) and (len(sys.argv) == 1 or name in sys.argv):
        own.setdefault(name, entry)
json.dump(list(own.values()), open("build/static/compile_commands.json", "w"))
open("build/static/files", "w").writelines(name + "\n" for name in own)
EOF

# Slots are connected by name on purpose, so that connect-by-name has nothing to say here.
check() {
    local ours='(app|device|session|shell|axis|models|settings|console|widgets|workbench|plots|controllers|tools|bench|resources)'
    local tool=(clang-tidy --quiet)
    [ "$1" = clazy ] && tool=(clazy-standalone --checks=level1,no-connect-by-name --extra-arg=-Werror
        "--header-filter=$PWD/$ours/.*")
    # Built with GCC, which does not mind Qt's qCDebug().
    tool+=(--extra-arg=-Wno-gnu-zero-variadic-macro-arguments)
    local said
    said=$("${tool[@]}" -p build/static "$2" 2>&1) || { printf '%s\n' "== $1 $2" "$said" && return 1; }
}
export -f check

for tool in "${tools[@]}"; do
    sed "s/^/$tool /" build/static/files
done | xargs -P "$(nproc)" -L 1 bash -c 'check "$@"' check || die "See the findings above."
