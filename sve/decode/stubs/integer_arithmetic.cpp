#include "sve/handlers/integer_arithmetic.h"
#include "sve/library/integer_arithmetic.h"
#include "sve/library/saturating_arithmetic.h"

#define OPCODE_TABLE "sve/decode/opcodes/integer_arithmetic.def"
#define OPCODE_ROWS integer_arithmetic_rows
#include "sve/decode/stubs.inc"
