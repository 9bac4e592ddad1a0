#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# windows.sh         builds the program for 64-bit Windows on this machine, packs it, looks at what is in the packages, installs
#                    it under Wine without a question, drives it, removes it without leftovers; then drives the .zip,
#                    unpacked in a folder with a difficult name, and compares its start with an empty window's
# windows.sh tests   the unit tests under Wine
# windows.sh cached  whether Qt for Windows has been built: it takes some 20 minutes, once for all
# The program is run by somebody who may not write to its folder.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

case ${1:-} in
'' | tests) ;;
cached)
    tools/windows-qt.sh --cached >/dev/null
    exit
    ;;
*) die "usage: test.sh windows [tests|cached]" ;;
esac

install_missing "${build_packages[@]}" "${desktop_packages[@]}" "${windows_packages[@]}"
export LC_ALL=C.UTF-8 # the manual has a Chinese name
MOVER_WINDOWS_QT=$(tools/windows-qt.sh)
export MOVER_WINDOWS_QT

user=()
[ "$(id -u)" -ne 0 ] || user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)

scratch=$(mktemp -d)
home=$scratch/home
prefix=$home/wine
end() {
    # Wine's own processes stay for a while.
    in_wine wineserver --kill 2>/dev/null || true
    in_wine wineserver --wait 2>/dev/null || true
    rm -rf "$scratch"
}
trap end EXIT

