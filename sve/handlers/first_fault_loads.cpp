#include "sve/handlers/first_fault_loads.h"

#include "sve/client/fault_trapping.h"
#include "sve/handlers/memory_access.h"
#include "sve/library/memory_access.h"

#include <algorithm>

namespace {

bool is_readable(std::uint64_t address) {
    return addr_is_readable<char>(reinterpret_cast<volatile char*>(address));
}

std::int32_t offset_in_page(std::uint64_t address) {
    return static_cast<std::int32_t>(address & (page_size - 1));
}

template <class Element, class Memory> struct element_loads {
    std::uint8_t* const data;
    const std::uint8_t* const predicate;

    element_loads(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg)
        : data(state->z[zt.reg]), predicate(state->p[pg.reg]) {}

    bool is_active(int i) const { return element_active<Element>(predicate, i); }
    void set(int i, Element value) const {
        store_element(data, i, value);
        complete_before_fault();
    }
    void load(int i, std::uint64_t address) const {
        set(i, program_access<Memory>::template read_as<Element>(address));
    }
};

// Nothing can be read: inactive elements become 0, active ones keep their contents and lose their FFR lanes.
template <class Element>
aarch64_decode_rc fail_active_elements(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg) {
    std::uint8_t* const data = vector_row(state, zt.reg);
    const std::uint8_t* const predicate = predicate_row(state, pg.reg);
#pragma GCC unroll 2
    for (int i = 0; i < chunks_per_row; ++i) {
        const auto active = active_lanes<Element>(predicate, i);
        store_chunk<Element>(data, i, load_chunk<Element>(data, i) & active);
        store_chunk<Element>(state->ffr, i, load_chunk<Element>(state->ffr, i) & ~active);
    }
    return aarch64_emulated;
}

template <class Element, class Memory, contiguous_immediate_handler* plain_load>
aarch64_decode_rc load_non_fault(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg rn,
                                 int imm4) {
    constexpr int count = elements_per_row<Element>;
    constexpr int memory_bytes = static_cast<int>(sizeof(Memory));
    std::uint64_t address = immediate_address(state, rn, imm4, count * memory_bytes);

    bool readable = is_readable(address);
    std::int32_t probed_offset = offset_in_page(address);
    if (probed_offset <= static_cast<std::int32_t>(page_size) - count * memory_bytes)
        return readable ? plain_load(state, zt, pg, rn, imm4) : fail_active_elements<Element>(state, zt, pg);

    const element_loads<Element, Memory> elements(state, zt, pg);
    for (int i = 0; i < count; ++i, address += sizeof(Memory)) {
        if (!elements.is_active(i)) {
            elements.set(i, 0);
            continue;
        }
        // Offsets grow until a page ends.
        const std::int32_t offset = offset_in_page(address);
        if (offset < probed_offset) {
            readable = is_readable(address);
            probed_offset = offset;
        }
        if (readable)
            elements.load(i, address);
        else
            store_element(state->ffr, i, Element{0});
    }
    return aarch64_emulated;
}

// `plain_load` is the load of the same elements that asks nothing.
template <class Element, class Memory, contiguous_scaled_handler* plain_load>
aarch64_decode_rc load_first_fault(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg rn,
                                   aarch64_i_reg rm) {
    const std::uint64_t address = scaled_address<Memory>(state, rn, rm);
    const std::int32_t offset = offset_in_page(address);
    // The size of the register decides, whatever the load's size in memory is.
    if (offset <= offset_in_page(address + vector_bytes) || is_readable(address + page_size))
        return plain_load(state, zt, pg, rn, rm);

    const int bytes_left = std::min(vector_bytes, static_cast<int>(page_size) - offset);
    const int limit = bytes_left / static_cast<int>(sizeof(Element));
    const element_loads<Element, Memory> elements(state, zt, pg);
    for (int i = 0; i < limit; ++i) {
        if (elements.is_active(i))
            elements.load(i, address + static_cast<std::uint64_t>(i) * sizeof(Memory));
        else
            elements.set(i, 0);
    }
    const int cleared_from = limit * static_cast<int>(sizeof(Element));
    std::fill(state->ffr + cleared_from, state->ffr + vector_bytes, std::uint8_t{0});
    return aarch64_emulated;
}

} // namespace

