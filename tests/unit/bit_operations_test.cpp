// Counting, mirroring and comparing the bits of an element, bit by bit.
#include "sve/library/bit_operations.h"

#include "sve/library/wide_integers.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr std::uint64_t all_ones = ~std::uint64_t{0};
constexpr std::uint64_t top_bit = std::uint64_t{1} << 63;

bool bit(std::uint64_t x, int i) { return x >> i & 1; }

TEST(BitOperations, OfAnyWidth) {
    std::mt19937_64 generator(1);
    for (int round = 0; round < 4000; ++round) {
        const int N = static_cast<int>(generator() % 65);
        std::uint64_t x = generator();
        if (round % 2) // a long run at the top of the width, with rubbish above it
            x = (x << N % 64) | ((generator() % 2 ? all_ones : 0) >> (64 - N) % 64 & ~(x % 16));
        SCOPED_TRACE(testing::Message() << std::hex << x << ", width " << std::dec << N);
        int highest = -1, count = 0, signs = 0;
        std::uint64_t mirrored = 0;
        for (int i = 0; i < N; ++i) {
            highest = bit(x, i) ? i : highest;
            count += bit(x, i);
            mirrored |= std::uint64_t{bit(x, i)} << (N - 1 - i);
        }
        while (signs < N - 1 && bit(x, N - 2 - signs) == bit(x, N - 1))
            ++signs;
        EXPECT_EQ(HighestBitSet(x, N), highest);
        EXPECT_EQ(CountLeadingZeroBits(x, N), N - 1 - highest);
        EXPECT_EQ(BitCount(x, N), count);
        EXPECT_EQ(BitReverse(x, N), mirrored);
        if (N > 0) {
            EXPECT_EQ(CountLeadingSignBits(x, N), signs);
        }
        for (const int unit : {0, 1, 2, 3, 4, 8}) {
            std::uint64_t reversed = 0; // by whole units, what is above them dropped
            for (int k = 0; (unit == 1 || unit == 2 || unit == 4) && 8 * unit * (k + 1) <= N; ++k)
                reversed = reversed << (8 * unit) % 64 | (x >> 8 * unit * k & (all_ones >> (64 - 8 * unit)));
            EXPECT_EQ(Reverse(x, N, unit), reversed) << unit;
        }
    }
    EXPECT_EQ(HighestBitSet(all_ones, -64), -1);
    EXPECT_EQ(BitCount(all_ones, -64), 0);
    EXPECT_EQ(BitReverse(all_ones, -3), 0u);
}

TEST(BitOperations, LargerAndSmaller) {
    struct {
        std::uint64_t a, b;
        int N;
        bool is_unsigned;
        std::uint64_t larger, smaller;
    } const cases[] = {{1, 2, 8, true, 2, 1},
                       {0x80, 0x7F, 8, false, 0x7F, 0x80},
                       {0xAA05, 0xBB03, 8, true, 0xAA05, 0xBB03}, // high bits neither count nor go
                       {0xAA05, 0xBB05, 8, true, 0xAA05, 0xAA05}, // a tie gives a
                       {0xBB05, 0xAA05, 8, false, 0xBB05, 0xBB05},
                       {0x80000000, 1, 32, false, 1, 0x80000000},
                       {top_bit, 1, 64, false, 1, top_bit},
                       {top_bit, 1, 64, true, top_bit, 1},
                       {3, 4, 24, true, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << std::hex << c.a << " and " << c.b << ", width " << std::dec << c.N);
        EXPECT_EQ(Max(c.a, c.b, c.N, c.is_unsigned), c.larger);
        EXPECT_EQ(Min(c.a, c.b, c.N, c.is_unsigned), c.smaller);
    }
}

TEST(BitOperations, ShiftsAndPolynomialProducts) {
    EXPECT_EQ(ShiftLeft(0x81, 1, 8), 0x102u);
    EXPECT_EQ(ShiftLeft(5, 65, 64), 10u); // by the count modulo 64
    EXPECT_EQ(ShiftLeft(1, -1, 64), top_bit);
    std::mt19937_64 generator(2);
    for (int round = 0; round < 200; ++round) {
        const std::uint64_t a = generator(), b = generator() >> generator() % 64;
        unsigned_wide_integer expected = 0;
        for (int i = 0; i < 64; ++i)
            expected ^= bit(b, i) ? static_cast<unsigned_wide_integer>(a) << i : 0;
        const polynomial_product product = PolynomialMult(a, b);
        EXPECT_EQ(product.low, static_cast<std::uint64_t>(expected)) << std::hex << a << " * " << b;
        EXPECT_EQ(product.high, static_cast<std::uint64_t>(expected >> 64)) << std::hex << a << " * " << b;
    }
}

} // namespace
