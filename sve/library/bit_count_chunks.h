// Bits counted in every element of a chunk: by the host's vector instructions where it has them, otherwise
// element by element.
#pragma once

#include "sve/handlers/elements.h"
#include "sve/library/bit_operations.h"

#ifdef __ARM_NEON
#include <arm_neon.h>
#endif

// result[i] = count(value[i], the element's width).
template <class Element>
inline chunk<Element> count_each(chunk<Element> value, int (*count)(std::uint64_t, int)) {
#pragma GCC unroll 16
    for (unsigned i = 0; i < sizeof value / sizeof(Element); ++i)
        value[i] = static_cast<Element>(count(value[i], width_of<Element>));
    return value;
}

// The number of set bits.
constexpr auto bit_counts = []<class Element>(auto value, Element) {
#ifdef __ARM_NEON
    const uint8x16_t of_bytes = vcntq_u8((uint8x16_t)value);
    if constexpr (sizeof(Element) == 1)
        return (chunk<Element>)of_bytes;
    else if constexpr (sizeof(Element) == 2)
        return (chunk<Element>)vpaddlq_u8(of_bytes);
    else if constexpr (sizeof(Element) == 4)
        return (chunk<Element>)vpaddlq_u16(vpaddlq_u8(of_bytes));
    else
        return (chunk<Element>)vpaddlq_u32(vpaddlq_u16(vpaddlq_u8(of_bytes)));
#else
    return count_each<Element>(value, BitCount);
#endif
};

// The number of bits above the highest set one.
constexpr auto leading_zeros = []<class Element>(auto value, Element) {
#ifdef __ARM_NEON
    if constexpr (sizeof(Element) == 1)
        return (chunk<Element>)vclzq_u8((uint8x16_t)value);
    else if constexpr (sizeof(Element) == 2)
        return (chunk<Element>)vclzq_u16((uint16x8_t)value);
    else if constexpr (sizeof(Element) == 4)
        return (chunk<Element>)vclzq_u32((uint32x4_t)value);
    else
#endif
        return count_each<Element>(value, CountLeadingZeroBits);
};

// The number of bits below the sign bit that are equal to it without interruption.
constexpr auto leading_sign_bits = []<class Element>(auto value, Element) {
#ifdef __ARM_NEON
    if constexpr (sizeof(Element) == 1)
        return (chunk<Element>)vclsq_s8((int8x16_t)value);
    else if constexpr (sizeof(Element) == 2)
        return (chunk<Element>)vclsq_s16((int16x8_t)value);
    else if constexpr (sizeof(Element) == 4)
        return (chunk<Element>)vclsq_s32((int32x4_t)value);
    else
#endif
        return count_each<Element>(value, CountLeadingSignBits);
};
