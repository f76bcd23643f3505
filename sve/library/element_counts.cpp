#include "sve/library/element_counts.h"

#include "sve/library/predicate_patterns.h"
#include "sve/library/saturating_chunks.h"
#include "sve/library/saturation.h"

template <class Element>
static unsigned long count_elements(unsigned long pattern, unsigned long imm4, const CpuContext* context) {
    const int length = VecTrueILength(pattern, element_count<Element>(context));
    return static_cast<unsigned long>(length) * (imm4 + 1);
}

// A primitive a line. Macros, since only they can make the names.
#define COUNT(name, element)                                                                                 \
    unsigned long name(unsigned long pattern, unsigned long imm4, CpuContext* context) {                     \
        return count_elements<element>(pattern, imm4, context);                                              \
    }

COUNT(VecU8CountVLSI, std::uint8_t)
COUNT(VecU16CountVLSI, std::uint16_t)
COUNT(VecU32CountVLSI, std::uint32_t)
COUNT(VecU64CountVLSI, std::uint64_t)
#undef COUNT

#define SATURATED_COUNT(name, element, value, combine)                                                       \
    value name(std::uint64_t operand, unsigned long pattern, unsigned long imm4, CpuContext* context) {      \
        return saturate_register<value, combine>(operand, count_elements<element>(pattern, imm4, context));  \
    }

SATURATED_COUNT(VecS8QIncrVL4SI, std::int8_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecS16QIncrVL4SI, std::int16_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecS32QIncrVL4SI, std::int32_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecS64QIncrVL4SI, std::int64_t, std::int32_t, SatAdd)
SATURATED_COUNT(VecU8QIncrVL4SI, std::uint8_t, std::uint32_t, SatAdd)
SATURATED_COUNT(VecU16QIncrVL4SI, std::uint16_t, std::uint32_t, SatAdd)
SATURATED_COUNT(VecU32QIncrVL4SI, std::uint32_t, std::uint32_t, SatAdd)
SATURATED_COUNT(VecU64QIncrVL4SI, std::uint64_t, std::uint32_t, SatAdd)

SATURATED_COUNT(VecS8QDecrVL4SI, std::int8_t, std::int32_t, SatSub)
SATURATED_COUNT(VecS16QDecrVL4SI, std::int16_t, std::int32_t, SatSub)
SATURATED_COUNT(VecS32QDecrVL4SI, std::int32_t, std::int32_t, SatSub)
SATURATED_COUNT(VecS64QDecrVL4SI, std::int64_t, std::int32_t, SatSub)
SATURATED_COUNT(VecU16QDecrVL4SI, std::uint16_t, std::uint32_t, SatSub)
SATURATED_COUNT(VecU32QDecrVL4SI, std::uint32_t, std::uint32_t, SatSub)
SATURATED_COUNT(VecU64QDecrVL4SI, std::uint64_t, std::uint32_t, SatSub)

SATURATED_COUNT(VecS8QIncrVL8SI, std::int8_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecS16QIncrVL8SI, std::int16_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecS32QIncrVL8SI, std::int32_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecS64QIncrVL8SI, std::int64_t, std::int64_t, SatAdd)
SATURATED_COUNT(VecU8QIncrVL8SI, std::uint8_t, std::uint64_t, SatAdd)
SATURATED_COUNT(VecU16QIncrVL8SI, std::uint16_t, std::uint64_t, SatAdd)
SATURATED_COUNT(VecU32QIncrVL8SI, std::uint32_t, std::uint64_t, SatAdd)
SATURATED_COUNT(VecU64QIncrVL8SI, std::uint64_t, std::uint64_t, SatAdd)

SATURATED_COUNT(VecS8QDecrVL8SI, std::int8_t, std::int64_t, SatSub)
SATURATED_COUNT(VecS16QDecrVL8SI, std::int16_t, std::int64_t, SatSub)
SATURATED_COUNT(VecS32QDecrVL8SI, std::int32_t, std::int64_t, SatSub)
SATURATED_COUNT(VecS64QDecrVL8SI, std::int64_t, std::int64_t, SatSub)
SATURATED_COUNT(VecU16QDecrVL8SI, std::uint16_t, std::uint64_t, SatSub)
SATURATED_COUNT(VecU32QDecrVL8SI, std::uint32_t, std::uint64_t, SatSub)
SATURATED_COUNT(VecU64QDecrVL8SI, std::uint64_t, std::uint64_t, SatSub)
#undef SATURATED_COUNT

#define VECTOR_COUNT(name, element, function)                                                                \
    VecV name(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {             \
        return function<element>(zdn, count_elements<element>(pattern, imm4, context), context);             \
    }

VECTOR_COUNT(VecS16QIncrVLVI, std::int16_t, add_to_elements)
VECTOR_COUNT(VecS32QIncrVLVI, std::int32_t, add_to_elements)
VECTOR_COUNT(VecS64QIncrVLVI, std::int64_t, add_to_elements)
VECTOR_COUNT(VecU16QIncrVLVI, std::uint16_t, add_to_elements)
VECTOR_COUNT(VecU32QIncrVLVI, std::uint32_t, add_to_elements)
VECTOR_COUNT(VecU64QIncrVLVI, std::uint64_t, add_to_elements)

VECTOR_COUNT(VecS16QDecrVLVI, std::int16_t, subtract_from_elements)
VECTOR_COUNT(VecS32QDecrVLVI, std::int32_t, subtract_from_elements)
VECTOR_COUNT(VecS64QDecrVLVI, std::int64_t, subtract_from_elements)
VECTOR_COUNT(VecU16QDecrVLVI, std::uint16_t, subtract_from_elements)
VECTOR_COUNT(VecU32QDecrVLVI, std::uint32_t, subtract_from_elements)
VECTOR_COUNT(VecU64QDecrVLVI, std::uint64_t, subtract_from_elements)
#undef VECTOR_COUNT
