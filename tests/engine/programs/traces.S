// Calls that are executed so often that they are translated together with what calls them.
#include "tests/tools/registers.inc"

    .text

// uint64_t count_up(uint64_t n): X28 and X27 count together, so that a handler which finds the thread in
// between can tell from its address how far they are apart. Returns their sum.
function count_up
    stp x29, x30, [sp, #-48]!
    stp x27, x28, [sp, #16]
    str x26, [sp, #32]
    mov x27, #0
    mov w28, wzr
1:  add x28, x28, #1
    .globl count_up_between
count_up_between:
    add x27, x27, #1
    bl leaf
    .globl behind_leaf
behind_leaf:
    bl outer
    tbz x28, #3, 2f
    mov w26, w28
    cmp x26, x28
    csinv x27, x27, xzr, eq
2:  cmp x28, x0
    b.ne 1b
    cbz x28, 1b
    add x0, x27, x28
    ldr x26, [sp, #32]
    ldp x27, x28, [sp, #16]
    ldp x29, x30, [sp], #48
    ret
    .globl count_up_end
count_up_end:

function leaf
    eor x1, x1, x0
    ret

function outer
    stp x29, x30, [sp, #-16]!
    bl leaf
    .globl behind_inner_leaf
behind_inner_leaf:
    ldp x29, x30, [sp], #16
    ret

// uint64_t return_elsewhere(uint64_t n): the function called returns behind its caller's next instruction
// where bit 4 of the counter is set, by X30 itself and by its copy on the stack in turn.
function return_elsewhere
    stp x29, x30, [sp, #-16]!
    mov x2, #0
    mov x3, x0
1:  bl skip_by_register
    add x2, x2, #1
    add x2, x2, #16
    bl skip_by_stack
    add x2, x2, #1
    add x2, x2, #32
    subs x3, x3, #1
    b.ne 1b
    mov x0, x2
    ldp x29, x30, [sp], #16
    ret

skip_by_register:
    tbz x3, #4, 1f
    add x30, x30, #4
1:  ret

skip_by_stack:
    stp x29, x30, [sp, #-16]!
    tbz x3, #4, 1f
    ldr x4, [sp, #8]
    add x4, x4, #4
    str x4, [sp, #8]
1:  ldp x29, x30, [sp], #16
    ret

    .section .note.GNU-stack, "", %progbits
