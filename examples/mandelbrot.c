// The Mandelbrot set, drawn in half and in single precision. Half precision runs out of digits near the edge,
// which shows.
//
// Shows: floating-point arithmetic, compares and counting under a predicate that loses the points that have
// left the circle, until none is left.
#include "example.h"
#include <stdio.h>

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#else
#include <arm_neon.h>
#endif

enum { columns = 78, rows = 33, most_steps = 60 };

// The steps that each point of a line takes to leave the circle of radius 2.
#ifdef __ARM_FEATURE_SVE
KERNEL halves(int16_t* steps, const float16_t* across, float16_t up, int count) {
    for (int i = 0; i < count; i += (int)svcnth()) {
        svbool_t points = svwhilelt_b16(i, count), inside = points;
        svfloat16_t cx = svld1(points, across + i), cy = svdup_f16(up), x = cx, y = cy;
        svint16_t taken = svdup_s16(0);
        for (int step = 0; step < most_steps && svptest_any(points, inside); ++step) {
            svfloat16_t xx = svmul_x(inside, x, x), yy = svmul_x(inside, y, y), xy = svmul_x(inside, x, y);
            inside = svcmple(inside, svadd_x(inside, xx, yy), (float16_t)4);
            taken = svadd_m(inside, taken, 1);
            x = svadd_x(inside, svsub_x(inside, xx, yy), cx);
            y = svadd_x(inside, svadd_x(inside, xy, xy), cy);
        }
        svst1(points, steps + i, taken);
    }
}
KERNEL singles(int32_t* steps, const float* across, float up, int count) {
    for (int i = 0; i < count; i += (int)svcntw()) {
        svbool_t points = svwhilelt_b32(i, count), inside = points;
        svfloat32_t cx = svld1(points, across + i), cy = svdup_f32(up), x = cx, y = cy;
        svint32_t taken = svdup_s32(0);
        for (int step = 0; step < most_steps && svptest_any(points, inside); ++step) {
            svfloat32_t xx = svmul_x(inside, x, x), yy = svmul_x(inside, y, y), xy = svmul_x(inside, x, y);
            inside = svcmple(inside, svadd_x(inside, xx, yy), 4.0f);
            taken = svadd_m(inside, taken, 1);
            x = svadd_x(inside, svsub_x(inside, xx, yy), cx);
            y = svadd_x(inside, svadd_x(inside, xy, xy), cy);
        }
        svst1(points, steps + i, taken);
    }
}
#else
// Each operation is one in single precision, rounded to half, which is what one in half precision gives.
KERNEL halves(int16_t* steps, const float16_t* across, float16_t up, int count) {
    for (int i = 0; i < count; ++i) {
        float16_t x = across[i], y = up;
        for (steps[i] = 0; steps[i] < most_steps; ++steps[i]) {
            float16_t xx = x * x, yy = y * y, xy = x * y, square = xx + yy;
            if (!(square <= 4))
                break;
            x = xx - yy;
            x = x + across[i];
            y = xy + xy;
            y = y + up;
        }
    }
}
KERNEL singles(int32_t* steps, const float* across, float up, int count) {
    for (int i = 0; i < count; ++i) {
        float x = across[i], y = up;
        for (steps[i] = 0; steps[i] < most_steps; ++steps[i]) {
            float xx = x * x, yy = y * y, xy = x * y;
            if (!(xx + yy <= 4))
                break;
            x = xx - yy + across[i];
            y = xy + xy + up;
        }
    }
}
#endif

static char shade(int steps) { return " .:-=+*%#@"[steps == most_steps ? 9 : steps < 9 ? steps : 8]; }

static void draw(const char* name, float left, float top, float width) {
    static int32_t steps[rows][columns];
    float step = width / columns;
    uint32_t hash = 0;
    printf("%s\n", name);
    for (int line = 0; line < rows; ++line) {
        float single_points[columns];
        float16_t half_points[columns];
        int16_t half_steps[columns];
        for (int i = 0; i < columns; ++i)
            half_points[i] = (float16_t)(single_points[i] = left + step * (float)i);
        float up = top - 2 * step * (float)line;
        singles(steps[line], single_points, up, columns);
        if (name[0] == 'H') {
            halves(half_steps, half_points, (float16_t)up, columns);
            for (int i = 0; i < columns; ++i)
                steps[line][i] = half_steps[i];
        }
        for (int i = 0; i < columns; ++i)
            putchar(shade(steps[line][i]));
        putchar('\n');
        hash = hash * 31 + checksum(steps[line], sizeof steps[line]);
    }
    printf("checksum %08x\n\n", hash);
}

int main(void) {
    draw("Single precision", -2.2f, 1.25f, 3.0f);
    draw("Half precision", -2.2f, 1.25f, 3.0f);
    draw("Half precision, near the edge", -0.82f, 0.25f, 0.3f);
    draw("The same in single precision", -0.82f, 0.25f, 0.3f);
    return 0;
}
