#define OPCODE_TABLE "sve/decode/opcodes/fp_multiply_add.def"
#define OPCODE_ROWS fp_multiply_add_rows
#include "sve/decode/stubs.inc"
