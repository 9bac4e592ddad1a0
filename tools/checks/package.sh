#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Runs the kits' examples. Builds the packages, looks at what is in them, installs the .deb, drives a move with what its
# menu entry starts, sets up an emulated Grbl board as the manual tells, and removes it without leftovers; then the
# first drive again with the .tar.gz, unpacked in a folder with a difficult name. Needs root for the .deb; the program
# itself is run by somebody who may not write to its folder.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh
install_missing "${build_packages[@]}" "${desktop_packages[@]}" "${kit_packages[@]}" "${package_packages[@]}"

export LC_ALL=C.UTF-8 # the manual has a Chinese name, which cpack cannot pack in the C locale

root=()
user=()
if [ "$(id -u)" -eq 0 ]; then
    user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
else
    root=(sudo)
fi
[ -z "$(dpkg-query -W -f='${db:Status-Status}' mover 2>/dev/null)" ] || die "mover is installed here: remove it first."

scratch=$(mktemp -d)
home=$scratch/home
end() {
    [ -z "${board:-}" ] || kill "$board" 2>/dev/null || true
    [ -z "${installed:-}" ] || "${root[@]}" dpkg --purge mover >/dev/null
    rm -rf "$scratch"
}
trap end EXIT

# The user sees the scratch folder, but not necessarily the project's.
mkdir -p "$scratch/tools" "$home"
cp tools/with-desktop.sh tools/driving.py tools/drive.py "$scratch/tools"
chmod 755 "$scratch"

