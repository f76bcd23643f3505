#include "sve/handlers/element_moves.h"
#include "sve/library/element_moves.h"

#define OPCODE_TABLE "sve/decode/opcodes/element_moves.def"
#define OPCODE_ROWS element_moves_rows
#include "sve/decode/stubs.inc"
