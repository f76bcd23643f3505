#include "sve/handlers/permutes.h"
#include "sve/library/permutes.h"

#define OPCODE_TABLE "sve/decode/opcodes/permutes.def"
#define OPCODE_ROWS permutes_rows
#include "sve/decode/stubs.inc"
