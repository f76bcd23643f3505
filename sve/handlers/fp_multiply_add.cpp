#include "sve/handlers/fp_multiply_add.h"

#include "sve/handlers/fp_elements.h"

aarch64_decode_rc sve_fnmla_zpzz(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return dispatch_fp_elements(zda.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        return compute_active_elements<element>(
            state->z[zda.reg], state->p[pg.reg],
            [fp = host_fp(state)](element addend, element a, element b) { return fp.fnmadd(addend, a, b); },
            state->z[zda.reg], state->z[zn.reg], state->z[zm.reg]);
    });
}

aarch64_decode_rc sve_frecpe_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
    return dispatch_fp_elements(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compute_elements<element>(
            state->z[zd.reg], [fp = host_fp(state)](element a) { return fp.frecpe(a); }, state->z[zn.reg]);
    });
}

aarch64_decode_rc sve_frecps_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return dispatch_fp_elements(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compute_elements<element>(
            state->z[zd.reg], [fp = host_fp(state)](element a, element b) { return fp.frecps(a, b); },
            state->z[zn.reg], state->z[zm.reg]);
    });
}
