// Whole registers to and from memory, LDR and STR: 128 bytes of a vector register, or the 128 bits of a
// predicate register in 16 bytes, bit j of byte b being predicate bit 8 * b + j.
//
// The address is rn plus the immediate times the size in memory, modulo 2^64, at any alignment. A fault kills
// the process or is the signal handler's affair; what part of the register or of the memory has then been
// written is not defined. All return 0.
#pragma once

#include "sve/decode/cpu_state.h"

aarch64_decode_rc sve_ldr_zri(cpu_state* state, aarch64_z_reg zt, aarch64_i_rsp_reg rn, int imm9);
aarch64_decode_rc sve_str_zri(cpu_state* state, aarch64_z_reg zt, aarch64_i_rsp_reg rn, int imm9);

// Every byte of the predicate row becomes 0 or 1.
aarch64_decode_rc sve_ldr_pri(cpu_state* state, aarch64_p_reg pt, aarch64_i_rsp_reg rn, int imm9);

// Only bit 0 of each byte of the predicate row counts.
aarch64_decode_rc sve_str_pri(cpu_state* state, aarch64_p_reg pt, aarch64_i_rsp_reg rn, int imm9);
