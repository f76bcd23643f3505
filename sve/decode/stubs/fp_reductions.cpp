#include "sve/handlers/fp_reductions.h"
#include "sve/library/fp_reductions.h"

#define OPCODE_TABLE "sve/decode/opcodes/fp_reductions.def"
#define OPCODE_ROWS fp_reductions_rows
#include "sve/decode/stubs.inc"
