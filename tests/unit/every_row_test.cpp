// What holds for every instruction that accesses no memory, whatever it computes; that is for the comparison
// with a processor. Under the sanitizers this is where the code of all of them runs.
#include "sve/decode/opcode_rows.h"
#include "tests/unit/state_tools.h"

namespace {

TEST(EveryRow, IsEmulatedAndLeavesPredicateBytesZeroOrOne) {
    std::mt19937 generator(1);
    int rows = 0;
    for (const auto family :
         {broadcast_rows(), element_counts_rows(), element_moves_rows(), first_fault_register_rows(),
          fp_arithmetic_rows(), fp_compares_rows(), fp_conversions_rows(), fp_multiply_add_rows(),
          fp_reductions_rows(), integer_arithmetic_rows(), integer_compares_rows(), integer_reductions_rows(),
          multiply_accumulate_rows(), permutes_rows(), predicate_generation_rows(), predicate_logic_rows(),
          shifts_rows(), unary_integer_rows()}) {
        for (const opcode_row& row : family) {
            SCOPED_TRACE(row.name);
            const bool is_compare = std::strstr(row.name, "Cmp") != nullptr;
            ++rows;
            const unsigned int key_bits = map_value(describe(row.map), -1);
            for (int round = 0; round < 20; ++round) {
                unsigned int word = map_value(describe(row.map), row.key) |
                                    (static_cast<unsigned int>(generator()) & ~key_bits);
                cpu_state state = random_state(generator());
                for (auto& predicate : state.p)
                    for (std::uint8_t& byte : predicate)
                        byte &= is_compare ? 0xFF : 1; // which makes all bytes of its result itself
                for (std::uint8_t& byte : state.ffr)
                    byte &= 1;
                state.fpcr &= 0x07C80000; // the modes that processors with SVE have
                state.pc = &word;
                ASSERT_EQ(row.stub(&state, word), aarch64_emulated);
                ASSERT_EQ(state.pc, &word);
                for (int i = 0; i < 16; ++i) {
                    const bool is_clean = !is_compare || i == static_cast<int>(word & 15);
                    ASSERT_TRUE(!is_clean || *std::max_element(state.p[i], state.p[i] + vector_bytes) <= 1)
                        << std::hex << word;
                }
            }
        }
    }
    EXPECT_GT(rows, 900);
}

} // namespace
