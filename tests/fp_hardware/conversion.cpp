#include "sve/fp/fp_convert.h"

#include "tests/fp_hardware/operations.h"

#include <type_traits>

namespace {

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

// Stands for the mode in FPCR among the rounding modes that instructions name.
constexpr int by_rmode = -1;

inline FPRounding chosen(int rounding, const FPSCR& fpscr) {
    return rounding == by_rmode ? fpscr.rounding() : static_cast<FPRounding>(rounding);
}

template <class From, class To, int Rounding> To converted(From value, FPSCR& fpscr) {
    return FPConvert<From, To>(value, chosen(Rounding, fpscr), fpscr);
}
template <class From, class To, int Rounding>
constexpr fp_operation convert(const char* name, processor_function processor,
                               std::uint32_t not_for_kernel = 0) {
    fp_operation operation = unary<From, converted<From, To, Rounding>>(name, processor);
    operation.not_for_kernel = not_for_kernel;
    return operation;
}

template <class From, class To, bool Unsigned, int Rounding, int FractionBits>
To integer_of(From value, FPSCR& fpscr) {
    return fplibFPToFixed<From, To>(value, FractionBits, Unsigned, chosen(Rounding, fpscr), fpscr);
}
template <class From, class To, bool Unsigned, int Rounding, int FractionBits = 0>
constexpr fp_operation to_integer(const char* name, processor_function processor) {
    return unary<From, integer_of<From, To, Unsigned, Rounding, FractionBits>>(name, processor);
}

// The integer is extended as its signedness says.
template <class To, class Integer, int FractionBits = 0>
constexpr fp_operation from_integer(const char* name, processor_function processor) {
    return {name,
            operand_kind::integer,
            1,
            processor,
            [](std::uint64_t a, std::uint64_t, std::uint64_t, FPSCR& fpscr) {
                const auto value = static_cast<std::uint64_t>(static_cast<Integer>(a));
                return std::uint64_t(fplibFixedToFP<To>(value, FractionBits, std::is_unsigned_v<Integer>,
                                                        fpscr.rounding(), fpscr));
            },
            ~std::uint64_t{0}};
}

template <class Bits, int Rounding, bool Exact> Bits integral_value(Bits value, FPSCR& fpscr) {
    return FPRoundInt<Bits>(value, chosen(Rounding, fpscr), Exact, fpscr);
}
template <class Bits, int Rounding, bool Exact>
constexpr fp_operation integral(const char* name, processor_function processor) {
    return unary<Bits, integral_value<Bits, Rounding, Exact>>(name, processor);
}

#define TO_INTEGER(mnemonic, is_unsigned, rounding)                                                          \
    to_integer<half, half, is_unsigned, rounding>(mnemonic " half to 16",                                    \
                                                  FP_INSTRUCTION(mnemonic " %h0, %h2")),                     \
        to_integer<half, single, is_unsigned, rounding>(mnemonic " half to 32",                              \
                                                        FP_TO_GENERAL(mnemonic " %w0, %h2")),                \
        to_integer<half, double_bits, is_unsigned, rounding>(mnemonic " half to 64",                         \
                                                             FP_TO_GENERAL(mnemonic " %x0, %h2")),           \
        to_integer<single, single, is_unsigned, rounding>(mnemonic " single to 32",                          \
                                                          FP_TO_GENERAL(mnemonic " %w0, %s2")),              \
        to_integer<single, double_bits, is_unsigned, rounding>(mnemonic " single to 64",                     \
                                                               FP_TO_GENERAL(mnemonic " %x0, %s2")),         \
        to_integer<double_bits, single, is_unsigned, rounding>(mnemonic " double to 32",                     \
                                                               FP_TO_GENERAL(mnemonic " %w0, %d2")),         \
        to_integer<double_bits, double_bits, is_unsigned, rounding>(mnemonic " double to 64",                \
                                                                    FP_TO_GENERAL(mnemonic " %x0, %d2"))

#define FROM_INTEGER(mnemonic, integer_16, integer_32, integer_64)                                           \
    from_integer<half, integer_16>(mnemonic " 16 to half", FP_INSTRUCTION(mnemonic " %h0, %h2")),            \
        from_integer<half, integer_32>(mnemonic " 32 to half", FP_FROM_GENERAL(mnemonic " %h0, %w2")),       \
        from_integer<half, integer_64>(mnemonic " 64 to half", FP_FROM_GENERAL(mnemonic " %h0, %x2")),       \
        from_integer<single, integer_32>(mnemonic " 32 to single", FP_FROM_GENERAL(mnemonic " %s0, %w2")),   \
        from_integer<single, integer_64>(mnemonic " 64 to single", FP_FROM_GENERAL(mnemonic " %s0, %x2")),   \
        from_integer<double_bits, integer_32>(mnemonic " 32 to double",                                      \
                                              FP_FROM_GENERAL(mnemonic " %d0, %w2")),                        \
        from_integer<double_bits, integer_64>(mnemonic " 64 to double",                                      \
                                              FP_FROM_GENERAL(mnemonic " %d0, %x2"))

#define INTEGRAL(mnemonic, rounding, exact)                                                                  \
    integral<half, rounding, exact>(mnemonic " half", FP_INSTRUCTION(mnemonic " %h0, %h2")),                 \
        integral<single, rounding, exact>(mnemonic " single", FP_INSTRUCTION(mnemonic " %s0, %s2")),         \
        integral<double_bits, rounding, exact>(mnemonic " double", FP_INSTRUCTION(mnemonic " %d0, %d2"))

} // namespace

