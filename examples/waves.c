// Exponentials and sines of many numbers: a wave that dies away.
//
// Shows: the accelerators that exist for just this: a power of two taken from a table inside the processor,
// and polynomials whose coefficients the processor knows. In a build without SVE the tables stand in the
// program.
#include "example.h"
#include <math.h>
#include <stdio.h>
#include <string.h>

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#endif

enum { count = 1000 };

// Adding it leaves a number's 64ths, and an exponent field, in the lowest bits of the sum.
static const float exponent_shift = 0x1.803f8p17f;
static const float log2_e = 0x1.715476p+0f, ln2_high = 0x1.62e4p-1f, ln2_low = 0x1.7f7d1cp-20f;
static const float third = 0x1.555556p-2f;

// Adding it rounds to an integer, which stands in the lowest bits of the sum.
static const double integer_shift = 0x1.8p52;
static const double two_by_pi = 0x1.45f306dc9c883p-1, half_pi_high = 0x1.921fb54442d18p+0,
                    half_pi_low = 0x1.1a62633145c07p-54;

#ifdef __ARM_FEATURE_SVE
KERNEL exponentials(float* restrict result, const float* restrict x, int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t some = svwhilelt_b32(i, n);
        svfloat32_t value = svld1(some, x + i);
        svfloat32_t shifted = svmla_x(some, svdup_f32(exponent_shift), value, log2_e);
        svfloat32_t whole = svsub_x(some, shifted, exponent_shift);
        svfloat32_t rest = svmls_x(some, svmls_x(some, value, whole, ln2_high), whole, ln2_low);
        svfloat32_t power = svexpa(svreinterpret_u32(shifted));
        // e^rest - 1 is rest + rest^2 / 2 * (1 + rest / 3) and a little more.
        svfloat32_t square = svmul_x(some, rest, svmul_x(some, rest, 0.5f));
        svfloat32_t less_one = svmla_x(some, rest, square, svmla_x(some, svdup_f32(1), rest, third));
        svst1(some, result + i, svmla_x(some, power, power, less_one));
    }
}
KERNEL sines(double* restrict result, const double* restrict x, int n) {
    for (int i = 0; i < n; i += (int)svcntd()) {
        svbool_t some = svwhilelt_b64(i, n);
        svfloat64_t value = svld1(some, x + i);
        svfloat64_t shifted = svmla_x(some, svdup_f64(integer_shift), value, two_by_pi);
        svfloat64_t turns = svsub_x(some, shifted, integer_shift);
        svfloat64_t rest = svmls_x(some, svmls_x(some, value, turns, half_pi_high), turns, half_pi_low);
        svuint64_t quadrant = svreinterpret_u64(shifted);
        svfloat64_t square = svtsmul(rest, quadrant), sum = svdup_f64(0);
        sum = svtmad(sum, square, 7);
        sum = svtmad(sum, square, 6);
        sum = svtmad(sum, square, 5);
        sum = svtmad(sum, square, 4);
        sum = svtmad(sum, square, 3);
        sum = svtmad(sum, square, 2);
        sum = svtmad(sum, square, 1);
        sum = svtmad(sum, square, 0);
        svst1(some, result + i, svmul_x(some, sum, svtssel(rest, quadrant)));
    }
}
#else
KERNEL exponentials(float* restrict result, const float* restrict x, int n) {
    for (int i = 0; i < n; ++i) {
        float shifted = fmaf(x[i], log2_e, exponent_shift), whole = shifted - exponent_shift;
        float rest = fmaf(-whole, ln2_low, fmaf(-whole, ln2_high, x[i])), power;
        uint32_t bits;
        memcpy(&bits, &shifted, sizeof bits);
        bits = (bits >> 6 & 0xFF) << 23 | (uint32_t)lrint((exp2((bits & 63) / 64.0) - 1) * 0x1p23);
        memcpy(&power, &bits, sizeof bits);
        float square = rest * (rest * 0.5f), less_one = fmaf(square, fmaf(rest, third, 1), rest);
        result[i] = fmaf(power, less_one, power);
    }
}
// Taylor's coefficients of the sine and the cosine, rounded, but for the last ones, which are fitted.
static const double coefficients[2][8] = {
    {0x1p+0, -0x1.5555555555543p-3, 0x1.111111110f30cp-7, -0x1.a01a019b92fc6p-13, 0x1.71de351f3d22bp-19,
     -0x1.ae5e2b60f7b91p-26, 0x1.5d8408868552fp-33, 0},
    {0x1p+0, -0x1p-1, 0x1.5555555555536p-5, -0x1.6c16c16c13a0bp-10, 0x1.a01a019b1e8d8p-16,
     -0x1.27e4f7282f468p-22, 0x1.1ee96d2641b13p-29, -0x1.8f76380fbb401p-37}};
KERNEL sines(double* restrict result, const double* restrict x, int n) {
    for (int i = 0; i < n; ++i) {
        double shifted = fma(x[i], two_by_pi, integer_shift), turns = shifted - integer_shift;
        double rest = fma(-turns, half_pi_low, fma(-turns, half_pi_high, x[i]));
        uint64_t quadrant;
        memcpy(&quadrant, &shifted, sizeof quadrant);
        double square = rest * rest, sum = 0;
        for (int k = 7; k >= 0; --k)
            sum = fma(sum, square, coefficients[quadrant & 1][k]);
        double factor = quadrant & 1 ? 1 : rest;
        result[i] = sum * (quadrant & 2 ? -factor : factor);
    }
}
#endif

int main(void) {
    static float decay[count], small[count];
    static double angle[count], height[count];
    for (int i = 0; i < count; ++i) {
        decay[i] = (float)(-i) / 250;
        angle[i] = i * 0.0625;
    }
    exponentials(small, decay, count);
    sines(height, angle, count);
    for (int i = 0; i < count; i += 12) {
        int column = (int)lrint(36 + 36 * (double)small[i] * height[i]);
        if (i < 600)
            printf("%6.2f |%*s\n", angle[i], column + 1, "o");
    }
    double exponential_error = 0, sine_error = 0;
    for (int i = 0; i < count; ++i) {
        exponential_error = fmax(exponential_error, fabs(small[i] / exp((double)decay[i]) - 1));
        sine_error = fmax(sine_error, fabs(height[i] - sin(angle[i])));
    }
    printf("e^-x:   checksum %08x, largest relative error %.2e\n", checksum(small, sizeof small),
           exponential_error);
    printf("sin(x): checksum %08x, largest error %.2e\n", checksum(height, sizeof height), sine_error);

    // Everything from overflow to what is too small, and large angles.
    for (int i = 0; i < count; ++i) {
        decay[i] = (float)(i - 500) / 6;
        angle[i] = (i - 500) * 123.456;
    }
    exponentials(small, decay, count);
    sines(height, angle, count);
    printf("wide:   checksums %08x %08x\n", checksum(small, sizeof small), checksum(height, sizeof height));
    return 0;
}
