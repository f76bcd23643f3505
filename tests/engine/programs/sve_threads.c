// Threads that execute SVE instructions, each a known number of times; their own registers and predicates
// must not mix. Z0 is counted up in one thread and down in others.
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>

enum { threads = 8, rounds = 500, batches = 5 };

// 1 + rounds * 2 + 1 SVE instructions.
static uint64_t count(uint64_t start, uint64_t step) {
    register uint64_t x0 __asm__("x0") = start;
    register uint64_t x1 __asm__("x1") = step;
    register uint64_t x2 __asm__("x2") = rounds;
    __asm__ volatile(".inst 0x05e03800\n"    // DUP Z0.D, X0
                     "1: .inst 0x05e03821\n" // DUP Z1.D, X1
                     ".inst 0x04e10000\n"    // ADD Z0.D, Z0.D, Z1.D
                     "subs x2, x2, #1\n"
                     "b.ne 1b\n"
                     ".inst 0x0420e3e3\n" // CNTB X3
                     "fmov x0, d0\n"
                     "add x0, x0, x3\n"
                     : "+r"(x0), "+r"(x2)
                     : "r"(x1)
                     : "x3", "v0", "v1", "cc");
    return x0;
}

static void* run(void* argument) {
    const uint64_t n = (uintptr_t)argument;
    return (void*)(uintptr_t)(count(n * 1000000, n) == n * 1000000 + n * rounds + 128);
}

static void* run_endlessly(void* argument) {
    for (;;)
        run(argument);
    return NULL;
}

int main(int argc, char** argv) {
    (void)argv;
    unsigned right = 0;
    if (argc > 1) {
        for (uintptr_t n = 0; n < threads; ++n) {
            pthread_t id;
            pthread_create(&id, NULL, run_endlessly, (void*)n);
        }
        run(NULL);
        return 9;
    }
    for (unsigned batch = 0; batch < batches; ++batch) {
        pthread_t id[threads];
        for (uintptr_t n = 0; n < threads; ++n)
            pthread_create(&id[n], NULL, run, (void*)n);
        for (unsigned n = 0; n < threads; ++n) {
            void* result;
            pthread_join(id[n], &result);
            right += (unsigned)(uintptr_t)result;
        }
    }
    printf("right %u of %u\n", right, threads * batches);
    return 0;
}
