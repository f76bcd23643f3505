#!/bin/sh
# run.sh BUILD quick|all [PATTERN]
# Runs programs of AArch64 packages twice, directly and under the `ostrel` of the build tree BUILD, and compares output,
# standard error and status of each case in cases/ whose name, PROGRAM.CASE, PATTERN matches (grep). Prints a table; fails
# if there is a difference. What the cases printed stays below BUILD/real_programs. `quick` is the choice for CI.
#
# A case is a piece of shell script that follows a line "#: NAME [FLAG...]" and runs in an empty directory. `run PROGRAM
# ARGUMENT...` runs a program of SYSROOT in either way. $input is a directory with files to work on (make_input.sh).
#   quick      belongs to the choice for CI
#   form       numbers differ from run to run: all are compared as N
#   judge      the program is its own judge: only run under OSTREL, where its status must be 0
#   time=N     may take N seconds under OSTREL, in place of 300
set -eu

die() {
    echo "$0: $*" >&2
    exit 2
}

here=$(cd "$(dirname "$0")" && pwd)
test $# -ge 2 || die "usage: BUILD quick|all [PATTERN]"
build=$(cd "$1" && pwd) choice=$2 pattern=${3:-.}
test -x "$build/bin/ostrel" || die "there is no $build/bin/ostrel"
sysroot=$build/real_programs/$choice
results=$build/real_programs/$choice.results
"$here/unpack.sh" "$sysroot" "$here/$choice.txt"
rm -rf "$results"
mkdir -p "$results/cases"

# Splits the files into results/cases/PROGRAM.NAME/script, with the flags beside it.
for file in "$here"/cases/*.cases; do
    awk -v cases="$results/cases" -v program="$(basename "$file" .cases)" '
        /^#: / {
            flags = ""
            for (i = 3; i <= NF; ++i) flags = flags " " $i
            directory = cases "/" program "." $2
            system("mkdir " directory)
            print flags " " > (directory "/flags")
            script = directory "/script"
            next
        }
        script { print > script }' "$file"
done

# An AArch64 machine runs the programs itself. Elsewhere GLib's allocator would at times leave a child waiting for ever for
# a lock that another thread of the emulator held at the fork.
EMULATOR=
[ "$(uname -m)" = aarch64 ] || EMULATOR="env G_SLICE=always-malloc qemu-aarch64 -U G_SLICE -cpu max,sve=off -L $sysroot"
export here EMULATOR OSTREL="$build/bin/ostrel" SYSROOT="$sysroot" RESULTS="$results"
# Two that fail in the same way would look the same.
way=directly
. "$here/run_program.sh"
[ "$(run busybox echo works)" = works ] || die "this machine can't run the programs of $sysroot"
sh "$here/make_input.sh" "$results/input"
selected=$(cd "$results/cases" && ls -d -- * | grep -e "$pattern" || true)
if [ "$choice" = quick ]; then
    selected=$(for case in $selected; do ! grep -q ' quick ' "$results/cases/$case/flags" || echo "$case"; done)
fi
test -n "$selected" || die "no case is called $pattern"
echo "$selected" | xargs -P "$(nproc)" -n 1 sh "$here/run_case.sh" || true

printf '%-12s %-24s %-10s %s\n' program case outcome note
different=0
for case in $selected; do
    outcome=none note=
    read -r outcome note <"$results/cases/$case/outcome" || true
    printf '%-12s %-24s %-10s %s\n' "${case%%.*}" "${case#*.}" "$outcome" "$note"
    case $outcome in same | passes) ;; *) different=$((different + 1)) ;; esac
done
echo "$(echo "$selected" | wc -w) cases, $different with a difference (what they printed: $results/cases)"
test $different -eq 0
