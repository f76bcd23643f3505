#include "sve/handlers/fp_arithmetic.h"
#include "sve/library/fp_arithmetic.h"

#define OPCODE_TABLE "sve/decode/opcodes/fp_arithmetic.def"
#define OPCODE_ROWS fp_arithmetic_rows
#include "sve/decode/stubs.inc"
