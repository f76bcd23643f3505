#include "sve/handlers/first_fault_loads.h"
#include "sve/library/first_fault_loads.h"

#define OPCODE_TABLE "sve/decode/opcodes/first_fault_loads.def"
#define OPCODE_ROWS first_fault_loads_rows
#include "sve/decode/stubs.inc"
