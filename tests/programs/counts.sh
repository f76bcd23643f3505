#!/bin/sh
# counts.sh SVE OTHER STATUS OSTREL PROGRAM [EMULATOR...]
# Fails unless PROGRAM under OSTREL ends with the exit status, prints nothing, and the report gives the two numbers of
# instructions.
set -u
sve=$1 other=$2 expected_status=$3 ostrel=$4 program=$5
shift 5
name=$(basename "$program")
expected="$name: $sve SVE instructions executed
$name: $other Non-SVE AArch64 instructions executed"
actual=$("$@" "$ostrel" "$program" 2>&1)
status=$?
if [ "$actual" != "$expected" ] || [ $status -ne "$expected_status" ]; then
    printf 'expected, with exit status %s:\n%s\nbut got, with exit status %s:\n%s\n' "$expected_status" "$expected" \
        $status "$actual"
    exit 1
fi
