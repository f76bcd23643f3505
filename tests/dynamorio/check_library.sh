#!/bin/sh
# check_library.sh NM READELF LIBRARY: whether the library is one that the framework can load as a client.
set -eu
nm=$1 readelf=$2 library=$3
failed=0

fail() {
    echo "$library: $*" >&2
    failed=1
}

symbols=$("$nm" -D "$library")
for symbol in dr_client_main _USES_DR_VERSION_ _Z14dump_sve_statsv; do
    echo "$symbols" | grep -q " [TVW] $symbol\$" || fail "does not export $symbol"
done
# An exception that is thrown in a client crashes or hangs the process.
if echo "$symbols" | grep -q ' U __cxa_throw'; then
    fail "throws exceptions"
fi
# What only the project's own engine has.
if echo "$symbols" | grep -E ' (dr_insert_call_kelvo|_Z20dr_insert_call_kelvo)$'; then
    fail "needs the project's own engine"
fi
# The framework's own linker flags are still there, and nothing needs to be patched in the code.
dynamic=$("$readelf" -d "$library")
echo "$dynamic" | grep -q 'NOW' || fail "is not linked with -z now"
if echo "$dynamic" | grep -q TEXTREL; then
    fail "has relocations in its code"
fi
exit $failed
