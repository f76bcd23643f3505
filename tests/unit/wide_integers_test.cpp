// Integers of 128 and 256 bits: conversions, arithmetic at the edges, and shifts by counts of any size.
#include "sve/library/wide_integers.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t all_ones = ~std::uint64_t{0};
constexpr std::uint64_t top_bit = std::uint64_t{1} << 63;

constexpr wide_integer wide(std::uint64_t high, std::uint64_t low) {
    return static_cast<wide_integer>(static_cast<unsigned_wide_integer>(high) << 64 | low);
}

// The two words of a value, which a failing test can print.
struct words {
    std::uint64_t high, low;
    bool operator==(const words&) const = default;
};
words words_of(wide_integer value) { return {bits(value >> 64), bits(value)}; }
std::ostream& operator<<(std::ostream& stream, const words& value) {
    return stream << std::hex << value.high << ':' << value.low;
}

TEST(WideIntegers, OnesOfAnyWidth) {
    struct {
        int N;
        std::uint64_t result;
    } const cases[] = {{0, all_ones},       {1, 1},        {8, 0xFF}, {33, 0x1FFFFFFFF},
                       {63, all_ones >> 1}, {64, all_ones}};
    for (const auto& c : cases)
        EXPECT_EQ(ones(c.N), c.result) << c.N;
}

TEST(WideIntegers, Conversion) {
    struct {
        std::uint64_t x;
        int N;
        words as_signed, as_unsigned;
    } const cases[] = {{0x1234, 0, {0, 0}, {0, 0}},
                       {0x1234, -1, {0, 0}, {0, 0}},
                       {0xFF7F, 8, {0, 0x7F}, {0, 0x7F}},
                       {0xFF80, 8, {all_ones, all_ones - 0x7F}, {0, 0x80}},
                       {0x18000, 16, {all_ones, all_ones - 0x7FFF}, {0, 0x8000}},
                       {0x180000000, 32, {all_ones, 0xFFFFFFFF80000000}, {0, 0x80000000}},
                       {top_bit, 64, {all_ones, top_bit}, {0, top_bit}},
                       {all_ones, 64, {all_ones, all_ones}, {0, all_ones}}};
    for (const auto& c : cases) {
        EXPECT_EQ(words_of(Int(c.x, c.N, false)), c.as_signed) << std::hex << c.x << ", " << c.N;
        EXPECT_EQ(words_of(Int(c.x, c.N, true)), c.as_unsigned) << std::hex << c.x << ", " << c.N;
        EXPECT_EQ(words_of(UInt(c.x, c.N)), c.as_unsigned) << std::hex << c.x << ", " << c.N;
        EXPECT_EQ(words_of(SInt(c.x, c.N)), c.as_signed) << std::hex << c.x << ", " << c.N;
    }
    // Any width but those of elements: extension by Int, 0 by SInt.
    EXPECT_EQ(words_of(Int(0x1C, 5, false)), words_of(-4));
    for (const int N : {-8, 0, 1, 5, 24, 63, 65, 128})
        EXPECT_EQ(words_of(SInt(all_ones, N)), words_of(0)) << N;
    EXPECT_EQ(bits(wide(7, 9)), 9u);
}

TEST(WideIntegers, Arithmetic) {
    const wide_integer least = wide(top_bit, 0), most = wide(top_bit - 1, all_ones);
    struct {
        const char* what;
        wide_integer result;
        words expected;
    } const cases[] = {{"abs 5", AbsInt(5), {0, 5}},
                       {"abs -5", AbsInt(-5), {0, 5}},
                       {"abs -2^64", AbsInt(wide(all_ones, 0)), {1, 0}},
                       {"abs least", AbsInt(least), {top_bit, 0}},
                       {"neg 0", NegInt(0), {0, 0}},
                       {"neg 1", NegInt(1), {all_ones, all_ones}},
                       {"neg 2^64", NegInt(wide(1, 0)), {all_ones, 0}},
                       {"neg least", NegInt(least), {top_bit, 0}},
                       {"carry", AddInt(wide(0, all_ones), 1), {1, 0}},
                       {"add wraps", AddInt(most, 1), {top_bit, 0}},
                       {"borrow", SubInt(wide(1, 0), 1), {0, all_ones}},
                       {"sub below 0", SubInt(3, 5), {all_ones, all_ones - 1}},
                       {"sub wraps", SubInt(least, 1), {top_bit - 1, all_ones}}};
    for (const auto& c : cases)
        EXPECT_EQ(words_of(c.result), c.expected) << c.what;
}

