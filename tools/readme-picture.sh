#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Makes the picture in README.md from the tour. A page that shows the README needs it in the repository; it is the
# only picture there.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

install_missing "${build_packages[@]}" "${desktop_packages[@]}" python3-pil
build release tour-pictures/zh.taken
/usr/bin/python3 tools/tour/cutPicture.py build/release/tour-pictures/zh driving \
    "widget_titleBar MoverControlWidget MoverControlWidget-2" docs/pictures/main-window.png
