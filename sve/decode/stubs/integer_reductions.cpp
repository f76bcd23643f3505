#include "sve/handlers/integer_reductions.h"
#include "sve/library/integer_reductions.h"

#define OPCODE_TABLE "sve/decode/opcodes/integer_reductions.def"
#define OPCODE_ROWS integer_reductions_rows
#include "sve/decode/stubs.inc"
