#include "sve/library/replicating_loads.h"

#include "sve/library/memory_access.h"

namespace {

constexpr int block_bytes = 16;

template <class Element> VecV replicate_block(const PredV& pg, std::uint64_t address, CpuContext* context) {
    constexpr int elements = block_bytes / static_cast<int>(sizeof(Element));
    Element block[elements] = {};
    for (int i = 0; i < elements; ++i, address += sizeof(Element))
        if (is_active<Element>(pg, i))
            block[i] = read_memory<Element, Element>(address);
    VecV result;
    for (int start = 0; start < vector_length(context) * 8; start += block_bytes)
        std::memcpy(result.bytes + start, block, block_bytes);
    return result;
}

template <class Element>
VecV at_immediate(const PredV& pg, std::uint64_t base, int imm4, CpuContext* context) {
    return replicate_block<Element>(pg, base + static_cast<std::uint64_t>(imm4) * block_bytes, context);
}

template <class Element>
VecV at_index(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context) {
    return replicate_block<Element>(pg, base + index * sizeof(Element), context);
}

} // namespace

// A primitive a line. Macros, since only they can make the names.
#define LOAD_AT_IMMEDIATE(name, element)                                                                     \
    VecV name(const PredV& pg, std::uint64_t base, int imm4, CpuContext* context) {                          \
        return at_immediate<element>(pg, base, imm4, context);                                               \
    }

LOAD_AT_IMMEDIATE(VecU8LoadDup1QSIZ, std::uint8_t)
LOAD_AT_IMMEDIATE(VecU16LoadDup2QSIZ, std::uint16_t)
LOAD_AT_IMMEDIATE(VecU32LoadDup4QSIZ, std::uint32_t)
LOAD_AT_IMMEDIATE(VecU64LoadDup8QSIZ, std::uint64_t)
#undef LOAD_AT_IMMEDIATE

#define LOAD_AT_INDEX(name, element)                                                                         \
    VecV name(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context) {               \
        return at_index<element>(pg, base, index, context);                                                  \
    }

LOAD_AT_INDEX(VecU8LoadDup1QSSZ, std::uint8_t)
LOAD_AT_INDEX(VecU16LoadDup2QSSZ, std::uint16_t)
LOAD_AT_INDEX(VecU32LoadDup4QSSZ, std::uint32_t)
LOAD_AT_INDEX(VecU64LoadDup8QSSZ, std::uint64_t)
#undef LOAD_AT_INDEX
