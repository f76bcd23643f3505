// Integer square roots by Newton's method, of many numbers at once.
//
// Shows: unsigned division of 32- and 64-bit elements, also by a number that is the same for all, and
// unsigned minimum.
#include "example.h"
#include <stdio.h>

enum { count = 500 };

static uint32_t small[count], small_root[count];
static uint64_t large[count], large_root[count];

// One step from above: the mean of x and n / x, which never goes below the root; at the root it would go up
// again.
KERNEL improve_small(uint32_t* restrict root, const uint32_t* restrict number, uint32_t two, int n) {
    for (int i = 0; i < n; ++i) {
        uint32_t better = (root[i] + number[i] / root[i]) / two;
        root[i] = better < root[i] ? better : root[i];
    }
}

KERNEL improve_large(uint64_t* restrict root, const uint64_t* restrict number, uint64_t two, int n) {
    for (int i = 0; i < n; ++i) {
        uint64_t better = (root[i] + number[i] / root[i]) / two;
        root[i] = better < root[i] ? better : root[i];
    }
}

SCALAR int main(void) {
    uint64_t random = 123456789;
    for (int i = 0; i < count; ++i) {
        uint64_t bits = next_random(&random);
        small[i] = (uint32_t)(bits >> 32 >> i % 30) | 1;
        large[i] = (bits >> i % 60) | 1;
        small_root[i] = 1u << 16;
        large_root[i] = (uint64_t)1 << 32;
    }
    for (int step = 0; step < 20; ++step)
        improve_small(small_root, small, 2, count);
    for (int step = 0; step < 36; ++step)
        improve_large(large_root, large, 2, count);

    int wrong = 0;
    for (int i = 0; i < count; ++i) {
        uint64_t root = small_root[i], next = root + 1;
        wrong += root * root > small[i] || next * next <= small[i];
        __extension__ unsigned __int128 wide = large_root[i], wide_next = wide + 1;
        wrong += wide * wide > large[i] || wide_next * wide_next <= large[i];
    }
    for (int i = 0; i < count; i += 71)
        printf("%10u: %5u   %20llu: %10llu\n", small[i], small_root[i], (unsigned long long)large[i],
               (unsigned long long)large_root[i]);
    printf("wrong roots: %d of %d; checksums %08x %08x\n", wrong, 2 * count,
           checksum(small_root, sizeof small_root), checksum(large_root, sizeof large_root));
    return wrong != 0;
}
