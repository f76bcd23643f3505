#include "sve/handlers/integer_compares.h"
#include "sve/library/integer_compares.h"

#define OPCODE_TABLE "sve/decode/opcodes/integer_compares.def"
#define OPCODE_ROWS integer_compares_rows
#include "sve/decode/stubs.inc"
