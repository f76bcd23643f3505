// Predicate-making primitives of the library at vector lengths other than the machine's own, element by
// element. The flag routine that they share has its own test; here each is asked for the right one of its
// arguments.
#include "sve/library/first_fault_register.h"
#include "sve/library/integer_compares.h"
#include "sve/library/predicate_flags.h"
#include "sve/library/predicate_generation.h"
#include "sve/library/predicate_logic.h"
#include "sve/library/predicate_patterns.h"

#include "tests/unit/library_operands.h"

#include <functional>

namespace {

PredV packed(const std::vector<bool>& bits) {
    PredV result = {};
    for (std::size_t k = 0; k < bits.size(); ++k)
        result.words[k / 64] |= std::uint64_t{bits[k]} << (k % 64);
    return result;
}

const PredV all_true = {{~0ull, ~0ull, ~0ull, ~0ull}};

// Calls the primitive, and expects these bits of its result, and the flags of that result under the governing
// predicate, or the flags as they were if there is none.
template <class Call>
void expect_result(const std::vector<bool>& expected, const PredV* governing, int element_bits,
                   const CpuContext& before, Call call) {
    CpuContext context = before, flags = before;
    EXPECT_EQ(bits_of(call(&context), before), expected);
    if (governing != nullptr)
        PredSetNZCV(*governing, packed(expected), element_bits, &flags);
    EXPECT_EQ(context.nzcv, flags.nzcv);
}

template <class Element> std::size_t count_of(const CpuContext& context) {
    return (context.vl & 63) * std::size_t{8} / sizeof(Element);
}

// Predicate bits with the lowest bit of each element's group given.
template <class Element, class Test> std::vector<bool> lanes_where(const CpuContext& context, Test test) {
    std::vector<bool> result((context.vl & 63) * std::size_t{8});
    for (std::size_t i = 0; i < count_of<Element>(context); ++i)
        result[i * sizeof(Element)] = test(i);
    return result;
}

template <class Element>
void check_immediate(compare_immediate_primitive<Element>* primitive,
                     std::function<bool(Element, Element)> test) {
    for_random_operands([&](const primitive_operands& values) {
        const auto zn = elements_of<Element>(values.zn, values.context);
        const auto pg = bits_of(values.pg, values.context);
        const auto immediate = static_cast<Element>(values.seed % 5 - 2);
        const auto expected = lanes_where<Element>(values.context, [&](std::size_t i) {
            return active_at<Element>(pg, i) && test(zn[i], immediate);
        });
        expect_result(expected, &values.pg, 8 * sizeof(Element), values.context, [&](CpuContext* context) {
            return primitive(values.pg, values.zn, immediate, context);
        });
    });
}

template <class Element>
void check_wide(compare_wide_primitive* primitive, std::function<bool(__int128_t, __int128_t)> test) {
    using Wide = std::conditional_t<std::is_signed_v<Element>, std::int64_t, std::uint64_t>;
    for_random_operands([&](primitive_operands values) {
        const auto zn = elements_of<Element>(values.zn, values.context);
        const auto pg = bits_of(values.pg, values.context);
        // Half of the wide elements get the value of one of the elements that they meet.
        for (std::size_t i = 0; i < zn.size(); i += 16 / sizeof(Element))
            set_element(values.zm, static_cast<int>(i * sizeof(Element) / 8), Wide{zn[i + values.seed % 2]});
        const auto zm = elements_of<Wide>(values.zm, values.context);
        const auto expected = lanes_where<Element>(values.context, [&](std::size_t i) {
            return active_at<Element>(pg, i) && test(zn[i], zm[i * sizeof(Element) / 8]);
        });
        expect_result(expected, &values.pg, 8 * sizeof(Element), values.context, [&](CpuContext* context) {
            return primitive(values.pg, values.zn, values.zm, context);
        });
    });
}

TEST(LibraryCompares, Immediates) {
    check_immediate<std::int8_t>(VecS8CmpFlgGEVIZ, std::greater_equal<>());
    check_immediate<std::int64_t>(VecS64CmpFlgGEVIZ, std::greater_equal<>());
    check_immediate<std::uint16_t>(VecU16CmpFlgGEVIZ, std::greater_equal<>());
    check_immediate<std::uint32_t>(VecU32CmpFlgLEVIZ, std::less_equal<>());
    check_immediate<std::uint64_t>(VecU64CmpFlgLEVIZ, std::less_equal<>());
}

TEST(LibraryCompares, WideElements) {
    check_wide<std::int8_t>(VecS8CmpFlgEQVWZ, std::equal_to<>());
    check_wide<std::int16_t>(VecS16CmpFlgNEVWZ, std::not_equal_to<>());
    check_wide<std::int32_t>(VecS32CmpFlgGTVWZ, std::greater<>());
    check_wide<std::uint8_t>(VecU8CmpFlgLTVWZ, std::less<>());
    check_wide<std::uint16_t>(VecU16CmpFlgGEVWZ, std::greater_equal<>());
    check_wide<std::uint32_t>(VecU32CmpFlgLEVWZ, std::less_equal<>());
}

TEST(LibraryPredicateLogic, EveryOperation) {
    struct {
        predicate_logic_primitive* primitive;
        unsigned truth; // bit 2 * n + m
        bool sets_flags;
    } const cases[] = {
        {VecPNandPPZ, 0b0111, false},  {VecPOrNPPZ, 0b1101, false},    {VecPAndFlgPPZ, 0b1000, true},
        {VecPBicFlgPPZ, 0b0100, true}, {VecPXorFlgPPZ, 0b0110, true},  {VecPOrFlgPPZ, 0b1110, true},
        {VecPNorFlgPPZ, 0b0001, true}, {VecPNandFlgPPZ, 0b0111, true}, {VecPOrNFlgPPZ, 0b1101, true}};
    for (const auto& operation : cases) {
        SCOPED_TRACE(operation.truth);
        for_random_operands([&](const primitive_operands& values) {
            const auto pg = bits_of(values.pg, values.context), pn = bits_of(values.pn, values.context),
                       pm = bits_of(values.pm, values.context);
            const auto expected = lanes_where<std::uint8_t>(values.context, [&](std::size_t i) {
                return pg[i] && (operation.truth >> (2 * pn[i] + pm[i]) & 1);
            });
            expect_result(expected, operation.sets_flags ? &values.pg : nullptr, 8, values.context,
                          [&](CpuContext* context) {
                              return operation.primitive(values.pg, values.pn, values.pm, context);
                          });
        });
    }
}

TEST(LibraryFirstFaultRegister, ReadUnderAPredicate) {
    for_random_operands([&](const primitive_operands& values) {
        const auto pg = bits_of(values.pg, values.context), ffr = bits_of(values.context.ffr, values.context);
        const auto expected =
            lanes_where<std::uint8_t>(values.context, [&](std::size_t i) { return pg[i] && ffr[i]; });
        expect_result(expected, &values.pg, 8, values.context,
                      [&](CpuContext* context) { return VecPActualFlgP(values.pg, context); });
    });
}

template <class Element, class Register> void check_while(while_primitive<Register>* primitive) {
    constexpr Register least = std::numeric_limits<Register>::min(),
                       most = std::numeric_limits<Register>::max();
    struct {
        Register counter, limit;
    } const cases[] = {{0, 0},           {0, -1},
                       {1, 0},           {0, 1},
                       {-3, 4},          {0, 126},
                       {0, 127},         {0, 128},
                       {0, 1000},        {most - 3, most - 1},
                       {most - 3, most}, {most, most},
                       {most, most - 1}, {least, most - 1},
                       {least, least},   {least, least + 9},
                       {-1, most - 1},   {least, most}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.counter << " to " << c.limit);
        for (const std::uint32_t length : some_vector_lengths) {
            SCOPED_TRACE(length);
            CpuContext context = {};
            context.vl = length;
            context.nzcv = length % 2 ? 0xFFFFFFFF : 0;
            const auto expected = lanes_where<Element>(context, [&](std::size_t i) {
                return c.limit == most || __int128_t{c.counter} + static_cast<__int128_t>(i) <= c.limit;
            });
            expect_result(expected, &all_true, 8 * sizeof(Element), context,
                          [&](CpuContext* own) { return primitive(c.counter, c.limit, own); });
        }
    }
}

