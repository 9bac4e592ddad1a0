# SPDX-License-Identifier: MIT
# What run.sh, test.sh and .ci/run share; sourced by them from the project's root.

build_packages=(
    g++ cmake ninja-build pkg-config
    qtbase5-dev qtbase5-private-dev libqt5svg5-dev libqwt-qt5-dev qttools5-dev qttools5-dev-tools qttranslations5-l10n
    libudev-dev nlohmann-json3-dev
    fonts-noto-cjk python3-fonttools
)
desktop_packages=(xvfb openbox xcompmgr xdotool x11-utils)
kit_packages=(python3 mono-mcs mono-runtime)
manual_packages=(pandoc weasyprint poppler-utils)
style_packages=(clang-format python3)
clang_packages=(clang-14 libclang-rt-14-dev lld llvm-14)
static_packages=(clang-tidy clazy)
coverage_packages=(gcovr)
mutants_packages=(ccache)
windows_packages=(
    g++-mingw-w64-x86-64-posix gcc-mingw-w64-base binutils-mingw-w64-x86-64 mingw-w64-common clang-14 lld llvm-14
    wine wine64 nsis dpkg-dev make python3-pil
)
package_packages=(dpkg-dev file lintian appstream desktop-file-utils dbus-daemon at-spi2-core python3-gi gir1.2-atspi-2.0)

say() { printf '\033[1m== %s\033[0m\n' "$*"; }

die() {
    printf '%s\n' "$*" >&2
    exit 1
}

# A machine that has just started looks for updates by itself, and a download may have to be started again.
apt=(
    env DEBIAN_FRONTEND=noninteractive
    apt-get -q -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=600 -o Acquire::Retries=3 --yes --no-install-recommends
)

# install_missing PACKAGE...: installs the Debian packages that are not there yet. On another system it names what is
# needed and carries on if Qt is there.
install_missing() {
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        say "This is not a Debian system. Needed, under whatever names it has here: $*"
        command -v cmake >/dev/null || die "cmake is missing."
        command -v ninja >/dev/null || die "ninja is missing."
        pkg-config --exists 'Qt5Widgets >= 5.15' 2>/dev/null || die "Qt 5.15 is missing."
        return
    fi
    local missing=() package
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || die "Install these packages as root, then start again: ${missing[*]}"
        root=(sudo)
    fi
    say "Installing ${missing[*]}"
    "${root[@]}" "${apt[@]}" update || die "apt-get update failed."
    "${root[@]}" "${apt[@]}" install "${missing[@]}" ||
        die "Installing ${missing[*]} failed."
}

# build PRESET [TARGET...]: configures when the build folder is new or the presets have changed, then builds.
build() {
    local preset=$1
    shift
    case $preset in asan | tsan | fuzz) install_missing "${clang_packages[@]}" ;; esac
    # CMake looks for changes in its own files by itself, but not in the presets: those of the last time are kept.
    if [ ! -f "build/$preset/build.ninja" ] || ! cmp -s CMakePresets.json "build/$preset/presets.json"; then
        say "Configuring ($preset)"
        cmake --preset "$preset" || die "Configuring failed."
        cp CMakePresets.json "build/$preset/presets.json"
    fi
    say "Building ($preset)"
    cmake --build --preset "$preset" ${1:+--target "$@"}
    # Which lines an earlier build has reached: every program would complain that it does not fit.
    [ "$preset" != asan ] || find build/asan -name '*.gcda' -delete
}

# Qt asks for a private run-time directory; a bare machine has none.
if [ -z "${XDG_RUNTIME_DIR:-}" ] || [ ! -d "${XDG_RUNTIME_DIR:-}" ]; then
    XDG_RUNTIME_DIR=/tmp/mover-runtime-$(id -u)
    mkdir -p "$XDG_RUNTIME_DIR"
    chmod 700 "$XDG_RUNTIME_DIR"
    export XDG_RUNTIME_DIR
fi
