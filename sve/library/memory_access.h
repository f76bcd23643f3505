// How library primitives access the memory of the program under emulation: one element at a time, at any
// alignment, at addresses of the process itself.
#pragma once

#include "sve/decode/library_values.h"
#include "sve/decode/program_access.h"

#include <cstdint>

// The host's page size in bytes, set when the library is loaded.
extern std::uint32_t page_size;

// Loads a value of 1, 2, 4 or 8 bytes. With `fault` null, a fault ends the process. Otherwise the read is
// guarded: if the value's first or last byte cannot be read, `*fault` becomes true and the result is 0; if
// both can, `*fault` stays as it was. The other arguments do not matter.
std::uint8_t ReadMemLib1(unsigned long address, int ignored, bool* fault, CpuContext* context);
std::uint16_t ReadMemLib2(unsigned long address, int ignored, bool* fault, CpuContext* context);
std::uint32_t ReadMemLib4(unsigned long address, int ignored, bool* fault, CpuContext* context);
std::uint64_t ReadMemLib8(unsigned long address, int ignored, bool* fault, CpuContext* context);

// Stores a value of 1, 2, 4 or 8 bytes. A fault ends the process.
void WriteMemLib1(std::uint8_t value, unsigned long address, CpuContext* context);
void WriteMemLib2(std::uint16_t value, unsigned long address, CpuContext* context);
void WriteMemLib4(std::uint32_t value, unsigned long address, CpuContext* context);
void WriteMemLib8(std::uint64_t value, unsigned long address, CpuContext* context);

// Entries of the library's interface behind which there is nothing: a read clears `*fault` and returns 0, a
// write stores nothing, and neither touches memory.
unsigned long ReadMem(unsigned long address, int, int, bool* fault, CpuContext* context);
unsigned long ReadMemSim(unsigned long address, int, int, bool* fault, bool, CpuContext* context);
void WriteMem(unsigned long value, unsigned long address, int, CpuContext* context);
void WriteMemSim(unsigned long value, unsigned long address, int, bool, CpuContext* context);

// What ReadMemLib with a null `fault` and WriteMemLib do, for the type's size and without a call. A value
// read is extended by the signedness of Memory.
template <class Element, class Memory> inline Element read_memory(std::uint64_t address) {
    return program_access<Memory>::template read_as<Element>(address);
}
template <class Memory> inline void write_memory(std::uint64_t value, std::uint64_t address) {
    program_access<Memory>::write(address, static_cast<Memory>(value));
}

// Calls `body` with the index of every element and whether it is active, in ascending order. Where the vector
// length is no multiple of 64 bytes, inactive elements beyond it may follow.
template <class Element, class Body>
[[gnu::always_inline]] inline void for_each_activity(const PredV& pg, const CpuContext* context, Body body) {
    constexpr int together = 8;
    const int count = element_count<Element>(context);
    for (int first = 0; first < count; first += together) {
        const unsigned bit = static_cast<unsigned>(first) * sizeof(Element);
        std::uint64_t active = pg.words[bit / 64] >> (bit % 64);
        if (count - first < together)
            active &= (std::uint64_t{1} << ((count - first) * sizeof(Element))) - 1;
#pragma GCC unroll 8
        for (int k = 0; k < together; ++k)
            body(first + k, static_cast<std::int64_t>(active << (63 - k * sizeof(Element))) < 0);
    }
}
