// A processor's registers in memory, as the macros of registers.inc load and store them.
#pragma once

#include <stdint.h>

struct machine {
    uint64_t x[31], sp, nzcv, fpsr, fpcr;
    uint64_t changed_below_sp; // words; see tests/engine/programs/machine.S
    uint8_t q[32][16];
};
