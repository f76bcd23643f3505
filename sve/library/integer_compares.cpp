#include "sve/library/integer_compares.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/predicate_flags.h"
#include "sve/library/primitive_definitions.h"

#include <functional>
#include <type_traits>

namespace {

template <class Element, class Test> PredV compare(const PredV& pg, Test holds_at, CpuContext* context) {
    const PredV result = test_chunks<Element>(pg, context, holds_at);
    PredSetNZCV(pg, result, width_of<Element>, context);
    return result;
}

template <class Relation, class Element>
PredV compare_immediate(const PredV& pg, const VecV& zn, Element immediate, CpuContext* context) {
    return compare<Element>(
        pg, [&](int i) { return Relation()(get_chunk<Element>(zn, i), broadcast(immediate)); }, context);
}

// The elements of a chunk that stand at `place` in their 64-bit lanes, as numbers of 64 bits.
template <class Wide, class Element> chunk<Wide> widened(chunk<Element> elements, int place) {
    constexpr int unused = width_of<Wide> - width_of<Element>;
    const auto lanes = (chunk<std::uint64_t>)elements << (unused - place * width_of<Element>);
    return (chunk<Wide>)lanes >> unused;
}

template <class Element, class Relation>
PredV compare_wide(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    using Wide = std::conditional_t<std::is_signed_v<Element>, std::int64_t, std::uint64_t>;
    constexpr int elements_per_wide = static_cast<int>(sizeof(Wide) / sizeof(Element));
    return compare<Element>(
        pg,
        [&](int i) {
            chunk<std::uint64_t> result = {};
#pragma GCC unroll 8
            for (int place = 0; place < elements_per_wide; ++place) {
                const auto holds = (chunk<std::uint64_t>)Relation()(
                    widened<Wide, Element>(get_chunk<Element>(zn, i), place), get_chunk<Wide>(zm, i));
                result |= holds & (std::uint64_t{1} << (place * width_of<Element>));
            }
            return (chunk<Element>)result;
        },
        context);
}

using equal = std::equal_to<>;
using not_equal = std::not_equal_to<>;
using greater_or_equal = std::greater_equal<>;
using greater = std::greater<>;
using less = std::less<>;
using less_or_equal = std::less_equal<>;

} // namespace

// A primitive a line. Macros, since only they can make the names.
#define IMMEDIATE_COMPARE(name, element, relation)                                                           \
    PredV name(const PredV& pg, const VecV& zn, element immediate, CpuContext* context) {                    \
        return compare_immediate<relation>(pg, zn, immediate, context);                                      \
    }

IMMEDIATE_COMPARE(VecS8CmpFlgGEVIZ, std::int8_t, greater_or_equal)
IMMEDIATE_COMPARE(VecS16CmpFlgGEVIZ, std::int16_t, greater_or_equal)
IMMEDIATE_COMPARE(VecS32CmpFlgGEVIZ, std::int32_t, greater_or_equal)
IMMEDIATE_COMPARE(VecS64CmpFlgGEVIZ, std::int64_t, greater_or_equal)
IMMEDIATE_COMPARE(VecU8CmpFlgGEVIZ, std::uint8_t, greater_or_equal)
IMMEDIATE_COMPARE(VecU8CmpFlgLEVIZ, std::uint8_t, less_or_equal)
IMMEDIATE_COMPARE(VecU16CmpFlgGEVIZ, std::uint16_t, greater_or_equal)
IMMEDIATE_COMPARE(VecU16CmpFlgLEVIZ, std::uint16_t, less_or_equal)
IMMEDIATE_COMPARE(VecU32CmpFlgGEVIZ, std::uint32_t, greater_or_equal)
IMMEDIATE_COMPARE(VecU32CmpFlgLEVIZ, std::uint32_t, less_or_equal)
IMMEDIATE_COMPARE(VecU64CmpFlgGEVIZ, std::uint64_t, greater_or_equal)
IMMEDIATE_COMPARE(VecU64CmpFlgLEVIZ, std::uint64_t, less_or_equal)
#undef IMMEDIATE_COMPARE

