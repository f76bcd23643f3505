// Two-operand integer arithmetic and logic at the fixed length of 1024 bits: predicated, unpredicated and
// with an immediate.
//
// No handler changes a flag or can fail; each returns aarch64_emulated. Any operands may be the same
// register.
#pragma once

#include "sve/decode/cpu_state.h"

// zdn[i] = pg[i] ? zdn[i] operation zm[i] : zdn[i]. The element size is `zdn.dest_kind`. Arithmetic wraps at
// the element; bic is zdn & ~zm; mul keeps the low half of the product.
aarch64_decode_rc sve_add_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_sub_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_and_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_orr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_eor_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_bic_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_smin_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_smax_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_umin_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_umax_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_mul_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);

// Division of active elements, truncating towards zero; zdn / zm, and zm / zdn in the reversed forms. A
// divisor of 0 gives 0, and the most negative number divided by -1 gives itself, as the architecture has it.
// Elements are words or, where `zdn.dest_kind` says so, doublewords.
aarch64_decode_rc sve_sdiv_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_udiv_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_sdivr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_udivr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);

// zd[i] = zn[i] operation zm[i]. The element size of add and sub is `zd.kind`; the others are bitwise and do
// not look at it.
aarch64_decode_rc sve_add_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_sub_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_and_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_orr_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_eor_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_bic_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);

// zdn[i] = zdn[i] operation imm. The element size is `zdn.dest_kind`. The immediate is truncated to the
// element; for doublewords that of add and sub is zero-extended and that of mul sign-extended.
aarch64_decode_rc sve_add_zi(cpu_state* state, aarch64_z_reg zdn, unsigned int imm);
aarch64_decode_rc sve_sub_zi(cpu_state* state, aarch64_z_reg zdn, unsigned int imm);
aarch64_decode_rc sve_mul_zi(cpu_state* state, aarch64_z_reg zdn, int imm);
