#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# grbl.sh [--short]: the library for Grbl boards against the emulated board: what a stage may count on, against counted
# steps; ports, faults, alarms; the program on it, in a tour and a fault matrix; figures of wire, processor time, stop and
# ripple. At length it plays 200 random sessions of two minutes and more on three axes; with --short, for CI, 8 of them.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

install_missing "${build_packages[@]}"
build dev grbl_tests
build release benchGrbl
say "Testing (Grbl)"
if [ "${1:-}" = --short ]; then
    export MOVER_FAULTS_SHORT=1
else
    export GRBL_SEEDS=200
fi
# Those that run the program mostly wait: more at once than there are processors.
ctest --test-dir build/dev --output-on-failure --timeout 600 -L grbl -j "$((2 * $(nproc)))"
say "Figures"
build/release/bench/benchGrbl build/release/controllers/emulator/grblEmulator
