#include "sve/library/memory_access.h"

#include "sve/library/guarded_access.h"

#include <mutex>

namespace {

template <class Value> Value read_guarded(unsigned long address, bool* fault) {
    if (sigsetjmp(sveFaultJB, 1) != 0) {
        *fault = true;
        return 0;
    }
    touch_guarded<Value>(address);
    return program_access<Value>::read(address);
}

template <class Value> Value read(unsigned long address, bool* fault) {
    if (fault == nullptr)
        return program_access<Value>::read(address);
    const std::lock_guard lock(fault_trapping_mutex);
    return read_guarded<Value>(address, fault);
}

void clear(bool* fault) {
    if (fault != nullptr)
        *fault = false;
}

} // namespace

std::uint8_t ReadMemLib1(unsigned long address, int, bool* fault, CpuContext*) {
    return read<std::uint8_t>(address, fault);
}
std::uint16_t ReadMemLib2(unsigned long address, int, bool* fault, CpuContext*) {
    return read<std::uint16_t>(address, fault);
}
std::uint32_t ReadMemLib4(unsigned long address, int, bool* fault, CpuContext*) {
    return read<std::uint32_t>(address, fault);
}
std::uint64_t ReadMemLib8(unsigned long address, int, bool* fault, CpuContext*) {
    return read<std::uint64_t>(address, fault);
}

void WriteMemLib1(std::uint8_t value, unsigned long address, CpuContext*) {
    program_access<std::uint8_t>::write(address, value);
}
void WriteMemLib2(std::uint16_t value, unsigned long address, CpuContext*) {
    program_access<std::uint16_t>::write(address, value);
}
void WriteMemLib4(std::uint32_t value, unsigned long address, CpuContext*) {
    program_access<std::uint32_t>::write(address, value);
}
void WriteMemLib8(std::uint64_t value, unsigned long address, CpuContext*) {
    program_access<std::uint64_t>::write(address, value);
}

unsigned long ReadMem(unsigned long, int, int, bool* fault, CpuContext*) {
    clear(fault);
    return 0;
}
unsigned long ReadMemSim(unsigned long, int, int, bool* fault, bool, CpuContext*) {
    clear(fault);
    return 0;
}
void WriteMem(unsigned long, unsigned long, int, CpuContext*) {}
void WriteMemSim(unsigned long, unsigned long, int, bool, CpuContext*) {}
