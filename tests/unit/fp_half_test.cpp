// Half precision against exact integers: every finite half is a multiple of 2^-24, so that sums and products
// are integers, and quotients and roots integers with a remainder.
#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/fp/fp_multiply_add.h"
#include "tests/unit/fp_operands.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

__extension__ typedef __int128 int128;

constexpr int unit = 50; // results are multiples of 2^-50, the lowest bit standing for all below it

struct outcome {
    std::uint16_t bits;
    int flags;
    bool operator==(const outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const outcome& value) {
    return out << std::hex << value.bits << " with " << value.flags;
}

// A finite half as a multiple of 2^-24.
int128 multiple(std::uint16_t half) {
    const int exponent = half >> 10 & 31, fraction = half & 1023;
    const int128 magnitude =
        exponent == 0 ? int128{fraction} : static_cast<int128>(1024 + fraction) << (exponent - 1);
    return half & 0x8000 ? -magnitude : magnitude;
}

// The magnitude, a multiple of 2^-unit and not zero, rounded to half precision.
outcome rounded(bool negative, int128 magnitude, int rm, bool flush) {
    const auto sign = static_cast<std::uint16_t>(negative ? 0x8000 : 0);
    const bool tiny = magnitude < static_cast<int128>(1) << (unit - 14);
    if (tiny && flush)
        return {sign, FPFlag_UFC};
    int quantum = unit - 24;
    while (magnitude >> quantum >= 2048)
        ++quantum;
    int128 kept = magnitude >> quantum;
    const int128 remainder = magnitude - (kept << quantum), middle = static_cast<int128>(1) << (quantum - 1);
    if (rm == FPRounding_TIEEVEN ? remainder > middle || (remainder == middle && kept % 2 != 0)
                                 : remainder != 0 && rm == (negative ? FPRounding_NEGINF : FPRounding_POSINF))
        ++kept;
    if (kept << quantum >= static_cast<int128>(1) << (unit + 16)) {
        const bool to_infinity =
            rm == FPRounding_TIEEVEN || rm == (negative ? FPRounding_NEGINF : FPRounding_POSINF);
        return {static_cast<std::uint16_t>(sign | (to_infinity ? 0x7C00 : 0x7BFF)), FPFlag_OFC | FPFlag_IXC};
    }
    const int flags = remainder == 0 ? 0 : tiny ? FPFlag_IXC | FPFlag_UFC : FPFlag_IXC;
    const int exponent = quantum - (unit - 24); // each quantum doubles the one before it
    return {static_cast<std::uint16_t>(sign | ((exponent << 10) + static_cast<int>(kept))), flags};
}

// A sum: zero has the common sign of its terms, or the one that the mode gives.
outcome rounded_sum(int128 sum, bool first_negative, bool second_negative, int rm, bool flush) {
    if (sum == 0) {
        const bool negative = first_negative == second_negative ? first_negative : rm == FPRounding_NEGINF;
        return {static_cast<std::uint16_t>(negative ? 0x8000 : 0), 0};
    }
    return rounded(sum < 0, sum < 0 ? -sum : sum, rm, flush);
}

class HalfModes : public testing::TestWithParam<int> {
protected:
    int rm = GetParam() & 3;
    bool flush = GetParam() >= 4;

    outcome run(auto kernel, auto... operands) const {
        FPSCR fpscr{static_cast<std::uint32_t>(rm) << 22 | (flush ? FPSCR::FZ16 : 0)};
        const std::uint16_t bits = kernel(operands..., fpscr);
        return {bits, static_cast<int>(fpscr.bits & 0x9F)};
    }

    // What an operation works on: denormals are zeros when they are flushed.
    std::uint16_t operand(std::uint16_t half) const {
        return flush && !(half & 0x7C00) ? half & 0x8000 : half;
    }

