#!/bin/sh
# run_case.sh CASE: runs one case directly and under ostrel and writes its outcome. Called by run.sh.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
case=$RESULTS/cases/$1
flags=$(cat "$case/flags")
has_flag() { case $flags in *" $1 "*) true ;; *) false ;; esac; }
limit=300
case $flags in *" time="*) limit=${flags##* time=} limit=${limit%% *} ;; esac

# Everything that a program could print depends on the case alone.
run_way() {
    way=$1
    rm -rf "$case/directory"
    mkdir "$case/directory"
    status=0
    (cd "$case/directory" && env -i PATH=/usr/bin:/bin HOME=/nonexistent LC_ALL=C.UTF-8 TZ=UTC \
        PYTHONHASHSEED=0 PYTHONDONTWRITEBYTECODE=1 PERL_HASH_SEED=0 \
        OSTREL="$OSTREL" SYSROOT="$SYSROOT" EMULATOR="$EMULATOR" way="$way" input="$RESULTS/input" here="$here" \
        report="$RESULTS/report" \
        timeout -k 5 "$limit" sh -c '. "$here/run_program.sh"; . "$1/script"' sh "$case") \
        </dev/null >"$case/$way.out" 2>"$case/$way.err" || status=$?
    echo $status >"$case/$way.status"
    if has_flag form; then
        sed -i -E 's/[0-9]+(\.[0-9]+)?/N/g; s/ +/ /g; s/-+/-/g' "$case/$way.out" "$case/$way.err"
    fi
}

note_time=
run_timed() {
    start=$(date +%s)
    run_way "$1"
    note_time="$note_time $1 $(($(date +%s) - start)) s"
}

differing=
run_timed ostrel
if has_flag judge; then
    good=passes
    test "$(cat "$case/ostrel.status")" = 0 || differing="status $(cat "$case/ostrel.status")"
else
    good=same
    run_timed directly
    for part in out err; do
        cmp -s "$case/directly.$part" "$case/ostrel.$part" || differing="$differing$part "
    done
    test "$(cat "$case/directly.status")" = "$(cat "$case/ostrel.status")" ||
        differing="${differing}status $(cat "$case/directly.status")/$(cat "$case/ostrel.status")"
fi
rm -rf "$case/directory"
if [ -z "$differing" ]; then
    echo "$good$note_time" >"$case/outcome"
else
    echo "DIFFERENT $differing; $(grep '^ostrel: ' "$case/ostrel.err" | head -1)" >"$case/outcome"
fi
