#include "sve/handlers/fp_reductions.h"

#include "sve/fp/fp_formats.h"
#include "sve/handlers/fp_elements.h"

namespace {

// Combines values[first] to values[first + count - 1] as a balanced tree; `count` is a power of two.
template <int first, int count, class Element, class Operation>
inline Element combine(const Element* values, Operation operation) {
    if constexpr (count == 1) {
        return values[first];
    } else {
        const Element low = combine<first, count / 2>(values, operation);
        const Element high = combine<first + count / 2, count / 2>(values, operation);
        return operation(low, high);
    }
}

template <class Operation>
aarch64_decode_rc reduce(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn,
                         Operation operation) {
    return dispatch_fp_elements(zn.kind, [&](auto zero) {
        using element = decltype(zero);
        std::uint8_t bytes[vector_bytes];
        compute_row<element>(bytes, [&](int i) {
            return blend<element>(active_lanes<element>(state->p[pg.reg], i),
                                  load_chunk<element>(state->z[zn.reg], i),
                                  broadcast(FPFormat<element>::default_nan));
        });
        element values[elements_per_row<element>];
        std::memcpy(values, bytes, vector_bytes);
        const element result = combine<0, elements_per_row<element>>(
            values, [fp = host_fp(state), operation](element a, element b) { return operation(fp, a, b); });
        return store_scalar(state->z[vd], result);
    });
}

} // namespace

aarch64_decode_rc sve_fmaxnmv_vpz(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return reduce(state, vd, pg, zn, [](host_fp fp, auto a, auto b) { return fp.fmaxnm(a, b); });
}
aarch64_decode_rc sve_fminnmv_vpz(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return reduce(state, vd, pg, zn, [](host_fp fp, auto a, auto b) { return fp.fminnm(a, b); });
}
