#include "sve/handlers/fp_multiply_add.h"

#include "sve/handlers/fp_elements.h"

aarch64_decode_rc sve_fnmla_zpzz(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return dispatch_fp_elements(zda.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        std::uint8_t* const row_bytes = vector_row(state, zda.reg);
        return compute_active_fp<element>(
            row_bytes, predicate_row(state, pg.reg),
            [fp = host_fp(state)](auto addend, auto a, auto b) { return fp.fnmadd(addend, a, b); }, row_bytes,
            vector_row(state, zn.reg), vector_row(state, zm.reg));
    });
}

aarch64_decode_rc sve_frecpe_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
    return map_fp<[](host_fp fp, auto a) { return fp.frecpe(a); }>(state, zd, zn);
}

aarch64_decode_rc sve_frecps_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return map_fp<[](host_fp fp, auto a, auto b) { return fp.frecps(a, b); }>(state, zd, zn, zm);
}
