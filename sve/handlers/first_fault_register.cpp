#include "sve/handlers/first_fault_register.h"

#include "sve/handlers/elements.h"

namespace {

template <class Body> aarch64_decode_rc compute_bytes(std::uint8_t* destination, Body body) {
    return compute_row<std::uint8_t>(destination, body);
}

} // namespace

aarch64_decode_rc sve_setffr(cpu_state* state) {
    return compute_bytes(state->ffr, [](int) { return broadcast(std::uint8_t{1}); });
}

aarch64_decode_rc sve_rdffr_p(cpu_state* state, aarch64_p_reg pd) {
    return compute_bytes(state->p[pd.reg], [&](int i) { return load_chunk<std::uint8_t>(state->ffr, i); });
}

aarch64_decode_rc sve_rdffr_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg) {
    return compute_bytes(state->p[pd.reg], [&](int i) {
        return load_chunk<std::uint8_t>(state->ffr, i) & load_chunk<std::uint8_t>(state->p[pg.reg], i);
    });
}

aarch64_decode_rc sve_wrffr_p(cpu_state* state, aarch64_p_reg pn) {
    return compute_bytes(state->ffr, [&](int i) { return load_chunk<std::uint8_t>(state->p[pn.reg], i); });
}
