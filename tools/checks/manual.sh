#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Checks that the user manual says what the program says, in both languages, then makes it and checks the PDF.
# manual.sh --texts does the first only: seconds, and nothing to build.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

install_missing python3
say "Texts of the manual"
python3 tools/checks/manual.py texts
[ "${1:-}" = --texts ] && exit

install_missing "${build_packages[@]}" "${desktop_packages[@]}" "${manual_packages[@]}"
build release manual
say "The PDF"
python3 tools/checks/manual.py pdf build/release/mover/help/台式步进电机驱动控制器用户手册.pdf
