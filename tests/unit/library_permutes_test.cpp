// What moves elements between places, or makes them from the vector length itself, in the library at lengths
// other than the machine's own.
#include "sve/library/element_counts.h"
#include "sve/library/element_moves.h"
#include "sve/library/permutes.h"
#include "sve/library/predicate_flags.h"
#include "sve/library/predicate_generation.h"
#include "sve/library/predicate_patterns.h"

#include "tests/unit/library_operands.h"

#include <algorithm>
#include <limits>

namespace {

// Expects these elements, and no more: what the definition leaves open is not compared.
template <class Element>
void expect_elements(const VecV& result, const std::vector<Element>& expected, const CpuContext& context) {
    std::vector<Element> actual = elements_of<Element>(result, context);
    ASSERT_LE(expected.size(), actual.size());
    actual.resize(expected.size());
    EXPECT_EQ(actual, expected);
}

template <class Element>
void check_moves(splice_primitive* splice, last_primitive<Element>* after_last,
                 conditional_last_primitive<Element>* conditional_after,
                 conditional_vector_primitive* vector_after, insert_primitive<Element>* insert,
                 compress_primitive* compress = nullptr) {
    for_random_operands([&](primitive_operands& values) {
        CpuContext* context = &values.context;
        const auto zn = elements_of<Element>(values.zn, *context),
                   zm = elements_of<Element>(values.zm, *context);
        const auto pg = bits_of(values.pg, *context);
        const auto scalar = static_cast<Element>(values.seed);

        std::vector<Element> spliced, between, active, inserted = {scalar};
        std::size_t last = zn.size();
        for (std::size_t i = 0; i < zn.size(); ++i) {
            const bool is_active = active_at<Element>(pg, i);
            if (is_active || !between.empty())
                between.push_back(zn[i]);
            if (is_active) {
                spliced = between;
                active.push_back(zn[i]);
                last = i;
            }
        }
        spliced.insert(spliced.end(), zm.begin(), zm.end());
        inserted.insert(inserted.end(), zn.begin(), zn.end());
        for (std::vector<Element>* expected : {&spliced, &active, &inserted})
            expected->resize(zn.size());
        expect_elements(splice(values.pg, values.zn, values.zm, context), spliced, *context);
        expect_elements(insert(values.zn, scalar, context), inserted, *context);
        if (compress != nullptr)
            expect_elements(compress(values.pg, values.zn, context), active, *context);

        const bool none = last == zm.size();
        const Element following = zm.empty() ? Element{0} : zm[none ? 0 : (last + 1) % zm.size()];
        EXPECT_EQ(conditional_after(values.pg, scalar, values.zm, context), none ? scalar : following);
        expect_elements(vector_after(values.pg, values.zn, values.zm, context),
                        none ? zn : std::vector<Element>(zn.size(), following), *context);
        if (!zm.empty()) { // else there is no element that LASTA could take
            EXPECT_EQ(after_last(values.pg, values.zm, context), following);
        }
    });
}

TEST(LibraryPermutes, Moves) {
    check_moves<std::uint8_t>(VecU8SpliceVV, VecU8LastAV, VecB8CondXASV, VecU8VCondXAVV, VecB8InsertS);
    check_moves<std::uint16_t>(VecU16SpliceVV, VecH16LastAV, VecU16CondXASV, VecU16VCondXAVV, VecU16InsertS);
    check_moves<std::uint32_t>(VecU32SpliceVV, VecU32LastAV, VecF32CondXASV, VecU32VCondXAVV, VecF32InsertS,
                               VecU32CompressVV);
    check_moves<std::uint64_t>(VecU64SpliceVV, VecD64LastAV, VecU64CondXASV, VecU64VCondXAVV, VecU64InsertS,
                               VecU64CompressVV);
}

TEST(LibraryPermutes, Unpacks) {
    for_random_operands([&](primitive_operands& values) {
        const auto source = elements_of<std::int16_t>(values.zn, values.context);
        const auto middle = source.begin() + static_cast<std::ptrdiff_t>(source.size() / 2);
        expect_elements(VecS32UnpackLoV(values.zn, &values.context),
                        std::vector<std::int32_t>(source.begin(), middle), values.context);
        expect_elements(VecS32UnpackHiV(values.zn, &values.context),
                        std::vector<std::int32_t>(middle, source.end()), values.context);
    });
}

template <class Element> void check_odd_elements(predicate_permute_primitive* unzip) {
    for_random_operands([&](primitive_operands& values) {
        const auto pn = bits_of(values.pn, values.context), pm = bits_of(values.pm, values.context);
        const std::size_t width = sizeof(Element), half = pn.size() / width / 2 * width;
        std::vector<bool> expected(pn.size());
        for (std::size_t bit = 0; bit < half; ++bit) { // whole groups
            const std::size_t from = bit / width * 2 * width + width + bit % width;
            expected[bit] = pn[from];
            expected[half + bit] = pm[from];
        }
        EXPECT_EQ(bits_of(unzip(values.pn, values.pm, &values.context), values.context), expected);
    });
}

TEST(LibraryPermutes, OddElementsOfPredicates) {
    check_odd_elements<std::uint8_t>(VecP8Uzp2PP);
    check_odd_elements<std::uint16_t>(VecP16Uzp2PP);
    check_odd_elements<std::uint32_t>(VecP32Uzp2PP);
    check_odd_elements<std::uint64_t>(VecP64Uzp2PP);
}

// Expects that so many leading elements are true, and flags as those of that result under a predicate that is
// true everywhere, or where the result is.
template <class Element, class Make>
void expect_leading(int leading, bool all_govern, CpuContext context, Make make) {
    CpuContext flags = context;
    const PredV result = make(&context), all = {{~0ull, ~0ull, ~0ull, ~0ull}};
    std::vector<bool> expected((flags.vl & 63) * std::size_t{8});
    for (std::size_t i = 0; i < static_cast<std::size_t>(leading); ++i)
        expected[i * sizeof(Element)] = true;
    EXPECT_EQ(bits_of(result, flags), expected);
    PredSetNZCV(all_govern ? all : result, result, 8 * sizeof(Element), &flags);
    EXPECT_EQ(context.nzcv, flags.nzcv);
}

template <class Element, class Register>
void check_leading(while_primitive<Register>* primitive, true_primitive* by_pattern) {
    constexpr Register least = std::numeric_limits<Register>::min(),
                       most = std::numeric_limits<Register>::max();
    struct {
        Register counter, limit;
    } const cases[] = {{0, -1},      {0, 0},           {-3, 4},       {0, 127},           {0, 1000},
                       {most, most}, {most - 3, most}, {least, most}, {least, least + 9}, {most, most - 1}};
    for (const std::uint32_t length : some_vector_lengths) {
        const int count = static_cast<int>(length * 8 / sizeof(Element));
        CpuContext context = {};
        context.vl = length | (length % 2 ? 0xFC000000 : 0); // which don't count
        context.nzcv = length % 2 ? 0xFFFFFFFF : 0;
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << c.counter << " to " << c.limit << ", length " << length);
            // No element is beyond the greatest limit.
            const __int128_t steps = c.limit == most ? count : __int128_t{c.limit} - c.counter + 1;
            const auto leading = c.counter > c.limit ? 0 : std::min<__int128_t>(steps, count);
            expect_leading<Element>(static_cast<int>(leading), true, context,
                                    [&](CpuContext* own) { return primitive(c.counter, c.limit, own); });
        }
        for (unsigned long pattern = 0; pattern < 32; ++pattern) {
            SCOPED_TRACE(testing::Message() << "pattern " << pattern << ", length " << length);
            const int leading = std::min(VecTrueILength(pattern, count), count);
            expect_leading<Element>(leading, false, context,
                                    [&](CpuContext* own) { return by_pattern(pattern, own); });
        }
    }
}

