#include "sve/handlers/contiguous_memory.h"

#define OPCODE_TABLE "sve/decode/opcodes/contiguous_memory.def"
#define OPCODE_ROWS contiguous_memory_rows
#include "sve/decode/stubs.inc"
