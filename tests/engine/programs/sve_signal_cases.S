    .arch armv8.2-a+sve
    .text
    .align 2

// The state is in memory as 32 vectors, 16 predicates, FFR.
.macro each_register operation, base, scratch
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    \operation z\n, [\base, #\n, mul vl]
    .endr
    add \scratch, \base, #4096
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15
    \operation p\n, [\scratch, #\n, mul vl]
    .endr
.endm
.macro load_all base, scratch
    add \scratch, \base, #4096
    ldr p0, [\scratch, #16, mul vl]
    wrffr p0.b
    each_register ldr, \base, \scratch
.endm
.macro store_all base, scratch
    each_register str, \base, \scratch
    rdffr p0.b
    str p0, [\scratch, #16, mul vl]
.endm
.macro save_low
    stp d8, d9, [sp, #-64]!
    stp d10, d11, [sp, #16]
    stp d12, d13, [sp, #32]
    stp d14, d15, [sp, #48]
.endm
.macro restore_low
    ldp d14, d15, [sp, #48]
    ldp d12, d13, [sp, #32]
    ldp d10, d11, [sp, #16]
    ldp d8, d9, [sp], #64
.endm

// spin(from, to, count, limit): loads the state, runs SVE instructions that change nothing until *count is
// limit, and stores the state.
    .globl spin, fault, clobber
    .type spin, %function
spin:
    save_low
    load_all x0, x9
1:  ldr w4, [x2]
    add z5.b, z5.b, #0
    mov z6.d, z6.d
    orr z7.d, z7.d, z7.d
    cmp w4, w3
    b.lt 1b
    store_all x1, x9
    restore_low
    ret
    .size spin, . - spin

// fault(from, to): with a load from address 8 in between.
    .type fault, %function
fault:
    save_low
    load_all x0, x9
    mov x4, #8
    ldr x4, [x4]
    store_all x1, x9
    restore_low
    ret
    .size fault, . - fault

// Another state in every register.
    .type clobber, %function
clobber:
    save_low
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    dup z\n\().b, #\n
    .endr
    pfalse p0.b
    wrffr p0.b
    .irp n, 1,2,3,4,5,6,7,8,9,10,11,12,13,14,15
    ptrue p\n\().s
    .endr
    restore_low
    ret
    .size clobber, . - clobber

    .section .note.GNU-stack, "", %progbits
