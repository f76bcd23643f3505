// Predicated multiply-add and multiply-subtract of integer vectors at the fixed length of 1024 bits.
//
// The element size is the first record's `dest_kind`; arithmetic wraps at the element, and inactive elements
// keep the destination. No handler changes a flag or can fail; each returns aarch64_emulated. Any operands
// may be the same register.
#pragma once

#include "sve/decode/cpu_state.h"

using multiply_accumulate_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg,
                                                      aarch64_z_reg zn, aarch64_z_reg zm);
using multiply_add_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                               aarch64_z_reg zm, aarch64_z_reg za);

// zda = zda + zn * zm, and zda - zn * zm.
multiply_accumulate_handler sve_mla_zpzz, sve_mls_zpzz;

// zdn = za + zdn * zm, and za - zdn * zm.
multiply_add_handler sve_mad_zpzz, sve_msb_zpzz;
