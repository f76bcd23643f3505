#include "sve/library/first_fault_loads.h"

#include "sve/library/element_addresses.h"
#include "sve/library/guarded_access.h"
#include "sve/library/memory_access.h"

namespace {

// Loads the active elements up to the first that cannot be read, and returns that one's index, or the number
// of elements. One guard serves for all: what it costs is a system call, which saves the signal mask. Extends
// by the signedness of Memory.
template <class Element, class Memory, class Address>
[[gnu::noinline]] int load_readable(VecV& result, const PredV& pg, const Address& address_of,
                                    const CpuContext* context) {
    volatile int attempted = 0; // in memory, where a return to the guard finds it
    if (sigsetjmp(sveFaultJB, 1) != 0)
        return attempted;
    for_each_activity<Element>(pg, context, [&](int i, bool active) {
        Element value = 0;
        if (active) {
            attempted = i;
            const std::uint64_t address = address_of(i);
            touch_guarded<Memory>(address);
            value = read_memory<Element, Memory>(address);
        }
        set_element(result, i, value);
    });
    return element_count<Element>(context);
}

template <class Element, class Memory, class Address>
VecV load_until_fault(const PredV& pg, Address address_of, CpuContext* context) {
    VecV result;
    const int count = element_count<Element>(context);
    const int readable = load_readable<Element, Memory>(result, pg, address_of, context);
    for (int i = readable; i < count; ++i) {
        set_element<Element>(result, i, 0);
        set_predicate_element<Element>(context->ffr, i, false);
    }
    return result;
}

} // namespace

// One primitive: the types of an element in the register, of one in memory and, with offsets, of an offset,
// and the offset's scale. Macros, since only they can make the names.
#define FIRST_FAULT_CONTIGUOUS(name, element, memory)                                                        \
    VecV name(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context) {               \
        return load_until_fault<element, memory>(                                                            \
            pg, consecutive{base + index * sizeof(memory), sizeof(memory)}, context);                        \
    }
#define FIRST_FAULT_OFFSETS(name, element, memory, offset, scale)                                            \
    VecV name(const PredV& pg, std::uint64_t base, const VecV& offsets, CpuContext* context) {               \
        return load_until_fault<element, memory>(                                                            \
            pg, base_plus_offsets<element, offset>{base, offsets, scale}, context);                          \
    }
#define FIRST_FAULT_BASES(name, element, memory)                                                             \
    VecV name(const PredV& pg, const VecV& bases, unsigned int imm5, CpuContext* context) {                  \
        return load_until_fault<element, memory>(                                                            \
            pg, bases_plus_displacement<element>{bases, imm5 * sizeof(memory)}, context);                    \
    }

FIRST_FAULT_CONTIGUOUS(VecS16CLoadFF1LSSZ, std::int16_t, std::int8_t)
FIRST_FAULT_CONTIGUOUS(VecU16CLoadFF2LSSZ, std::uint16_t, std::uint16_t)
FIRST_FAULT_CONTIGUOUS(VecS32CLoadFF1LSSZ, std::int32_t, std::int8_t)
FIRST_FAULT_CONTIGUOUS(VecS32CLoadFF2LSSZ, std::int32_t, std::int16_t)
FIRST_FAULT_CONTIGUOUS(VecU32CLoadFF2LSSZ, std::uint32_t, std::uint16_t)
FIRST_FAULT_CONTIGUOUS(VecS64CLoadFF1LSSZ, std::int64_t, std::int8_t)
FIRST_FAULT_CONTIGUOUS(VecS64CLoadFF2LSSZ, std::int64_t, std::int16_t)
FIRST_FAULT_CONTIGUOUS(VecU64CLoadFF2LSSZ, std::uint64_t, std::uint16_t)
FIRST_FAULT_CONTIGUOUS(VecS64CLoadFF4LSSZ, std::int64_t, std::int32_t)

FIRST_FAULT_BASES(VecU32LoadFF1VIZ, std::uint32_t, std::uint8_t)
FIRST_FAULT_OFFSETS(VecU32LoadFF1VSZ, std::uint32_t, std::uint8_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecU32LoadFF1XVSZ, std::uint32_t, std::uint8_t, std::int32_t, 1)

FIRST_FAULT_BASES(VecS32LoadFF1VIZ, std::int32_t, std::int8_t)
FIRST_FAULT_OFFSETS(VecS32LoadFF1VSZ, std::int32_t, std::int8_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecS32LoadFF1XVSZ, std::int32_t, std::int8_t, std::int32_t, 1)

FIRST_FAULT_BASES(VecU32LoadFF2VIZ, std::uint32_t, std::uint16_t)
FIRST_FAULT_OFFSETS(VecU32LoadFF2VSZ, std::uint32_t, std::uint16_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecU32LoadFF2SVZ, std::uint32_t, std::uint16_t, std::uint32_t, 2)
FIRST_FAULT_OFFSETS(VecU32LoadFF2XVSZ, std::uint32_t, std::uint16_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecU32LoadFF2XSVZ, std::uint32_t, std::uint16_t, std::int32_t, 2)

FIRST_FAULT_BASES(VecS32LoadFF2VIZ, std::int32_t, std::int16_t)
FIRST_FAULT_OFFSETS(VecS32LoadFF2VSZ, std::int32_t, std::int16_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecS32LoadFF2SVZ, std::int32_t, std::int16_t, std::uint32_t, 2)
FIRST_FAULT_OFFSETS(VecS32LoadFF2XVSZ, std::int32_t, std::int16_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecS32LoadFF2XSVZ, std::int32_t, std::int16_t, std::int32_t, 2)

