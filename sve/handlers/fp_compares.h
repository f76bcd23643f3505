// Floating-point compares into predicates, in single and double precision.
//
// pd[i] = pg[i] and zn[i] compared with zm[i] or with zero; the other predicate bits of each element are
// cleared. The element size is `pd.kind`. The flags stay as they are. No handler can fail; each returns
// aarch64_emulated. pd may be pg. What a comparison raises is in the host's status afterwards
// (host_fp::read_status): ge, gt, le and lt raise IOC for every NaN, eq, ne and uo for signalling ones.
// Inactive elements raise nothing.
#pragma once

#include "sve/decode/cpu_state.h"

// uo is whether an operand is a NaN; of the others ne alone holds for NaNs.
using fp_compare_handler = aarch64_decode_rc(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                             aarch64_z_reg zn, aarch64_z_reg zm);
fp_compare_handler sve_fcmeq_ppzz, sve_fcmne_ppzz, sve_fcmge_ppzz, sve_fcmgt_ppzz, sve_fcmuo_ppzz;

using fp_compare_zero_handler = aarch64_decode_rc(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                                  aarch64_z_reg zn);
fp_compare_zero_handler sve_fcmeq_ppz, sve_fcmge_ppz, sve_fcmgt_ppz, sve_fcmle_ppz, sve_fcmlt_ppz;
