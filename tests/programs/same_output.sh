#!/bin/sh
# same_output.sh PROGRAM PLAIN EMULATOR...
# Fails unless both programs, run by the emulator, end with status 0 and print the same.
set -eu
program=$1 plain=$2
shift 2
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
"$@" "$program" >"$results/program"
"$@" "$plain" >"$results/plain"
test -s "$results/plain"
diff "$results/plain" "$results/program"
