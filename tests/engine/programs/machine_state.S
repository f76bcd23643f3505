// Loads the whole state of the machine, does one thing, and stores the whole state.

    .arch armv8.5-a
    .text

#define ALL_REGISTERS                                                                                          \
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29

// void NAME(struct machine* machine).
    .macro observe name
    .globl \name
    .p2align 2
\name:
    stp x29, x30, [sp, #-192]!
    stp x19, x20, [sp, #16]
    stp x21, x22, [sp, #32]
    stp x23, x24, [sp, #48]
    stp x25, x26, [sp, #64]
    stp x27, x28, [sp, #80]
    stp d8, d9, [sp, #96]
    stp d10, d11, [sp, #112]
    stp d12, d13, [sp, #128]
    stp d14, d15, [sp, #144]
    str x0, [sp, #160]
    mrs x1, fpcr
    str x1, [sp, #168]
    // Fill what lies below the stack pointer.
    mov x1, #-512
    mov x2, sp
1:  str x1, [x2, x1]
    adds x1, x1, #8
    b.ne 1b
    mov x30, x0
    add x1, x30, #272
    .irp n, ALL_REGISTERS, 30, 31
    ldr q\n, [x1], #16
    .endr
    ldp x1, x2, [x30, #248]
    msr nzcv, x1
    msr fpcr, x2
    ldr x1, [x30, #264]
    msr fpsr, x1
    .irp n, ALL_REGISTERS, 30
    ldr x\n, [x30, #(8 * \n)]
    .endr
    .endm

    .macro done
    str x0, [sp, #176]
    ldr x0, [sp, #160]
    .irp n, ALL_REGISTERS, 30
    .ifne \n
    str x\n, [x0, #(8 * \n)]
    .endif
    .endr
    ldr x1, [sp, #176]
    str x1, [x0]
    mrs x1, nzcv
    mrs x2, fpcr
    stp x1, x2, [x0, #248]
    mrs x1, fpsr
    str x1, [x0, #264]
    add x1, x0, #272
    .irp n, ALL_REGISTERS, 30, 31
    str q\n, [x1], #16
    .endr
    // Count the words below the stack pointer that have changed.
    mov x1, #-512
    mov x3, xzr
    mov x4, sp
1:  ldr x2, [x4, x1]
    cmp x2, x1
    cinc x3, x3, ne
    adds x1, x1, #8
    b.ne 1b
    str x3, [x0, #784]
    ldr x1, [sp, #168]
    msr fpcr, x1
    ldp x19, x20, [sp, #16]
    ldp x21, x22, [sp, #32]
    ldp x23, x24, [sp, #48]
    ldp x25, x26, [sp, #64]
    ldp x27, x28, [sp, #80]
    ldp d8, d9, [sp, #96]
    ldp d10, d11, [sp, #112]
    ldp d12, d13, [sp, #128]
    ldp d14, d15, [sp, #144]
    ldp x29, x30, [sp], #192
    ret
    .endm

// X8 holds a system call, X12 and X14 code addresses, X28 an address of data: see machine_state.c.
    observe observe_nothing
    done

    observe observe_system_call
    svc #0
    done

    .globl landing_1, landing_2
    observe observe_register_branch
    br x12
landing_1:
    done

    observe observe_borrowed_register_branch
    br x14
landing_2:
    done

    observe observe_stolen_base
    str x3, [x28, #8]
    ldr q0, zeros
    done

    observe observe_direct_branches
    b 7f
8:  cbnz x3, 9f
7:  tbz x28, #63, 8b
9:  done

    .p2align 4
    .globl zeros
zeros:
    .quad 0, 0

    .section .note.GNU-stack, "", %progbits
