// 4001 SVE instructions are executed, and 13 others stand in the program. Each of these is in one block only, since
// every label comes right after a branch. The exit status is 7 if the loop has computed what it should.
    .text
    .global _start
_start:
    mov     x19, #1000
    mov     x1, #0
    b       1f
1:  ptrue   p0.s                    // four SVE instructions, 1000 times
    index   z0.s, #0, #1
    add     z0.s, p0/m, z0.s, z0.s
    incw    x1
    subs    x19, x19, #1
    b.ne    1b
    rdvl    x2, #1                  // bytes of a vector; x1 has 1000 times the words
    mov     x3, #250
    mul     x2, x2, x3
    cmp     x1, x2
    mov     x0, #1
    mov     x4, #7
    csel    x0, x4, x0, eq
    mov     x8, #93                 // exit
    svc     #0
    udf     #0                      // never reached, nor seen
