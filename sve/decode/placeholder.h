// A handler that was not written. It takes any operands, says on standard error which instruction met it, and
// reports that the instruction was not emulated.
#pragma once

#include "sve/decode/cpu_state.h"

// Writes the line that tells address, word and name of an unimplemented instruction to standard error.
void report_unimplemented(const cpu_state* state, const char* name);

struct placeholder {
    const char* name;

    template <class... Operands> aarch64_decode_rc operator()(cpu_state* state, const Operands&...) const {
        report_unimplemented(state, name);
        return aarch64_not_emulated;
    }
};
