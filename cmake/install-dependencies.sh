#!/bin/sh
# install-dependencies.sh WHAT...: installs by apt-get what is missing for each WHAT, and does nothing where nothing is:
#   make      make itself
#   aarch64   to build for AArch64, and to run what was built
#   host      to build the emulation core for this machine
#   bench     what counts instructions, besides that for AArch64
#   kernel    to boot a virtual AArch64 machine
set -eu

missing=

# need PACKAGE COMMAND-OR-FILE: the package is missing unless the command or file is there.
need() {
    case $2 in
    /*) test ! -e "$2" || return 0 ;;
    *) ! command -v "$2" >/dev/null || return 0 ;;
    esac
    missing="$missing $1"
}

need_build_tools() {
    need cmake cmake
    need ninja-build ninja
    need googletest /usr/src/googletest/CMakeLists.txt
}

for what in "$@"; do
    case $what in
    make) need make make ;;
    aarch64)
        need_build_tools
        if [ "$(uname -m)" = aarch64 ]; then
            need g++ g++
        else
            need g++-aarch64-linux-gnu aarch64-linux-gnu-g++
            need qemu-user qemu-aarch64
        fi
        ;;
    host)
        need_build_tools
        need g++ g++
        ;;
    bench)
        need gcc gcc
        need qemu-user qemu-aarch64
        ;;
    kernel)
        need qemu-system-arm qemu-system-aarch64
        need cpio cpio
        ;;
    *)
        echo "$0: unknown: $what" >&2
        exit 2
        ;;
    esac
done

if [ -n "$missing" ]; then
    # shellcheck disable=SC2086 # a list of words
    missing=$(printf '%s\n' $missing | sort -u | tr '\n' ' ')
    if ! command -v apt-get >/dev/null; then
        echo "Please install: $missing(these are Debian's names; there is no apt-get here)" >&2
        exit 1
    fi
    as_root=
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Please install as root: apt-get install $missing" >&2
            exit 1
        fi
        as_root=sudo
    fi
    echo "Installing what is missing: $missing"
    $as_root apt-get update -q
    # shellcheck disable=SC2086 # a list of words
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
fi

if command -v cmake >/dev/null; then
    version=$(cmake --version | sed -n '1s/[^0-9]*\([0-9]*\)\.\([0-9]*\).*/\1 \2/p')
    if [ "${version% *}" -lt 3 ] || { [ "${version% *}" -eq 3 ] && [ "${version#* }" -lt 25 ]; }; then
        echo "CMake 3.25 or newer is needed (Debian 12, Ubuntu 24.04); $(command -v cmake) is older." >&2
        exit 1
    fi
fi
