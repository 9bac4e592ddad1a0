#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# windows-qt.sh [--cached]: prints where Qt for 64-bit Windows lies. It is cross-built once, from Debian's own source,
# into a folder that the source's version and the options below choose, some 20 minutes; --cached fails instead.
#
# With it come Qt Svg and Qwt, for plots. Qwt wants Qt's Concurrent and PrintSupport; its OpenGL canvas is left out.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

# Without the tablet feature, as Debian's source has no wintab.h.
options=(
    -xplatform win32-g++ -device-option CROSS_COMPILE=x86_64-w64-mingw32-
    -opensource -confirm-license -release -shared -silent -nomake examples -nomake tests
    -qt-freetype -qt-harfbuzz -qt-libpng -qt-pcre -qt-zlib -qt-doubleconversion
    -no-dbus -no-gif -no-ico -no-icu -no-libjpeg -no-opengl -no-openssl -no-schannel -no-direct2d
    -no-feature-network -no-feature-sql -no-feature-tabletevent -no-feature-vulkan -no-feature-xml
)
sources=(qtbase-opensource-src qtsvg-opensource-src qwt)

# The versions of this machine's Qt, so that the program is the same on both systems.
version() { dpkg-query -W -f='${source:Version}' "$1" 2>/dev/null; }
versions=("$(version qtbase5-dev)" "$(version libqt5svg5-dev)" 6.1.4-2) || die "Qt's development packages are missing."

cache=${XDG_CACHE_HOME:-$HOME/.cache}/mover
key=$(printf '%s\n' "${options[@]}" "${versions[@]}" | sha256sum | head -c 12)
qt=$cache/qt-windows-${versions[0]%%+*}-$key
work=$cache/qt-windows-work
log=$work/log

# run NAME COMMAND...: what it says goes to the log; now and then how far it has come
run() {
    local name=$1
    shift
    "$@" > >(tee -a "$log" | awk -v name="$name" \
        '/^compiling / && ++files % 100 == 0 { printf "%s: %d files\n", name, files; fflush() }' >&2) 2>>"$log" || {
        tail -n 40 "$log" >&2
        die "$name failed. All that was said is in $log."
    }
}

fetch() { # fetch SOURCE VERSION FOLDER
    local apt_own=(-o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$work/sources.d" -o Dir::State::lists="$work/lists")
    if [ ! -d "$work/lists" ]; then
        mkdir -p "$work/sources.d" "$work/lists/partial"
        cat >"$work/sources.d/source.sources" <<'END'
Types: deb-src
URIs: http://deb.debian.org/debian
Suites: bookworm bookworm-updates
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg

Types: deb-src
URIs: http://deb.debian.org/debian-security
Suites: bookworm-security
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
END
        run "Lists of sources" "${apt[@]}" "${apt_own[@]}" update
    fi
    (cd "$work" && run "Fetching $1" "${apt[@]}" "${apt_own[@]}" source --download-only "$1=$2")
    run "Unpacking $1" dpkg-source --no-check -x "$work/${1}_${2#*:}.dsc" "$work/$3"
}

build_all() {
    # The compiler's threads are those of the program's own build.
    [[ $(x86_64-w64-mingw32-g++ -v 2>&1) == *'Thread model: posix'* ]] ||
        die "x86_64-w64-mingw32-g++ is not the posix one: update-alternatives --set x86_64-w64-mingw32-g++ /usr/bin/x86_64-w64-mingw32-g++-posix"
    local folder start=$SECONDS jobs=-j$(nproc)
    say "Building Qt for Windows, once: some 20 minutes on two cores, 1.5 GB of $cache meanwhile, 0.1 GB then"
    rm -rf "$work" "$qt"
    mkdir -p "$work" "$qt"
    fetch "${sources[0]}" "${versions[0]}" base
    fetch "${sources[1]}" "${versions[1]}" svg
    fetch "${sources[2]}" "${versions[2]}" qwt
    mkdir "$work/base-build" "$work/svg-build"
    (
        cd "$work/base-build"
        run "Configuring Qt" ../base/configure -prefix "$qt" -hostprefix "$qt" "${options[@]}"
        run "Qt, of some 1500 files" make "$jobs"
        run "Installing Qt" make install
    )
    (
        cd "$work/svg-build"
        run "Configuring Qt Svg" "$qt/bin/qmake" ../svg
        run "Qt Svg" make "$jobs"
        run "Installing Qt Svg" make install
    )
    (
        cd "$work/qwt"
        # What Debian hardens its own package with is not for this compiler.
        sed -i -e '/dpkg-buildflags\|_FORTIFY_SOURCE/d' -e "s:^ *QWT_INSTALL_PREFIX *=.*:QWT_INSTALL_PREFIX = $qt:" \
            -e 's:^\( *QWT_CONFIG *+= *Qwt\(OpenGL\|Widgets\|MathML\|Designer\|Examples\|Playground\|Tests\)\b\):#\1:' qwtconfig.pri
        run "Configuring Qwt" "$qt/bin/qmake" CONFIG+=release CONFIG-=debug_and_release qwt.pro
        run "Qwt" make "$jobs" sub-src
        run "Installing Qwt" make sub-src-install_subtargets
    )
    for folder in base svg qwt; do
        cp "$work/$folder"/debian/copyright "$qt/copyright-$folder"
    done
    touch "$qt/complete"
    rm -rf "$work"
    say "Qt for Windows is in $qt: $(du -sm "$qt" | cut -f 1) MB, $(((SECONDS - start) / 60)) min"
}

if [ ! -e "$qt/complete" ]; then
    [ "${1:-}" != --cached ] || exit 1
    mkdir -p "$cache"
    exec 9>"$cache/lock"
    flock 9 # somebody else may be at it
    [ -e "$qt/complete" ] || build_all >&2
fi
printf '%s\n' "$qt"
