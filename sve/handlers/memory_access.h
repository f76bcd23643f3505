// What the handlers of loads and stores share: when several elements may be accessed at once, which elements
// are active, and addresses.
#pragma once

#include "sve/decode/program_access.h"
#include "sve/handlers/activity.h"

// No page is smaller. An access of several elements at once is allowed within one page only: it then faults
// at its first byte or not at all, as it would element by element.
inline constexpr std::uint64_t smallest_page = 4096;

template <int bytes> bool within_one_page(std::uint64_t address) {
    return address % smallest_page <= smallest_page - bytes;
}

// Whether element `index` of a row is active.
template <class Element> bool element_active(const std::uint8_t* predicate, int index) {
    return predicate[index * static_cast<int>(sizeof(Element))] & 1;
}

// Base plus a signed number of units of so many bytes.
inline std::uint64_t immediate_address(const cpu_state* state, aarch64_i_rsp_reg rn, int immediate,
                                       int unit) {
    return read_register(state, rn) + static_cast<std::uint64_t>(std::int64_t{immediate} * unit);
}

// Base plus an index in elements of the type.
template <class Memory>
std::uint64_t scaled_address(const cpu_state* state, aarch64_i_rsp_reg rn, aarch64_i_reg rm) {
    return read_register(state, rn) + read_register(state, rm) * sizeof(Memory);
}
