// What every kernel does to its operands before it computes: flushing denormals, classifying, the
// architecture's NaN rules, and splitting a finite value into sign, exponent and significand.
#pragma once

#include "sve/fp/fp_formats.h"

#include <bit>

template <class Word> inline constexpr int fp_word_bits = 8 * static_cast<int>(sizeof(Word));

// The number of zero bits above the highest set bit; the word isn't zero.
template <class Word> inline int fp_leading_zeros(Word word) {
    if constexpr (sizeof(Word) == 16) {
        const std::uint64_t high = static_cast<std::uint64_t>(word >> 64);
        return high != 0 ? std::countl_zero(high) : 64 + std::countl_zero(static_cast<std::uint64_t>(word));
    } else {
        return std::countl_zero(word);
    }
}

// Shifts right by 0 or more bits and ORs into bit 0 whether a set bit was lost. `word` leaves its top bit
// clear.
template <class Word> inline Word fp_shift_right_sticky(Word word, int count) {
    constexpr int most = fp_word_bits<Word> - 1; // leaves nothing of a word whose top bit is clear
    count = count < most ? count : most;
    const Word shifted = word >> count;
    return shifted | static_cast<Word>((shifted << count) != word);
}

template <class Bits> inline bool fp_is_nan(Bits value) {
    return (value & FPFormat<Bits>::magnitude_mask) > FPFormat<Bits>::infinity;
}
template <class Bits> inline bool fp_is_quiet_nan(Bits value) {
    return (value & FPFormat<Bits>::default_nan) == FPFormat<Bits>::default_nan;
}
template <class Bits> inline bool fp_is_signalling_nan(Bits value) {
    return fp_is_nan(value) && !fp_is_quiet_nan(value);
}
template <class Bits> inline bool fp_is_infinite(Bits value) {
    return (value & FPFormat<Bits>::magnitude_mask) == FPFormat<Bits>::infinity;
}
template <class Bits> inline bool fp_is_nan_or_infinite(Bits value) {
    return (value & FPFormat<Bits>::magnitude_mask) >= FPFormat<Bits>::infinity;
}
template <class Bits> inline bool fp_is_zero(Bits value) {
    return (value & FPFormat<Bits>::magnitude_mask) == 0;
}
template <class Bits> inline int fp_sign(Bits value) {
    return static_cast<int>(value >> (FPFormat<Bits>::width - 1));
}
// The biased exponent as it stands in the element: 0 for a zero or a denormal.
template <class Bits> inline int fp_exponent_field(Bits value) {
    using Format = FPFormat<Bits>;
    return static_cast<int>((value >> Format::fraction_bits) & Format::infinite_exponent);
}
// `magnitude` with the given sign, 0 or 1.
template <class Bits> inline Bits fp_with_sign(int sign, Bits magnitude) {
    return static_cast<Bits>((Bits(sign) << (FPFormat<Bits>::width - 1)) | magnitude);
}

// An operand as the operation sees it: a denormal is the signed zero when the mode flushes this format.
template <class Bits> inline Bits fp_flush_input(Bits value, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    if (mode & Format::flush_mode) [[unlikely]] {
        if (fp_exponent_field(value) == 0 && !fp_is_zero(value)) {
            *flags |= Format::flushed_input_flag;
            return value & Format::sign_bit;
        }
    }
    return value;
}

// The result for an operation whose NaN operand this is: quieted, and the default NaN under DN. A signalling
// NaN raises IOC.
template <class Bits> inline Bits fp_process_nan(Bits nan, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    if (!fp_is_quiet_nan(nan))
        *flags |= FPFlag_IOC;
    return mode & FPMode_DN ? Format::default_nan : static_cast<Bits>(nan | Format::quiet_bit);
}

// Chooses the NaN that an operation with NaN operands returns: the first signalling one, else the first quiet
// one, in the order of the arguments. At least one of them is a NaN.
template <class Bits> inline Bits fp_process_nans(Bits a, Bits b, Bits c, int mode, int* flags) {
    if (fp_is_signalling_nan(a))
        return fp_process_nan(a, mode, flags);
    if (fp_is_signalling_nan(b))
        return fp_process_nan(b, mode, flags);
    if (fp_is_signalling_nan(c))
        return fp_process_nan(c, mode, flags);
    return fp_process_nan(fp_is_nan(a) ? a : fp_is_nan(b) ? b : c, mode, flags);
}
template <class Bits> inline Bits fp_process_nans(Bits a, Bits b, int mode, int* flags) {
    return fp_process_nans(a, b, b, mode, flags);
}

// The default NaN, as the result of an invalid operation.
template <class Bits> inline Bits fp_invalid(int* flags) {
    *flags |= FPFlag_IOC;
    return FPFormat<Bits>::default_nan;
}

// A kernel of one operand: compute(a, mode, flags), with denormals flushed before and exceptions raised after
// it. NaNs do not reach it.
template <class Bits, class Compute>
[[gnu::always_inline]] inline Bits fp_unary_kernel(Bits a, FPSCR& fpscr, Compute compute) {
    const int mode = fpscr.mode();
    int flags = 0;
    a = fp_flush_input(a, mode, &flags);
    const Bits result = fp_is_nan(a) ? fp_process_nan(a, mode, &flags) : compute(a, mode, &flags);
    fpscr.raise(flags);
    return result;
}

// A finite value, mantissa * 2^(exponent - bias - fraction_bits) with the sign 0 or 1.
template <class Bits> struct fp_finite {
    using Word = typename FPFormat<Bits>::Word;
    int sign;
    int exponent;
    Word mantissa;
};

// A denormal or zero has exponent 1 and no implicit bit.
template <class Bits> inline fp_finite<Bits> fp_unpack(Bits value) {
    using Format = FPFormat<Bits>;
    using Word = typename Format::Word;
    const int field = fp_exponent_field(value);
    const Word implicit = static_cast<Word>(field != 0) << Format::fraction_bits;
    return {fp_sign(value), field + (field == 0), (value & Format::fraction_mask) | implicit};
}

// Neither zero, denormal, infinite nor a NaN: what kernels have their shortest path for.
template <class Bits> inline bool fp_is_normal(Bits value) {
    return static_cast<unsigned>(fp_exponent_field(value)) - 1 < FPFormat<Bits>::infinite_exponent - 1;
}
template <class Bits> inline fp_finite<Bits> fp_unpack_normal(Bits value) {
    using Format = FPFormat<Bits>;
    return {fp_sign(value), fp_exponent_field(value),
            (value & Format::fraction_mask) | typename Format::Word{Format::implicit_bit}};
}

// The value, not zero, with its leading one in the place of the implicit bit: the exponent of a denormal is 0
// or less.
template <class Bits> inline fp_finite<Bits> fp_unpack_normalised(Bits value) {
    using Format = FPFormat<Bits>;
    using Word = typename Format::Word;
    fp_finite<Bits> result = fp_unpack(value);
    if (result.mantissa < Format::implicit_bit) [[unlikely]] {
        const int shift =
            fp_leading_zeros(result.mantissa) - (fp_word_bits<Word> - 1 - Format::fraction_bits);
        result.mantissa <<= shift;
        result.exponent -= shift;
    }
    return result;
}
