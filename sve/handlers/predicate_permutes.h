// Predicates whose elements are those of another in another order or at another width. All return 0.
#pragma once

#include "sve/decode/cpu_state.h"

// REV: the lanes of pn in reverse order, whole, at the element size of pd's kind.
aarch64_decode_rc sve_rev_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn);

// PUNPKLO, PUNPKHI: each bit of the low or high half of pn becomes the value of a lane of two bytes.
aarch64_decode_rc sve_punpklo_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn);
aarch64_decode_rc sve_punpkhi_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn);

// ZIP1, ZIP2, UZP1, TRN1: the lanes of pn and pm, whole, at the element size of pd's kind. With n elements:
// the first, or the last, n / 2 of both alternately; those of even index of pn, then of pm; those of even
// index of both alternately.
aarch64_decode_rc sve_zip1_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_zip2_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_uzp1_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_trn1_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm);