// Macros, since only they can make the names.
#define NON_FAULT_HANDLER(name, element, memory, plain)                                                      \
    aarch64_decode_rc name##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,                      \
                                  aarch64_i_rsp_reg rn, int imm4) {                                          \
        return load_non_fault<element, memory, plain##_zpri>(state, zt, pg, rn, imm4);                       \
    }
#define FIRST_FAULT_HANDLER(name, element, memory, plain)                                                    \
    aarch64_decode_rc name##_scaled_zprr(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,               \
                                         aarch64_i_rsp_reg rn, aarch64_i_reg rm) {                           \
        return load_first_fault<element, memory, plain##_scaled_zprr>(state, zt, pg, rn, rm);                \
    }

NON_FAULT_HANDLER(sve_ldnf1b, std::uint8_t, std::uint8_t, sve_ld1b)
NON_FAULT_HANDLER(sve_ldnf1b_h, std::uint16_t, std::uint8_t, sve_ld1b_h)
NON_FAULT_HANDLER(sve_ldnf1b_s, std::uint32_t, std::uint8_t, sve_ld1b_s)
NON_FAULT_HANDLER(sve_ldnf1b_d, std::uint64_t, std::uint8_t, sve_ld1b_d)
NON_FAULT_HANDLER(sve_ldnf1sb_h, std::int16_t, std::int8_t, sve_ld1sb_h)
NON_FAULT_HANDLER(sve_ldnf1sb_s, std::int32_t, std::int8_t, sve_ld1sb_s)
NON_FAULT_HANDLER(sve_ldnf1sb_d, std::int64_t, std::int8_t, sve_ld1sb_d)
NON_FAULT_HANDLER(sve_ldnf1h, std::uint16_t, std::uint16_t, sve_ld1h)
NON_FAULT_HANDLER(sve_ldnf1h_s, std::uint32_t, std::uint16_t, sve_ld1h_s)
NON_FAULT_HANDLER(sve_ldnf1h_d, std::uint64_t, std::uint16_t, sve_ld1h_d)
NON_FAULT_HANDLER(sve_ldnf1sh_s, std::int32_t, std::int16_t, sve_ld1sh_s)
NON_FAULT_HANDLER(sve_ldnf1sh_d, std::int64_t, std::int16_t, sve_ld1sh_d)
NON_FAULT_HANDLER(sve_ldnf1w, std::uint32_t, std::uint32_t, sve_ld1w)
NON_FAULT_HANDLER(sve_ldnf1w_d, std::uint64_t, std::uint32_t, sve_ld1w_d)
NON_FAULT_HANDLER(sve_ldnf1sw_d, std::int64_t, std::int32_t, sve_ld1sw_d)
NON_FAULT_HANDLER(sve_ldnf1d, std::uint64_t, std::uint64_t, sve_ld1d)

FIRST_FAULT_HANDLER(sve_ldff1b, std::uint8_t, std::uint8_t, sve_ld1b)
FIRST_FAULT_HANDLER(sve_ldff1b_h, std::uint16_t, std::uint8_t, sve_ld1b_h)
FIRST_FAULT_HANDLER(sve_ldff1b_s, std::uint32_t, std::uint8_t, sve_ld1b_s)
FIRST_FAULT_HANDLER(sve_ldff1b_d, std::uint64_t, std::uint8_t, sve_ld1b_d)
FIRST_FAULT_HANDLER(sve_ldff1w, std::uint32_t, std::uint32_t, sve_ld1w)
FIRST_FAULT_HANDLER(sve_ldff1w_d, std::uint64_t, std::uint32_t, sve_ld1w_d)
FIRST_FAULT_HANDLER(sve_ldff1d, std::uint64_t, std::uint64_t, sve_ld1d)

#undef NON_FAULT_HANDLER
#undef FIRST_FAULT_HANDLER
