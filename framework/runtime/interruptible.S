// Code that signal handlers know by its addresses.

// bool interruptible_system_call(uint64_t* x, const atomic<uint32_t>* pending)
// Makes the system call of the registers X0 to X5 and X8 that `x` holds, stores its result in x[0] and returns
// true; returns false, without having made it, if a signal is pending. A signal that arrives between the look
// at `pending` and the call, or that has made the kernel want to start the call again, finds the PC between
// interruptible_call_check and interruptible_call_done and moves it to interruptible_call_refused.
    .text
    .align 2
    .globl interruptible_system_call, interruptible_call_check, interruptible_call_done, interruptible_call_refused
    .hidden interruptible_call_check, interruptible_call_done, interruptible_call_refused
    .type interruptible_system_call, %function
interruptible_system_call:
    mov x9, x0
    mov x10, x1
    ldr x8, [x9, #64]
    ldp x0, x1, [x9]
    ldp x2, x3, [x9, #16]
    ldp x4, x5, [x9, #32]
interruptible_call_check:
    ldr w11, [x10]
    cbnz w11, interruptible_call_refused
    svc #0
interruptible_call_done:
    str x0, [x9]
    mov w0, #1
    ret
interruptible_call_refused:
    mov w0, #0
    ret
    .size interruptible_system_call, . - interruptible_system_call

// bool copy_guarded(void* to, const void* from, size_t bytes)
// Copies upwards and returns true; returns false at the first byte that cannot be read or written. A fault
// finds the PC between copy_guarded and copy_guarded_failed and moves it to the latter.
    .globl copy_guarded, copy_guarded_failed
    .hidden copy_guarded_failed
    .type copy_guarded, %function
copy_guarded:
    cmp x2, #8
    b.lo 2f
1:  ldr x3, [x1], #8
    str x3, [x0], #8
    sub x2, x2, #8
    cmp x2, #8
    b.hs 1b
2:  cbz x2, 3f
    ldrb w3, [x1], #1
    strb w3, [x0], #1
    sub x2, x2, #1
    b 2b
3:  mov w0, #1
    ret
copy_guarded_failed:
    mov w0, #0
    ret
    .size copy_guarded, . - copy_guarded

    .section .note.GNU-stack, "", %progbits
