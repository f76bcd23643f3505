// Defines handlers in one line each: the name, and the function that carries it out on the same operands.
// Macros, since only they can make the names. Shapes that one family alone has are in that family's file.
#pragma once

#include "sve/decode/cpu_state.h"

// Two operands, or an old destination and one operand: the first stays where the predicate is inactive.
#define MERGING_HANDLER(name, ...)                                                                           \
    aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {        \
        return __VA_ARGS__(state, zdn, pg, zm);                                                              \
    }

// Two operands, all elements.
#define VECTOR_HANDLER(name, ...)                                                                            \
    aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {         \
        return __VA_ARGS__(state, zd, zn, zm);                                                               \
    }

// Two operands, and a predicate for a result.
#define COMPARING_HANDLER(name, ...)                                                                         \
    aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,           \
                           aarch64_z_reg zm) {                                                               \
        return __VA_ARGS__(state, pd, pg, zn, zm);                                                           \
    }
