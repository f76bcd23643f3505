// Reductions of a vector's active elements to one value, at the fixed length of 1024 bits.
//
// The value goes to the lowest element of vd and the rest of that vector becomes 0. The element size is
// `zn.kind`. An inactive element counts as the operation's identity, and so an all-false predicate gives the
// identity. No handler changes a flag or can fail; each returns aarch64_emulated. vd may be zn.
#pragma once

#include "sve/decode/cpu_state.h"

using integer_reduction_handler = aarch64_decode_rc(cpu_state* state, unsigned int vd, aarch64_p_reg pg,
                                                    aarch64_z_reg zn);

// The sum of the zero-extended elements, in 64 bits whatever the element size.
integer_reduction_handler sve_uaddv_vpz;

// The least or the greatest element.
integer_reduction_handler sve_smaxv_vpz, sve_sminv_vpz, sve_umaxv_vpz, sve_uminv_vpz;

// Bit by bit.
integer_reduction_handler sve_andv_vpz, sve_orv_vpz, sve_eorv_vpz;
