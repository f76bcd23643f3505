#include "sve/handlers/predicate_logic.h"

#include "sve/handlers/elements.h"

namespace {

using bytes = chunk<std::uint8_t>;

template <class Operation>
aarch64_decode_rc combine(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                          aarch64_p_reg pm, Operation operation) {
    std::uint8_t* const destination = predicate_row(state, pd.reg);
    const std::uint8_t* const governing = predicate_row(state, pg.reg);
    const std::uint8_t* const left = predicate_row(state, pn.reg);
    const std::uint8_t* const right = predicate_row(state, pm.reg);
    const bytes kept = pg.kind == aarch64_p_reg::zeroing ? bytes{} : ~bytes{};
    return compute_lanes<std::uint8_t>(destination, [&](int i) {
        return blend<std::uint8_t>(
            active_lanes<std::uint8_t>(governing, i),
            operation(load_chunk<std::uint8_t>(left, i), load_chunk<std::uint8_t>(right, i)),
            load_chunk<std::uint8_t>(destination, i) & kept);
    });
}

} // namespace

// A handler a line. Macros, since only they can make the names.
#define LOGIC_HANDLER(name, ...)                                                                             \
    aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,           \
                           aarch64_p_reg pm) {                                                               \
        return combine(state, pd, pg, pn, pm, __VA_ARGS__);                                                  \
    }

LOGIC_HANDLER(sve_and_pppp, [](bytes n, bytes m) { return n & m; })
LOGIC_HANDLER(sve_bic_pppp, [](bytes n, bytes m) { return n & ~m; })
LOGIC_HANDLER(sve_eor_pppp, [](bytes n, bytes m) { return n ^ m; })
LOGIC_HANDLER(sve_orr_pppp, [](bytes n, bytes m) { return n | m; })
LOGIC_HANDLER(sve_nor_pppp, [](bytes n, bytes m) { return (bytes)((n | m) == 0) & 1; })
#undef LOGIC_HANDLER

aarch64_decode_rc sve_sel_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                               aarch64_p_reg pm) {
    const std::uint8_t* const governing = predicate_row(state, pg.reg);
    const std::uint8_t* const chosen = predicate_row(state, pn.reg);
    const std::uint8_t* const otherwise = predicate_row(state, pm.reg);
    return compute_lanes<std::uint8_t>(predicate_row(state, pd.reg), [&](int i) {
        return blend<std::uint8_t>(active_lanes<std::uint8_t>(governing, i),
                                   load_chunk<std::uint8_t>(chosen, i),
                                   load_chunk<std::uint8_t>(otherwise, i));
    });
}
