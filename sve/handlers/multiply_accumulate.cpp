#include "sve/handlers/multiply_accumulate.h"

#include "sve/handlers/elements.h"

namespace {

constexpr auto add = [](auto addend, auto product) { return addend + product; };
constexpr auto subtract = [](auto addend, auto product) { return addend - product; };

// destination = pg ? combine(addend, a * b) : destination.
template <class Combine>
aarch64_decode_rc multiply_combine(cpu_state* state, aarch64_z_reg destination, aarch64_p_reg pg, int a,
                                   int b, int addend, Combine combine) {
    return dispatch_unsigned(destination.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        std::uint8_t* row_bytes = state->z[destination.reg];
        return compute_row<element>(row_bytes, [&](int i) {
            const chunk<element> product =
                load_chunk<element>(state->z[a], i) * load_chunk<element>(state->z[b], i);
            return blend<element>(active_lanes<element>(state->p[pg.reg], i),
                                  combine(load_chunk<element>(state->z[addend], i), product),
                                  load_chunk<element>(row_bytes, i));
        });
    });
}

} // namespace

aarch64_decode_rc sve_mla_zpzz(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn,
                               aarch64_z_reg zm) {
    return multiply_combine(state, zda, pg, zn.reg, zm.reg, zda.reg, add);
}
aarch64_decode_rc sve_mls_zpzz(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn,
                               aarch64_z_reg zm) {
    return multiply_combine(state, zda, pg, zn.reg, zm.reg, zda.reg, subtract);
}
aarch64_decode_rc sve_mad_zpzz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                               aarch64_z_reg za) {
    return multiply_combine(state, zdn, pg, zdn.reg, zm.reg, za.reg, add);
}
aarch64_decode_rc sve_msb_zpzz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                               aarch64_z_reg za) {
    return multiply_combine(state, zdn, pg, zdn.reg, zm.reg, za.reg, subtract);
}
