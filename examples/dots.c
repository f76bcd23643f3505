// Products of matrices and of vectors: a matrix product in single precision, as the compiler makes it of a
// plain loop, and dot products in all three formats.
//
// Shows: fused multiply-add, and sums of a vector: pair by pair in a tree, and one element after the other.
#include "example.h"
#include <math.h>
#include <stdio.h>

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#else
#include <arm_neon.h>
#endif

enum { size = 61, length = 1003, vector_bytes = 128 };

static float left[size][size], right[size][size], product[size][size];

KERNEL multiply(float (*restrict c)[size], float (*restrict a)[size], float (*restrict b)[size]) {
    for (int i = 0; i < size; ++i) {
        for (int j = 0; j < size; ++j)
            c[i][j] = 0;
        for (int k = 0; k < size; ++k) {
            for (int j = 0; j < size; ++j)
                c[i][j] = fmaf(a[i][k], b[k][j], c[i][j]);
        }
    }
}

// Compilers keep the order of a sum.
KERNEL sum_of_squares(double* result, const float* restrict values, int count) {
    double sum = 0;
    for (int i = 0; i < count; ++i)
        sum += (double)values[i] * values[i];
    *result = sum;
}

// A dot product: every lane of a vector adds up products of its own, and then the lanes are added: in pairs,
// and one after the other, beginning with a half. The result depends on the number of lanes; vectors have
// 1024 bits here.
#ifdef __ARM_FEATURE_SVE
#define DOT_PRODUCT(name, element, vector, zeros, lanes, while_less)                                         \
    KERNEL name(element* result, const element* a, const element* b, int count) {                            \
        vector sum = zeros(0);                                                                               \
        for (int i = 0; i < count; i += (int)lanes()) {                                                      \
            svbool_t some = while_less(i, count);                                                            \
            sum = svmla_m(some, sum, svld1(some, a + i), svld1(some, b + i));                                \
        }                                                                                                    \
        result[0] = svaddv(svptrue_b8(), sum);                                                               \
        result[1] = svadda(svptrue_b8(), (element)0.5, sum);                                                 \
    }
DOT_PRODUCT(dot_of_halves, float16_t, svfloat16_t, svdup_f16, svcnth, svwhilelt_b16)
DOT_PRODUCT(dot_of_singles, float, svfloat32_t, svdup_f32, svcntw, svwhilelt_b32)
DOT_PRODUCT(dot_of_doubles, double, svfloat64_t, svdup_f64, svcntd, svwhilelt_b64)
#else
// In half precision a double holds the exact result before it is rounded: the numbers here are few bits long.
static float16_t fma_of_halves(float16_t a, float16_t b, float16_t c) {
    return (float16_t)((double)a * (double)b + (double)c);
}
#define DOT_PRODUCT(name, element, fused)                                                                    \
    KERNEL name(element* result, const element* a, const element* b, int count) {                            \
        enum { lanes = vector_bytes / sizeof(element) };                                                     \
        element sum[lanes] = {0};                                                                            \
        for (int i = 0; i < count; ++i)                                                                      \
            sum[i % lanes] = fused(a[i], b[i], sum[i % lanes]);                                              \
        result[1] = (element)0.5;                                                                            \
        for (int i = 0; i < lanes; ++i)                                                                      \
            result[1] = result[1] + sum[i];                                                                  \
        for (int left_over = lanes / 2; left_over > 0; left_over /= 2) {                                     \
            for (int i = 0; i < left_over; ++i)                                                              \
                sum[i] = sum[2 * i] + sum[2 * i + 1];                                                        \
        }                                                                                                    \
        result[0] = sum[0];                                                                                  \
    }
DOT_PRODUCT(dot_of_halves, float16_t, fma_of_halves)
DOT_PRODUCT(dot_of_singles, float, fmaf)
DOT_PRODUCT(dot_of_doubles, double, fma)
#endif

int main(void) {
    static float16_t half_a[length], half_b[length];
    static float single_a[length], single_b[length];
    static double double_a[length], double_b[length];
    uint64_t state = 2024;
    for (int i = 0; i < length; ++i) {
        half_a[i] = (float16_t)((int)(next_random(&state) % 257 - 128) / 64.0f);
        half_b[i] = (float16_t)((int)(next_random(&state) % 257 - 128) / 64.0f);
        single_a[i] = (float)(int32_t)next_random(&state) / 3e8f;
        single_b[i] = (float)(int32_t)next_random(&state) / 3e8f;
        double_a[i] = (double)(int64_t)next_random(&state) / 3e18;
        double_b[i] = (double)(int64_t)next_random(&state) / 3e18;
    }
    float16_t halves[2];
    float singles[2];
    double doubles[2], squares;
    static const int counts[] = {1, 11, 111, length};
    for (int i = 0; i < 4; ++i) {
        int count = counts[i];
        dot_of_halves(halves, half_a, half_b, count);
        dot_of_singles(singles, single_a, single_b, count);
        dot_of_doubles(doubles, double_a, double_b, count);
        printf("%4d elements\n  half   %a %a\n  single %a %a\n  double %a %a\n", count, (double)halves[0],
               (double)halves[1], (double)singles[0], (double)singles[1], doubles[0], doubles[1]);
    }
    sum_of_squares(&squares, single_a, length);
    printf("squares  %a\n", squares);

    for (int i = 0; i < size; ++i) {
        for (int j = 0; j < size; ++j) {
            left[i][j] = (float)(int32_t)next_random(&state) / 1e9f;
            right[i][j] = i == j ? 2 : i > j ? -0.125f : 0;
        }
    }
    for (int power = 1; power <= 8; ++power) {
        multiply(product, left, right);
        multiply(left, product, right);
        printf("after %2d products: corner % .9e, checksum %08x\n", 2 * power, (double)left[size - 1][0],
               checksum(left, sizeof left));
    }
    return 0;
}
