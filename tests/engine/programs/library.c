// What ordinary programs do with the C library and the machine: heap, recursion, jumps, tables, floating
// point.
#include <math.h>
#include <setjmp.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static uint64_t random_state = 1;
static uint32_t next_random(void) {
    random_state = random_state * 6364136223846793005u + 1442695040888963407u;
    return (uint32_t)(random_state >> 33);
}

static void heap(void) {
    enum { blocks = 2000 };
    static unsigned char* block[blocks];
    static size_t size[blocks];
    uint64_t sum = 0;
    for (unsigned round = 0; round < 40000; ++round) {
        const unsigned n = next_random() % blocks;
        if (block[n]) {
            sum = sum * 31 + block[n][0] + block[n][size[n] - 1];
            free(block[n]);
        }
        size[n] = 1 + next_random() % (round % 100 == 0 ? 300000 : 2000);
        block[n] = malloc(size[n]);
        memset(block[n], (int)n, size[n]);
    }
    printf("heap %llu\n", (unsigned long long)sum);

    unsigned char* const start = sbrk(0);
    const int grown = sbrk(1 << 20) == start;
    memset(start, 7, 1 << 20);
    const int shrunk = sbrk(-(1 << 19)) == start + (1 << 20) && sbrk(0) == start + (1 << 19);
    sbrk(1 << 19);
    printf("break %d %d, kept %d, cleared %d, too low %d\n", grown, shrunk, start[(1 << 19) - 1],
           start[(1 << 20) - 1], brk((void*)4096));
}

static unsigned depth_of(unsigned depth) {
    volatile char frame[200];
    frame[depth % sizeof frame] = (char)depth;
    return depth == 0 ? 0 : 1 + depth_of(depth - 1) + (frame[depth % sizeof frame] != (char)depth);
}

static unsigned ackermann(unsigned m, unsigned n) {
    return m == 0 ? n + 1 : n == 0 ? ackermann(m - 1, 1) : ackermann(m - 1, ackermann(m, n - 1));
}

static jmp_buf jump;
static void jump_from(unsigned depth) {
    if (depth == 0)
        longjmp(jump, 42);
    jump_from(depth - 1);
    printf("not reached\n");
}
static void jumps(void) {
    volatile unsigned count = 0;
    const int value = setjmp(jump);
    if (++count < 5)
        jump_from(count * 10);
    printf("jumps %u %d\n", count, value);
}

static unsigned step(unsigned operation, unsigned value) {
    switch (operation) {
    case 0:
        return value + 1;
    case 1:
        return value * 3;
    case 2:
        return value ^ 0x55;
    case 3:
        return value >> 1;
    case 4:
        return value - 7;
    case 5:
        return ~value;
    case 6:
        return value << 3 | value >> 29;
    case 7:
        return value % 1000;
    case 8:
        return value | 1;
    default:
        return value;
    }
}
static unsigned add(unsigned a, unsigned b) { return a + b; }
static unsigned subtract(unsigned a, unsigned b) { return a - b; }
static unsigned multiply(unsigned a, unsigned b) { return a * b; }
static unsigned (*const operations[])(unsigned, unsigned) = {add, subtract, multiply};

static void tables(void) {
    unsigned value = 1;
    for (unsigned n = 0; n < 20000; ++n) {
        value = step(next_random() % 10, value);
        value = operations[next_random() % 3](value, n);
    }
    printf("tables %u\n", value);
}

static int ascending(const void* a, const void* b) {
    const uint32_t left = *(const uint32_t*)a, right = *(const uint32_t*)b;
    return (left > right) - (left < right);
}
static void sorting(void) {
    enum { count = 10000 };
    static uint32_t values[count];
    for (unsigned n = 0; n < count; ++n)
        values[n] = next_random();
    qsort(values, count, sizeof values[0], ascending);
    uint64_t sum = 0;
    for (unsigned n = 0; n < count; ++n)
        sum = sum * 33 + values[n];
    printf("sorted %llu\n", (unsigned long long)sum);
}

static _Thread_local int thread_local_value = 5;

int main(int argc, char** argv) {
    heap();
    printf("depth %u, ackermann %u\n", depth_of(20000), ackermann(2, 300));
    jumps();
    tables();
    sorting();
    thread_local_value += argc;
    printf("thread-local %d\n", thread_local_value);
    printf("%.17g %a %e %Lf %g %g\n", 1.0 / 3.0, sqrt(2.0), exp(1.5), (long double)1e300,
           strtod(argv[0], NULL), fmod(1e18, 7.0));
    printf("%-10s|%5d|%#x|%c|%s\n", "left", -42, 0xbeefu, 'x', strchr("a/b", '/'));
    return 0;
}