    // Finite halves: all exponents, with a few fractions, and both signs.
    static std::vector<std::uint16_t> operands() {
        std::vector<std::uint16_t> halves;
        for (unsigned exponent = 0; exponent < 31; ++exponent)
            for (const unsigned fraction : {0x000u, 0x001u, 0x0F3u, 0x200u, 0x3FFu})
                for (const unsigned sign : {0u, 0x8000u})
                    halves.push_back(static_cast<std::uint16_t>(sign | exponent << 10 | fraction));
        return halves;
    }
};

TEST_P(HalfModes, Pairs) {
    for (const std::uint16_t raw_a : operands()) {
        for (const std::uint16_t raw_b : operands()) {
            const std::uint16_t a = operand(raw_a), b = operand(raw_b);
            const bool a_negative = a >> 15, b_negative = b >> 15, negative = a_negative != b_negative;
            const int128 x = multiple(a), y = multiple(b);
            const auto signed_zero = static_cast<std::uint16_t>(negative ? 0x8000 : 0);
            const auto scope = [&] {
                std::ostringstream text;
                text << std::hex << raw_a << " and " << raw_b;
                return text.str();
            };

            ASSERT_EQ(run(FPAdd<std::uint16_t>, raw_a, raw_b),
                      rounded_sum((x + y) << (unit - 24), a_negative, b_negative, rm, flush))
                << scope();
            ASSERT_EQ(run(FPSub<std::uint16_t>, raw_a, raw_b),
                      rounded_sum((x - y) << (unit - 24), a_negative, !b_negative, rm, flush))
                << scope();

            const int128 product = (x * y) << (unit - 48);
            outcome rounded_product{signed_zero, 0};
            if (product != 0)
                rounded_product = rounded(negative, negative ? -product : product, rm, flush);
            ASSERT_EQ(run(FPMul<std::uint16_t>, raw_a, raw_b), rounded_product) << scope();

            outcome quotient = {signed_zero, 0};
            if (y == 0) {
                quotient = x == 0 ? outcome{0x7E00, FPFlag_IOC}
                                  : outcome{static_cast<std::uint16_t>(signed_zero | 0x7C00), FPFlag_DZC};
            } else if (x != 0) {
                const int128 dividend = (a_negative ? -x : x) << unit, divisor = b_negative ? -y : y;
                quotient = rounded(negative, dividend / divisor | (dividend % divisor != 0), rm, flush);
            }
            ASSERT_EQ(run(FPDiv<std::uint16_t>, raw_a, raw_b), quotient) << scope();
        }
    }
}

TEST_P(HalfModes, SquareRoots) {
    for (unsigned half = 1; half < 0x7C00; ++half) {
        const auto raw = static_cast<std::uint16_t>(half);
        const int128 square = multiple(operand(raw)) << (2 * unit - 24);
        outcome expected{0, 0};
        if (square != 0) {
            int128 root = 0;
            for (int bit = 60; bit >= 0; --bit) {
                const int128 candidate = root | static_cast<int128>(1) << bit;
                root = candidate * candidate <= square ? candidate : root;
            }
            expected = rounded(false, root | (root * root != square), rm, flush);
        }
        ASSERT_EQ(run(FPSqrt<std::uint16_t>, raw), expected) << std::hex << half;
    }
}

TEST_P(HalfModes, FusedMultiplyAdd) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 100000; ++i) {
        const auto raw_a = fp_random_value<std::uint16_t>(random()),
                   raw_b = fp_random_value<std::uint16_t>(random()),
                   raw_c = fp_random_value<std::uint16_t>(random());
        if (fp_is_nan_or_infinite(raw_a) || fp_is_nan_or_infinite(raw_b) || fp_is_nan_or_infinite(raw_c))
            continue;
        const std::uint16_t a = operand(raw_a), b = operand(raw_b), c = operand(raw_c);
        const int128 sum = (multiple(a) << (unit - 24)) + ((multiple(b) * multiple(c)) << (unit - 48));
        ASSERT_EQ(run(FPMulAdd<std::uint16_t>, raw_a, raw_b, raw_c),
                  rounded_sum(sum, a >> 15, (b ^ c) >> 15, rm, flush))
            << std::hex << raw_a << " + " << raw_b << " * " << raw_c;
    }
}

INSTANTIATE_TEST_SUITE_P(All, HalfModes, testing::Range(0, 8));

} // namespace