std::vector<fp_operation> conversion_operations() {
    return {
        // A scalar widening conversion doesn't flush a half denormal under FZ16; the kernel does when it is
        // told to, and
        // leaves it to its caller to clear the bit.
        convert<half, single, by_rmode>("fcvt half to single", FP_INSTRUCTION("fcvt %s0, %h2"), FPSCR::FZ16),
        convert<half, double_bits, by_rmode>("fcvt half to double", FP_INSTRUCTION("fcvt %d0, %h2"),
                                             FPSCR::FZ16),
        convert<single, double_bits, by_rmode>("fcvt single to double", FP_INSTRUCTION("fcvt %d0, %s2")),
        convert<single, half, by_rmode>("fcvt single to half", FP_INSTRUCTION("fcvt %h0, %s2")),
        convert<double_bits, half, by_rmode>("fcvt double to half", FP_INSTRUCTION("fcvt %h0, %d2")),
        convert<double_bits, single, by_rmode>("fcvt double to single", FP_INSTRUCTION("fcvt %s0, %d2")),
        convert<double_bits, single, FPRounding_ODD>("fcvtxn", FP_INSTRUCTION("fcvtxn %s0, %d2")),

        TO_INTEGER("fcvtns", false, FPRounding_TIEEVEN),
        TO_INTEGER("fcvtps", false, FPRounding_POSINF),
        TO_INTEGER("fcvtms", false, FPRounding_NEGINF),
        TO_INTEGER("fcvtzs", false, FPRounding_ZERO),
        TO_INTEGER("fcvtas", false, FPRounding_TIEAWAY),
        TO_INTEGER("fcvtnu", true, FPRounding_TIEEVEN),
        TO_INTEGER("fcvtpu", true, FPRounding_POSINF),
        TO_INTEGER("fcvtmu", true, FPRounding_NEGINF),
        TO_INTEGER("fcvtzu", true, FPRounding_ZERO),
        TO_INTEGER("fcvtau", true, FPRounding_TIEAWAY),
        to_integer<half, single, false, FPRounding_ZERO, 3>("fcvtzs half to 32, 3 bits",
                                                            FP_TO_GENERAL("fcvtzs %w0, %h2, 3")),
        to_integer<single, single, true, FPRounding_ZERO, 32>("fcvtzu single to 32, 32 bits",
                                                              FP_TO_GENERAL("fcvtzu %w0, %s2, 32")),
        to_integer<double_bits, double_bits, false, FPRounding_ZERO, 61>(
            "fcvtzs double to 64, 61 bits", FP_TO_GENERAL("fcvtzs %x0, %d2, 61")),

        FROM_INTEGER("scvtf", std::int16_t, std::int32_t, std::int64_t),
        FROM_INTEGER("ucvtf", std::uint16_t, std::uint32_t, std::uint64_t),
        from_integer<single, std::int64_t, 64>("scvtf 64 to single, 64 bits",
                                               FP_FROM_GENERAL("scvtf %s0, %x2, 64")),
        from_integer<double_bits, std::uint32_t, 7>("ucvtf 32 to double, 7 bits",
                                                    FP_FROM_GENERAL("ucvtf %d0, %w2, 7")),

        INTEGRAL("frintn", FPRounding_TIEEVEN, false),
        INTEGRAL("frintp", FPRounding_POSINF, false),
        INTEGRAL("frintm", FPRounding_NEGINF, false),
        INTEGRAL("frintz", FPRounding_ZERO, false),
        INTEGRAL("frinta", FPRounding_TIEAWAY, false),
        INTEGRAL("frintx", by_rmode, true),
        INTEGRAL("frinti", by_rmode, false),
    };
}