FIRST_FAULT_BASES(VecU32LoadFF4VIZ, std::uint32_t, std::uint32_t)
FIRST_FAULT_OFFSETS(VecU32LoadFF4VSZ, std::uint32_t, std::uint32_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecU32LoadFF4SVZ, std::uint32_t, std::uint32_t, std::uint32_t, 4)
FIRST_FAULT_OFFSETS(VecU32LoadFF4XVSZ, std::uint32_t, std::uint32_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecU32LoadFF4XSVZ, std::uint32_t, std::uint32_t, std::int32_t, 4)

FIRST_FAULT_BASES(VecU64LoadFF1VIZ, std::uint64_t, std::uint8_t)
FIRST_FAULT_OFFSETS(VecU64LoadFF1VSZ, std::uint64_t, std::uint8_t, std::uint64_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF1XVSZ, std::uint64_t, std::uint8_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF1YVSZ, std::uint64_t, std::uint8_t, std::uint32_t, 1)

FIRST_FAULT_BASES(VecS64LoadFF1VIZ, std::int64_t, std::int8_t)
FIRST_FAULT_OFFSETS(VecS64LoadFF1VSZ, std::int64_t, std::int8_t, std::uint64_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF1XVSZ, std::int64_t, std::int8_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF1YVSZ, std::int64_t, std::int8_t, std::uint32_t, 1)

FIRST_FAULT_BASES(VecU64LoadFF2VIZ, std::uint64_t, std::uint16_t)
FIRST_FAULT_OFFSETS(VecU64LoadFF2VSZ, std::uint64_t, std::uint16_t, std::uint64_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF2SVZ, std::uint64_t, std::uint16_t, std::uint64_t, 2)
FIRST_FAULT_OFFSETS(VecU64LoadFF2XVSZ, std::uint64_t, std::uint16_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF2XSVZ, std::uint64_t, std::uint16_t, std::int32_t, 2)
FIRST_FAULT_OFFSETS(VecU64LoadFF2YVSZ, std::uint64_t, std::uint16_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF2YSVZ, std::uint64_t, std::uint16_t, std::uint32_t, 2)

FIRST_FAULT_BASES(VecS64LoadFF2VIZ, std::int64_t, std::int16_t)
FIRST_FAULT_OFFSETS(VecS64LoadFF2VSZ, std::int64_t, std::int16_t, std::uint64_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF2SVZ, std::int64_t, std::int16_t, std::uint64_t, 2)
FIRST_FAULT_OFFSETS(VecS64LoadFF2XVSZ, std::int64_t, std::int16_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF2XSVZ, std::int64_t, std::int16_t, std::int32_t, 2)
FIRST_FAULT_OFFSETS(VecS64LoadFF2YVSZ, std::int64_t, std::int16_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF2YSVZ, std::int64_t, std::int16_t, std::uint32_t, 2)

FIRST_FAULT_BASES(VecU64LoadFF4VIZ, std::uint64_t, std::uint32_t)
FIRST_FAULT_OFFSETS(VecU64LoadFF4VSZ, std::uint64_t, std::uint32_t, std::uint64_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF4SVZ, std::uint64_t, std::uint32_t, std::uint64_t, 4)
FIRST_FAULT_OFFSETS(VecU64LoadFF4XVSZ, std::uint64_t, std::uint32_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF4XSVZ, std::uint64_t, std::uint32_t, std::int32_t, 4)
FIRST_FAULT_OFFSETS(VecU64LoadFF4YVSZ, std::uint64_t, std::uint32_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF4YSVZ, std::uint64_t, std::uint32_t, std::uint32_t, 4)

FIRST_FAULT_BASES(VecS64LoadFF4VIZ, std::int64_t, std::int32_t)
FIRST_FAULT_OFFSETS(VecS64LoadFF4VSZ, std::int64_t, std::int32_t, std::uint64_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF4SVZ, std::int64_t, std::int32_t, std::uint64_t, 4)
FIRST_FAULT_OFFSETS(VecS64LoadFF4XVSZ, std::int64_t, std::int32_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF4XSVZ, std::int64_t, std::int32_t, std::int32_t, 4)
FIRST_FAULT_OFFSETS(VecS64LoadFF4YVSZ, std::int64_t, std::int32_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecS64LoadFF4YSVZ, std::int64_t, std::int32_t, std::uint32_t, 4)

FIRST_FAULT_BASES(VecU64LoadFF8VIZ, std::uint64_t, std::uint64_t)
FIRST_FAULT_OFFSETS(VecU64LoadFF8VSZ, std::uint64_t, std::uint64_t, std::uint64_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF8SVZ, std::uint64_t, std::uint64_t, std::uint64_t, 8)
FIRST_FAULT_OFFSETS(VecU64LoadFF8XVSZ, std::uint64_t, std::uint64_t, std::int32_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF8XSVZ, std::uint64_t, std::uint64_t, std::int32_t, 8)
FIRST_FAULT_OFFSETS(VecU64LoadFF8YVSZ, std::uint64_t, std::uint64_t, std::uint32_t, 1)
FIRST_FAULT_OFFSETS(VecU64LoadFF8YSVZ, std::uint64_t, std::uint64_t, std::uint32_t, 8)

#undef FIRST_FAULT_CONTIGUOUS
#undef FIRST_FAULT_OFFSETS
#undef FIRST_FAULT_BASES
