// The inside of operands, and the register numbers that encodings take.
#pragma once

#include "dr_api.h"

enum operand_kind : byte { register_operand = 1, immediate_operand, memory_operand };

// The number of Xn or Wn, with 31 for the stack pointer and the zero register alike, or of Qn. Any other
// register is an assertion failure.
unsigned register_number(reg_id_t reg);

// The number of one of X0 to X30; anything else, the stack pointer and the zero register included, is an
// assertion failure.
unsigned numbered_x_register(reg_id_t reg);

// Bytes of a general or SIMD register: 4, 8 or 16; 0 for any other.
unsigned register_bytes(reg_id_t reg);

bool is_stack_pointer(reg_id_t reg);
bool is_zero_register(reg_id_t reg);
