#include "sve/library/element_counts.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/element_loops.h"
#include "sve/library/predicate_patterns.h"
#include "sve/library/saturating_chunks.h"
#include "sve/library/saturation.h"

template <class Element>
static unsigned long count_elements(unsigned long pattern, unsigned long imm4, const CpuContext* context) {
    const int length = VecTrueILength(pattern, element_count<Element>(context));
    return static_cast<unsigned long>(length) * (imm4 + 1);
}

// `Element` is the type that is counted, `Value` that of the register: `combine` is SatAdd or SatSub.
template <class Element, class Value, auto combine>
static Value saturate_register(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               const CpuContext* context) {
    const unsigned long count = count_elements<Element>(pattern, imm4, context);
    return static_cast<Value>(combine(operand, count, width_of<Value>, std::is_unsigned_v<Value>).value);
}

template <class Element>
static VecV add_count(const VecV& zdn, unsigned long pattern, unsigned long imm4, const CpuContext* context) {
    const auto count = uniform_step<Element>(count_elements<Element>(pattern, imm4, context));
    return map_chunks<Element>(zdn, context, [=](auto a) { return add_step<Element>(a, count); });
}
template <class Element>
static VecV subtract_count(const VecV& zdn, unsigned long pattern, unsigned long imm4,
                           const CpuContext* context) {
    const auto count = uniform_step<Element>(count_elements<Element>(pattern, imm4, context));
    return map_chunks<Element>(zdn, context, [=](auto a) { return subtract_step<Element>(a, count); });
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
        return saturate_register<element, value, combine>(operand, pattern, imm4, context);                  \
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
        return function<element>(zdn, pattern, imm4, context);                                               \
    }

VECTOR_COUNT(VecS16QIncrVLVI, std::int16_t, add_count)
VECTOR_COUNT(VecS32QIncrVLVI, std::int32_t, add_count)
VECTOR_COUNT(VecS64QIncrVLVI, std::int64_t, add_count)
VECTOR_COUNT(VecU16QIncrVLVI, std::uint16_t, add_count)
VECTOR_COUNT(VecU32QIncrVLVI, std::uint32_t, add_count)
VECTOR_COUNT(VecU64QIncrVLVI, std::uint64_t, add_count)

VECTOR_COUNT(VecS16QDecrVLVI, std::int16_t, subtract_count)
VECTOR_COUNT(VecS32QDecrVLVI, std::int32_t, subtract_count)
VECTOR_COUNT(VecS64QDecrVLVI, std::int64_t, subtract_count)
VECTOR_COUNT(VecU16QDecrVLVI, std::uint16_t, subtract_count)
VECTOR_COUNT(VecU32QDecrVLVI, std::uint32_t, subtract_count)
VECTOR_COUNT(VecU64QDecrVLVI, std::uint64_t, subtract_count)
#undef VECTOR_COUNT
