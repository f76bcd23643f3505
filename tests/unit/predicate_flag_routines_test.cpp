// The four contracts of the library's flag routines, and the searches for active elements.
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

// What each routine writes of nzcv, from all flags clear, and what it keeps, from all bits set.
struct flag_case {
    const char* what;
    int element_bits;
    std::uint32_t vl;
    PredV governing, result;
    std::uint32_t written;    // N, Z and C as a full update gives them
    bool some_element_active; // else PredSetNC writes nothing
};
const flag_case flag_cases[] = {
    {"no elements", 8, 0, {{~0ull}}, {{~0ull}}, z | c, false},
    {"no elements, vl with stray upper bits", 8, 0xFC000000, {{~0ull}}, {{~0ull}}, z | c, false},
    {"no active element", 8, 16, {}, {{~0ull, ~0ull, ~0ull, ~0ull}}, z | c, false},
    {"active only above the length", 8, 1, {{0xFF00}}, {{~0ull}}, z | c, false},
    {"active only in upper bits of groups", 16, 16, {{0xAAAA}}, {{~0ull}}, z | c, false},
    {"active but false", 8, 16, {{~0ull, ~0ull}}, {}, z | c, true},
    {"true only where inactive", 32, 16, {{0x0100}}, {{0xF0FF}}, z | c, true},
    {"one active, true", 8, 16, {{0, 4}}, {{0, 4}}, n, true},
    {"first and last true", 8, 2, {{0xFFFF}}, {{0x8001}}, n, true},
    {"only the first true", 8, 2, {{0xFFFF}}, {{0x0001}}, n | c, true},
    {"only the last true", 8, 2, {{0xFFFF}}, {{0x8000}}, 0, true},
    {"only one between true", 8, 2, {{0xFFFF}}, {{0x0100}}, c, true},
    {"first active is not the first element", 8, 2, {{0x0FF0}}, {{0x0010}}, n | c, true},
    {"last active is not the last element", 8, 2, {{0x0FF0}}, {{0x0800}}, 0, true},
    {"first and last in different words", 8, 32, {{2, 0, 0, 1ull << 63}}, {{2, 0, 0, 1ull << 63}}, n, true},
    {"true in a word between", 8, 32, {{2, 0, 16, 1ull << 63}}, {{0, 0, 16}}, c, true},
    {"true beyond the last active", 8, 32, {{2, 0, 1}}, {{2, 0, 0, 1ull << 63}}, n | c, true},
    {"16 bits: group's upper bit alone in the first", 16, 16, {{5}}, {{2}}, c, true},
    {"16 bits: group's upper bit alone in the last", 16, 16, {{5}}, {{9}}, n, true},
    {"16 bits: one element, upper bit alone", 16, 16, {{1}}, {{2}}, 0, true},
    {"16 bits: upper bits of the inactive neighbour", 16, 16, {{4}}, {{3}}, z | c, true},
    {"32 bits: upper bits in each place", 32, 16, {{0x111}}, {{0x248}}, 0, true},
    {"32 bits: top bit of the last", 32, 16, {{0x110}}, {{0x810}}, n, true},
    {"32 bits: bit above the last group", 32, 16, {{0x11}}, {{0x101}}, n | c, true},
    {"64 bits: top bit of the last element", 64, 16, {{1, 1ull << 56}}, {{0, 1ull << 63}}, 0, true},
    {"64 bits: bit below the last group", 64, 16, {{1, 1ull << 56}}, {{1, 1ull << 55}}, n | c, true},
    {"64 bits: stray governing bits", 64, 16, {{0xFE01}}, {{0xFF00}}, z | c, true},
};

TEST(PredicateFlagRoutines, Contracts) {
    struct {
        const char* name;
        flag_routine routine;
        std::uint32_t replaced, cleared;
        bool always;
    } const routines[] = {{"PredSetNZCV", PredSetNZCV, n | z | c, v, true},
                          {"PredSetNZC", PredSetNZC, n | z | c, 0, true},
                          {"PredSetNCV", PredSetNCV, n | c, v, true},
                          {"PredSetNC", PredSetNC, n | c, 0, false}};
    for (const auto& contract : routines) {
        for (const flag_case& example : flag_cases) {
            for (const std::uint32_t before : {0u, ~0u, 0x5A5A5A5Au, 0xA5A5A5A5u}) {
                CpuContext context = {};
                context.nzcv = before;
                context.vl = example.vl;
                std::uint32_t expected = before;
                if (contract.always || example.some_element_active)
                    expected = (before & ~(contract.replaced | contract.cleared)) |
                               (example.written & contract.replaced);
                EXPECT_EQ(flags_after(contract.routine, example.governing, example.result,
                                      example.element_bits, context),
                          expected)
                    << contract.name << ": " << example.what << ", from " << std::hex << before;
            }
        }
    }
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

TEST(PredicateFlagRoutines, SearchesWithoutElements) {
    const PredV full = {{~0ull, ~0ull, ~0ull, ~0ull}};
    CpuContext context = {};
    context.vl = 16;
    EXPECT_EQ(FindFirstActive(full, 0, &context), -1);
    EXPECT_EQ(FindLastActive(full, 0, &context), -1);
    EXPECT_EQ(FindFirstActive({}, 8, &context), -1);
    EXPECT_EQ(FindLastActive({}, 8, &context), -1);
    EXPECT_EQ(FindLastActive(full, 8, &context), 127);
    context.vl = 0;
    EXPECT_EQ(FindFirstActive(full, 8, &context), -1);
    EXPECT_EQ(FindLastActive(full, 64, &context), -1);
}

} // namespace