TEST(WideIntegers, ShiftsByAnyCount) {
    const wide_integer huge = wide(1, 0);
    struct {
        const char* what;
        wide_integer result;
        words expected;
    } const cases[] = {
        {"1 << 0", ShiftLeftInt(1, 0), {0, 1}},
        {"1 << 63", ShiftLeftInt(1, 63), {0, top_bit}},
        {"1 << 64", ShiftLeftInt(1, 64), {1, 0}},
        {"1 << 65", ShiftLeftInt(1, 65), {1, 0}},
        {"1 << 1000", ShiftLeftInt(1, 1000), {1, 0}},
        {"1 << 2^64", ShiftLeftInt(1, huge), {1, 0}},
        {"3 << 127 wraps", ShiftLeftInt(wide(3, 1), 63), {top_bit, top_bit}},
        {"16 << -3", ShiftLeftInt(16, -3), {0, 2}},
        {"-16 << -200", ShiftLeftInt(-16, -200), {all_ones, all_ones}},
        {"-1 << -128", ShiftLeftInt(-1, -128), {all_ones, all_ones}},
        {"5 << least", ShiftLeftInt(5, wide(top_bit, 0)), {0, 0}},
        {"-16 >> 0", ShiftRightInt(-16, 0), {all_ones, all_ones - 15}},
        {"-16 >> 3", ShiftRightInt(-16, 3), {all_ones, all_ones - 1}},
        {"2^65 >> 65", ShiftRightInt(wide(2, 0), 65), {0, 1}},
        {"2^66 >> 66 counts as 65", ShiftRightInt(wide(4, 0), 66), {0, 2}},
        {"2^66 >> 127 counts as 65", ShiftRightInt(wide(4, 0), 127), {0, 2}},
        {"2^66 >> 2^64 counts as 65", ShiftRightInt(wide(4, 0), huge), {0, 2}},
        {"-1 >> 200", ShiftRightInt(-1, 200), {all_ones, all_ones}},
        {"-1 >> 128", ShiftRightInt(-1, 128), {all_ones, all_ones}},
        {"2^62 >> 128", ShiftRightInt(wide(0, top_bit >> 1), 128), {0, 0}},
        {"2^127 >> 128", ShiftRightInt(wide(top_bit, 0), 128), {0, 0}},
        {"2^126 >> 128", ShiftRightInt(wide(top_bit >> 1, 0), 128), {0, 0}},
        {"3 * 2^126 >> 128", ShiftRightInt(wide(top_bit | top_bit >> 1, 0), 128), {all_ones, all_ones}}};
    for (const auto& c : cases)
        EXPECT_EQ(words_of(c.result), c.expected) << c.what;
}

void expect_words(const BigInt& value, const BigInt& expected, const char* what) {
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(value.words[i], expected.words[i]) << what << ", word " << i;
}

TEST(WideIntegers, BigIntegers) {
    expect_words(toBigInt(wide(7, 9)), {{9, 7, 0, 0}}, "positive");
    expect_words(toBigInt(-2), {{all_ones - 1, all_ones, all_ones, all_ones}}, "negative");

    expect_words(AddBigInt({{all_ones, all_ones, 5, 0}}, {{1, 0, 0, 0}}), {{0, 0, 6, 0}},
                 "carry into word 2");
    expect_words(AddBigInt({{all_ones, all_ones, all_ones, 1}}, {{all_ones, all_ones, all_ones, 1}}),
                 {{all_ones - 1, all_ones, all_ones, 3}}, "carry into and out of each word");
    expect_words(AddBigInt(toBigInt(-3), toBigInt(3)), {{0, 0, 0, 0}}, "wraps to zero");

    const BigInt positive = {{0x10, 0x20, 0x40, 0x8}};
    const BigInt negative = {{0, 0, 0, top_bit}};
    expect_words(ShiftRightBigInt(positive, 0), positive, "by 0");
    expect_words(ShiftRightBigInt(positive, 4), {{1, 2, 0x8000000000000004, 0}}, "by 4");
    expect_words(ShiftRightBigInt(positive, 64), {{0x20, 0x40, 0x8, 0}}, "by 64");
    expect_words(ShiftRightBigInt(positive, 127), {{0x80, 0x10, 0, 0}}, "by 127");
    expect_words(ShiftRightBigInt(negative, 1), {{0, 0, 0, top_bit | top_bit >> 1}}, "negative by 1");
    expect_words(ShiftRightBigInt(negative, 127), {{0, 0, all_ones, all_ones}}, "negative by 127");
    expect_words(ShiftRightBigInt(negative, 255), toBigInt(-1), "negative by 255");
}

} // namespace
