// Code that is written, rewritten, remapped and unmapped while the program runs.
#define _GNU_SOURCE
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

typedef unsigned (*function)(void);

// MOV W0, #value; RET.
static void write_function(uint32_t* code, unsigned value) {
    code[0] = 0x52800000 | value << 5;
    code[1] = 0xD65F03C0;
    __builtin___clear_cache((char*)code, (char*)(code + 2));
}

static unsigned call(const void* code) {
    function volatile target = (function)code;
    return target();
}

int main(void) {
    enum { bytes = 65536, writable = PROT_READ | PROT_WRITE };
    uint32_t* const code = mmap(NULL, bytes, writable | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);

    printf("in place:");
    for (unsigned n = 0; n < 5; ++n) {
        write_function(code, n);
        printf(" %u", call(code));
    }
    unsigned sum = 0;
    for (unsigned n = 0; n < 16; ++n)
        write_function(code + n * 2, n);
    for (unsigned n = 0; n < 200; ++n) {
        write_function(code + n % 16 * 2, n % 60000);
        sum += call(code + n % 16 * 2) + call(code + (n + 1) % 2 * 2);
    }
    printf(", many %u\n", sum);

    printf("protected in turn:");
    for (unsigned n = 10; n < 15; ++n) {
        mprotect(code, bytes, writable);
        write_function(code, n);
        mprotect(code, bytes, PROT_READ | PROT_EXEC);
        printf(" %u", call(code));
    }
    mprotect(code, bytes, PROT_EXEC);
    printf(", execute only %u\n", call(code));

    printf("mapped anew:");
    for (unsigned n = 20; n < 25; ++n) {
        uint32_t* const again =
            mmap(code, bytes, writable | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
        // Without cache maintenance by the program: there was no code before.
        again[0] = 0x52800000 | n << 5;
        again[1] = 0xD65F03C0;
        printf(" %u", call(again));
        if (n % 2)
            munmap(again, bytes);
    }
    printf("\n");

    uint32_t* first = mmap(NULL, bytes, writable | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    write_function(first, 31);
    const unsigned before = call(first);
    uint32_t* const moved = mremap(first, bytes, bytes, MREMAP_MAYMOVE | MREMAP_FIXED, code);
    printf("moved: %u %u %d\n", before, call(moved), moved == code);

    // A function that rewrites the instructions right behind its own cache maintenance: STR W1, [X0], then
    // the maintenance, and behind the barriers the target, MOV W0, #1, which is to become MOV W0, #2.
    const uint32_t self[] = {0xB9000001, 0xD50B7B20, 0xD5033B9F, 0xD50B7520,
                             0xD5033B9F, 0xD5033FDF, 0x52800020, 0xD65F03C0};
    memcpy(moved, self, sizeof self);
    __builtin___clear_cache((char*)moved, (char*)moved + sizeof self);
    unsigned (*const own)(uint32_t*, uint32_t) = (unsigned (*)(uint32_t*, uint32_t))(void*)moved;
    printf("own code: %u %u\n", own(moved + 6, 0x52800040), own(moved + 6, 0x52800060));
    return 0;
}
