#include "tests/tools/registers.inc"

    .arch armv8.2-a+sve
    .text
    .align 2

// The state is in memory as 32 vectors, 16 predicates, FFR.
.macro load_all base
    add x9, \base, #4096
    ldr p0, [x9, #16, mul vl]
    wrffr p0.b
    each_z ldr, \base
    each_p ldr, x9
.endm
.macro store_all base
    each_z str, \base
    add x9, \base, #4096
    each_p str, x9
    rdffr p0.b
    str p0, [x9, #16, mul vl]
.endm

// spin(from, to, count, limit): loads the state, runs SVE instructions that change nothing until *count is
// limit, and stores the state.
function spin
    enter_frame
    load_all x0
1:  ldr w4, [x2]
    add z5.b, z5.b, #0
    mov z6.d, z6.d
    orr z7.d, z7.d, z7.d
    cmp w4, w3
    b.lt 1b
    store_all x1
    leave_frame
    ret

// fault(from, to): with a load from address 8 in between.
function fault
    enter_frame
    load_all x0
    mov x4, #8
    ldr x4, [x4]
    store_all x1
    leave_frame
    ret

// Another state in every register.
function clobber
    enter_frame
    .irp n, ALL_VECTORS
    dup z\n\().b, #\n
    .endr
    pfalse p0.b
    wrffr p0.b
    .irp n, 1,2,3,4,5,6,7,8,9,10,11,12,13,14,15
    ptrue p\n\().s
    .endr
    leave_frame
    ret

    .section .note.GNU-stack, "", %progbits
