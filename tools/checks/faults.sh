#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# faults.sh [--short]: lets down the program in every way that the tests know (tests/faults), under AddressSanitizer and
# UndefinedBehaviorSanitizer: the library, the files, the machine; and with the library for Grbl boards an emulated board.
# Prints the figures of docs/reliability-figures.md. With --short each function of the library has a quarter of its faults.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${build_packages[@]}"
build asan fault_tests tst_GrblProgram

[ "${1:-}" != --short ] || export MOVER_FAULTS_SHORT=1
say "Testing (faults)"
# Many of the tests wait for a library that takes its time: more at once than there are processors.
ctest --preset faults -j "$((2 * $(nproc)))"

say "Figures"
sed -n 's/^FIGURES //p' build/asan/Testing/Temporary/LastTest.log
