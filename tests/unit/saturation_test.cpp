// Saturation: the bounds of each width, what is masked and what is not, and the flag. Most of it serves users
// of the library only.
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

void expect_equal(const saturation& actual, const saturation& expected, const char* what) {
    EXPECT_EQ(actual.value, expected.value) << what;
    EXPECT_EQ(actual.saturated, expected.saturated) << what;
}

TEST(Saturation, AtTheBoundsOfEveryWidth) {
    for (const int N : {8, 16, 32, 64}) {
        for (const bool is_unsigned : {false, true}) {
            const wide_integer least = is_unsigned ? 0 : -power(N - 1),
                               most = is_unsigned ? power(N) - 1 : power(N - 1) - 1;
            for (const wide_integer value : {least - 1, least, wide_integer{-1}, wide_integer{0}, most,
                                             most + 1, power(64), -power(64), power(126), -power(126)}) {
                SCOPED_TRACE(testing::Message()
                             << std::hex << bits(value >> 64) << ':' << bits(value) << ", width " << std::dec
                             << N << (is_unsigned ? ", unsigned" : ""));
                const wide_integer bounded = std::clamp(value, least, most);
                const saturation masked = {bits(bounded) & ones(N), bounded != value};
                expect_equal(SatQ(value, N, is_unsigned), masked, "SatQ");
                expect_equal(SatQBigInt(toBigInt(value), N, is_unsigned), masked, "SatQBigInt");
                expect_equal(SatQShift(value, N, is_unsigned), {bits(bounded), bounded != value},
                             "SatQShift");
            }
        }
    }
}

TEST(Saturation, ToWiderTypes) {
    struct {
        const char* what;
        saturation result, expected;
    } const cases[] = {
        {"2^100 to 101", SatQShift(power(100), 101, false), {all_ones, 1}},
        {"2^100 to 102", SatQShift(power(100), 102, false), {0, 0}},
        {"-2^100 to 101", SatQShift(-power(100), 101, false), {0, 0}},
        {"-2^100 - 1 to 101", SatQShift(-power(100) - 1, 101, false), {0, 1}},
        {"2^101 - 1 to 101 unsigned", SatQShift(power(101) - 1, 101, true), {all_ones, 0}},
        {"2^101 to 101 unsigned", SatQShift(power(101), 101, true), {all_ones, 1}},
        {"-2^127 to 128", SatQShift(-power(126) * 2, 128, false), {0, 0}},
        {"2^126 to 128 unsigned", SatQShift(power(126), 128, true), {0, 0}},
        {"255", SatQUShift(255, 8), {255, 0}},
        {"256", SatQUShift(256, 8), {255, 1}},
        {"65535", SatQUShift(65535, 8), {255, 1}},
        {"65536", SatQUShift(65536, 8), {0, 1}},
        {"the high word is not looked at", SatQUShift(power(64) + 5, 8), {5, 0}},
        {"-1 to 8", SatQUShift(-1, 8), {0, 1}},
        {"-1 to 64", SatQUShift(-1, 64), {all_ones, 0}},
        {"2^40 - 1 to 20", SatQUShift(power(40) - 1, 20), {0xFFFFF, 1}},
        {"word 1", SatQBigInt({{5, 1, 0, 0}}, 64, false), {largest64, 1}},
        {"word 2", SatQBigInt({{5, 0, 1, 0}}, 64, true), {all_ones, 1}},
        {"word 3", SatQBigInt({{5, 0, 0, 1}}, 8, true), {255, 1}},
        {"sign alone", SatQBigInt({{all_ones, all_ones, all_ones, top_bit}}, 8, false), {128, 1}},
        {"a hole in word 1", SatQBigInt({{all_ones, all_ones - 1, all_ones, all_ones}}, 8, false), {128, 1}},
    };
    for (const auto& c : cases)
        expect_equal(c.result, c.expected, c.what);
}

