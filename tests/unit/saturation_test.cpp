// Saturation: the bounds of each width, what is masked and what is not, and the flag.
#include "sve/library/saturation.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr std::uint64_t all_ones = ~std::uint64_t{0};
constexpr std::uint64_t top_bit = std::uint64_t{1} << 63;
constexpr std::uint64_t largest64 = top_bit - 1;

constexpr wide_integer power(int exponent) {
    return static_cast<wide_integer>(unsigned_wide_integer{1} << exponent);
}

struct value_case {
    wide_integer value;
    int N;
    bool is_unsigned;
    saturation result;
};

template <class Function>
void check(const char* name, Function function, const std::initializer_list<value_case>& cases) {
    for (const value_case& c : cases) {
        const saturation result = function(c.value, c.N, c.is_unsigned);
        SCOPED_TRACE(testing::Message()
                     << name << " of " << std::hex << bits(c.value >> 64) << ':' << bits(c.value) << std::dec
                     << ", width " << c.N << (c.is_unsigned ? ", unsigned" : ""));
        EXPECT_EQ(result.value, c.result.value);
        EXPECT_EQ(result.saturated, c.result.saturated);
    }
}

// In range, every function gives the masked pattern; out of range, an unextended bound.
TEST(Saturation, ToElement) {
    check("SatQ", SatQ,
          {{127, 8, false, {127, 0}},
           {128, 8, false, {127, 1}},
           {-1, 8, false, {0xFF, 0}},
           {-128, 8, false, {128, 0}},
           {-129, 8, false, {128, 1}},
           {32768, 16, false, {32767, 1}},
           {-32769, 16, false, {32768, 1}},
           {power(31), 32, false, {0x7FFFFFFF, 1}},
           {power(63) - 1, 64, false, {largest64, 0}},
           {power(63), 64, false, {largest64, 1}},
           {power(64), 64, false, {largest64, 1}},
           {-power(63), 64, false, {top_bit, 0}},
           {-power(63) - 1, 64, false, {top_bit, 1}},
           {-power(64), 8, false, {128, 1}},
           {255, 8, true, {255, 0}},
           {256, 8, true, {255, 1}},
           {-1, 8, true, {0, 1}},
           {0, 8, true, {0, 0}},
           {power(64), 8, true, {255, 1}}, // the low word alone would be in range
           {power(64) - 1, 64, true, {all_ones, 0}},
           {power(64), 64, true, {all_ones, 1}},
           {power(126), 64, true, {all_ones, 1}},
           {-power(64), 64, true, {0, 1}}});
}

TEST(Saturation, ToWideTypes) {
    check("SatQShift", SatQShift,
          {{127, 8, false, {127, 0}},
           {128, 8, false, {127, 1}},
           {-1, 8, false, {all_ones, 0}}, // not masked
           {-129, 8, false, {all_ones - 127, 1}},
           {-power(63) - 1, 64, false, {top_bit, 1}},
           {256, 8, true, {255, 1}},
           {-1, 8, true, {0, 1}},
           {power(100), 101, false, {all_ones, 1}},
           {power(100), 102, false, {0, 0}},
           {-power(100), 101, false, {0, 0}},
           {-power(100) - 1, 101, false, {0, 1}},
           {power(101) - 1, 101, true, {all_ones, 0}},
           {power(101), 101, true, {all_ones, 1}},
           {-power(126) * 2, 128, false, {0, 0}},
           {power(126), 128, true, {0, 0}}});

    check("SatQUShift", [](wide_integer value, int n, bool) { return SatQUShift(value, n); },
          {{255, 8, true, {255, 0}},
           {256, 8, true, {255, 1}},
           {65535, 8, true, {255, 1}},
           {65536, 8, true, {0, 1}},
           {power(64) + 5, 8, true, {5, 0}}, // the high word is not looked at
           {-1, 8, true, {0, 1}},
           {-1, 64, true, {all_ones, 0}},
           {power(40), 20, true, {0, 1}},
           {power(40) - 1, 20, true, {0xFFFFF, 1}},
           {0, 0, true, {0, 0}}});
}

