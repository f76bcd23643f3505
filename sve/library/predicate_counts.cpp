#include "sve/library/predicate_counts.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/predicate_words.h"
#include "sve/library/saturating_chunks.h"
#include "sve/library/saturation.h"

#include <bit>

template <class Element> static int count_active(const PredV& predicate, const CpuContext* context) {
    const int length = predicate_length(context);
    int count = 0;
    for (int w = 0, words = word_count(context); w < words; ++w)
        count += std::popcount(predicate.words[w] & lowest_bits_of_groups(sizeof(Element)) &
                               bits_below(length, w));
    return count;
}

template <class Element>
static std::uint64_t subtract_count(std::uint64_t operand, const PredV& pm, const CpuContext* context) {
    return operand - static_cast<std::uint64_t>(count_active<Element>(pm, context));
}

// `sign` is 1 or -1.
template <class Element, int sign>
static VecV add_count(const VecV& zdn, const PredV& pm, const CpuContext* context) {
    const auto step = static_cast<Element>(sign * count_active<Element>(pm, context));
    return map_chunks<Element>(zdn, context, [=](auto a) { return a + step; });
}

template <class Element> static auto active_step(const PredV& pm, const CpuContext* context) {
    return uniform_step<Element>(static_cast<unsigned long>(count_active<Element>(pm, context)));
}
template <class Element>
static VecV add_saturating(const VecV& zdn, const PredV& pm, const CpuContext* context) {
    return map_chunks<Element>(zdn, context, [count = active_step<Element>(pm, context)](auto a) {
        return add_step<Element>(a, count);
    });
}
template <class Element>
static VecV subtract_saturating(const VecV& zdn, const PredV& pm, const CpuContext* context) {
    return map_chunks<Element>(zdn, context, [count = active_step<Element>(pm, context)](auto a) {
        return subtract_step<Element>(a, count);
    });
}

// `combine` is SatAdd or SatSub.
template <class Element, class Value, auto combine>
static Value saturate_register(std::uint64_t operand, const PredV& pm, const CpuContext* context) {
    const auto count = static_cast<std::uint64_t>(count_active<Element>(pm, context));
    return static_cast<Value>(combine(operand, count, width_of<Value>, std::is_unsigned_v<Value>).value);
}

std::uint64_t VecU8DecrSCountPS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return subtract_count<std::uint8_t>(operand, pm, context);
}
std::uint64_t VecU16DecrSCountPS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return subtract_count<std::uint16_t>(operand, pm, context);
}
std::uint64_t VecU32DecrSCountPS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return subtract_count<std::uint32_t>(operand, pm, context);
}
std::uint64_t VecU64DecrSCountPS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return subtract_count<std::uint64_t>(operand, pm, context);
}

VecV VecU16IncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_count<std::uint16_t, 1>(zdn, pm, context);
}
VecV VecU32IncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_count<std::uint32_t, 1>(zdn, pm, context);
}
VecV VecU64IncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_count<std::uint64_t, 1>(zdn, pm, context);
}

VecV VecU16DecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_count<std::uint16_t, -1>(zdn, pm, context);
}
VecV VecU32DecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_count<std::uint32_t, -1>(zdn, pm, context);
}
VecV VecU64DecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_count<std::uint64_t, -1>(zdn, pm, context);
}

VecV VecS16QIncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_saturating<std::int16_t>(zdn, pm, context);
}
VecV VecS32QIncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_saturating<std::int32_t>(zdn, pm, context);
}
VecV VecS64QIncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_saturating<std::int64_t>(zdn, pm, context);
}
VecV VecU16QIncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_saturating<std::uint16_t>(zdn, pm, context);
}
VecV VecU32QIncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_saturating<std::uint32_t>(zdn, pm, context);
}
VecV VecU64QIncrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return add_saturating<std::uint64_t>(zdn, pm, context);
}