TEST(LibraryPredicateGeneration, WhileLessOrEqual) {
    check_while<std::int8_t, std::int32_t>(VecS8While4LESS);
    check_while<std::int16_t, std::int32_t>(VecS16While4LESS);
    check_while<std::int32_t, std::int32_t>(VecS32While4LESS);
    check_while<std::int64_t, std::int32_t>(VecS64While4LESS);
    check_while<std::int8_t, std::int64_t>(VecS8While8LESS);
    check_while<std::int16_t, std::int64_t>(VecS16While8LESS);
    check_while<std::int32_t, std::int64_t>(VecS32While8LESS);
    check_while<std::int64_t, std::int64_t>(VecS64While8LESS);
}

template <class Element> void check_true(true_primitive* primitive) {
    for (const std::uint32_t length : some_vector_lengths) {
        for (unsigned long pattern = 0; pattern < 32; ++pattern) {
            SCOPED_TRACE(testing::Message() << "length " << length << ", pattern " << pattern);
            CpuContext context = {};
            context.vl = length;
            context.nzcv = pattern % 2 ? 0xFFFFFFFF : 0;
            const int leading = VecTrueILength(pattern, static_cast<int>(count_of<Element>(context)));
            const auto expected =
                lanes_where<Element>(context, [&](std::size_t i) { return static_cast<int>(i) < leading; });
            const PredV governing = packed(expected);
            expect_result(expected, &governing, 8 * sizeof(Element), context,
                          [&](CpuContext* own) { return primitive(pattern, own); });
        }
    }
}

