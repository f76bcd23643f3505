#include "sve/handlers/fill_spill.h"
#include "sve/handlers/non_temporal_memory.h"
#include "sve/handlers/replicating_memory.h"
#include "sve/library/replicating_loads.h"

#define OPCODE_TABLE "sve/decode/opcodes/replicate_fill_prefetch.def"
#define OPCODE_ROWS replicate_fill_prefetch_rows
#include "sve/decode/stubs.inc"
