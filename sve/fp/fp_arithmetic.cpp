#include "sve/fp/fp_arithmetic.h"

namespace {

// a + b with at least one operand infinite or a NaN; `b_sign_flip` inverts the sign of b, but not that of a
// NaN.
template <class Bits> Bits add_special(Bits a, Bits b, Bits b_sign_flip, int mode, int* flags) {
    if (fp_is_nan(a) || fp_is_nan(b))
        return fp_process_nans(a, b, mode, flags);
    b ^= b_sign_flip;
    if (!fp_is_infinite(a))
        return b;
    if (fp_is_infinite(b) && a != b)
        return fp_invalid<Bits>(flags);
    return a;
}

// a + b, finite, with the larger magnitude first.
template <class Bits>
inline Bits add_finite(const fp_finite<Bits>& large, const fp_finite<Bits>& small, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    using Word = typename Format::Word;
    constexpr int guard_bits = 3; // enough for rounding, the lowest one sticky
    constexpr int top = fp_word_bits<Word> - 1;

    const Word aligned =
        fp_shift_right_sticky<Word>(small.mantissa << guard_bits, large.exponent - small.exponent);
    // Adds, or subtracts by adding the complement.
    const Word complement = -static_cast<Word>(large.sign ^ small.sign);
    const Word sum = (large.mantissa << guard_bits) + (aligned ^ complement) - complement;
    const int rm = mode & FPMode_RMode;
    if (sum == 0) [[unlikely]] {
        // Two zeros of one sign keep it; everything else that cancels is +0, or -0 when rounding down.
        const int sign = large.sign == small.sign ? large.sign : rm == FPRounding_NEGINF;
        return fp_with_sign<Bits>(sign, 0);
    }
    const int shift = fp_leading_zeros(sum);
    const int exponent = large.exponent + (top - guard_bits - Format::fraction_bits) - shift;
    return fp_round<Bits, Word>(large.sign, exponent, sum << shift, rm, mode, flags);
}

// Operands of any kind.
template <class Bits> [[gnu::noinline]] Bits add_any(Bits a, Bits b, Bits b_sign_flip, FPSCR& fpscr) {
    const int mode = fpscr.mode();
    int flags = 0;
    a = fp_flush_input(a, mode, &flags);
    b = fp_flush_input(b, mode, &flags);
    Bits result;
    if (fp_is_nan_or_infinite(a) || fp_is_nan_or_infinite(b)) {
        result = add_special(a, b, b_sign_flip, mode, &flags);
    } else {
        b ^= b_sign_flip;
        const bool swap = FPAbs(a) < FPAbs(b);
        result = add_finite(fp_unpack(swap ? b : a), fp_unpack(swap ? a : b), mode, &flags);
    }
    fpscr.raise(flags);
    return result;
}

template <class Bits> inline Bits add(Bits a, Bits b, Bits b_sign_flip, FPSCR& fpscr) {
    if (!fp_is_normal(a) || !fp_is_normal(b)) [[unlikely]]
        return add_any(a, b, b_sign_flip, fpscr);
    b ^= b_sign_flip;
    const bool swap = FPAbs(a) < FPAbs(b);
    int flags = 0;
    const Bits result =
        add_finite(fp_unpack_normal(swap ? b : a), fp_unpack_normal(swap ? a : b), fpscr.mode(), &flags);
    fpscr.raise(flags);
    return result;
}

// a * b with at least one operand zero, infinite or a NaN; `infinity_times_zero` is the magnitude of that
// product, and raises IOC as the default NaN, but as a number nothing.
template <class Bits> Bits multiply_special(Bits a, Bits b, Bits infinity_times_zero, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    if (fp_is_nan(a) || fp_is_nan(b))
        return fp_process_nans(a, b, mode, flags);
    const int sign = fp_sign(a) ^ fp_sign(b);
    const bool infinite = fp_is_infinite(a) || fp_is_infinite(b);
    if (infinite && (fp_is_zero(a) || fp_is_zero(b))) {
        if (infinity_times_zero == Format::default_nan)
            return fp_invalid<Bits>(flags);
        return fp_with_sign<Bits>(sign, infinity_times_zero);
    }
    return fp_with_sign<Bits>(sign, infinite ? Format::infinity : Bits{0});
}

// a * b, finite and not zero, with mantissas in [1, 2).
template <class Bits>
inline Bits multiply_finite(const fp_finite<Bits>& a, const fp_finite<Bits>& b, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    using Product = typename Format::Product;
    constexpr int top = fp_word_bits<Product> - 1;
    // The exact product lies in [1, 4): its leading one is moved to the top bit.
    Product product = static_cast<Product>(a.mantissa) * b.mantissa << (top - 1 - 2 * Format::fraction_bits);
    const int low = (product >> top) == 0;
    product <<= low;
    const int exponent = a.exponent + b.exponent - Format::bias + 1 - low;
    return fp_round<Bits>(a.sign ^ b.sign, exponent, product, mode & FPMode_RMode, mode, flags);
}

// Operands of any kind.
template <class Bits>
[[gnu::noinline]] Bits multiply_any(Bits a, Bits b, Bits infinity_times_zero, FPSCR& fpscr) {
    const int mode = fpscr.mode();
    int flags = 0;
    a = fp_flush_input(a, mode, &flags);
    b = fp_flush_input(b, mode, &flags);
    Bits result;
    if (fp_is_nan_or_infinite(a) || fp_is_nan_or_infinite(b) || fp_is_zero(a) || fp_is_zero(b))
        result = multiply_special(a, b, infinity_times_zero, mode, &flags);
    else
        result = multiply_finite(fp_unpack_normalised(a), fp_unpack_normalised(b), mode, &flags);
    fpscr.raise(flags);
    return result;
}

template <class Bits> inline Bits multiply(Bits a, Bits b, Bits infinity_times_zero, FPSCR& fpscr) {
    if (!fp_is_normal(a) || !fp_is_normal(b)) [[unlikely]]
        return multiply_any(a, b, infinity_times_zero, fpscr);
    int flags = 0;
    const Bits result = multiply_finite(fp_unpack_normal(a), fp_unpack_normal(b), fpscr.mode(), &flags);
    fpscr.raise(flags);
    return result;
}

} // namespace

template <class Bits> Bits FPAdd(Bits a, Bits b, FPSCR& fpscr) { return add<Bits>(a, b, 0, fpscr); }

template <class Bits> Bits FPSub(Bits a, Bits b, FPSCR& fpscr) {
    return add<Bits>(a, b, FPFormat<Bits>::sign_bit, fpscr);
}

template <class Bits> Bits FPMul(Bits a, Bits b, FPSCR& fpscr) {
    return multiply<Bits>(a, b, FPFormat<Bits>::default_nan, fpscr);
}

template <class Bits> Bits FPMulX(Bits a, Bits b, FPSCR& fpscr) {
    return multiply<Bits>(a, b, FPFormat<Bits>::power_of_two(1), fpscr);
}

#define INSTANTIATE(Bits)                                                                                    \
    template Bits FPAdd(Bits, Bits, FPSCR&);                                                                 \
    template Bits FPSub(Bits, Bits, FPSCR&);                                                                 \
    template Bits FPMul(Bits, Bits, FPSCR&);                                                                 \
    template Bits FPMulX(Bits, Bits, FPSCR&);
FP_FOR_EACH_FORMAT(INSTANTIATE)
#undef INSTANTIATE
