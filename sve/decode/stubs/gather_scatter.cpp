#define OPCODE_TABLE "sve/decode/opcodes/gather_scatter.def"
#define OPCODE_ROWS gather_scatter_rows
#include "sve/decode/stubs.inc"
