#include "sve/handlers/predicate_logic.h"
#include "sve/library/predicate_logic.h"

#define OPCODE_TABLE "sve/decode/opcodes/predicate_logic.def"
#define OPCODE_ROWS predicate_logic_rows
#include "sve/decode/stubs.inc"
