// Replicating loads against an element-by-element definition, in memory that ends at unreadable pages.
#include "sve/handlers/replicating_memory.h"

#include "tests/unit/memory_tools.h"

namespace {

const struct replicating_form {
    const char* name;
    replicating_handler* handler;
    transfer_kind kind;
} forms[] = {
    {"ld1rb", sve_ld1rb_zpri, {1, 1, false, false}},
    {"ld1rb_h", sve_ld1rb_h_zpri, {2, 1, false, false}},
    {"ld1rb_s", sve_ld1rb_s_zpri, {4, 1, false, false}},
    {"ld1rb_d", sve_ld1rb_d_zpri, {8, 1, false, false}},
    {"ld1rsb_h", sve_ld1rsb_h_zpri, {2, 1, true, false}},
    {"ld1rsb_s", sve_ld1rsb_s_zpri, {4, 1, true, false}},
    {"ld1rsb_d", sve_ld1rsb_d_zpri, {8, 1, true, false}},
    {"ld1rh", sve_ld1rh_zpri, {2, 2, false, false}},
    {"ld1rh_s", sve_ld1rh_s_zpri, {4, 2, false, false}},
    {"ld1rh_d", sve_ld1rh_d_zpri, {8, 2, false, false}},
    {"ld1rsh_s", sve_ld1rsh_s_zpri, {4, 2, true, false}},
    {"ld1rsh_d", sve_ld1rsh_d_zpri, {8, 2, true, false}},
    {"ld1rw", sve_ld1rw_zpri, {4, 4, false, false}},
    {"ld1rw_d", sve_ld1rw_d_zpri, {8, 4, false, false}},
    {"ld1rsw_d", sve_ld1rsw_d_zpri, {8, 4, true, false}},
    {"ld1rd", sve_ld1rd_zpri, {8, 8, false, false}},
};

TEST(ReplicatingMemory, WithinAndAroundAccessibleMemory) {
    fenced_memory memory(1);
    memory.fill(6);
    const cpu_state random = random_state(8);
    unsigned seed = 0;
    for (const replicating_form& form : forms) {
        for (unsigned int imm6 = 0; imm6 < 64; ++imm6) {
            for (const predicate_shape shape : predicate_shapes) {
                SCOPED_TRACE(testing::Message() << form.name << ", immediate " << imm6 << ", shape "
                                                << static_cast<int>(shape) << ", seed " << ++seed);
                std::mt19937_64 generator(seed);
                const int zt = static_cast<int>(generator() % 32);
                const int pg = static_cast<int>(generator() % 8);
                const int rn = generator() % 4 == 0 ? 31 : static_cast<int>(generator() % 31);
                const std::uint64_t places[] = {memory.address() + generator() % (memory.size() - 8),
                                                memory.address() + memory.size() - generator() % 9,
                                                memory.address() - generator() % 9};
                const std::uint64_t address = places[generator() % 3];
                cpu_state state = random;
                set_predicate_of_size(form.kind.element_bytes, state.p[pg], shape, seed);
                state.x[rn] = address - imm6 * static_cast<std::uint64_t>(form.kind.memory_bytes);
                std::vector<transfer> transfers;
                for (int i = 0; i < form.kind.element_count(); ++i)
                    transfers.push_back({zt, i, address});
                expect_transfers(form.kind, transfers, pg, state, memory, [&](cpu_state* actual) {
                    return form.handler(actual, data_register(zt), governing_register(pg), base_register(rn),
                                        imm6);
                });
                if (testing::Test::HasFailure())
                    return;
            }
        }
    }
}

TEST(ReplicatingMemory, ImmediateCountsElementsInMemory) {
    std::uint8_t memory[512] = {};
    memory[504] = 1;
    memory[63] = 2;
    memory[126] = 3;
    cpu_state state = random_state(9);
    set_predicate<std::uint8_t>(state.p[7], predicate_shape::all_true, 1);
    state.x[31] = reinterpret_cast<std::uint64_t>(memory);
    sve_ld1rd_zpri(&state, data_register(0), governing_register(7), base_register(31), 63);
    EXPECT_EQ(element<std::uint64_t>(state.z[0], 15), 1u);
    sve_ld1rb_zpri(&state, data_register(0), governing_register(7), base_register(31), 63);
    EXPECT_EQ(state.z[0][127], 2);
    sve_ld1rsh_d_zpri(&state, data_register(0), governing_register(7), base_register(31), 63);
    EXPECT_EQ(element<std::uint64_t>(state.z[0], 7), 3u);
}

} // namespace
