// Measures strings that end with the very last byte of mapped memory. A vector load from such a string
// reaches into memory that nobody may touch.
//
// Shows: first-fault loads, which stop where a fault would be and leave the rest to the first-fault register;
// on 8-bit and 16-bit elements.
#include "example.h"
#include <stdio.h>
#include <sys/mman.h>
#include <unistd.h>

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>

// Loads as much as there is, looks for the end in it, and goes on behind it.
KERNEL measure_bytes(size_t* length, const uint8_t* string) {
    for (*length = 0;; *length += svcntp_b8(svptrue_b8(), svrdffr())) {
        svsetffr();
        const svuint8_t elements = svldff1(svptrue_b8(), string + *length);
        const svbool_t loaded = svrdffr();
        const svbool_t end = svcmpeq(loaded, elements, 0);
        if (svptest_any(loaded, end)) {
            *length += svcntp_b8(loaded, svbrkb_z(loaded, end));
            return;
        }
    }
}

KERNEL measure_halfwords(size_t* length, const uint16_t* string) {
    for (*length = 0;; *length += svcntp_b16(svptrue_b16(), svrdffr())) {
        svsetffr();
        const svuint16_t elements = svldff1(svptrue_b16(), string + *length);
        const svbool_t loaded = svrdffr();
        const svbool_t end = svcmpeq(loaded, elements, 0);
        if (svptest_any(loaded, end)) {
            *length += svcntp_b16(loaded, svbrkb_z(loaded, end));
            return;
        }
    }
}
#else
KERNEL measure_bytes(size_t* length, const uint8_t* string) {
    for (*length = 0; string[*length] != 0; ++*length) {
    }
}
KERNEL measure_halfwords(size_t* length, const uint16_t* string) {
    for (*length = 0; string[*length] != 0; ++*length) {
    }
}
#endif

static const char* const words[] = {"", "a", "kelp", "first-fault",
                                    "the quick brown fox jumps over the lazy dog"};

SCALAR int main(void) {
    const size_t page = (size_t)sysconf(_SC_PAGESIZE);
    uint8_t* const memory = mmap(NULL, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED || mprotect(memory + page, page, PROT_NONE) != 0)
        return 1;
    uint8_t* const end = memory + page;

    for (size_t i = 0; i < sizeof words / sizeof words[0]; ++i) {
        uint8_t* at = end - 1;
        const char* last = words[i];
        while (*last != 0)
            ++last;
        for (*at = 0; last != words[i];)
            *--at = (uint8_t) * --last;
        size_t length;
        measure_bytes(&length, at);
        printf("\"%s\" has %zu characters\n", words[i], length);
    }

    // All lengths up to three vectors and a little more.
    enum { longest = 400 };
    static size_t lengths[2][longest + 1];
    for (size_t i = 0; i < longest; ++i)
        end[-(ptrdiff_t)i - 2] = (uint8_t)(i % 255 + 1);
    end[-1] = 0;
    for (size_t i = 0; i <= longest; ++i)
        measure_bytes(&lengths[0][i], end - 1 - i);
    uint16_t* const wide_end = (uint16_t*)end;
    for (size_t i = 0; i < longest; ++i)
        wide_end[-(ptrdiff_t)i - 2] = (uint16_t)(i * 251 + 1);
    wide_end[-1] = 0;
    for (size_t i = 0; i <= longest; ++i)
        measure_halfwords(&lengths[1][i], wide_end - 1 - i);
    size_t right = 0;
    for (size_t i = 0; i <= longest; ++i)
        right += (lengths[0][i] == i) + (lengths[1][i] == i);
    printf("%zu of %d strings right up to the end of memory measured correctly\n", right, 2 * (longest + 1));
    printf("lengths: checksum %08x\n", checksum(lengths, sizeof lengths));
    return 0;
}
