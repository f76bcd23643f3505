// Integers of 128 and 256 bits: conversions, arithmetic at the edges, and shifts by counts of any size.
#include "sve/library/wide_integers.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t all_ones = ~std::uint64_t{0};
constexpr std::uint64_t top_bit = std::uint64_t{1} << 63;

constexpr wide_integer wide(std::uint64_t high, std::uint64_t low) {
    return static_cast<wide_integer>(static_cast<unsigned_wide_integer>(high) << 64 | low);
}

TEST(WideIntegers, ConversionFromAnyWidth) {
    EXPECT_EQ(ones(0), all_ones);
    for (const std::uint64_t x : {std::uint64_t{0x1234}, 0x180FF80 | top_bit, all_ones, all_ones >> 1}) {
        for (int N = -8; N <= 70; ++N) {
            SCOPED_TRACE(testing::Message() << std::hex << x << ", width " << std::dec << N);
            const wide_integer modulus = wide_integer{1} << std::clamp(N, 0, 64);
            const wide_integer magnitude = x % modulus;
            const wide_integer value = 2 * magnitude >= modulus && N > 0 ? magnitude - modulus : magnitude;
            const bool is_element = N == 8 || N == 16 || N == 32 || N == 64;
            EXPECT_TRUE(Int(x, N, true) == magnitude);
            EXPECT_TRUE(Int(x, N, false) == value);
            EXPECT_TRUE(UInt(x, N) == magnitude);
            EXPECT_TRUE(SInt(x, N) == (is_element ? value : 0));
            if (N >= 1 && N <= 64) {
                EXPECT_TRUE(ones(N) == modulus - 1);
            }
        }
    }
    EXPECT_EQ(bits(wide(7, 9)), 9u);
}

TEST(WideIntegers, ArithmeticAndShifts) {
    const wide_integer least = wide(top_bit, 0), most = wide(top_bit - 1, all_ones), huge = wide(1, 0);
    struct {
        const char* what;
        wide_integer result, expected;
    } const cases[] = {{"abs -5", AbsInt(-5), 5},
                       {"abs -2^64", AbsInt(wide(all_ones, 0)), huge},
                       {"abs least", AbsInt(least), least},
                       {"neg 0", NegInt(0), 0},
                       {"neg 2^64", NegInt(huge), wide(all_ones, 0)},
                       {"neg least", NegInt(least), least},
                       {"carry", AddInt(wide(0, all_ones), 1), huge},
                       {"add wraps", AddInt(most, 1), least},
                       {"borrow", SubInt(huge, 1), wide(0, all_ones)},
                       {"sub wraps", SubInt(least, 1), most},
                       {"1 << 63", ShiftLeftInt(1, 63), wide(0, top_bit)},
                       {"1 << 64", ShiftLeftInt(1, 64), huge},
                       {"1 << 65 counts as 64", ShiftLeftInt(1, 65), huge},
                       {"1 << 2^64", ShiftLeftInt(1, huge), huge},
                       {"2^64 * 3 + 1 << 63 wraps", ShiftLeftInt(wide(3, 1), 63), wide(top_bit, top_bit)},
                       {"16 << -3", ShiftLeftInt(16, -3), 2},
                       {"-16 << -200", ShiftLeftInt(-16, -200), -1},
                       {"5 << least", ShiftLeftInt(5, least), 0},
                       {"-16 >> 3", ShiftRightInt(-16, 3), -2},
                       {"2^65 >> 65", ShiftRightInt(wide(2, 0), 65), 1},
                       {"2^66 >> 66 counts as 65", ShiftRightInt(wide(4, 0), 66), 2},
                       {"2^66 >> 127 counts as 65", ShiftRightInt(wide(4, 0), 127), 2},
                       {"2^66 >> 2^64 counts as 65", ShiftRightInt(wide(4, 0), huge), 2},
                       {"-1 >> 128", ShiftRightInt(-1, 128), -1},
                       {"2^127 >> 128", ShiftRightInt(least, 128), 0},
                       {"2^126 >> 128", ShiftRightInt(wide(top_bit >> 1, 0), 128), 0},
                       {"3 * 2^126 >> 128", ShiftRightInt(wide(top_bit | top_bit >> 1, 0), 128), -1}};
    for (const auto& c : cases)
        EXPECT_TRUE(c.result == c.expected) << c.what;
}

TEST(WideIntegers, BigIntegers) {
    const BigInt positive = {{0x10, 0x20, 0x40, 0x8}}, negative = {{0, 0, 0, top_bit}};
    struct {
        const char* what;
        BigInt result, expected;
    } const cases[] = {
        {"positive", toBigInt(wide(7, 9)), {{9, 7, 0, 0}}},
        {"negative", toBigInt(-2), {{all_ones - 1, all_ones, all_ones, all_ones}}},
        {"carry", AddBigInt({{all_ones, all_ones, 5, 0}}, {{1, 0, 0, 0}}), {{0, 0, 6, 0}}},
        {"carry into and out of each word",
         AddBigInt({{all_ones, all_ones, all_ones, 1}}, {{all_ones, all_ones, all_ones, 1}}),
         {{all_ones - 1, all_ones, all_ones, 3}}},
        {"sum that wraps", AddBigInt(toBigInt(-3), toBigInt(3)), {{0, 0, 0, 0}}},
        {"by 0", ShiftRightBigInt(positive, 0), positive},
        {"by 4", ShiftRightBigInt(positive, 4), {{1, 2, 0x8000000000000004, 0}}},
        {"by 64", ShiftRightBigInt(positive, 64), {{0x20, 0x40, 0x8, 0}}},
        {"by 127", ShiftRightBigInt(positive, 127), {{0x80, 0x10, 0, 0}}},
        {"negative by 1", ShiftRightBigInt(negative, 1), {{0, 0, 0, top_bit | top_bit >> 1}}},
        {"negative by 127", ShiftRightBigInt(negative, 127), {{0, 0, all_ones, all_ones}}},
        {"negative by 255", ShiftRightBigInt(negative, 255), toBigInt(-1)},
    };
    for (const auto& c : cases)
        EXPECT_TRUE(std::equal(c.result.words, c.result.words + 4, c.expected.words)) << c.what;
}

} // namespace