COMPARING_PRIMITIVE(VecS8CmpFlgEQVWZ, compare_wide<std::int8_t, equal>)
COMPARING_PRIMITIVE(VecS8CmpFlgNEVWZ, compare_wide<std::int8_t, not_equal>)
COMPARING_PRIMITIVE(VecS8CmpFlgGEVWZ, compare_wide<std::int8_t, greater_or_equal>)
COMPARING_PRIMITIVE(VecS8CmpFlgGTVWZ, compare_wide<std::int8_t, greater>)
COMPARING_PRIMITIVE(VecS8CmpFlgLTVWZ, compare_wide<std::int8_t, less>)
COMPARING_PRIMITIVE(VecS8CmpFlgLEVWZ, compare_wide<std::int8_t, less_or_equal>)

COMPARING_PRIMITIVE(VecS16CmpFlgEQVWZ, compare_wide<std::int16_t, equal>)
COMPARING_PRIMITIVE(VecS16CmpFlgNEVWZ, compare_wide<std::int16_t, not_equal>)
COMPARING_PRIMITIVE(VecS16CmpFlgGEVWZ, compare_wide<std::int16_t, greater_or_equal>)
COMPARING_PRIMITIVE(VecS16CmpFlgGTVWZ, compare_wide<std::int16_t, greater>)
COMPARING_PRIMITIVE(VecS16CmpFlgLTVWZ, compare_wide<std::int16_t, less>)
COMPARING_PRIMITIVE(VecS16CmpFlgLEVWZ, compare_wide<std::int16_t, less_or_equal>)

COMPARING_PRIMITIVE(VecS32CmpFlgEQVWZ, compare_wide<std::int32_t, equal>)
COMPARING_PRIMITIVE(VecS32CmpFlgNEVWZ, compare_wide<std::int32_t, not_equal>)
COMPARING_PRIMITIVE(VecS32CmpFlgGEVWZ, compare_wide<std::int32_t, greater_or_equal>)
COMPARING_PRIMITIVE(VecS32CmpFlgGTVWZ, compare_wide<std::int32_t, greater>)
COMPARING_PRIMITIVE(VecS32CmpFlgLTVWZ, compare_wide<std::int32_t, less>)
COMPARING_PRIMITIVE(VecS32CmpFlgLEVWZ, compare_wide<std::int32_t, less_or_equal>)

COMPARING_PRIMITIVE(VecU8CmpFlgGEVWZ, compare_wide<std::uint8_t, greater_or_equal>)
COMPARING_PRIMITIVE(VecU8CmpFlgGTVWZ, compare_wide<std::uint8_t, greater>)
COMPARING_PRIMITIVE(VecU8CmpFlgLTVWZ, compare_wide<std::uint8_t, less>)
COMPARING_PRIMITIVE(VecU8CmpFlgLEVWZ, compare_wide<std::uint8_t, less_or_equal>)

COMPARING_PRIMITIVE(VecU16CmpFlgGEVWZ, compare_wide<std::uint16_t, greater_or_equal>)
COMPARING_PRIMITIVE(VecU16CmpFlgGTVWZ, compare_wide<std::uint16_t, greater>)
COMPARING_PRIMITIVE(VecU16CmpFlgLTVWZ, compare_wide<std::uint16_t, less>)
COMPARING_PRIMITIVE(VecU16CmpFlgLEVWZ, compare_wide<std::uint16_t, less_or_equal>)

COMPARING_PRIMITIVE(VecU32CmpFlgGEVWZ, compare_wide<std::uint32_t, greater_or_equal>)
COMPARING_PRIMITIVE(VecU32CmpFlgGTVWZ, compare_wide<std::uint32_t, greater>)
COMPARING_PRIMITIVE(VecU32CmpFlgLTVWZ, compare_wide<std::uint32_t, less>)
COMPARING_PRIMITIVE(VecU32CmpFlgLEVWZ, compare_wide<std::uint32_t, less_or_equal>)
