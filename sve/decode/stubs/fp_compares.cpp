#include "sve/handlers/fp_compares.h"
#include "sve/library/fp_compares.h"

#define OPCODE_TABLE "sve/decode/opcodes/fp_compares.def"
#define OPCODE_ROWS fp_compares_rows
#include "sve/decode/stubs.inc"
