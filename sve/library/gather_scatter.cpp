#include "sve/library/gather_scatter.h"

#include "sve/library/element_addresses.h"
#include "sve/library/memory_access.h"

namespace {

// Extends by the signedness of Memory.
template <class Element, class Memory, class Address>
VecV gather(const PredV& pg, Address address_of, const CpuContext* context) {
    VecV result;
    for_each_activity<Element>(pg, context, [&](int i, bool active) {
        set_element<Element>(result, i, active ? read_memory<Element, Memory>(address_of(i)) : Element{0});
    });
    return result;
}

template <class Element, class Memory, class Address>
void scatter(const VecV& data, const PredV& pg, Address address_of, const CpuContext* context) {
    for_each_activity<Element>(pg, context, [&](int i, bool active) {
        if (active)
            write_memory<Memory>(get_element<Element>(data, i), address_of(i));
    });
}

} // namespace

// One primitive: the types of an element in the register, of one in memory and, with offsets, of an offset,
// and the offset's scale. Macros, since only they can make the names.
#define GATHER_OFFSETS(name, element, memory, offset, scale)                                                 \
    VecV name(const PredV& pg, std::uint64_t base, const VecV& offsets, CpuContext* context) {               \
        return gather<element, memory>(pg, base_plus_offsets<element, offset>{base, offsets, scale},         \
                                       context);                                                             \
    }
#define GATHER_BASES(name, element, memory)                                                                  \
    VecV name(const PredV& pg, const VecV& bases, unsigned int imm5, CpuContext* context) {                  \
        return gather<element, memory>(pg, bases_plus_displacement<element>{bases, imm5 * sizeof(memory)},   \
                                       context);                                                             \
    }
#define SCATTER_OFFSETS(name, element, memory, offset, scale)                                                \
    void name(const VecV& data, const PredV& pg, std::uint64_t base, const VecV& offsets,                    \
              CpuContext* context) {                                                                         \
        scatter<element, memory>(data, pg, base_plus_offsets<element, offset>{base, offsets, scale},         \
                                 context);                                                                   \
    }
#define SCATTER_BASES(name, element, memory)                                                                 \
    void name(const VecV& data, const PredV& pg, const VecV& bases, unsigned int imm5,                       \
              CpuContext* context) {                                                                         \
        scatter<element, memory>(data, pg, bases_plus_displacement<element>{bases, imm5 * sizeof(memory)},   \
                                 context);                                                                   \
    }

GATHER_BASES(VecU32Load1VIZ, std::uint32_t, std::uint8_t)
GATHER_OFFSETS(VecU32Load1VSZ, std::uint32_t, std::uint8_t, std::uint32_t, 1)

GATHER_BASES(VecS32Load1VIZ, std::int32_t, std::int8_t)
GATHER_OFFSETS(VecS32Load1VSZ, std::int32_t, std::int8_t, std::uint32_t, 1)

GATHER_BASES(VecU32Load2VIZ, std::uint32_t, std::uint16_t)
GATHER_OFFSETS(VecU32Load2VSZ, std::uint32_t, std::uint16_t, std::uint32_t, 1)
GATHER_OFFSETS(VecU32Load2SVZ, std::uint32_t, std::uint16_t, std::uint32_t, 2)

GATHER_BASES(VecS32Load2VIZ, std::int32_t, std::int16_t)
GATHER_OFFSETS(VecS32Load2VSZ, std::int32_t, std::int16_t, std::uint32_t, 1)
GATHER_OFFSETS(VecS32Load2SVZ, std::int32_t, std::int16_t, std::uint32_t, 2)

GATHER_BASES(VecU32Load4VIZ, std::uint32_t, std::uint32_t)
GATHER_OFFSETS(VecU32Load4VSZ, std::uint32_t, std::uint32_t, std::uint32_t, 1)
GATHER_OFFSETS(VecU32Load4SVZ, std::uint32_t, std::uint32_t, std::uint32_t, 4)