TEST(LibraryPredicateGeneration, PatternsWithFlags) {
    check_true<std::uint8_t>(VecP8TrueFlgI);
    check_true<std::uint16_t>(VecP16TrueFlgI);
    check_true<std::uint32_t>(VecP32TrueFlgI);
    check_true<std::uint64_t>(VecP64TrueFlgI);
}

TEST(LibraryPredicateGeneration, FirstActiveAndBreaks) {
    for_random_operands([&](const primitive_operands& values) {
        const CpuContext& before = values.context;
        const auto pg = bits_of(values.pg, before), pn = bits_of(values.pn, before),
                   pm = bits_of(values.pm, before);

        std::vector<bool> with_first = pn, after(pg.size()), up_to(pg.size()), propagated(pg.size());
        bool seen = false, going_on = true, last_of_pn = false;
        for (std::size_t i = 0; i < pg.size(); ++i) {
            if (!pg[i])
                continue;
            if (!seen)
                with_first[i] = seen = true;
            up_to[i] = going_on;
            going_on = going_on && !pn[i];
            after[i] = going_on;
            last_of_pn = pn[i];
        }
        going_on = last_of_pn;
        for (std::size_t i = 0; i < pg.size(); ++i) {
            propagated[i] = pg[i] && going_on;
            going_on = going_on && !(pg[i] && pm[i]);
        }
        const auto expect = [&](const std::vector<bool>& expected, const PredV* governing, auto call) {
            expect_result(expected, governing, 8, before, call);
        };
        expect(with_first, &values.pg,
               [&](CpuContext* own) { return VecPSetFirstActiveP(values.pn, values.pg, own); });
        expect(up_to, &values.pg,
               [&](CpuContext* own) { return VecPBreakAFlgPZ(values.pg, values.pn, own); });
        expect(after, &values.pg,
               [&](CpuContext* own) { return VecPBreakBFlgPZ(values.pg, values.pn, own); });
        expect(propagated, nullptr,
               [&](CpuContext* own) { return VecPBreakPrevAPZ(values.pg, values.pn, values.pm, own); });
        expect(propagated, &values.pg,
               [&](CpuContext* own) { return VecPBreakPrevAFlgPZ(values.pg, values.pn, values.pm, own); });
    });
}

