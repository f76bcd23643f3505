// FNMLA and the reciprocal estimates in single and double precision: of their families the ones that are
// carried out on the register file.
//
// No handler can fail; each returns aarch64_emulated. Any operands may be the same register. What an
// operation raises is in the host's status afterwards (host_fp::read_status); inactive elements raise
// nothing.
#pragma once

#include "sve/decode/cpu_state.h"

// zda[i] = pg[i] ? -zda[i] - zn[i] * zm[i], rounded once : zda[i]. A NaN in zda or zn comes out with its sign
// inverted. The element size is `zda.dest_kind`.
aarch64_decode_rc sve_fnmla_zpzz(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm);

// zd[i] = an estimate of 1 / zn[i], and the step 2 - zn[i] * zm[i], rounded once, that refines one; every
// element. The element size is `zd.kind`.
aarch64_decode_rc sve_frecpe_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn);
aarch64_decode_rc sve_frecps_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
