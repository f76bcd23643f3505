// Comparisons, maximum and minimum: all pairs of values in known order, and NaNs, zeros and flushed
// denormals.
#include "sve/fp/fp_compare.h"

#include "tests/unit/fp_operands.h"

#include <gtest/gtest.h>

namespace {

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

constexpr std::uint32_t FZ = FPSCR::FZ, FZ16 = FPSCR::FZ16, DN = FPSCR::DN;
constexpr int IOC = FPFlag_IOC, IDC = FPFlag_IDC;

int exceptions(const FPSCR& fpscr) { return static_cast<int>(fpscr.bits & 0x9F); }

// From the smallest to the largest; -0 and +0 are equal, but not to maximum and minimum.
template <class Bits> std::vector<Bits> ascending() {
    using Format = FPFormat<Bits>;
    const Bits magnitudes[] = {0,
                               1,
                               Format::fraction_mask,
                               Format::implicit_bit,
                               Format::power_of_two(0),
                               Bits(Format::power_of_two(0) + 1),
                               Format::power_of_two(1),
                               Format::largest_normal,
                               Format::infinity};
    std::vector<Bits> values;
    for (const Bits magnitude : magnitudes) {
        values.push_back(magnitude);
        values.insert(values.begin(), static_cast<Bits>(magnitude | Format::sign_bit));
    }
    return values;
}

template <class Bits> void check_order() {
    const std::vector<Bits> values = ascending<Bits>();
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            const Bits a = values[i], b = values[j];
            const bool zeros = ((a | b) & FPFormat<Bits>::magnitude_mask) == 0;
            const bool equal = i == j || zeros;
            FPSCR fpscr;
            EXPECT_EQ(FPCompareEQ(a, b, fpscr), equal) << std::hex << a << " " << b;
            EXPECT_EQ(FPCompareGE(a, b, fpscr), equal || i > j) << std::hex << a << " " << b;
            EXPECT_EQ(FPCompareGT(a, b, fpscr), !equal && i > j) << std::hex << a << " " << b;
            EXPECT_FALSE(FPCompareUN(a, b, fpscr));
            EXPECT_EQ(FPMax(a, b, fpscr), values[std::max(i, j)]) << std::hex << a << " " << b;
            EXPECT_EQ(FPMin(a, b, fpscr), values[std::min(i, j)]) << std::hex << a << " " << b;
            EXPECT_EQ(FPMaxNum(a, b, fpscr), values[std::max(i, j)]) << std::hex << a << " " << b;
            EXPECT_EQ(FPMinNum(a, b, fpscr), values[std::min(i, j)]) << std::hex << a << " " << b;
            if constexpr (sizeof(Bits) > 2) {
                EXPECT_EQ(FPCompare(a, b, true, fpscr), equal   ? 6
                                                        : i > j ? 2
                                                                : 8)
                    << std::hex << a << " " << b;
            }
            EXPECT_EQ(fpscr.bits, 0u);
        }
    }
}

TEST(FPCompare, Order) {
    check_order<half>();
    check_order<single>();
    check_order<double_bits>();
}

TEST(FPCompare, NaNs) {
    constexpr single quiet = 0x7FC00001, signalling = 0xFF800001, one = 0x3F800000;
    struct {
        single a, b;
        int quiet_compare, ordering_compare; // the exceptions
    } const cases[] = {{quiet, one, 0, IOC},          {one, quiet, 0, IOC},
                       {signalling, one, IOC, IOC},   {one, signalling, IOC, IOC},
                       {quiet, signalling, IOC, IOC}, {quiet, quiet, 0, IOC}};
    for (const auto& c : cases) {
        FPSCR equal, unordered, greater_equal, greater, nibble, signalling_nibble;
        EXPECT_FALSE(FPCompareEQ(c.a, c.b, equal));
        EXPECT_TRUE(FPCompareUN(c.a, c.b, unordered));
        EXPECT_FALSE(FPCompareGE(c.a, c.b, greater_equal));
        EXPECT_FALSE(FPCompareGT(c.a, c.b, greater));
        EXPECT_EQ(FPCompare(c.a, c.b, false, nibble), 3);
        EXPECT_EQ(FPCompare(c.a, c.b, true, signalling_nibble), 3);
        for (const FPSCR& fpscr : {equal, unordered, nibble})
            EXPECT_EQ(exceptions(fpscr), c.quiet_compare) << std::hex << c.a << " " << c.b;
        for (const FPSCR& fpscr : {greater_equal, greater, signalling_nibble})
            EXPECT_EQ(exceptions(fpscr), c.ordering_compare) << std::hex << c.a << " " << c.b;
    }
}

TEST(FPCompare, FlushedDenormals) {
    FPSCR single_flush{FZ};
    EXPECT_TRUE(FPCompareEQ<single>(1, 0x80000002, single_flush));
    EXPECT_EQ(exceptions(single_flush), IDC);
    FPSCR half_flush{FZ16};
    EXPECT_TRUE(FPCompareEQ<half>(1, 0x8002, half_flush));
    EXPECT_FALSE(FPCompareGT<half>(1, 0, half_flush));
    EXPECT_TRUE(FPCompareGE<half>(0, 1, half_flush));
    EXPECT_EQ(FPMax<half>(0x8001, 0xBC00, half_flush), 0x8000u);
    EXPECT_EQ(exceptions(half_flush), 0);
    FPSCR other_control{FZ};
    EXPECT_FALSE(FPCompareEQ<half>(1, 2, other_control));
    EXPECT_EQ(exceptions(other_control), 0);
    // A denormal is flushed although the other operand is a NaN.
    FPSCR with_nan{FZ};
    EXPECT_TRUE(FPCompareUN<double_bits>(1, 0x7FF8000000000000, with_nan));
    EXPECT_EQ(exceptions(with_nan), IDC);
}

TEST(FPCompare, MaximumAndMinimum) {
    struct {
        single (*kernel)(single, single, FPSCR&);
        std::uint32_t control;
        single a, b, result;
        int flags;
    } const cases[] = {
        {FPMaxNum, 0, 0x7FC00000, 0x3F800000, 0x3F800000, 0},
        {FPMaxNum, 0, 0x3F800000, 0x7FC00000, 0x3F800000, 0},
        {FPMaxNum, 0, 0x7FC00000, 0xFF800000, 0xFF800000, 0},
        {FPMinNum, DN, 0xFFC00001, 0x7F800000, 0x7F800000, 0},
        {FPMaxNum, 0, 0x7F800001, 0x3F800000, 0x7FC00001, IOC},
        {FPMaxNum, 0, 0x7FC00005, 0xFF800001, 0xFFC00001, IOC},
        {FPMinNum, 0, 0x7FC00005, 0xFFC00001, 0x7FC00005, 0},
        {FPMinNum, DN, 0x7FC00005, 0xFFC00001, 0x7FC00000, 0},
        {FPMaxNum, FZ, 0x7FC00000, 0x80000001, 0x80000000, IDC},
        {FPMax, 0, 0x7FC00005, 0x3F800000, 0x7FC00005, 0},
        {FPMin, FZ, 0x80000001, 0x3F800000, 0x80000000, IDC},
        {FPMin, FZ, 0x00000002, 0x80000001, 0x80000000, IDC},
        {FPMax, FZ, 0x80000002, 0x00000001, 0x00000000, IDC},
        {FPMax, FZ, 0x00000001, 0x7FC00001, 0x7FC00001, IDC},
    };
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ(c.kernel(c.a, c.b, fpscr), c.result) << std::hex << c.a << " " << c.b;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.a << " " << c.b;
    }
}

} // namespace
