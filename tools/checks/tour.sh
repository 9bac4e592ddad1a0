#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Takes the tour in both languages at 1x, at 2x and on a small screen. Fails on a step that does not end as it should, and on a picture that
# is missing, blank or of the wrong size. The pictures stay in build/release/tour-pictures.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

install_missing "${build_packages[@]}" "${desktop_packages[@]}" python3-pil
rm -f build/release/tour-pictures/*.taken # taken again, also when nothing has changed
build release tour_pictures
say "The pictures"
/usr/bin/python3 tools/checks/tour.py build/release/tour-pictures
