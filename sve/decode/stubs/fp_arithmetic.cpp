#define OPCODE_TABLE "sve/decode/opcodes/fp_arithmetic.def"
#define OPCODE_ROWS fp_arithmetic_rows
#include "sve/decode/stubs.inc"
