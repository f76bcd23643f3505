// The entry that rewritten code calls.
#include "sve/client/emulation_entry.h"
#include "tests/client/client_fixture.h"

namespace {

struct emulation : client_test {
    static inline cpu_state seen;
    static inline unsigned int seen_word;
    static inline cpu_state* seen_state;

    // Notes what it was given and changes the three spilled registers and one other.
    template <aarch64_decode_rc Result> static aarch64_decode_rc stub(cpu_state* state, unsigned int word) {
        seen = *state;
        seen_state = state;
        seen_word = word;
        state->x[25] = 2500;
        state->x[26] = 2600;
        state->x[27] = 2700;
        state->x[28] = 2800;
        return Result;
    }

    void SetUp() override {
        client_test::SetUp();
        program_code[3] = 0x04201234;
        for (int slot = 0; slot < client_spill_slots; ++slot)
            context.client_slot[slot] = 100 + slot;
    }
    std::string emulate(opcode_stub stub, unsigned int word = 0x04201234) {
        testing::internal::CaptureStderr();
        emulate_instruction(word, bytes(program_code + 3), stub);
        return testing::internal::GetCapturedStderr();
    }
    void expect_slots_written() {
        EXPECT_EQ(context.client_slot[0], 2600u);
        EXPECT_EQ(context.client_slot[1], 2700u);
        EXPECT_EQ(context.client_slot[2], 2800u);
        for (int slot = 3; slot < client_spill_slots; ++slot)
            EXPECT_EQ(context.client_slot[slot], 100u + slot);
    }
};

TEST_F(emulation, hands_over_the_spilled_registers_and_counts) {
    EXPECT_EQ(emulate(stub<aarch64_emulated>), "");
    EXPECT_EQ(seen_state, state());
    EXPECT_EQ(seen_word, 0x04201234u);
    EXPECT_EQ(seen.pc, program_code + 3);
    EXPECT_EQ(seen.x[25], 0u); // stored by the inserted code alone
    EXPECT_EQ(seen.x[26], 100u);
    EXPECT_EQ(seen.x[27], 101u);
    EXPECT_EQ(seen.x[28], 102u);
    expect_slots_written();
    EXPECT_EQ(state()->pc, program_code + 3) << "the program counter is not this function's to advance";

    EXPECT_EQ(sve_instr_count, 1u);
    ASSERT_TRUE(icounts.contains(program_code + 3));
    EXPECT_EQ(icounts.at(program_code + 3).first, 0x04201234u);
    EXPECT_EQ(icounts.at(program_code + 3).second, 1u);
}

TEST_F(emulation, reports_each_failure_and_counts_none) {
    // The line quotes the word in memory, not the one from block-build time.
    char line[128];
    std::snprintf(line, sizeof line, "Error: failed to emulate SVE instruction 0x04201234 at PC %p\n",
                  static_cast<void*>(program_code + 3));
    for (int execution = 0; execution < 2; ++execution) {
        EXPECT_EQ(emulate(stub<aarch64_not_emulated>, 0x04205678), line);
        EXPECT_EQ(seen_word, 0x04205678u);
        expect_slots_written();
    }
    EXPECT_EQ(sve_instr_count, 0u);
    EXPECT_TRUE(icounts.empty());
}

TEST_F(emulation, works_on_the_calling_threads_state) {
    thread_context other = {};
    raise_thread_init(&other);
    other.client_slot[0] = 77;
    set_current_drcontext(&other);
    emulate(stub<aarch64_emulated>);
    EXPECT_EQ(seen_state, drmgr_get_tls_field(&other, tls_idx));
    EXPECT_EQ(seen.x[26], 77u);
    EXPECT_EQ(other.client_slot[2], 2800u);
    EXPECT_EQ(context.client_slot[2], 102u);
    raise_thread_exit(&other);
    set_current_drcontext(&context);
}

} // namespace
