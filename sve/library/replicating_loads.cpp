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

VecV VecU8LoadDup1QSIZ(const PredV& pg, std::uint64_t base, int imm4, CpuContext* context) {
    return at_immediate<std::uint8_t>(pg, base, imm4, context);
}
VecV VecU16LoadDup2QSIZ(const PredV& pg, std::uint64_t base, int imm4, CpuContext* context) {
    return at_immediate<std::uint16_t>(pg, base, imm4, context);
}
VecV VecU32LoadDup4QSIZ(const PredV& pg, std::uint64_t base, int imm4, CpuContext* context) {
    return at_immediate<std::uint32_t>(pg, base, imm4, context);
}
VecV VecU64LoadDup8QSIZ(const PredV& pg, std::uint64_t base, int imm4, CpuContext* context) {
    return at_immediate<std::uint64_t>(pg, base, imm4, context);
}

VecV VecU8LoadDup1QSSZ(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context) {
    return at_index<std::uint8_t>(pg, base, index, context);
}
VecV VecU16LoadDup2QSSZ(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context) {
    return at_index<std::uint16_t>(pg, base, index, context);
}
VecV VecU32LoadDup4QSSZ(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context) {
    return at_index<std::uint32_t>(pg, base, index, context);
}
VecV VecU64LoadDup8QSSZ(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context) {
    return at_index<std::uint64_t>(pg, base, index, context);
}
