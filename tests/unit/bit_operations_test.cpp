// Counting, mirroring and comparing the bits of an element.
#include "sve/library/bit_operations.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

constexpr std::uint64_t all_ones = ~std::uint64_t{0};
constexpr std::uint64_t top_bit = std::uint64_t{1} << 63;

TEST(BitOperations, Counts) {
    struct {
        std::uint64_t x;
        int N, highest, leading_zeros, leading_signs, count;
    } const cases[] = {{0, 8, -1, 8, 7, 0},           {0xFF, 8, 7, 0, 7, 8},
                       {0x01, 8, 0, 7, 6, 1},         {0x80, 8, 7, 0, 0, 1},
                       {0xC0, 8, 7, 0, 1, 2},         {0x40, 8, 6, 1, 0, 1},
                       {0xFF00, 8, -1, 8, 7, 0}, // only the low 8 bits count
                       {0xFF7F, 16, 15, 0, 7, 15},    {0xFFFF0001, 16, 0, 15, 14, 1},
                       {0x80000000, 32, 31, 0, 0, 1}, {0x1FFFFFFFF, 32, 31, 0, 31, 32},
                       {all_ones, 64, 63, 0, 63, 64}, {0, 64, -1, 64, 63, 0},
                       {top_bit, 64, 63, 0, 0, 1},    {top_bit - 1, 64, 62, 1, 0, 63},
                       {1, 64, 0, 63, 62, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.x << ", width " << std::dec << c.N);
        EXPECT_EQ(HighestBitSet(c.x, c.N), c.highest);
        EXPECT_EQ(CountLeadingZeroBits(c.x, c.N), c.leading_zeros);
        EXPECT_EQ(CountLeadingSignBits(c.x, c.N), c.leading_signs);
        EXPECT_EQ(BitCount(c.x, c.N), c.count);
    }
    for (const int N : {0, -1, -64}) {
        EXPECT_EQ(HighestBitSet(all_ones, N), -1) << N;
        EXPECT_EQ(BitCount(all_ones, N), 0) << N;
    }
}

TEST(BitOperations, Mirroring) {
    struct {
        std::uint64_t x;
        int N;
        std::uint64_t result;
    } const bit_cases[] = {{0x01, 8, 0x80},      {0xFF2C, 8, 0x34},
                           {0x8001, 16, 0x8001}, {0x12345678, 32, 0x1E6A2C48},
                           {1, 64, top_bit},     {0x6, 3, 0x3},
                           {all_ones, 1, 1},     {all_ones, 0, 0},
                           {all_ones, -3, 0},    {0x0123456789ABCDEF, 64, 0xF7B3D591E6A2C480}};
    for (const auto& c : bit_cases)
        EXPECT_EQ(BitReverse(c.x, c.N), c.result) << std::hex << c.x << ", width " << std::dec << c.N;

    struct {
        std::uint64_t x;
        int N, unit;
        std::uint64_t result;
    } const unit_cases[] = {{0x1122, 16, 1, 0x2211},
                            {0x11223344, 16, 1, 0x4433},
                            {0x11223344, 32, 1, 0x44332211},
                            {0x11223344, 32, 2, 0x33441122},
                            {0x1122334455667788, 64, 1, 0x8877665544332211},
                            {0x1122334455667788, 64, 2, 0x7788556633441122},
                            {0x1122334455667788, 64, 4, 0x5566778811223344},
                            {0x11223344, 32, 4, 0x11223344},
                            {0x112233, 24, 1, 0x332211},
                            {0x112233, 24, 2, 0x2233}, // one whole unit
                            {0x11, 8, 1, 0x11},
                            {0x11, 8, 2, 0},
                            {0x1122, 16, 4, 0},
                            {0x1122, 0, 1, 0},
                            {0x1122, 7, 1, 0},
                            {0x1122334455667788, 64, 3, 0},
                            {0x1122334455667788, 64, 8, 0},
                            {0x1122334455667788, 64, 0, 0}};
    for (const auto& c : unit_cases)
        EXPECT_EQ(Reverse(c.x, c.N, c.unit), c.result)
            << std::hex << c.x << ", width " << std::dec << c.N << ", unit " << c.unit;
}

TEST(BitOperations, LargerAndSmaller) {
    struct {
        std::uint64_t a, b;
        int N;
        bool is_unsigned;
        std::uint64_t larger, smaller;
    } const cases[] = {{1, 2, 8, true, 2, 1},
                       {0x80, 0x7F, 8, true, 0x80, 0x7F},
                       {0x80, 0x7F, 8, false, 0x7F, 0x80},
                       {0xAA05, 0xBB03, 8, true, 0xAA05, 0xBB03}, // high bits neither count nor go
                       {0xAA05, 0xBB05, 8, true, 0xAA05, 0xAA05}, // a tie gives a
                       {0xBB05, 0xAA05, 8, false, 0xBB05, 0xBB05},
                       {0x8000, 0, 16, false, 0, 0x8000},
                       {0xFFFF8000, 0, 16, true, 0xFFFF8000, 0},
                       {0x80000000, 1, 32, false, 1, 0x80000000},
                       {top_bit, 1, 64, false, 1, top_bit},
                       {top_bit, 1, 64, true, top_bit, 1},
                       {3, 4, 0, true, 0, 0},
                       {3, 4, 24, true, 0, 0},
                       {3, 4, 128, false, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << std::hex << c.a << " and " << c.b << ", width " << std::dec << c.N);
        EXPECT_EQ(Max(c.a, c.b, c.N, c.is_unsigned), c.larger);
        EXPECT_EQ(Min(c.a, c.b, c.N, c.is_unsigned), c.smaller);
    }
}

TEST(BitOperations, ShiftLeftByCountModulo64) {
    EXPECT_EQ(ShiftLeft(0x81, 1, 8), 0x102u);
    EXPECT_EQ(ShiftLeft(3, 63, 8), top_bit);
    EXPECT_EQ(ShiftLeft(5, 64, 64), 5u);
    EXPECT_EQ(ShiftLeft(5, 65, 64), 10u);
    EXPECT_EQ(ShiftLeft(1, -1, 64), top_bit);
}

TEST(BitOperations, PolynomialProduct) {
    struct {
        std::uint64_t a, b, high, low;
    } const cases[] = {{0, all_ones, 0, 0},
                       {1, all_ones, 0, all_ones},
                       {3, 3, 0, 5},
                       {7, 5, 0, 0x1B},
                       {top_bit, 2, 1, 0},
                       {top_bit, top_bit, std::uint64_t{1} << 62, 0},
                       {all_ones, all_ones, 0x5555555555555555, 0x5555555555555555}};
    for (const auto& c : cases) {
        for (const auto& [a, b] : {std::pair{c.a, c.b}, std::pair{c.b, c.a}}) {
            const polynomial_product product = PolynomialMult(a, b);
            EXPECT_EQ(product.high, c.high) << std::hex << a << " * " << b;
            EXPECT_EQ(product.low, c.low) << std::hex << a << " * " << b;
        }
    }
}

} // namespace
