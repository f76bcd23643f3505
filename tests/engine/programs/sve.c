// SVE instructions on a processor that does not have them: a library's, a program's own, those written at run
// time, in threads, in large blocks.
#include <dlfcn.h>
#include <pthread.h>
#include <stdlib.h>

#include "tools.h"

// uint64_t blocks_N(uint64_t x, uint64_t flag): x + N times the vector length in bytes, plus 1 if bit 0 of
// the flag is set, plus 2 if the flag is 0. Blocks of many SVE instructions grow a hundredfold when they are
// emulated; these are ended by branches of short reach.
struct block {
    uint64_t count;
    uint64_t (*run)(uint64_t, uint64_t);
};
extern struct block blocks[8];
__asm__(".arch armv8.2-a+sve\n .data\n .balign 8\n"
        "blocks: .text\n"
        ".irp n, 1, 40, 125, 126, 127, 128, 129, 400\n"
        "9:\n .rept \\n\n addvl x0, x0, #1\n .endr\n"
        "tbz w1, #0, 1f\n add x0, x0, #1\n"
        "1:\n .rept \\n\n addvl x0, x0, #-1\n addvl x0, x0, #1\n .endr\n"
        "cbnz x1, 2f\n add x0, x0, #2\n"
        "2: ret\n"
        ".data\n .quad \\n, 9b\n .text\n"
        ".endr\n");

// Each with both outcomes of its branches, twice: untranslated and linked.
static void large_blocks(char** arguments) {
    for (unsigned n = 0; n < sizeof blocks / sizeof *blocks; ++n)
        for (uint64_t round = 0; round < 8; ++round) {
            const uint64_t flag = round % 4, is = blocks[n].run(1000 * round, flag);
            if (is != 1000 * round + blocks[n].count * 128 + (flag & 1) + (flag == 0 ? 2 : 0))
                printf("FAILED: %lu, flag %lu: %lu\n", blocks[n].count, flag, is);
        }
}

// The length of vectors, by an instruction in each kind of place.
static void in_program(char** arguments) {
    uint64_t result;
    __asm__ volatile("cntb %0" : "=r"(result) : "r"(arguments));
    printf("%lu\n", result);
}
static void write_length(uint32_t* code) {
    static const uint32_t words[] = {0x0420E3E0, 0xD65F03C0}; // CNTB X0; RET
    memcpy(code, words, sizeof words);
    mprotect(code, 4096, executable);
    publish(code, sizeof words);
    printf("%u\n", call(code));
}
static void in_memory(char** arguments) { write_length(map_code(NULL, 0)); }
static void in_library(char** arguments) {
    void* const handle = dlopen(arguments[0], RTLD_NOW);
    printf("%u\n", call(dlsym(handle, "plugin_vector_bytes")));
}
// Where a library was that has been unloaded there is room for code of the program's own.
static void in_place_of_library(char** arguments) {
    void* const handle = dlopen(arguments[0], RTLD_NOW);
    char* const page = (char*)((uint64_t)dlsym(handle, "plugin_vector_bytes") & ~4095ul);
    dlclose(handle);
    void* const memory = mmap(page, 4096, writable, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (memory == page)
        write_length(memory);
}

// Threads that execute 1002 SVE instructions each; their own registers and predicates must not mix.
enum { thread_count = 8, rounds = 500, batches = 5 };
static uint64_t count(uint64_t start, uint64_t step) {
    register uint64_t x0 __asm__("x0") = start;
    register uint64_t x1 __asm__("x1") = step;
    register uint64_t x2 __asm__("x2") = rounds;
    __asm__ volatile("mov z0.d, x0\n"
                     "1: mov z1.d, x1\n"
                     "add z0.d, z0.d, z1.d\n"
                     "subs x2, x2, #1\n"
                     "b.ne 1b\n"
                     "cntb x3\n"
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
static void threads(char** arguments) {
    unsigned right = 0;
    for (unsigned batch = 0; batch < batches; ++batch) {
        pthread_t id[thread_count];
        for (uintptr_t n = 0; n < thread_count; ++n)
            pthread_create(&id[n], NULL, run, (void*)n);
        for (unsigned n = 0; n < thread_count; ++n) {
            void* result;
            pthread_join(id[n], &result);
            right += (unsigned)(uintptr_t)result;
        }
    }
    printf("right %u of %u\n", right, thread_count * batches);
}
static void busy_threads(char** arguments) {
    for (uintptr_t n = 0; n < thread_count; ++n) {
        pthread_t id;
        pthread_create(&id, NULL, run_endlessly, (void*)n);
    }
    run(NULL);
    exit(9);
}

int main(int argc, char** argv) {
    static const struct way ways[] = {{"large-blocks", large_blocks},
                                      {"program", in_program},
                                      {"memory", in_memory},
                                      {"library", in_library},
                                      {"place-of-library", in_place_of_library},
                                      {"threads", threads},
                                      {"busy-threads", busy_threads},
                                      {NULL, NULL}};
    return run_way(ways, argv);
}
