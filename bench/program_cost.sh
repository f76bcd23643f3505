#!/bin/sh
# program_cost.sh BUILD: what the engine costs programs of AArch64 packages, as instructions executed under `ostrel` over
# instructions executed directly, with the start-up of each program (its work on nothing) taken off and shown by itself.
# BUILD is a build tree with the benchmarks, in which `make test-programs` has unpacked the packages. Needs qemu-aarch64.
set -eu

build=$(cd "$1" && pwd)
sysroot=$build/real_programs/all
emulator="qemu-aarch64 -cpu max,sve=off -L $sysroot"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sh "$(dirname "$0")/../tests/real_programs/make_input.sh" "$work"
: >"$work/nothing"
head -c 400000 "$work/mixed" >"$work/some"
cd "$work"

# count COMMAND...: the instructions that it executes, all its threads together.
count() {
    QEMU_SET_ENV=LC_ALL=C.UTF-8,PYTHONHASHSEED=0 $emulator -plugin "$build/lib/libinstruction_count.so" -d plugin \
        -D "$work/log" "$@" </dev/null >"$work/output" 2>"$work/errors" || { cat "$work/errors"; exit 1; } >&2
    sed -n 's/^instructions: //p' "$work/log"
}

# millions N
millions() { echo "scale=1; $1 / 1000000" | bc | sed 's/^\./0./'; }

printf '| program | work | start-up directly | under ostrel | work directly | under ostrel | ratio |\n|---|---|--:|--:|--:|--:|--:|\n'
# cost PROGRAM WORK 'ARGUMENTS ON NOTHING' 'ARGUMENTS': words between single quotes are separated by blanks.
cost() {
    program=$sysroot/usr/bin/$1
    # shellcheck disable=SC2086 # lists of words
    {
        count "$program" $4 >/dev/null # what it keeps for later runs is then there
        start=$(count "$program" $3)
        start_under=$(count "$build/bin/ostrel" "$program" $3)
        whole=$(count "$program" $4)
        whole_under=$(count "$build/bin/ostrel" "$program" $4)
    }
    directly=$((whole - start)) under=$((whole_under - start_under))
    printf '| %s | %s | %s | %s | %s | %s | %s |\n' "$1" "$2" "$(millions "$start")" "$(millions "$start_under")" \
        "$(millions $directly)" "$(millions $under)" "$(echo "scale=2; $under / $directly" | bc | sed 's/^\./0./')"
}

echo 'my %h; $h{$_ % 997} .= chr(65 + $_ % 26) for 1 .. 60000; my $n = 0; $n += () = $h{$_} =~ /A[B-F]/g for keys %h; print $n' >work.pl
echo 'for ((i = 0, s = 0; i < 20000; ++i)); do ((s = (s * 31 + i) % 1000003)); done' >work.bash
cat >work.py <<'END'
import json, re
d = {str(i): [i, i * 0.5, "x" * (i % 7)] for i in range(3000)}
for _ in range(3): d = json.loads(json.dumps(d))
print(len(re.findall(r"x+", str(d))), sum(i * i % 7 for i in range(60000)))
END
echo 'local t = {} for i = 1, 60000 do t[i] = tostring(i * 7 % 1000) end table.sort(t) print(#table.concat(t))' >work.lua
echo 'puts (1..20000).map { |i| (i * 7919 % 1000).to_s }.tally.sort.size' >work.rb
echo "create table w(id integer primary key, name text, v real); create index n on w(name);
with recursive r(x) as (select 1 union all select x + 1 from r where x < 8000) insert into w select x, hex(x * 7919 % 1000), x * 0.5 from r;
select name, count(*), sum(v) from w group by name order by 2 desc, 1 limit 3;" >work.sql
: >nothing.sql

cost gzip '400 KB' '-c nothing' '-c some'
cost xz '400 KB, -2' '-2 -T1 -c nothing' '-2 -T1 -c some'
cost bzip2 '400 KB' '-c nothing' '-c some'
cost zstd '400 KB' '-q -T1 -c nothing' '-q -T1 -c some'
cost sha512sum '3 MB' nothing mixed
cost openssl 'aes-128-cbc of 3 MB' 'enc -aes-128-cbc -K 00 -iv 00 -in nothing' 'enc -aes-128-cbc -K 00 -iv 00 -in mixed'
cost sort '20000 words' nothing words
cost grep '3 MB, alternatives' '-q -E e|^0 table.csv' '-c -E ^[0-9]+,(ba|do|fi)+,[0-9.]*7$ mixed'
cost mawk '3 MB' '-F, {s+=$3*$3}END{print(s)} nothing' '-F, {s+=$3*$3}END{print(s)} mixed'
cost sqlite3 'insert 8000 rows, group' ':memory: -init nothing.sql .exit' ':memory: -init work.sql .exit'
cost bash 'arithmetic' nothing work.bash
cost perl 'hashes, strings, regular expressions' nothing work.pl
cost python3.11 'json, regular expressions, loops' '-I nothing' '-I work.py'
cost lua5.4 'sort, strings' nothing work.lua
cost ruby3.1 'collections' nothing work.rb
