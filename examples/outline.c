// Finds the outlines in a grey picture: the brightest minus the darkest pixel of each three-by-three
// neighbourhood.
//
// Shows: sixteen bytes to each 128 bits with no widening; unsigned minimum and maximum, and subtraction, on
// 8-bit elements.
#include "example.h"
#include <stdio.h>

enum { width = 256, height = 96 };

typedef uint8_t image[height][width];

static image picture, rows_high, rows_low, high, low, outline;

KERNEL maximum_of_three(uint8_t* restrict result, const uint8_t* a, const uint8_t* b, const uint8_t* c,
                        int count) {
    for (int i = 0; i < count; ++i) {
        uint8_t most = a[i] > b[i] ? a[i] : b[i];
        result[i] = most > c[i] ? most : c[i];
    }
}

KERNEL minimum_of_three(uint8_t* restrict result, const uint8_t* a, const uint8_t* b, const uint8_t* c,
                        int count) {
    for (int i = 0; i < count; ++i) {
        uint8_t least = a[i] < b[i] ? a[i] : b[i];
        result[i] = least < c[i] ? least : c[i];
    }
}

KERNEL difference(uint8_t* restrict result, const uint8_t* restrict a, const uint8_t* restrict b, int count) {
    for (int i = 0; i < count; ++i)
        result[i] = (uint8_t)(a[i] - b[i]);
}

SCALAR static void draw_picture(void) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            int dx = x - 90, dy = 2 * (y - 48), ex = x - 180, ey = 2 * (y - 40);
            int inside_disc = dx * dx + dy * dy < 70 * 70;
            int inside_diamond = (ex < 0 ? -ex : ex) + (ey < 0 ? -ey : ey) < 60;
            picture[y][x] = (uint8_t)(x / 8 + inside_disc * 120 + inside_diamond * 80);
        }
}

SCALAR int main(void) {
    draw_picture();
    for (int y = 0; y < height; ++y) {
        const uint8_t* row = picture[y];
        maximum_of_three(rows_high[y] + 1, row, row + 1, row + 2, width - 2);
        minimum_of_three(rows_low[y] + 1, row, row + 1, row + 2, width - 2);
    }
    for (int y = 1; y < height - 1; ++y) {
        maximum_of_three(high[y], rows_high[y - 1], rows_high[y], rows_high[y + 1], width);
        minimum_of_three(low[y], rows_low[y - 1], rows_low[y], rows_low[y + 1], width);
        difference(outline[y], high[y], low[y], width);
    }
    printf("brightest neighbours: checksum %08x\n", checksum(high, sizeof high));
    printf("darkest neighbours:   checksum %08x\n", checksum(low, sizeof low));
    printf("outline:              checksum %08x\n", checksum(outline, sizeof outline));
    for (int y = 1; y + 5 < height; y += 5) {
        for (int x = 1; x + 3 < width; x += 3) { // a character for each three by five pixels
            int strong = 0;
            for (int k = 0; k < 15; ++k)
                strong += outline[y + k / 3][x + k % 3] > 40;
            putchar(strong > 7 ? '#' : strong ? '+' : ' ');
        }
        putchar('\n');
    }
    return 0;
}
