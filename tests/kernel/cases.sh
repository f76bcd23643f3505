# What run.sh compares, in the machine.
export LD_LIBRARY_PATH=/lib
ln -s /proc/self/fd /dev/fd

# both PROGRAM ARGUMENT...: directly and under ostrel.
both() {
    timeout 200 "$@" >/tmp/directly 2>/tmp/errors
    echo "status $?" >>/tmp/directly
    timeout 200 /t/ostrel --report /tmp/report "$@" >/tmp/translated 2>/tmp/errors
    echo "status $?" >>/tmp/translated
    if diff /tmp/directly /tmp/translated; then
        echo "same: $*"
    else
        echo "DIFFERENT: $*"
        cat /tmp/errors
    fi
}

# right OUTPUT PROGRAM ARGUMENT...: for programs with SVE instructions, which the processor does not have.
right() {
    expected=$1
    shift
    output=$(timeout 200 /t/ostrel --report /tmp/report "$@" 2>/tmp/errors)
    if [ "$output" = "$expected" ]; then
        echo "same: $*"
    else
        echo "DIFFERENT: $*: $output"
        cat /tmp/errors
    fi
}

for way in information registers interrupted masks stacks waits processes threads bad-stack bad-frame; do
    both /t/signals $way
done
for way in work fork return cancel exit-elsewhere first-thread-ends fault-elsewhere; do
    both /t/threads $way
done
for way in vfork vfork-fork vfork-threads spawn tree; do
    both /t/children $way
done
for way in null call-null call-data misaligned overflow trap undefined abort; do
    both /t/endings $way
done
for program in traces register_cases machine exceptions environment environment-dynamic "changing_code rewrite 300" \
    "random_code 200 300" exceptions-sanitized; do
    both /t/$program
done
both /t/environment process
# The engine is out of reach by its path.
mkdir -p /tmp/root/t /tmp/root/proc /tmp/root/tmp
busybox mount -t proc proc /tmp/root/proc
cp /t/environment /tmp/root/t
both /bin/busybox chroot /tmp/root /t/environment process
grep -q '^environment: ' /tmp/root/tmp/report || echo 'DIFFERENT: the report behind chroot'
right '0 failed' /t/sve_signals
right 'before threads
right 40 of 40
after threads' /t/sve threads
right 'before large-blocks
after large-blocks' /t/sve large-blocks
echo 'all cases have run'
