#define OPCODE_TABLE "sve/decode/opcodes/replicate_fill_prefetch.def"
#define OPCODE_ROWS replicate_fill_prefetch_rows
#include "sve/decode/stubs.inc"
