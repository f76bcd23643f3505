#!/bin/sh
# run.sh BUILD: runs programs of the engine's tests directly and under the `ostrel` of the build tree BUILD, in a virtual
# AArch64 machine without SVE that boots Debian's kernel, and compares output and status. User-mode emulation stands in
# for the kernel and does not do all as it does: it makes a fork of a vfork, and delivers signals between blocks of
# instructions only. Prints a line for each case; fails if there is a difference. Needs qemu-system-aarch64 and cpio.
set -eu

die() {
    echo "$0: $*" >&2
    exit 2
}

test $# -eq 1 || die "usage: BUILD"
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
command -v qemu-system-aarch64 >/dev/null || die "there is no qemu-system-aarch64 (Debian: qemu-system-arm)"
command -v cpio >/dev/null || die "there is no cpio"
work=$build/kernel
"$here/../real_programs/unpack.sh" "$work/packages" "$here/packages.txt"
kernel=$(ls "$work"/packages/boot/vmlinuz-* | tail -1)

root=$work/root
rm -rf "$root"
mkdir -p "$root/bin" "$root/dev" "$root/proc" "$root/sys" "$root/tmp" "$root/lib" "$root/t"
cp "$work/packages/bin/busybox" "$root/bin/"
install -m 755 "$here/init" "$root/init"
cp "$here/cases.sh" "$build/bin/ostrel" "$root/t/"
cp "$build"/tests/engine/programs/* "$root/t/"
# The libraries that programs have been linked with are those of the compiler.
tools=aarch64-linux-gnu-
[ "$(uname -m)" != aarch64 ] || tools=
for library in ld-linux-aarch64.so.1 libc.so.6 libm.so.6 libgcc_s.so.1 libstdc++.so.6; do
    cp -L "$("${tools}gcc" -print-file-name=$library)" "$root/lib/"
done
"${tools}strip" "$root"/t/* 2>/dev/null || true
(cd "$root" && find . | cpio --create --format newc --quiet | gzip -1 >"$work/initrd.gz")

# One with pointer authentication and branch target identification.
timeout "${LIMIT:-900}" qemu-system-aarch64 -M virt -cpu max,sve=off -m 1024 -smp 2 -nographic -nic none -no-reboot \
    -kernel "$kernel" -initrd "$work/initrd.gz" -append 'console=ttyAMA0 quiet panic=-1' >"$work/console" </dev/null || true
tr -d '\r' <"$work/console" | grep -a -E '^(same|DIFFERENT|[<>] |all cases)' || true
grep -a -q '^all cases have run' "$work/console" || die "the machine did not come to its end: see $work/console"
if grep -a -q '^DIFFERENT' "$work/console"; then
    exit 1
fi
