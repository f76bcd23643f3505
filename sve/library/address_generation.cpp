#include "sve/library/address_generation.h"

#include "sve/library/element_addresses.h"

template <class Element, class Offset>
static VecV add_offsets(const VecV& zn, const VecV& zm, unsigned int scale, const CpuContext* context) {
    return for_each_element<Element>(context, [&](int i) {
        return get_element<Element>(zn, i) + extended_offset<Element, Offset>(zm, i) * scale;
    });
}

VecV VecU32LEA1VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 1, context);
}
VecV VecU32LEA2VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 2, context);
}
VecV VecU32LEA4VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 4, context);
}
VecV VecU32LEA8VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 8, context);
}

VecV VecU64LEA1XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 1, context);
}
VecV VecU64LEA2XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 2, context);
}
VecV VecU64LEA4XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 4, context);
}
VecV VecU64LEA8XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 8, context);
}

VecV VecU64LEA1YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 1, context);
}
VecV VecU64LEA2YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 2, context);
}
VecV VecU64LEA4YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 4, context);
}
VecV VecU64LEA8YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 8, context);
}
