// The cases of the table, once on X28 and once on X10, and the code that runs one of them from a given state.
#include "register_cases_features.h"

#define pointer -1
#define number 0x123456789abcdef0

// Each case is a function that executes its instructions and returns; its record holds the function, the start
// value, the feature and the text.
#define CASE(needs, start, ...)                                                                                \
    .text; 9991: __VA_ARGS__; ret; .section .rodata.text, "a"; 9992: .asciz #__VA_ARGS__;                      \
    .section .rodata.cases, "a"; .quad 9991b, start, feature_##needs, 9992b

    .arch armv8.5-a+memtag
    .text
literals:
    .quad 0x89abcdef01234567, 0xfedcba9876543210

    .section .rodata.cases, "a"
    .balign 8
    .globl cases_on_x28
cases_on_x28:
#define X x28
#define Y x29
#define W w28
#define WY w29
#include "register_cases.inc"
    .quad 0, 0, 0, 0
#undef X
#undef Y
#undef W
#undef WY

    .section .rodata.cases, "a"
    .globl cases_on_x10
cases_on_x10:
#define X x10
#define Y x11
#define W w10
#define WY w11
#include "register_cases.inc"
    .quad 0, 0, 0, 0

    .bss
    .balign 4096
    .globl buffer
buffer:
    .skip 4096

    .section .note.GNU-stack, "", %progbits
