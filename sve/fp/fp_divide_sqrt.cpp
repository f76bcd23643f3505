#include "sve/fp/fp_divide_sqrt.h"

#include "sve/fp/fp_tables.h"

namespace {

// a / b with an operand that is zero, infinite or a NaN.
template <class Bits> Bits divide_special(Bits a, Bits b, int mode, int* flags) {
    if (fp_is_nan(a) || fp_is_nan(b))
        return fp_process_nans(a, b, mode, flags);
    if ((fp_is_infinite(a) && fp_is_infinite(b)) || (fp_is_zero(a) && fp_is_zero(b)))
        return fp_invalid<Bits>(flags);
    const int sign = fp_sign(a) ^ fp_sign(b);
    if (fp_is_zero(a) || fp_is_infinite(b))
        return fp_with_sign<Bits>(sign, 0);
    if (!fp_is_infinite(a))
        *flags |= FPFlag_DZC;
    return fp_with_sign<Bits>(sign, FPFormat<Bits>::infinity);
}

// A quotient's significand: the number quotient / 2^(bits - 1), in [1/2, 2), with what is left in bit 0.
template <class Word> struct fp_quotient {
    Word significand;
    bool below_one; // the significand has been doubled
};

template <class Word> inline fp_quotient<Word> normalised_quotient(Word quotient, bool inexact) {
    const bool below_one = (quotient >> (fp_word_bits<Word> - 1)) == 0;
    return {static_cast<Word>((quotient << below_one) | inexact), below_one};
}

// Half and single: one integer division. The quotient has at least four bits more than the fraction.
inline fp_quotient<std::uint32_t> divide(std::uint32_t a, std::uint32_t b, std::uint16_t) {
    const std::uint32_t dividend = a << 15;
    const std::uint32_t quotient = dividend / b;
    return normalised_quotient<std::uint32_t>(quotient << 16, quotient * b != dividend);
}
inline fp_quotient<std::uint64_t> divide(std::uint32_t a, std::uint32_t b, std::uint32_t) {
    const std::uint64_t dividend = static_cast<std::uint64_t>(a) << 31;
    const std::uint64_t quotient = dividend / b;
    return normalised_quotient<std::uint64_t>(quotient << 32, quotient * b != dividend);
}

// Double: a 32-bit reciprocal by integer division, one Newton-Raphson step, and a product; then the remainder
// tells whether the quotient, which is never too large, is one too small.
inline fp_quotient<std::uint64_t> divide(std::uint64_t a, std::uint64_t b, std::uint64_t) {
    a <<= 11;
    b <<= 11;                                                     // both in [2^63, 2^64)
    const std::uint64_t estimate = ~std::uint64_t{0} / (b >> 31); // 2^95 / b, within 2^-31 of it
    const fp_uint128 product = static_cast<fp_uint128>(b) * estimate;
    const std::uint64_t correction =
        static_cast<std::uint64_t>(((static_cast<fp_uint128>(1) << 96) - product) >> 32);
    // 2^126 / b, too small by at most 2^-60 of it: the square of the estimate's error, and what is cut off.
    const std::uint64_t reciprocal =
        static_cast<std::uint64_t>((static_cast<fp_uint128>(correction) * estimate) >> 32);
    // 2^62 a / b is too small by less than 16, and without its six lowest bits by at most one.
    std::uint64_t quotient = static_cast<std::uint64_t>((static_cast<fp_uint128>(a) * reciprocal) >> 64) >> 6;
    fp_uint128 remainder = (static_cast<fp_uint128>(a) << 56) - static_cast<fp_uint128>(quotient) * b;
    if (remainder >= b) {
        quotient += 1;
        remainder -= b;
    }
    return normalised_quotient<std::uint64_t>(quotient << 7, remainder != 0);
}

// For m = radicand / 2^62 in [1, 4): 2^32 / sqrt(m), within 2^-29 of it. The architecture's table gives eight
// bits, and each Newton-Raphson step r (3 - m r^2) / 2 doubles them.
inline std::uint64_t reciprocal_square_root(std::uint64_t radicand) {
    const bool from_two = radicand >> 63;
    const unsigned index = from_two ? 128 + ((radicand >> 56) & 127) : (radicand >> 55) & 127;
    std::uint64_t r = (std::uint64_t{256} + FPEstimateTables::recip_sqrt_estimate[index]) << 23;
    for (int step = 0; step < 2; ++step) {
        const std::uint64_t m_r_squared = ((r * r >> 32) * (radicand >> 32)) >> 30;
        r = (r * ((std::uint64_t{3} << 30) - (m_r_squared >> 2))) >> 31;
    }
    return r;
}

// sqrt(radicand / 2^62) with RootBits bits of fraction, cut off: right or one unit too small. Before the last
// bits are dropped the root has 62 bits of fraction, and more than its error is subtracted from it.
template <int RootBits> inline std::uint64_t square_root_estimate(std::uint64_t radicand) {
    const std::uint64_t r = reciprocal_square_root(radicand);
    std::uint64_t root = static_cast<std::uint64_t>((static_cast<fp_uint128>(radicand) * r) >> 32);
    if constexpr (RootBits < 26) {
        root -= std::uint64_t{1} << 35;
    } else {
        // One step more, on the root itself: root + (m - root^2) / (2 root).
        const fp_uint128 excess =
            (static_cast<fp_uint128>(radicand) << 62) - static_cast<fp_uint128>(root) * root;
        const std::int64_t high_excess = static_cast<std::int64_t>(excess >> 64) >> 2; // it has a sign
        root += static_cast<std::uint64_t>((high_excess * static_cast<std::int64_t>(r)) >> 29);
        root -= 32;
    }
    return root >> (62 - RootBits);
}

// a / b, finite and not zero, with mantissas in [1, 2).
template <class Bits>
inline Bits divide_finite(const fp_finite<Bits>& a, const fp_finite<Bits>& b, int mode, int* flags) {
    const auto quotient = divide(a.mantissa, b.mantissa, Bits{});
    const int exponent = a.exponent - b.exponent + FPFormat<Bits>::bias - quotient.below_one;
    return fp_round<Bits>(a.sign ^ b.sign, exponent, quotient.significand, mode & FPMode_RMode, mode, flags);
}

// Operands of any kind.
template <class Bits> [[gnu::noinline]] Bits divide_any(Bits a, Bits b, int mode, int* flags) {
    a = fp_flush_input(a, mode, flags);
    b = fp_flush_input(b, mode, flags);
    if (fp_is_nan_or_infinite(a) || fp_is_nan_or_infinite(b) || fp_is_zero(a) || fp_is_zero(b))
        return divide_special(a, b, mode, flags);
    return divide_finite(fp_unpack_normalised(a), fp_unpack_normalised(b), mode, flags);
}

} // namespace

