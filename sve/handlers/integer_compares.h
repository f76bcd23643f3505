// Integer compares of vector elements into a predicate, at the fixed length of 1024 bits.
//
// An element of pd becomes true where pg is active and the comparison holds; inactive elements become false.
// The lane of each element is written whole, as 0 or 1. The element size is `pd.kind`. N is set if the first
// active element is true, Z if none is, C if the last is not (or none is active), V is cleared. pd may be pg:
// the flags are those of the old pg. All return aarch64_emulated.
#pragma once

#include "sve/decode/cpu_state.h"

using compare_vectors_handler = aarch64_decode_rc(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                                  aarch64_z_reg zn, aarch64_z_reg zm);
using compare_signed_immediate_handler = aarch64_decode_rc(cpu_state* state, aarch64_p_reg pd,
                                                           aarch64_p_reg pg, aarch64_z_reg zn, int imm);
using compare_unsigned_immediate_handler = aarch64_decode_rc(cpu_state* state, aarch64_p_reg pd,
                                                             aarch64_p_reg pg, aarch64_z_reg zn,
                                                             unsigned int imm);

// zn with zm: equal, not equal, greater and greater or equal as signed, the same two as unsigned numbers.
compare_vectors_handler sve_cmpeq_ppzz, sve_cmpne_ppzz;
compare_vectors_handler sve_cmpgt_ppzz, sve_cmpge_ppzz;
compare_vectors_handler sve_cmphi_ppzz, sve_cmphs_ppzz;

// zn with the immediate, truncated or sign-extended to the element: equal, not equal, greater, less, less or
// equal, signed.
compare_signed_immediate_handler sve_cmpeq_ppzi, sve_cmpne_ppzi;
compare_signed_immediate_handler sve_cmpgt_ppzi, sve_cmplt_ppzi, sve_cmple_ppzi;

// The same with an unsigned immediate: greater, less.
compare_unsigned_immediate_handler sve_cmphi_ppzi, sve_cmplo_ppzi;
