#include "sve/fp/fp_estimates.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_convert.h"
#include "sve/fp/fp_multiply_add.h"
#include "sve/fp/fp_tables.h"

namespace {

// The reciprocal in 256ths of the significand (256 + its 8 bits below the leading one + 1/2) / 512: 256 to
// 511.
inline unsigned reciprocal_in_256ths(unsigned nine_bits) {
    const unsigned ten_bits = 2 * nine_bits + 1;
    return (0x80000 / ten_bits + 1) >> 1;
}

// The nine bits of a normalised mantissa from its leading one down.
template <class Bits> inline unsigned leading_nine_bits(const fp_finite<Bits>& x) {
    return static_cast<unsigned>(x.mantissa >> (FPFormat<Bits>::fraction_bits - 8));
}

// 1/x for a finite x that isn't zero.
template <class Bits> inline Bits estimate_reciprocal(Bits a, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    constexpr int estimate_shift = Format::fraction_bits - 8;
    const int sign = fp_sign(a);
    // Below 2^-(bias + 1) the reciprocal is too large for the format.
    if ((a & Format::magnitude_mask) < (Format::implicit_bit >> 2))
        return fp_overflow<Bits>(sign, mode & FPMode_RMode, flags);
    if ((mode & Format::flush_mode) && fp_exponent_field(a) >= 2 * Format::bias - 1) {
        *flags |= FPFlag_UFC;
        return fp_with_sign<Bits>(sign, 0);
    }
    const fp_finite<Bits> x = fp_unpack_normalised(a);
    const Bits estimate =
        static_cast<Bits>(Bits(reciprocal_in_256ths(leading_nine_bits<Bits>(x))) << estimate_shift);
    const int exponent = 2 * Format::bias - 1 - x.exponent;
    if (exponent < 1) // a denormal: no bit of the estimate is lost
        return fp_with_sign<Bits>(sign, static_cast<Bits>(estimate >> (1 - exponent)));
    const Bits field = static_cast<Bits>(Bits(exponent) << Format::fraction_bits);
    return fp_with_sign<Bits>(sign, static_cast<Bits>(field | (estimate & Format::fraction_mask)));
}

// (first_term - a * b) * 2^scale, where infinity times zero counts as 0 and makes the result
// `of_zero_product`.
template <class Bits>
inline Bits step(Bits first_term, Bits of_zero_product, int scale, Bits a, Bits b, FPSCR& fpscr) {
    const int mode = fpscr.mode();
    int flags = 0;
    const Bits x = fp_flush_input(FPNeg(a), mode, &flags);
    const Bits y = fp_flush_input(b, mode, &flags);
    Bits result;
    if (fp_is_nan(x) || fp_is_nan(y)) [[unlikely]] {
        result = fp_process_nans(x, y, mode, &flags);
    } else if (fp_is_infinite(x) || fp_is_infinite(y)) [[unlikely]] {
        const int sign = fp_sign(x) ^ fp_sign(y);
        result = fp_is_zero(x) || fp_is_zero(y) ? of_zero_product
                                                : fp_with_sign<Bits>(sign, FPFormat<Bits>::infinity);
    } else {
        result = fp_muladd(first_term, x, y, scale, mode, &flags);
    }
    fpscr.raise(flags);
    return result;
}

// 1 + 1/2 times a power of two.
template <class Bits> constexpr Bits three_halves_times(int exponent) {
    return FPFormat<Bits>::power_of_two(exponent) | FPFormat<Bits>::quiet_bit;
}

// A fraction of 32 bits as a double in [0.5, 1) or [0.25, 0.5): without its leading one, which stands at bit
// `leading`.
inline double fraction_below_one(unsigned long operand, int leading) {
    constexpr int fraction_bits = FPFormat<std::uint64_t>::fraction_bits;
    const std::uint64_t fraction =
        operand << (fraction_bits - leading) & FPFormat<std::uint64_t>::fraction_mask;
    return std::bit_cast<double>(FPFormat<std::uint64_t>::power_of_two(leading - 32) | fraction);
}

// A double in [1, 2) with 31 bits of fraction.
inline unsigned long fraction_of_32_bits(double estimate) {
    return 0x80000000 | (std::bit_cast<std::uint64_t>(estimate) >> 21 & 0x7FFFFFFF);
}

constexpr unsigned long largest_unsigned_estimate = 0xFFFFFFFF;

} // namespace

template <class Bits> Bits FPRecipEstimate(Bits a, FPSCR& fpscr) {
    return fp_unary_kernel(a, fpscr, [](Bits a, int mode, int* flags) -> Bits {
        if (fp_is_infinite(a))
            return fp_with_sign<Bits>(fp_sign(a), 0);
        if (fp_is_zero(a)) {
            *flags |= FPFlag_DZC;
            return a | FPFormat<Bits>::infinity;
        }
        return estimate_reciprocal(a, mode, flags);
    });
}