template <class Bits> Bits FPDiv(Bits a, Bits b, FPSCR& fpscr) {
    int flags = 0;
    Bits result;
    if (fp_is_normal(a) && fp_is_normal(b)) [[likely]] {
        result = divide_finite(fp_unpack_normal(a), fp_unpack_normal(b), fpscr.mode(), &flags);
    } else {
        int raised = 0; // the other word is in a register, since its address goes nowhere
        result = divide_any(a, b, fpscr.mode(), &raised);
        flags = raised;
    }
    fpscr.raise(flags);
    return result;
}

template <class Bits> Bits FPSqrt(Bits a, FPSCR& fpscr) {
    using Format = FPFormat<Bits>;
    using Product = typename Format::Product;
    constexpr int root_bits = Format::fraction_bits + 2; // of fraction

    return fp_unary_kernel(a, fpscr, [](Bits a, int mode, int* flags) {
        if (fp_is_zero(a))
            return a;
        if (fp_sign(a))
            return fp_invalid<Bits>(flags);
        if (fp_is_infinite(a))
            return a;
        const fp_finite<Bits> x = fp_unpack_normalised(a);
        // An even power of two is taken out, which leaves [1, 4). Biases are odd.
        const bool doubled = (x.exponent & 1) == 0;
        const std::uint64_t radicand = static_cast<std::uint64_t>(x.mantissa)
                                       << (62 - Format::fraction_bits + doubled);
        const Product square = static_cast<Product>(x.mantissa)
                               << (2 * root_bits - Format::fraction_bits + doubled);
        Product root = static_cast<Product>(square_root_estimate<root_bits>(radicand));
        root += (root + 1) * (root + 1) <= square;
        const bool inexact = root * root != square;
        const std::uint64_t significand = (static_cast<std::uint64_t>(root) << (63 - root_bits)) | inexact;
        return fp_round<Bits>(0, (x.exponent + Format::bias) >> 1, significand, mode & FPMode_RMode, mode,
                              flags);
    });
}

#define INSTANTIATE(Bits)                                                                                    \
    template Bits FPDiv(Bits, Bits, FPSCR&);                                                                 \
    template Bits FPSqrt(Bits, FPSCR&);
FP_FOR_EACH_FORMAT(INSTANTIATE)
#undef INSTANTIATE
