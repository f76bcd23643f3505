#include "sve/library/address_generation.h"

#include "sve/library/chunk_loops.h"

// Offsets in the low bits of elements, multiplied by 2 to the scale.
template <class Element, class Offset>
static VecV add_offsets(const VecV& zn, const VecV& zm, int scale, const CpuContext* context) {
    return map_chunks<Element>(zn, zm, context, [=](auto base, auto offset) {
        constexpr int unused = 8 * (sizeof(Element) - sizeof(Offset));
        using Extended = std::conditional_t<std::is_signed_v<Offset>, std::make_signed_t<Element>, Element>;
        return base + ((chunk<Element>)((chunk<Extended>)(offset << unused) >> unused) << scale);
    });
}

VecV VecU32LEA1VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 0, context);
}
VecV VecU32LEA2VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 1, context);
}
VecV VecU32LEA4VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 2, context);
}
VecV VecU32LEA8VV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint32_t, std::uint32_t>(zn, zm, 3, context);
}

VecV VecU64LEA1XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 0, context);
}
VecV VecU64LEA2XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 1, context);
}
VecV VecU64LEA4XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 2, context);
}
VecV VecU64LEA8XVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::int32_t>(zn, zm, 3, context);
}

VecV VecU64LEA1YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 0, context);
}
VecV VecU64LEA2YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 1, context);
}
VecV VecU64LEA4YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 2, context);
}
VecV VecU64LEA8YVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add_offsets<std::uint64_t, std::uint32_t>(zn, zm, 3, context);
}
