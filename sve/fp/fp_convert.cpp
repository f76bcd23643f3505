#include "sve/fp/fp_convert.h"

namespace {

// AHP counts in conversions to and from half precision, and only there.
template <class Bits> inline bool alternative_half(const FPSCR& fpscr) {
    return sizeof(Bits) == 2 && (fpscr.bits & FPSCR::AHP) != 0;
}

// A NaN's sign and the upper bits of its fraction as a quiet NaN of another format; the default NaN under DN.
template <class From, class To> To convert_nan(From nan, int mode, int* flags) {
    using Source = FPFormat<From>;
    using Target = FPFormat<To>;
    if (!fp_is_quiet_nan(nan))
        *flags |= FPFlag_IOC;
    if (mode & FPMode_DN)
        return Target::default_nan;
    constexpr int shift = Target::fraction_bits - Source::fraction_bits;
    const std::uint64_t fraction = nan & Source::fraction_mask;
    const std::uint64_t moved = shift >= 0 ? fraction << (shift & 63) : fraction >> (-shift & 63);
    return fp_with_sign<To>(fp_sign(nan), static_cast<To>(moved | Target::default_nan));
}

// An infinity or a NaN in another format. The alternative half format has neither.
template <class From, class To> To convert_special(From value, int mode, int* flags) {
    using Target = FPFormat<To>;
    const bool nan = fp_is_nan(value);
    if (mode & FPMode_AHP) {
        *flags |= FPFlag_IOC;
        return fp_with_sign<To>(fp_sign(value), nan ? To{0} : Target::magnitude_mask);
    }
    return nan ? convert_nan<From, To>(value, mode, flags)
               : fp_with_sign<To>(fp_sign(value), Target::infinity);
}

template <class From, class To>
inline To convert_finite(const fp_finite<From>& x, int rm, int mode, int* flags) {
    using Source = FPFormat<From>;
    using Target = FPFormat<To>;
    if constexpr (sizeof(From) > sizeof(To)) {
        using Word = typename Source::Word;
        const Word significand = x.mantissa << (fp_word_bits<Word> - 1 - Source::fraction_bits);
        return fp_round<To>(x.sign, x.exponent - (Source::bias - Target::bias), significand, rm, mode, flags);
    } else {
        const To fraction = static_cast<To>(x.mantissa & Source::fraction_mask)
                            << (Target::fraction_bits - Source::fraction_bits);
        const To exponent = static_cast<To>(x.exponent + (Target::bias - Source::bias));
        return fp_with_sign<To>(x.sign, (exponent << Target::fraction_bits) | fraction);
    }
}

// An integer and the two bits below it, the lower one sticky.
struct integer_part {
    std::uint64_t integer;
    int error;
};

// word / 2^point; the word has at most 53 bits, and no more than 64 without the point.
inline integer_part split_at(std::uint64_t word, int point) {
    if (point <= 0)
        return {word << -point, 0};
    const std::uint64_t with_error = fp_shift_right_sticky(word << 2, point);
    return {with_error >> 2, static_cast<int>(with_error & 3)};
}

inline std::uint64_t round_to_integer(integer_part x, FPRounding rm, int sign) {
    if (rm == FPRounding_TIEAWAY)
        return x.integer + static_cast<unsigned>(x.error >> 1);
    return x.integer + fp_rounds_up(rm, sign, x.error, static_cast<int>(x.integer & 1));
}

// The largest integer of the width for the sign, or the smallest.
template <class To> inline To saturated(int sign, bool is_unsigned) {
    const To largest = static_cast<To>(is_unsigned ? To(~To{0}) : To(~To{0}) >> 1);
    return sign ? (is_unsigned ? To{0} : static_cast<To>(~largest)) : largest;
}

} // namespace

template <class From, class To> To FPConvert(From value, FPRounding rm, FPSCR& fpscr) {
    // To half precision nothing tiny is flushed, and the alternative format is a mode.
    const int mode =
        sizeof(To) == 2 ? (fpscr.mode() & ~FPMode_FZ16) | fpscr.alternative_half_mode() : fpscr.mode();
    int flags = 0;
    value = fp_flush_input(value, mode, &flags);
    To result;
    if (fp_is_nan_or_infinite(value) && !alternative_half<From>(fpscr)) [[unlikely]]
        result = convert_special<From, To>(value, mode, &flags);
    else if (fp_is_zero(value)) [[unlikely]]
        result = fp_with_sign<To>(fp_sign(value), 0);
    else
        result = convert_finite<From, To>(fp_unpack_normalised(value), rm, mode, &flags);
    fpscr.raise(flags);
    return result;
}

unsigned long FPToFixed_64(int sign, int exp, unsigned long mantissa, bool is_unsigned, FPRounding rm,
                           int* flags) {
    const integer_part x = split_at(mantissa, 1075 - exp);
    const std::uint64_t integer = round_to_integer(x, rm, sign);
    const std::uint64_t largest =
        is_unsigned ? (sign ? 0 : ~std::uint64_t{0}) : (~std::uint64_t{0} >> 1) + sign;
    if (integer > largest) {
        *flags = FPFlag_IOC;
        return saturated<std::uint64_t>(sign, is_unsigned);
    }
    if (x.error != 0)
        *flags = FPFlag_IXC;
    return sign ? -integer : integer;
}

