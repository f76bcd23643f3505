#include "sve/handlers/predicate_permutes.h"

#include "tests/unit/state_tools.h"

namespace {

TEST(PredicatePermutes, ReverseMovesWholeLanes) {
    for (int code = byte_elements; code <= doubleword_elements; ++code) {
        for (const int pd : {3, 4}) {
            cpu_state state = random_state(static_cast<unsigned>(code));
            cpu_state expected = state;
            const int size = 1 << code;
            for (int k = 0; k < vector_bytes; ++k)
                expected.p[pd][k] = state.p[3][vector_bytes - size - k / size * size + k % size];
            EXPECT_EQ(sve_rev_pp(&state, p_operand(pd, code), p_operand(3, code)), aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected)) << "size code " << code << ", into p" << pd;
        }
    }
}

TEST(PredicatePermutes, UnpackSpreadsHalfOfTheBits) {
    for (const int pd : {3, 4}) {
        for (const bool high : {false, true}) {
            cpu_state state = random_state(5);
            cpu_state expected = state;
            for (int i = 0; i < 64; ++i) {
                expected.p[pd][2 * i] = state.p[3][high ? 64 + i : i] & 1;
                expected.p[pd][2 * i + 1] = 0;
            }
            const aarch64_p_reg destination = p_operand(pd, halfword_elements);
            const aarch64_p_reg source = p_operand(3, byte_elements);
            EXPECT_EQ(high ? sve_punpkhi_pp(&state, destination, source)
                           : sve_punpklo_pp(&state, destination, source),
                      aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected)) << "into p" << pd << ", high " << high;
        }
    }
}

} // namespace
