# shellcheck shell=bash
# What the scripts share: paths, messages, packages, builds and the environment of Wine.
# Sourced, never run. Everything a script makes lies under build/.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build
mkdir -p "$build"

# Nothing asks questions: a script behaves the same with a terminal, a pipe or nothing on stdin.
exec </dev/null
export LC_ALL=C.UTF-8 HOME="${HOME:-$build}"
export PATH="$PATH:/usr/local/sbin:/usr/sbin:/sbin" # apt-get wants them, su leaves them out

step() { printf '[%3d s] %s\n' "$SECONDS" "$*"; }
fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# shellcheck disable=SC2034  # for the scripts that source this one
{
    build_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64 googletest fp-utils)
    wine_packages=(wine wine64 fonts-liberation fonts-wine fonts-ipafont-gothic)
    screen_packages=(xvfb openbox xdotool imagemagick)
    test_packages=(g++-mingw-w64-i686 libbenchmark-dev libchm-bin mdbtools sqlite3
        clang-14 clang-format-14 clang-tidy-14 libclang-rt-14-dev llvm-14)
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "installing packages needs root or sudo: $*"
    fi
}

# need_packages PACKAGE...: installs those that are missing.
need_packages() {
    command -v dpkg-query >/dev/null || fail "this script installs Debian packages; needed: $*"
    local installed missing=() package
    # shellcheck disable=SC2016  # the braces are dpkg-query's
    installed=$(dpkg-query -W -f '${Package}:${db:Status-Status}\n' "$@" 2>/dev/null || true)
    for package in "$@"; do
        grep -qx "$package:installed" <<<"$installed" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    step "Installing ${missing[*]}"
    local log=$build/apt.log
    if ! { as_root apt-get update && as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        fail "apt-get could not install ${missing[*]} (all of its output: $log)"
    fi
}

# Without this a compiler cache leaves out what is compiled with precompiled headers.
export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros,include_file_mtime,include_file_ctime}

# build_tree PRESET [TARGET...]: configures build/PRESET if that is due, then builds.
build_tree() {
    local preset=$1 tree=$build/$1 launcher=()
    shift
    if [ ! -e "$tree/build.ninja" ] || [ "$root/CMakePresets.json" -nt "$tree/build.ninja" ]; then
        step "Configuring $preset"
        command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        (cd "$root" && cmake --preset "$preset" "${launcher[@]}") >"$tree.configure.log" 2>&1 || {
            cat "$tree.configure.log"
            return 1
        }
        touch "$tree/build.ninja"
    fi
    # A terminal sees ninja's one moving line, a log only what went wrong.
    local quiet=(--quiet)
    [ -t 1 ] && quiet=()
    ninja -C "$tree" -k 0 "${quiet[@]}" "$@"
}

# use_wine PREFIX: Wine's environment for all that follows. No desktop integration, no offers to
# download a browser engine, no chatter on stderr.
use_wine() {
    export WINEPREFIX=$build/wine-$1 WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES='winemenubuilder.exe=d;mscoree,mshtml='
}

# stop_wine: ends every program in the current prefix, and only there.
stop_wine() {
    timeout -k 2 20 wineserver -k || true
    timeout -k 2 20 wineserver -w || true
}

# windows_path FILE: the name by which a Windows program knows a file of this machine.
windows_path() {
    local path
    path=$(realpath -- "$1")
    printf 'Z:%s' "${path//\//\\}"
}
