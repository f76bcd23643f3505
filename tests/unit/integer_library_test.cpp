// Integer primitives of the library at vector lengths other than the machine's own: one of each shape,
// against arithmetic in host integers.
#include "sve/library/dot_products.h"
#include "sve/library/element_counts.h"
#include "sve/library/integer_arithmetic.h"
#include "sve/library/integer_reductions.h"
#include "sve/library/predicate_counts.h"
#include "sve/library/saturating_arithmetic.h"
#include "sve/library/shifts.h"
#include "sve/library/unary_integer.h"

#include "tests/unit/library_operands.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

// The result of the primitive, and what is expected of each element, given zn[i], zm[i] and whether i is
// active.
template <class Element, class Primitive, class Expected>
void check(const char* name, Primitive primitive, Expected expected) {
    SCOPED_TRACE(name);
    for_random_operands([&](primitive_operands& values) {
        const auto zn = elements_of<Element>(values.zn, values.context);
        const auto zm = elements_of<Element>(values.zm, values.context);
        const auto pg = bits_of(values.pg, values.context);
        std::vector<Element> elements;
        for (std::size_t i = 0; i < zn.size(); ++i)
            elements.push_back(static_cast<Element>(expected(zn[i], zm[i], active_at<Element>(pg, i))));
        EXPECT_EQ(elements_of<Element>(primitive(values), values.context), elements);
    });
}

TEST(IntegerLibrary, Merging) {
    check<std::uint16_t>(
        "subr", [](primitive_operands& v) { return VecU16SubRVVM(v.zn, v.pg, v.zm, &v.context); },
        [](int a, int b, bool active) { return active ? b - a : a; });
    check<std::int8_t>(
        "sabd", [](primitive_operands& v) { return VecS8AbdVVM(v.zn, v.pg, v.zm, &v.context); },
        [](int a, int b, bool active) { return active ? std::abs(a - b) : a; });
    check<std::uint32_t>(
        "umulh", [](primitive_operands& v) { return VecU32MulHVVM(v.zn, v.pg, v.zm, &v.context); },
        [](std::uint64_t a, std::uint64_t b, bool active) { return active ? a * b >> 32 : a; });
    check<std::uint64_t>(
        "revb", [](primitive_operands& v) { return VecU64Rev1V(v.zn, v.pg, v.zm, &v.context); },
        [](std::uint64_t a, std::uint64_t b, bool active) { return active ? __builtin_bswap64(b) : a; });
    check<std::uint32_t>(
        "lsr by the width", [](primitive_operands& v) { return VecU32ShrVIM(v.zn, v.pg, 32, &v.context); },
        [](std::uint32_t a, std::uint32_t, bool active) { return active ? 0 : a; });
    check<std::int16_t>(
        "asrd", [](primitive_operands& v) { return VecS16ShrDVIM(v.zn, v.pg, 3, &v.context); },
        [](int a, int, bool active) { return active ? a / 8 : a; });
    check<std::int8_t>(
        "asrr", [](primitive_operands& v) { return VecS8ShrRVVM(v.zn, v.pg, v.zm, &v.context); },
        [](int count, int a, bool active) { return active ? a >> std::min(count & 0xFF, 7) : count; });
}

TEST(IntegerLibrary, Plain) {
    check<std::uint8_t>(
        "uqadd", [](primitive_operands& v) { return VecU8QAddVVX(v.zn, v.zm, &v.context); },
        [](int a, int b, bool) { return std::min(255, a + b); });
    check<std::int16_t>(
        "sqsub", [](primitive_operands& v) { return VecS16QSubVVX(v.zn, v.zm, &v.context); },
        [](int a, int b, bool) { return std::clamp(a - b, -32768, 32767); });
    // The immediate is not negative even where it has the sign bit of the element.
    check<std::int8_t>(
        "sqsub 200", [](primitive_operands& v) { return VecS8QSubVIX(v.zn, 200, &v.context); },
        [](int a, int, bool) { return std::max(-128, a - 200); });
    check<std::int16_t>(
        "smax -5", [](primitive_operands& v) { return VecS16MaxVIX(v.zn, -5, &v.context); },
        [](int a, int, bool) { return std::max(a, -5); });
    check<std::uint8_t>(
        "subr 3", [](primitive_operands& v) { return VecU8SubRVIX(v.zn, 3, &v.context); },
        [](int a, int, bool) { return 3 - a; });
}

