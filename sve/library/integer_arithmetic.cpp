#include "sve/library/integer_arithmetic.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/half_elements.h"

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

// The type twice as wide, of the same signedness.
template <class Element> struct wider;
template <> struct wider<std::int8_t> { using type = std::int16_t; };
template <> struct wider<std::int16_t> { using type = std::int32_t; };
template <> struct wider<std::int32_t> { using type = std::int64_t; };
template <> struct wider<std::uint8_t> { using type = std::uint16_t; };
template <> struct wider<std::uint16_t> { using type = std::uint32_t; };
template <> struct wider<std::uint32_t> { using type = std::uint64_t; };

template <class Element>
static VecV multiply_high(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    if constexpr (sizeof(Element) == 8) {
        return merge_binary<Element>(zdn, pg, zm, context, [](Element a, Element b) {
            return bits(multiply_wide(widen(a), widen(b)) >> width_of<Element>);
        });
    } else {
        using Wide = typename wider<Element>::type;
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

VecV VecU8SubRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_subtract<std::uint8_t>(zdn, pg, zm, context);
}
VecV VecU16SubRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_subtract<std::uint16_t>(zdn, pg, zm, context);
}
VecV VecU32SubRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_subtract<std::uint32_t>(zdn, pg, zm, context);
}
VecV VecU64SubRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_subtract<std::uint64_t>(zdn, pg, zm, context);
}

VecV VecS8AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::int8_t>(zdn, pg, zm, context);
}
VecV VecS16AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::int16_t>(zdn, pg, zm, context);
}
VecV VecS32AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::int32_t>(zdn, pg, zm, context);
}
VecV VecS64AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::int64_t>(zdn, pg, zm, context);
}
VecV VecU8AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::uint8_t>(zdn, pg, zm, context);
}
VecV VecU16AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::uint16_t>(zdn, pg, zm, context);
}
VecV VecU32AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::uint32_t>(zdn, pg, zm, context);
}
VecV VecU64AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return absolute_difference<std::uint64_t>(zdn, pg, zm, context);
}

VecV VecS8MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::int8_t>(zdn, pg, zm, context);
}
VecV VecS16MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::int16_t>(zdn, pg, zm, context);
}
VecV VecS32MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::int32_t>(zdn, pg, zm, context);
}
VecV VecS64MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::int64_t>(zdn, pg, zm, context);
}
VecV VecU8MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::uint8_t>(zdn, pg, zm, context);
}
VecV VecU16MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::uint16_t>(zdn, pg, zm, context);
}
VecV VecU32MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::uint32_t>(zdn, pg, zm, context);
}
VecV VecU64MulHVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return multiply_high<std::uint64_t>(zdn, pg, zm, context);
}

VecV VecU8SubRVIX(const VecV& zdn, std::uint8_t immediate, CpuContext* context) {
    return reversed_subtract<std::uint8_t>(zdn, immediate, context);
}
VecV VecU16SubRVIX(const VecV& zdn, std::uint16_t immediate, CpuContext* context) {
    return reversed_subtract<std::uint16_t>(zdn, immediate, context);
}
VecV VecU32SubRVIX(const VecV& zdn, std::uint32_t immediate, CpuContext* context) {
    return reversed_subtract<std::uint32_t>(zdn, immediate, context);
}
VecV VecU64SubRVIX(const VecV& zdn, std::uint64_t immediate, CpuContext* context) {
    return reversed_subtract<std::uint64_t>(zdn, immediate, context);
}

VecV VecS8MaxVIX(const VecV& zdn, std::int8_t immediate, CpuContext* context) {
    return maximum<std::int8_t>(zdn, immediate, context);
}
VecV VecS16MaxVIX(const VecV& zdn, std::int16_t immediate, CpuContext* context) {
    return maximum<std::int16_t>(zdn, immediate, context);
}
VecV VecS32MaxVIX(const VecV& zdn, std::int32_t immediate, CpuContext* context) {
    return maximum<std::int32_t>(zdn, immediate, context);
}
VecV VecS64MaxVIX(const VecV& zdn, std::int64_t immediate, CpuContext* context) {
    return maximum<std::int64_t>(zdn, immediate, context);
}
VecV VecU8MaxVIX(const VecV& zdn, std::uint8_t immediate, CpuContext* context) {
    return maximum<std::uint8_t>(zdn, immediate, context);
}
VecV VecU16MaxVIX(const VecV& zdn, std::uint16_t immediate, CpuContext* context) {
    return maximum<std::uint16_t>(zdn, immediate, context);
}
VecV VecU32MaxVIX(const VecV& zdn, std::uint32_t immediate, CpuContext* context) {
    return maximum<std::uint32_t>(zdn, immediate, context);
}
VecV VecU64MaxVIX(const VecV& zdn, std::uint64_t immediate, CpuContext* context) {
    return maximum<std::uint64_t>(zdn, immediate, context);
}

VecV VecS8MinVIX(const VecV& zdn, std::int8_t immediate, CpuContext* context) {
    return minimum<std::int8_t>(zdn, immediate, context);
}
VecV VecS16MinVIX(const VecV& zdn, std::int16_t immediate, CpuContext* context) {
    return minimum<std::int16_t>(zdn, immediate, context);
}
VecV VecS32MinVIX(const VecV& zdn, std::int32_t immediate, CpuContext* context) {
    return minimum<std::int32_t>(zdn, immediate, context);
}
VecV VecS64MinVIX(const VecV& zdn, std::int64_t immediate, CpuContext* context) {
    return minimum<std::int64_t>(zdn, immediate, context);
}
VecV VecU8MinVIX(const VecV& zdn, std::uint8_t immediate, CpuContext* context) {
    return minimum<std::uint8_t>(zdn, immediate, context);
}
VecV VecU16MinVIX(const VecV& zdn, std::uint16_t immediate, CpuContext* context) {
    return minimum<std::uint16_t>(zdn, immediate, context);
}
VecV VecU32MinVIX(const VecV& zdn, std::uint32_t immediate, CpuContext* context) {
    return minimum<std::uint32_t>(zdn, immediate, context);
}
VecV VecU64MinVIX(const VecV& zdn, std::uint64_t immediate, CpuContext* context) {
    return minimum<std::uint64_t>(zdn, immediate, context);
}
