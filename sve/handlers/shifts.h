// Shifts of vector elements at the fixed length of 1024 bits, by another vector's elements or by an
// immediate.
//
// A count is unsigned and counts in full, however large: at or above the element's width a left or logical
// right shift gives 0, and an arithmetic one fills the element with its sign. The element size is the first
// record's `dest_kind`, or `kind` where there is no predicate; inactive elements keep the destination. No
// handler changes a flag or can fail; each returns aarch64_emulated. Any operands may be the same register.
#pragma once

#include "sve/decode/cpu_state.h"

using shift_by_vector_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                                  aarch64_z_reg zm);
using predicated_shift_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                                   unsigned int count);
using shift_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                        unsigned int count);

// zdn[i] = zdn[i] shifted by zm[i].
shift_by_vector_handler sve_lsl_zpz, sve_lsr_zpz, sve_asr_zpz;

// zdn[i] = zdn[i] shifted by the count.
predicated_shift_handler sve_lsl_zpi, sve_asr_zpi;

// zd[i] = zn[i] shifted by the count.
shift_handler sve_lsl_zzi, sve_asr_zzi;
