// The function that rewritten code calls once for every execution of an SVE instruction.
#pragma once

#include "sve/client/framework_port.h"
#include "sve/decode/decoder.h"

// The spill slots in which inserted code leaves the application's X26, X27 and X28, and from which it takes
// them back.
inline constexpr dr_spill_slot_t x26_slot = SPILL_SLOT_1;
inline constexpr dr_spill_slot_t x27_slot = SPILL_SLOT_2;
inline constexpr dr_spill_slot_t x28_slot = SPILL_SLOT_3;

// Emulates `word`, which stands at `pc`, by its stub on the calling thread's state. A stub that fails costs
// one line on standard error; the instruction then has no effect but what the stub did, and is not counted.
void emulate_instruction(unsigned int word, unsigned char* pc, opcode_stub stub);
