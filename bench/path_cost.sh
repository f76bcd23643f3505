#!/bin/sh
# path_cost.sh BUILD: what an emulated instruction costs in a program that runs under `ostrel`, in AArch64 instructions and
# by the part of the path: with one instruction executed over and over, and with a thousand at different addresses. BUILD is
# a build tree with the benchmarks. Needs qemu-aarch64.
#
# "inserted" is the code that moves registers and makes the call, "gate" what changes stacks around the call, "entry" and
# "statistics" the client's work around the stub. The loop that executes the instructions is taken off.
set -eu

if [ $# -ne 1 ]; then
    echo "usage: path_cost.sh BUILD" >&2
    exit 2
fi
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# parts KIND COUNT REPETITIONS: the instructions of a whole run by part, one line each. Of the code that is not ostrel's own,
# the gate is what was executed for each instruction rather than for each round of the loop.
parts() {
    qemu-aarch64 -cpu max,sve=off -plugin "$build/lib/libinstruction_count.so,symbols=on" -d plugin -D "$work/log" \
        "$build/bin/ostrel" "$build/bin/path_cost" "$1" "$2" "$3" 2>/dev/null
    awk -v rounds="$3" '
        NF != 3 { next }
        $1 == "-" && $3 >= 2 * rounds { sum["gate"] += $2 * $3; next }
        $1 == "-" { sum["inserted"] += $2 * $3; next }
        $1 ~ /emulate_instruction|^dr_|^drmgr_/ { sum["entry"] += $2 * $3; next }
        $1 ~ /update_sve_stats|find_or_make_row|__aarch64_|pthread_mutex|_Rb_tree/ { sum["statistics"] += $2 * $3; next }
        { sum["stub"] += $2 * $3 }
        END { for (part in sum) print part, sum[part] }' "$work/log" | sort
}

# difference KIND COUNT: by part, the instructions of 100 rounds of the loop.
difference() {
    parts "$1" "$2" 300 >"$work/few"
    parts "$1" "$2" 400 >"$work/many"
    join -a 2 -e 0 -o 0,1.2,2.2 "$work/few" "$work/many" | awk '{ print $1, $3 - $2 }'
}

printf '%-12s %12s %12s\n' part '1 address' '1000'
for count in 1 1000; do
    difference sve $count >"$work/sve"
    difference nop $count >"$work/nop"
    # Each instruction that does nothing is one that the emulated one stands for.
    join -a 1 -e 0 -o 0,1.2,2.2 "$work/sve" "$work/nop" |
        awk -v n=$count '{ loop = $3; if ($1 == "inserted") loop -= 100 * n; print $1, ($2 - loop) / (100 * n) }' >"$work/$count"
done
# With one instruction the gate was not told apart, but it is the same.
gate=$(awk '$1 == "gate" { print $2 }' "$work/1000")
awk -v gate="$gate" '$1 == "inserted" { $2 -= gate; print "gate", gate } $1 != "gate" { print }' "$work/1" | sort |
    join - "$work/1000" >"$work/both"
for part in inserted gate entry statistics stub; do
    awk -v part=$part '$1 == part { printf "%-12s %12.0f %12.0f\n", $1, $2, $3 }' "$work/both"
done
awk '$1 != "stub" { one += $2; many += $3 } END { printf "%-12s %12.0f %12.0f\n", "without stub", one, many }' "$work/both"
