// Predicated operations on single integer elements at the fixed length of 1024 bits.
//
// zd[i] = pg[i] ? operation(zn[i]) : zd[i]. The element size is `zd.kind`; a code for which an operation has
// no form counts as the smallest that has one. No handler changes a flag or can fail; each returns
// aarch64_emulated. Any operands may be the same register.
#pragma once

#include "sve/decode/cpu_state.h"

using unary_integer_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                                aarch64_z_reg zn);

// Zero minus the element, wrapping.
unary_integer_handler sve_neg_zpz;

// The element's bits in reverse order; a doubleword's two words exchanged.
unary_integer_handler sve_rbit_zpz, sve_revw_zpz;

// The element's low byte, halfword or word, extended by its sign or with zeros.
unary_integer_handler sve_sxtb_zpz, sve_sxth_zpz, sve_sxtw_zpz;
unary_integer_handler sve_uxth_zpz, sve_uxtw_zpz;
