#include "sve/library/integer_reductions.h"

template <class Element>
static std::uint64_t add_reduce(const PredV& pg, const VecV& zn, const CpuContext* context) {
    std::uint64_t sum = 0;
    const int count = element_count<Element>(context);
    for (int i = 0; i < count; ++i)
        sum += is_active<Element>(pg, i) ? static_cast<std::uint64_t>(get_element<Element>(zn, i)) : 0;
    return sum;
}

std::uint64_t VecS8AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int8_t>(pg, zn, context);
}
std::uint64_t VecS16AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int16_t>(pg, zn, context);
}
std::uint64_t VecS32AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int32_t>(pg, zn, context);
}
