#!/bin/sh
# in_root.sh SYSROOT COMMAND...: runs a command on an AArch64 machine with SYSROOT as the root of the file system, so that
# programs find the libraries and files that they were packed with. The project's own files have the same paths inside.
set -eu
project=$(cd "$(dirname "$0")/../.." && pwd)
sysroot=$1
shift
as_root=
[ "$(id -u)" -eq 0 ] || as_root=--map-root-user
# shellcheck disable=SC2016 # the inner shell's
exec unshare --mount $as_root sh -c '
    project=$1 sysroot=$2 directory=$(pwd)
    shift 2
    for path in /dev /proc /tmp "$project"; do
        mkdir -p "$sysroot$path"
        mount --rbind "$path" "$sysroot$path"
    done
    exec /usr/sbin/chroot "$sysroot" /usr/bin/env -C "$directory" "$@"' sh "$project" "$sysroot" "$@"
