#!/bin/sh
# compare.sh [--show] OSTREL PROGRAM PLAIN [EMULATOR...]
# Runs PROGRAM, which was built for SVE, under OSTREL, and PLAIN, which is the same program built without. Fails unless
# output and exit status are equal and the report is what it should be. EMULATOR is the command that runs AArch64
# programs, none on an AArch64 machine. With --show, shows all of it.
set -u

show=false
if [ "$1" = --show ]; then
    show=true
    shift
fi
ostrel=$1 program=$2 plain=$3
shift 3
name=$(basename "$program")

fail() {
    echo "$name: $1" >&2
    exit 1
}

results=$(mktemp -d) || exit 1
trap 'rm -rf "$results"' EXIT

"$@" "$ostrel" "$program" >"$results/output" 2>"$results/report" </dev/null
status=$?
"$@" "$plain" >"$results/plain" </dev/null
plain_status=$?

if $show; then
    printf '\n--- ostrel %s\n' "$name"
    cat "$results/output" "$results/report"
fi

[ -s "$results/plain" ] || fail "the program without SVE printed nothing"
if [ $status -ne $plain_status ]; then
    head -n 5 "$results/report" >&2
    fail "exit status $status under ostrel, but $plain_status without SVE"
fi
if ! cmp -s "$results/output" "$results/plain"; then
    diff "$results/plain" "$results/output" | head -n 10 >&2
    head -n 5 "$results/report" >&2
    fail "the output differs from that of the program without SVE"
fi

# Nothing but the two counts goes to standard error, and neither is zero.
printf '%s: N SVE instructions executed\n%s: N Non-SVE AArch64 instructions executed\n' "$name" "$name" \
    >"$results/expected"
sed "s/^$name: [1-9][0-9]* /$name: N /" "$results/report" | cmp -s - "$results/expected" || {
    head -n 5 "$results/report" >&2
    fail "the report is not the two counts"
}

if $show; then
    echo "The output equals that of the same program built without SVE."
fi
