// Finds an echo in a recording: the delay at which the recording resembles itself most, by the products of
// all its samples with the delayed ones. Then smooths the recording by a filter of eight taps.
//
// Shows: integer dot products of bytes and halfwords in wider accumulators, and multiply-add.
#include "example.h"
#include <stdio.h>

enum { samples = 4000, delays = 160, true_delay = 117, taps = 8 };
static int8_t coarse[samples];
static int16_t fine[samples + taps];
static int32_t smooth[samples];

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>

KERNEL correlate_bytes(int32_t* result, const int8_t* a, const int8_t* b, int n) {
    svint32_t sums = svdup_s32(0);
    for (int i = 0; i < n; i += (int)svcntb()) {
        const svbool_t active = svwhilelt_b8(i, n);
        sums = svdot(sums, svld1(active, a + i), svld1(active, b + i));
    }
    *result = (int32_t)svaddv(svptrue_b32(), sums);
}

KERNEL correlate_halfwords(int64_t* result, const int16_t* a, const int16_t* b, int n) {
    svint64_t sums = svdup_s64(0);
    for (int i = 0; i < n; i += (int)svcnth()) {
        const svbool_t active = svwhilelt_b16(i, n);
        sums = svdot(sums, svld1(active, a + i), svld1(active, b + i));
    }
    *result = svaddv(svptrue_b64(), sums);
}
#else
KERNEL correlate_bytes(int32_t* result, const int8_t* a, const int8_t* b, int n) {
    *result = 0;
    for (int i = 0; i < n; ++i)
        *result += a[i] * b[i];
}

KERNEL correlate_halfwords(int64_t* result, const int16_t* a, const int16_t* b, int n) {
    *result = 0;
    for (int i = 0; i < n; ++i)
        *result += (int64_t)a[i] * b[i];
}
#endif

KERNEL filter(int32_t* restrict out, const int16_t* restrict in, const int16_t* restrict tap, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t sum = 0;
        for (int k = 0; k < taps; ++k)
            sum += tap[k] * in[i + k];
        out[i] = sum >> 6;
    }
}

SCALAR int main(void) {
    uint64_t random = 2718;
    for (int i = 0; i < samples; ++i) {
        const int noise = (int)(next_random(&random) >> 57) - 64;
        const int echo = i >= true_delay ? coarse[i - true_delay] / 2 : 0;
        const int sum = noise + echo;
        coarse[i] = (int8_t)(sum > 127 ? 127 : sum < -128 ? -128 : sum);
        fine[i] = (int16_t)(coarse[i] * 200);
    }

    int best_coarse = 0, best_fine = 0;
    int32_t most_coarse = 0;
    int64_t most_fine = 0;
    for (int delay = 1; delay < delays; ++delay) {
        int32_t in_bytes;
        int64_t in_halfwords;
        correlate_bytes(&in_bytes, coarse, coarse + delay, samples - delays);
        correlate_halfwords(&in_halfwords, fine, fine + delay, samples - delays);
        if (in_bytes > most_coarse) {
            most_coarse = in_bytes;
            best_coarse = delay;
        }
        if (in_halfwords > most_fine) {
            most_fine = in_halfwords;
            best_fine = delay;
        }
    }
    printf("the echo comes after %d samples (%d), by the finer recording %d (%lld)\n", best_coarse,
           most_coarse, best_fine, (long long)most_fine);

    static const int16_t tap[taps] = {1, 5, 11, 15, 15, 11, 5, 1};
    filter(smooth, fine, tap, samples);
    printf("smoothed: checksum %08x\n", checksum(smooth, sizeof smooth));
    return best_coarse != true_delay || best_fine != true_delay;
}
