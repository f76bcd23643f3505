// Conversions of integers to single and double precision, and rounding to integral values with ties away from
// zero.
//
// Active elements of zn are converted, inactive ones leave the old element of zd whole. No handler can fail;
// each returns aarch64_emulated. zd may be zn. What an operation raises is in the host's status afterwards
// (host_fp::read_status); inactive elements raise nothing.
#pragma once

#include "sve/decode/cpu_state.h"

using fp_conversion_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                                aarch64_z_reg zn);

// The integral value that is nearest, in the same format. The element size is `zd.kind`.
fp_conversion_handler sve_frinta_zpz;

// Signed (scvtf) and unsigned (ucvtf) integers, rounded as FPCR says. The letters are the widths of integer
// and result, s for a word and d for a doubleword. The elements are as wide as the wider of both: s2d
// converts the low word of a doubleword, d2s clears the high word of one.
fp_conversion_handler sve_scvtf_s2s_zpz, sve_scvtf_s2d_zpz, sve_scvtf_d2s_zpz, sve_scvtf_d2d_zpz;
fp_conversion_handler sve_ucvtf_s2s_zpz, sve_ucvtf_s2d_zpz, sve_ucvtf_d2d_zpz;
