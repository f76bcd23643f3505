// Breaks and PNEXT against definitions that walk the predicate byte by byte.
#include "sve/handlers/predicate_partition.h"

#include "tests/unit/state_tools.h"

#include <array>

namespace {

using predicate_row = std::array<std::uint8_t, vector_bytes>;

constexpr std::uint64_t all_flags = 0xF0000000;

predicate_row row_of(const cpu_state& state, int p) {
    predicate_row row;
    std::copy_n(state.p[p], vector_bytes, row.begin());
    return row;
}

bool bit(const predicate_row& row, int k) { return row[static_cast<std::size_t>(k)] & 1; }

// N, Z, C and V of a result: first, none and last of the elements of `size` bytes that are active.
std::uint64_t flags_of(const predicate_row& governing, const predicate_row& result, int size) {
    std::uint64_t flags = 6;
    bool seen = false;
    for (int k = 0; k < vector_bytes; k += size) {
        if (!bit(governing, k))
            continue;
        if (!seen && bit(result, k))
            flags |= 8;
        seen = true;
        if (bit(result, k))
            flags &= ~4u;
        flags = bit(result, k) ? flags & ~2u : flags | 2u;
    }
    return flags << 28;
}

predicate_row define_break(const predicate_row& pd, const predicate_row& pg, const predicate_row& pn,
                           bool after, bool merging) {
    predicate_row result{};
    bool running = true;
    for (std::size_t k = 0; k < vector_bytes; ++k) {
        if (!(pg[k] & 1)) {
            result[k] = merging ? pd[k] : 0;
            continue;
        }
        const bool before = running;
        running = running && !(pn[k] & 1);
        result[k] = after ? before : running;
    }
    return result;
}

// pn's byte at pg's last active byte, 0 if there is none.
int last_active_byte(const predicate_row& pg, const predicate_row& pn) {
    int value = 0;
    for (std::size_t k = 0; k < vector_bytes; ++k)
        value = pg[k] & 1 ? pn[k] : value;
    return value;
}

// Calls `check` with states whose predicate registers 0 to 3 have all sorts of shapes at the size of Element,
// and with all choices of four operands among three of them, so that they coincide in every way.
template <class Element, class Check> void for_each_state(Check check) {
    unsigned seed = 0;
    for (const predicate_shape first : predicate_shapes) {
        for (const predicate_shape second : predicate_shapes) {
            for (int choice = 0; choice < 81; ++choice) {
                cpu_state state = random_state(11);
                state.nzcv ^= std::uint64_t{seed} << 28;
                set_predicate<Element>(state.p[0], first, ++seed);
                set_predicate<Element>(state.p[1], second, ++seed);
                set_predicate<Element>(state.p[2], predicate_shapes[choice % 6], ++seed);
                check(state, choice % 3, choice / 3 % 3, choice / 9 % 3, choice / 27);
                if (testing::Test::HasFailure())
                    return;
            }
        }
    }
}

void set_result(cpu_state& state, int p, const predicate_row& result) {
    std::copy(result.begin(), result.end(), state.p[p]);
}

aarch64_p_reg byte_row(int p) { return p_operand(p, byte_elements); }

TEST(PredicatePartition, BreakAfterAndBefore) {
    for_each_state<std::uint8_t>([](const cpu_state& before, int pd, int pg, int pn, int) {
        for (const bool after : {false, true}) {
            for (const bool merging : {false, true}) {
                cpu_state state = before, expected = before;
                set_result(
                    expected, pd,
                    define_break(row_of(before, pd), row_of(before, pg), row_of(before, pn), after, merging));
                const int kind = merging ? aarch64_p_reg::merging : aarch64_p_reg::zeroing;
                (after ? sve_brka_ppp : sve_brkb_ppp)(&state, byte_row(pd), p_operand(pg, kind),
                                                      byte_row(pn));
                EXPECT_TRUE(same_state(state, expected))
                    << (after ? "brka " : "brkb ") << pd << pg << pn << merging;
            }
        }
    });
}

TEST(PredicatePartition, BreakNext) {
    for_each_state<std::uint8_t>([](const cpu_state& before, int pdm, int pg, int pn, int flags) {
        cpu_state state = before, expected = before;
        if (last_active_byte(row_of(before, pg), row_of(before, pn)) == 0)
            set_result(expected, pdm, {});
        predicate_row all;
        all.fill(1);
        if (flags)
            expected.nzcv = (before.nzcv & ~all_flags) | flags_of(all, row_of(expected, pdm), 1);
        const aarch64_p_reg governing = p_operand(pg, aarch64_p_reg::zeroing);
        (flags ? sve_brkns_ppp : sve_brkn_ppp)(&state, p_destructive(pdm, byte_elements), governing,
                                               byte_row(pn));
        EXPECT_TRUE(same_state(state, expected)) << "brkn " << pdm << pg << pn << flags;
    });
}

// The byte that decides is taken whole: 2 is no active element, but it is not zero.
TEST(PredicatePartition, BreakNextTakesTheWholeByte) {
    cpu_state state = random_state(1);
    std::fill_n(state.p[1], vector_bytes, std::uint8_t{1});
    std::fill_n(state.p[2], vector_bytes, std::uint8_t{0});
    state.p[2][vector_bytes - 1] = 2;
    cpu_state expected = state;
    sve_brkn_ppp(&state, p_destructive(0, byte_elements), byte_row(1), byte_row(2));
    EXPECT_TRUE(same_state(state, expected));
    state.p[2][vector_bytes - 1] = 0;
    sve_brkn_ppp(&state, p_destructive(0, byte_elements), byte_row(1), byte_row(2));
    EXPECT_EQ(std::count(state.p[0], state.p[0] + vector_bytes, 0), vector_bytes);
}

TEST(PredicatePartition, BreakPreviousBefore) {
    for_each_state<std::uint8_t>([](const cpu_state& before, int pd, int pg, int pn, int pm) {
        for (const bool flags : {false, true}) {
            cpu_state state = before, expected = before;
            const predicate_row governing = row_of(before, pg);
            predicate_row result{};
            if (last_active_byte(governing, row_of(before, pn)) != 0)
                result = define_break({}, governing, row_of(before, pm), false, false);
            set_result(expected, pd, result);
            if (flags)
                expected.nzcv = (before.nzcv & ~all_flags) | flags_of(governing, result, 1);
            (flags ? sve_brkpbs_pppp : sve_brkpb_pppp)(
                &state, byte_row(pd), p_operand(pg, aarch64_p_reg::zeroing), byte_row(pn), byte_row(pm));
            EXPECT_TRUE(same_state(state, expected)) << "brkpb " << pd << pg << pn << pm << flags;
        }
    });
}

template <class Element> class PredicateNext : public testing::Test {};
using element_types = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(PredicateNext, element_types);

TYPED_TEST(PredicateNext, FromEveryElement) {
    constexpr int size = sizeof(TypeParam);
    constexpr int code = size_code_of<TypeParam>;
    const auto check = [](const cpu_state& before, int pdn, int pg) {
        const predicate_row old = row_of(before, pdn);
        const predicate_row governing = row_of(before, pg);
        int start = 0;
        for (int k = 0; k < vector_bytes; k += size)
            start = bit(old, k) ? k + size : start;
        predicate_row result{};
        for (int k = start; k < vector_bytes; k += size) {
            if (bit(governing, k)) {
                result[static_cast<std::size_t>(k)] = 1;
                break;
            }
        }
        cpu_state state = before, expected = before;
        set_result(expected, pdn, result);
        expected.nzcv = (before.nzcv & ~all_flags) | flags_of(governing, result, size);
        sve_pnext_pp(&state, p_destructive(pdn, code), p_operand(pg, aarch64_p_reg::plain));
        EXPECT_TRUE(same_state(state, expected)) << "pnext " << pdn << pg << " start " << start;
    };
    for_each_state<TypeParam>(
        [&](const cpu_state& before, int pdn, int pg, int, int) { check(before, pdn, pg); });
    for (int from = 0; from < vector_bytes / size; ++from) {
        for (const predicate_shape governing : predicate_shapes) {
            cpu_state state = random_state(static_cast<unsigned>(from));
            set_predicate<TypeParam>(state.p[4], predicate_shape::all_false, 1);
            set_active<TypeParam>(state.p[4], from, true);
            set_predicate<TypeParam>(state.p[5], governing, static_cast<unsigned>(from));
            check(state, 4, 5);
        }
    }
}

} // namespace
