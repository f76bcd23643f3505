#define OPCODE_TABLE "sve/decode/opcodes/first_fault_register.def"
#define OPCODE_ROWS first_fault_register_rows
#include "sve/decode/stubs.inc"
