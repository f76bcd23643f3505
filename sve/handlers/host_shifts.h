// Shifts of the elements of a chunk by counts of their own, any count: those that C++ has are for counts
// below the width only.
#pragma once

#include "sve/handlers/elements.h"

namespace host_shifts {

template <class Element> inline constexpr Element width = sizeof(Element) * 8;

// The counts, and the limit for those above.
template <class Element> inline chunk<Element> at_most(chunk<Element> counts, Element limit) {
    const chunk<Element> limits = broadcast(limit);
#if defined(__aarch64__)
    if constexpr (sizeof(Element) == 8) // of which the host has no minimum
        return limits - (chunk<Element>)vqsubq_u64((uint64x2_t)limits, (uint64x2_t)counts);
#endif
    return counts < limits ? counts : limits;
}

#if defined(__aarch64__)

// To the left or, by a negative count, to the right; counts are up to the width.
inline chunk<std::uint8_t> shift(chunk<std::uint8_t> value, chunk<std::uint8_t> counts) {
    return (chunk<std::uint8_t>)vshlq_u8((uint8x16_t)value, (int8x16_t)counts);
}
inline chunk<std::uint16_t> shift(chunk<std::uint16_t> value, chunk<std::uint16_t> counts) {
    return (chunk<std::uint16_t>)vshlq_u16((uint16x8_t)value, (int16x8_t)counts);
}
inline chunk<std::uint32_t> shift(chunk<std::uint32_t> value, chunk<std::uint32_t> counts) {
    return (chunk<std::uint32_t>)vshlq_u32((uint32x4_t)value, (int32x4_t)counts);
}
inline chunk<std::uint64_t> shift(chunk<std::uint64_t> value, chunk<std::uint64_t> counts) {
    return (chunk<std::uint64_t>)vshlq_u64((uint64x2_t)value, (int64x2_t)counts);
}

template <class Element> inline chunk<Element> shift_left(chunk<Element> value, chunk<Element> counts) {
    return shift(value, at_most<Element>(counts, width<Element>));
}
template <class Element> inline chunk<Element> shift_right(chunk<Element> value, chunk<Element> counts) {
    return shift(value, -at_most<Element>(counts, width<Element>));
}

#else

template <class Element> inline chunk<Element> shift_left(chunk<Element> value, chunk<Element> counts) {
    return (value << (counts & (width<Element> - 1))) & (chunk<Element>)(counts < width<Element>);
}
template <class Element> inline chunk<Element> shift_right(chunk<Element> value, chunk<Element> counts) {
    return (value >> (counts & (width<Element> - 1))) & (chunk<Element>)(counts < width<Element>);
}

#endif

// With copies of the sign shifted in.
template <class Element>
inline chunk<Element> shift_right_signed(chunk<Element> value, chunk<Element> counts) {
    using signed_chunk = chunk<std::make_signed_t<Element>>;
    return (chunk<Element>)((signed_chunk)value >>
                            (signed_chunk)at_most<Element>(counts, width<Element> - 1));
}

} // namespace host_shifts
