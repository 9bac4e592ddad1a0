#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# coverage.sh: every test under AddressSanitizer and UndefinedBehaviorSanitizer, as test.sh asan, and how much of the
# program they reach. Fails below 95 of 100 lines; the report tells the lines that none reaches.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${build_packages[@]}" "${desktop_packages[@]}" "${coverage_packages[@]}"

minimum=95 # percent

build asan
say "Testing (asan)"
ctest --preset asan -j "$(nproc)"

say "Coverage"
# Meta objects are generated. An exception's way out of every call is no branch that anyone wrote.
gcovr --root . --gcov-executable "llvm-cov-14 gcov" \
    --filter '(app|device|session|shell|axis|models|settings|console|widgets|workbench|controllers)/' \
    --exclude controllers/emulator/ --exclude-directories '.*_autogen.*' --exclude-throw-branches \
    --exclude-unreachable-branches -j "$(nproc)" --json build/asan/counts.json build/asan
gcovr --root . --add-tracefile build/asan/counts.json --branches --txt build/asan/branches.txt
gcovr --root . --add-tracefile build/asan/counts.json --print-summary --fail-under-line "$minimum" \
    --txt build/asan/lines.txt || failed=1
cat build/asan/branches.txt build/asan/lines.txt
[ -z "${failed:-}" ] || die "Less than $minimum % of the lines are reached."
