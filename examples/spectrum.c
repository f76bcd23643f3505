// A Fourier transform of four to the power of five complex numbers, and its inverse: the spectrum of a chord
// of three notes in noise.
//
// Shows: complex numbers as pairs of elements, multiplied by two complex multiply-adds and turned by 90
// degrees in the addition.
#include "example.h"
#include <math.h>
#include <stdio.h>

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#endif

enum { points = 1024, digits = 5 };

typedef struct complex_number {
    float re, im;
} complex_number;

// One stage: each block of 4 * quarter numbers is made of four transforms of `quarter` numbers, which are
// multiplied by the twiddle factors of their place and added with all four turns.
#ifdef __ARM_FEATURE_SVE
static inline svfloat32_t multiply(svbool_t some, svfloat32_t w, svfloat32_t x) {
    svfloat32_t half = svcmla_x(some, svdup_f32(0), w, x, 0);
    return svcmla_x(some, half, w, x, 90);
}
KERNEL combine(complex_number* numbers, const complex_number* twiddles, int quarter) {
    for (complex_number* block = numbers; block < numbers + points; block += 4 * quarter) {
        for (int i = 0; i < 2 * quarter; i += (int)svcntw()) {
            svbool_t some = svwhilelt_b32(i, 2 * quarter);
            float* at = (float*)block + i;
            const float* w = (const float*)twiddles + i;
            svfloat32_t a = svld1(some, at);
            svfloat32_t b = multiply(some, svld1(some, w), svld1(some, at + 2 * quarter));
            svfloat32_t c = multiply(some, svld1(some, w + 2 * quarter), svld1(some, at + 4 * quarter));
            svfloat32_t d = multiply(some, svld1(some, w + 4 * quarter), svld1(some, at + 6 * quarter));
            svfloat32_t even_sum = svadd_x(some, a, c), even_difference = svsub_x(some, a, c);
            svfloat32_t odd_sum = svadd_x(some, b, d), odd_difference = svsub_x(some, b, d);
            svst1(some, at, svadd_x(some, even_sum, odd_sum));
            svst1(some, at + 2 * quarter, svcadd_x(some, even_difference, odd_difference, 270));
            svst1(some, at + 4 * quarter, svsub_x(some, even_sum, odd_sum));
            svst1(some, at + 6 * quarter, svcadd_x(some, even_difference, odd_difference, 90));
        }
    }
}
#else
static complex_number multiply(complex_number w, complex_number x) {
    return (complex_number){fmaf(w.im, -x.im, fmaf(w.re, x.re, 0)), fmaf(w.im, x.re, fmaf(w.re, x.im, 0))};
}
static complex_number add(complex_number a, complex_number b) {
    return (complex_number){a.re + b.re, a.im + b.im};
}
static complex_number subtract(complex_number a, complex_number b) {
    return (complex_number){a.re - b.re, a.im - b.im};
}
KERNEL combine(complex_number* numbers, const complex_number* twiddles, int quarter) {
    for (complex_number* block = numbers; block < numbers + points; block += 4 * quarter) {
        for (int i = 0; i < quarter; ++i) {
            complex_number a = block[i];
            complex_number b = multiply(twiddles[i], block[i + quarter]);
            complex_number c = multiply(twiddles[i + quarter], block[i + 2 * quarter]);
            complex_number d = multiply(twiddles[i + 2 * quarter], block[i + 3 * quarter]);
            complex_number even_sum = add(a, c), even_difference = subtract(a, c);
            complex_number odd_sum = add(b, d), odd_difference = subtract(b, d);
            complex_number turned = {-odd_difference.im, odd_difference.re};
            block[i] = add(even_sum, odd_sum);
            block[i + quarter] = subtract(even_difference, turned);
            block[i + 2 * quarter] = subtract(even_sum, odd_sum);
            block[i + 3 * quarter] = add(even_difference, turned);
        }
    }
}
#endif

static void transform(complex_number* result, const complex_number* signal) {
    static complex_number twiddles[points];
    for (int i = 0; i < points; ++i) {
        int reversed = 0;
        for (int digit = 0; digit < digits; ++digit)
            reversed = reversed * 4 + (i >> (2 * digit) & 3);
        result[reversed] = signal[i];
    }
    for (int quarter = 1; quarter < points; quarter *= 4) {
        for (int k = 1; k < 4; ++k) {
            for (int i = 0; i < quarter; ++i) {
                double angle = -2 * 3.14159265358979323846 * (i * k) / (4 * quarter);
                twiddles[(k - 1) * quarter + i] = (complex_number){(float)cos(angle), (float)sin(angle)};
            }
        }
        combine(result, twiddles, quarter);
    }
}

int main(void) {
    static complex_number signal[points], spectrum[points], back[points];
    static const int notes[] = {64, 80, 96};
    uint64_t state = 440;
    for (int i = 0; i < points; ++i) {
        float noise = (float)(int32_t)next_random(&state) / 4e9f;
        for (int note = 0; note < 3; ++note)
            noise += (float)sin(2 * 3.14159265358979323846 * notes[note] * i / points);
        signal[i] = (complex_number){noise, 0};
    }
    transform(spectrum, signal);
    for (int i = 56; i < 104; ++i) {
        float power = spectrum[i].re * spectrum[i].re + spectrum[i].im * spectrum[i].im;
        int bar = (int)(sqrtf(power) / 10);
        printf("%4d |%.*s\n", i, bar, "############################################################");
    }
    printf("spectrum: checksum %08x\n", checksum(spectrum, sizeof spectrum));

    // The inverse is the transform of the conjugate.
    for (int i = 0; i < points; ++i)
        spectrum[i].im = -spectrum[i].im;
    transform(back, spectrum);
    float largest = 0;
    for (int i = 0; i < points; ++i)
        largest = fmaxf(largest, fabsf(back[i].re / points - signal[i].re));
    printf("and back: checksum %08x, largest error %.3g\n", checksum(back, sizeof back), (double)largest);
    return 0;
}
