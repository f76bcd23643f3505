// Runs code that reaches the thread's context through X28, and stands for the engine's gate to the client. Scratch 0 of
// the context holds the machine, 1 the caller's stack pointer, 2 what has to be put aside, engine_sp the stack pointer
// during a call. test_inserted_code.cpp asserts the offsets.
#include "tests/tools/registers.inc"

#define APP_X28 0
#define SCRATCH 88
#define ENGINE_SP 160

    .text
// void run_code(machine*, thread_context*, const uint32_t* code): loads the machine, with the context in X28 and the
// code's address in X17, branches to the code, and stores the machine when the code branches to leave_code.
function run_code
    enter_frame
    mov x28, x1
    str x2, [x28, #SCRATCH + 16]
    mov x1, sp
    stp x0, x1, [x28, #SCRATCH]
    ldr x1, [x0, #224]
    str x1, [x28, #APP_X28]
    ldr x1, [x0, #SP_OFFSET]
    mov sp, x1
    load_system x0, x1
    add x1, x0, #Q_OFFSET
    each_q ldr, x1
    each_x ldr, x0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 29, 30
    ldr x0, [x0]
    ldr x17, [x28, #SCRATCH + 16]
    br x17

function leave_code
    str x0, [x28, #SCRATCH + 16]
    ldr x0, [x28, #SCRATCH]
    each_x str, x0, ALL_BUT_X0, 30
    ldr x1, [x28, #SCRATCH + 16]
    str x1, [x0]
    ldr x1, [x28, #APP_X28]
    str x1, [x0, #224]
    mov x1, sp
    str x1, [x0, #SP_OFFSET]
    store_system x0, x1
    msr fpcr, xzr
    add x1, x0, #Q_OFFSET
    each_q str, x1
    ldr x1, [x28, #SCRATCH + 8]
    mov sp, x1
    leave_frame
    ret

// Changes to a stack of its own, calls X11, and comes back. The callee may change every register but X28: all that it
// left alone by chance is changed here.
function call_client
    mov x9, sp
    str x9, [x28, #ENGINE_SP]
    str x30, [x28, #SCRATCH + 16]
    adrp x9, client_stack_end
    add x9, x9, :lo12:client_stack_end
    mov sp, x9
    blr x11
    ldr x30, [x28, #SCRATCH + 16]
    ldr x9, [x28, #ENGINE_SP]
    mov sp, x9
    .irp n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 29
    movn x\n, #\n
    .endr
    .irp n, ALL_VECTORS
    movi v\n\().16b, #0x77
    .endr
    msr nzcv, x0
    msr fpsr, xzr
    ret

    .bss
    .balign 16
    .skip 1 << 16
client_stack_end:

    .section .note.GNU-stack, "", %progbits
