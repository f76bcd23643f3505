// Replicating loads, LD1R: one element from memory in every active element of a register.
//
// A name is sve_ld1r, then memory size, extension and element size as for contiguous loads. With M bytes for
// the element in memory, the address is rn + imm6 * M, modulo 2^64, at any alignment. Inactive elements are
// zeroed. Without an active element, memory is not accessed. A fault kills the process or is the signal
// handler's affair: the elements below the first active one have then been zeroed, and nothing else has
// changed. All return 0.
#pragma once

#include "sve/decode/cpu_state.h"

// Operands: data register, governing predicate, base, and an immediate.
using replicating_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                              aarch64_i_rsp_reg rn, unsigned int imm6);

replicating_handler sve_ld1rb_zpri, sve_ld1rb_h_zpri, sve_ld1rb_s_zpri, sve_ld1rb_d_zpri;
replicating_handler sve_ld1rsb_h_zpri, sve_ld1rsb_s_zpri, sve_ld1rsb_d_zpri;
replicating_handler sve_ld1rh_zpri, sve_ld1rh_s_zpri, sve_ld1rh_d_zpri;
replicating_handler sve_ld1rsh_s_zpri, sve_ld1rsh_d_zpri;
replicating_handler sve_ld1rw_zpri, sve_ld1rw_d_zpri, sve_ld1rsw_d_zpri;
replicating_handler sve_ld1rd_zpri;
