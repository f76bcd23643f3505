// Choice of blocks and instructions, and how the inserted code is marked. What it does:
// test_inserted_code.cpp.
#include "tests/client/client_fixture.h"

#include <algorithm>

namespace {

constexpr std::uint32_t sve_add = 0x04220020; // add z0.b, z1.b, z2.b
constexpr std::uint32_t sve_sub = 0x04A50483; // sub z3.s, z4.s, z5.s
constexpr std::uint32_t nop = 0xD503201F;
constexpr std::uint32_t neon_add = 0x4E228420;    // add v0.16b, v1.16b, v2.16b
constexpr std::uint32_t unallocated = 0x04020000; // in the SVE space, but no instruction

struct block_rewriting : client_test {
    void TearDown() override {
        failing_call.clear();
        client_test::TearDown();
    }
    static void expect_unchanged(const std::vector<inserted>& block, const std::uint32_t* code,
                                 std::size_t count) {
        ASSERT_EQ(block.size(), count);
        for (std::size_t index = 0; index < count; ++index)
            EXPECT_EQ(block[index].word, code[index]);
    }
};

TEST_F(block_rewriting, replaces_and_counts_what_it_should) {
    program_code[0] = nop;
    program_code[1] = sve_add;
    program_code[2] = sve_sub;
    program_code[3] = neon_add;
    const std::vector<inserted> block = rewrite(program_code, 4);
    for (const inserted& entry : block)
        EXPECT_FALSE(entry.word == sve_add || entry.word == sve_sub);
    EXPECT_EQ(block.front().word, nop);
    EXPECT_EQ(block.back().word, neon_add);
    EXPECT_EQ(aarch64_instr_count, 2u);
    EXPECT_EQ(rewrite(program_code, 4).size(), block.size());
    EXPECT_EQ(aarch64_instr_count, 4u) << "a block that is built again counts again";
    EXPECT_EQ(sve_instr_count, 0u) << "building a block executes nothing";
}

TEST_F(block_rewriting, leaves_alone_what_is_not_its_own) {
    program_code[0] = unallocated;
    program_code[1] = neon_add;
    expect_unchanged(rewrite(program_code, 2), program_code, 2);
    EXPECT_EQ(aarch64_instr_count, 2u);

    recorded_calls.clear();
    library_code[0] = sve_add;
    library_code[1] = nop;
    expect_unchanged(rewrite(library_code, 2), library_code, 2);
    EXPECT_EQ(recorded_calls, (std::vector<std::string>{"dr_lookup_module", "dr_free_module_data"}));
    EXPECT_EQ(aarch64_instr_count, 2u) << "another module's are not counted";

    generated_code[0] = sve_sub;
    EXPECT_GT(rewrite(generated_code, 1).size(), 1u) << "code of no module is emulated";

    instrlist_t* list = create_instruction_list();
    insert_meta_word(list, nullptr, sve_add);
    raise_block_event(&context, program_code, list, false, false);
    EXPECT_EQ(list->first->word, sve_add) << "not the application's";
    EXPECT_EQ(list->first, list->last);
    destroy_instruction_list(list);
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

// What a framework goes by when it works out where a fault was, and where the block continues. And where a
// framework limits a block's code, the limit of instructions goes by the size: 118 words around the call, and
// here at most 21 of the call. See docs/dynamorio.md when it has to change.
TEST_F(block_rewriting, marks_each_replacement_and_keeps_to_its_size) {
    program_code[0] = nop;
    program_code[1] = sve_add;
    for (const char* call : {"", "dr_using_all_private_caches"}) {
        failing_call = call;
        const std::vector<inserted> block = rewrite(program_code, 2);
        const auto last_app =
            std::find_if(block.rbegin(), block.rend(), [](const inserted& entry) { return entry.is_app; });
        ASSERT_NE(last_app, block.rend());
        EXPECT_EQ(last_app->translation, bytes(program_code + 1));
        // Of the whole carrying of registers, but not of the spills and the call.
        EXPECT_EQ(std::count_if(block.begin(), block.end(), [](const inserted& e) { return e.is_app; }),
                  1 + 2 * (2 + 14 + 32 + 2 * 3));
        for (const inserted& entry : block)
            EXPECT_EQ(entry.translation != nullptr, entry.is_app) << "at " << &entry - block.data();
    }
    EXPECT_LE(rewrite(program_code + 1, 1).size(), 118u + 21u);
}

TEST_F(block_rewriting, needs_x28_as_the_stolen_register) {
    program_code[0] = nop;
    program_code[1] = sve_add;
    failing_call = "dr_get_stolen_reg";
    rewrite(program_code, 1); // nothing to replace, so nothing to object to
    EXPECT_EXIT(
        rewrite(program_code, 2), testing::ExitedWithCode(255),
        "^ASSERT FAILURE: sve/client/sve_client:[0-9]+: dr_get_stolen_reg\\(\\) == DR_REG_X28 \\(\\)\n$");
}

} // namespace
