// The last active element of a vector moved to a scalar, at the fixed length of 1024 bits.
//
// The element size is that of the source vector's `kind`. No handler changes a flag or can fail; each returns
// aarch64_emulated.
#pragma once

#include "sve/decode/cpu_state.h"

// The last active element of zn, or its last element if none is active: zero-extended to rd, unless that is
// register 31; or to the lowest element of vd, the rest of which becomes 0. vd may be zn.
aarch64_decode_rc sve_lastb_rpz(cpu_state* state, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_lastb_vpz(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn);

// The last active element of zm, zero-extended, to rdn, unless that is register 31. If none is active, rdn
// keeps as many low bits as an element has, and the others become 0.
aarch64_decode_rc sve_clastb_rpz(cpu_state* state, aarch64_i_reg rdn, aarch64_p_reg pg, aarch64_z_reg zm);
