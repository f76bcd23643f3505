#include "sve/library/predicate_counts.h"

#include "sve/library/predicate_words.h"
#include "sve/library/saturating_chunks.h"
#include "sve/library/saturation.h"

#include <bit>

template <class Element>
static unsigned long count_active(const PredV& predicate, const CpuContext* context) {
    const int length = predicate_length(context);
    unsigned long count = 0;
    for (int w = 0, words = word_count(context); w < words; ++w)
        count += static_cast<unsigned>(std::popcount(active_bits<Element>(predicate, w, length)));
    return count;
}

template <class Element>
static std::uint64_t subtract_count(std::uint64_t operand, const PredV& pm, const CpuContext* context) {
    return operand - count_active<Element>(pm, context);
}

// `sign` is 1 or -1.
template <class Element, int sign>
static VecV add_count(const VecV& zdn, const PredV& pm, const CpuContext* context) {
    const auto step = static_cast<Element>(sign * static_cast<long>(count_active<Element>(pm, context)));
    return map_chunks<Element>(zdn, context, [=](auto a) { return a + step; });
}

template <class Element>
static VecV add_saturating(const VecV& zdn, const PredV& pm, const CpuContext* context) {
    return add_to_elements<Element>(zdn, count_active<Element>(pm, context), context);
}
template <class Element>
static VecV subtract_saturating(const VecV& zdn, const PredV& pm, const CpuContext* context) {
    return subtract_from_elements<Element>(zdn, count_active<Element>(pm, context), context);
}

// A primitive a line. Macros, since only they can make the names.
#define SUBTRACTED_COUNT(name, element)                                                                      \
    std::uint64_t name(std::uint64_t operand, const PredV& pm, CpuContext* context) {                        \
        return subtract_count<element>(operand, pm, context);                                                \
    }

SUBTRACTED_COUNT(VecU8DecrSCountPS, std::uint8_t)
SUBTRACTED_COUNT(VecU16DecrSCountPS, std::uint16_t)
SUBTRACTED_COUNT(VecU32DecrSCountPS, std::uint32_t)
SUBTRACTED_COUNT(VecU64DecrSCountPS, std::uint64_t)
#undef SUBTRACTED_COUNT

#define VECTOR_COUNT(name, ...)                                                                              \
    VecV name(const VecV& zdn, const PredV& pm, CpuContext* context) { return __VA_ARGS__(zdn, pm, context); }

VECTOR_COUNT(VecU16IncrCountPV, add_count<std::uint16_t, 1>)
VECTOR_COUNT(VecU32IncrCountPV, add_count<std::uint32_t, 1>)
VECTOR_COUNT(VecU64IncrCountPV, add_count<std::uint64_t, 1>)

VECTOR_COUNT(VecU16DecrCountPV, add_count<std::uint16_t, -1>)
VECTOR_COUNT(VecU32DecrCountPV, add_count<std::uint32_t, -1>)
VECTOR_COUNT(VecU64DecrCountPV, add_count<std::uint64_t, -1>)

VECTOR_COUNT(VecS16QIncrCountPV, add_saturating<std::int16_t>)
VECTOR_COUNT(VecS32QIncrCountPV, add_saturating<std::int32_t>)
VECTOR_COUNT(VecS64QIncrCountPV, add_saturating<std::int64_t>)
VECTOR_COUNT(VecU16QIncrCountPV, add_saturating<std::uint16_t>)
VECTOR_COUNT(VecU32QIncrCountPV, add_saturating<std::uint32_t>)
VECTOR_COUNT(VecU64QIncrCountPV, add_saturating<std::uint64_t>)

