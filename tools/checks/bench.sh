#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# bench.sh [--short]: measures every row of the performance table and writes it to docs/performance.md; fails when a row
# is 30 % beyond its goal. With --short it takes a quarter of the time and leaves the document alone, for CI.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

install_missing "${build_packages[@]}" "${desktop_packages[@]}"
build release bench
say "Measuring"
if [ "${1:-}" = --short ]; then
    exec tools/with-desktop.sh python3 bench/measure.py build/release --short
fi
exec tools/with-desktop.sh python3 bench/measure.py build/release --output docs/performance.md
