// Recognition of SVE instruction words. Each of the 44 maps groups the opcodes whose fixed bits stand in the
// same positions; the bits that a map's name lists, concatenated high part first, are its key.
#pragma once

#include "sve/decode/cpu_state.h"

#include <map>

// Returns 0 if the instruction was emulated, 2 if not.
using opcode_stub = aarch64_decode_rc (*)(cpu_state*, unsigned int);
using decode_map = std::map<int, opcode_stub>;

#define DECODE_MAP(slices, is_sve_order, execute_order, rows) extern decode_map decode_map__##slices;
#include "sve/decode/maps.def"
#undef DECODE_MAP

// The stub of the opcode that `word` encodes, or null if no row matches. Reads no state; safe on any thread
// after static initialisation.
opcode_stub is_sve(unsigned int word);

// Emulates the instruction at state->pc. Returns 2 with nothing touched if no row matches, the stub's own
// result if that is not 0, and otherwise counts the instruction, advances pc by one word and returns 0.
aarch64_decode_rc execute_sve_instruction(cpu_state* state);

// The name of an opcode stub, such as "VecU8AddVVM", or null for any other pointer.
const char* opcode_name(opcode_stub stub);
