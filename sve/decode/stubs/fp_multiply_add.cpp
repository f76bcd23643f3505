#include "sve/handlers/fp_multiply_add.h"
#include "sve/library/fp_complex.h"
#include "sve/library/fp_estimates.h"
#include "sve/library/fp_multiply_add.h"
#include "sve/library/fp_trigonometry.h"

#define OPCODE_TABLE "sve/decode/opcodes/fp_multiply_add.def"
#define OPCODE_ROWS fp_multiply_add_rows
#include "sve/decode/stubs.inc"
