// Vectors filled without arithmetic on their old elements: dup, cpy, index, sel, move-prefix, and the logical
// operations with a bitmask immediate.
//
// No handler changes a flag or can fail; each returns aarch64_emulated. Any operands may be the same
// register.
#pragma once

#include "sve/decode/cpu_state.h"

// Every element of zd becomes the immediate, truncated to the element or, for doublewords, sign-extended; the
// low bits of rn; the mask. The element size is `zd.kind`.
aarch64_decode_rc sve_dup_zi(cpu_state* state, aarch64_z_reg zd, int imm);
aarch64_decode_rc sve_dup_zr(cpu_state* state, aarch64_z_reg zd, aarch64_i_rsp_reg rn);
aarch64_decode_rc sve_dupm_zi(cpu_state* state, aarch64_z_reg zd, aarch64_sve_logical64_imm mask);

// Every element of zd becomes element `index` of zn, or 0 where that lies beyond the vector. `zd.kind` may be
// quadword_elements too.
aarch64_decode_rc sve_dup_zzi(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int index);

// The active elements of zd become the immediate (as in sve_dup_zi), the low bits of rn, or the lowest
// element of vn. Inactive elements keep their values; in the immediate form they become 0 where `pg.kind` is
// zeroing.
aarch64_decode_rc sve_cpy_zpi(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, int imm);
aarch64_decode_rc sve_cpy_zpr(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_i_rsp_reg rn);
aarch64_decode_rc sve_cpy_zpv(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg vn);

// zd[i] = pg[i] ? zn[i] : zm[i]. The element size is `zd.kind`.
aarch64_decode_rc sve_sel_zpzz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn,
                               aarch64_z_reg zm);

// zd[i] = base + i * step, wrapping at the element, whose size is `zd.kind`.
aarch64_decode_rc sve_index_zii(cpu_state* state, aarch64_z_reg zd, int base, int step);
aarch64_decode_rc sve_index_zir(cpu_state* state, aarch64_z_reg zd, int base, aarch64_i_reg step);
aarch64_decode_rc sve_index_zri(cpu_state* state, aarch64_z_reg zd, aarch64_i_reg base, int step);
aarch64_decode_rc sve_index_zrr(cpu_state* state, aarch64_z_reg zd, aarch64_i_reg base, aarch64_i_reg step);

// Copies zn to zd: its active elements, with the others kept or, where `pg.kind` is zeroing, made 0; or all.
// The element size is `zd.kind`.
aarch64_decode_rc sve_movprfx_zpz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_movprfx_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn);

// zdn = zdn operation mask, in doublewords.
aarch64_decode_rc sve_and_zi(cpu_state* state, aarch64_z_reg zdn, aarch64_sve_logical64_imm mask);
aarch64_decode_rc sve_orr_zi(cpu_state* state, aarch64_z_reg zdn, aarch64_sve_logical64_imm mask);
aarch64_decode_rc sve_eor_zi(cpu_state* state, aarch64_z_reg zdn, aarch64_sve_logical64_imm mask);