template <class From, class To>
To fplibFPToFixed(From value, int fbits, bool is_unsigned, FPRounding rm, FPSCR& fpscr) {
    using Source = FPFormat<From>;
    const int sign = fp_sign(value);
    const To limit = saturated<To>(sign, is_unsigned);
    if (fp_is_nan_or_infinite(value)) [[unlikely]] {
        fpscr.raise(FPFlag_IOC);
        return fp_is_nan(value) ? To{0} : limit;
    }
    int flags = 0;
    value = fp_flush_input(value, fpscr.mode(), &flags);
    const fp_finite<From> x = fp_unpack(value);
    const int exponent = x.exponent + fbits + (FPFormat<std::uint64_t>::bias - Source::bias);
    const std::uint64_t mantissa = static_cast<std::uint64_t>(x.mantissa)
                                   << (FPFormat<std::uint64_t>::fraction_bits - Source::fraction_bits);
    bool in_range = exponent <= 1086; // else it is 2^64 or more
    std::uint64_t integer = 0;
    if (in_range) {
        integer = FPToFixed_64(sign, exponent, mantissa, is_unsigned, rm, &flags);
        using Signed = std::make_signed_t<To>;
        const std::uint64_t returned =
            is_unsigned ? To(integer)
                        : static_cast<std::uint64_t>(std::int64_t{static_cast<Signed>(integer)});
        in_range = returned == integer;
    }
    if (!in_range) {
        fpscr.raise(FPFlag_IOC);
        return limit;
    }
    fpscr.raise(flags);
    return static_cast<To>(integer);
}

template <class Bits>
Bits fplibFixedToFP(unsigned long value, int fbits, bool is_unsigned, FPRounding rm, FPSCR& fpscr) {
    if (value == 0)
        return 0;
    const int sign = !is_unsigned && (value >> 63) != 0;
    const std::uint64_t magnitude = sign ? -value : value;
    const int shift = fp_leading_zeros(magnitude);
    const int mode = fpscr.mode() & (FPMode_FZ | FPMode_DN);
    int flags = 0;
    const Bits result =
        fp_round<Bits>(sign, FPFormat<Bits>::bias + 63 - fbits - shift, magnitude << shift, rm, mode, &flags);
    fpscr.raise(flags);
    return result;
}

template <class Bits> Bits FPRoundInt(Bits value, FPRounding rm, bool exact, FPSCR& fpscr) {
    using Format = FPFormat<Bits>;
    constexpr int integral_from = Format::fraction_bits + Format::bias;
    return fp_unary_kernel(value, fpscr, [rm, exact](Bits value, int, int* flags) {
        if (fp_is_zero(value) || fp_exponent_field(value) >= integral_from)
            return value;
        const fp_finite<Bits> x = fp_unpack(value);
        const integer_part parts = split_at(x.mantissa, integral_from - x.exponent);
        const Bits integer = static_cast<Bits>(round_to_integer(parts, rm, x.sign));
        if (exact && parts.error != 0)
            *flags |= FPFlag_IXC;
        if (integer == 0)
            return fp_with_sign<Bits>(x.sign, 0);
        // At most the implicit bit: the leading one is shifted there, and then counts in the exponent field.
        const int shift = std::countl_zero(integer) - Format::exponent_bits;
        const Bits exponent = static_cast<Bits>(integral_from - shift - 1);
        return fp_with_sign<Bits>(
            x.sign, static_cast<Bits>((exponent << Format::fraction_bits) + (integer << shift)));
    });
}

#define INSTANTIATE(From, To) template To FPConvert<From, To>(From, FPRounding, FPSCR&);
INSTANTIATE(std::uint16_t, std::uint32_t)
INSTANTIATE(std::uint16_t, std::uint64_t)
INSTANTIATE(std::uint32_t, std::uint16_t)
INSTANTIATE(std::uint32_t, std::uint64_t)
INSTANTIATE(std::uint64_t, std::uint16_t)
INSTANTIATE(std::uint64_t, std::uint32_t)
#undef INSTANTIATE

#define INSTANTIATE(From, To) template To fplibFPToFixed<From, To>(From, int, bool, FPRounding, FPSCR&);
INSTANTIATE(std::uint16_t, std::uint16_t)
INSTANTIATE(std::uint16_t, std::uint32_t)
INSTANTIATE(std::uint16_t, std::uint64_t)
INSTANTIATE(std::uint32_t, std::uint32_t)
INSTANTIATE(std::uint32_t, std::uint64_t)
INSTANTIATE(std::uint64_t, std::uint32_t)
INSTANTIATE(std::uint64_t, std::uint64_t)
#undef INSTANTIATE

#define INSTANTIATE(Bits)                                                                                    \
    template Bits fplibFixedToFP(unsigned long, int, bool, FPRounding, FPSCR&);                              \
    template Bits FPRoundInt(Bits, FPRounding, bool, FPSCR&);
FP_FOR_EACH_FORMAT(INSTANTIATE)
#undef INSTANTIATE
