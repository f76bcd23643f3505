// The function that rewritten code calls once for every execution of an SVE instruction.
#pragma once

#include "sve/client/framework_port.h"
#include "sve/decode/decoder.h"

// Emulates `word`, which stands at `pc`, by its stub on the calling thread's state. A stub that fails costs
// one line on standard error; the instruction then has no effect but what the stub did, and is not counted.
void emulate_instruction(unsigned int word, unsigned char* pc, opcode_stub stub);
