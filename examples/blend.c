// Blends a picture over another one through a mask with soft edges while the mask fades in, then swaps its
// shades about.
//
// Shows: bytes widened to 32-bit elements on load; 32-bit subtraction, multiplication, signed division and
// addition; 32-bit elements narrowed to bytes on store; immediate operands on bytes.
#include "example.h"
#include <stdio.h>

enum { width = 72, height = 28, pixels = width * height, frames = 48, opaque = 255 };

static uint8_t background[pixels], ring[pixels], mask[pixels], faded[pixels], picture[pixels],
    recoloured[pixels];
static int32_t canvas[pixels];

KERNEL widen(int32_t* restrict canvas_row, const uint8_t* restrict below, int count) {
    for (int i = 0; i < count; ++i)
        canvas_row[i] = below[i];
}

// Moves the canvas towards the picture above it by coverage / full.
KERNEL blend(int32_t* restrict canvas_row, const uint8_t* restrict above, const uint8_t* restrict coverage,
             int full, int count) {
    for (int i = 0; i < count; ++i)
        canvas_row[i] += (above[i] - canvas_row[i]) * coverage[i] / full;
}

KERNEL narrow(uint8_t* restrict result, const int32_t* restrict canvas_row, int count) {
    for (int i = 0; i < count; ++i)
        result[i] = (uint8_t)canvas_row[i];
}

KERNEL fade(uint8_t* restrict result, const uint8_t* restrict coverage, int step, int steps, int count) {
    for (int i = 0; i < count; ++i)
        result[i] = (uint8_t)(coverage[i] * step / steps);
}

KERNEL false_shades(uint8_t* restrict result, const uint8_t* restrict grey, int count) {
    for (int i = 0; i < count; ++i)
        result[i] = (uint8_t)(((grey[i] & 0xe0) ^ 0x60) + 16);
}

SCALAR static void draw_pictures(void) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            int i = y * width + x;
            background[i] = (x / 6 + y / 3) % 2 ? 40 : 0;
            ring[i] = (uint8_t)(255 - y * 6);
            int dx = x - width / 2,
                dy = 2 * (y - height / 2); // a character is about twice as high as it is wide
            int distance = dx * dx + dy * dy - 400;
            int coverage = opaque - (distance < 0 ? -distance : distance);
            mask[i] = (uint8_t)(coverage < 0 ? 0 : coverage);
        }
}

SCALAR static void show(const uint8_t* grey) {
    static const char shades[] = " .:-=+*#%@";
    for (int y = 0; y < height; y += 2) {
        for (int x = 0; x < width; ++x)
            putchar(shades[grey[y * width + x] * 10 / 256]);
        putchar('\n');
    }
}

SCALAR int main(void) {
    draw_pictures();
    for (int frame = 0; frame <= frames; ++frame) {
        fade(faded, mask, frame, frames, pixels);
        widen(canvas, background, pixels);
        blend(canvas, ring, faded, opaque, pixels);
        narrow(picture, canvas, pixels);
        if (frame % 16 == 0)
            printf("frame %2d: checksum %08x\n", frame, checksum(picture, pixels));
    }
    show(picture);
    false_shades(recoloured, picture, pixels);
    printf("false shades: checksum %08x\n", checksum(recoloured, pixels));
    return 0;
}