template <class Bits> Bits FPRSqrtEstimate(Bits a, FPSCR& fpscr) {
    using Format = FPFormat<Bits>;
    return fp_unary_kernel(a, fpscr, [](Bits a, int, int* flags) -> Bits {
        if (fp_is_zero(a)) {
            *flags |= FPFlag_DZC;
            return a | Format::infinity;
        }
        if (fp_sign(a))
            return fp_invalid<Bits>(flags);
        if (fp_is_infinite(a))
            return 0;
        const fp_finite<Bits> x = fp_unpack_normalised(a);
        const bool even = (x.exponent & 1) == 0;
        const unsigned index = ((leading_nine_bits<Bits>(x) >> 1) & 127) + (even ? 128 : 0);
        const Bits exponent = static_cast<Bits>((3 * Format::bias - 1 - x.exponent) >> 1);
        const Bits fraction = static_cast<Bits>(Bits{FPEstimateTables::recip_sqrt_estimate[index]}
                                                << (Format::fraction_bits - 8));
        return static_cast<Bits>((exponent << Format::fraction_bits) | fraction);
    });
}

template <class Bits> Bits FPRecipStepFused(Bits a, Bits b, FPSCR& fpscr) {
    constexpr Bits two = FPFormat<Bits>::power_of_two(1);
    return step<Bits>(two, two, 0, a, b, fpscr);
}

template <class Bits> Bits FPRSqrtStepFused(Bits a, Bits b, FPSCR& fpscr) {
    return step<Bits>(three_halves_times<Bits>(1), three_halves_times<Bits>(0), -1, a, b, fpscr);
}

template <class Bits> Bits FPRecpX(Bits a, FPSCR& fpscr) {
    using Format = FPFormat<Bits>;
    return fp_unary_kernel(a, fpscr, [](Bits a, int, int*) {
        const int field = fp_exponent_field(a);
        const int inverted = field != 0 ? field ^ Format::infinite_exponent : Format::infinite_exponent - 1;
        return fp_with_sign<Bits>(fp_sign(a), static_cast<Bits>(Bits(inverted) << Format::fraction_bits));
    });
}

// The kernels convert to and from integers, so that the host's rounding mode and status have no part in this.
double recip_estimate(double x) {
    FPSCR fpscr;
    const auto in_512ths = fplibFPToFixed<std::uint64_t, std::uint64_t>(std::bit_cast<std::uint64_t>(x), 9,
                                                                        true, FPRounding_ZERO, fpscr);
    const unsigned estimate = reciprocal_in_256ths(static_cast<unsigned>(in_512ths));
    return std::bit_cast<double>(fplibFixedToFP<std::uint64_t>(estimate, 8, true, FPRounding_ZERO, fpscr));
}

double recip_sqrt_estimate(double x) {
    FPSCR fpscr;
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
    const bool from_half = fp_exponent_field(bits) == FPFormat<std::uint64_t>::bias - 1;
    // The index is 7 bits: those below the leading one.
    const unsigned index =
        static_cast<unsigned>((bits >> (FPFormat<std::uint64_t>::fraction_bits - 7)) & 127);
    const unsigned estimate = 256u + FPEstimateTables::recip_sqrt_estimate[index + (from_half ? 128 : 0)];
    return std::bit_cast<double>(fplibFixedToFP<std::uint64_t>(estimate, 8, true, FPRounding_ZERO, fpscr));
}

unsigned long UnsignedRecipEstimate(unsigned long operand, int) {
    operand &= 0xFFFFFFFF;
    if (operand >> 31 == 0)
        return largest_unsigned_estimate;
    return fraction_of_32_bits(recip_estimate(fraction_below_one(operand, 31)));
}

unsigned long UnsignedRSqrtEstimate(unsigned long operand, int) {
    operand &= 0xFFFFFFFF;
    if (operand >> 30 == 0)
        return largest_unsigned_estimate;
    return fraction_of_32_bits(
        recip_sqrt_estimate(fraction_below_one(operand, operand >> 31 != 0 ? 31 : 30)));
}

#define INSTANTIATE(Bits)                                                                                    \
    template Bits FPRecipEstimate(Bits, FPSCR&);                                                             \
    template Bits FPRSqrtEstimate(Bits, FPSCR&);                                                             \
    template Bits FPRecipStepFused(Bits, Bits, FPSCR&);                                                      \
    template Bits FPRSqrtStepFused(Bits, Bits, FPSCR&);                                                      \
    template Bits FPRecpX(Bits, FPSCR&);
FP_FOR_EACH_FORMAT(INSTANTIATE)
#undef INSTANTIATE