TEST(Saturation, OfBigIntegers) {
    struct {
        BigInt value;
        int N;
        bool is_unsigned;
        saturation result;
    } const cases[] = {{toBigInt(127), 8, false, {127, 0}},
                       {toBigInt(128), 8, false, {127, 1}},
                       {toBigInt(-1), 8, false, {0xFF, 0}},
                       {toBigInt(-128), 8, false, {128, 0}},
                       {toBigInt(-129), 8, false, {128, 1}},
                       {toBigInt(power(63)), 64, false, {largest64, 1}},
                       {toBigInt(-power(63)), 64, false, {top_bit, 0}},
                       {{{5, 1, 0, 0}}, 64, false, {largest64, 1}},
                       {{{5, 0, 1, 0}}, 64, false, {largest64, 1}},
                       {{{5, 0, 0, 1}}, 64, false, {largest64, 1}},
                       {{{all_ones, all_ones, all_ones, top_bit}}, 8, false, {128, 1}},
                       {{{all_ones, all_ones - 1, all_ones, all_ones}}, 8, false, {128, 1}},
                       {toBigInt(255), 8, true, {255, 0}},
                       {toBigInt(256), 8, true, {255, 1}},
                       {toBigInt(-1), 8, true, {0, 1}},
                       {{{5, 1, 0, 0}}, 8, true, {255, 1}},
                       {{{5, 0, 1, 0}}, 8, true, {255, 1}},
                       {{{5, 0, 0, 1}}, 8, true, {255, 1}},
                       {{{all_ones, 0, 0, 0}}, 64, true, {all_ones, 0}}};
    for (const auto& c : cases) {
        const saturation result = SatQBigInt(c.value, c.N, c.is_unsigned);
        SCOPED_TRACE(testing::Message()
                     << std::hex << c.value.words[3] << ':' << c.value.words[2] << ':' << c.value.words[1]
                     << ':' << c.value.words[0] << ", width " << std::dec << c.N);
        EXPECT_EQ(result.value, c.result.value);
        EXPECT_EQ(result.saturated, c.result.saturated);
    }
}

// Every pair of bytes, with rubbish above them, against arithmetic in ints.
TEST(Saturation, SumsDifferencesAndProductsOfBytes) {
    for (int i = 0; i < 0x10000; ++i) {
        const auto a = static_cast<std::uint64_t>(i >> 8) | 0xABC00,
                   b = static_cast<std::uint64_t>(i & 0xFF) | 0x1200;
        for (const bool is_unsigned : {false, true}) {
            const int left = is_unsigned ? i >> 8 : static_cast<std::int8_t>(i >> 8);
            const int right = is_unsigned ? i & 0xFF : static_cast<std::int8_t>(i);
            const int least = is_unsigned ? 0 : -128, most = is_unsigned ? 255 : 127;
            const auto expect = [&](const char* what, saturation result, int exact, bool is_saturated_value,
                                    bool is_masked_in_range) {
                const bool in_range = least <= exact && exact <= most;
                const int value = is_saturated_value ? std::clamp(exact, least, most) : exact;
                const bool is_masked = in_range ? is_masked_in_range : is_saturated_value;
                const auto word = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
                ASSERT_EQ(result.value, is_masked ? word & 0xFF : word) << left << what << right;
                ASSERT_EQ(result.saturated, in_range ? 0u : 1u) << left << what << right;
            };
            expect(" + ", SatAdd(a, b, 8, is_unsigned), left + right, true, false);
            expect(" - ", SatSub(a, b, 8, is_unsigned), left - right, true, true);
            expect(" * ", SatMult(a, b, 8, is_unsigned), left * right, false, false);
        }
    }
}

TEST(Saturation, OfDoublewords) {
    struct {
        const char* what;
        saturation result, expected;
    } const cases[] = {
        {"all ones + 1", SatAdd(all_ones, 1, 64, true), {all_ones, 1}},
        {"largest + 1", SatAdd(largest64, 1, 64, false), {largest64, 1}},
        {"-1 + 1", SatAdd(all_ones, 1, 64, false), {0, 0}},
        {"least + least", SatAdd(top_bit, top_bit, 64, false), {top_bit, 1}},
        {"0 - 1", SatSub(0, 1, 64, true), {0, 1}},
        {"least - 1", SatSub(top_bit, 1, 64, false), {top_bit, 1}},
        {"largest - -1", SatSub(largest64, all_ones, 64, false), {largest64, 1}},
        {"all ones - 0", SatSub(all_ones, 0, 64, true), {all_ones, 0}},
        {"2^32 * 2^32", SatMult(0x100000000, 0x100000000, 64, true), {0, 1}},
        {"2^32 * 2^31", SatMult(0x100000000, 0x80000000, 64, true), {top_bit, 0}},
        {"2^32 * 2^31 signed", SatMult(0x100000000, 0x80000000, 64, false), {top_bit, 1}},
        {"-2^32 * 2^31", SatMult(0xFFFFFFFF00000000, 0x80000000, 64, false), {top_bit, 0}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.result.value, c.expected.value) << c.what;
        EXPECT_EQ(c.result.saturated, c.expected.saturated) << c.what;
    }
}

