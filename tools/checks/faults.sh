#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Lets down the program in every way that the tests know (tests/faults), under AddressSanitizer and
# UndefinedBehaviorSanitizer: the library, the files, the machine. Prints the figures of docs/reliability.md.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${build_packages[@]}"
build asan fault_tests

say "Testing (faults)"
# Many of the tests wait for a library that takes its time: more at once than there are processors.
ctest --preset faults -j "$((2 * $(nproc)))"

say "Figures"
sed -n 's/^FIGURES //p' build/asan/Testing/Temporary/LastTest.log
