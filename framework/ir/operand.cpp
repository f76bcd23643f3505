#include "framework/ir/operand.h"

#include <cassert>

static bool in_range(reg_id_t reg, int first, int last) { return reg >= first && reg <= last; }

bool is_stack_pointer(reg_id_t reg) { return reg == DR_REG_XSP || reg == DR_REG_WSP; }
bool is_zero_register(reg_id_t reg) { return reg == DR_REG_XZR || reg == DR_REG_WZR; }

unsigned register_number(reg_id_t reg) {
    if (is_stack_pointer(reg) || is_zero_register(reg))
        return 31;
    if (in_range(reg, DR_REG_X0, DR_REG_X30))
        return reg - DR_REG_X0;
    if (in_range(reg, DR_REG_W0, DR_REG_W30))
        return reg - DR_REG_W0;
    assert(in_range(reg, DR_REG_Q0, DR_REG_Q31));
    return reg - DR_REG_Q0;
}

unsigned numbered_x_register(reg_id_t reg) {
    assert(in_range(reg, DR_REG_X0, DR_REG_X30));
    return reg - DR_REG_X0;
}

unsigned register_bytes(reg_id_t reg) {
    if (in_range(reg, DR_REG_X0, DR_REG_XZR))
        return 8;
    if (in_range(reg, DR_REG_W0, DR_REG_WZR))
        return 4;
    return in_range(reg, DR_REG_Q0, DR_REG_Q31) ? 16 : 0;
}

extern "C" {

reg_id_t dr_get_stolen_reg(void) { return DR_REG_X28; }
bool reg_is_stolen(reg_id_t reg) { return reg == DR_REG_X28 || reg == DR_REG_W28; }
bool reg_is_gpr(reg_id_t reg) { return in_range(reg, DR_REG_X0, DR_REG_WZR); }

uint opnd_size_in_bytes(opnd_size_t size) {
    switch (size) {
    case OPSZ_1:
        return 1;
    case OPSZ_2:
        return 2;
    case OPSZ_4:
        return 4;
    case OPSZ_8:
        return 8;
    case OPSZ_16:
        return 16;
    default:
        assert(size == OPSZ_NA);
        return 0;
    }
}

opnd_t opnd_create_reg(reg_id_t r) { return {register_operand, OPSZ_NA, r, 0, 0}; }

opnd_t opnd_create_immed_int(ptr_int_t i, opnd_size_t data_size) {
    return {immediate_operand, data_size, DR_REG_NULL, 0, i};
}

opnd_t opnd_create_immed_uint(ptr_uint_t i, opnd_size_t data_size) {
    assert(opnd_size_in_bytes(data_size) == 8 || i >> (8 * opnd_size_in_bytes(data_size)) == 0);
    return {immediate_operand, data_size, DR_REG_NULL, 0, static_cast<ptr_int_t>(i)};
}

opnd_t opnd_create_base_disp(reg_id_t base_reg, [[maybe_unused]] reg_id_t index_reg,
                             [[maybe_unused]] int scale, int disp, opnd_size_t data_size) {
    assert(index_reg == DR_REG_NULL && scale == 0);
    assert(reg_is_gpr(base_reg) && register_bytes(base_reg) == 8 && !is_zero_register(base_reg));
    return {memory_operand, data_size, base_reg, disp, 0};
}

} // extern "C"
