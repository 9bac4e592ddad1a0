#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Checks what a compiler does not: formatting, first lines, names of files, and which folder includes from which.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${style_packages[@]}"

failed=0
complain() {
    printf '%s\n' "$*" >&2
    failed=1
}

mapfile -t sources < <(git ls-files '*.h' '*.cpp' '*.c')

say "Format"
clang-format --dry-run --Werror "${sources[@]}" || complain "clang-format -i would change the files above."

say "First lines"
for file in "${sources[@]}"; do
    head -n 1 "$file" | grep -q 'SPDX-License-Identifier: MIT' || complain "$file: the first line is no licence tag"
done
for file in $(git ls-files '*.h'); do
    grep -q '^#pragma once$' "$file" || complain "$file: no #pragma once"
done
for file in $(git ls-files '*.sh' '*.cmake' '*CMakeLists.txt' .ci/run); do
    head -n 2 "$file" | grep -q 'SPDX-License-Identifier: MIT' || complain "$file: no licence tag"
done

say "Names"
# A form has the name of its class, and the class stands beside it.
for form in $(git ls-files '*.ui'); do
    class=$(sed -n 's:.*<class>\(.*\)</class>.*:\1:p' "$form" | head -n 1)
    [ "$(basename "$form" .ui)" = "$class" ] || complain "$form: its class is $class"
    [ -f "${form%.ui}.h" ] || complain "$form: no class of that name beside it"
done
# A header that declares one QObject class has that class's name.
for header in $(git grep -l Q_OBJECT -- app device session shell axis models settings console workbench widgets | grep '\.h$'); do
    grep -qE "^class $(basename "$header" .h)\b" "$header" || complain "$header: declares no class of its name"
done
# Tests mirror the tree, and say that they are tests.
for test in $(git grep -lE '^QTEST_' -- tests); do
    case $test in
    tests/*/tst_*.cpp) ;;
    *) complain "$test: not named tests/<folder>/tst_….cpp" ;;
    esac
done

say "Includes"
# folder: what it may include, files or whole folders, beside its own
allowed='
app: shell session widgets device
shell: console workbench settings axis models session widgets device
console: session widgets device
workbench: session widgets device
settings: session widgets device
axis: models session widgets device
models: session widgets device
session: device
widgets:
device:
controllers/core: device/moverLibrary.h device/moverRecords.h device/moverStatus.h device/moverMessages.h
controllers/simulated: controllers/core device/moverRecords.h device/moverStatus.h
controllers/grbl: controllers/core device/moverLibrary.h device/moverRecords.h device/moverStatus.h device/moverMessages.h device/moverSetUp.h
controllers/emulator:
'
while IFS=: read -r folder folders; do
    [ -n "$folder" ] || continue
    while IFS=: read -r file included; do
        target=${included%/*}
        [ "$target" = "$folder" ] && continue
        case " $folders " in
        *" $target "* | *" $included "*) ;;
        *) complain "$file: includes $included" ;;
        esac
    done < <(git grep -E '^#include "[a-z]+/' -- "$folder" | sed 's:\(.*\)\:#include "\(.*\)".*:\1\:\2:')
done <<<"$allowed"

say "Library calls"
# A call without the lock does not compile, as long as only device/ knows the header.
for file in $(git grep -l 'moverLibrary.h"' -- app shell session axis models settings console workbench widgets); do
    complain "$file: includes the motion library's header"
done

exit $failed