# drive PROGRAM|MENU_ENTRY [PORT]: see drive.py; run by a user with a new home.
drive() {
    rm -rf "$home"
    mkdir -m 700 "$home" "$home/run"
    [ ${#user[@]} -eq 0 ] || chown -R nobody:nogroup "$home"
    (
        cd /
        "${user[@]}" env -i PATH="$PATH" LC_ALL=C.UTF-8 HOME="$home" XDG_RUNTIME_DIR="$home/run" TMPDIR="$home" \
            QT_LOGGING_RULES='default.debug=false' \
            "$scratch/tools/with-desktop.sh" dbus-run-session -- "$scratch/tools/drive.py" "$@"
    ) 2>"$scratch/drive.log" || {
        cat "$scratch/drive.log" >&2
        die "$1 cannot be driven."
    }
}

# holds WHAT < LIST: compares the files of a package (array "files") with the sorted list on the standard input
holds() {
    diff <(LC_ALL=C sort) <(printf '%s\n' "${files[@]}" | LC_ALL=C sort) ||
        die "$1 does not hold what it should: < is missing, > is too much."
}

build release
has_manual=
if cmake --build --preset release --target help | grep -q '^manual:'; then
    has_manual=1
    install_missing "${manual_packages[@]}"
    build release manual
fi

say "Kits"
ctest --test-dir build/release --no-tests=error --output-on-failure

say "Packing"
out=build/release/packages
rm -rf "$out"
(cd build/release && cpack) >"$scratch/cpack.log" || {
    cat "$scratch/cpack.log" >&2
    die "cpack failed."
}
deb=$(realpath "$out"/*.deb)
archive=$(realpath "$out"/*.tar.gz)

say "Contents"
program=build/release/mover
for file in 'Tarsel_mover_C++SDK' 'Tarsel_mover_PythonSDK' 'Tarsel_mover_C#SDK' 'Tarsel_mover_LabViewSDK' \
    ${has_manual:+台式步进电机驱动控制器用户手册.pdf}; do
    [ -e "$program/help/$file" ] || die "$program/help has no $file."
done
program_files() {
    printf '%s\n' LICENSES.txt deviceModelsParam font-LICENSE.txt font.ttf mover mover_en_US.qm qtbase_zh_CN.qm \
        grbl/libmoverLibrary.so \
        plots/moverPlots.so \
        simulator/libmoverLibrary.so
    git ls-files controllers/simulated/scenarios | sed 's:^controllers/simulated:simulator:'
    (cd "$program" && find help -type f -not -path '*/__pycache__/*')
}
system_files() {
    local size
    for size in 16 22 24 32 48 64 128 256 512; do
        printf 'usr/share/icons/hicolor/%s/apps/mover.png\n' "${size}x$size"
    done
    cat <<'END'
usr/bin/mover
usr/lib/udev/rules.d/60-mover.rules
usr/share/applications/mover.desktop
usr/share/doc/mover/changelog.gz
usr/share/doc/mover/copyright
usr/share/icons/hicolor/scalable/apps/mover.svg
usr/share/lintian/overrides/mover
usr/share/man/man1/mover.1.gz
usr/share/metainfo/com.example.mover.metainfo.xml
END
}
mapfile -t files < <(dpkg-deb --fsys-tarfile "$deb" | tar --list --quoting-style=literal | sed -n 's:^\./\(.*[^/]\)$:\1:p')
{ program_files | sed 's:^:opt/mover/:' && system_files; } | holds "$(basename "$deb")"
mapfile -t files < <(tar --list --quoting-style=literal --file "$archive" | sed -n 's:^[^/]*/\(.*[^/]\)$:\1:p')
{ program_files && printf '%s\n' README.md GPL-3.txt; } | holds "$(basename "$archive")"

say "Form"
dpkg-deb --extract "$deb" "$scratch/deb"
for icon in "$scratch"/deb/usr/share/icons/hicolor/*x*/apps/mover.png; do
    size=${icon#*/hicolor/}
    size=${size%%/*}
    file --brief "$icon" | grep -q "^PNG image data, ${size/x/ x }," || die "$icon has another size."
done
desktop-file-validate "$scratch"/deb/usr/share/applications/*.desktop
appstreamcli validate --no-net --pedantic "$scratch"/deb/usr/share/metainfo/*.xml
lintian --allow-root --fail-on error,warning --suppress-tags bogus-mail-host "$deb"

say "Installing $(basename "$deb")"
list_files() { "${root[@]}" find /opt /usr /etc /lib/udev -xdev -printf '%p %l\n' | LC_ALL=C sort; }
# What it needs comes first, so that the lists differ by the package alone.
"${root[@]}" "${apt[@]}" satisfy "$(dpkg-deb --field "$deb" Depends)" >/dev/null
list_files >"$scratch/before"
installed=1
"${root[@]}" "${apt[@]}" install "$deb"
[ "$(mover --version | head -n 1)" = "mover $(dpkg-deb --field "$deb" Version)" ] || die "mover --version says $(mover --version)."

say "Driving what the menu entry starts"
drive /usr/share/applications/mover.desktop
[ "$(cat "$home/.config/mover/appConfig.ini")" = $'[language]\ntype=1' ] || die "The user's settings are not kept."
cp "$home/.config/mover/appConfig.ini" "$scratch"

say "Setting up a board as the manual tells"
# told LANGUAGE: the command for those who have no board.
told() { sed -n "/{#$1-setup-add}/,/^## /s:^\./run\.sh --board .*:&:p" "docs/manual/$1.md"; }
read -ra command < <(told en)
[ ${#command[@]} -eq 3 ] || die "The manual does not tell how a board is emulated."
[ "${command[*]}" = "$(told zh)" ] || die "The manuals differ in the command for a board."
port=${command[2]}
mkfifo "$scratch/input"
exec 9<>"$scratch/input" # the board ends at the end of its input
"${command[@]}" <&9 9<&- >"$scratch/board.log" 2>&1 &
board=$!
until [ "$(tail -n 1 "$scratch/board.log")" = "$port" ]; do
    kill -0 "$board" 2>/dev/null || die "${command[*]}: $(cat "$scratch/board.log")"
    sleep 0.1
done
chmod a+rw "$port"
drive /usr/share/applications/mover.desktop "$port"
kill "$board"
board=

say "Removing it"
# As when root had used the program.
"${root[@]}" cp "$scratch/appConfig.ini" /opt/mover
"${root[@]}" dpkg --purge mover
installed=
list_files >"$scratch/after"
diff "$scratch/before" "$scratch/after" || die "The package leaves something behind, or took something away."

say "Driving the unpacked $(basename "$archive")"
place="$scratch/位移台 – Prüfstand 1"
mkdir "$place"
tar --extract --file "$archive" --directory "$place" --strip-components 1
[ ${#user[@]} -eq 0 ] || chown -R nobody:nogroup "$place"
drive "$place/mover"
[ "$(cat "$place/appConfig.ini")" = $'[language]\ntype=1' ] || die "The settings are not kept beside the program."
[ ! -e "$home/.config/mover/appConfig.ini" ] || die "The settings are kept in the user's folder without need."

say "Packages are in $out"