VECTOR_COUNT(VecS16QDecrCountPV, subtract_saturating<std::int16_t>)
VECTOR_COUNT(VecS32QDecrCountPV, subtract_saturating<std::int32_t>)
VECTOR_COUNT(VecS64QDecrCountPV, subtract_saturating<std::int64_t>)
VECTOR_COUNT(VecU16QDecrCountPV, subtract_saturating<std::uint16_t>)
VECTOR_COUNT(VecU32QDecrCountPV, subtract_saturating<std::uint32_t>)
VECTOR_COUNT(VecU64QDecrCountPV, subtract_saturating<std::uint64_t>)
#undef VECTOR_COUNT

#define SATURATED_COUNT(name, element, value, combine)                                                       \
    value name(std::uint64_t operand, const PredV& pm, CpuContext* context) {                                \
        return saturate_register<value, combine>(operand, count_active<element>(pm, context));               \
    }

SATURATED_COUNT(VecS8QIncrSCount4PS, std::int8_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecS16QIncrSCount4PS, std::int16_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecS32QIncrSCount4PS, std::int32_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecS64QIncrSCount4PS, std::int64_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecU8QIncrSCount4PS, std::uint8_t, std::uint32_t, SatAdd)
SATURATED_COUNT(VecU16QIncrSCount4PS, std::uint16_t, std::uint32_t, SatAdd)
SATURATED_COUNT(VecU32QIncrSCount4PS, std::uint32_t, std::uint32_t, SatAdd)
SATURATED_COUNT(VecU64QIncrSCount4PS, std::uint64_t, std::uint32_t, SatAdd)

SATURATED_COUNT(VecS8QDecrSCount4PS, std::int8_t, std::int32_t, SatSub)
SATURATED_COUNT(VecS16QDecrSCount4PS, std::int16_t, std::int32_t, SatSub)
SATURATED_COUNT(VecS32QDecrSCount4PS, std::int32_t, std::int32_t, SatSub)
SATURATED_COUNT(VecS64QDecrSCount4PS, std::int64_t, std::int32_t, SatSub)
SATURATED_COUNT(VecU8QDecrSCount4PS, std::uint8_t, std::uint32_t, SatSub)
SATURATED_COUNT(VecU16QDecrSCount4PS, std::uint16_t, std::uint32_t, SatSub)
SATURATED_COUNT(VecU32QDecrSCount4PS, std::uint32_t, std::uint32_t, SatSub)
SATURATED_COUNT(VecU64QDecrSCount4PS, std::uint64_t, std::uint32_t, SatSub)

SATURATED_COUNT(VecS8QIncrSCount8PS, std::int8_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecS16QIncrSCount8PS, std::int16_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecS32QIncrSCount8PS, std::int32_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecS64QIncrSCount8PS, std::int64_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecU8QIncrSCount8PS, std::uint8_t, std::uint64_t, SatAdd)
SATURATED_COUNT(VecU16QIncrSCount8PS, std::uint16_t, std::uint64_t, SatAdd)
SATURATED_COUNT(VecU32QIncrSCount8PS, std::uint32_t, std::uint64_t, SatAdd)
SATURATED_COUNT(VecU64QIncrSCount8PS, std::uint64_t, std::uint64_t, SatAdd)

SATURATED_COUNT(VecS8QDecrSCount8PS, std::int8_t, std::int64_t, SatSub)
SATURATED_COUNT(VecS16QDecrSCount8PS, std::int16_t, std::int64_t, SatSub)
SATURATED_COUNT(VecS32QDecrSCount8PS, std::int32_t, std::int64_t, SatSub)
SATURATED_COUNT(VecS64QDecrSCount8PS, std::int64_t, std::int64_t, SatSub)
SATURATED_COUNT(VecU8QDecrSCount8PS, std::uint8_t, std::uint64_t, SatSub)
SATURATED_COUNT(VecU16QDecrSCount8PS, std::uint16_t, std::uint64_t, SatSub)
SATURATED_COUNT(VecU32QDecrSCount8PS, std::uint32_t, std::uint64_t, SatSub)
SATURATED_COUNT(VecU64QDecrSCount8PS, std::uint64_t, std::uint64_t, SatSub)
#undef SATURATED_COUNT
