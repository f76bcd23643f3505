#!/bin/sh
# engine_cost.sh BUILD BUSYBOX: what the engine costs a program without SVE, as AArch64 instructions executed under `ostrel`
# over instructions executed directly, with the start-up of each taken off. BUILD is a build tree with the benchmarks,
# BUSYBOX a static AArch64 busybox (Debian: busybox-static of arm64). Needs qemu-aarch64.
set -eu

build=$1 busybox=$2
ostrel=$build/bin/ostrel
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
seq 1 60000 >"$work/input"

# count COMMAND...: the instructions it executes.
count() {
    qemu-aarch64 -cpu max,sve=off -plugin "$build/lib/libinstruction_count.so" -d plugin "$@" <"$work/input" 2>&1 >/dev/null |
        sed -n 's/^instructions: //p'
}

start_directly=$(count "$busybox" true)
start=$(count "$ostrel" "$busybox" true)
echo "start-up: $start_directly directly, $start under ostrel"
product=1
for applet in sha256sum 'gzip -c' 'awk {s+=$1*$1}END{print(s)}' 'sort -r'; do
    # shellcheck disable=SC2086 # the words of a command
    directly=$(count "$busybox" $applet)
    # shellcheck disable=SC2086
    under=$(count "$ostrel" "$busybox" $applet)
    ratio=$(echo "scale=4; ($under - $start) / ($directly - $start_directly)" | bc)
    product=$(echo "scale=8; $product * $ratio" | bc)
    printf '%-30s %12s directly %12s under ostrel, ratio %s\n' "$applet" "$directly" "$under" "$ratio"
done
echo "geometric mean: $(echo "scale=4; sqrt(sqrt($product))" | bc)"
