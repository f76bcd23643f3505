// System calls and memory accesses that a signal may cut short.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

extern "C" {

// Makes the system call whose registers `x` holds, X0 to X5 and X8, and stores its result in x[0]. False,
// with nothing done, if a signal is pending before the kernel has begun with it.
bool interruptible_system_call(std::uint64_t* x, const std::atomic<std::uint32_t>* pending);
extern const char interruptible_call_check[], interruptible_call_done[], interruptible_call_refused[];

// Copies memory, of which either side may be the application's. False at the first byte that faults, with
// what stands before it copied.
bool copy_guarded(void* to, const void* from, std::size_t bytes);
extern const char copy_guarded_failed[];
}

// Copies a record from or to the application's memory. False if it is not all accessible.
template <typename Record> bool read_application(Record& record, std::uint64_t address) {
    return copy_guarded(&record, reinterpret_cast<const void*>(address), sizeof record);
}
template <typename Record> bool write_application(std::uint64_t address, const Record& record) {
    return copy_guarded(reinterpret_cast<void*>(address), &record, sizeof record);
}
