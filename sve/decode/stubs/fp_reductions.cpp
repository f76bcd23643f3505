#define OPCODE_TABLE "sve/decode/opcodes/fp_reductions.def"
#define OPCODE_ROWS fp_reductions_rows
#include "sve/decode/stubs.inc"
