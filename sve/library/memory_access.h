// How library primitives access the memory of the program under emulation: one element at a time, at any
// alignment, at addresses of the process itself.
#pragma once

#include "sve/decode/library_values.h"

#include <cstdint>
#include <type_traits>

// The host's page size in bytes, set when the library is loaded.
extern std::uint32_t page_size;

// Loads a value of 1, 2, 4 or 8 bytes. With `fault` null, a fault ends the process. Otherwise the read is
// guarded: if the value's first or last byte cannot be read, `*fault` becomes true and the result is 0; if
// both can, `*fault` stays as it was. The other arguments do not matter. Guarded reads are for one thread at
// a time.
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

// ReadMemLib and WriteMemLib of the type's size.
template <class Memory>
inline Memory read_memory(std::uint64_t address, int ignored, bool* fault, CpuContext* context) {
    static_assert(std::is_integral_v<Memory> && sizeof(Memory) <= 8);
    if constexpr (sizeof(Memory) == 1)
        return static_cast<Memory>(ReadMemLib1(address, ignored, fault, context));
    else if constexpr (sizeof(Memory) == 2)
        return static_cast<Memory>(ReadMemLib2(address, ignored, fault, context));
    else if constexpr (sizeof(Memory) == 4)
        return static_cast<Memory>(ReadMemLib4(address, ignored, fault, context));
    else
        return static_cast<Memory>(ReadMemLib8(address, ignored, fault, context));
}

template <class Memory>
inline void write_memory(std::uint64_t value, std::uint64_t address, CpuContext* context) {
    if constexpr (sizeof(Memory) == 1)
        WriteMemLib1(static_cast<std::uint8_t>(value), address, context);
    else if constexpr (sizeof(Memory) == 2)
        WriteMemLib2(static_cast<std::uint16_t>(value), address, context);
    else if constexpr (sizeof(Memory) == 4)
        WriteMemLib4(static_cast<std::uint32_t>(value), address, context);
    else
        WriteMemLib8(value, address, context);
}