TEST(Saturation, LeftShifts) {
    struct {
        const char* what;
        saturation result, expected;
    } const cases[] = {
        {"value 3 << 2", ShiftQLeftInt(3, 2, 8, false), {12, 0}},
        {"value 3 << 6", ShiftQLeftInt(3, 6, 8, false), {127, 1}},
        {"value 3 << 6 unsigned", ShiftQLeftInt(3, 6, 8, true), {192, 0}},
        {"value 3 << 7 unsigned", ShiftQLeftInt(3, 7, 8, true), {255, 1}},
        {"value -3 << 2", ShiftQLeftInt(-3, 2, 8, false), {all_ones - 11, 0}},
        {"value -3 << 6", ShiftQLeftInt(-3, 6, 8, false), {all_ones - 127, 1}},
        {"value -3 << 1 unsigned", ShiftQLeftInt(-3, 1, 8, true), {0, 1}},
        {"value 1 << N", ShiftQLeftInt(1, 8, 8, false), {127, 1}},
        {"value -1 << N", ShiftQLeftInt(-1, 8, 8, false), {all_ones - 127, 1}},
        {"value 1 << N unsigned", ShiftQLeftInt(1, 8, 8, true), {255, 1}},
        {"value 0 << 2^64", ShiftQLeftInt(0, power(64), 8, false), {0, 0}},
        {"value 1 << 2^64", ShiftQLeftInt(1, power(64), 64, false), {largest64, 1}},
        {"value -9 << -2", ShiftQLeftInt(-9, -2, 8, false), {all_ones - 2, 0}},
        {"value 1000 << -1", ShiftQLeftInt(1000, -1, 8, false), {500, 0}}, // not saturated

        {"3 << 5", SatShiftLeft(3, 5, 8, false), {96, 0}},
        {"3 << 6", SatShiftLeft(3, 6, 8, false), {127, 1}},
        {"-3 << 6", SatShiftLeft(0xFD, 6, 8, false), {128, 1}},
        {"-3 << 5", SatShiftLeft(0xFD, 5, 8, false), {0xA0, 0}},
        {"-8 << -2", SatShiftLeft(0xF8, 0xFE, 8, false), {0xFE, 0}},
        {"0 << 127", SatShiftLeft(0, 127, 8, false), {0, 0}},
        {"1 << 127", SatShiftLeft(1, 127, 8, false), {127, 1}},
        {"3 << 6 unsigned", SatShiftLeft(3, 6, 8, true), {192, 0}},
        {"3 << 7 unsigned", SatShiftLeft(3, 7, 8, true), {255, 1}},
        {"1 << 255 unsigned", SatShiftLeft(1, 255, 8, true), {255, 1}},
        {"2^63 << 64 unsigned", SatShiftLeft(top_bit, 64, 64, true), {all_ones, 1}},
        {"least << 1", SatShiftLeft(top_bit, 1, 64, false), {top_bit, 1}},
        {"least << 0", SatShiftLeft(top_bit, 0, 64, false), {top_bit, 0}},

        {"3 << 6 to unsigned", SatShiftLeftU(3, 6, 8), {192, 0}},
        {"3 << 7 to unsigned", SatShiftLeftU(3, 7, 8), {255, 1}},
        {"1 << 255 to unsigned", SatShiftLeftU(1, 255, 8), {255, 1}},
        {"-1 << 0 to unsigned", SatShiftLeftU(0xFF, 0, 8), {0, 1}},
        {"-1 << 255 to unsigned", SatShiftLeftU(0xFF, 255, 8), {0, 1}},
        {"0 << 255 to unsigned", SatShiftLeftU(0, 255, 8), {0, 0}},
        {"largest << 64 to unsigned", SatShiftLeftU(largest64, 64, 64), {all_ones, 1}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.result.value, c.expected.value) << c.what;
        EXPECT_EQ(c.result.saturated, c.expected.saturated) << c.what;
    }
}

} // namespace
