#include "sve/handlers/multiply_accumulate.h"

#include "sve/handlers/elements.h"

namespace {

// destination = operation(element type, pg, destination, second, third), chunk by chunk; the operation itself
// keeps what is inactive.
template <class Operation>
[[gnu::always_inline]] inline aarch64_decode_rc merge_ternary(cpu_state* state, aarch64_z_reg destination,
                                                              aarch64_p_reg pg, aarch64_z_reg second,
                                                              aarch64_z_reg third, Operation operation) {
    return dispatch_unsigned(destination.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        std::uint8_t* const row_bytes = vector_row(state, destination.reg);
        const std::uint8_t* const predicate = predicate_row(state, pg.reg);
        const std::uint8_t* const second_bytes = vector_row(state, second.reg);
        const std::uint8_t* const third_bytes = vector_row(state, third.reg);
        return compute_lanes<element>(row_bytes, [&](int i) {
            const auto b = load_chunk<element>(second_bytes, i);
            const auto c = load_chunk<element>(third_bytes, i);
            return operation(zero, active_lanes<element>(predicate, i),
                             opaque(load_chunk<element>(row_bytes, i)), b, c);
        });
    });
}

} // namespace

aarch64_decode_rc sve_mla_zpzz(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn,
                               aarch64_z_reg zm) {
    return merge_ternary(state, zda, pg, zn, zm, [](auto, auto active, auto zda, auto zn, auto zm) {
        return zda + (zn & active) * zm;
    });
}
aarch64_decode_rc sve_mls_zpzz(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn,
                               aarch64_z_reg zm) {
    return merge_ternary(state, zda, pg, zn, zm, [](auto, auto active, auto zda, auto zn, auto zm) {
        return zda - (zn & active) * zm;
    });
}
aarch64_decode_rc sve_mad_zpzz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                               aarch64_z_reg za) {
    return merge_ternary(state, zdn, pg, zm, za,
                         []<class Element>(Element, auto active, auto zdn, auto zm, auto za) {
                             return blend<Element>(active, za + zdn * zm, zdn);
                         });
}
aarch64_decode_rc sve_msb_zpzz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                               aarch64_z_reg za) {
    return merge_ternary(state, zdn, pg, zm, za,
                         []<class Element>(Element, auto active, auto zdn, auto zm, auto za) {
                             return blend<Element>(active, za - zdn * zm, zdn);
                         });
}
