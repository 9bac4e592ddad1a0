#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# test.sh           installs what is missing, builds everything and runs every test
# test.sh asan      the same under AddressSanitizer and UndefinedBehaviorSanitizer
# test.sh tsan      the tests of the device layer and the simulated controller under ThreadSanitizer
# test.sh CHECK …   one of the further checks, tools/checks/CHECK.sh; each says in its head what it does
set -euo pipefail
cd "$(dirname "$0")"
# shellcheck source=tools/setup.sh
. tools/setup.sh

preset=${1:-dev}
case $preset in
dev | asan) target=all ;;
tsan) target=thread_tests ;;
*)
    [ -x "tools/checks/$preset.sh" ] || die "usage: test.sh [asan|tsan|CHECK …], with CHECK one of:
$(basename -s .sh tools/checks/*.sh)"
    exec "tools/checks/$preset.sh" "${@:2}"
    ;;
esac

install_missing "${build_packages[@]}" "${desktop_packages[@]}" "${kit_packages[@]}"
build "$preset" "$target"
say "Testing ($preset)"
ctest --preset "$preset" -j "$(nproc)"
