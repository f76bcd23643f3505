#include "sve/handlers/unary_integer.h"
#include "sve/library/unary_integer.h"

#define OPCODE_TABLE "sve/decode/opcodes/unary_integer.def"
#define OPCODE_ROWS unary_integer_rows
#include "sve/decode/stubs.inc"
