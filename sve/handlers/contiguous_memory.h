// Contiguous predicated loads and stores, LD1 and ST1: a run of memory elements to or from one vector
// register, widened on load and narrowed on store.
//
// A name is sve_ld1 or sve_st1; the size in memory (b, h, w, d: 1, 2, 4, 8 bytes), after an s if a load sign-
// extends; the element size in the register if it is wider (_h, _s, _d: 2, 4, 8 bytes); and the addressing.
//
// With n elements in the register and M bytes for one in memory, the address is rn + imm4 * n * M (_zpri) or
// rn + rm * M (_scaled_zprr), modulo 2^64. Element i stands at the address plus i * M, at any alignment. A
// load zeroes the inactive elements; an inactive element's memory is never accessed. A fault kills the
// process or is the signal handler's affair: the elements below the faulting one have then been transferred,
// and no other has. All return 0.
#pragma once

#include "sve/decode/cpu_state.h"

// Operands: data register, governing predicate, base, and an immediate or an index.
using contiguous_immediate_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                                       aarch64_i_rsp_reg rn, int imm4);
using contiguous_scaled_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                                    aarch64_i_rsp_reg rn, aarch64_i_reg rm);

contiguous_immediate_handler sve_ld1b_zpri, sve_ld1b_h_zpri, sve_ld1b_s_zpri, sve_ld1b_d_zpri;
contiguous_immediate_handler sve_ld1sb_h_zpri, sve_ld1sb_s_zpri, sve_ld1sb_d_zpri;
contiguous_immediate_handler sve_ld1h_zpri, sve_ld1h_s_zpri, sve_ld1h_d_zpri;
contiguous_immediate_handler sve_ld1sh_s_zpri, sve_ld1sh_d_zpri;
contiguous_immediate_handler sve_ld1w_zpri, sve_ld1w_d_zpri, sve_ld1sw_d_zpri;
contiguous_immediate_handler sve_ld1d_zpri;

contiguous_immediate_handler sve_st1b_zpri, sve_st1b_h_zpri, sve_st1b_s_zpri, sve_st1b_d_zpri;
contiguous_immediate_handler sve_st1h_zpri, sve_st1h_s_zpri, sve_st1h_d_zpri;
contiguous_immediate_handler sve_st1w_zpri, sve_st1w_d_zpri;
contiguous_immediate_handler sve_st1d_zpri;

contiguous_scaled_handler sve_ld1b_scaled_zprr, sve_ld1b_h_scaled_zprr, sve_ld1b_s_scaled_zprr;
contiguous_scaled_handler sve_ld1b_d_scaled_zprr;
contiguous_scaled_handler sve_ld1sb_h_scaled_zprr, sve_ld1sb_s_scaled_zprr, sve_ld1sb_d_scaled_zprr;
contiguous_scaled_handler sve_ld1h_scaled_zprr, sve_ld1h_s_scaled_zprr, sve_ld1h_d_scaled_zprr;
contiguous_scaled_handler sve_ld1sh_s_scaled_zprr, sve_ld1sh_d_scaled_zprr;
contiguous_scaled_handler sve_ld1w_scaled_zprr, sve_ld1w_d_scaled_zprr, sve_ld1sw_d_scaled_zprr;
contiguous_scaled_handler sve_ld1d_scaled_zprr;

contiguous_scaled_handler sve_st1b_scaled_zprr, sve_st1b_h_scaled_zprr, sve_st1b_s_scaled_zprr;
contiguous_scaled_handler sve_st1b_d_scaled_zprr;
contiguous_scaled_handler sve_st1h_scaled_zprr, sve_st1h_s_scaled_zprr, sve_st1h_d_scaled_zprr;
contiguous_scaled_handler sve_st1w_scaled_zprr, sve_st1w_d_scaled_zprr;
contiguous_scaled_handler sve_st1d_scaled_zprr;
