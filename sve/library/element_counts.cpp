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

unsigned long VecU8CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return count_elements<std::uint8_t>(pattern, imm4, context);
}
unsigned long VecU16CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return count_elements<std::uint16_t>(pattern, imm4, context);
}
unsigned long VecU32CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return count_elements<std::uint32_t>(pattern, imm4, context);
}
unsigned long VecU64CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return count_elements<std::uint64_t>(pattern, imm4, context);
}

std::int32_t VecS8QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                             CpuContext* context) {
    return saturate_register<std::int8_t, std::int32_t, SatAdd>(operand, pattern, imm4, context);
}
std::int32_t VecS16QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int16_t, std::int32_t, SatAdd>(operand, pattern, imm4, context);
}
std::int32_t VecS32QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int32_t, std::int32_t, SatAdd>(operand, pattern, imm4, context);
}
std::int32_t VecS64QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int64_t, std::int32_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint32_t VecU8QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::uint8_t, std::uint32_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint32_t VecU16QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint32_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint32_t VecU32QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint32_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint32_t VecU64QIncrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint32_t, SatAdd>(operand, pattern, imm4, context);
}

std::int32_t VecS8QDecrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                             CpuContext* context) {
    return saturate_register<std::int8_t, std::int32_t, SatSub>(operand, pattern, imm4, context);
}
std::int32_t VecS16QDecrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int16_t, std::int32_t, SatSub>(operand, pattern, imm4, context);
}
std::int32_t VecS32QDecrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int32_t, std::int32_t, SatSub>(operand, pattern, imm4, context);
}
std::int32_t VecS64QDecrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int64_t, std::int32_t, SatSub>(operand, pattern, imm4, context);
}
std::uint32_t VecU16QDecrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint32_t, SatSub>(operand, pattern, imm4, context);
}
std::uint32_t VecU32QDecrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint32_t, SatSub>(operand, pattern, imm4, context);
}
std::uint32_t VecU64QDecrVL4SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint32_t, SatSub>(operand, pattern, imm4, context);
}

std::int64_t VecS8QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                             CpuContext* context) {
    return saturate_register<std::int8_t, std::int64_t, SatAdd>(operand, pattern, imm4, context);
}
std::int64_t VecS16QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int16_t, std::int64_t, SatAdd>(operand, pattern, imm4, context);
}
std::int64_t VecS32QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int32_t, std::int64_t, SatAdd>(operand, pattern, imm4, context);
}
std::int64_t VecS64QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int64_t, std::int64_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint64_t VecU8QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::uint8_t, std::uint64_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint64_t VecU16QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint64_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint64_t VecU32QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint64_t, SatAdd>(operand, pattern, imm4, context);
}
std::uint64_t VecU64QIncrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint64_t, SatAdd>(operand, pattern, imm4, context);
}

std::int64_t VecS8QDecrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                             CpuContext* context) {
    return saturate_register<std::int8_t, std::int64_t, SatSub>(operand, pattern, imm4, context);
}
std::int64_t VecS16QDecrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int16_t, std::int64_t, SatSub>(operand, pattern, imm4, context);
}
std::int64_t VecS32QDecrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int32_t, std::int64_t, SatSub>(operand, pattern, imm4, context);
}
std::int64_t VecS64QDecrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                              CpuContext* context) {
    return saturate_register<std::int64_t, std::int64_t, SatSub>(operand, pattern, imm4, context);
}
std::uint64_t VecU16QDecrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint64_t, SatSub>(operand, pattern, imm4, context);
}
std::uint64_t VecU32QDecrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint64_t, SatSub>(operand, pattern, imm4, context);
}
std::uint64_t VecU64QDecrVL8SI(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                               CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint64_t, SatSub>(operand, pattern, imm4, context);
}

VecV VecS16QIncrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return add_count<std::int16_t>(zdn, pattern, imm4, context);
}
VecV VecS32QIncrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return add_count<std::int32_t>(zdn, pattern, imm4, context);
}
VecV VecS64QIncrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return add_count<std::int64_t>(zdn, pattern, imm4, context);
}
VecV VecU16QIncrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return add_count<std::uint16_t>(zdn, pattern, imm4, context);
}
VecV VecU32QIncrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return add_count<std::uint32_t>(zdn, pattern, imm4, context);
}
VecV VecU64QIncrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return add_count<std::uint64_t>(zdn, pattern, imm4, context);
}

VecV VecS16QDecrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return subtract_count<std::int16_t>(zdn, pattern, imm4, context);
}
VecV VecS32QDecrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return subtract_count<std::int32_t>(zdn, pattern, imm4, context);
}
VecV VecS64QDecrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return subtract_count<std::int64_t>(zdn, pattern, imm4, context);
}
VecV VecU16QDecrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return subtract_count<std::uint16_t>(zdn, pattern, imm4, context);
}
VecV VecU32QDecrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return subtract_count<std::uint32_t>(zdn, pattern, imm4, context);
}
VecV VecU64QDecrVLVI(const VecV& zdn, unsigned long pattern, unsigned long imm4, CpuContext* context) {
    return subtract_count<std::uint64_t>(zdn, pattern, imm4, context);
}
