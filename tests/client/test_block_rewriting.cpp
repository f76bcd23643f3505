// Choice of blocks and instructions, and the inserted sequence word by word.
#include "sve/client/emulation_entry.h"
#include "tests/client/assembled.h"
#include "tests/client/client_fixture.h"

#include <algorithm>

extern "C" const std::uint32_t expected_spill[], expected_save[], expected_restore[], expected_unspill[],
    expected_unspill_end[];

namespace {

constexpr std::uint32_t sve_add = 0x04220020; // add z0.b, z1.b, z2.b
constexpr std::uint32_t sve_sub = 0x04A50483; // sub z3.s, z4.s, z5.s
constexpr std::uint32_t nop = 0xD503201F;
constexpr std::uint32_t neon_add = 0x4E228420;    // add v0.16b, v1.16b, v2.16b
constexpr std::uint32_t unallocated = 0x04020000; // in the SVE space, but no instruction

// The fixed parts of the sequence, without the immediates and the call between them. The context has the
// application's X28 at 0 and spill slots from 16; the state has x at 0, nzcv, fpsr and fpcr at 264, 272 and
// 276, and z from 288.
asm(R"(
    .pushsection .rodata
    .balign 8
expected_spill:
    str x26, [x28, #16]
    str x27, [x28, #24]
    ldr x27, [x28]
    str x27, [x28, #32]
expected_save:
    add x26, sp, #0
    str x26, [x27, #248]
    stp x0, x1, [x27, #0]
    stp x2, x3, [x27, #16]
    stp x4, x5, [x27, #32]
    stp x6, x7, [x27, #48]
    stp x8, x9, [x27, #64]
    stp x10, x11, [x27, #80]
    stp x12, x13, [x27, #96]
    stp x14, x15, [x27, #112]
    stp x16, x17, [x27, #128]
    stp x18, x19, [x27, #144]
    stp x20, x21, [x27, #160]
    stp x22, x23, [x27, #176]
    stp x24, x25, [x27, #192]
    stp x29, x30, [x27, #232]
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    str q\n, [x27, #288 + 128 * \n]
    .endr
    mrs x26, nzcv
    str x26, [x27, #264]
    mrs x26, fpsr
    str w26, [x27, #272]
    mrs x26, fpcr
    str w26, [x27, #276]
expected_restore:
    ldr w26, [x27, #276]
    msr fpcr, x26
    ldr w26, [x27, #272]
    msr fpsr, x26
    ldr x26, [x27, #264]
    msr nzcv, x26
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    ldr q\n, [x27, #288 + 128 * \n]
    .endr
    ldp x0, x1, [x27, #0]
    ldp x2, x3, [x27, #16]
    ldp x4, x5, [x27, #32]
    ldp x6, x7, [x27, #48]
    ldp x8, x9, [x27, #64]
    ldp x10, x11, [x27, #80]
    ldp x12, x13, [x27, #96]
    ldp x14, x15, [x27, #112]
    ldp x16, x17, [x27, #128]
    ldp x18, x19, [x27, #144]
    ldp x20, x21, [x27, #160]
    ldp x22, x23, [x27, #176]
    ldp x24, x25, [x27, #192]
    ldp x29, x30, [x27, #232]
    ldr x26, [x27, #248]
    add sp, x26, #0
expected_unspill:
    ldr x27, [x28, #32]
    str x27, [x28]
    ldr x27, [x28, #24]
    ldr x26, [x28, #16]
expected_unspill_end:
    .globl expected_spill, expected_save, expected_restore, expected_unspill, expected_unspill_end
    .popsection
)");
static_assert(offsetof(thread_context, app_x28) == 0 && offsetof(thread_context, client_slot) == 16);
static_assert(offsetof(cpu_state, x) == 0 && offsetof(cpu_state, nzcv) == 264 &&
              offsetof(cpu_state, fpsr) == 272 && offsetof(cpu_state, fpcr) == 276 &&
              offsetof(cpu_state, z) == 288);

struct block_rewriting : client_test {
    // Goes along a rewritten block and checks one stretch after the other.
    struct reader {
        const std::vector<inserted>& block;
        std::size_t position = 0;

        void expect_meta(const std::vector<std::uint32_t>& words) { expect(words, false, nullptr); }
        void expect_app(const std::vector<std::uint32_t>& words, std::uint8_t* pc) {
            expect(words, true, pc);
        }
        void expect(const std::vector<std::uint32_t>& words, bool is_app, std::uint8_t* translation) {
            ASSERT_FALSE(words.empty());
            for (const std::uint32_t word : words) {
                ASSERT_LT(position, block.size());
                ASSERT_EQ(block[position].word, word) << "at " << position;
                ASSERT_EQ(block[position].is_app, is_app) << "at " << position;
                ASSERT_EQ(block[position].translation, translation) << "at " << position;
                ++position;
            }
        }
        // The 16-bit pieces of an immediate: a MOVZ, then MOVKs of higher and higher halves.
        void expect_immediate(unsigned reg, std::uint64_t value) {
            std::uint64_t built = 0;
            int last_half = -1;
            for (; position < block.size(); ++position) {
                const std::uint32_t word = block[position].word;
                const int half = word >> 21 & 3;
                const std::uint32_t move = last_half < 0 ? 0xD2800000 : 0xF2800000;
                if ((word & 0xFF80001F) != (move | reg) || half <= last_half)
                    break;
                ASSERT_FALSE(block[position].is_app) << "at " << position;
                ASSERT_EQ(block[position].translation, nullptr) << "at " << position;
                built |= static_cast<std::uint64_t>(word >> 5 & 0xFFFF) << (16 * half);
                last_half = half;
            }
            ASSERT_GE(last_half, 0) << "no immediate at " << position;
            ASSERT_EQ(built, value) << "before " << position;
        }
        void expect_context_access(std::uint32_t base, unsigned reg, std::size_t offset) {
            expect_meta({base | static_cast<std::uint32_t>(offset / 8) << 10 | 28 << 5 | reg});
        }
    };

    // How the state pointer comes into X27.
    enum caches { private_caches, shared_caches };

    void expect_state_pointer(reader& r, caches kind) {
        if (kind == shared_caches)
            r.expect_context_access(0xF9400000, 27, offsetof(thread_context, tls_field) + 8 * tls_idx);
        else
            r.expect_immediate(27, reinterpret_cast<std::uint64_t>(state()));
    }

    void expect_replacement(reader& r, std::uint32_t* address, caches kind = private_caches) {
        const auto bits = [](const void* pointer) { return reinterpret_cast<std::uint64_t>(pointer); };
        std::uint8_t* pc = bytes(address);
        r.expect_meta(assembled(expected_spill, expected_save));
        expect_state_pointer(r, kind);
        r.expect_app(assembled(expected_save, expected_restore), pc);
        r.expect_immediate(10, bits(pc));
        r.expect_context_access(0xF9000000, 10, offsetof(thread_context, call_app_pc));
        r.expect_immediate(0, *address);
        r.expect_meta({0xAA0A03E1}); // mov x1, x10
        r.expect_immediate(2, bits(reinterpret_cast<const void*>(is_sve(*address))));
        r.expect_immediate(11, bits(reinterpret_cast<const void*>(emulate_instruction)));
        r.expect_context_access(0xF9400000, 10, offsetof(thread_context, client_call_entry));
        r.expect_meta({0xD63F0140}); // blr x10
        expect_state_pointer(r, kind);
        r.expect_app(assembled(expected_restore, expected_unspill), pc);
        r.expect_meta(assembled(expected_unspill, expected_unspill_end));
    }

    static void expect_unchanged(const std::vector<inserted>& block, const std::uint32_t* code,
                                 std::size_t count) {
        ASSERT_EQ(block.size(), count);
        for (std::size_t index = 0; index < count; ++index)
            EXPECT_EQ(block[index].word, code[index]);
    }

    static std::ptrdiff_t calls_of(const char* name) {
        return std::count(recorded_calls.begin(), recorded_calls.end(), name);
    }

    void SetUp() override {
        client_test::SetUp();
        ASSERT_NE(is_sve(sve_add), nullptr);
        ASSERT_NE(is_sve(sve_sub), nullptr);
    }
};

TEST_F(block_rewriting, replaces_an_instruction_by_the_whole_sequence) {
    program_code[0] = nop;
    program_code[1] = sve_add;
    program_code[2] = neon_add;
    const std::vector<inserted> block = rewrite(program_code, 3);
    reader r = {block};
    r.expect_app({nop}, bytes(program_code));
    expect_replacement(r, program_code + 1);
    r.expect_app({neon_add}, bytes(program_code + 2));
    EXPECT_EQ(r.position, block.size());
    EXPECT_EQ(aarch64_instr_count, 2u);
    EXPECT_EQ(sve_instr_count, 0u) << "building a block executes nothing";
}

TEST_F(block_rewriting, gives_neighbours_a_sequence_each) {
    program_code[0] = sve_add;
    program_code[1] = sve_sub;
    const std::vector<inserted> block = rewrite(program_code, 2);
    reader r = {block};
    expect_replacement(r, program_code);
    expect_replacement(r, program_code + 1);
    EXPECT_EQ(r.position, block.size());
    EXPECT_EQ(aarch64_instr_count, 0u);
}

TEST_F(block_rewriting, counts_again_when_a_block_is_built_again) {
    program_code[0] = nop;
    program_code[1] = sve_add;
    const std::size_t size = rewrite(program_code, 2).size();
    EXPECT_EQ(aarch64_instr_count, 1u);
    EXPECT_EQ(rewrite(program_code, 2).size(), size);
    EXPECT_EQ(aarch64_instr_count, 2u);
}

TEST_F(block_rewriting, leaves_words_that_no_opcode_matches) {
    program_code[0] = unallocated;
    program_code[1] = neon_add;
    expect_unchanged(rewrite(program_code, 2), program_code, 2);
    EXPECT_EQ(aarch64_instr_count, 2u);
}

TEST_F(block_rewriting, leaves_other_modules_alone_and_uncounted) {
    library_code[0] = sve_add;
    library_code[1] = nop;
    expect_unchanged(rewrite(library_code, 2), library_code, 2);
    EXPECT_EQ(aarch64_instr_count, 0u);
    EXPECT_EQ(calls_of("dr_lookup_module"), 1);
    EXPECT_EQ(calls_of("dr_free_module_data"), 1);
}

TEST_F(block_rewriting, emulates_code_of_no_module) {
    generated_code[0] = sve_sub;
    const std::vector<inserted> block = rewrite(generated_code, 1);
    reader r = {block};
    expect_replacement(r, generated_code);
    EXPECT_EQ(r.position, block.size());
}

TEST_F(block_rewriting, goes_by_the_blocks_own_address) {
    // The module is that of the block, whichever address an instruction of it has.
    generated_code[0] = nop;
    instrlist_t* list = create_instruction_list();
    instrlist_append(list, instruction_from_application(bytes(generated_code)));
    raise_block_event(&context, library_code, list, false, false);
    EXPECT_EQ(aarch64_instr_count, 0u);
    raise_block_event(&context, program_code, list, true, true);
    EXPECT_EQ(aarch64_instr_count, 1u);
    destroy_instruction_list(list);
}

TEST_F(block_rewriting, accepts_blocks_without_application_instructions) {
    EXPECT_TRUE(rewrite(program_code, 0).empty());
    instrlist_t* list = create_instruction_list();
    insert_meta_word(list, nullptr, sve_add);
    raise_block_event(&context, program_code, list, false, false);
    EXPECT_EQ(list->first->word, sve_add);
    EXPECT_EQ(list->first, list->last);
    EXPECT_EQ(aarch64_instr_count, 0u);
    destroy_instruction_list(list);
}

TEST_F(block_rewriting, uses_the_state_of_the_thread_that_builds) {
    program_code[0] = sve_add;
    thread_context other = {};
    raise_thread_init(&other);
    instrlist_t* list = create_instruction_list();
    instrlist_append(list, instruction_from_application(bytes(program_code)));
    raise_block_event(&other, program_code, list, false, false);
    std::vector<inserted> block;
    for (instr_t* instr = list->first; instr != nullptr; instr = instr->next)
        block.push_back({instr->word, instr->translation, instr->is_app});
    reader r = {block, 4};
    r.expect_immediate(27, reinterpret_cast<std::uint64_t>(drmgr_get_tls_field(&other, tls_idx)));
    destroy_instruction_list(list);
    raise_thread_exit(&other);
}

TEST_F(block_rewriting, fetches_the_state_of_the_thread_that_runs_a_shared_block) {
    program_code[0] = sve_add;
    program_code[1] = sve_sub;
    failing_call = "dr_using_all_private_caches";
    const std::vector<inserted> block = rewrite(program_code, 2);
    reader r = {block};
    expect_replacement(r, program_code, shared_caches);
    expect_replacement(r, program_code + 1, shared_caches);
    EXPECT_EQ(r.position, block.size());

    // Any thread may build such a block again, to translate a fault: it has to come out the same.
    thread_context other = {};
    raise_thread_init(&other);
    instrlist_t* list = create_instruction_list();
    for (int index = 0; index < 2; ++index)
        instrlist_append(list, instruction_from_application(bytes(program_code + index)));
    raise_block_event(&other, program_code, list, false, true);
    std::size_t position = 0;
    for (instr_t* instr = list->first; instr != nullptr; instr = instr->next, ++position) {
        ASSERT_LT(position, block.size());
        ASSERT_EQ(instr->word, block[position].word) << "at " << position;
    }
    EXPECT_EQ(position, block.size());
    destroy_instruction_list(list);
    raise_thread_exit(&other);
    failing_call.clear();
}

// What a framework goes by when it works out where the block continues.
TEST_F(block_rewriting, ends_each_replacement_at_the_replaced_address) {
    program_code[0] = nop;
    program_code[1] = sve_add;
    for (const char* call : {"", "dr_using_all_private_caches"}) {
        failing_call = call;
        const std::vector<inserted> block = rewrite(program_code, 2);
        const auto last_app =
            std::find_if(block.rbegin(), block.rend(), [](const inserted& entry) { return entry.is_app; });
        ASSERT_NE(last_app, block.rend());
        EXPECT_EQ(last_app->translation, bytes(program_code + 1));
        for (const inserted& entry : block)
            EXPECT_EQ(entry.translation != nullptr, entry.is_app) << "at " << &entry - block.data();
    }
    failing_call.clear();
}

// Where a framework limits a block's code, the limit of instructions goes by this: 118 words around the call,
// and here at most 21 of the call. See docs/dynamorio.md when it has to change.
TEST_F(block_rewriting, keeps_to_its_share_of_a_block) {
    program_code[0] = sve_add;
    failing_call = "dr_using_all_private_caches";
    EXPECT_LE(rewrite(program_code, 1).size(), 118u + 21u);
    failing_call.clear();
}

TEST_F(block_rewriting, needs_x28_as_the_stolen_register) {
    program_code[0] = nop;
    program_code[1] = sve_add;
    failing_call = "dr_get_stolen_reg";
    rewrite(program_code, 1); // nothing to replace, so nothing to object to
    EXPECT_EXIT(
        rewrite(program_code, 2), testing::ExitedWithCode(255),
        "^ASSERT FAILURE: sve/client/sve_client:[0-9]+: dr_get_stolen_reg\\(\\) == DR_REG_X28 \\(\\)\n$");
    failing_call.clear();
}

} // namespace
