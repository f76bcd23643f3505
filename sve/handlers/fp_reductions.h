// FMAXNMV and FMINNMV in single and double precision.
#pragma once

#include "sve/decode/cpu_state.h"

// The largest or smallest active element of zn, in the lowest element of vector register vd; the rest of it
// is cleared. Neighbours are combined first, then neighbouring results, in the order of the elements, those
// that are inactive being default NaNs; a number is preferred to a quiet NaN. With no active element the
// result is the default NaN. The element size is `zn.kind`. Cannot fail; vd may be zn. What the operations
// raise is in the host's status afterwards (host_fp::read_status).
using fp_reduction_handler = aarch64_decode_rc(cpu_state* state, unsigned int vd, aarch64_p_reg pg,
                                               aarch64_z_reg zn);
fp_reduction_handler sve_fmaxnmv_vpz, sve_fminnmv_vpz;
