#include "sve/handlers/gather_scatter.h"
#include "sve/library/address_generation.h"
#include "sve/library/gather_scatter.h"

#define OPCODE_TABLE "sve/decode/opcodes/gather_scatter.def"
#define OPCODE_ROWS gather_scatter_rows
#include "sve/decode/stubs.inc"
