#include "sve/handlers/broadcast.h"

#define OPCODE_TABLE "sve/decode/opcodes/broadcast.def"
#define OPCODE_ROWS broadcast_rows
#include "sve/decode/stubs.inc"
