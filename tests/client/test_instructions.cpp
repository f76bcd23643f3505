// Created instructions against what the assembler makes of their text, and instruction lists.
#include "dr_api.h"
#include "dr_call_kelvo.h"
#include "framework/ir/instruction.h"
#include "framework/runtime/thread_context.h"
#include "tests/client/assembled.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

extern "C" const std::uint32_t expected_creations[], expected_creations_end[], expected_immediates[],
    expected_immediates_end[], expected_spills[], expected_spills_end[], expected_arguments[],
    expected_arguments_end[];

namespace {

using words = std::vector<std::uint32_t>;

words words_of(instrlist_t* list) {
    words result;
    for (instr_t* instr = instrlist_first(list); instr != nullptr; instr = instr_get_next(instr))
        result.push_back(instr->word);
    return result;
}

opnd_t reg(int number) { return opnd_create_reg(static_cast<reg_id_t>(number)); }
opnd_t memory(int base, int displacement, opnd_size_t size) {
    return opnd_create_base_disp(static_cast<reg_id_t>(base), DR_REG_NULL, 0, displacement, size);
}

asm(R"(
    .pushsection .rodata
    .balign 8
expected_creations:
    str x26, [x27, #248]
    str x0, [sp]
    str xzr, [x3, #32760]
    str w26, [x27, #272]
    str w30, [x1, #16380]
    str q0, [x27, #288]
    str q31, [x27, #4256]
    str q5, [sp, #65520]
    ldr x26, [x27, #264]
    ldr wzr, [x30, #4]
    ldr q17, [x27, #2464]
    stp x0, x1, [x27]
    stp x29, x30, [x27, #232]
    stp x5, xzr, [sp, #-512]
    ldp x24, x25, [x27, #192]
    ldp x1, x0, [x2, #504]
    mrs x26, nzcv
    mrs x0, fpcr
    mrs x30, fpsr
    msr nzcv, x26
    msr fpcr, xzr
    msr fpsr, x1
    add x26, sp, #0
    add sp, x26, #0
    mov x1, x2
    mov x30, xzr
    mov w3, w4
expected_creations_end:
expected_immediates:
    movz x5, #0
    movz x5, #1
    movz x30, #0xffff, lsl #16
    movz x5, #0x1234, lsl #48
    movz x5, #0x5678
    movk x5, #0x1234, lsl #32
    movz x5, #0xffff
    movk x5, #0xffff, lsl #16
    movk x5, #0xffff, lsl #32
    movk x5, #0xffff, lsl #48
    movz x0, #0xcdef
    movk x0, #0x89ab, lsl #16
    movk x0, #0x4567, lsl #32
    movk x0, #0x0123, lsl #48
expected_immediates_end:
expected_spills:
    str x26, [x28, #16]
    str x30, [x28, #80]
    ldr x0, [x28, #24]
    ldr x27, [x28]
    str x27, [x28]
    str x28, [x28, #32]
expected_spills_end:
expected_arguments:
    movz x10, #0x4000
    str x10, [x28, #136]
    movz x0, #7
    mov x2, x20
    movz x3, #0xfffe
    movk x3, #0xffff, lsl #16
    movk x3, #0xffff, lsl #32
    movk x3, #0xffff, lsl #48
    movz x11, #0x1234, lsl #16
    ldr x10, [x28, #144]
    blr x10
expected_arguments_end:
    .globl expected_creations, expected_creations_end, expected_immediates, expected_immediates_end
    .globl expected_spills, expected_spills_end, expected_arguments, expected_arguments_end
    .popsection
)");
static_assert(offsetof(thread_context, client_slot) == 16 && offsetof(thread_context, call_app_pc) == 136 &&
                  offsetof(thread_context, client_call_entry) == 144,
              "the texts above name the context's fields by offset");

struct list_test : testing::Test {
    instrlist_t* list = create_instruction_list();
    void TearDown() override { destroy_instruction_list(list); }
};

TEST_F(list_test, creations_encode_as_the_assembler_does) {
    constexpr int q0 = DR_REG_Q0;
    for (instr_t* created : {
             INSTR_CREATE_str(nullptr, memory(DR_REG_X27, 248, OPSZ_8), reg(DR_REG_X26)),
             INSTR_CREATE_str(nullptr, memory(DR_REG_XSP, 0, OPSZ_8), reg(DR_REG_X0)),
             INSTR_CREATE_str(nullptr, memory(DR_REG_X3, 32760, OPSZ_8), reg(DR_REG_XZR)),
             INSTR_CREATE_str(nullptr, memory(DR_REG_X27, 272, OPSZ_4), reg(DR_REG_W26)),
             INSTR_CREATE_str(nullptr, memory(DR_REG_X1, 16380, OPSZ_4), reg(DR_REG_W30)),
             INSTR_CREATE_str(nullptr, memory(DR_REG_X27, 288, OPSZ_16), reg(q0)),
             INSTR_CREATE_str(nullptr, memory(DR_REG_X27, 4256, OPSZ_16), reg(q0 + 31)),
             INSTR_CREATE_str(nullptr, memory(DR_REG_XSP, 65520, OPSZ_16), reg(q0 + 5)),
             INSTR_CREATE_ldr(nullptr, reg(DR_REG_X26), memory(DR_REG_X27, 264, OPSZ_8)),
             INSTR_CREATE_ldr(nullptr, reg(DR_REG_WZR), memory(DR_REG_X30, 4, OPSZ_4)),
             INSTR_CREATE_ldr(nullptr, reg(q0 + 17), memory(DR_REG_X27, 2464, OPSZ_16)),
             INSTR_CREATE_stp(nullptr, memory(DR_REG_X27, 0, OPSZ_16), reg(DR_REG_X0), reg(DR_REG_X1)),
             INSTR_CREATE_stp(nullptr, memory(DR_REG_X27, 232, OPSZ_16), reg(DR_REG_X29), reg(DR_REG_X30)),
             INSTR_CREATE_stp(nullptr, memory(DR_REG_XSP, -512, OPSZ_16), reg(DR_REG_X5), reg(DR_REG_XZR)),
             INSTR_CREATE_ldp(nullptr, reg(DR_REG_X24), reg(DR_REG_X25), memory(DR_REG_X27, 192, OPSZ_16)),
             INSTR_CREATE_ldp(nullptr, reg(DR_REG_X1), reg(DR_REG_X0), memory(DR_REG_X2, 504, OPSZ_16)),
             INSTR_CREATE_mrs(nullptr, reg(DR_REG_X26), reg(DR_REG_NZCV)),
             INSTR_CREATE_mrs(nullptr, reg(DR_REG_X0), reg(DR_REG_FPCR)),
             INSTR_CREATE_mrs(nullptr, reg(DR_REG_X30), reg(DR_REG_FPSR)),
             INSTR_CREATE_msr(nullptr, reg(DR_REG_NZCV), reg(DR_REG_X26)),
             INSTR_CREATE_msr(nullptr, reg(DR_REG_FPCR), reg(DR_REG_XZR)),
             INSTR_CREATE_msr(nullptr, reg(DR_REG_FPSR), reg(DR_REG_X1)),
             XINST_CREATE_move(nullptr, reg(DR_REG_X26), reg(DR_REG_XSP)),
             XINST_CREATE_move(nullptr, reg(DR_REG_XSP), reg(DR_REG_X26)),
             XINST_CREATE_move(nullptr, reg(DR_REG_X1), reg(DR_REG_X2)),
             XINST_CREATE_move(nullptr, reg(DR_REG_X30), reg(DR_REG_XZR)),
             XINST_CREATE_move(nullptr, reg(DR_REG_W3), reg(DR_REG_W4)),
         }) {
        EXPECT_TRUE(instr_is_app(created)) << "created instructions are the application's until marked";
        EXPECT_EQ(instr_get_app_pc(created), nullptr);
        EXPECT_EQ(instr_get_raw_bits(created), nullptr);
        instrlist_append(list, created);
    }
    EXPECT_EQ(words_of(list), assembled(expected_creations, expected_creations_end));
}

TEST(creation_death, operands_that_do_not_fit) {
    const opnd_t x1 = reg(DR_REG_X1), sp = reg(DR_REG_XSP);
    const auto x_memory = [](int displacement) { return memory(DR_REG_X27, displacement, OPSZ_8); };
    const auto pair_memory = [](int displacement) { return memory(DR_REG_X27, displacement, OPSZ_16); };
    EXPECT_DEATH(INSTR_CREATE_str(nullptr, x_memory(4), x1), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_str(nullptr, x_memory(-8), x1), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_ldr(nullptr, x1, x_memory(32768)), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_str(nullptr, x_memory(0), sp), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_str(nullptr, x_memory(0), reg(DR_REG_W1)), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_stp(nullptr, pair_memory(512), x1, x1), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_stp(nullptr, pair_memory(-520), x1, x1), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_stp(nullptr, x_memory(0), x1, x1), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_mrs(nullptr, reg(DR_REG_W1), reg(DR_REG_NZCV)), "Assertion");
    EXPECT_DEATH(INSTR_CREATE_msr(nullptr, x1, x1), "Assertion");
    EXPECT_DEATH(XINST_CREATE_move(nullptr, sp, reg(DR_REG_XZR)), "Assertion");
    EXPECT_DEATH(XINST_CREATE_move(nullptr, x1, reg(DR_REG_W1)), "Assertion");
    EXPECT_DEATH(opnd_create_immed_uint(0x1'0000'0000, OPSZ_4), "Assertion");
    instrlist_t* list = create_instruction_list();
    EXPECT_DEATH(dr_save_reg(nullptr, list, nullptr, DR_REG_XSP, SPILL_SLOT_1), "Assertion");
    EXPECT_DEATH(dr_restore_reg(nullptr, list, nullptr, DR_REG_X0, SPILL_SLOT_10), "Assertion");
    EXPECT_DEATH(dr_insert_get_stolen_reg_value(nullptr, list, nullptr, DR_REG_X28), "Assertion");
    destroy_instruction_list(list);
}

TEST_F(list_test, immediates_take_no_more_moves_than_they_need) {
    const struct {
        int reg;
        ptr_int_t value;
        std::ptrdiff_t count;
    } cases[] = {{DR_REG_X5, 0, 1},
                 {DR_REG_X5, 1, 1},
                 {DR_REG_X30, 0xFFFF0000, 1},
                 {DR_REG_X5, 0x1234'0000'0000'0000, 1},
                 {DR_REG_X5, 0x1234'0000'5678, 2},
                 {DR_REG_X5, -1, 4},
                 {DR_REG_X0, 0x0123'4567'89AB'CDEF, 4}};
    for (const auto& c : cases) {
        instr_t *first = nullptr, *last = nullptr, *before = instrlist_last(list);
        instrlist_insert_mov_immed_ptrsz(nullptr, c.value, reg(c.reg), list, nullptr, &first, &last);
        EXPECT_EQ(first, before != nullptr ? instr_get_next(before) : instrlist_first(list));
        EXPECT_EQ(last, instrlist_last(list));
        EXPECT_EQ(first == last, c.count == 1);
    }
    instr_t *first = list->first, *last = list->first;
    instrlist_insert_mov_immed_ptrsz(nullptr, 5, reg(DR_REG_XZR), list, nullptr, &first, &last);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(last, nullptr);
    EXPECT_EQ(words_of(list), assembled(expected_immediates, expected_immediates_end));
    EXPECT_EQ(instrlist_first_app(list), nullptr) << "all of it is meta";
}

TEST_F(list_test, spills_address_the_context) {
    dr_save_reg(nullptr, list, nullptr, DR_REG_X26, SPILL_SLOT_1);
    dr_save_reg(nullptr, list, nullptr, DR_REG_X30, SPILL_SLOT_9);
    dr_restore_reg(nullptr, list, nullptr, DR_REG_X0, SPILL_SLOT_2);
    EXPECT_TRUE(dr_insert_get_stolen_reg_value(nullptr, list, nullptr, DR_REG_X27));
    EXPECT_TRUE(dr_insert_set_stolen_reg_value(nullptr, list, nullptr, DR_REG_X27));
    dr_save_reg(nullptr, list, nullptr, DR_REG_X28, SPILL_SLOT_3);
    EXPECT_EQ(words_of(list), assembled(expected_spills, expected_spills_end));
    EXPECT_EQ(instrlist_first_app(list), nullptr) << "all of it is meta";

    thread_context context = {};
    dr_write_saved_reg(&context, SPILL_SLOT_9, 99);
    EXPECT_EQ(context.client_slot[8], 99u);
    context.client_slot[1] = 22;
    EXPECT_EQ(dr_read_saved_reg(&context, SPILL_SLOT_2), 22u);
}

TEST_F(list_test, calls_take_immediates_and_registers) {
    dr_insert_call_kelvo(nullptr, list, nullptr, reinterpret_cast<app_pc>(0x4000),
                         reinterpret_cast<void*>(0x12340000), 4, opnd_create_immed_uint(7, OPSZ_4),
                         reg(DR_REG_X1), reg(DR_REG_X20), opnd_create_immed_int(-2, OPSZ_8));
    EXPECT_EQ(words_of(list), assembled(expected_arguments, expected_arguments_end));
    EXPECT_EQ(instrlist_first_app(list), nullptr) << "all of it is meta";
    const auto call_with = [&](opnd_t second) {
        dr_insert_call_kelvo(nullptr, list, nullptr, nullptr, nullptr, 2, opnd_create_immed_int(0, OPSZ_8),
                             second);
    };
    for (const int overwritten : {DR_REG_X0, DR_REG_X10, DR_REG_X11, DR_REG_X28, DR_REG_XSP})
        EXPECT_DEATH(call_with(reg(overwritten)), "Assertion");
}

TEST_F(list_test, links_in_both_directions) {
    std::uint32_t code[] = {10, 11, 12, 13};
    instr_t* made[4];
    for (int index = 0; index < 4; ++index)
        made[index] = instruction_from_application(reinterpret_cast<std::uint8_t*>(code + index));
    instrlist_append(list, made[1]);
    instrlist_preinsert(list, made[1], made[0]);
    instrlist_preinsert(list, nullptr, made[3]);
    instrlist_meta_preinsert(list, made[3], made[2]);
    EXPECT_EQ(words_of(list), (words{10, 11, 12, 13}));

    EXPECT_TRUE(instr_is_meta(made[2]));
    EXPECT_EQ(instrlist_first_app(list), made[0]);
    EXPECT_EQ(instr_get_next(made[1]), made[2]);
    EXPECT_EQ(instr_get_next_app(made[1]), made[3]);
    EXPECT_EQ(instr_get_next_app(made[3]), nullptr);
    EXPECT_EQ(instr_get_raw_bits(made[1]), reinterpret_cast<byte*>(code + 1));
    EXPECT_EQ(instr_get_app_pc(made[1]), reinterpret_cast<app_pc>(code + 1));

    // Taken from the middle, the front and the end; the links back are what is left to check.
    for (const auto& [removed, left] :
         {std::pair{1, words{13, 12, 10}}, {0, words{13, 12}}, {3, words{12}}}) {
        instrlist_remove(list, made[removed]);
        instr_destroy(nullptr, made[removed]);
        words backwards;
        for (instr_t* instr = instrlist_last(list); instr != nullptr; instr = instr_get_prev(instr))
            backwards.push_back(instr->word);
        EXPECT_EQ(backwards, left);
        EXPECT_EQ(words_of(list), words(left.rbegin(), left.rend()));
    }
    instrlist_remove(list, made[2]);
    EXPECT_EQ(instrlist_first(list), nullptr);
    EXPECT_EQ(instrlist_last(list), nullptr);
    instrlist_preinsert(list, nullptr, made[2]);
    EXPECT_EQ(words_of(list), words{12});
}

} // namespace
