// Code that a client has inserted around application instructions: spills, the stolen register's value,
// calls. It reaches the thread's context through X28. All of it is meta.
#include "dr_call_kelvo.h"
#include "framework/aarch64/encode.h"
#include "framework/ir/instruction.h"
#include "framework/ir/operand.h"
#include "framework/runtime/thread_context.h"

#include <cassert>
#include <cstdarg>

namespace {

constexpr unsigned context_register = 28;
constexpr unsigned most_call_arguments = 8;

std::int64_t slot_offset(dr_spill_slot_t slot) {
    assert(slot < client_spill_slots);
    return static_cast<std::int64_t>(offsetof(thread_context, client_slot) + slot * sizeof(std::uint64_t));
}

static_assert(offsetof(thread_context, client_slot) == offsetof(dr_context_start_t, spill_slot) &&
              sizeof(thread_context::client_slot) == sizeof(dr_context_start_t::spill_slot));

unsigned register_not_stolen(reg_id_t reg) {
    assert(!reg_is_stolen(reg));
    return numbered_x_register(reg);
}

void insert_value(instrlist_t* ilist, instr_t* where, reg_id_t reg, std::uint64_t value) {
    instrlist_insert_mov_immed_ptrsz(nullptr, static_cast<ptr_int_t>(value), opnd_create_reg(reg), ilist,
                                     where, nullptr, nullptr);
}

std::uint64_t address_bits(const void* address) { return reinterpret_cast<std::uint64_t>(address); }

// Puts an argument into X0 + index, when the registers of all earlier arguments already hold theirs and X10
// the application address.
void insert_argument(instrlist_t* ilist, instr_t* where, unsigned index, opnd_t argument, std::uint64_t pc) {
    const reg_id_t target = static_cast<reg_id_t>(DR_REG_X0 + index);
    if (argument.kind == immediate_operand) {
        const auto value = static_cast<std::uint64_t>(argument.value);
        if (value == pc)
            insert_meta_word(ilist, where, a64::move_x(index, 10));
        else
            insert_value(ilist, where, target, value);
        return;
    }
    assert(argument.kind == register_operand);
    const unsigned source = register_not_stolen(argument.reg);
    assert(source >= index && source != 10 && source != 11);
    if (source != index)
        insert_meta_word(ilist, where, a64::move_x(index, source));
}

} // namespace

extern "C" {

void dr_save_reg(void*, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot) {
    insert_meta_word(ilist, where, a64::str_x(numbered_x_register(reg), context_register, slot_offset(slot)));
}

void dr_restore_reg(void*, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot) {
    insert_meta_word(ilist, where, a64::ldr_x(numbered_x_register(reg), context_register, slot_offset(slot)));
}

bool dr_insert_get_stolen_reg_value(void*, instrlist_t* ilist, instr_t* where, reg_id_t reg) {
    insert_meta_word(
        ilist, where,
        a64::ldr_x(register_not_stolen(reg), context_register, offsetof(thread_context, app_x28)));
    return true;
}

bool dr_insert_set_stolen_reg_value(void*, instrlist_t* ilist, instr_t* where, reg_id_t reg) {
    insert_meta_word(
        ilist, where,
        a64::str_x(register_not_stolen(reg), context_register, offsetof(thread_context, app_x28)));
    return true;
}

void dr_insert_call_kelvo(void*, instrlist_t* ilist, instr_t* where, app_pc pc, void* callee, uint num_args,
                          ...) {
    assert(num_args <= most_call_arguments);
    insert_value(ilist, where, DR_REG_X10, address_bits(pc));
    insert_meta_word(ilist, where, a64::str_x(10, context_register, offsetof(thread_context, call_app_pc)));

    va_list arguments;
    va_start(arguments, num_args);
    for (unsigned index = 0; index < num_args; ++index)
        insert_argument(ilist, where, index, va_arg(arguments, opnd_t), address_bits(pc));
    va_end(arguments);

    insert_value(ilist, where, DR_REG_X11, address_bits(callee));
    insert_meta_word(ilist, where,
                     a64::ldr_x(10, context_register, offsetof(thread_context, client_call_entry)));
    insert_meta_word(ilist, where, a64::blr(10));
}

} // extern "C"
