#include "sve/library/address_generation.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/primitive_definitions.h"

// Offsets in the low bits of elements, multiplied by 2 to the scale.
template <class Element, class Offset, int scale>
static VecV add_offsets(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return map_chunks<Element>(zn, zm, context, [](auto base, auto offset) {
        constexpr int unused = 8 * (sizeof(Element) - sizeof(Offset));
        using Extended = std::conditional_t<std::is_signed_v<Offset>, std::make_signed_t<Element>, Element>;
        return base + ((chunk<Element>)((chunk<Extended>)(offset << unused) >> unused) << scale);
    });
}

VECTOR_PRIMITIVE(VecU32LEA1VV, add_offsets<std::uint32_t, std::uint32_t, 0>)
VECTOR_PRIMITIVE(VecU32LEA2VV, add_offsets<std::uint32_t, std::uint32_t, 1>)
VECTOR_PRIMITIVE(VecU32LEA4VV, add_offsets<std::uint32_t, std::uint32_t, 2>)
VECTOR_PRIMITIVE(VecU32LEA8VV, add_offsets<std::uint32_t, std::uint32_t, 3>)

VECTOR_PRIMITIVE(VecU64LEA1XVV, add_offsets<std::uint64_t, std::int32_t, 0>)
VECTOR_PRIMITIVE(VecU64LEA2XVV, add_offsets<std::uint64_t, std::int32_t, 1>)
VECTOR_PRIMITIVE(VecU64LEA4XVV, add_offsets<std::uint64_t, std::int32_t, 2>)
VECTOR_PRIMITIVE(VecU64LEA8XVV, add_offsets<std::uint64_t, std::int32_t, 3>)

VECTOR_PRIMITIVE(VecU64LEA1YVV, add_offsets<std::uint64_t, std::uint32_t, 0>)
VECTOR_PRIMITIVE(VecU64LEA2YVV, add_offsets<std::uint64_t, std::uint32_t, 1>)
VECTOR_PRIMITIVE(VecU64LEA4YVV, add_offsets<std::uint64_t, std::uint32_t, 2>)
VECTOR_PRIMITIVE(VecU64LEA8YVV, add_offsets<std::uint64_t, std::uint32_t, 3>)
