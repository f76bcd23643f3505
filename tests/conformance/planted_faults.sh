#!/bin/sh
# planted_faults.sh PROGRAM: proves that the comparison finds a wrong bit in each part of the result, names the stub, and
# that the case which it reports is the same when it runs alone.
set -u
directory=$(dirname "$0")
program=$1
stub=VecU8AddVVM
failed=0

fail() {
    echo "$1" >&2
    failed=1
}

# run OPTION...: sets output and status.
run() {
    output=$(sh "$directory/run.sh" "$program" --filter "$stub" "$@")
    status=$?
}

run --iterations 20
test $status -ne 77 || exit 77
test $status -eq 0 || fail "without a fault: status $status: $output"

for case in 'x:X[0-9]*:' 'sp:SP:' 'z:Z[0-9]* byte' 'p:P[0-9]* bit' 'ffr:FFR bit' 'nzcv:NZCV:' 'fpsr:FPSR:' 'fpcr:FPCR:' \
    'memory:memory at byte'; do
    part=${case%%:*}
    sign=${case#*:}
    run --iterations 20 --plant-fault "$part"
    test $status -eq 1 || fail "$part: status $status"
    pattern="^DIFFERS $stub word 0x[0-9a-f]\{8\} seed 0x[0-9a-f]*: $sign.* \[20 of 20 states; "
    printf '%s\n' "$output" | grep -q "$pattern" || fail "$part: not reported as it should be: $output"

    first=$(printf '%s\n' "$output" | sed -n 's/^\(DIFFERS .*\) \[.*/\1/p')
    seed=$(printf '%s\n' "$output" | sed -n 's/^DIFFERS .* seed \(0x[0-9a-f]*\):.*/\1/p')
    run --only-seed "$seed" --seed 99 --plant-fault "$part"
    test $status -eq 1 || fail "$part alone: status $status"
    again=$(printf '%s\n' "$output" | sed -n 's/^\(DIFFERS .*\) \[.*/\1/p')
    test "$first" = "$again" || fail "$part alone: another difference: $again, not $first"
done

run --iterations nothing 2>/dev/null
test $status -eq 2 || fail "bad use: status $status"
exit $failed
