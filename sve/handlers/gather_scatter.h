// Gather loads and scatter stores, of which each element has an address of its own, and ADR, which computes
// such addresses.
//
// A name is sve_ld1 or sve_st1, memory size, extension and element size as for contiguous loads and stores,
// and how the address of element i is made, modulo 2^64; M is the memory size in bytes:
//     _zpzi                 zn[i] + imm5 * M
//     _zpzr                 rn + zm[i]
//     _scaled_zprz          rn + zm[i] * M
//     _sxtw_..., _uxtw_...  the same with the low 32 bits of zm[i], extended to 64 bits with or without sign
// Elements are transferred in ascending order: of two that are stored at one address the higher one stays. A
// load zeroes the inactive elements; an inactive element's memory is never accessed. A fault kills the
// process or is the signal handler's affair: the elements below the faulting one have then been transferred,
// and no other has. All return 0.
#pragma once

#include "sve/decode/cpu_state.h"

// Operands: data register, governing predicate, and what the address is made of.
using vector_base_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                              aarch64_z_reg zn, unsigned int imm5);
using vector_offset_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                                aarch64_z_reg zm, aarch64_i_rsp_reg rn);
using scaled_vector_offset_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                                       aarch64_i_rsp_reg rn, aarch64_z_reg zm);

vector_base_handler sve_ld1b_d_zpzi, sve_ld1sb_d_zpzi, sve_ld1h_d_zpzi, sve_ld1sh_d_zpzi;
vector_base_handler sve_ld1w_d_zpzi, sve_ld1sw_d_zpzi, sve_ld1d_zpzi;
vector_base_handler sve_st1b_d_zpzi, sve_st1h_d_zpzi, sve_st1w_d_zpzi, sve_st1d_zpzi;

vector_offset_handler sve_ld1b_d_zpzr, sve_ld1sb_d_zpzr, sve_ld1h_d_zpzr, sve_ld1sh_d_zpzr;
vector_offset_handler sve_ld1w_d_zpzr, sve_ld1sw_d_zpzr, sve_ld1d_zpzr;
vector_offset_handler sve_st1b_d_zpzr, sve_st1h_d_zpzr, sve_st1w_d_zpzr, sve_st1d_zpzr;

vector_offset_handler sve_ld1b_s_sxtw_zpzr, sve_ld1sb_s_sxtw_zpzr, sve_ld1h_s_sxtw_zpzr;
vector_offset_handler sve_ld1sh_s_sxtw_zpzr, sve_ld1w_sxtw_zpzr;
vector_offset_handler sve_ld1b_d_sxtw_zpzr, sve_ld1sb_d_sxtw_zpzr, sve_ld1sb_d_uxtw_zpzr;
vector_offset_handler sve_st1b_s_sxtw_zpzr, sve_st1h_s_sxtw_zpzr, sve_st1w_sxtw_zpzr, sve_st1b_d_sxtw_zpzr;

scaled_vector_offset_handler sve_ld1h_d_scaled_zprz, sve_ld1sh_d_scaled_zprz, sve_ld1w_d_scaled_zprz;
scaled_vector_offset_handler sve_ld1sw_d_scaled_zprz, sve_ld1d_scaled_zprz;
scaled_vector_offset_handler sve_st1h_d_scaled_zprz, sve_st1w_d_scaled_zprz, sve_st1d_scaled_zprz;

scaled_vector_offset_handler sve_ld1h_s_sxtw_scaled_zprz, sve_ld1sh_s_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_ld1w_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_ld1h_d_sxtw_scaled_zprz, sve_ld1sh_d_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_ld1w_d_sxtw_scaled_zprz, sve_ld1sw_d_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_ld1d_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_ld1sh_d_uxtw_scaled_zprz, sve_ld1d_uxtw_scaled_zprz;
scaled_vector_offset_handler sve_st1h_s_sxtw_scaled_zprz, sve_st1w_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_st1h_d_sxtw_scaled_zprz, sve_st1w_d_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_st1d_sxtw_scaled_zprz;
scaled_vector_offset_handler sve_st1w_d_uxtw_scaled_zprz, sve_st1d_uxtw_scaled_zprz;

// ADR: zd[i] = zn[i] + (zm[i] << scale), in doublewords or, if bit 22 of the instruction word is clear, in
// words. The scale is in bits 11:10 of the instruction word in the state.
aarch64_decode_rc sve_adr_scaled_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
