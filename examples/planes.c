// A colour picture whose pixels are stored as red, green, blue, red, green, blue and so on, taken apart into
// one plane for each colour and put together again in other orders; and the same with sound, with points in
// space and with complex numbers.
//
// Shows: loads and stores of records of two, three and four elements in 8, 16, 32 and 64 bits.
#include "example.h"
#include <stdio.h>

enum { width = 150, height = 60, pixels = width * height, samples = 4001, points = 777 };

KERNEL split_colours(uint8_t* restrict red, uint8_t* restrict green, uint8_t* restrict blue,
                     const uint8_t* restrict rgb, int n) {
    for (int i = 0; i < n; ++i) {
        red[i] = rgb[3 * i];
        green[i] = rgb[3 * i + 1];
        blue[i] = rgb[3 * i + 2];
    }
}

KERNEL join_colours(uint8_t* restrict rgba, const uint8_t* restrict red, const uint8_t* restrict green,
                    const uint8_t* restrict blue, uint8_t alpha, int n) {
    for (int i = 0; i < n; ++i) {
        rgba[4 * i] = red[i];
        rgba[4 * i + 1] = green[i];
        rgba[4 * i + 2] = blue[i];
        rgba[4 * i + 3] = alpha;
    }
}

KERNEL drop_alpha(uint8_t* restrict bgr, const uint8_t* restrict rgba, int n) {
    for (int i = 0; i < n; ++i) {
        bgr[3 * i] = rgba[4 * i + 2];
        bgr[3 * i + 1] = rgba[4 * i + 1];
        bgr[3 * i + 2] = rgba[4 * i] & rgba[4 * i + 3];
    }
}

// Left and right become sum and difference.
KERNEL middle_and_side(uint16_t* restrict result, const uint16_t* restrict sound, int n) {
    for (int i = 0; i < n; ++i) {
        result[2 * i] = (uint16_t)(sound[2 * i] + sound[2 * i + 1]);
        result[2 * i + 1] = (uint16_t)(sound[2 * i] - sound[2 * i + 1]);
    }
}

// Each coordinate of a point becomes another one, times a number.
KERNEL turn_points(uint32_t* restrict result, const uint32_t* restrict point, uint32_t stretch, int n) {
    for (int i = 0; i < n; ++i) {
        result[3 * i] = point[3 * i + 1] * stretch;
        result[3 * i + 1] = point[3 * i + 2] * stretch;
        result[3 * i + 2] = point[3 * i] - stretch;
    }
}

KERNEL square_complex(uint64_t* restrict number, int n) {
    for (int i = 0; i < n; ++i) {
        uint64_t re = number[2 * i], im = number[2 * i + 1];
        number[2 * i] = re * re - im * im;
        number[2 * i + 1] = re * im + re * im;
    }
}

static uint8_t rgb[pixels][3], rgba[pixels][4], bgr[pixels][3];
static uint8_t red[pixels], green[pixels], blue[pixels];
static uint16_t sound[samples][2], mixed[samples][2];
static uint32_t point[points][3], turned[points][3];
static uint64_t number[points][2];

SCALAR static void draw_picture(void) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint8_t* pixel = rgb[y * width + x];
            int dx = x - 60, dy = 2 * (y - 30), ex = x - 90;
            pixel[0] = (uint8_t)(dx * dx + dy * dy < 2500 ? 200 : 20);
            pixel[1] = (uint8_t)(ex * ex + dy * dy < 2500 ? 200 : 20);
            pixel[2] = (uint8_t)(x + y);
        }
}

SCALAR static void show_plane(const char* name, const uint8_t* plane) {
    printf("%s, checksum %08x\n", name, checksum(plane, pixels));
    for (int y = 0; y < height; y += 6) {
        for (int x = 0; x < width; x += 3)
            putchar(" .:-=+*#%@"[plane[y * width + x] / 26]);
        putchar('\n');
    }
}

SCALAR int main(void) {
    uint64_t random = 4711;
    draw_picture();
    for (int i = 0; i < samples; ++i)
        for (int k = 0; k < 2; ++k)
            sound[i][k] = (uint16_t)next_random(&random);
    for (int i = 0; i < points; ++i)
        for (int k = 0; k < 3; ++k)
            point[i][k] = (uint32_t)next_random(&random);
    for (int i = 0; i < points; ++i)
        for (int k = 0; k < 2; ++k)
            number[i][k] = next_random(&random);

    split_colours(red, green, blue, rgb[0], pixels);
    join_colours(rgba[0], blue, red, green, 0xe0, pixels);
    drop_alpha(bgr[0], rgba[0], pixels);
    middle_and_side(mixed[0], sound[0], samples);
    turn_points(turned[0], point[0], 3, points);
    for (int i = 0; i < 3; ++i)
        square_complex(number[0], points);

    show_plane("red", red);
    show_plane("green", green);
    show_plane("blue", blue);
    printf("four bytes a pixel:   checksum %08x\n", checksum(rgba, sizeof rgba));
    printf("three bytes a pixel:  checksum %08x\n", checksum(bgr, sizeof bgr));
    printf("middle and side:      checksum %08x\n", checksum(mixed, sizeof mixed));
    printf("turned points:        checksum %08x\n", checksum(turned, sizeof turned));
    printf("powers:               checksum %08x\n", checksum(number, sizeof number));
    return 0;
}
