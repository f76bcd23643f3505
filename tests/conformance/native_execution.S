// Executes one instruction with every register that a program sees under its control, and stores them all afterwards.
// The offsets are those of processor_registers (native_execution.cpp asserts them).
    .arch armv8.2-a+sve

#define X_OFFSET      0
#define SP_OFFSET     248
#define NZCV_OFFSET   256
#define FPSR_OFFSET   264
#define FPCR_OFFSET   272
#define HOST_OFFSET   288
#define Z_OFFSET      512
#define P_OFFSET_OF_Z 4096
#define FFR_INDEX     16

    .macro for_each_z operation
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    \operation z\n, [x2, #\n, mul vl]
    .endr
    .endm

    .macro for_each_p operation
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15
    \operation p\n, [x3, #\n, mul vl]
    .endr
    .endm

    .macro for_each_pair_after_x1 operation
    \operation x2, x3, [x0, #X_OFFSET + 16]
    \operation x4, x5, [x0, #X_OFFSET + 32]
    \operation x6, x7, [x0, #X_OFFSET + 48]
    \operation x8, x9, [x0, #X_OFFSET + 64]
    \operation x10, x11, [x0, #X_OFFSET + 80]
    \operation x12, x13, [x0, #X_OFFSET + 96]
    \operation x14, x15, [x0, #X_OFFSET + 112]
    \operation x16, x17, [x0, #X_OFFSET + 128]
    \operation x18, x19, [x0, #X_OFFSET + 144]
    \operation x20, x21, [x0, #X_OFFSET + 160]
    \operation x22, x23, [x0, #X_OFFSET + 176]
    \operation x24, x25, [x0, #X_OFFSET + 192]
    \operation x26, x27, [x0, #X_OFFSET + 208]
    .endm

    .text

// void enter_slot(processor_registers* registers, const void* slot)
// Loads everything but X30 and goes to the slot, which loads X30 from the registers itself, relative to its own address.
    .globl enter_slot
    .type enter_slot, %function
enter_slot:
    stp x29, x30, [sp, #-160]!
    stp x19, x20, [sp, #16]
    stp x21, x22, [sp, #32]
    stp x23, x24, [sp, #48]
    stp x25, x26, [sp, #64]
    stp x27, x28, [sp, #80]
    stp d8, d9, [sp, #96]
    stp d10, d11, [sp, #112]
    stp d12, d13, [sp, #128]
    stp d14, d15, [sp, #144]
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
    for_each_z ldr
    for_each_p ldr
    ldr x2, [x0, #FPCR_OFFSET]
    msr fpcr, x2
    ldr x2, [x0, #FPSR_OFFSET]
    msr fpsr, x2
    ldr x2, [x0, #NZCV_OFFSET]
    msr nzcv, x2
    ldr x2, [x0, #SP_OFFSET]
    mov sp, x2
    mov x30, x1
    for_each_pair_after_x1 ldp
    ldp x28, x29, [x0, #X_OFFSET + 224]
    ldp x0, x1, [x0, #X_OFFSET]
    br x30
    .size enter_slot, . - enter_slot

// Where a slot's code goes on, copied to within reach of the slots with its two literals filled in. No register is free at
// this point; the thread pointer is borrowed to hold X30.
    .globl leave_slot_template, leave_slot_template_end
    .balign 16
leave_slot_template:
    msr tpidr_el0, x30
    ldr x30, registers_literal
    str x29, [x30, #X_OFFSET + 232]
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
    .globl leave_slot
    .type leave_slot, %function
leave_slot:
    stp x0, x1, [x30, #X_OFFSET]
    mov x0, x30
    for_each_pair_after_x1 stp
    str x28, [x0, #X_OFFSET + 224]
    mrs x1, tpidr_el0
    str x1, [x0, #X_OFFSET + 240]
    mov x1, sp
    str x1, [x0, #SP_OFFSET]
    mrs x1, nzcv
    str x1, [x0, #NZCV_OFFSET]
    mrs x1, fpsr
    str x1, [x0, #FPSR_OFFSET]
    mrs x1, fpcr
    str x1, [x0, #FPCR_OFFSET]
    add x2, x0, #Z_OFFSET
    add x3, x2, #P_OFFSET_OF_Z
    for_each_z str
    for_each_p str
    rdffr p0.b
    str p0, [x3, #FFR_INDEX, mul vl]

    ldp x2, x3, [x0, #HOST_OFFSET + 16]
    msr fpcr, x2
    msr fpsr, x3
    ldp x2, x3, [x0, #HOST_OFFSET]
    msr tpidr_el0, x3
    mov sp, x2
    ldp x19, x20, [sp, #16]
    ldp x21, x22, [sp, #32]
    ldp x23, x24, [sp, #48]
    ldp x25, x26, [sp, #64]
    ldp x27, x28, [sp, #80]
    ldp d8, d9, [sp, #96]
    ldp d10, d11, [sp, #112]
    ldp d12, d13, [sp, #128]
    ldp d14, d15, [sp, #144]
    ldp x29, x30, [sp], #160
    ret
    .size leave_slot, . - leave_slot

    .section .note.GNU-stack, "", %progbits
