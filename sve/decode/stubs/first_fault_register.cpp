#include "sve/handlers/first_fault_register.h"
#include "sve/library/first_fault_register.h"

#define OPCODE_TABLE "sve/decode/opcodes/first_fault_register.def"
#define OPCODE_ROWS first_fault_register_rows
#include "sve/decode/stubs.inc"
