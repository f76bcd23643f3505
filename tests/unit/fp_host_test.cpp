// The kernels of single and double precision against the arithmetic of the machine that runs the tests, under
// its four rounding modes: results and exceptions. Operands and results that are NaNs follow the
// architecture's own rules, and are tested elsewhere.
#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_convert.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/fp/fp_multiply_add.h"
#include "tests/unit/fp_operands.h"

#include <bit>
#include <cfenv>
#include <cmath>
#include <gtest/gtest.h>

namespace {

const int host_rounding[4] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

int host_flags() {
    const int raised = std::fetestexcept(FE_ALL_EXCEPT);
    return (raised & FE_INVALID ? FPFlag_IOC : 0) | (raised & FE_DIVBYZERO ? FPFlag_DZC : 0) |
           (raised & FE_OVERFLOW ? FPFlag_OFC : 0) | (raised & FE_UNDERFLOW ? FPFlag_UFC : 0) |
           (raised & FE_INEXACT ? FPFlag_IXC : 0);
}

// Keeps the compiler from computing with the value, or computing it, on the other side of this place.
template <class Value> void hold_here(Value& value) { asm volatile("" : "+m"(value) : : "memory"); }

// Evaluates operation(operands...) on the host, unmoved and unfolded, under a rounding mode.
template <class Operation, class... Operands>
auto on_host(int rm, int* flags, Operation operation, Operands... operands) {
    std::fesetround(host_rounding[rm]);
    std::feclearexcept(FE_ALL_EXCEPT);
    (hold_here(operands), ...);
    auto result = operation(operands...);
    hold_here(result);
    *flags = host_flags();
    std::fesetround(FE_TONEAREST);
    return result;
}

// Some hosts detect underflow after rounding, the kernels before: that differs when rounding reaches the
// least normal number.
template <class Bits> int comparable_flags(Bits result) {
    const bool reached = FPAbs(result) == FPFormat<Bits>::implicit_bit;
    return reached ? ~FPFlag_UFC : ~0;
}

template <class Float, class Bits, int Operands, class Kernel, class Operation>
void compare_with_host(const char* name, Kernel kernel, Operation operation, int count) {
    std::mt19937_64 random(7);
    const std::vector<Bits> specials = fp_special_values<Bits>();
    const int special_count = static_cast<int>(specials.size());
    for (int i = 0; i < count; ++i) {
        Bits a = fp_random_value<Bits>(random()), b = fp_random_value<Bits>(random());
        const Bits c = fp_random_value<Bits>(random());
        if (Operands == 2 && i < special_count * special_count) {
            a = specials[static_cast<unsigned>(i / special_count)];
            b = specials[static_cast<unsigned>(i % special_count)];
        }
        if (fp_is_nan(a) || (Operands > 1 && fp_is_nan(b)) || (Operands > 2 && fp_is_nan(c)))
            continue;
        for (int rm = 0; rm < 4; ++rm) {
            int expected_flags = 0;
            const Float expected = on_host(rm, &expected_flags, operation, std::bit_cast<Float>(a),
                                           std::bit_cast<Float>(b), std::bit_cast<Float>(c));
            FPSCR fpscr{static_cast<std::uint32_t>(rm) << 22};
            const Bits result = kernel(a, b, c, fpscr);
            const Bits expected_bits =
                std::isnan(expected) ? FPFormat<Bits>::default_nan : std::bit_cast<Bits>(expected);
            const int compared = comparable_flags(result) & 0x1F;
            ASSERT_EQ(result, expected_bits)
                << std::hex << name << " of " << a << ", " << b << ", " << c << ", mode " << rm;
            ASSERT_EQ(static_cast<int>(fpscr.bits) & compared, expected_flags & compared)
                << std::hex << name << " of " << a << ", " << b << ", " << c << ", mode " << rm;
        }
    }
}

// The library's function and not an expansion of it by the compiler, which may know only one rounding mode.
float (*const volatile host_rintf)(float) = ::rintf;
double (*const volatile host_rint)(double) = ::rint;
float to_integral(float x) { return host_rintf(x); }
double to_integral(double x) { return host_rint(x); }

template <class Float, class Bits> void compare_arithmetic(int count) {
    compare_with_host<Float, Bits, 2>(
        "FPAdd", [](Bits a, Bits b, Bits, FPSCR& fpscr) { return FPAdd(a, b, fpscr); },
        [](Float a, Float b, Float) { return a + b; }, count);
    compare_with_host<Float, Bits, 2>(
        "FPSub", [](Bits a, Bits b, Bits, FPSCR& fpscr) { return FPSub(a, b, fpscr); },
        [](Float a, Float b, Float) { return a - b; }, count);
    compare_with_host<Float, Bits, 2>(
        "FPMul", [](Bits a, Bits b, Bits, FPSCR& fpscr) { return FPMul(a, b, fpscr); },
        [](Float a, Float b, Float) { return a * b; }, count);
    compare_with_host<Float, Bits, 2>(
        "FPDiv", [](Bits a, Bits b, Bits, FPSCR& fpscr) { return FPDiv(a, b, fpscr); },
        [](Float a, Float b, Float) { return a / b; }, count);
    compare_with_host<Float, Bits, 1>(
        "FPSqrt", [](Bits a, Bits, Bits, FPSCR& fpscr) { return FPSqrt(a, fpscr); },
        [](Float a, Float, Float) { return std::sqrt(a); }, count);
    compare_with_host<Float, Bits, 3>(
        "FPMulAdd", [](Bits a, Bits b, Bits c, FPSCR& fpscr) { return FPMulAdd(a, b, c, fpscr); },
        [](Float a, Float b, Float c) { return std::fma(b, c, a); }, count);
    compare_with_host<Float, Bits, 1>(
        "FPRoundInt",
        [](Bits a, Bits, Bits, FPSCR& fpscr) { return FPRoundInt(a, fpscr.rounding(), true, fpscr); },
        [](Float a, Float, Float) { return to_integral(a); }, count);
}

TEST(FPHost, SingleArithmetic) { compare_arithmetic<float, std::uint32_t>(60000); }
TEST(FPHost, DoubleArithmetic) { compare_arithmetic<double, std::uint64_t>(60000); }

// Square roots and quotients next to exact ones, and of all exponents: where an estimate that is off by one
// shows.
TEST(FPHost, NearlyExactRootsAndQuotients) {
    std::mt19937_64 random(11);
    for (int i = 0; i < 200000; ++i) {
        const double root =
            std::bit_cast<double>((random() >> 12) | FPFormat<std::uint64_t>::power_of_two(0));
        const double square =
            std::bit_cast<double>(std::bit_cast<std::uint64_t>(root * root) + random() % 3 - 1);
        FPSCR fpscr;
        ASSERT_EQ(FPSqrt(std::bit_cast<std::uint64_t>(square), fpscr),
                  std::bit_cast<std::uint64_t>(std::sqrt(square)))
            << std::hexfloat << square;
        const double divisor =
            std::bit_cast<double>((random() >> 12) | FPFormat<std::uint64_t>::power_of_two(0));
        const double dividend =
            std::bit_cast<double>(std::bit_cast<std::uint64_t>(root * divisor) + random() % 3 - 1);
        ASSERT_EQ(FPDiv(std::bit_cast<std::uint64_t>(dividend), std::bit_cast<std::uint64_t>(divisor), fpscr),
                  std::bit_cast<std::uint64_t>(dividend / divisor))
            << std::hexfloat << dividend << " / " << divisor;
    }
}

TEST(FPHost, Conversions) {
    std::mt19937_64 random(13);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t a = fp_random_value<std::uint64_t>(random());
        const std::uint32_t b = fp_random_value<std::uint32_t>(random());
        const std::uint64_t integer = random() >> (random() & 63);
        for (int rm = 0; rm < 4; ++rm) {
            const auto rounding = static_cast<FPRounding>(rm);
            int flags = 0;
            const auto exceptions = [](const FPSCR& fpscr) { return static_cast<int>(fpscr.bits & 0x1F); };
            if (!fp_is_nan(a)) {
                FPSCR fpscr;
                const float expected = on_host(
                    rm, &flags, [](double x) { return static_cast<float>(x); }, std::bit_cast<double>(a));
                const std::uint32_t result = FPConvert<std::uint64_t, std::uint32_t>(a, rounding, fpscr);
                ASSERT_EQ(result, std::bit_cast<std::uint32_t>(expected)) << std::hex << a << " mode " << rm;
                const int compared = comparable_flags(result);
                ASSERT_EQ(exceptions(fpscr) & compared, flags & compared) << std::hex << a << " mode " << rm;

                FPSCR of_integer;
                const double integral = on_host(
                    rm, &flags, [](double x) { return to_integral(x); }, std::bit_cast<double>(a));
                const auto fixed =
                    fplibFPToFixed<std::uint64_t, std::uint64_t>(a, 0, false, rounding, of_integer);
                if (std::fabs(integral) < 0x1p63) {
                    ASSERT_EQ(static_cast<std::int64_t>(fixed), static_cast<std::int64_t>(integral))
                        << std::hex << a;
                } else {
                    ASSERT_EQ(exceptions(of_integer), integral == -0x1p63 ? 0 : FPFlag_IOC) << std::hex << a;
                }
            }
            if (!fp_is_nan(b)) {
                FPSCR fpscr;
                ASSERT_EQ((FPConvert<std::uint32_t, std::uint64_t>(b, rounding, fpscr)),
                          std::bit_cast<std::uint64_t>(static_cast<double>(std::bit_cast<float>(b))));
                ASSERT_EQ(exceptions(fpscr), 0);
            }
            FPSCR fpscr;
            const auto value = static_cast<std::int64_t>(integer);
            const double expected = on_host(
                rm, &flags, [](std::int64_t x) { return static_cast<double>(x); }, value);
            ASSERT_EQ(fplibFixedToFP<std::uint64_t>(integer, 0, false, rounding, fpscr),
                      std::bit_cast<std::uint64_t>(expected))
                << value << " mode " << rm;
            ASSERT_EQ(exceptions(fpscr), flags) << value << " mode " << rm;
        }
    }
}

} // namespace
