// long clone_process(flags, stack_top, parent_tid, child_tid, function, argument)
//
// Clone for a process that goes on in the same memory, on a stack of its own: returns in the parent only. The
// child runs function(argument), which must not return.
        .text
        .globl  clone_process
        .type   clone_process, %function
        .balign 4
clone_process:
        hint    #34             // BTI C
        mov     x6, x4
        mov     x4, x3
        mov     x3, xzr         // the thread pointer stays the engine's
        mov     x8, #220        // clone
        svc     #0
        cbz     x0, 1f
        ret
1:      mov     x29, xzr        // the outermost frame
        mov     x30, xzr
        mov     x0, x5
        blr     x6
        brk     #0
        .size   clone_process, . - clone_process

        .section .note.GNU-stack, "", %progbits
