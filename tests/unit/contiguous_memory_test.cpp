// Contiguous loads and stores against a byte-by-byte definition, in memory that ends at unreadable pages.
#include "sve/handlers/contiguous_memory.h"

#include "tests/unit/memory_tools.h"

namespace {

struct contiguous_form {
    const char* name;
    contiguous_immediate_handler* immediate;
    contiguous_scaled_handler* scaled;
    transfer_kind kind;

    int row_in_memory() const { return kind.element_count() * kind.memory_bytes; }
};

const contiguous_form forms[] = {
    {"ld1b", sve_ld1b_zpri, sve_ld1b_scaled_zprr, {1, 1, false, false}},
    {"ld1b_h", sve_ld1b_h_zpri, sve_ld1b_h_scaled_zprr, {2, 1, false, false}},
    {"ld1b_s", sve_ld1b_s_zpri, sve_ld1b_s_scaled_zprr, {4, 1, false, false}},
    {"ld1b_d", sve_ld1b_d_zpri, sve_ld1b_d_scaled_zprr, {8, 1, false, false}},
    {"ld1sb_h", sve_ld1sb_h_zpri, sve_ld1sb_h_scaled_zprr, {2, 1, true, false}},
    {"ld1sb_s", sve_ld1sb_s_zpri, sve_ld1sb_s_scaled_zprr, {4, 1, true, false}},
    {"ld1sb_d", sve_ld1sb_d_zpri, sve_ld1sb_d_scaled_zprr, {8, 1, true, false}},
    {"ld1h", sve_ld1h_zpri, sve_ld1h_scaled_zprr, {2, 2, false, false}},
    {"ld1h_s", sve_ld1h_s_zpri, sve_ld1h_s_scaled_zprr, {4, 2, false, false}},
    {"ld1h_d", sve_ld1h_d_zpri, sve_ld1h_d_scaled_zprr, {8, 2, false, false}},
    {"ld1sh_s", sve_ld1sh_s_zpri, sve_ld1sh_s_scaled_zprr, {4, 2, true, false}},
    {"ld1sh_d", sve_ld1sh_d_zpri, sve_ld1sh_d_scaled_zprr, {8, 2, true, false}},
    {"ld1w", sve_ld1w_zpri, sve_ld1w_scaled_zprr, {4, 4, false, false}},
    {"ld1w_d", sve_ld1w_d_zpri, sve_ld1w_d_scaled_zprr, {8, 4, false, false}},
    {"ld1sw_d", sve_ld1sw_d_zpri, sve_ld1sw_d_scaled_zprr, {8, 4, true, false}},
    {"ld1d", sve_ld1d_zpri, sve_ld1d_scaled_zprr, {8, 8, false, false}},
    {"st1b", sve_st1b_zpri, sve_st1b_scaled_zprr, {1, 1, false, true}},
    {"st1b_h", sve_st1b_h_zpri, sve_st1b_h_scaled_zprr, {2, 1, false, true}},
    {"st1b_s", sve_st1b_s_zpri, sve_st1b_s_scaled_zprr, {4, 1, false, true}},
    {"st1b_d", sve_st1b_d_zpri, sve_st1b_d_scaled_zprr, {8, 1, false, true}},
    {"st1h", sve_st1h_zpri, sve_st1h_scaled_zprr, {2, 2, false, true}},
    {"st1h_s", sve_st1h_s_zpri, sve_st1h_s_scaled_zprr, {4, 2, false, true}},
    {"st1h_d", sve_st1h_d_zpri, sve_st1h_d_scaled_zprr, {8, 2, false, true}},
    {"st1w", sve_st1w_zpri, sve_st1w_scaled_zprr, {4, 4, false, true}},
    {"st1w_d", sve_st1w_d_zpri, sve_st1w_d_scaled_zprr, {8, 4, false, true}},
    {"st1d", sve_st1d_zpri, sve_st1d_scaled_zprr, {8, 8, false, true}},
};

// Executes the form with registers and addressing drawn from the seed, in such a way that its address is as
// given, and compares state and memory with the definition.
void check(const contiguous_form& form, predicate_shape shape, std::uint8_t* start, fenced_memory& memory,
           const cpu_state& random, unsigned seed) {
    std::mt19937_64 generator(seed);
    const auto address = reinterpret_cast<std::uint64_t>(start);
    const int zt = static_cast<int>(generator() % 32);
    const int pg = static_cast<int>(generator() % 8);
    const int rn = generator() % 4 == 0 ? 31 : static_cast<int>(generator() % 31);
    const int rm = generator() % 4 == 0 ? 31 : (rn + 1) % 31;
    const int imm4 = static_cast<int>(generator() % 16) - 8;
    const bool scaled = generator() % 2;

    cpu_state state = random;
    set_predicate_of_size(form.kind.element_bytes, state.p[pg], shape, seed);
    if (!scaled)
        state.x[rn] = address - static_cast<std::uint64_t>(imm4 * form.row_in_memory());
    else if (rm == 31)
        state.x[rn] = address;
    else
        state.x[rn] = address - state.x[rm] * static_cast<std::uint64_t>(form.kind.memory_bytes);

    std::vector<transfer> transfers;
    for (int i = 0; i < form.kind.element_count(); ++i)
        transfers.push_back({zt, i, address + static_cast<std::uint64_t>(i * form.kind.memory_bytes)});
    expect_transfers(form.kind, transfers, pg, state, memory, [&](cpu_state* actual) {
        return scaled ? form.scaled(actual, data_register(zt), governing_register(pg), base_register(rn),
                                    i_operand(rm))
                      : form.immediate(actual, data_register(zt), governing_register(pg), base_register(rn),
                                       imm4);
    });
}

// Every form at every distance from a boundary of memory of so many pages.
template <class Boundary> void check_around(std::size_t pages, Boundary boundary) {
    fenced_memory memory(pages);
    const cpu_state random = random_state(7);
    unsigned seed = 0;
    for (const contiguous_form& form : forms) {
        for (int distance = -9; distance <= form.row_in_memory() + 1; ++distance) {
            for (const predicate_shape shape : predicate_shapes) {
                SCOPED_TRACE(testing::Message()
                             << form.name << ", " << distance << " bytes before the boundary, shape "
                             << static_cast<int>(shape) << ", seed " << seed);
                memory.fill(distance % 16 == 0 ? seed : 1);
                check(form, shape, boundary(memory) - distance, memory, random, seed++);
                if (testing::Test::HasFailure())
                    return;
            }
        }
    }
}

TEST(ContiguousMemory, AcrossAPageBoundary) {
    check_around(2, [](const fenced_memory& memory) { return memory.middle(); });
}

TEST(ContiguousMemory, OverTheStartOfMemory) {
    check_around(1, [](const fenced_memory& memory) { return memory.begin(); });
}

TEST(ContiguousMemory, OverTheEndOfMemory) {
    check_around(1, [](const fenced_memory& memory) { return memory.end(); });
}

TEST(ContiguousMemory, ImmediateCountsVectorsOfMemory) {
    const struct {
        contiguous_immediate_handler* handler;
        int imm4;
        int displacement;
    } cases[] = {{sve_ld1b_d_zpri, 1, 16},  {sve_ld1b_d_zpri, -8, -128}, {sve_ld1b_zpri, -1, -128},
                 {sve_ld1sb_h_zpri, 1, 64}, {sve_ld1w_zpri, 7, 896},     {sve_ld1w_d_zpri, 1, 64},
                 {sve_ld1sh_d_zpri, 2, 64}, {sve_ld1d_zpri, -8, -1024},  {sve_ld1h_s_zpri, -3, -192}};
    std::vector<std::uint8_t> memory(4096);
    for (const auto& [handler, imm4, displacement] : cases) {
        cpu_state state = random_state(1);
        set_predicate<std::uint8_t>(state.p[0], predicate_shape::all_true, 0);
        state.x[5] = reinterpret_cast<std::uint64_t>(memory.data()) + 2048;
        std::fill(memory.begin(), memory.end(), std::uint8_t{0});
        memory[static_cast<std::size_t>(2048 + displacement)] = 42;
        handler(&state, data_register(3), p_operand(0, aarch64_p_reg::zeroing), {5, 3}, imm4);
        EXPECT_EQ(state.z[3][0], 42) << "displacement " << displacement;
    }
}

TEST(ContiguousMemory, Extension) {
    const std::uint8_t memory[64] = {0x80, 0xFF, 0x7F, 0x01, 0x80};
    cpu_state state = random_state(2);
    set_predicate<std::uint8_t>(state.p[0], predicate_shape::all_true, 0);
    state.x[0] = reinterpret_cast<std::uint64_t>(memory);
    const aarch64_p_reg pg = p_operand(0, aarch64_p_reg::zeroing);
    sve_ld1sb_h_zpri(&state, data_register(0), pg, {0, 3}, 0);
    EXPECT_EQ(element<std::uint16_t>(state.z[0], 0), 0xFF80);
    EXPECT_EQ(element<std::uint16_t>(state.z[0], 2), 0x007F);
    sve_ld1b_h_zpri(&state, data_register(0), pg, {0, 3}, 0);
    EXPECT_EQ(element<std::uint16_t>(state.z[0], 0), 0x0080);
    sve_ld1sh_d_zpri(&state, data_register(0), pg, {0, 3}, 0);
    EXPECT_EQ(element<std::uint64_t>(state.z[0], 0), 0xFFFFFFFFFFFFFF80);
    EXPECT_EQ(element<std::uint64_t>(state.z[0], 1), 0x017Fu);
    sve_ld1sw_d_zpri(&state, data_register(0), pg, {0, 3}, 0);
    EXPECT_EQ(element<std::uint64_t>(state.z[0], 0), 0x017FFF80u);
}

TEST(ContiguousMemory, NothingActiveAccessesNothingWhateverTheAddress) {
    for (const std::uint64_t base : {std::uint64_t{0}, std::uint64_t{1} << 63, ~std::uint64_t{0} - 3}) {
        for (const contiguous_form& form : forms) {
            cpu_state state = random_state(3);
            set_predicate_of_size(form.kind.element_bytes, state.p[2], predicate_shape::all_false, 4);
            state.x[9] = base;
            cpu_state expected = state;
            if (!form.kind.is_store)
                std::fill_n(expected.z[30], vector_bytes, std::uint8_t{0});
            EXPECT_FALSE(faults([&] {
                form.immediate(&state, data_register(30), p_operand(2, aarch64_p_reg::zeroing), {9, 3}, 0);
            })) << form.name;
            EXPECT_TRUE(same_state(state, expected)) << form.name;
        }
    }
}

} // namespace
