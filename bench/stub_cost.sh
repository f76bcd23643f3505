#!/bin/sh
# Prints what opcode stubs cost, in AArch64 instructions a call: stub_cost.sh BUILD [PATTERN]
# BUILD is a build tree configured with OSTREL_BENCHMARKS. The call itself is not in the figure, the return is. Of a
# family, the cheapest, the median and the dearest opcode; with a pattern for names, such as 'Vec*CLoad*', every opcode
# that matches. What the predicates are is said in stub_inputs.h.
set -eu

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    echo "usage: stub_cost.sh BUILD [PATTERN]" >&2
    exit 2
fi
build=$1
pattern=${2-*}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

qemu-aarch64 -cpu max,sve=off -plugin "$build/lib/libinstruction_count.so" -d plugin -D "$work/counts" \
    "$build/bin/stub_cost" "$pattern" >"$work/calls"

# One line for each opcode: family, route, name, word, instructions with each kind of predicates, system calls.
sed -n 's/^so far: \([0-9]*\) instructions, \([0-9]*\) .*/\1 \2/p' "$work/counts" |
    awk 'NR % 2 { count = $1; calls = $2 } NR % 2 == 0 { print $1 - count, $2 - calls }' |
    paste -d ' ' "$work/calls" - |
    awk '
        $3 == "empty" { loop = $6 - 2; next }
        $3 != name { if (name) print line, calls; name = $3; line = $1 " " $2 " " $3 " " $4; calls = 0 }
        { line = line " " $6 - loop; if ($7 > calls) calls = $7 }
        END { if (name) print line, calls }' >"$work/costs"

if [ $# -eq 2 ]; then
    awk '
        BEGIN { printf "%-28s %-8s %-9s %6s %6s %6s %6s %s\n", "opcode", "word", "route", "all", "tail", "mixed",
                       "random", "system calls" }
        { printf "%-28s %-8s %-9s %6d %6d %6d %6d %s\n", $3, $4, $2, $5, $6, $7, $8, ($9 > 0 ? $9 : "") }' "$work/costs"
    exit
fi

printf '%-24s %-8s %5s %7s %7s %7s  %-20s %7s  %s\n' family route rows least median most 'the dearest' most 'the dearest'
printf '%70s %37s\n' 'all elements active' 'elements active at random'
sort -k1,1 -k2,2 -k5,5n "$work/costs" | awk '
    function flush() {
        if (!rows) return
        printf "%-24s %-8s %5d %7d %7d %7d  %-20s %7d  %s\n", family, route, rows, cost[1], cost[int((rows + 1) / 2)],
               cost[rows], name, most, dearest
    }
    $1 != family || $2 != route { flush(); family = $1; route = $2; rows = 0; most = 0 }
    { cost[++rows] = $5; name = $3; if ($8 >= most) { most = $8; dearest = $3 } }
    END { flush() }'
