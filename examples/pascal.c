// Pascal's triangle, modulo 2^32, written with the vector intrinsics of <arm_sve.h>: a loop of any vector
// length that is governed by predicates.
//
// Shows: WHILELT and PTEST as a loop's condition, predicated addition, selection between two vectors,
// counting the active elements of a predicate.
#include "example.h"
#include <stdio.h>
#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#endif

enum { rows = 200, width = 224, longest_vector = 64 }; // 64 words: the 2048 bits that a vector may have

// A zero before the first entry, and room for the last vector, which may reach over the end.
static uint32_t triangle[rows][1 + width + longest_vector];

// Computes entries 0 to length - 1 of a row from the row above, and sets the rest of it to `outside`. Returns
// the count of entries that were computed.
__attribute__((noinline)) static uint64_t next_row(uint32_t* next, const uint32_t* above, int64_t length,
                                                   uint32_t outside) {
    uint64_t computed = 0;
#ifdef __ARM_FEATURE_SVE
    svbool_t whole = svptrue_b32(), part;
    for (int64_t i = 0; svptest_first(whole, part = svwhilelt_b32(i, (int64_t)width));
         i += (int64_t)svcntw()) {
        svbool_t inside = svwhilelt_b32(i, length);
        svuint32_t sum = svadd_m(inside, svld1(inside, above + i), svld1(inside, above + i - 1));
        svst1(whole, next + i, svsel(inside, sum, svdup_u32(outside)));
        computed += svcntp_b32(part, inside);
    }
#else
    for (int64_t i = 0; i < width; ++i) {
        next[i] = i < length ? above[i] + above[i - 1] : outside;
        computed += i < length;
    }
#endif
    return computed;
}

SCALAR int main(void) {
    uint64_t computed = 0;
    triangle[0][1] = 1;
    for (int row = 1; row < rows; ++row)
        computed += next_row(&triangle[row][1], &triangle[row - 1][1], row + 1, 0);
    for (int row = 0; row < 32; ++row) { // the odd entries
        printf("%*s", 33 - row, "");
        for (int i = 0; i <= row; ++i)
            printf("%s", triangle[row][1 + i] & 1 ? "* " : "  ");
        putchar('\n');
    }
    uint32_t sum = 0;
    for (int i = 0; i < width; ++i)
        sum += triangle[20][1 + i];
    printf("%llu entries; the sum of row 20 is %u; the middle of row 30 is %u\n",
           (unsigned long long)computed, sum, triangle[30][1 + 15]);
    uint32_t all = 0;
    for (int row = 0; row < rows; ++row)
        all = all * 31 + checksum(&triangle[row][1], width * sizeof(uint32_t));
    printf("checksum %08x\n", all);
    return sum != 1u << 20 || computed != (uint64_t)(rows + 1) * rows / 2 - 1;
}
