#include "sve/library/element_counts.h"

#include "sve/library/predicate_patterns.h"

template <class Element>
static unsigned long count_elements(unsigned long pattern, unsigned long imm4, const CpuContext* context) {
    const int length = VecTrueILength(pattern, element_count<Element>(context));
    return static_cast<unsigned long>(length) * (imm4 + 1);
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