# The user sees the scratch folder, but not necessarily the project's.
mkdir -m 700 "$home" "$home/run"
cp -r tools/with-desktop.sh tools/driving.py tools/windows/drive.py "$scratch"
chmod 755 "$scratch"
own() { [ ${#user[@]} -eq 0 ] || chown -R nobody:nogroup "$@"; }
own "$home"

# Without Wine's parts for web pages and .NET, which it would want to fetch.
in_wine() {
    (
        cd /
        "${user[@]}" env -i PATH="$PATH" LC_ALL=C.UTF-8 HOME="$home" XDG_RUNTIME_DIR="$home/run" TMPDIR="$home" \
            WINEPREFIX="$prefix" WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe=' \
            WINEQT_LOGGING_RULES='default.debug=false' "$@"
    )
}

# configure_build PRESET: a build folder of another Qt is of no use
configure_build() {
    grep -qs "^MOVER_WINDOWS_QT:.*=$MOVER_WINDOWS_QT\$" "build/$1/CMakeCache.txt" || rm -rf "build/$1"
    build release imageRenderer textManual grblEmulator # what runs here
    build "$@"
}

if [ "${1:-}" = tests ]; then
    configure_build windows-tests
    say "Testing under Wine"
    export WINEPREFIX=$scratch/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
    wineboot --init
    wineserver --wait # until Wine's session without a screen has ended, whose windows no screen would activate
    # One after the other: they share the desktop, and one session of Wine.
    result=0
    # shellcheck disable=SC2016 # it is the inner shell's
    tools/with-desktop.sh sh -c 'wineserver --persistent; ctest --preset windows-tests "$@"; result=$?; wineserver --kill; exit $result' \
        - "${@:2}" || result=$?
    exit $result
fi

configure_build windows all windowsTools
tools=build/windows/tools/windows

say "Packing"
out=build/windows/packages
rm -rf "$out"
(cd build/windows && cpack) >"$scratch/cpack.log" 2>&1 || {
    cat "$scratch/cpack.log" >&2
    die "cpack failed."
}
version=$(sed -n 's/^project(mover VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
archive=$PWD/$out/mover-$version-win64.zip
setup=$PWD/$out/mover-$version-win64-setup.exe

say "Contents"
program=build/windows/mover
program_files() {
    printf '%s\n' mover.exe Qt5Core.dll Qt5Gui.dll Qt5Widgets.dll Qt5Svg.dll Qt5Concurrent.dll Qt5PrintSupport.dll \
        qwt-qt5.dll plots/moverPlots.dll platforms/qwindows.dll styles/qwindowsvistastyle.dll \
        libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll \
        LICENSES.txt README.md GPL-3.txt deviceModelsParam font-LICENSE.txt font.ttf mover_en_US.qm qtbase_zh_CN.qm
    printf 'licenses/%s.txt\n' README Qt QtSvg Qwt LGPL-3 GPL-3 GCC MinGW-w64
    (cd "$program" && find . -name moverLibrary.dll -printf '%P\n')
    git ls-files controllers/simulated/scenarios | sed 's:^controllers/simulated:simulator:'
    (cd "$program" && find help -type f -not -path '*/__pycache__/*')
}
place="$scratch/位移台 – Prüfstand 1"
mkdir "$place"
python3 -m zipfile --extract "$archive" "$place"
mv "$place/mover-$version-win64"/* "$place"
rmdir "$place/mover-$version-win64"
diff <(program_files | LC_ALL=C sort) <(cd "$place" && find . -type f -printf '%P\n' | LC_ALL=C sort) ||
    die "$(basename "$archive") does not hold what it should: < is missing, > is too much."
for file in LICENSES.txt licenses/Qt.txt licenses/GCC.txt; do
    [ -s "$place/$file" ] || die "$file is empty."
done
megabytes=$(du -sm --apparent-size "$place" | cut -f 1)
[ "$megabytes" -le 35 ] || die "The folder has $megabytes MB."
x86_64-w64-mingw32-objdump -p "$place/mover.exe" | sed -n 's/.*DLL Name: //p' | sort >"$scratch/needed"
! grep -i moverLibrary "$scratch/needed" || die "The program is linked with the motion library, instead of loading it."

say "Linking with the C++ kit"
kit="$place/help/Tarsel_mover_C++SDK"
trials=$scratch/trials
mkdir "$trials"
python3 tools/windows/foreignLibrary.py device/moverLibrary.h "$trials"
# As the kit's README tells, with MinGW …
{
    cmake -S "$kit" -B "$trials/kit" -G Ninja -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_EXE_LINKER_FLAGS=-static \
        -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++-posix && cmake --build "$trials/kit"
} >"$trials/kit.log" 2>&1 || {
    cat "$trials/kit.log" >&2
    die "The kit's example does not build."
}
# … and by the rules of Microsoft's compiler and linker.
msvc=(clang-14 --target=x86_64-pc-windows-msvc -O2 -ffreestanding -fno-builtin)
"${msvc[@]}" -I"$kit/include" -c "$trials/linked.c" -o "$trials/linked.obj"
lld-link /entry:start /subsystem:console /nodefaultlib /out:"$trials/kit/linked.exe" "$trials/linked.obj" "$kit/lib/moverLibrary.lib"
# A maker's library, too.
"${msvc[@]}" -I. -c "$trials/library.c" -o "$trials/library.obj"
lld-link /dll /noentry /nodefaultlib /out:"$trials/moverLibrary.dll" "$trials/library.obj"
x86_64-w64-mingw32-gcc-posix -Wall -Wextra -Werror -static -I. "$trials/caller.c" -o "$trials/caller.exe"

say "Installing $(basename "$setup") under Wine"
in_wine wineboot --init 2>"$scratch/wineboot.log"
in_wine wineserver --wait
in_wine wine cmd /c exit # what Wine sets up at its first start only
cp "$setup" "$scratch/setup.exe"
folder="$prefix/drive_c/Program Files/mover"
menu="$prefix/drive_c/ProgramData/Microsoft/Windows/Start Menu/Programs"
# What is there, but for what Wine writes by itself and the installer's folder for a moment: files, and the registry without
# its times.
list_all() {
    in_wine wineserver --wait
    find "$prefix" -path '*/Temp/*' -prune -o -print | LC_ALL=C sort
    grep -h '^["[]' "$prefix"/*.reg | sed -e 's/\] [0-9]*$/]/' -e '/^"\(DriverDateData\|PendingFileRenameOperations\)"/d' | LC_ALL=C sort
}
install() {
    in_wine wine "$scratch/setup.exe" /S
    [ -e "$folder/mover.exe" ] || die "The installer has installed nothing."
}
uninstall() {
    local entry='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\mover'
    in_wine wine reg query "$entry" /v DisplayVersion | grep -q "$version" || die "Apps does not know the version."
    in_wine wine "$folder/uninstall.exe" /S
    # It goes on from a copy of itself.
    local tries=0
    while [ -e "$folder" ]; do
        [ $((++tries)) -lt 200 ] || die "The uninstaller leaves $(find "$folder")"
        sleep 0.1
    done
}
list_all >"$scratch/before"
started=$EPOCHSECONDS
install
echo "It took $((EPOCHSECONDS - started)) s."
[ -n "$(find "$menu" -name 'Mover*.lnk')" ] || die "The start menu has no entry."
uninstall
list_all >"$scratch/after"
diff "$scratch/before" "$scratch/after" || die "The package leaves something behind, or took something away."

say "Libraries and programs of another compiler"
in_wine wine "$trials/kit/example.exe" 10 | tr -d '\r'
controllers=0
in_wine wine "$trials/kit/linked.exe" || controllers=$?
[ "$controllers" = 1 ] || die "The program that lld-link has linked says $controllers."
functions=$(in_wine wine "$trials/caller.exe" "$(in_wine winepath -w "$trials/moverLibrary.dll")" | tr -d '\r')
[ "$functions" = 71 ] || die "Not called as they were built: $functions"

say "A Grbl board at a COM port"
# The emulated board at a pty, of the user who is to open it.
mkdir "$trials/grbl"
cc -shared -fPIC -O2 -Wall -Wextra -Werror -o "$trials/grbl/modemLines.so" tools/windows/modemLines.c
cp build/release/controllers/emulator/grblEmulator "$trials/kit/example.exe" "$place/grbl/moverLibrary.dll" "$trials/grbl"
cat >"$trials/grbl/controllers.json" <<'END'
{"controllers": [{"id": 2001, "kind": "grbl", "port": "COM5", "axes": [
  {"offset": 0, "stage": {"modelName": "ML-100", "pulseOneCircle": 250, "dispOneCircle": 1, "restoreSpeed": 5, "maxSpeed": 20,
                          "maxAcc": 50, "minPos": 0, "maxPos": 100}}]}]}
END
coproc board { "${user[@]}" "$trials/grbl/grblEmulator" --axes 1 --set 120=500 --link "$home/com5"; }
read -r _ <&"${board[0]}" # it has its port
in_wine wine reg add 'HKLM\Software\Wine\Ports' /v COM5 /d "$home/com5" /f >/dev/null
in_wine wineserver --wait # Wine looks for ports when its session begins
# Its server tells at length of a read that is still under way when a program ends.
controllers=$(in_wine winepath -w "$trials/grbl/controllers.json" 2>"$trials/grbl/server.log")
told=$(in_wine LD_PRELOAD="$trials/grbl/modemLines.so" MOVER_CONTROLLERS="$controllers" \
    wine "$trials/grbl/example.exe" 5 2>"$trials/grbl/log" | tr -d '\r') || true
[ "${told##*$'\n'}" = "stands at 5" ] || {
    cat "$trials/grbl/log" >&2
    die "The board at the COM port does not move to 5: $told"
}
echo "It moved to 5 mm."
input=${board[1]}
exec {input}>&- # it ends with its input
in_wine wine reg delete 'HKLM\Software\Wine\Ports' /v COM5 /f >/dev/null

say "Driving it"
install
# says EXPECTED [ARGUMENT...]: what the program tells of itself and of the library that it takes
says() {
    local told
    told=$(in_wine wine "$folder/mover.exe" "${@:2}" --version | tr -d '\r')
    [ "$told" = "mover $version"$'\n'"$1" ] || die "mover ${*:2} --version says $told"
}
says 'C:\Program Files\mover\simulator\moverLibrary.dll (simulated)'
makers=$(in_wine winepath -w "$trials/moverLibrary.dll")
says "$makers" --library "$makers"
cp "$trials/moverLibrary.dll" "$folder" # a maker's beside the program
says 'C:\Program Files\mover\moverLibrary.dll'
rm "$folder/moverLibrary.dll"
cp -r "$tools" "$scratch/tools"
cp -r "$place" "$home/place"
own "$home/place"
place=$home/place
# As in Program Files on Windows, where users may not write.
chmod -R a-w "$folder"
drive() {
    in_wine wineserver --wait # until Wine's session without a screen has ended, whose windows no screen would activate
    in_wine "$scratch/with-desktop.sh" "$scratch/drive.py" "$@" 2>"$scratch/drive.log" || {
        cat "$scratch/drive.log" >&2
        die "The program in $1 does not do what it should."
    }
}
drive "$folder" "$scratch/tools"
rm -rf build/windows/pictures
cp -r "$home/pictures" build/windows
settings=$(find "$prefix/drive_c/users" -path '*/AppData/Local/mover/appConfig.ini')
[ -n "$settings" ] || die "The settings are not in the user's profile."
chmod -R u+w "$folder"
uninstall
[ -z "$(find "$menu" -name 'Mover*.lnk')" ] || die "The start menu keeps its entry."
rm -r "$(dirname "$settings")"

say "Driving the unpacked $(basename "$archive")"
drive "$place" "$scratch/tools"
cp "$tools/emptyWindow.exe" "$place"
[ -e "$place/appConfig.ini" ] || die "The settings are not kept beside the program."

say "Starting"
drive "$place" "$scratch/tools" --start

say "Packages are in $out: $(du -m "$archive" | cut -f 1) MB and $(du -m "$setup" | cut -f 1) MB; the folder has $megabytes MB"
