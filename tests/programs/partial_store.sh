#!/bin/sh
# partial_store.sh WAY STATUS SIGNAL OSTREL PROGRAM [EMULATOR...]
# Fails unless PROGRAM under OSTREL ends by the signal, with one line about it, and the first 40 bytes of its last store are
# in the file.
set -u
way=$1 expected_status=$2 signal=$3 ostrel=$4 program=$5
shift 5
ulimit -c 0
results=$(mktemp -d) || exit 1
trap 'rm -rf "$results"' EXIT

"$@" "$ostrel" "$program" "$results/file" "$way" >"$results/output" 2>"$results/errors"
status=$?
cat "$results/errors"
if [ $status -ne "$expected_status" ]; then
    echo "exit status $status instead of $expected_status"
    exit 1
fi
message="kelvo's SVESigHandler caught signal $signal from the process being emulated, passing it to the default signal handler."
if [ "$(grep -c -x -F "$message" "$results/errors")" != 1 ] || [ "$(grep -c SVESigHandler "$results/errors")" != 1 ]; then
    echo "the message is not as it should be"
    exit 1
fi
i=1
while [ $i -le 40 ]; do
    printf "\\$(printf %03o $i)"
    i=$((i + 1))
done >"$results/expected"
tail -c 40 "$results/file" | cmp - "$results/expected" || exit 1
# Nothing but zeros before.
size=$(($(wc -c <"$results/file") - 40))
head -c $size /dev/zero >"$results/zeros"
head -c $size "$results/file" | cmp - "$results/zeros"
