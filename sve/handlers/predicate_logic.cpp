#include "sve/handlers/predicate_logic.h"

#include "sve/handlers/elements.h"

namespace {

using bytes = chunk<std::uint8_t>;

template <class Operation>
aarch64_decode_rc combine(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                          aarch64_p_reg pm, Operation operation) {
    std::uint8_t* destination = state->p[pd.reg];
    const bytes kept = pg.kind == aarch64_p_reg::zeroing ? bytes{} : ~bytes{};
    return compute_row<std::uint8_t>(destination, [&](int i) {
        return blend<std::uint8_t>(active_lanes<std::uint8_t>(state->p[pg.reg], i),
                                   operation(load_chunk<std::uint8_t>(state->p[pn.reg], i),
                                             load_chunk<std::uint8_t>(state->p[pm.reg], i)),
                                   load_chunk<std::uint8_t>(destination, i) & kept);
    });
}

} // namespace

aarch64_decode_rc sve_and_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                               aarch64_p_reg pm) {
    return combine(state, pd, pg, pn, pm, [](bytes n, bytes m) { return n & m; });
}
aarch64_decode_rc sve_bic_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                               aarch64_p_reg pm) {
    return combine(state, pd, pg, pn, pm, [](bytes n, bytes m) { return n & ~m; });
}
aarch64_decode_rc sve_eor_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                               aarch64_p_reg pm) {
    return combine(state, pd, pg, pn, pm, [](bytes n, bytes m) { return n ^ m; });
}
aarch64_decode_rc sve_orr_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                               aarch64_p_reg pm) {
    return combine(state, pd, pg, pn, pm, [](bytes n, bytes m) { return n | m; });
}
aarch64_decode_rc sve_nor_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                               aarch64_p_reg pm) {
    return combine(state, pd, pg, pn, pm, [](bytes n, bytes m) { return (bytes)((n | m) == 0) & 1; });
}

aarch64_decode_rc sve_sel_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                               aarch64_p_reg pm) {
    return compute_row<std::uint8_t>(state->p[pd.reg], [&](int i) {
        return blend<std::uint8_t>(active_lanes<std::uint8_t>(state->p[pg.reg], i),
                                   load_chunk<std::uint8_t>(state->p[pn.reg], i),
                                   load_chunk<std::uint8_t>(state->p[pm.reg], i));
    });
}
