#include "sve/handlers/replicating_memory.h"

#include "sve/handlers/memory_access.h"

namespace {

template <class Element, class Memory>
aarch64_decode_rc load_replicated(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg rn,
                                  unsigned int imm6) {
    std::uint8_t* const data = state->z[zt.reg];
    const std::uint8_t* const predicate = state->p[pg.reg];
    const std::uint64_t address =
        immediate_address(state, rn, static_cast<int>(imm6), static_cast<int>(sizeof(Memory)));
    int first = 0;
    for (; first < elements_per_row<Element> && !element_active<Element>(predicate, first); ++first)
        store_element(data, first, Element{0});
    if (first == elements_per_row<Element>)
        return aarch64_emulated;
    complete_before_fault();
    // Once for all elements: reading the same place again could fault no more.
    const auto value = program_access<Memory>::template read_as<Element>(address);
    return compute_row<Element>(
        data, [&](int i) { return active_lanes<Element>(predicate, i) & broadcast<Element>(value); });
}

} // namespace

// A macro, since only that can make the names.
#define REPLICATING_HANDLER(name, element, memory)                                                           \
    aarch64_decode_rc name##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,                      \
                                  aarch64_i_rsp_reg rn, unsigned int imm6) {                                 \
        return load_replicated<element, memory>(state, zt, pg, rn, imm6);                                    \
    }

REPLICATING_HANDLER(sve_ld1rb, std::uint8_t, std::uint8_t)
REPLICATING_HANDLER(sve_ld1rb_h, std::uint16_t, std::uint8_t)
REPLICATING_HANDLER(sve_ld1rb_s, std::uint32_t, std::uint8_t)
REPLICATING_HANDLER(sve_ld1rb_d, std::uint64_t, std::uint8_t)
REPLICATING_HANDLER(sve_ld1rsb_h, std::int16_t, std::int8_t)
REPLICATING_HANDLER(sve_ld1rsb_s, std::int32_t, std::int8_t)
REPLICATING_HANDLER(sve_ld1rsb_d, std::int64_t, std::int8_t)
REPLICATING_HANDLER(sve_ld1rh, std::uint16_t, std::uint16_t)
REPLICATING_HANDLER(sve_ld1rh_s, std::uint32_t, std::uint16_t)
REPLICATING_HANDLER(sve_ld1rh_d, std::uint64_t, std::uint16_t)
REPLICATING_HANDLER(sve_ld1rsh_s, std::int32_t, std::int16_t)
REPLICATING_HANDLER(sve_ld1rsh_d, std::int64_t, std::int16_t)
REPLICATING_HANDLER(sve_ld1rw, std::uint32_t, std::uint32_t)
REPLICATING_HANDLER(sve_ld1rw_d, std::uint64_t, std::uint32_t)
REPLICATING_HANDLER(sve_ld1rsw_d, std::int64_t, std::int32_t)
REPLICATING_HANDLER(sve_ld1rd, std::uint64_t, std::uint64_t)

#undef REPLICATING_HANDLER
