#include "sve/handlers/element_counts.h"
#include "sve/library/element_counts.h"
#include "sve/library/predicate_counts.h"

#define OPCODE_TABLE "sve/decode/opcodes/element_counts.def"
#define OPCODE_ROWS element_counts_rows
#include "sve/decode/stubs.inc"
