// Rounding and packing, in one place for all kernels and formats.
#pragma once

#include "sve/fp/fp_unpack.h"

#include <type_traits>

// Whether a magnitude is to be increased by one unit, by the rounding modes 0 to 3 (all others round nothing
// up). `error` holds the two bits below the unit, the lower one sticky; `odd` is the lowest bit of the
// magnitude.
inline bool fp_rounds_up(int rm, int sign, int error, int odd) {
    if (rm == FPRounding_TIEEVEN) [[likely]]
        return error + odd > 2;
    return error != 0 && rm == FPRounding_POSINF + sign;
}

// The result of an operation that overflows by the rounding mode `rm`: infinity or the largest finite number.
template <class Bits> inline Bits fp_overflow(int sign, int rm, int* flags) {
    using Format = FPFormat<Bits>;
    *flags |= FPFlag_OFC | FPFlag_IXC;
    const bool to_infinity = rm == FPRounding_TIEEVEN || rm == FPRounding_POSINF + sign;
    return fp_with_sign<Bits>(sign, to_infinity ? Format::infinity : Format::largest_normal);
}

// The element nearest to +-(significand / 2^(bits of Word - 1)) * 2^(exponent - bias) by the rounding mode
// `rm`, with OFC, UFC and IXC raised as IEEE 754 defines them; underflow is detected before rounding. The
// significand has its top bit set, and its bit 0 may stand for everything that lies below it. The exponent
// may have any value. Of the mode word only the format's flush bit and, in half precision, AHP count: a tiny
// result is flushed to the signed zero, raising UFC alone; the alternative half format has no infinities, and
// its overflow is an invalid operation.
template <class Bits, class Word>
inline Bits fp_round(int sign, int exponent, Word significand, int rm, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    using Packed = std::conditional_t<(sizeof(Bits) < 4), std::uint32_t, Bits>;
    constexpr int dropped = fp_word_bits<Word> - (Format::fraction_bits + 3);
    static_assert(dropped > 0);

    // The implicit one, the fraction, and two more bits of which the lower is sticky.
    Packed mantissa =
        static_cast<Packed>(significand >> dropped) |
        static_cast<Packed>(static_cast<Word>(significand << (fp_word_bits<Word> - dropped)) != 0);

    if (exponent < 1) [[unlikely]] {
        if (mode & Format::flush_mode) {
            *flags |= FPFlag_UFC;
            return fp_with_sign<Bits>(sign, 0);
        }
        mantissa = fp_shift_right_sticky(mantissa, 1 - exponent);
        exponent = 1;
        if (mantissa & 3)
            *flags |= FPFlag_UFC;
    }

    int overflow_exponent = Format::infinite_exponent;
    if constexpr (sizeof(Bits) == 2)
        overflow_exponent += (mode & FPMode_AHP) != 0;
    exponent = exponent < overflow_exponent ? exponent : overflow_exponent;

    // The implicit one is added to the exponent field, and so is the carry of rounding up; a denormal has
    // none.
    const int error = static_cast<int>(mantissa & 3);
    Packed packed = (static_cast<Packed>(exponent - 1) << Format::fraction_bits) + (mantissa >> 2);
    packed += fp_rounds_up(rm, sign, error, static_cast<int>(packed & 1));
    if (rm == FPRounding_ODD && error != 0)
        packed |= 1;

    if (packed >= static_cast<Packed>(overflow_exponent) << Format::fraction_bits) [[unlikely]] {
        if (overflow_exponent != Format::infinite_exponent) {
            *flags |= FPFlag_IOC;
            return fp_with_sign<Bits>(sign, Format::magnitude_mask);
        }
        return fp_overflow<Bits>(sign, rm, flags);
    }
    *flags |= error != 0 ? FPFlag_IXC : 0;
    return fp_with_sign<Bits>(sign, static_cast<Bits>(packed));
}

// The same with the leading one of the significand left out: the top bit of `mnt` is the first bit of the
// fraction. `exp` is the biased exponent; ties away from zero (4) truncates here.
unsigned short fp16_round_(int sign, int exp, unsigned short mnt, int rm, int mode, int* flags);
unsigned int fp32_round_(int sign, int exp, unsigned int mnt, int rm, int mode, int* flags);
unsigned long fp64_round_(int sign, int exp, unsigned long mnt, int rm, int mode, int* flags);

// The value run through unpacking, the NaN rules, flushing and rounding, with no operation between.
unsigned short FPProcess16(unsigned short value, FPSCR& fpscr);
unsigned int FPProcess32(unsigned int value, FPSCR& fpscr);
unsigned long FPProcess64(unsigned long value, FPSCR& fpscr);

// value * 2^scale, rounded once: FSCALE.
unsigned short FPScale16(unsigned short value, short scale, FPSCR& fpscr);
unsigned int FPScale32(unsigned int value, int scale, FPSCR& fpscr);
unsigned long FPScale64(unsigned long value, long scale, FPSCR& fpscr);
