// Fill and spill of whole registers.
#include "sve/handlers/fill_spill.h"

#include "tests/unit/memory_tools.h"

namespace {

constexpr int predicate_size = 16;
const int immediates[] = {-256, -255, -1, 0, 1, 2, 254, 255};

// Memory that ends exactly where a register of so many bytes ends that is addressed with the immediate from
// the base that `at` returns.
struct exact_memory {
    fenced_memory pages{1};
    int size;

    explicit exact_memory(int register_bytes) : size(register_bytes) { pages.fill(3); }
    std::uint8_t* place() const { return pages.end() - size; }
    std::uint64_t base(int immediate) const {
        return reinterpret_cast<std::uint64_t>(place()) - static_cast<std::uint64_t>(immediate * size);
    }
};

TEST(FillSpill, VectorRegister) {
    const exact_memory memory(vector_bytes);
    for (const int immediate : immediates) {
        for (const int rn : {4, 31}) {
            SCOPED_TRACE(testing::Message() << "immediate " << immediate << ", base " << rn);
            cpu_state state = random_state(static_cast<unsigned>(immediate + 300));
            state.x[rn] = memory.base(immediate);
            cpu_state expected = state;
            std::copy_n(memory.place(), vector_bytes, expected.z[31]);
            EXPECT_EQ(
                sve_ldr_zri(&state, z_operand(31, aarch64_z_reg::no_kind), base_register(rn), immediate),
                aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));

            std::vector<std::uint8_t> contents = memory.pages.contents();
            std::copy_n(state.z[7], vector_bytes, contents.end() - vector_bytes);
            EXPECT_EQ(sve_str_zri(&state, z_operand(7, aarch64_z_reg::no_kind), base_register(rn), immediate),
                      aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));
            EXPECT_TRUE(memory.pages.contents() == contents);
        }
    }
}

TEST(FillSpill, PredicateRegister) {
    const exact_memory memory(predicate_size);
    for (const int immediate : immediates) {
        for (const int rn : {4, 31}) {
            SCOPED_TRACE(testing::Message() << "immediate " << immediate << ", base " << rn);
            cpu_state state = random_state(static_cast<unsigned>(immediate + 300));
            state.x[rn] = memory.base(immediate);
            cpu_state expected = state;
            for (int k = 0; k < vector_bytes; ++k)
                expected.p[15][k] = memory.place()[k / 8] >> k % 8 & 1;
            EXPECT_EQ(sve_ldr_pri(&state, p_operand(15, aarch64_p_reg::plain), base_register(rn), immediate),
                      aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));

            // P3 is random: all bits but the lowest of each byte are to be ignored.
            std::vector<std::uint8_t> contents = memory.pages.contents();
            std::uint8_t* const packed = contents.data() + contents.size() - predicate_size;
            std::fill_n(packed, predicate_size, std::uint8_t{0});
            for (int k = 0; k < vector_bytes; ++k)
                packed[k / 8] = static_cast<std::uint8_t>(packed[k / 8] | (state.p[3][k] & 1) << k % 8);
            EXPECT_EQ(sve_str_pri(&state, p_operand(3, aarch64_p_reg::plain), base_register(rn), immediate),
                      aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));
            EXPECT_TRUE(memory.pages.contents() == contents);
        }
    }
}

TEST(FillSpill, PredicateBitsAreInTheirArchitecturalOrder) {
    std::uint8_t memory[predicate_size] = {0x05, 0x80};
    cpu_state state = random_state(1);
    state.x[0] = reinterpret_cast<std::uint64_t>(memory);
    sve_ldr_pri(&state, p_operand(2, aarch64_p_reg::plain), base_register(0), 0);
    for (int k = 0; k < vector_bytes; ++k)
        EXPECT_EQ(state.p[2][k], k == 0 || k == 2 || k == 15 ? 1 : 0) << "byte " << k;
    std::fill_n(memory, predicate_size, std::uint8_t{0xAA});
    sve_str_pri(&state, p_operand(2, aarch64_p_reg::plain), base_register(0), 0);
    for (int b = 0; b < predicate_size; ++b)
        EXPECT_EQ(memory[b], b == 0 ? 0x05 : b == 1 ? 0x80 : 0) << "byte " << b;
}

} // namespace
