#!/bin/sh
# run.sh PROGRAM [OPTION...]: runs the conformance program on this processor if it has 1024-bit SVE, and otherwise under
# user-mode emulation of one that has.
set -u

if [ "$(uname -m)" = aarch64 ]; then
    "$@"
    status=$?
    test $status -eq 77 || exit $status
fi
if ! command -v qemu-aarch64 >/dev/null; then
    echo "conformance: NOT CHECKED, there is neither 1024-bit SVE nor qemu-aarch64 here" >&2
    exit 77
fi
exec qemu-aarch64 -cpu max,sve-max-vq=8,sve-default-vector-length=128 "$@"
