#!/bin/sh
# engine_cost.sh BUILD [BUSYBOX]: what the engine costs programs without SVE, in AArch64 instructions executed, with the
# start-up taken off, and how it comes about. BUILD is a build tree with the benchmarks, BUSYBOX a static AArch64 busybox,
# by default $BUSYBOX, or else Debian's, which is fetched by apt-get. Needs qemu-aarch64.
#
# Columns: instructions executed directly; those under `ostrel` over them; then, in per cent of them, what is added by
# look-ups of the targets of returns and of other indirect transfers (7 each), by comparisons of return addresses (3
# each), by the engine's own code, most of it translation, and by the rest: X28, the ends of blocks, gates. Last, the
# returns executed directly, in per cent of all instructions, and how many of a hundred look their target up, compare it,
# or take no instruction at all.
set -eu

build=$1
busybox=${2:-${BUSYBOX:-$build/busybox}}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
seq 1 60000 >"$work/input"

# Fetches Debian's busybox for arm64, whatever the machine is.
fetch_busybox() {
    mkdir -p "$work/lists/partial" "$work/unpacked"
    chmod 755 "$work" "$work/lists" "$work/lists/partial"
    set -- -qq -o "Dir::State::lists=$work/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= \
        -o APT::Architecture=arm64 -o APT::Architectures=arm64 -o APT::Sandbox::User=
    (cd "$work" && apt-get "$@" update && apt-get "$@" download busybox-static && dpkg-deb -x ./*.deb unpacked)
    cp "$work/unpacked/bin/busybox" "$busybox"
}
test -e "$busybox" || fetch_busybox

# count COMMAND...: sets the variables of the plugin's counts, with _ for -.
count() {
    eval "$(qemu-aarch64 -cpu max,sve=off -plugin "$build/lib/libtransfer_count.so" -d plugin "$@" \
        <"$work/input" 2>&1 >/dev/null | sed -n 's/^\([a-z-]*\): \([0-9]*\)$/\1=\2/p' | tr - _)"
}

# calculate SCALE EXPRESSION
calculate() { echo "scale=$1; $2" | bc; }

# share PART WHOLE: in per cent, rounded to a tenth.
share() { printf '%.1f' "$(calculate 6 "100 * ($1) / ($2)")"; }

count "$busybox" true
start_directly=$own start_returns=$returns
count "$build/bin/ostrel" "$busybox" true
start_own=$own start_other=$other start_return=$return_lookups start_indirect=$indirect_lookups
start_comparisons=$comparisons
echo "start-up: $start_directly instructions directly, under ostrel $start_own of its own and $start_other emitted"
echo
echo '| program | directly | ratio | look-ups: returns | others | comparisons | engine | rest | returns | look up | compare | free |'
echo '|---|---|---|---|---|---|---|---|---|---|---|---|'
product=1
for applet in sha256sum 'gzip -c' 'awk {s+=$1*$1}END{print(s)}' 'sort -r'; do
    # shellcheck disable=SC2086 # the words of a command
    count "$busybox" $applet
    directly=$((own - start_directly)) all_returns=$((returns - start_returns))
    # shellcheck disable=SC2086
    count "$build/bin/ostrel" "$busybox" $applet
    engine=$((own - start_own)) under=$((own + other - start_own - start_other))
    by_return=$((return_lookups - start_return)) by_others=$((indirect_lookups - start_indirect))
    compared=$((comparisons - start_comparisons))
    rest=$((under - directly - engine - 7 * by_return - 7 * by_others - 3 * compared))
    ratio=$(calculate 4 "$under / $directly")
    product=$(calculate 8 "$product * $ratio")
    printf '| `%s` | %s | %.3f | %s | %s | %s | %s | %s | %s | %s | %s | %s |\n' "$applet" "$directly" "$ratio" \
        "$(share "7 * $by_return" "$directly")" "$(share "7 * $by_others" "$directly")" \
        "$(share "3 * $compared" "$directly")" "$(share "$engine" "$directly")" "$(share "$rest" "$directly")" \
        "$(share "$all_returns" "$directly")" "$(share "$by_return" "$all_returns")" \
        "$(share "$compared" "$all_returns")" "$(share "$all_returns - $by_return - $compared" "$all_returns")"
done
echo
printf 'geometric mean of the ratios: %.3f\n' "$(calculate 8 "sqrt(sqrt($product))")"
