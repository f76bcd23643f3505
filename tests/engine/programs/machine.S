// Loads the whole state of the machine, does one thing, and stores the whole state; and transfers of every kind.
#include "tests/tools/registers.inc"

    .arch armv8.5-a
    .text

// void NAME(struct machine* machine): SP is left alone, and X28 is a register like any other.
    .macro observe name
function \name
    enter_frame 192
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
    add x1, x30, #Q_OFFSET
    each_q ldr, x1
    load_system x30, x1
    each_x ldr, x30, 0, ALL_BUT_X0, 30
    .endm

    .macro done
    str x0, [sp, #176]
    ldr x0, [sp, #160]
    each_x str, x0, ALL_BUT_X0, 30
    ldr x1, [sp, #176]
    str x1, [x0]
    store_system x0, x1
    add x1, x0, #Q_OFFSET
    each_q str, x1
    // Count the words below the stack pointer that have changed.
    mov x1, #-512
    mov x3, xzr
    mov x4, sp
1:  ldr x2, [x4, x1]
    cmp x2, x1
    cinc x3, x3, ne
    adds x1, x1, #8
    b.ne 1b
    str x3, [x0, #CHANGED_BELOW_SP_OFFSET]
    ldr x1, [sp, #168]
    msr fpcr, x1
    leave_frame 192
    ret
    .endm

    observe observe_nothing
    done

// X8 holds a system call.
    observe observe_system_call
    svc #0
    done

// X12 holds the address of landing.
    observe observe_register_branch
    br x12
    .globl landing
landing:
    done

// X28 holds an address of data.
    observe observe_stolen_base
    str x3, [x28, #8]
    ldr q0, zeros
    done

    observe observe_direct_branches
    b 7f
8:  cbnz x3, 9f
7:  tbz x28, #63, 8b
9:  done

// X16 holds the address of a function, which may change X16 to X18 and changes X30.
    observe observe_call
    blr x16
    done

    .p2align 4
zeros:
    .quad 0, 0

// Transfers through every register, each a function that returns with all registers but those named in its record, and
// X16 to X18, as it found them. A record is {function, number of the register that it changes, or -1}, and a null ends
// them.
    .section .rodata.register, "a"
    .balign 8
    .globl register_transfers
register_transfers:
    .section .rodata.authenticated, "a"
    .balign 8
    .globl authenticated_transfers
authenticated_transfers:
    .text

    .macro record_in table:req, changed:req
    .pushsection .rodata.\table, "a"
    .quad 9990b, \changed
    .popsection
    .endm
    .macro begin_transfer
9990:
    mov x16, x30
    .endm
    .macro end_transfer
    mov x30, x16
    ret
    .endm

// BR, RET and BLR through Xn; Xn is left with the address.
    .irp n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30
    .irp transfer, br, ret
    begin_transfer
    adr x\n, 1f
    \transfer x\n
    brk #1
1:  end_transfer
    record_in register, \n
    .endr
    begin_transfer
    adr x\n, 2f
    blr x\n
1:  end_transfer
2:  adr x17, 1b
    sub x17, x17, x30
    cbnz x17, 3f
    ret
3:  brk #2
    record_in register, \n
    .endr

// The same through a target that is met for the first time, from one place: the look-up misses.
    begin_transfer
    adr x0, 1f
    b 2f
1:  adr x0, 3f
    b 2f
2:  br x0
3:  end_transfer
    record_in register, 0

// Authenticated transfers through Xn with modifier Xm: every overlap of the registers that a translator may borrow.
    .macro authenticated n, m
    begin_transfer
    adr x\n, 1f
    pacia x\n, \m
    braa x\n, \m
    brk #1
1:  end_transfer
    record_in authenticated, \n
    begin_transfer
    adr x\n, 1f
    pacib x\n, \m
    blrab x\n, \m
    end_transfer
1:  ret
    record_in authenticated, \n
    .endm
    .irp n, 0, 13, 14, 15, 17, 28, 30
    .irp m, x0, x13, x14, x15, x28, sp
    .ifnc x\n, \m
    authenticated \n, \m
    .endif
    .endr
    begin_transfer
    adr x\n, 1f
    paciza x\n
    braaz x\n
    brk #1
1:  adr x\n, 2f
    pacizb x\n
    blrabz x\n
    end_transfer
2:  ret
    record_in authenticated, \n
    .endr
9990:
    paciasp
    mov x16, x30
    bl 1f
    mov x30, x16
    retaa
1:  pacibsp
    retab
    record_in authenticated, -1

    .section .rodata.register, "a"
    .quad 0
    .section .rodata.authenticated, "a"
    .quad 0
    .text

// unsigned take(unsigned nzcv): a bit for each condition code that takes its branch.
function take
    lsl x1, x0, #28
    mov w0, wzr
    msr nzcv, x1
    .irp c, eq, ne, cs, cc, mi, pl, vs, vc, hi, ls, ge, lt, gt, le, al
    b.\c 1f
    b 2f
1:  orr w0, w0, #0x8000
2:  lsr w0, w0, #1
    .endr
    ret

// uint64_t set_bits_tbz(uint64_t value), clear_bits_tbnz: the value, or its opposite, found bit by bit.
    .macro bit_test name, op
function \name
    mov x1, xzr
    .irp high, 0, 8, 16, 24, 32, 40, 48, 56
    .irp low, 0, 1, 2, 3, 4, 5, 6, 7
    \op x0, #(\high + \low), 1f
    orr x1, x1, #(1 << (\high + \low))
1:
    .endr
    .endr
    mov x0, x1
    ret
    .endm
    bit_test set_bits_tbz, tbz
    bit_test clear_bits_tbnz, tbnz

// unsigned compare(uint64_t value): bits 0 to 3 for CBNZ X, CBNZ W, CBZ X, CBZ W not taken.
function compare
    mov w1, wzr
    cbnz x0, 1f
    orr w1, w1, #1
1:  cbnz w0, 1f
    orr w1, w1, #2
1:  cbz x0, 1f
    orr w1, w1, #4
1:  cbz w0, 1f
    orr w1, w1, #8
1:  mov w0, w1
    ret

// int far_branches(int way): the sides of short-reaching branches are met with a great deal of other code between.
function far_branches
    tbz w0, #0, 1f
    lsr w1, w0, #1
    cbz w1, 2f
    cmp w0, #3
    b.eq 3f
    mov w0, #40
    ret
    .irp way, 1, 2, 3
\way:
    mov w0, #(10 * \way)
    ret
    .endr
function much_code
    mov w0, wzr
    .rept 12000
    .rept 24
    nop
    .endr
    add w0, w0, #1
    cbz w0, 9f
9:
    .endr
    ret

    .section .note.GNU-stack, "", %progbits
