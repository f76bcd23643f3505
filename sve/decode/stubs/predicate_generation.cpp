#include "sve/handlers/predicate_generation.h"
#include "sve/handlers/predicate_flags.h"
#include "sve/handlers/predicate_partition.h"
#include "sve/handlers/predicate_permutes.h"
#include "sve/library/predicate_generation.h"

#define OPCODE_TABLE "sve/decode/opcodes/predicate_generation.def"
#define OPCODE_ROWS predicate_generation_rows
#include "sve/decode/stubs.inc"
