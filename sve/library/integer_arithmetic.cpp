#include "sve/library/integer_arithmetic.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/element_loops.h"
#include "sve/library/half_elements.h"
#include "sve/library/primitive_definitions.h"

template <class Element>
static VecV reversed_subtract(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    return merge_two_chunks<Element>(zdn, pg, zm, context, [](auto a, auto b) { return b - a; });
}
template <class Element>
static VecV reversed_subtract(const VecV& zdn, Element immediate, const CpuContext* context) {
    return map_chunks<Element>(zdn, context, [=](auto a) { return immediate - a; });
}

template <class Element>
static VecV absolute_difference(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    using Bits = chunk<std::make_unsigned_t<Element>>;
    return merge_two_chunks<Element>(zdn, pg, zm, context, [](auto a, auto b) {
        const auto difference = (Bits)a - (Bits)b;
        const auto reversed = (Bits)(a < b);
        return (difference ^ reversed) - reversed;
    });
}

template <class Element>
static VecV multiply_high(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    if constexpr (sizeof(Element) == 8) {
        return merge_binary<Element>(zdn, pg, zm, context, [](Element a, Element b) {
            return bits(multiply_wide(widen(a), widen(b)) >> width_of<Element>);
        });
    } else {
        using Wide = twice_as_wide<Element>;
        constexpr Wide high = static_cast<Wide>(~std::make_unsigned_t<Wide>{0} << width_of<Element>);
        return merge_two_chunks<Element>(zdn, pg, zm, context, [](auto x, auto y) {
            const auto a = (chunk<Wide>)x, b = (chunk<Wide>)y;
            const auto even = lower_halves<Wide>(a) * lower_halves<Wide>(b);
            const auto odd = upper_halves<Wide>(a) * upper_halves<Wide>(b);
            return blend<Wide>(broadcast(high), odd, even >> width_of<Element>);
        });
    }
}

template <class Element> static VecV maximum(const VecV& zdn, Element immediate, const CpuContext* context) {
    return map_chunks<Element>(zdn, context, [other = broadcast(immediate)](auto a) {
        return blend<Element>((chunk<Element>)(a < other), other, a);
    });
}
template <class Element> static VecV minimum(const VecV& zdn, Element immediate, const CpuContext* context) {
    return map_chunks<Element>(zdn, context, [other = broadcast(immediate)](auto a) {
        return blend<Element>((chunk<Element>)(other < a), other, a);
    });
}

MERGING_PRIMITIVE(VecU8SubRVVM, reversed_subtract<std::uint8_t>)
MERGING_PRIMITIVE(VecU16SubRVVM, reversed_subtract<std::uint16_t>)
MERGING_PRIMITIVE(VecU32SubRVVM, reversed_subtract<std::uint32_t>)
MERGING_PRIMITIVE(VecU64SubRVVM, reversed_subtract<std::uint64_t>)

MERGING_PRIMITIVE(VecS8AbdVVM, absolute_difference<std::int8_t>)
MERGING_PRIMITIVE(VecS16AbdVVM, absolute_difference<std::int16_t>)
MERGING_PRIMITIVE(VecS32AbdVVM, absolute_difference<std::int32_t>)
MERGING_PRIMITIVE(VecS64AbdVVM, absolute_difference<std::int64_t>)
MERGING_PRIMITIVE(VecU8AbdVVM, absolute_difference<std::uint8_t>)
MERGING_PRIMITIVE(VecU16AbdVVM, absolute_difference<std::uint16_t>)
MERGING_PRIMITIVE(VecU32AbdVVM, absolute_difference<std::uint32_t>)
MERGING_PRIMITIVE(VecU64AbdVVM, absolute_difference<std::uint64_t>)

MERGING_PRIMITIVE(VecS8MulHVVM, multiply_high<std::int8_t>)
MERGING_PRIMITIVE(VecS16MulHVVM, multiply_high<std::int16_t>)
MERGING_PRIMITIVE(VecS32MulHVVM, multiply_high<std::int32_t>)
MERGING_PRIMITIVE(VecS64MulHVVM, multiply_high<std::int64_t>)
MERGING_PRIMITIVE(VecU8MulHVVM, multiply_high<std::uint8_t>)
MERGING_PRIMITIVE(VecU16MulHVVM, multiply_high<std::uint16_t>)
MERGING_PRIMITIVE(VecU32MulHVVM, multiply_high<std::uint32_t>)
MERGING_PRIMITIVE(VecU64MulHVVM, multiply_high<std::uint64_t>)

// A primitive a line. Macros, since only they can make the names.
#define IMMEDIATE_PRIMITIVE(name, element, function)                                                         \
    VecV name(const VecV& zdn, element immediate, CpuContext* context) {                                     \
        return function<element>(zdn, immediate, context);                                                   \
    }

IMMEDIATE_PRIMITIVE(VecU8SubRVIX, std::uint8_t, reversed_subtract)
IMMEDIATE_PRIMITIVE(VecU16SubRVIX, std::uint16_t, reversed_subtract)
IMMEDIATE_PRIMITIVE(VecU32SubRVIX, std::uint32_t, reversed_subtract)
IMMEDIATE_PRIMITIVE(VecU64SubRVIX, std::uint64_t, reversed_subtract)

IMMEDIATE_PRIMITIVE(VecS8MaxVIX, std::int8_t, maximum)
IMMEDIATE_PRIMITIVE(VecS16MaxVIX, std::int16_t, maximum)
IMMEDIATE_PRIMITIVE(VecS32MaxVIX, std::int32_t, maximum)
IMMEDIATE_PRIMITIVE(VecS64MaxVIX, std::int64_t, maximum)
IMMEDIATE_PRIMITIVE(VecU8MaxVIX, std::uint8_t, maximum)
IMMEDIATE_PRIMITIVE(VecU16MaxVIX, std::uint16_t, maximum)
IMMEDIATE_PRIMITIVE(VecU32MaxVIX, std::uint32_t, maximum)
IMMEDIATE_PRIMITIVE(VecU64MaxVIX, std::uint64_t, maximum)

IMMEDIATE_PRIMITIVE(VecS8MinVIX, std::int8_t, minimum)
IMMEDIATE_PRIMITIVE(VecS16MinVIX, std::int16_t, minimum)
IMMEDIATE_PRIMITIVE(VecS32MinVIX, std::int32_t, minimum)
IMMEDIATE_PRIMITIVE(VecS64MinVIX, std::int64_t, minimum)
IMMEDIATE_PRIMITIVE(VecU8MinVIX, std::uint8_t, minimum)
IMMEDIATE_PRIMITIVE(VecU16MinVIX, std::uint16_t, minimum)
IMMEDIATE_PRIMITIVE(VecU32MinVIX, std::uint32_t, minimum)
IMMEDIATE_PRIMITIVE(VecU64MinVIX, std::uint64_t, minimum)
#undef IMMEDIATE_PRIMITIVE
