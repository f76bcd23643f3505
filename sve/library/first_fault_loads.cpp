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
    fault_trapping_mutex.lock();
    const int readable = load_readable<Element, Memory>(result, pg, address_of, context);
    fault_trapping_mutex.unlock();
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

// All gathers of a type of element from a type in memory, without and with scaled offsets. An offset is a
// word, or a doubleword or the low half of one.
#define FIRST_FAULT_WORDS(prefix, element, memory)                                                           \
    FIRST_FAULT_BASES(prefix##VIZ, element, memory)                                                          \
    FIRST_FAULT_OFFSETS(prefix##VSZ, element, memory, std::uint32_t, 1)                                      \
    FIRST_FAULT_OFFSETS(prefix##XVSZ, element, memory, std::int32_t, 1)
#define FIRST_FAULT_SCALED_WORDS(prefix, element, memory)                                                    \
    FIRST_FAULT_OFFSETS(prefix##SVZ, element, memory, std::uint32_t, sizeof(memory))                         \
    FIRST_FAULT_OFFSETS(prefix##XSVZ, element, memory, std::int32_t, sizeof(memory))
#define FIRST_FAULT_DOUBLEWORDS(prefix, element, memory)                                                     \
    FIRST_FAULT_BASES(prefix##VIZ, element, memory)                                                          \
    FIRST_FAULT_OFFSETS(prefix##VSZ, element, memory, std::uint64_t, 1)                                      \
    FIRST_FAULT_OFFSETS(prefix##XVSZ, element, memory, std::int32_t, 1)                                      \
    FIRST_FAULT_OFFSETS(prefix##YVSZ, element, memory, std::uint32_t, 1)
#define FIRST_FAULT_SCALED_DOUBLEWORDS(prefix, element, memory)                                              \
    FIRST_FAULT_OFFSETS(prefix##SVZ, element, memory, std::uint64_t, sizeof(memory))                         \
    FIRST_FAULT_OFFSETS(prefix##XSVZ, element, memory, std::int32_t, sizeof(memory))                         \
    FIRST_FAULT_OFFSETS(prefix##YSVZ, element, memory, std::uint32_t, sizeof(memory))

FIRST_FAULT_WORDS(VecU32LoadFF1, std::uint32_t, std::uint8_t)
FIRST_FAULT_WORDS(VecS32LoadFF1, std::int32_t, std::int8_t)
FIRST_FAULT_WORDS(VecU32LoadFF2, std::uint32_t, std::uint16_t)
FIRST_FAULT_WORDS(VecS32LoadFF2, std::int32_t, std::int16_t)
FIRST_FAULT_WORDS(VecU32LoadFF4, std::uint32_t, std::uint32_t)
FIRST_FAULT_SCALED_WORDS(VecU32LoadFF2, std::uint32_t, std::uint16_t)
FIRST_FAULT_SCALED_WORDS(VecS32LoadFF2, std::int32_t, std::int16_t)
FIRST_FAULT_SCALED_WORDS(VecU32LoadFF4, std::uint32_t, std::uint32_t)

FIRST_FAULT_DOUBLEWORDS(VecU64LoadFF1, std::uint64_t, std::uint8_t)
FIRST_FAULT_DOUBLEWORDS(VecS64LoadFF1, std::int64_t, std::int8_t)
FIRST_FAULT_DOUBLEWORDS(VecU64LoadFF2, std::uint64_t, std::uint16_t)
FIRST_FAULT_DOUBLEWORDS(VecS64LoadFF2, std::int64_t, std::int16_t)
FIRST_FAULT_DOUBLEWORDS(VecU64LoadFF4, std::uint64_t, std::uint32_t)
FIRST_FAULT_DOUBLEWORDS(VecS64LoadFF4, std::int64_t, std::int32_t)
FIRST_FAULT_DOUBLEWORDS(VecU64LoadFF8, std::uint64_t, std::uint64_t)
FIRST_FAULT_SCALED_DOUBLEWORDS(VecU64LoadFF2, std::uint64_t, std::uint16_t)
FIRST_FAULT_SCALED_DOUBLEWORDS(VecS64LoadFF2, std::int64_t, std::int16_t)
FIRST_FAULT_SCALED_DOUBLEWORDS(VecU64LoadFF4, std::uint64_t, std::uint32_t)
FIRST_FAULT_SCALED_DOUBLEWORDS(VecS64LoadFF4, std::int64_t, std::int32_t)
FIRST_FAULT_SCALED_DOUBLEWORDS(VecU64LoadFF8, std::uint64_t, std::uint64_t)

#undef FIRST_FAULT_SCALED_DOUBLEWORDS
#undef FIRST_FAULT_DOUBLEWORDS
#undef FIRST_FAULT_SCALED_WORDS
#undef FIRST_FAULT_WORDS
#undef FIRST_FAULT_BASES
#undef FIRST_FAULT_OFFSETS
#undef FIRST_FAULT_CONTIGUOUS
