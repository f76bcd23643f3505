// The access that a guard is set up for.
#pragma once

#include "sve/client/fault_trapping.h"
#include "sve/client/host_fault.h"

#include <cstdint>

// Loads both ends of a value at the address, because it may straddle the end of a page. A fault returns to
// the guard: the caller holds fault_trapping_mutex, and has recorded the return point by sigsetjmp on
// sveFaultJB, saving the signal mask.
template <class Value> inline void touch_guarded(std::uint64_t address) {
    SVEFaultRegion = 1;
    load_and_drop(address);
    load_and_drop(address + sizeof(Value) - 1);
    SVEFaultRegion = 0;
}
