// Blocks of many SVE instructions, which grow a hundredfold when they are emulated, ended by branches of short reach.

    .arch armv8.2-a+sve
    .text

// uint64_t blocks_N(uint64_t x, uint64_t flag): x + N times the vector length in bytes, plus 1 if bit 0 of the flag is
// set, plus 2 if the flag is 0.
    .irp n, 1, 40, 125, 126, 127, 128, 129, 400
    .globl blocks_\n
blocks_\n:
    .rept \n
    addvl x0, x0, #1
    .endr
    tbz w1, #0, 1f
    add x0, x0, #1
1:
    .rept \n
    addvl x0, x0, #-1
    addvl x0, x0, #1
    .endr
    cbnz x1, 2f
    add x0, x0, #2
2:  ret
    .endr

    .section .note.GNU-stack, "", %progbits
