// Executes one instruction with every register that a program sees under its control, and stores them all afterwards.
// native_execution.cpp asserts the offsets.
#include "tests/tools/registers.inc"

    .arch armv8.2-a+sve

#define HOST_OFFSET   288
#define Z_OFFSET      512
#define P_OFFSET_OF_Z 4096
#define FFR_INDEX     16

    .text

// void enter_slot(processor_registers* registers, const void* slot)
// Loads everything but X30 and goes to the slot, which loads X30 from the registers itself, relative to its own address.
function enter_slot
    enter_frame
    mov x2, sp
    mrs x3, tpidr_el0
    stp x2, x3, [x0, #HOST_OFFSET]
    mrs x2, fpcr
    mrs x3, fpsr
    stp x2, x3, [x0, #HOST_OFFSET + 16]

    add x2, x0, #Z_OFFSET
    add x3, x2, #P_OFFSET_OF_Z
    ldr p0, [x3, #FFR_INDEX, mul vl]
    wrffr p0.b
    each_z ldr, x2
    each_p ldr, x3
    load_system x0, x2
    ldr x2, [x0, #SP_OFFSET]
    mov sp, x2
    mov x30, x1
    each_x ldr, x0, ALL_BUT_X0
    ldr x0, [x0]
    br x30

// Where a slot's code goes on, copied to within reach of the slots with its two literals filled in. No register is free at
// this point; the thread pointer is borrowed to hold X30.
    .globl leave_slot_template, leave_slot_template_end
    .balign 16
leave_slot_template:
    msr tpidr_el0, x30
    ldr x30, registers_literal
    str x29, [x30, #(8 * 29)]
    ldr x29, leave_literal
    br x29
    nop
registers_literal:
    .quad 0
leave_literal:
    .quad 0
leave_slot_template_end:

// With the registers' address in X30, X30 in the thread pointer and X29 stored: stores the rest and returns to the caller
// of enter_slot.
function leave_slot
    each_x str, x30, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28
    mov x0, x30
    mrs x1, tpidr_el0
    str x1, [x0, #(8 * 30)]
    mov x1, sp
    str x1, [x0, #SP_OFFSET]
    store_system x0, x1
    add x2, x0, #Z_OFFSET
    add x3, x2, #P_OFFSET_OF_Z
    each_z str, x2
    each_p str, x3
    rdffr p0.b
    str p0, [x3, #FFR_INDEX, mul vl]

    ldp x2, x3, [x0, #HOST_OFFSET + 16]
    msr fpcr, x2
    msr fpsr, x3
    ldp x2, x3, [x0, #HOST_OFFSET]
    msr tpidr_el0, x3
    mov sp, x2
    leave_frame
    ret

    .section .note.GNU-stack, "", %progbits