VecV VecS16QDecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return subtract_saturating<std::int16_t>(zdn, pm, context);
}
VecV VecS32QDecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return subtract_saturating<std::int32_t>(zdn, pm, context);
}
VecV VecS64QDecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return subtract_saturating<std::int64_t>(zdn, pm, context);
}
VecV VecU16QDecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return subtract_saturating<std::uint16_t>(zdn, pm, context);
}
VecV VecU32QDecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return subtract_saturating<std::uint32_t>(zdn, pm, context);
}
VecV VecU64QDecrCountPV(const VecV& zdn, const PredV& pm, CpuContext* context) {
    return subtract_saturating<std::uint64_t>(zdn, pm, context);
}

std::int32_t VecS8QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int8_t, std::int32_t, SatAdd>(operand, pm, context);
}
std::int32_t VecS16QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int16_t, std::int32_t, SatAdd>(operand, pm, context);
}
std::int32_t VecS32QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int32_t, std::int32_t, SatAdd>(operand, pm, context);
}
std::int32_t VecS64QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int64_t, std::int32_t, SatAdd>(operand, pm, context);
}
std::uint32_t VecU8QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint8_t, std::uint32_t, SatAdd>(operand, pm, context);
}
std::uint32_t VecU16QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint32_t, SatAdd>(operand, pm, context);
}
std::uint32_t VecU32QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint32_t, SatAdd>(operand, pm, context);
}
std::uint32_t VecU64QIncrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint32_t, SatAdd>(operand, pm, context);
}

std::int32_t VecS8QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int8_t, std::int32_t, SatSub>(operand, pm, context);
}
std::int32_t VecS16QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int16_t, std::int32_t, SatSub>(operand, pm, context);
}
std::int32_t VecS32QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int32_t, std::int32_t, SatSub>(operand, pm, context);
}
std::int32_t VecS64QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int64_t, std::int32_t, SatSub>(operand, pm, context);
}
std::uint32_t VecU8QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint8_t, std::uint32_t, SatSub>(operand, pm, context);
}
std::uint32_t VecU16QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint32_t, SatSub>(operand, pm, context);
}
std::uint32_t VecU32QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint32_t, SatSub>(operand, pm, context);
}
std::uint32_t VecU64QDecrSCount4PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint32_t, SatSub>(operand, pm, context);
}

std::int64_t VecS8QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int8_t, std::int64_t, SatAdd>(operand, pm, context);
}
std::int64_t VecS16QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int16_t, std::int64_t, SatAdd>(operand, pm, context);
}
std::int64_t VecS32QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int32_t, std::int64_t, SatAdd>(operand, pm, context);
}
std::int64_t VecS64QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int64_t, std::int64_t, SatAdd>(operand, pm, context);
}
std::uint64_t VecU8QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint8_t, std::uint64_t, SatAdd>(operand, pm, context);
}
std::uint64_t VecU16QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint64_t, SatAdd>(operand, pm, context);
}
std::uint64_t VecU32QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint64_t, SatAdd>(operand, pm, context);
}
std::uint64_t VecU64QIncrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint64_t, SatAdd>(operand, pm, context);
}

std::int64_t VecS8QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int8_t, std::int64_t, SatSub>(operand, pm, context);
}
std::int64_t VecS16QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int16_t, std::int64_t, SatSub>(operand, pm, context);
}
std::int64_t VecS32QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int32_t, std::int64_t, SatSub>(operand, pm, context);
}
std::int64_t VecS64QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::int64_t, std::int64_t, SatSub>(operand, pm, context);
}
std::uint64_t VecU8QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint8_t, std::uint64_t, SatSub>(operand, pm, context);
}
std::uint64_t VecU16QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint16_t, std::uint64_t, SatSub>(operand, pm, context);
}
std::uint64_t VecU32QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint32_t, std::uint64_t, SatSub>(operand, pm, context);
}
std::uint64_t VecU64QDecrSCount8PS(std::uint64_t operand, const PredV& pm, CpuContext* context) {
    return saturate_register<std::uint64_t, std::uint64_t, SatSub>(operand, pm, context);
}
