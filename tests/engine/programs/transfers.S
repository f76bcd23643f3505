// Transfers through every register, each a function that returns with all registers but those named in its comment
// as it found them. X16 to X18 are free.

    .arch armv8.5-a

// Tables of {function, number of the register that it changes, or -1}, ended by a null.
    .section .rodata.register, "a"
    .balign 8
    .globl register_transfers
register_transfers:
    .section .rodata.authenticated, "a"
    .balign 8
    .globl authenticated_transfers
authenticated_transfers:
    .text

    .macro keep_link
    mov x16, x30
    .endm
    .macro drop_link
    mov x30, x16
    .endm

    .macro record_in table:req, changed:req
    .pushsection .rodata.\table, "a"
    .quad 9990b, \changed
    .popsection
    .endm

// BR, RET and BLR through Xn; Xn is left with the address.
    .irp n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30
9990:
    keep_link
    adr x\n, 1f
    br x\n
    brk #1
1:  drop_link
    ret
    record_in register, \n
9990:
    keep_link
    adr x\n, 1f
    ret x\n
    brk #1
1:  drop_link
    ret
    record_in register, \n
9990:
    keep_link
    adr x\n, 2f
    blr x\n
1:  drop_link
    ret
2:  adr x17, 1b
    sub x17, x17, x30
    cbnz x17, 3f
    ret
3:  brk #2
    record_in register, \n
    .endr

// The same through a target that is met for the first time, from one place: the look-up misses.
9990:
    keep_link
    adr x0, 1f
    b 2f
1:  adr x0, 3f
    b 2f
2:  br x0
3:  drop_link
    ret
    record_in register, 0

// Authenticated transfers through Xn with modifier Xm: every overlap of the registers that a translator may borrow.
    .macro authenticated n, m
9990:
    keep_link
    adr x\n, 1f
    pacia x\n, \m
    braa x\n, \m
    brk #1
1:  drop_link
    ret
    record_in authenticated, \n
9990:
    keep_link
    adr x\n, 1f
    pacib x\n, \m
    blrab x\n, \m
    drop_link
    ret
1:  ret
    record_in authenticated, \n
    .endm
    .irp n, 0, 13, 14, 15, 17, 28, 30
    .irp m, x0, x13, x14, x15, x28, sp
    .ifnc x\n, \m
    authenticated \n, \m
    .endif
    .endr
    .endr
    .irp n, 0, 13, 14, 15, 28, 30
9990:
    keep_link
    adr x\n, 1f
    paciza x\n
    braaz x\n
    brk #1
1:  pacizb x\n
    adr x\n, 2f
    pacizb x\n
    blrabz x\n
    drop_link
    ret
2:  ret
    record_in authenticated, \n
    .endr
9990:
    paciasp
    keep_link
    bl 1f
    drop_link
    retaa
1:  pacibsp
    retab
    record_in authenticated, -1

// unsigned take(unsigned nzcv): a bit for each condition code that takes its branch.
    .globl take
take:
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

// The same by conditional selection.
    .globl take_selected
take_selected:
    lsl x1, x0, #28
    mov w0, wzr
    msr nzcv, x1
    mov w2, #0x8000
    .irp c, eq, ne, cs, cc, mi, pl, vs, vc, hi, ls, ge, lt, gt, le, al
    .ifc \c, al
    mov w3, w2
    .else
    csel w3, w2, wzr, \c
    .endif
    orr w0, w0, w3
    lsr w0, w0, #1
    .endr
    ret

// uint64_t set_bits_tbz(uint64_t value), set_bits_tbnz: the value, found bit by bit.
    .macro bit_test name, op, other
    .globl \name
\name:
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

// unsigned compare(uint64_t value): bits 0 to 3 for CBZ X, CBZ W, CBNZ X, CBNZ W taken.
    .globl compare
compare:
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
    .globl far_branches
far_branches:
    tbz w0, #0, 1f
    lsr w1, w0, #1
    cbz w1, 2f
    cmp w0, #3
    b.eq 3f
    mov w0, #40
    ret
1:  mov w0, #10
    ret
2:  mov w0, #20
    ret
3:  mov w0, #30
    ret
    .globl much_code
much_code:
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

    .section .rodata.register, "a"
    .quad 0
    .section .rodata.authenticated, "a"
    .quad 0
    .section .note.GNU-stack, "", %progbits
