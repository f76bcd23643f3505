#include "sve/handlers/fp_conversions.h"
#include "sve/library/fp_conversions.h"
#include "sve/library/fp_rounding.h"

#define OPCODE_TABLE "sve/decode/opcodes/fp_conversions.def"
#define OPCODE_ROWS fp_conversions_rows
#include "sve/decode/stubs.inc"
