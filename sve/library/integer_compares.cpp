#include "sve/library/integer_compares.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/element_loops.h"
#include "sve/library/predicate_flags.h"

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

PredV VecS8CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::int8_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecS16CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::int16_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecS32CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::int32_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecS64CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::int64_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecU8CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::uint8_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecU8CmpFlgLEVIZ(const PredV& pg, const VecV& zn, std::uint8_t immediate, CpuContext* context) {
    return compare_immediate<less_or_equal>(pg, zn, immediate, context);
}
PredV VecU16CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::uint16_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecU16CmpFlgLEVIZ(const PredV& pg, const VecV& zn, std::uint16_t immediate, CpuContext* context) {
    return compare_immediate<less_or_equal>(pg, zn, immediate, context);
}
PredV VecU32CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::uint32_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecU32CmpFlgLEVIZ(const PredV& pg, const VecV& zn, std::uint32_t immediate, CpuContext* context) {
    return compare_immediate<less_or_equal>(pg, zn, immediate, context);
}
PredV VecU64CmpFlgGEVIZ(const PredV& pg, const VecV& zn, std::uint64_t immediate, CpuContext* context) {
    return compare_immediate<greater_or_equal>(pg, zn, immediate, context);
}
PredV VecU64CmpFlgLEVIZ(const PredV& pg, const VecV& zn, std::uint64_t immediate, CpuContext* context) {
    return compare_immediate<less_or_equal>(pg, zn, immediate, context);
}

PredV VecS8CmpFlgEQVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int8_t, equal>(pg, zn, zm, context);
}
PredV VecS8CmpFlgNEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int8_t, not_equal>(pg, zn, zm, context);
}
PredV VecS8CmpFlgGEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int8_t, greater_or_equal>(pg, zn, zm, context);
}
PredV VecS8CmpFlgGTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int8_t, greater>(pg, zn, zm, context);
}
PredV VecS8CmpFlgLTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int8_t, less>(pg, zn, zm, context);
}
PredV VecS8CmpFlgLEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int8_t, less_or_equal>(pg, zn, zm, context);
}

PredV VecS16CmpFlgEQVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int16_t, equal>(pg, zn, zm, context);
}
PredV VecS16CmpFlgNEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int16_t, not_equal>(pg, zn, zm, context);
}
PredV VecS16CmpFlgGEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int16_t, greater_or_equal>(pg, zn, zm, context);
}
PredV VecS16CmpFlgGTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int16_t, greater>(pg, zn, zm, context);
}
PredV VecS16CmpFlgLTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int16_t, less>(pg, zn, zm, context);
}
PredV VecS16CmpFlgLEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int16_t, less_or_equal>(pg, zn, zm, context);
}

PredV VecS32CmpFlgEQVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int32_t, equal>(pg, zn, zm, context);
}
PredV VecS32CmpFlgNEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int32_t, not_equal>(pg, zn, zm, context);
}
PredV VecS32CmpFlgGEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int32_t, greater_or_equal>(pg, zn, zm, context);
}
PredV VecS32CmpFlgGTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int32_t, greater>(pg, zn, zm, context);
}
PredV VecS32CmpFlgLTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int32_t, less>(pg, zn, zm, context);
}
PredV VecS32CmpFlgLEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::int32_t, less_or_equal>(pg, zn, zm, context);
}

PredV VecU8CmpFlgGEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint8_t, greater_or_equal>(pg, zn, zm, context);
}
PredV VecU8CmpFlgGTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint8_t, greater>(pg, zn, zm, context);
}
PredV VecU8CmpFlgLTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint8_t, less>(pg, zn, zm, context);
}
PredV VecU8CmpFlgLEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint8_t, less_or_equal>(pg, zn, zm, context);
}

PredV VecU16CmpFlgGEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint16_t, greater_or_equal>(pg, zn, zm, context);
}
PredV VecU16CmpFlgGTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint16_t, greater>(pg, zn, zm, context);
}
PredV VecU16CmpFlgLTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint16_t, less>(pg, zn, zm, context);
}
PredV VecU16CmpFlgLEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint16_t, less_or_equal>(pg, zn, zm, context);
}

PredV VecU32CmpFlgGEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint32_t, greater_or_equal>(pg, zn, zm, context);
}
PredV VecU32CmpFlgGTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint32_t, greater>(pg, zn, zm, context);
}
PredV VecU32CmpFlgLTVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint32_t, less>(pg, zn, zm, context);
}
PredV VecU32CmpFlgLEVWZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_wide<std::uint32_t, less_or_equal>(pg, zn, zm, context);
}
