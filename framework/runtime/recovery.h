// Recovers the application's state from a machine that has been interrupted in the code cache.
#pragma once

#include "framework/runtime/code_cache.h"

// The machine's registers as far as they matter here. X28 is not the application's, and need not be the
// context's address.
struct interrupted_machine {
    std::uint64_t* x; // X0 to X30
    std::uint64_t pc;
};

struct recovery {
    enum class outcome {
        complete, // the registers hold the application's values, at application address `pc`
        leaving,  // in a stub, which soon comes to the dispatcher
        running,  // in code that runs on to `end`, where the state will be complete, at address `pc`
    };
    outcome found;
    std::uint64_t pc;
    a64::word* end;
    bool hand_over_saved; // at `end`, as for a landing
};

// Undoes or completes what the code at the machine's PC has begun; see code_map.h. Only registers and the
// context's copy of X28 change. Where the state can't be recovered, the registers are left so that the
// machine can go on at its PC, which may have moved.
recovery recover_state(const code_cache& cache, interrupted_machine& machine);
