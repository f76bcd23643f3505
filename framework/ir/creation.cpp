// Creation of instructions: each is encoded as it is made.
#include "framework/aarch64/encode.h"
#include "framework/ir/instruction.h"
#include "framework/ir/operand.h"

#include <cassert>

namespace {

// The number of a register operand.
unsigned register_of(opnd_t operand) {
    assert(operand.kind == register_operand);
    return register_number(operand.reg);
}

// A register that is transferred: 31 would be the zero register, so the stack pointer has no encoding.
unsigned data_register_of(opnd_t operand) {
    assert(!is_stack_pointer(operand.reg));
    return register_of(operand);
}

unsigned x_register_of(opnd_t operand) {
    assert(register_bytes(operand.reg) == 8);
    return data_register_of(operand);
}

a64::access access_of(opnd_t operand) {
    switch (register_bytes(operand.reg)) {
    case 4:
        return a64::access::w;
    case 8:
        return a64::access::x;
    default:
        assert(register_bytes(operand.reg) == 16);
        return a64::access::q;
    }
}

instr_t* create_load_store(bool load, opnd_t data, opnd_t memory) {
    assert(memory.kind == memory_operand);
    assert(opnd_size_in_bytes(memory.size) == register_bytes(data.reg));
    return instruction_from_word(a64::load_store(access_of(data), load, data_register_of(data),
                                                 register_number(memory.reg), memory.disp));
}

instr_t* create_pair(bool load, opnd_t first, opnd_t second, opnd_t memory) {
    assert(memory.kind == memory_operand && memory.size == OPSZ_16);
    return instruction_from_word(a64::pair_x(load, x_register_of(first), x_register_of(second),
                                             register_number(memory.reg), memory.disp));
}

unsigned system_register_of(opnd_t operand) {
    assert(operand.kind == register_operand);
    switch (operand.reg) {
    case DR_REG_NZCV:
        return a64::sysreg_nzcv;
    case DR_REG_FPCR:
        return a64::sysreg_fpcr;
    default:
        assert(operand.reg == DR_REG_FPSR);
        return a64::sysreg_fpsr;
    }
}

} // namespace

extern "C" {

instr_t* INSTR_CREATE_str(void*, opnd_t mem, opnd_t rt) { return create_load_store(false, rt, mem); }
instr_t* INSTR_CREATE_ldr(void*, opnd_t rt, opnd_t mem) { return create_load_store(true, rt, mem); }

instr_t* INSTR_CREATE_stp(void*, opnd_t mem, opnd_t rt1, opnd_t rt2) {
    return create_pair(false, rt1, rt2, mem);
}
instr_t* INSTR_CREATE_ldp(void*, opnd_t rt1, opnd_t rt2, opnd_t mem) {
    assert(rt1.reg != rt2.reg);
    return create_pair(true, rt1, rt2, mem);
}

instr_t* INSTR_CREATE_mrs(void*, opnd_t xt, opnd_t sysreg) {
    return instruction_from_word(a64::mrs(x_register_of(xt), system_register_of(sysreg)));
}
instr_t* INSTR_CREATE_msr(void*, opnd_t sysreg, opnd_t xt) {
    return instruction_from_word(a64::msr(system_register_of(sysreg), x_register_of(xt)));
}

instr_t* XINST_CREATE_move(void*, opnd_t d, opnd_t s) {
    const unsigned bytes = register_bytes(d.reg);
    assert(reg_is_gpr(d.reg) && reg_is_gpr(s.reg) && bytes == register_bytes(s.reg));
    if (is_stack_pointer(d.reg) || is_stack_pointer(s.reg)) {
        assert(bytes == 8 && !is_zero_register(d.reg) && !is_zero_register(s.reg));
        return instruction_from_word(a64::add_immediate(register_of(d), register_of(s), 0));
    }
    return instruction_from_word(
        a64::orr_register(bytes == 8, register_of(d), a64::zero_register, register_of(s)));
}

void instrlist_insert_mov_immed_ptrsz(void*, ptr_int_t val, opnd_t dst, instrlist_t* ilist, instr_t* where,
                                      instr_t** first, instr_t** last) {
    instr_t* inserted_first = nullptr;
    instr_t* inserted_last = nullptr;
    if (dst.reg != DR_REG_XZR) {
        const unsigned rd = numbered_x_register(dst.reg);
        const std::uint64_t value = static_cast<std::uint64_t>(val);
        // The lowest half that is not 0, or the lowest of a value of 0, clears the others.
        for (unsigned half = 0; half < 4; ++half) {
            const unsigned bits = value >> (16 * half) & 0xFFFF;
            if (bits == 0 && !(value == 0 && half == 0))
                continue;
            inserted_last = instruction_from_word(inserted_first == nullptr ? a64::movz(rd, bits, half)
                                                                            : a64::movk(rd, bits, half));
            instrlist_meta_preinsert(ilist, where, inserted_last);
            if (inserted_first == nullptr)
                inserted_first = inserted_last;
        }
    }
    if (first != nullptr)
        *first = inserted_first;
    if (last != nullptr)
        *last = inserted_last;
}

} // extern "C"
