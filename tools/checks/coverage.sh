#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# coverage.sh: builds everything with line counts, runs every test, and fails when they reach less than 95 of 100 lines
# of the program. The report tells the lines that none reaches. It runs the same tests as test.sh without arguments.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${build_packages[@]}" "${desktop_packages[@]}" "${kit_packages[@]}" "${coverage_packages[@]}"

minimum=95 # percent

build coverage
find build/coverage -name '*.gcda' -delete # what an earlier run has reached
say "Testing (coverage)"
ctest --preset coverage -j "$(nproc)"

say "Coverage"
# Meta objects are generated. An exception's way out of every call is no branch that anyone wrote.
gcovr --root . --filter '(app|device|shell|axis|models|settings|console|widgets)/' \
    --exclude-directories '.*_autogen.*' --exclude-throw-branches --exclude-unreachable-branches \
    -j "$(nproc)" --json build/coverage/counts.json build/coverage
gcovr --root . --add-tracefile build/coverage/counts.json --branches --txt build/coverage/branches.txt
gcovr --root . --add-tracefile build/coverage/counts.json --print-summary --fail-under-line "$minimum" \
    --txt build/coverage/lines.txt || failed=1
cat build/coverage/branches.txt build/coverage/lines.txt
[ -z "${failed:-}" ] || die "Less than $minimum % of the lines are reached."
