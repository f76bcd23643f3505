// Moves to and from the first-fault register. Rows are taken as they stand, all eight bits of each byte and
// whatever the element size. No handler changes a flag or can fail; each returns aarch64_emulated.
#pragma once

#include "sve/decode/cpu_state.h"

// Makes every byte of FFR 1.
aarch64_decode_rc sve_setffr(cpu_state* state);

// pd = FFR; pd = FFR & pg; FFR = pn.
aarch64_decode_rc sve_rdffr_p(cpu_state* state, aarch64_p_reg pd);
aarch64_decode_rc sve_rdffr_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg);
aarch64_decode_rc sve_wrffr_p(cpu_state* state, aarch64_p_reg pn);
