#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# soak.sh [MINUTES]   runs the program for MINUTES (20) with everything that polls made 20 times faster, and looks whether
#                     memory, handles, threads, the worker's queue and the lateness of the polls stay flat
#
# The first two rounds of 20 s warm up and are not judged; three more are run at least. The limits stand in
# tests/soak/Soak.cpp; the exit code is 1 when one is passed.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

minutes=${1:-20}
[[ $minutes =~ ^[1-9][0-9]*$ ]] || die "usage: soak.sh [MINUTES]"

install_missing "${build_packages[@]}"
build release soak
say "Soaking, $minutes minutes"
LC_ALL=C.UTF-8 build/release/tests/soak/soak "$minutes"