TEST(LibraryPredicates, LeadingElements) {
    check_leading<std::int8_t, std::int32_t>(VecS8While4LESS, VecP8TrueFlgI);
    check_leading<std::int16_t, std::int64_t>(VecS16While8LESS, VecP16TrueFlgI);
    check_leading<std::int32_t, std::int32_t>(VecS32While4LESS, VecP32TrueFlgI);
    check_leading<std::int64_t, std::int64_t>(VecS64While8LESS, VecP64TrueFlgI);
}

TEST(LibraryPredicates, PatternsOfAnyElementCount) {
    struct {
        unsigned long pattern;
        int elements, length;
    } const cases[] = {
        {0, 0, 1},     {0, 1, 1},      {0, 2, 2},    {0, 3, 2},    {0, 24, 16},         {0, 255, 128},
        {0, 256, 256}, {1, 0, 0},      {1, 1, 1},    {7, 6, 0},    {7, 7, 7},           {8, 7, 0},
        {8, 9, 8},     {9, 15, 0},     {9, 16, 16},  {10, 31, 0},  {11, 64, 64},        {12, 127, 0},
        {13, 255, 0},  {13, 256, 256}, {14, 256, 0}, {28, 256, 0}, {29, 0, 0},          {29, 3, 0},
        {29, 6, 4},    {29, 256, 256}, {30, 2, 0},   {30, 8, 6},   {30, 256, 255},      {31, 0, 0},
        {31, 6, 6},    {31, 7, 6},     {32, 256, 0}, {63, 256, 0}, {1ul << 32, 256, 0}, {~0ul, 256, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(VecTrueILength(c.pattern, c.elements), c.length)
            << "pattern " << c.pattern << ", " << c.elements << " elements";
}

TEST(LibraryCounts, ByPattern) {
    for_random_operands([](primitive_operands& values) {
        CpuContext* context = &values.context;
        const int length = static_cast<int>(values.context.vl & 63);
        const int halfwords = (4 * length) & ~3; // MUL4
        std::vector<std::int16_t> increased, decreased;
        for (const int element : elements_of<std::int16_t>(values.zn, *context)) {
            increased.push_back(static_cast<std::int16_t>(std::min(element + 16 * halfwords, 32767)));
            decreased.push_back(static_cast<std::int16_t>(std::max(element - 16 * halfwords, -32768)));
        }
        expect_elements(VecS16QIncrVLVI(values.zn, 29, 15, context), increased, *context);
        expect_elements(VecS16QDecrVLVI(values.zn, 29, 15, context), decreased, *context);
        EXPECT_EQ(VecS16QIncrVL4SI(0xFFFFFFFF, 29, 0, context), halfwords - 1);
        EXPECT_EQ(VecU16QDecrVL8SI(100, 29, 0, context),
                  static_cast<std::uint64_t>(std::max(0, 100 - halfwords)));
        EXPECT_EQ(VecU32CountVLSI(7, 2, context), length >= 4 ? 21u : 0u);
        EXPECT_EQ(VecU64CountVLSI(30, 1, context), static_cast<unsigned long>(length / 3 * 6));
    });
}

} // namespace
