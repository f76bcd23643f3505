#include "sve/fp/fp_round.h"

#include <algorithm>

namespace {

template <class Bits> Bits round_fraction(int sign, int exp, Bits mnt, int rm, int mode, int* flags) {
    const Bits leading_one = FPFormat<Bits>::sign_bit;
    const Bits significand = static_cast<Bits>(leading_one | (mnt >> 1) | (mnt & 1));
    return fp_round<Bits, Bits>(sign, exp, significand, rm, mode, flags);
}

template <class Bits> Bits scale_and_round(Bits value, long scale, FPSCR& fpscr) {
    return fp_unary_kernel(value, fpscr, [scale](Bits value, int mode, int* flags) {
        using Word = typename FPFormat<Bits>::Word;
        if (fp_is_infinite(value) || fp_is_zero(value))
            return value;
        // Beyond this, every finite value overflows or is less than half the least denormal.
        const long limit = 3 * (FPFormat<Bits>::infinite_exponent + 1) / 2;
        const int bounded = static_cast<int>(std::clamp(scale, -limit, limit));
        const fp_finite<Bits> x = fp_unpack_normalised(value);
        const Word significand = x.mantissa << (fp_word_bits<Word> - 1 - FPFormat<Bits>::fraction_bits);
        return fp_round<Bits>(x.sign, x.exponent + bounded, significand, mode & FPMode_RMode, mode, flags);
    });
}

} // namespace

unsigned short fp16_round_(int sign, int exp, unsigned short mnt, int rm, int mode, int* flags) {
    return round_fraction(sign, exp, mnt, rm, mode, flags);
}
unsigned int fp32_round_(int sign, int exp, unsigned int mnt, int rm, int mode, int* flags) {
    return round_fraction(sign, exp, mnt, rm, mode, flags);
}
unsigned long fp64_round_(int sign, int exp, unsigned long mnt, int rm, int mode, int* flags) {
    return round_fraction(sign, exp, mnt, rm, mode, flags);
}

unsigned short FPProcess16(unsigned short value, FPSCR& fpscr) { return scale_and_round(value, 0, fpscr); }
unsigned int FPProcess32(unsigned int value, FPSCR& fpscr) { return scale_and_round(value, 0, fpscr); }
unsigned long FPProcess64(unsigned long value, FPSCR& fpscr) { return scale_and_round(value, 0, fpscr); }

unsigned short FPScale16(unsigned short value, short scale, FPSCR& fpscr) {
    return scale_and_round(value, scale, fpscr);
}
unsigned int FPScale32(unsigned int value, int scale, FPSCR& fpscr) {
    return scale_and_round(value, scale, fpscr);
}
unsigned long FPScale64(unsigned long value, long scale, FPSCR& fpscr) {
    return scale_and_round(value, scale, fpscr);
}