GATHER_OFFSETS(VecU64Load1YVSZ, std::uint64_t, std::uint8_t, std::uint32_t, 1)

GATHER_OFFSETS(VecU64Load2XVSZ, std::uint64_t, std::uint16_t, std::int32_t, 1)
GATHER_OFFSETS(VecU64Load2YVSZ, std::uint64_t, std::uint16_t, std::uint32_t, 1)
GATHER_OFFSETS(VecU64Load2YSVZ, std::uint64_t, std::uint16_t, std::uint32_t, 2)

GATHER_OFFSETS(VecS64Load2XVSZ, std::int64_t, std::int16_t, std::int32_t, 1)
GATHER_OFFSETS(VecS64Load2YVSZ, std::int64_t, std::int16_t, std::uint32_t, 1)

GATHER_OFFSETS(VecU64Load4XVSZ, std::uint64_t, std::uint32_t, std::int32_t, 1)
GATHER_OFFSETS(VecU64Load4YVSZ, std::uint64_t, std::uint32_t, std::uint32_t, 1)
GATHER_OFFSETS(VecU64Load4YSVZ, std::uint64_t, std::uint32_t, std::uint32_t, 4)

GATHER_OFFSETS(VecS64Load4XVSZ, std::int64_t, std::int32_t, std::int32_t, 1)
GATHER_OFFSETS(VecS64Load4YVSZ, std::int64_t, std::int32_t, std::uint32_t, 1)
GATHER_OFFSETS(VecS64Load4YSVZ, std::int64_t, std::int32_t, std::uint32_t, 4)

GATHER_OFFSETS(VecU64Load8XVSZ, std::uint64_t, std::uint64_t, std::int32_t, 1)
GATHER_OFFSETS(VecU64Load8YVSZ, std::uint64_t, std::uint64_t, std::uint32_t, 1)

SCATTER_BASES(VecU32Store1VIZ, std::uint32_t, std::uint8_t)
SCATTER_OFFSETS(VecU32Store1VSZ, std::uint32_t, std::uint8_t, std::uint32_t, 1)

SCATTER_BASES(VecU32Store2VIZ, std::uint32_t, std::uint16_t)
SCATTER_OFFSETS(VecU32Store2VSZ, std::uint32_t, std::uint16_t, std::uint32_t, 1)
SCATTER_OFFSETS(VecU32Store2SVZ, std::uint32_t, std::uint16_t, std::uint32_t, 2)

SCATTER_BASES(VecU32Store4VIZ, std::uint32_t, std::uint32_t)
SCATTER_OFFSETS(VecU32Store4VSZ, std::uint32_t, std::uint32_t, std::uint32_t, 1)
SCATTER_OFFSETS(VecU32Store4SVZ, std::uint32_t, std::uint32_t, std::uint32_t, 4)

SCATTER_OFFSETS(VecU64Store1YVSZ, std::uint64_t, std::uint8_t, std::uint32_t, 1)

SCATTER_OFFSETS(VecU64Store2XVSZ, std::uint64_t, std::uint16_t, std::int32_t, 1)
SCATTER_OFFSETS(VecU64Store2YVSZ, std::uint64_t, std::uint16_t, std::uint32_t, 1)
SCATTER_OFFSETS(VecU64Store2YSVZ, std::uint64_t, std::uint16_t, std::uint32_t, 2)

SCATTER_OFFSETS(VecU64Store4XVSZ, std::uint64_t, std::uint32_t, std::int32_t, 1)
SCATTER_OFFSETS(VecU64Store4YVSZ, std::uint64_t, std::uint32_t, std::uint32_t, 1)

SCATTER_OFFSETS(VecU64Store8XVSZ, std::uint64_t, std::uint64_t, std::int32_t, 1)
SCATTER_OFFSETS(VecU64Store8YVSZ, std::uint64_t, std::uint64_t, std::uint32_t, 1)

#undef GATHER_OFFSETS
#undef GATHER_BASES
#undef SCATTER_OFFSETS
#undef SCATTER_BASES
