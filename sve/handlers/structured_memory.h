// Structured predicated loads and stores, LD2 to LD4 and ST2 to ST4: records of N elements in memory, element
// k of each of them in the k-th of N consecutive registers, of which the one after Z31 is Z0.
//
// A name is sve_ld or sve_st, the number N of registers, the element size (b, h, w, d: 1, 2, 4, 8 bytes), and
// the addressing. With elements of E bytes, the address is rn + imm4 * N * 128 (_zpri) or rn + rm * E
// (_scaled_zprr), modulo 2^64. Element i of register k stands at the address plus (i * N + k) * E, at any
// alignment. A load zeroes the inactive elements of every register; an inactive record is never accessed. A
// fault kills the process or is the signal handler's affair: the records below the faulting one have then
// been transferred, of it the elements below the faulting one, and no other. All return 0.
#pragma once

#include "sve/handlers/contiguous_memory.h"

// The body of the loads: T is the element's type, U that of an element in memory, which is of the same size;
// `offset` is that of the first record from rn, in elements.
template <class T, class U, int N>
aarch64_decode_rc sve_ldN_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg rn,
                               std::int64_t offset);

// Operands as of contiguous loads and stores.
contiguous_immediate_handler sve_ld2b_zpri, sve_ld3b_zpri, sve_ld4b_zpri;
contiguous_immediate_handler sve_ld2h_zpri, sve_ld3h_zpri, sve_ld4h_zpri;
contiguous_immediate_handler sve_ld2w_zpri, sve_ld3w_zpri, sve_ld4w_zpri;
contiguous_immediate_handler sve_ld2d_zpri, sve_ld3d_zpri, sve_ld4d_zpri;

contiguous_scaled_handler sve_ld2b_scaled_zprr, sve_ld3b_scaled_zprr, sve_ld4b_scaled_zprr;
contiguous_scaled_handler sve_ld2h_scaled_zprr, sve_ld3h_scaled_zprr, sve_ld4h_scaled_zprr;
contiguous_scaled_handler sve_ld2w_scaled_zprr, sve_ld3w_scaled_zprr, sve_ld4w_scaled_zprr;
contiguous_scaled_handler sve_ld2d_scaled_zprr, sve_ld3d_scaled_zprr, sve_ld4d_scaled_zprr;

contiguous_immediate_handler sve_st2b_zpri, sve_st3b_zpri, sve_st4b_zpri;
contiguous_immediate_handler sve_st2h_zpri, sve_st3h_zpri, sve_st4h_zpri;
contiguous_immediate_handler sve_st2w_zpri, sve_st3w_zpri, sve_st4w_zpri;
contiguous_immediate_handler sve_st2d_zpri, sve_st3d_zpri, sve_st4d_zpri;

contiguous_scaled_handler sve_st2b_scaled_zprr, sve_st3b_scaled_zprr, sve_st4b_scaled_zprr;
contiguous_scaled_handler sve_st2h_scaled_zprr, sve_st3h_scaled_zprr, sve_st4h_scaled_zprr;
contiguous_scaled_handler sve_st2w_scaled_zprr, sve_st3w_scaled_zprr, sve_st4w_scaled_zprr;
contiguous_scaled_handler sve_st2d_scaled_zprr, sve_st3d_scaled_zprr, sve_st4d_scaled_zprr;
