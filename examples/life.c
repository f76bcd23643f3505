// Sixty-four worlds of Conway's Game of Life at once: bit k of every word belongs to world k. The neighbours
// of a cell are counted by full adders made of logical operations.
//
// Shows: and, or, exclusive or and bit clear on whole vectors, at the addresses around a cell.
#include "example.h"
#include <stdio.h>

enum { width = 62, height = 30, stride = width + 2, generations = 40 };

typedef uint64_t worlds[height + 2][stride]; // with a border of dead cells

// The sum of three one-bit numbers in each bit: one, and carry to the twos.
typedef struct {
    uint64_t one, two;
} sum;

static inline sum add_three(uint64_t a, uint64_t b, uint64_t c) {
    uint64_t half = a ^ b;
    return (sum){half ^ c, (a & b) | (half & c)};
}

KERNEL next_row(uint64_t* restrict result, const uint64_t* above, const uint64_t* row, const uint64_t* below,
                int count) {
    for (int x = 0; x < count; ++x) {
        sum upper = add_three(above[x - 1], above[x], above[x + 1]);
        sum lower = add_three(below[x - 1], below[x], below[x + 1]);
        sum ones = add_three(upper.one, lower.one, row[x - 1] ^ row[x + 1]);
        uint64_t middle_two = row[x - 1] & row[x + 1];
        sum twos = add_three(upper.two, lower.two, middle_two);
        // Alive next: three neighbours, or two and alive now. The twos must come to exactly one in all.
        uint64_t twos_one = twos.one ^ ones.two;
        uint64_t fours = twos.two | (twos.one & ones.two);
        result[x] = (twos_one & (ones.one | row[x])) & ~fours;
    }
}

SCALAR static int population(worlds cells, int world) {
    int alive = 0;
    for (int y = 1; y <= height; ++y)
        for (int x = 1; x <= width; ++x)
            alive += (int)(cells[y][x] >> world & 1);
    return alive;
}

SCALAR int main(void) {
    static worlds now, next;
    uint64_t random = 88172645463325252u;
    for (int y = 1; y <= height; ++y)
        for (int x = 1; x <= width; ++x)
            now[y][x] = next_random(&random) & next_random(&random);
    // World 0 holds nothing but a glider.
    static const char glider[3][3] = {{0, 1, 0}, {0, 0, 1}, {1, 1, 1}};
    for (int y = 1; y <= height; ++y)
        for (int x = 1; x <= width; ++x) {
            uint64_t alive = y <= 3 && x <= 3 && glider[y - 1][x - 1];
            now[y][x] = (now[y][x] & ~(uint64_t)1) | alive;
        }

    for (int generation = 0; generation < generations; ++generation) {
        for (int y = 1; y <= height; ++y)
            next_row(&next[y][1], &now[y - 1][1], &now[y][1], &now[y + 1][1], width);
        for (int y = 1; y <= height; ++y)
            for (int x = 1; x <= width; ++x)
                now[y][x] = next[y][x];
    }

    printf("after %d generations: checksum %08x\n", generations, checksum(now, sizeof now));
    printf("alive in worlds 0 to 7:");
    for (int world = 0; world < 8; ++world)
        printf(" %d", population(now, world));
    printf("\nthe glider of world 0, and world 1:\n");
    for (int y = 8; y <= 20; ++y) {
        for (int x = 1; x <= 20; ++x)
            putchar(now[y][x] & 1 ? '#' : '.');
        printf("   ");
        for (int x = 1; x <= width - 8; ++x)
            putchar(now[y][x] & 2 ? '#' : '.');
        putchar('\n');
    }
    return 0;
}
