#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# static.sh [--short] [FILE...]: clazy (level 1) and clang-tidy with the tree's .clang-tidy over the program, the motion
# libraries and the tools; any finding is an error. With files, only over those; with --short by clazy alone, which takes
# a small part of the time. Not over the tests, which may copy a list and keep a text in a constant.
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
# Each source once, also where two libraries are made of it, and none that is generated. For clazy those that are compiled
# alike, mostly a folder's, are included in one: it spends its time on Qt's headers.
rm -rf build/static
mkdir -p build/static
python3 - "$@" <<'EOF'
import json, os, re, sys
own, alike = {}, {}
for entry in json.load(open("build/release/compile_commands.json")):
    # The build includes sources in one too, but not across a whole folder.
    files = re.findall('^#include "(.*)"', open(entry["file"]).read(), re.M) if "/Unity/" in entry["file"] else [entry["file"]]
    command = entry["command"].partition(" -o ")[0]
    for file in files:
        name = os.path.relpath(file)
        if name.endswith(".cpp") and not name.startswith(("build/", "tests/")) and (len(sys.argv) == 1 or name in sys.argv):
            own.setdefault(name, {"directory": entry["directory"], "file": file, "command": f"{command} -c {file}"})
for entry in own.values():
    alike.setdefault((entry["directory"], entry["command"].partition(" -c ")[0]), []).append(entry["file"])
together = {}
for (directory, command), files in alike.items():
    name = f"build/static/{len(together)}.cpp"
    open(name, "w").writelines(f'#include "{file}"\n' for file in files)
    file = os.path.abspath(name)
    together[name] = {"directory": directory, "file": file, "command": f"{command} -c {file}"}
json.dump([*own.values(), *together.values()], open("build/static/compile_commands.json", "w"))
open("build/static/clang-tidy", "w").writelines(name + "\n" for name in own)
open("build/static/clazy", "w").writelines(name + "\n" for name in together)
EOF

# Slots are connected by name on purpose, so that connect-by-name has nothing to say here.
check() {
    local ours='(app|device|session|shell|axis|models|settings|console|widgets|workbench|plots|controllers|tools|bench|resources)'
    local tool=(clang-tidy --quiet)
    [ "$1" = clazy ] && tool=(clazy-standalone --checks=level1,no-connect-by-name --extra-arg=-Werror
        "--header-filter=$PWD/$ours/.*")
    # Built with GCC, which does not mind Qt's qCDebug().
    tool+=(--extra-arg=-Wno-gnu-zero-variadic-macro-arguments)
    local said files=("$2") file result=0
    if [ "$1" = clazy ]; then
        "${tool[@]}" -p build/static "$2" >/dev/null 2>&1 && return
        # A finding, or names that two of the sources have: each alone tells.
        mapfile -t files < <(sed 's/^#include "\(.*\)"$/\1/' "$2")
    fi
    for file in "${files[@]}"; do
        said=$("${tool[@]}" -p build/static "$file" 2>&1) || { printf '%s\n' "== $1 $file" "$said" && result=1; }
    done
    return $result
}
export -f check

for tool in "${tools[@]}"; do
    sed "s/^/$tool /" "build/static/$tool"
done | xargs -P "$(nproc)" -L 1 bash -c 'check "$@"' check || die "See the findings above."
