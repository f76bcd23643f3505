// Runs a piece of code from a known state of the registers.
#pragma once

#include <stdint.h>

struct state {
    uint64_t x[31]; // X16 to X18 and X30 are neither loaded nor stored
    uint64_t nzcv;
    uint8_t q[8][16]; // V0 to V6, V28
};

// Loads the state, calls the function, which may change X16 to X18, and stores the state.
void run_case(struct state* state, void (*code)(void));
