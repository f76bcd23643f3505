#include "sve/handlers/predicate_generation.h"

#include "tests/unit/state_tools.h"

#include <vector>

namespace {

using while_handler = aarch64_decode_rc(cpu_state*, aarch64_p_reg, aarch64_i_reg, aarch64_i_reg);

constexpr std::uint64_t all_flags = 0xF0000000;

// Makes a predicate row by element size and a list of elements.
void set_elements(std::uint8_t* predicate, int code, const std::vector<bool>& elements) {
    std::fill_n(predicate, vector_bytes, std::uint8_t{0});
    for (std::size_t i = 0; i < elements.size(); ++i)
        predicate[i << code] = elements[i];
}

// Element by element: true while the wrapped sum of counter and index compares so to the limit.
template <class Register, class Compare>
std::vector<bool> define(std::uint64_t rn, std::uint64_t rm, int elements, Compare compare) {
    std::vector<bool> result;
    bool running = true;
    for (int i = 0; i < elements; ++i) {
        const auto sum = static_cast<Register>(rn + static_cast<std::uint64_t>(i));
        running = running && compare(sum, static_cast<Register>(rm));
        result.push_back(running);
    }
    return result;
}

template <class Register, class Compare>
void check_while(while_handler* handler, int width_kind, std::uint64_t rn, std::uint64_t rm,
                 Compare compare) {
    for (int code = byte_elements; code <= doubleword_elements; ++code) {
        cpu_state state = random_state(static_cast<unsigned>(code));
        state.x[3] = rn;
        state.x[4] = rm;
        const std::vector<bool> elements = define<Register>(rn, rm, vector_bytes >> code, compare);
        const bool any = std::find(elements.begin(), elements.end(), true) != elements.end();
        cpu_state expected = state;
        set_elements(expected.p[11], code, elements);
        expected.nzcv &= ~all_flags;
        expected.nzcv |= std::uint64_t{elements.front()} << 31;
        expected.nzcv |= std::uint64_t{!any} << 30;
        expected.nzcv |= std::uint64_t{!elements.back()} << 29;
        EXPECT_EQ(handler(&state, p_operand(11, code), i_operand(3, width_kind), i_operand(4, width_kind)),
                  aarch64_emulated);
        ASSERT_TRUE(same_state(state, expected)) << "size code " << code << ", width " << width_kind
                                                 << std::hex << ", counter 0x" << rn << ", limit 0x" << rm;
    }
}

// Counters and limits around all the places where a comparison or a sum turns over.
template <class Check> void for_each_counter_and_limit(Check check) {
    const std::uint64_t anchors[] = {0,
                                     0x40,
                                     0x7FFFFFFF,
                                     0x80000000,
                                     0xFFFFFFFF,
                                     0x100000000,
                                     0x7FFFFFFFFFFFFFFF,
                                     0x8000000000000000,
                                     ~0ull,
                                     0xABCDEF01FFFFFFF0,
                                     0x123456787FFFFFC0};
    for (const std::uint64_t anchor : anchors) {
        for (const int offset : {-130, -17, -1, 0, 1, 5}) {
            const std::uint64_t counter = anchor + static_cast<std::uint64_t>(offset);
            for (const int distance :
                 {-200, -1, 0, 1, 2, 15, 16, 17, 31, 32, 63, 64, 65, 127, 128, 129, 1000})
                check(counter, counter + static_cast<std::uint64_t>(distance));
            for (const std::uint64_t limit : anchors)
                check(counter, limit);
        }
    }
}

TEST(While, UnsignedLess) {
    for_each_counter_and_limit([](std::uint64_t rn, std::uint64_t rm) {
        check_while<std::uint32_t>(sve_whilelo_prr, 2, rn, rm, std::less<>());
        check_while<std::uint64_t>(sve_whilelo_prr, 3, rn, rm, std::less<>());
    });
}

TEST(While, UnsignedLessOrEqual) {
    for_each_counter_and_limit([](std::uint64_t rn, std::uint64_t rm) {
        check_while<std::uint32_t>(sve_whilels_prr, 2, rn, rm, std::less_equal<>());
        check_while<std::uint64_t>(sve_whilels_prr, 3, rn, rm, std::less_equal<>());
    });
}

TEST(While, SignedLess) {
    for_each_counter_and_limit([](std::uint64_t rn, std::uint64_t rm) {
        check_while<std::int32_t>(sve_whilelt_prr, 2, rn, rm, std::less<>());
        check_while<std::int64_t>(sve_whilelt_prr, 3, rn, rm, std::less<>());
    });
}

TEST(While, ByHand) {
    const struct {
        while_handler* handler;
        int code, width;
        std::uint64_t rn, rm;
        int count;
        std::uint64_t nzcv; // bits 31 to 28
    } cases[] = {
        {sve_whilelo_prr, 2, 3, 9, 9, 0, 6},
        {sve_whilelt_prr, 2, 3, 0, 32, 32, 8},
        {sve_whilelt_prr, 2, 3, 0, 1, 1, 10},
        {sve_whilelt_prr, 0, 3, ~0ull, 126, 127, 10},
        {sve_whilelt_prr, 3, 2, 0x7FFFFFFE, 0x7FFFFFFF, 1, 10},
        {sve_whilels_prr, 1, 2, 0xFFFFFFFF, 0xFFFFFFFF, 64, 8},
        {sve_whilels_prr, 1, 3, 0xFFFFFFFF, 0xFFFFFFFF, 1, 10},
        {sve_whilels_prr, 0, 3, 5, 4, 0, 6},
        {sve_whilelo_prr, 3, 2, 0xFFFFFFFE, 0xFFFFFFFF, 1, 10},
    };
    for (const auto& c : cases) {
        cpu_state state = random_state(1);
        state.x[1] = c.rn;
        state.x[2] = c.rm;
        cpu_state expected = state;
        expected.nzcv = (state.nzcv & ~all_flags) | c.nzcv << 28;
        set_elements(expected.p[0], c.code, std::vector<bool>(static_cast<std::size_t>(c.count), true));
        c.handler(&state, p_operand(0, c.code), i_operand(1, c.width), i_operand(2, c.width));
        EXPECT_TRUE(same_state(state, expected)) << c.count;
    }
}

TEST(While, RegisterThirtyOneIsZero) {
    cpu_state state = random_state(1);
    state.x[31] = 100;
    state.x[1] = 3;
    cpu_state expected = state;
    expected.nzcv = (state.nzcv & ~all_flags) | 10ull << 28;
    set_elements(expected.p[5], 2, {true, true, true});
    sve_whilelo_prr(&state, p_operand(5, 2), i_operand(31), i_operand(1));
    EXPECT_TRUE(same_state(state, expected));

    expected.nzcv = (state.nzcv & ~all_flags) | 6ull << 28;
    set_elements(expected.p[5], 2, {});
    sve_whilelo_prr(&state, p_operand(5, 2), i_operand(1), i_operand(31));
    EXPECT_TRUE(same_state(state, expected));
}

TEST(PredicateTrue, EveryPatternAndSize) {
    // Counts for 128, 64, 32 and 16 elements; patterns that are not listed give none.
    const struct {
        int pattern;
        int counts[4];
    } patterns[] = {
        {0, {128, 64, 32, 16}}, {1, {1, 1, 1, 1}},       {2, {2, 2, 2, 2}},       {3, {3, 3, 3, 3}},
        {4, {4, 4, 4, 4}},      {5, {5, 5, 5, 5}},       {6, {6, 6, 6, 6}},       {7, {7, 7, 7, 7}},
        {8, {8, 8, 8, 8}},      {9, {16, 16, 16, 16}},   {10, {32, 32, 32, 0}},   {11, {64, 64, 0, 0}},
        {12, {128, 0, 0, 0}},   {29, {128, 64, 32, 16}}, {30, {126, 63, 30, 15}}, {31, {128, 64, 32, 16}},
    };
    for (int pattern = 0; pattern < 32; ++pattern) {
        const auto* row = std::find_if(std::begin(patterns), std::end(patterns),
                                       [&](const auto& candidate) { return candidate.pattern == pattern; });
        for (int code = byte_elements; code <= doubleword_elements; ++code) {
            const int count = row == std::end(patterns) ? 0 : row->counts[code];
            cpu_state state = random_state(static_cast<unsigned>(pattern));
            cpu_state expected = state;
            set_elements(expected.p[7], code, std::vector<bool>(static_cast<std::size_t>(count), true));
            EXPECT_EQ(sve_ptrue_pi(&state, p_operand(7, code), pattern), aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected)) << "pattern " << pattern << ", size code " << code;
        }
    }
}

TEST(PredicateFalse, ClearsEveryByte) {
    cpu_state state = random_state(3);
    cpu_state expected = state;
    set_elements(expected.p[15], 0, {});
    EXPECT_EQ(sve_pfalse_p(&state, p_operand(15, byte_elements)), aarch64_emulated);
    EXPECT_TRUE(same_state(state, expected));
}

} // namespace
