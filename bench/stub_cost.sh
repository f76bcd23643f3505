#!/bin/sh
# Prints what opcode stubs cost, in AArch64 instructions a call: stub_cost.sh BUILD [WORD:PREDICATES...]
# BUILD is a build tree configured with OSTREL_BENCHMARKS. PREDICATES says what all predicate registers hold: see
# stub_cost.cpp. The call itself is not in the figure, the return is.
set -eu

if [ $# -eq 0 ]; then
    echo "usage: stub_cost.sh BUILD [WORD:all|mixed|tail...]" >&2
    exit 2
fi
build=$1
shift
if [ $# -eq 0 ]; then
    set -- \
        04000000:all \
        04200000:all \
        a540a000:all a540a000:tail a540a000:mixed \
        e540e000:all e540e000:tail e540e000:mixed \
        a400a000:all a400a000:tail a400a000:mixed \
        e400e000:all e400e000:tail e400e000:mixed \
        a4214000:all \
        25220c20:all 25a21c20:all 25a20c20:all \
        2558e3e0:all \
        2550c000:all 2550c000:tail 2550c000:mixed \
        0420e3e0:all
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT

# count WORD PREDICATES REPETITIONS: sets name, the opcode's, and count, the instructions of the whole run.
count() {
    name=$(qemu-aarch64 -cpu max,sve=off -plugin "$build/lib/libinstruction_count.so" -d plugin -D "$log" \
        "$build/bin/stub_cost" "$1" "$2" "$3")
    count=$(sed -n 's/^instructions: //p' "$log")
}

# cost WORD PREDICATES: sets name, and cost, the instructions of one round of the loop.
cost() {
    count "$1" "$2" 1000
    few=$count
    count "$1" "$2" 11000
    cost=$(((count - few) / 10000))
}

cost empty all
loop=$((cost - 2))
printf '%-10s %-24s %-10s %s\n' word opcode predicates instructions
for pair in "$@"; do
    cost "${pair%%:*}" "${pair#*:}"
    printf '%-10s %-24s %-10s %s\n' "${pair%%:*}" "$name" "${pair#*:}" $((cost - loop))
done
