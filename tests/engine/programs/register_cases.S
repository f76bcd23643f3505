// The cases of the table, once on X28 and once on X10, and the code that runs one of them from a given state.
#include "register_cases_features.h"

#define pointer -1
#define number 0x123456789abcdef0

// Each case is a function that executes its instructions and returns; its record holds the function, the start
// value, the feature and the text. And once more among others that name X so often that a translator may hold it in
// another register for all of them.
#define RECORD(needs, start, shown, more, ...)                                                                 \
    .text; 9991: __VA_ARGS__; ret; .section .rodata.text, "a"; 9992: .ascii shown; .asciz more;                \
    .section .rodata.cases, "a"; .quad 9991b, start, feature_##needs, 9992b;
#define OTHERS add x20, x20, X; eor x21, x21, X, ror #3; add x22, x22, X, lsl #1; sub x23, X, x23
#define CASE(needs, start, ...)                                                                                \
    RECORD(needs, start, #__VA_ARGS__, "", __VA_ARGS__)                                                        \
    RECORD(needs, start, #__VA_ARGS__, " among others", OTHERS; __VA_ARGS__; OTHERS)

// A case for each place of X: of one or more sources, in a load or store, with writeback, with an index, and so on.
#define UNARY(needs, op, ...) CASE(needs, number, op X, x3, ##__VA_ARGS__) CASE(needs, number, op x4, X, ##__VA_ARGS__) \
    CASE(needs, number, op X, X, ##__VA_ARGS__)
#define UNARY_W(needs, op, ...)                                                                                \
    CASE(needs, number, op W, w3, ##__VA_ARGS__) CASE(needs, number, op w4, W, ##__VA_ARGS__)                  \
    CASE(needs, number, op W, W, ##__VA_ARGS__)
#define BINARY(needs, op, ...)                                                                                 \
    UNARY(needs, op, x5, ##__VA_ARGS__) CASE(needs, number, op x5, x4, X, ##__VA_ARGS__)                       \
    CASE(needs, number, op X, x4, X, ##__VA_ARGS__) CASE(needs, number, op X, X, X, ##__VA_ARGS__)
#define TERNARY(needs, op) BINARY(needs, op, x6) CASE(needs, number, op x6, x4, x5, X) CASE(needs, number, op X, X, x5, X)
#define ACCESS(needs, op, x, other, offset)                                                                    \
    CASE(needs, number, op x, [x1, offset]) CASE(needs, pointer, op other, [X, offset])                        \
    CASE(needs, pointer, op x, [X, offset])
#define WRITEBACK(op, x, other)                                                                                \
    CASE(base, number, op x, [x1, #8]!) CASE(base, number, op x, [x1], #-24)                                   \
    CASE(base, pointer, op other, [X, #8]!) CASE(base, pointer, op other, [X], #-16)
#define INDEXED(op, x, other)                                                                                  \
    CASE(base, number, op x, [x1, x2]) CASE(base, pointer, op other, [X, x2]) CASE(base, 24, op other, [x1, X]) \
    CASE(base, 24, op x, [x1, X])
#define PAIR(op)                                                                                               \
    CASE(base, number, op X, x4, [x1]) CASE(base, number, op x4, X, [x1, #16])                                 \
    CASE(base, pointer, op x4, x5, [X, #-16]) CASE(base, pointer, op X, x5, [X, #8]) CASE(base, pointer, op x5, X, [X])
#define ATOMIC(op, x, other, third)                                                                            \
    CASE(lse, number, op x, other, [x1]) CASE(lse, number, op other, x, [x1]) CASE(lse, number, op x, x, [x1]) \
    CASE(lse, pointer, op other, third, [X]) CASE(lse, pointer, op x, x, [X])

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
