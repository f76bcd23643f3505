// Registers and vectors stepped by counts of elements: of the whole vector, of a predicate pattern, or of the
// active elements of a predicate; and address arithmetic in units of the vector length of 1024 bits.
//
// No handler changes a flag or can fail; each returns aarch64_emulated. Sums wrap. Register 31 is the zero
// register, which is not written, but for sve_addvl_rri and sve_addpl_rri, to which it is the stack pointer.
#pragma once

#include "sve/decode/cpu_state.h"

// rdn plus or minus multiplier times the number of elements that the pattern selects; the letter gives the
// element size.
aarch64_decode_rc sve_incb_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);
aarch64_decode_rc sve_inch_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);
aarch64_decode_rc sve_incw_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);
aarch64_decode_rc sve_incd_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);
aarch64_decode_rc sve_decb_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);
aarch64_decode_rc sve_dech_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);
aarch64_decode_rc sve_decw_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);
aarch64_decode_rc sve_decd_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);

// The same, to every element of zdn.
aarch64_decode_rc sve_inch_zii(cpu_state* state, aarch64_z_reg zdn, int pattern, int multiplier);
aarch64_decode_rc sve_incw_zii(cpu_state* state, aarch64_z_reg zdn, int pattern, int multiplier);
aarch64_decode_rc sve_incd_zii(cpu_state* state, aarch64_z_reg zdn, int pattern, int multiplier);
aarch64_decode_rc sve_dech_zii(cpu_state* state, aarch64_z_reg zdn, int pattern, int multiplier);
aarch64_decode_rc sve_decw_zii(cpu_state* state, aarch64_z_reg zdn, int pattern, int multiplier);
aarch64_decode_rc sve_decd_zii(cpu_state* state, aarch64_z_reg zdn, int pattern, int multiplier);

// rdn minus multiplier times the number of bytes that the pattern selects, but not below 0. Where
// `rdn.dest_kind` is not doubleword, only the low 32 bits of rdn are read and the result is zero-extended.
aarch64_decode_rc sve_uqdecb_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier);

// rdn plus the number of active elements of pm, whose element size is `pm.kind`.
aarch64_decode_rc sve_incp_rp(cpu_state* state, aarch64_i_reg rdn, aarch64_p_reg pm);

// rd = the number of elements that are active in both pg and pn; the element size is `pn.kind`.
aarch64_decode_rc sve_cntp_rpp(cpu_state* state, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_p_reg pn);

// rd = rn + imm vectors in bytes; rn + imm predicates in bytes (an eighth of a vector); imm vectors in bytes.
aarch64_decode_rc sve_addvl_rri(cpu_state* state, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm);
aarch64_decode_rc sve_addpl_rri(cpu_state* state, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm);
aarch64_decode_rc sve_rdvl_ri(cpu_state* state, aarch64_i_reg rd, int imm);