// Every pair of bytes, with rubbish above them, against arithmetic in ints.
TEST(Saturation, PairsOfBytes) {
    for (int i = 0; i < 0x10000; ++i) {
        const auto a = static_cast<std::uint64_t>(i >> 8) | 0xABC00,
                   b = static_cast<std::uint64_t>(i & 0xFF) | 0x1200;
        for (const bool is_unsigned : {false, true}) {
            const int left = is_unsigned ? i >> 8 : static_cast<std::int8_t>(i >> 8);
            const int right = is_unsigned ? i & 0xFF : static_cast<std::int8_t>(i);
            const int shifted = right < 0 ? left >> std::min(-right, 31) : left * (1 << std::min(right, 8));
            const int least = is_unsigned ? 0 : -128, most = is_unsigned ? 255 : 127;
            const auto expect = [&](const char* what, saturation result, int exact, bool is_bounded,
                                    bool is_masked_in, bool is_masked_out) {
                const bool in_range = least <= exact && exact <= most;
                const auto word = static_cast<std::uint64_t>(
                    static_cast<std::int64_t>(is_bounded ? std::clamp(exact, least, most) : exact));
                const bool is_masked = in_range ? is_masked_in : is_masked_out;
                ASSERT_EQ(result.value, is_masked ? word & 0xFF : word) << left << what << right;
                ASSERT_EQ(result.saturated, in_range ? 0u : 1u) << left << what << right;
            };
            expect(" + ", SatAdd(a, b, 8, is_unsigned), left + right, true, false, true);
            expect(" - ", SatSub(a, b, 8, is_unsigned), left - right, true, true, true);
            expect(" * ", SatMult(a, b, 8, is_unsigned), left * right, false, false, false);
            expect(" << ", SatShiftLeft(a, b, 8, is_unsigned), shifted, true, true, true);
            expect(" value << ", ShiftQLeftInt(left, right, 8, is_unsigned), shifted, true, false, false);
        }
        const int exact = static_cast<std::int8_t>(i >> 8) * (1 << std::min(i & 0xFF, 8));
        const saturation result = SatShiftLeftU(a, b, 8);
        ASSERT_EQ(result.value, static_cast<std::uint64_t>(std::clamp(exact, 0, 255))) << i;
        ASSERT_EQ(result.saturated, exact < 0 || exact > 255 ? 1u : 0u) << i;
    }
}

TEST(Saturation, OfDoublewords) {
    struct {
        const char* what;
        saturation result, expected;
    } const cases[] = {
        {"all ones + 1", SatAdd(all_ones, 1, 64, true), {all_ones, 1}},
        {"largest + 1", SatAdd(largest64, 1, 64, false), {largest64, 1}},
        {"least + least", SatAdd(top_bit, top_bit, 64, false), {top_bit, 1}},
        {"0 - 1", SatSub(0, 1, 64, true), {0, 1}},
        {"largest - -1", SatSub(largest64, all_ones, 64, false), {largest64, 1}},
        {"2^32 * 2^32", SatMult(0x100000000, 0x100000000, 64, true), {0, 1}},
        {"2^32 * 2^31", SatMult(0x100000000, 0x80000000, 64, true), {top_bit, 0}},
        {"2^32 * 2^31 signed", SatMult(0x100000000, 0x80000000, 64, false), {top_bit, 1}},
        {"-2^32 * 2^31", SatMult(0xFFFFFFFF00000000, 0x80000000, 64, false), {top_bit, 0}},
        {"2^63 << 64 unsigned", SatShiftLeft(top_bit, 64, 64, true), {all_ones, 1}},
        {"least << 1", SatShiftLeft(top_bit, 1, 64, false), {top_bit, 1}},
        {"least << 0", SatShiftLeft(top_bit, 0, 64, false), {top_bit, 0}},
        {"largest << 64 to unsigned", SatShiftLeftU(largest64, 64, 64), {all_ones, 1}},
        {"-3 << 1 unsigned", ShiftQLeftInt(-3, 1, 8, true), {0, 1}},
        {"0 << 2^64", ShiftQLeftInt(0, power(64), 8, false), {0, 0}},
        {"2^63 << 64 unsigned value", ShiftQLeftInt(power(63), 64, 64, true), {all_ones, 1}},
        {"1 << 2^64", ShiftQLeftInt(1, power(64), 64, false), {largest64, 1}},
        {"1000 << -1", ShiftQLeftInt(1000, -1, 8, false), {500, 0}}, // not saturated
    };
    for (const auto& c : cases)
        expect_equal(c.result, c.expected, c.what);
}

} // namespace
