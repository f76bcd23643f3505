// Draws textures from nothing but the coordinates of each pixel.
//
// Shows: vectors of ascending indexes in 16, 32 and 64-bit elements; exclusive or, and, or, and
// multiplication with numbers that are the same for a whole row.
#include "example.h"
#include <stdio.h>

enum { size = 256 };

static uint16_t munching[size][size];
static uint32_t carpet[size][size];
static uint64_t lattice[size][size];

KERNEL munching_row(uint16_t* row, uint16_t y, uint16_t mask, uint16_t count) {
    for (uint16_t x = 0; x < count; ++x)
        row[x] = (uint16_t)(((x ^ y) & mask) * 77);
}

KERNEL carpet_row(uint32_t* row, uint32_t y, uint32_t count) {
    for (uint32_t x = 0; x < count; ++x)
        row[x] = ((x + 5) & y) | (x & ~y & 0x80);
}

KERNEL lattice_row(uint64_t* row, uint64_t y, uint64_t flip, uint64_t count) {
    for (uint64_t x = 0; x < count; ++x)
        row[x] = (x * y | 0x18) ^ flip;
}

// Prints 64 by 16 characters: the shade of the pixel (x, y) is value(x, y) * 10 / range.
#define SHOW(texture, range, step)                                                                           \
    do {                                                                                                     \
        printf(#texture ": checksum %08x\n", checksum(texture, sizeof texture));                             \
        for (unsigned y = 0; y < 16; ++y) {                                                                  \
            for (unsigned x = 0; x < 64; ++x)                                                                \
                putchar(" .:-=+*#%@"[texture[2 * y * step][x * step] % range * 10 / range]);                 \
            putchar('\n');                                                                                   \
        }                                                                                                    \
    } while (0)

SCALAR int main(void) {
    for (unsigned y = 0; y < size; ++y) {
        munching_row(munching[y], (uint16_t)y, 0xfc, size);
        carpet_row(carpet[y], y, size);
        lattice_row(lattice[y], y, 0xa5, size);
    }
    SHOW(munching, 256, 4);
    SHOW(carpet, 32, 1);
    SHOW(lattice, 256, 1);
    return 0;
}
