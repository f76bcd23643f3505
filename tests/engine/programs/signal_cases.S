// Code that signals meet at every instruction.
#include "tests/tools/registers.inc"

    .text
    .align 2

.macro fill_registers
    ldr x1, =0x0101010101010101
    .irp n, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29
    mov x\n, #\n
    mul x\n, x\n, x1
    .endr
    mov x1, #0x0909
    fmov d9, x1
    mov x1, #0x90000000
    msr nzcv, x1
.endm

// uint64_t fault_with_registers(void* address, uint64_t* results): faults three times with X2 to X29 full of
// their numbers and flags 9; the handler adds to X28, X14, X15 and V9, changes the flags, and goes on behind
// the instruction. Stores what the last one leaves in X28, X14, X15, flags and V9.
    .globl faulting_instruction, undefined_instruction, trapping_instruction
function fault_with_registers
    enter_frame 192
    stp x0, x1, [sp, #160]
    fill_registers
undefined_instruction:
    udf #7
    fill_registers
trapping_instruction:
    brk #9
    fill_registers
    ldr x0, [sp, #160]
    // X28 may stand elsewhere for a while where it is named often.
    eor x28, x28, x1
    eor x28, x28, x1
faulting_instruction:
    str x28, [x0, #8]!
    ldr x1, [sp, #168]
    str x28, [x1]
    stp x14, x15, [x1, #8]
    mrs x2, nzcv
    str x2, [x1, #24]
    str d9, [x1, #32]
    leave_frame 192
    ret

// uint64_t busy_round(uint64_t seed, uint64_t rounds): a loop of instructions and transfers of all the kinds
// that a translator rewrites, on registers that it may want for itself. The result depends on each of them.
function busy_round
    enter_frame 192
    mov x27, x0
    mov x26, x1
    mov x28, x0
    adrp x25, table
    add x25, x25, :lo12:table
    mov x14, #3
    mov x15, #5
    mov x13, #7
    fmov d8, x0
1:  add x28, x28, x14
    str x28, [sp, #176]
    ldr x28, [sp, #176]
    eor x14, x14, x28, lsr #3
    cbz x28, 9f
    tbnz x28, #7, 2f
    add x15, x15, x28
2:  adr x16, 3f
    br x16
3:  bl 10f
    adr x15, 11f
    blr x15
    mov x15, x0
    adr x14, 4f
    br x14
9:  mov x28, #99
4:  mov x14, x15
    adr x28, 12f
    blr x28
    eor x28, x0, x14
    adr x30, 11f
    blr x30
    adds x15, x15, x28
    adc x14, x14, x15
    ldp x28, x13, [x25]
    add x28, x28, x13
    stp x28, x14, [sp, #176]
    ldp x14, x28, [sp, #176]
    ldr x13, constant
    madd x28, x28, x13, x27
    ccmp x28, x14, #5, lo
    cset x0, hi
    add x27, x27, x0
    add x27, x27, x28
    fmov d9, x27
    fadd d8, d8, d9
    mrs x0, tpidr_el0
    add x27, x27, x0
    sub x27, x27, x0
5:  ldxr x28, [x25]
    add x28, x28, x14
    stxr w0, x28, [x25]
    cbnz w0, 5b
    mov x0, #0
    str x0, [x25]
    subs x26, x26, #1
    b.ne 1b
    mov x0, x27
    eor x0, x0, x28
    eor x0, x0, x14
    eor x0, x0, x15
    leave_frame 192
    ret
10: eor x14, x14, x15, ror #11
    ret
11: add x0, x14, x28
    ret
12: eor x0, x27, x28, lsl #60
    mov x28, x0
    ret
    .align 3
constant:
    .quad 0x5851F42D4C957F2D
    .ltorg

    .data
    .align 3
table:
    .quad 0, 17

    .section .note.GNU-stack, "", %progbits
