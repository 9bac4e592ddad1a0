#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# mutants.sh [PATTERN...|--sample N]: breaks the code on purpose in the places of tools/mutants/*.txt and lists what the tests do
# not notice (tools/mutants/run.py says how). With patterns, only mutants whose file or title has one of them; with
# --sample N, N of them all. Takes hours: every mutant is built.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${build_packages[@]}" "${mutants_packages[@]}"

# What was built once is not built again when a mutant is taken back.
export CCACHE_BASEDIR=$PWD/build/mutants CCACHE_NOHASHDIR=1
export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
mkdir -p build/mutants
nice -n 10 python3 tools/mutants/run.py "$@"
