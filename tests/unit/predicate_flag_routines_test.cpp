// The four contracts of the library's flag routines, and the searches for active elements. The bits of an
// element's group but the lowest, which these read, are clear in every result that a processor shows.
#include "sve/library/predicate_flags.h"

#include "tests/unit/library_operands.h"

namespace {

constexpr std::uint32_t n = 8u << 28, z = 4u << 28, c = 2u << 28, v = 1u << 28;

using flag_routine = void (*)(const PredV&, const PredV&, int, CpuContext*);

std::uint32_t flags_after(flag_routine routine, const PredV& governing, const PredV& result, int element_bits,
                          CpuContext context) {
    routine(governing, result, element_bits, &context);
    return context.nzcv;
}

// Flags by a walk over the elements, as the routines' doc comments put it.
struct walked {
    bool any_active = false, any_true = false, first = false, last_is_false = true;
    int first_index = -1, last_index = -1;

    walked(const PredV& governing, const PredV& result, int element_bits, const CpuContext& context) {
        const int count = static_cast<int>(context.vl & 63) * 64 / element_bits, group = element_bits / 8;
        const auto bit = [](const PredV& p, int k) { return (p.words[k / 64] >> (k % 64) & 1) != 0; };
        for (int i = 0; i < count; ++i) {
            if (!bit(governing, i * group))
                continue;
            bool any_in_group = false;
            for (int k = 0; k < group; ++k)
                any_in_group = any_in_group || bit(result, i * group + k);
            if (!any_active) {
                first = bit(result, i * group);
                first_index = i;
            }
            any_active = true;
            any_true = any_true || any_in_group;
            last_is_false = !any_in_group;
            last_index = i;
        }
    }
};

std::uint32_t with(std::uint32_t flags, std::uint32_t flag, bool value) {
    return value ? flags | flag : flags & ~flag;
}

TEST(PredicateFlagRoutines, AgreeWithAWalkAtEveryLength) {
    for_random_operands([](const primitive_operands& values) {
        for (const int element_bits : {8, 16, 32, 64}) {
            SCOPED_TRACE(element_bits);
            const CpuContext& context = values.context;
            const walked found(values.pg, values.pn, element_bits, context);
            const std::uint32_t nc =
                with(with(context.nzcv, n, found.first), c, found.any_active ? found.last_is_false : true);
            const std::uint32_t nzc = with(nc, z, !found.any_true);
            const auto after = [&](flag_routine routine) {
                return flags_after(routine, values.pg, values.pn, element_bits, context);
            };
            EXPECT_EQ(after(PredSetNZC), nzc);
            EXPECT_EQ(after(PredSetNZCV), nzc & ~v);
            EXPECT_EQ(after(PredSetNCV), nc & ~v);
            EXPECT_EQ(after(PredSetNC), found.any_active ? nc : context.nzcv);

            CpuContext own = context;
            EXPECT_EQ(FindFirstActive(values.pg, element_bits, &own), found.first_index);
            EXPECT_EQ(FindLastActive(values.pg, element_bits, &own), found.last_index);
            if (element_bits == 8) {
                VecPTestPZ(values.pg, values.pn, &own);
                EXPECT_EQ(own.nzcv, nzc & ~v);
            }
        }
    });
}

TEST(PredicateFlagRoutines, SearchesForElementsOfNoSize) {
    const PredV full = {{~0ull, ~0ull, ~0ull, ~0ull}};
    CpuContext context = {};
    context.vl = 16;
    EXPECT_EQ(FindFirstActive(full, 0, &context), -1);
    EXPECT_EQ(FindLastActive(full, 0, &context), -1);
}

} // namespace
