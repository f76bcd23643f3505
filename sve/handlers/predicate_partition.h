// Predicates that break off at an element of another predicate, and the step to the next active element. All
// return 0.
#pragma once

#include "sve/decode/cpu_state.h"

// BRKA, BRKB: the active bytes up to the first that is active and true in pn are true; BRKA includes that
// byte, BRKB does not. Inactive bytes are cleared if pg's kind is zeroing, else left as they are. Leave the
// flags.
aarch64_decode_rc sve_brka_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn);
aarch64_decode_rc sve_brkb_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn);

// BRKN: leaves pdm if pn's byte at the last active byte of pg is not zero, all of its eight bits taken; else,
// and if nothing is active, clears it. With flags: those of the new pdm, every byte of it being looked at.
aarch64_decode_rc sve_brkn(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn,
                           bool flags);
aarch64_decode_rc sve_brkn_ppp(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn);
aarch64_decode_rc sve_brkns_ppp(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn);

// BRKPB: if pn's byte at the last active byte of pg is not zero, the active bytes before the first that is
// active and true in pm are true. All others are false. With flags: those of the result governed by pg.
aarch64_decode_rc sve_brkpb(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                            aarch64_p_reg pm, bool flags);
aarch64_decode_rc sve_brkpb_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                 aarch64_p_reg pm);
aarch64_decode_rc sve_brkpbs_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                  aarch64_p_reg pm);

// PNEXT, at the element size of pdn's dest_kind2: makes true the first element active in pg behind the last
// that is true in pdn, whether that one is active or not, and no other. Sets the flags of the result governed
// by pg.
aarch64_decode_rc sve_pnext_pp(cpu_state* state, aarch64_p_reg pdn, aarch64_p_reg pg);
