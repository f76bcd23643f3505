#include "sve/handlers/structured_memory.h"

#define OPCODE_TABLE "sve/decode/opcodes/structured_memory.def"
#define OPCODE_ROWS structured_memory_rows
#include "sve/decode/stubs.inc"
