// How often each of the 16 levels of a grey picture occurs: counting without a scalar loop over the data.
//
// Shows: compares into predicates, the count of a predicate's true elements added to a register, predicate
// logic, and minimum, maximum and sum reductions.
#include "example.h"
#include <stdio.h>

enum { width = 200, height = 150, levels = 16 };
static uint8_t picture[width * height];

struct summary {
    uint64_t sum;
    uint8_t least;
    uint8_t greatest;
    uint8_t padding[6];
};

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>

KERNEL count_levels(uint64_t* restrict count, const uint8_t* restrict grey, int n) {
    for (int i = 0; i < n; i += (int)svcntb()) {
        const svbool_t active = svwhilelt_b8(i, n);
        const svuint8_t level = svlsr_x(active, svld1(active, grey + i), 4);
        for (int k = 0; k < levels; ++k)
            count[k] += svcntp_b8(active, svcmpeq(active, level, (uint8_t)k));
    }
}

KERNEL count_between(uint64_t* restrict count, const uint8_t* restrict grey, int n, uint8_t low,
                     uint8_t high) {
    for (int i = 0; i < n; i += (int)svcntb()) {
        const svbool_t active = svwhilelt_b8(i, n);
        const svuint8_t value = svld1(active, grey + i);
        const svbool_t above = svcmpge(active, value, low), below = svcmple(active, value, high);
        *count += svcntp_b8(active, svand_z(active, above, below));
    }
}

KERNEL summarise(struct summary* restrict result, const uint8_t* restrict grey, int n) {
    for (int i = 0; i < n; i += (int)svcntb()) {
        const svbool_t active = svwhilelt_b8(i, n);
        const svuint8_t value = svld1(active, grey + i);
        const uint8_t least = svminv(active, value), greatest = svmaxv(active, value);
        result->sum += svaddv(active, value);
        result->least = least < result->least ? least : result->least;
        result->greatest = greatest > result->greatest ? greatest : result->greatest;
    }
}
#else
KERNEL count_levels(uint64_t* restrict count, const uint8_t* restrict grey, int n) {
    for (int i = 0; i < n; ++i)
        ++count[grey[i] >> 4];
}

KERNEL count_between(uint64_t* restrict count, const uint8_t* restrict grey, int n, uint8_t low,
                     uint8_t high) {
    for (int i = 0; i < n; ++i)
        *count += grey[i] >= low && grey[i] <= high;
}

KERNEL summarise(struct summary* restrict result, const uint8_t* restrict grey, int n) {
    for (int i = 0; i < n; ++i) {
        result->sum += grey[i];
        result->least = grey[i] < result->least ? grey[i] : result->least;
        result->greatest = grey[i] > result->greatest ? grey[i] : result->greatest;
    }
}
#endif

SCALAR int main(void) {
    uint64_t random = 99;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int dx = x - width / 2, dy = y - height / 2;
            picture[y * width + x] =
                (uint8_t)((dx * dx + 2 * dy * dy) / 90 + (int)(next_random(&random) >> 60));
        }
    }
    uint64_t count[levels] = {0};
    count_levels(count, picture, width * height);
    uint64_t all = 0;
    for (int k = 0; k < levels; ++k) {
        char bar[61] = "";
        const uint64_t length = count[k] / 60;
        for (uint64_t i = 0; i < length && i < 60; ++i)
            bar[i] = '#';
        printf("%3d to %3d %6llu %s\n", 16 * k, 16 * k + 15, (unsigned long long)count[k], bar);
        all += count[k];
    }
    uint64_t middle = 0;
    count_between(&middle, picture, width * height, 64, 191);
    struct summary summary = {.least = 255};
    summarise(&summary, picture, width * height);
    printf("%llu points, %llu of them from 64 to 191; darkest %d, lightest %d, mean %llu\n",
           (unsigned long long)all, (unsigned long long)middle, summary.least, summary.greatest,
           (unsigned long long)(summary.sum / all));
    return 0;
}
