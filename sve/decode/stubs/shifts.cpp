#define OPCODE_TABLE "sve/decode/opcodes/shifts.def"
#define OPCODE_ROWS shifts_rows
#include "sve/decode/stubs.inc"
