#define OPCODE_TABLE "sve/decode/opcodes/predicate_logic.def"
#define OPCODE_ROWS predicate_logic_rows
#include "sve/decode/stubs.inc"