TEST(LibraryPredicateGeneration, Terminations) {
    struct {
        std::uint64_t n, m;
        bool equal_words, equal_doublewords;
    } const operands[] = {{5, 5, true, true}, {5, 6, false, false}, {5, 0x100000005, true, false}};
    for (std::uint32_t nzcv = 0; nzcv < 16; ++nzcv) {
        for (const auto& o : operands) {
            const auto flags = [&](auto primitive) {
                CpuContext context = {};
                context.nzcv = nzcv << 28 | 0x0ABCDEF1;
                primitive(o.n, o.m, &context);
                return context.nzcv;
            };
            const auto expected = [&](bool terminated) {
                const bool carry = nzcv & 2;
                return (terminated ? 8u : !carry) << 28 | (nzcv & 6) << 28 | 0x0ABCDEF1u;
            };
            EXPECT_EQ(flags(VecU32CTermEQ), expected(o.equal_words));
            EXPECT_EQ(flags(VecU32CTermNE), expected(!o.equal_words));
            EXPECT_EQ(flags(VecU64CTermEQ), expected(o.equal_doublewords));
            EXPECT_EQ(flags(VecU64CTermNE), expected(!o.equal_doublewords));
        }
    }
}

template <class Element>
void check_predicate_permutes(predicate_permute_primitive* even, predicate_permute_primitive* odd,
                              predicate_permute_primitive* unzip) {
    for_random_operands([&](const primitive_operands& values) {
        const CpuContext& before = values.context;
        const auto pn = bits_of(values.pn, before), pm = bits_of(values.pm, before);
        const std::size_t pairs = count_of<Element>(before) / 2, width = sizeof(Element);
        std::vector<bool> transposed_even(pn.size()), transposed_odd(pn.size()), unzipped(pn.size());
        const auto move = [&](std::vector<bool>& result, std::size_t to, const std::vector<bool>& source,
                              std::size_t from) {
            for (std::size_t k = 0; k < width; ++k) // the whole group
                result[to * width + k] = source[from * width + k];
        };
        for (std::size_t k = 0; k < pairs; ++k) {
            move(transposed_even, 2 * k, pn, 2 * k);
            move(transposed_even, 2 * k + 1, pm, 2 * k);
            move(transposed_odd, 2 * k, pn, 2 * k + 1);
            move(transposed_odd, 2 * k + 1, pm, 2 * k + 1);
            move(unzipped, k, pn, 2 * k + 1);
            move(unzipped, pairs + k, pm, 2 * k + 1);
        }
        const auto expect = [&](const std::vector<bool>& expected, predicate_permute_primitive* primitive) {
            expect_result(expected, nullptr, 8, before,
                          [&](CpuContext* own) { return primitive(values.pn, values.pm, own); });
        };
        expect(transposed_even, even);
        expect(transposed_odd, odd);
        expect(unzipped, unzip);
    });
}

TEST(LibraryPredicateGeneration, Permutes) {
    check_predicate_permutes<std::uint8_t>(VecP8Trn1PP, VecP8Trn2PP, VecP8Uzp2PP);
    check_predicate_permutes<std::uint16_t>(VecP16Trn1PP, VecP16Trn2PP, VecP16Uzp2PP);
    check_predicate_permutes<std::uint32_t>(VecP32Trn1PP, VecP32Trn2PP, VecP32Uzp2PP);
    check_predicate_permutes<std::uint64_t>(VecP64Trn1PP, VecP64Trn2PP, VecP64Uzp2PP);
}

} // namespace
