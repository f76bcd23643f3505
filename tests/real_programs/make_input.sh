#!/bin/sh
# make_input.sh DIRECTORY: files for the cases to work on, the same each time.
set -eu
mkdir -p "$1"
cd "$1"
seq 1 60000 >numbers
# Words in no order, and a table of them.
awk 'BEGIN {
    state = 12345
    for (i = 0; i < 20000; ++i) {
        state = (state * 69069 + 12345) % 4294967296
        rest = int(state / 1024)
        word = ""
        for (j = 0; j < 2 + i % 4; ++j) { word = word substr("badocefigu", 1 + 2 * (rest % 5), 2); rest = int(rest / 5) }
        print word > "words"
        printf "%d,%s,%.3f\n", i, word, state / 1000003 > "table.csv"
    }
}'
# Three megabytes that are neither random nor simple.
for i in 1 2 3 4 5 6 7 8 9; do
    sed "s/1/$i/g" table.csv
done | head -c 3000000 >mixed
