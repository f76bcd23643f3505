#include "sve/handlers/multiply_accumulate.h"
#include "sve/library/dot_products.h"

#define OPCODE_TABLE "sve/decode/opcodes/multiply_accumulate.def"
#define OPCODE_ROWS multiply_accumulate_rows
#include "sve/decode/stubs.inc"
