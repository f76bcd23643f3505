#include "sve/fp/fp_multiply_add.h"

namespace {

// a + b * c with at least one operand infinite or a NaN.
template <class Bits> Bits multiply_add_special(Bits a, Bits b, Bits c, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    const bool infinite_product = fp_is_infinite(b) || fp_is_infinite(c);
    const bool invalid_product = (fp_is_infinite(b) && fp_is_zero(c)) || (fp_is_zero(b) && fp_is_infinite(c));
    if (invalid_product && !fp_is_signalling_nan(a))
        return fp_invalid<Bits>(flags);
    if (fp_is_nan(a) || fp_is_nan(b) || fp_is_nan(c))
        return fp_process_nans(a, b, c, mode, flags);
    const Bits product = fp_with_sign<Bits>(fp_sign(b) ^ fp_sign(c), Format::infinity);
    if (!infinite_product)
        return a;
    if (fp_is_infinite(a) && a != product)
        return fp_invalid<Bits>(flags);
    return product;
}

// (a + b * c) * 2^scale, finite. Both terms are held with the weight 2^(their exponent - bias) at the bit
// `unit`, three below the top of the accumulator: room for a product of up to 4, for a sum of up to 6 and for
// a sign. Alignment only loses bits of a term that is far below the last bit of the result, where a sticky
// bit 0 stands for them.
template <class Bits>
[[gnu::always_inline]] inline Bits multiply_add_finite(const fp_finite<Bits>& a, const fp_finite<Bits>& b,
                                                       const fp_finite<Bits>& c, int scale, int mode,
                                                       int* flags) {
    using Format = FPFormat<Bits>;
    using Accumulator = typename Format::Accumulator;
    constexpr int top = fp_word_bits<Accumulator> - 1;
    constexpr int unit = top - 3;

    const int product_sign = b.sign ^ c.sign;
    const Accumulator addend = static_cast<Accumulator>(a.mantissa) << (unit - Format::fraction_bits);
    const Accumulator product = (static_cast<Accumulator>(b.mantissa) * c.mantissa)
                                << (unit - 2 * Format::fraction_bits);
    // A zero term has no exponent of its own: it must not push the other one down.
    int exponent = a.exponent;
    int product_exponent = b.exponent + c.exponent - Format::bias;
    if (product == 0) [[unlikely]]
        product_exponent = exponent;
    if (addend == 0) [[unlikely]]
        exponent = product_exponent;

    const int difference = exponent - product_exponent;
    const bool swap = difference < 0;
    const Accumulator large = swap ? product : addend;
    const Accumulator small = fp_shift_right_sticky(swap ? addend : product, swap ? -difference : difference);
    // Adds, or subtracts by adding the complement.
    const unsigned subtract = static_cast<unsigned>(a.sign ^ product_sign);
    const Accumulator signed_sum = large + (small ^ -static_cast<Accumulator>(subtract)) + subtract;
    const bool negative = (signed_sum >> top) != 0; // the term with the smaller exponent was the larger one
    const Accumulator sum = negative ? -signed_sum : signed_sum;
    const int sign = (swap ? product_sign : a.sign) ^ negative;

    const int rm = mode & FPMode_RMode;
    if (sum == 0) [[unlikely]] {
        const int sign_of_zero = subtract ? rm == FPRounding_NEGINF : sign;
        return fp_with_sign<Bits>(sign_of_zero, 0);
    }
    const int shift = fp_leading_zeros(sum);
    const int result_exponent = (swap ? product_exponent : exponent) + scale + (top - unit) - shift;
    return fp_round<Bits, Accumulator>(sign, result_exponent, sum << shift, rm, mode, flags);
}

// Operands of any kind.
template <class Bits>
[[gnu::noinline]] Bits multiply_add_any(Bits a, Bits b, Bits c, int scale, int mode, int* flags) {
    a = fp_flush_input(a, mode, flags);
    b = fp_flush_input(b, mode, flags);
    c = fp_flush_input(c, mode, flags);
    if (fp_is_nan_or_infinite(a) || fp_is_nan_or_infinite(b) || fp_is_nan_or_infinite(c))
        return multiply_add_special(a, b, c, mode, flags);
    return multiply_add_finite(fp_unpack(a), fp_unpack(b), fp_unpack(c), scale, mode, flags);
}

} // namespace

unsigned short fp16_muladd(unsigned short a, unsigned short b, unsigned short c, int scale, int mode,
                           int* flags) {
    return multiply_add_any(a, b, c, scale, mode, flags);
}
unsigned int fp32_muladd(unsigned int a, unsigned int b, unsigned int c, int scale, int mode, int* flags) {
    return multiply_add_any(a, b, c, scale, mode, flags);
}
unsigned long fp64_muladd(unsigned long a, unsigned long b, unsigned long c, int scale, int mode,
                          int* flags) {
    return multiply_add_any(a, b, c, scale, mode, flags);
}

template <class Bits> Bits FPMulAdd(Bits addend, Bits op1, Bits op2, FPSCR& fpscr) {
    int flags = 0;
    Bits result;
    if (fp_is_normal(addend) && fp_is_normal(op1) && fp_is_normal(op2)) [[likely]] {
        result = multiply_add_finite(fp_unpack_normal(addend), fp_unpack_normal(op1), fp_unpack_normal(op2),
                                     0, fpscr.mode(), &flags);
    } else {
        int raised = 0; // the other word is in a register, since its address goes nowhere
        result = multiply_add_any(addend, op1, op2, 0, fpscr.mode(), &raised);
        flags = raised;
    }
    fpscr.raise(flags);
    return result;
}

template std::uint16_t FPMulAdd(std::uint16_t, std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMulAdd(std::uint32_t, std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMulAdd(std::uint64_t, std::uint64_t, std::uint64_t, FPSCR&);
