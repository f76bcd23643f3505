// Floating-point arithmetic on one or two operands, in single and double precision, and the broadcast of a
// constant.
//
// No handler can fail; each returns aarch64_emulated. Any operands may be the same register. What an
// operation raises is in the host's status afterwards (host_fp::read_status); inactive elements raise
// nothing. NaNs, rounding and flushing are as the application's FPCR and the architecture have them.
#pragma once

#include "sve/decode/cpu_state.h"

// zdn[i] = pg[i] ? zdn[i] operation zm[i] : zdn[i]. The element size is `zdn.dest_kind`. The reversed forms
// compute zm[i] - zdn[i] and zm[i] / zdn[i].
using fp_predicated_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                                aarch64_z_reg zm);
fp_predicated_handler sve_fadd_zpz, sve_fsub_zpz, sve_fsubr_zpz, sve_fmul_zpz, sve_fdiv_zpz, sve_fdivr_zpz;
fp_predicated_handler sve_fmax_zpz, sve_fmaxnm_zpz, sve_fminnm_zpz;

// The same with a constant for zm[i]: 0.5 or, with i1 set, 1.0; fmul has 0.5 or 2.0.
using fp_constant_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                              aarch64_sve_fp_arith_imm imm);
fp_constant_handler sve_fadd_zpi, sve_fsub_zpi, sve_fsubr_zpi, sve_fmul_zpi;

// zd[i] = zn[i] operation zm[i], every element. The element size is `zd.kind`.
using fp_unpredicated_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                                  aarch64_z_reg zm);
fp_unpredicated_handler sve_fadd_zzz, sve_fsub_zzz, sve_fmul_zzz;

// zd[i] = pg[i] ? operation zn[i] : zd[i]. The element size is `zd.kind`. fneg inverts the sign of anything,
// NaNs too, and raises nothing.
using fp_unary_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                           aarch64_z_reg zn);
fp_unary_handler sve_fneg_zpz, sve_fsqrt_zpz;

// The constant in every element of zd, in the format that `zd.kind` says: half, single or double precision.
// Raises nothing.
aarch64_decode_rc sve_fdup_zi(cpu_state* state, aarch64_z_reg zd, aarch64_sve_fp_dup_imm imm);