// Each byte is shifted by the doubleword that it stands in.
TEST(IntegerLibrary, WideShifts) {
    for (const std::uint64_t count :
         {std::uint64_t{0}, std::uint64_t{5}, std::uint64_t{8}, std::uint64_t{1} << 40}) {
        for_random_operands([&](primitive_operands& values) {
            const auto counts_of = [&](std::size_t lane) { return lane % 3 == 0 ? count : lane % 3; };
            for (std::size_t lane = 0; lane < 32; ++lane) {
                const std::uint64_t lane_count = counts_of(lane);
                std::memcpy(values.zm.bytes + 8 * lane, &lane_count, sizeof lane_count);
            }
            const auto zn = elements_of<std::int8_t>(values.zn, values.context);
            std::vector<std::int8_t> right, left;
            for (std::size_t i = 0; i < zn.size(); ++i) {
                const auto by = static_cast<int>(std::min<std::uint64_t>(counts_of(i / 8), 8));
                right.push_back(static_cast<std::int8_t>(zn[i] >> by));
                left.push_back(static_cast<std::int8_t>(zn[i] << by));
            }
            EXPECT_EQ(
                elements_of<std::int8_t>(VecS8ShrVWX(values.zn, values.zm, &values.context), values.context),
                right);
            EXPECT_EQ(
                elements_of<std::int8_t>(VecU8ShlVWX(values.zn, values.zm, &values.context), values.context),
                left);
        });
    }
}

template <class Element, class Narrow>
void check_dot_products(dot_primitive* dot, indexed_dot_primitive* indexed_dot) {
    for_random_operands([&](primitive_operands& values) {
        const VecV zda = values.zm; // sums into one of its factors
        const auto sums = elements_of<Element>(zda, values.context);
        const auto zn = elements_of<Narrow>(values.zn, values.context);
        const auto zm = elements_of<Narrow>(values.zm, values.context);
        const auto sum_of = [&](std::size_t i, std::size_t group) {
            auto sum = static_cast<std::uint64_t>(sums[i]);
            for (std::size_t j = 0; j < 4; ++j)
                sum += static_cast<std::uint64_t>(std::int64_t{zn[4 * i + j]} * zm[4 * group + j]);
            return static_cast<Element>(sum);
        };
        std::vector<Element> expected;
        for (std::size_t i = 0; i < sums.size(); ++i)
            expected.push_back(sum_of(i, i));
        EXPECT_EQ(elements_of<Element>(dot(zda, values.zn, values.zm, &values.context), values.context),
                  expected);

        const std::size_t per_segment = 16 / sizeof(Element);
        const std::size_t index = values.seed % per_segment;
        const std::size_t whole_segments = sums.size() / per_segment * per_segment; // what an index can reach
        auto by_index = elements_of<Element>(
            indexed_dot(zda, values.zn, values.zm, static_cast<int>(index), &values.context), values.context);
        by_index.resize(whole_segments);
        expected.clear();
        for (std::size_t i = 0; i < whole_segments; ++i)
            expected.push_back(sum_of(i, i - i % per_segment + index));
        EXPECT_EQ(by_index, expected);
    });
}

TEST(IntegerLibrary, DotProducts) {
    check_dot_products<std::int32_t, std::int8_t>(VecS32DotVVVX, VecS32DotVVVIX);
    check_dot_products<std::int64_t, std::int16_t>(VecS64DotVVVX, VecS64DotVVVIX);
    check_dot_products<std::uint32_t, std::uint8_t>(VecU32DotVVVX, VecU32DotVVVIX);
    check_dot_products<std::uint64_t, std::uint16_t>(VecU64DotVVVX, VecU64DotVVVIX);
}

template <class Element> void check_reduction(decltype(&VecS8AddReduceV) reduce) {
    for_random_operands([&](primitive_operands& values) {
        const auto zn = elements_of<Element>(values.zn, values.context);
        const auto pg = bits_of(values.pg, values.context);
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < zn.size(); ++i)
            sum += active_at<Element>(pg, i) ? zn[i] : 0;
        EXPECT_EQ(reduce(values.pg, values.zn, &values.context), static_cast<std::uint64_t>(sum));
    });
}

TEST(IntegerLibrary, Reductions) {
    check_reduction<std::int8_t>(VecS8AddReduceV);
    check_reduction<std::int16_t>(VecS16AddReduceV);
    check_reduction<std::int32_t>(VecS32AddReduceV);
}

