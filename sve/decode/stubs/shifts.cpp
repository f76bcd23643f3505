#include "sve/handlers/shifts.h"
#include "sve/library/shifts.h"

#define OPCODE_TABLE "sve/decode/opcodes/shifts.def"
#define OPCODE_ROWS shifts_rows
#include "sve/decode/stubs.inc"
