// Predicates made from scalars and from named patterns. The element size is the destination's kind; each
// element's lane of the destination is written whole, as 0 or 1. All return 0.
#pragma once

#include "sve/decode/cpu_state.h"

// WHILE: element i is true while rn + i compares so to rm, at the width of the registers: 64 bits if rn's
// kind is 3, else 32, with the upper bits ignored. From the first element that is not, none is. Sets N if the
// first element is true, Z if none is, C if the last is not; clears V.
aarch64_decode_rc sve_whilelo_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn,
                                  aarch64_i_reg rm); // unsigned, less; the sum wraps
aarch64_decode_rc sve_whilels_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn,
                                  aarch64_i_reg rm); // unsigned, less or equal; the sum wraps
aarch64_decode_rc sve_whilelt_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn,
                                  aarch64_i_reg rm); // signed, less

// PTRUE: as many leading elements as the 5-bit pattern says of the element count n are true: 1 to 8 and 9 to
// 13 stand for 1 to 8 and 16 to 256, or none if n is less; 29 and 30 for the multiples of 4 and of 3 not
// above n; 0 and 31 for n; others for none. Leaves the flags.
aarch64_decode_rc sve_ptrue_pi(cpu_state* state, aarch64_p_reg pd, int pattern);

// PFALSE: clears all 128 bytes.
aarch64_decode_rc sve_pfalse_p(cpu_state* state, aarch64_p_reg pd);