template <class Element> int active_elements(const primitive_operands& values) {
    const auto bits = bits_of(values.pg, values.context);
    int count = 0;
    for (std::size_t i = 0; i < bits.size() / sizeof(Element); ++i)
        count += active_at<Element>(bits, i);
    return count;
}

// Bits of the predicate above the length, and bits of a group but the lowest, are not counted.
TEST(IntegerLibrary, PredicateCounts) {
    for_random_operands([](primitive_operands& values) {
        CpuContext* context = &values.context;
        const PredV& pg = values.pg;
        const int bytes = active_elements<std::uint8_t>(values),
                  halfwords = active_elements<std::uint16_t>(values),
                  words = active_elements<std::uint32_t>(values),
                  doublewords = active_elements<std::uint64_t>(values);
        EXPECT_EQ(VecU8DecrSCountPS(1000, pg, context), static_cast<std::uint64_t>(1000 - bytes));
        EXPECT_EQ(VecU16DecrSCountPS(0, pg, context), static_cast<std::uint64_t>(-halfwords)); // wraps
        EXPECT_EQ(VecU32DecrSCountPS(1000, pg, context), static_cast<std::uint64_t>(1000 - words));
        EXPECT_EQ(VecU64DecrSCountPS(1000, pg, context), static_cast<std::uint64_t>(1000 - doublewords));
        // The upper half of the operand is not read; the count may be 0, and then the operand is in range.
        EXPECT_EQ(VecS8QIncrSCount4PS(0x123456787FFFFFF0, pg, context), 0x7FFFFFF0 + std::min(bytes, 15));
        EXPECT_EQ(VecS16QDecrSCount4PS(0x0000000080000008, pg, context),
                  std::numeric_limits<std::int32_t>::min() + 8 - std::min(halfwords, 8));
        EXPECT_EQ(VecU32QDecrSCount4PS(0x1234567800000005, pg, context),
                  5u - std::min(static_cast<unsigned>(words), 5u));
        EXPECT_EQ(VecU64QIncrSCount8PS(0xFFFFFFFFFFFFFFFB, pg, context),
                  0xFFFFFFFFFFFFFFFB + static_cast<unsigned>(std::min(doublewords, 4)));

        std::vector<std::uint16_t> increased;
        for (const std::uint16_t element : elements_of<std::uint16_t>(values.zn, *context))
            increased.push_back(static_cast<std::uint16_t>(element + halfwords));
        EXPECT_EQ(elements_of<std::uint16_t>(VecU16IncrCountPV(values.zn, pg, context), *context), increased);
        std::vector<std::uint64_t> decreased;
        for (const std::uint64_t element : elements_of<std::uint64_t>(values.zn, *context))
            decreased.push_back(element - std::min(element, static_cast<std::uint64_t>(doublewords)));
        EXPECT_EQ(elements_of<std::uint64_t>(VecU64QDecrCountPV(values.zn, pg, context), *context),
                  decreased);
    });
}

TEST(IntegerLibrary, CountsByPattern) {
    for_random_operands([](primitive_operands& values) {
        CpuContext* context = &values.context;
        const int length = static_cast<int>(values.context.vl & 63);
        const int halfwords = (4 * length) & ~3; // MUL4
        const auto zn = elements_of<std::int16_t>(values.zn, *context);
        std::vector<std::int16_t> increased, decreased;
        for (const int element : zn) {
            increased.push_back(static_cast<std::int16_t>(std::min(element + 16 * halfwords, 32767)));
            decreased.push_back(static_cast<std::int16_t>(std::max(element - 16 * halfwords, -32768)));
        }
        EXPECT_EQ(elements_of<std::int16_t>(VecS16QIncrVLVI(values.zn, 29, 15, context), *context),
                  increased);
        EXPECT_EQ(elements_of<std::int16_t>(VecS16QDecrVLVI(values.zn, 29, 15, context), *context),
                  decreased);
        EXPECT_EQ(VecS16QIncrVL4SI(0xFFFFFFFF, 29, 0, context), halfwords - 1);
        EXPECT_EQ(VecU16QDecrVL8SI(100, 29, 0, context),
                  static_cast<std::uint64_t>(std::max(0, 100 - halfwords)));
    });
}

} // namespace
